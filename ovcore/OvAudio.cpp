#include "OvAudio.h"
#include "OvFileIO.h"
#include "OvScene.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <climits>
#include <cmath>
#include <cstring>

namespace {

quint32 le16(const uchar *p) {
    return quint32(p[0]) | quint32(p[1]) << 8;
}
quint32 le32(const uchar *p) {
    return le16(p) | le16(p + 2) << 16;
}
quint32 be16(const uchar *p) {
    return quint32(p[0]) << 8 | quint32(p[1]);
}
quint32 be32(const uchar *p) {
    return be16(p) << 16 | be16(p + 2);
}

// The 80-bit extended float in which AIFF gives its sample rate; -1 for infinities and NaNs.
double extendedToDouble(const uchar *b) {
    const int exponent = int(be16(b) & 0x7FFF);
    const quint64 mantissa = quint64(be32(b + 2)) << 32 | be32(b + 6);
    if (exponent == 0x7FFF)
        return -1;
    const double v = std::ldexp(double(mantissa), exponent - 16383 - 63);
    return (b[0] & 0x80) ? -v : v;
}

bool readAt(QIODevice &in, qint64 pos, uchar *buffer, qint64 n) {
    return in.seek(pos) && in.read(reinterpret_cast<char *>(buffer), n) == n;
}

// A RIFF or IFF file is a list of chunks: a four-character id, a 32-bit length, the body, padded
// to an even length. Calls visit(id, bodyPos, length) for each until visit returns false; a length
// that runs past the end is cut to what the file holds. Bounded by the file's size and a count.
template <class Visit> void forEachChunk(QIODevice &in, qint64 pos, bool bigEndian, Visit &&visit) {
    constexpr int MaxChunks = 4096; // far more than any sound file has before its data
    const qint64 size = in.size();
    uchar head[8];
    for (int n = 0; n < MaxChunks && pos + 8 <= size && readAt(in, pos, head, 8); ++n) {
        const qint64 body = pos + 8;
        const qint64 length = qMin<qint64>(bigEndian ? be32(head + 4) : le32(head + 4), size - body);
        if (!visit(QByteArray(reinterpret_cast<const char *>(head), 4), body, length))
            return;
        pos = body + length + (length & 1);
    }
}

// WAVE encodings whose sample frames each take one block: PCM, IEEE float, A-law, mu-law.
bool isFrameAligned(quint32 tag) {
    return tag == 1 || tag == 3 || tag == 6 || tag == 7;
}

bool readWav(QIODevice &in, OvAudioFormat &f, QString &why) {
    bool haveFmt = false;
    quint32 tag = 0, blockAlign = 0;
    qint64 dataBytes = -1, factFrames = -1;
    forEachChunk(in, 12, false, [&](const QByteArray &id, qint64 body, qint64 length) {
        uchar b[26] = {};
        if (id == "fmt " && length >= 16 && readAt(in, body, b, qMin<qint64>(length, 26))) {
            haveFmt = true;
            tag = le16(b);
            f.channels = int(le16(b + 2));
            f.sampleRate = le32(b + 4);
            blockAlign = le16(b + 12);
            f.bitsPerSample = int(le16(b + 14));
            if (tag == 0xFFFE && length >= 26) // extensible: the encoding is the sub-format's
                tag = le16(b + 24);
        } else if (id == "fact" && length >= 4 && readAt(in, body, b, 4)) {
            factFrames = le32(b);
        } else if (id == "data") {
            dataBytes = length;
        }
        return !(haveFmt && dataBytes >= 0);
    });
    if (!haveFmt)
        why = QStringLiteral("a WAV file without a format chunk");
    else if (dataBytes < 0)
        why = QStringLiteral("a WAV file without a data chunk");
    else if (f.channels <= 0 || f.sampleRate <= 0 || blockAlign == 0)
        why = QStringLiteral("a WAV file with %1 channels, %2 samples a second and %3-byte frames")
                  .arg(f.channels)
                  .arg(f.sampleRate)
                  .arg(blockAlign);
    else if (isFrameAligned(tag))
        f.sampleFrames = dataBytes / blockAlign;
    else if (factFrames >= 0)
        f.sampleFrames = factFrames;
    else
        why = QStringLiteral("a WAV file of encoding %1 that does not give its length").arg(tag);
    return why.isEmpty();
}

bool readAiff(QIODevice &in, OvAudioFormat &f, QString &why) {
    bool haveComm = false;
    forEachChunk(in, 12, true, [&](const QByteArray &id, qint64 body, qint64 length) {
        uchar b[18];
        if (id != "COMM" || length < 18 || !readAt(in, body, b, 18))
            return true;
        haveComm = true;
        f.channels = int(be16(b));
        f.sampleFrames = be32(b + 2);
        f.bitsPerSample = int(be16(b + 6));
        f.sampleRate = extendedToDouble(b + 8);
        return false;
    });
    if (!haveComm)
        why = QStringLiteral("an AIFF file without a common chunk");
    else if (f.channels <= 0 || !(f.sampleRate > 0) || !std::isfinite(f.sampleRate))
        why = QStringLiteral("an AIFF file with %1 channels and %2 samples a second")
                  .arg(f.channels)
                  .arg(f.sampleRate);
    return why.isEmpty();
}

} // namespace

int OvAudioFormat::lengthInTimeUnits() const {
    if (!(sampleRate > 0) || sampleFrames <= 0)
        return 0;
    const double units = double(sampleFrames) * OvScene::TimeUnitsPerSecond / sampleRate;
    return units >= double(INT_MAX) ? INT_MAX : int(std::llround(units));
}

bool readAudioHeader(QIODevice &in, OvAudioFormat &format, QString &why) {
    OvAudioFormat f;
    why.clear();
    uchar head[12];
    if (!readAt(in, 0, head, 12)) {
        why = QStringLiteral("too short to be a sound file");
        return false;
    }
    const auto is = [&head](int at, const char *id) { return std::memcmp(head + at, id, 4) == 0; };
    bool ok = false;
    if (is(0, "RIFF") && is(8, "WAVE")) {
        f.container = QStringLiteral("WAV");
        ok = readWav(in, f, why);
    } else if (is(0, "FORM") && (is(8, "AIFF") || is(8, "AIFC"))) {
        f.container = QStringLiteral("AIFF");
        ok = readAiff(in, f, why);
    } else {
        why = QStringLiteral("not a WAV or AIFF file");
    }
    if (ok)
        format = f;
    return ok;
}

int OvMultiMediaMgr::importAudioClip(const QString &path, OvAudioClip *clip, int) {
    m_error.clear();
    int result = ImportOk;
    const QFileInfo info(path);
    OvAudioFormat format;
    QFile file(path);
    if (!info.exists()) {
        result = ImportNoFile;
        m_error = QStringLiteral("no such file");
    } else if (!info.isFile()) { // a FIFO or a device would block the open or the read
        result = ImportNotReadable;
        m_error = QStringLiteral("not a regular file");
    } else if (!file.open(QIODevice::ReadOnly)) {
        result = ImportNotReadable;
        m_error = file.errorString();
    } else if (!readAudioHeader(file, format, m_error)) {
        result = ImportNotAudio;
    }
    if (result != ImportOk) {
        OvFileIO::error(QStringLiteral("Cannot import the sound file %1: %2").arg(path, m_error));
        return result;
    }
    if (clip)
        clip->setSound(QDir::cleanPath(info.absoluteFilePath()), format);
    ++m_imports;
    return ImportOk;
}
