// The reader of binary morph files: the index once, delta blocks on demand.
#include "BinaryMorph.h"
#include "../scene/SceneItems.h"

#include <OvFileIO.h>
#include <OvMorph.h>
#include <QtEndian>
#include <algorithm>
#include <cstring>

namespace {

const char kMagic[4] = {'P', 'Z', 'M', 'D'};
const qint64 kHeaderBytes = 20;
// The smallest index record: two empty names and two words.
const qint64 kMinRecordBytes = 1 + 1 + 4 + 4;
// A delta: vertex number and three floats.
const qint64 kDeltaBytes = 16;
// Buffered reads of the index; blocks are read in pieces of this many deltas.
const qint64 kIndexChunk = 256 << 10;
const qint64 kBlockChunkDeltas = 64 << 10;

} // namespace

OvPz3BinMorphFile::OvPz3BinMorphFile(const QString &path) : QFile(path) {
    if (!open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        problem(QStringLiteral("cannot open %1: %2").arg(path, errorString()));
        return;
    }
    m_size = size();
    readIndex();
    close();
}

OvPz3BinMorphFile::~OvPz3BinMorphFile() = default;

QStringList OvPz3BinMorphFile::takeProblems() {
    QStringList taken;
    taken.swap(m_problems);
    return taken;
}

bool OvPz3BinMorphFile::seekTo(qint64 offset) {
    m_buffer.clear();
    m_chunk = 4096;
    m_at = 0;
    m_pos = offset;
    return offset >= 0 && offset <= m_size && seek(offset);
}

bool OvPz3BinMorphFile::fill(qint64 n) {
    const qint64 have = m_buffer.size() - m_at;
    if (have >= n)
        return true;
    if (m_pos + m_at + n > m_size)
        return false;
    m_buffer.remove(0, m_at);
    m_pos += m_at;
    m_at = 0;
    // Reads grow from a page: a small index costs a page, a large one few calls.
    const qint64 want = std::min(std::max(n - have, m_chunk), m_size - m_pos - have);
    m_chunk = std::min(2 * m_chunk, kIndexChunk);
    m_buffer.resize(have + want);
    const qint64 got = read(m_buffer.data() + have, want);
    m_buffer.resize(have + std::max<qint64>(got, 0));
    if (got > 0)
        m_bytesRead += got;
    return m_buffer.size() >= n;
}

bool OvPz3BinMorphFile::readInt(qint32 &value) {
    value = 0;
    if (!fill(4))
        return false;
    value = qFromBigEndian<qint32>(m_buffer.constData() + m_at);
    m_at += 4;
    return true;
}

bool OvPz3BinMorphFile::readFloat(float &value) {
    value = 0.0f;
    if (!fill(4))
        return false;
    value = qFromBigEndian<float>(m_buffer.constData() + m_at);
    m_at += 4;
    return true;
}

bool OvPz3BinMorphFile::readString(QString &text) {
    if (!fill(1))
        return false;
    const int length = static_cast<unsigned char>(m_buffer[m_at]);
    if (!fill(1 + length))
        return false;
    text = OvFileIO::decodeText(m_buffer.constData() + m_at + 1, length);
    m_at += 1 + length;
    return true;
}

bool OvPz3BinMorphFile::readIndex() {
    m_index.clear();
    if (!seekTo(0) || !fill(kHeaderBytes) || std::memcmp(m_buffer.constData(), kMagic, 4) != 0) {
        problem(
            QStringLiteral("%1 is not a binary morph file (it does not begin with PZMD)").arg(fileName()));
        return false;
    }
    m_at = 16;
    qint32 count = 0;
    readInt(count);
    // A count the file has no room for is damage: the records that are there are still read.
    const qint64 room = (m_size - kHeaderBytes) / kMinRecordBytes;
    if (count < 0 || count > room)
        problem(QStringLiteral("the index of %1 claims %2 records, the file has room for at most %3")
                    .arg(fileName())
                    .arg(count)
                    .arg(room));
    const qint64 records = std::clamp<qint64>(count, 0, room);
    for (qint64 i = 0; i < records; ++i) {
        OvPz3BinMorphFileItem item;
        qint32 ignored = 0, offset = 0;
        if (!readString(item.morphName) || !readString(item.nodeName) || !readInt(ignored) ||
            !readInt(offset)) {
            problem(QStringLiteral("the index of %1 ends after %2 of %3 records")
                        .arg(fileName())
                        .arg(i)
                        .arg(count));
            break;
        }
        item.offset = offset;
        m_index.append(item);
    }
    m_buffer = QByteArray(); // the buffer is only needed again for a block
    return true;
}

bool OvPz3BinMorphFile::loadMorph(OvMorph *morph, const OvNode *node, int vertexLimit) {
    if (!morph || !node)
        return false;
    for (int i = 0; i < m_index.size(); ++i) {
        const OvPz3BinMorphFileItem &item = m_index[i];
        if (item.nodeName == node->getName() && item.morphName == morph->getName())
            return readDeltas(morph->getDeltas(), item.offset, vertexLimit);
    }
    return false;
}

bool OvPz3BinMorphFile::readDeltas(OvMorphDeltas *deltas, qint64 offset, int vertexLimit) {
    m_dropped = 0;
    if (!deltas || !open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (deltas)
            problem(QStringLiteral("cannot open %1: %2").arg(fileName(), errorString()));
        return false;
    }
    m_size = size();
    char word[4];
    if (offset < kHeaderBytes || offset > m_size - 4 || !seek(offset) || read(word, 4) != 4) {
        problem(QStringLiteral("a delta block at offset %1 lies outside %2 (%3 bytes)")
                    .arg(offset)
                    .arg(fileName())
                    .arg(m_size));
        close();
        return false;
    }
    m_bytesRead += 4;
    const qint32 n = qFromBigEndian<qint32>(word);
    const qint64 room = (m_size - offset - 4) / kDeltaBytes;
    if (n < 0 || n > room)
        problem(
            QStringLiteral("the delta block at offset %1 of %2 claims %3 deltas, the file holds at most %4")
                .arg(offset)
                .arg(fileName())
                .arg(n)
                .arg(room));
    qint64 left = std::clamp<qint64>(n, 0, room);
    deltas->reserveMore(size_t(left));
    m_buffer.resize(int(std::min(left, kBlockChunkDeltas) * kDeltaBytes));
    qint64 at = offset + 4;
    while (left > 0) {
        const qint64 count = std::min(left, kBlockChunkDeltas);
        const qint64 got = read(m_buffer.data(), count * kDeltaBytes);
        if (got != count * kDeltaBytes) {
            problem(QStringLiteral("reading %1 stopped at offset %2").arg(fileName()).arg(at));
            break;
        }
        m_bytesRead += got;
        at += got;
        left -= count;
        const char *p = m_buffer.constData();
        for (qint64 i = 0; i < count; ++i, p += kDeltaBytes) {
            const qint32 vertex = qFromBigEndian<qint32>(p);
            if (vertex < 0 || (vertexLimit >= 0 && vertex >= vertexLimit)) {
                ++m_dropped;
                continue;
            }
            const OvVec3 v(qFromBigEndian<float>(p + 4) * POSER_UNIT_CM,
                           qFromBigEndian<float>(p + 8) * POSER_UNIT_CM,
                           qFromBigEndian<float>(p + 12) * POSER_UNIT_CM);
            deltas->addDelta(vertex, v, false);
        }
    }
    m_buffer = QByteArray();
    close();
    return true;
}

OvPz3BinMorph::~OvPz3BinMorph() {
    if (file)
        file->unref();
}

OvPz3BinMorphFile *OvPz3BinMorph::reader() {
    if (!file) {
        file = new OvPz3BinMorphFile(path);
        file->ref();
    }
    return file;
}

bool OvPz3BinMorph::loadMorph(OvMorph *morph, const OvNode *node, int vertexLimit) {
    return reader()->loadMorph(morph, node, vertexLimit);
}
