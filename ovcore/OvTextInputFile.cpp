#include "OvTextInputFile.h"
#include "OvFileIO.h"

#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace {

struct BlankTable {
    bool blank[256];
    BlankTable() {
        for (bool &b : blank)
            b = false;
        for (unsigned char c : {' ', '\t', '\r', '\n', '\v', '\f', '\0'})
            blank[c] = true;
    }
};
const BlankTable kBlanks;

inline bool isBlank(char c) {
    return kBlanks.blank[static_cast<unsigned char>(c)];
}

OvTextInputFile::Limits g_limits;

const char *kindOfFile(mode_t mode) {
    if (S_ISDIR(mode))
        return "a folder";
    if (S_ISFIFO(mode))
        return "a named pipe";
    if (S_ISSOCK(mode))
        return "a socket";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "a device";
    return "not a regular file";
}

// UTF-16 and UTF-32 by their byte-order mark, or by NULs in every second (fourth) byte of text that
// is mostly ASCII. Empty when the bytes look like 8-bit text.
QString wideEncoding(const unsigned char *p, size_t n) {
    if (n >= 4 && ((p[0] == 0xFF && p[1] == 0xFE && p[2] == 0 && p[3] == 0) ||
                   (p[0] == 0 && p[1] == 0 && p[2] == 0xFE && p[3] == 0xFF)))
        return QStringLiteral("UTF-32");
    if (n >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF)))
        return QStringLiteral("UTF-16");
    size_t look = n < 4096 ? n & ~size_t(3) : 4096, nulAt[4] = {0, 0, 0, 0};
    for (size_t i = 0; i < look; ++i)
        nulAt[i & 3] += p[i] == 0;
    const size_t quarter = look / 4;
    if (quarter < 2)
        return QString();
    const size_t nuls = nulAt[0] + nulAt[1] + nulAt[2] + nulAt[3];
    if (nuls >= 3 * quarter * 9 / 10 && (nulAt[0] < quarter / 10 || nulAt[3] < quarter / 10))
        return QStringLiteral("UTF-32");
    if ((nulAt[0] + nulAt[2] >= 2 * quarter * 9 / 10 && nulAt[1] + nulAt[3] < quarter / 5) ||
        (nulAt[1] + nulAt[3] >= 2 * quarter * 9 / 10 && nulAt[0] + nulAt[2] < quarter / 5))
        return QStringLiteral("UTF-16");
    return QString();
}

} // namespace

OvTextInputFile::Limits OvTextInputFile::limits() {
    return g_limits;
}
void OvTextInputFile::setLimits(const Limits &limits) {
    g_limits = limits;
}

OvTextInputFile::OvTextInputFile(const QString &name, bool compressed, bool)
    : m_name(name), m_compressed(compressed) {}

OvTextInputFile::~OvTextInputFile() {
    close();
}

void OvTextInputFile::setChunkSize(size_t bytes) {
    m_chunk = bytes < 1 ? 1 : bytes;
}

bool OvTextInputFile::open() {
    close();
    m_error.clear();
    QByteArray path = QFile::encodeName(m_name);
    struct stat st;
    // Looked at before opening, and opened without blocking: opening a FIFO waits for a writer.
    if (::stat(path.constData(), &st) == 0 && !S_ISREG(st.st_mode))
        return refuse(QString::fromLatin1(kindOfFile(st.st_mode)));
    int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return false;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refuse(QString::fromLatin1(kindOfFile(st.st_mode)));
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (m_compressed) {
        gzFile gz = gzdopen(fd, "rb");
        if (!gz) {
            ::close(fd);
            return false;
        }
        gzbuffer(gz, 1 << 17);
        m_gz = gz;
    } else {
        m_fd = fd;
    }
    m_cap = m_chunk + 1;
    m_buf = static_cast<char *>(std::malloc(m_cap + ReadSlack));
    if (!m_buf) {
        close();
        throw QString("Out of Memory");
    }
    std::memset(m_buf + m_cap, 0, ReadSlack);
    m_begin = m_end = 0;
    m_eof = m_skipping = false;
    m_eol = '\n';
    m_truncatedLines = m_firstTruncatedLine = m_tokenCutLines = m_firstTokenCutLine = m_lines = 0;
    m_bytesRead = 0;
    m_open = true;
    fillMore();
    if (m_compressed && gzdirect(static_cast<gzFile>(m_gz))) {
        // A compressed name on a file that is not gzip data: refuse it rather than guess.
        close();
        m_error = QStringLiteral("not a gzip-compressed file");
        return false;
    }
    if (!checkEncoding())
        return false;
    // Old Mac files end their lines with CR alone. The first DefaultChunkSize bytes decide whatever
    // the chunk size, so small chunks split lines the same way.
    for (size_t seen = 0;;) {
        size_t look = m_end < DefaultChunkSize ? m_end : DefaultChunkSize;
        if (std::memchr(m_buf + seen, '\n', look - seen))
            break;
        seen = look;
        if (seen >= DefaultChunkSize || !fillMore()) {
            if (std::memchr(m_buf, '\r', seen))
                m_eol = '\r';
            break;
        }
    }
    return true;
}

bool OvTextInputFile::refuse(const QString &why) {
    close();
    m_error = why;
    OvFileIO::error(QStringLiteral("\"%1\" is %2: it is not read").arg(m_name, why));
    return false;
}

// Looks at the first bytes (at least 4 KiB unless the file is shorter, whatever the chunk size).
bool OvTextInputFile::checkEncoding() {
    while (m_end < 4096 && fillMore()) {
    }
    const auto *p = reinterpret_cast<const unsigned char *>(m_buf);
    const QString wide = wideEncoding(p, m_end);
    if (!wide.isEmpty())
        return refuse(QStringLiteral("%1 text, which is not read (save it as UTF-8)").arg(wide));
    if (m_end >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF)
        m_begin = 3;
    return true;
}

// Stops a compressed stream whose text grows far beyond anything real content does.
bool OvTextInputFile::expansionExceeded() {
    if (!m_gz)
        return false;
    const Limits &l = g_limits;
    if (m_bytesRead > l.maxTextBytes) {
        m_error = QStringLiteral("its text grows past %1 MiB, the limit for compressed files")
                      .arg(l.maxTextBytes >> 20);
        return true;
    }
    if (m_bytesRead > l.ratioFloor) {
        const qint64 packed = qint64(gzoffset(static_cast<gzFile>(m_gz)));
        if (packed > 0 && double(m_bytesRead) > l.maxExpansion * double(packed)) {
            m_error = QStringLiteral("its text grows past %1 times its compressed size, the limit for "
                                     "compressed files")
                          .arg(l.maxExpansion);
            return true;
        }
    }
    return false;
}

void OvTextInputFile::close() {
    if (m_gz) {
        gzclose(static_cast<gzFile>(m_gz));
        m_gz = nullptr;
    }
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
    std::free(m_buf);
    m_buf = nullptr;
    m_cap = m_begin = m_end = 0;
    m_eof = true;
    m_open = false;
}

long OvTextInputFile::readRaw(char *dst, size_t n) {
    if (m_gz) {
        gzFile gz = static_cast<gzFile>(m_gz);
        unsigned int ask = n > (1u << 30) ? (1u << 30) : unsigned(n);
        int got = gzread(gz, dst, ask);
        if (got <= 0) {
            // A stream cut short ends with a plain 0 and the error kept aside (Z_BUF_ERROR).
            int err = Z_OK;
            const char *msg = gzerror(gz, &err);
            if (got < 0 || err != Z_OK) {
                QString detail = QString::fromUtf8(msg ? msg : "");
                int fdTag = detail.indexOf(QLatin1String(">: ")); // zlib names the stream "<fd:N>: "
                if (detail.startsWith(QLatin1String("<fd:")) && fdTag > 0)
                    detail = detail.mid(fdTag + 3);
                m_error = err == Z_BUF_ERROR
                              ? QStringLiteral("the compressed data ends too early")
                              : QStringLiteral("the compressed data is damaged (%1)").arg(detail);
                return -1;
            }
        }
        return got;
    }
    for (;;) {
        ssize_t got = ::read(m_fd, dst, n);
        if (got >= 0)
            return long(got);
        if (errno != EINTR) {
            m_error = QString::fromLocal8Bit(std::strerror(errno));
            return -1;
        }
    }
}

// Appends more data after m_end, moving the unread part to the front first. False at end of input.
bool OvTextInputFile::fillMore() {
    if (m_eof || !m_buf)
        return false;
    if (m_begin > 0) {
        std::memmove(m_buf, m_buf + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end + 1 >= m_cap) {
        size_t cap = (m_cap - 1) * 2 + 1;
        char *p = static_cast<char *>(std::realloc(m_buf, cap + ReadSlack));
        if (!p)
            throw QString("Out of Memory");
        m_buf = p;
        m_cap = cap;
        std::memset(m_buf + m_cap, 0, ReadSlack);
    }
    size_t room = m_cap - 1 - m_end;
    if (room > m_chunk)
        room = m_chunk; // reads stay chunk-sized even after a long line grew the buffer
    long got = readRaw(m_buf + m_end, room);
    if (got <= 0) {
        m_eof = true;
        return false;
    }
    m_end += size_t(got);
    m_bytesRead += got;
    if (expansionExceeded()) {
        m_eof = true;
        return false;
    }
    return true;
}

bool OvTextInputFile::skipLongLineRest() {
    while (m_skipping) {
        if (m_begin < m_end) {
            void *nl = std::memchr(m_buf + m_begin, m_eol, m_end - m_begin);
            if (nl) {
                m_begin = size_t(static_cast<char *>(nl) - m_buf) + 1;
                m_skipping = false;
                break;
            }
        }
        m_begin = m_end;
        if (!fillMore())
            m_skipping = false;
    }
    return true;
}

bool OvTextInputFile::atEndOfData() {
    if (m_begin < m_end && !m_skipping)
        return false;
    if (!m_open)
        return true;
    skipLongLineRest();
    if (m_begin < m_end)
        return false;
    return !fillMore();
}

int OvTextInputFile::tokenize(char *s, char *e, char **argv) {
    // The byte at e (the end of line, the spare byte after the data, or the first byte of the
    // discarded rest of a cut line) is not part of the line: a NUL there, which is a blank, lets the
    // scan of a token run without a bound check.
    *e = '\0';
    int argc = 0;
    char *p = s;
    for (;;) {
        while (p < e && isBlank(*p))
            ++p;
        if (p >= e)
            break;
        if (argc == MaxTokens) {
            if (m_tokenCutLines++ == 0)
                m_firstTokenCutLine = m_lines;
            break;
        }
        if (*p == '"') {
            char *q = static_cast<char *>(std::memchr(p + 1, '"', size_t(e - p - 1)));
            argv[argc++] = p + 1;
            p = q ? q : e;
        } else {
            argv[argc++] = p;
            do
                ++p;
            while (!isBlank(*p));
        }
        *p = '\0'; // over the first character after the token (or the byte after the line)
        ++p;
    }
    return argc;
}

bool OvTextInputFile::getLine(char **argv, int &argc) {
    char *begin = nullptr, *end = nullptr;
    argc = 0;
    if (!getRawLine(begin, end))
        return false;
    argc = tokenize(begin, end, argv);
    return true;
}

// The line when it is not whole in the buffer yet, or cut at MaxLineLength.
bool OvTextInputFile::readRawLine(char *&begin, char *&end) {
    if (atEnd())
        return false;
    ++m_lines;
    size_t scanned = 0; // bytes of this line already searched for its end
    for (;;) {
        size_t avail = m_end - m_begin;
        void *nl = std::memchr(m_buf + m_begin + scanned, m_eol, avail - scanned);
        if (nl) {
            begin = m_buf + m_begin;
            end = static_cast<char *>(nl);
            m_begin = size_t(end - m_buf) + 1;
            return true;
        }
        scanned = avail;
        if (avail >= MaxLineLength) {
            begin = m_buf + m_begin;
            end = begin + MaxLineLength;
            m_begin = m_end;
            m_skipping = true;
            if (m_truncatedLines++ == 0)
                m_firstTruncatedLine = m_lines;
            return true;
        }
        if (!fillMore()) {
            // Last line without an end-of-line: the spare byte after the data takes the final NUL.
            begin = m_buf + m_begin;
            end = m_buf + m_end;
            m_begin = m_end;
            return true;
        }
    }
}
