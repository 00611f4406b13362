#include "OvTextInputFile.h"

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

inline bool isBlank(char c) { return kBlanks.blank[static_cast<unsigned char>(c)]; }

} // namespace

OvTextInputFile::OvTextInputFile(const QString &name, bool compressed, bool)
    : m_name(name), m_compressed(compressed) {}

OvTextInputFile::~OvTextInputFile() { close(); }

void OvTextInputFile::setChunkSize(size_t bytes) { m_chunk = bytes < 1 ? 1 : bytes; }

bool OvTextInputFile::open() {
    close();
    m_error.clear();
    QByteArray path = QFile::encodeName(m_name);
    int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return false;
    }
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
    m_buf = static_cast<char *>(std::malloc(m_cap));
    if (!m_buf) {
        close();
        throw QString("Out of Memory");
    }
    m_begin = m_end = 0;
    m_eof = m_skipping = false;
    m_eol = '\n';
    m_truncatedLines = 0;
    m_bytesRead = 0;
    m_open = true;
    fillMore();
    if (m_compressed && gzdirect(static_cast<gzFile>(m_gz))) {
        // A compressed name on a file that is not gzip data: refuse it rather than guess.
        close();
        m_error = QStringLiteral("not a gzip-compressed file");
        return false;
    }
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
                m_error = err == Z_BUF_ERROR ? QStringLiteral("the compressed data ends too early")
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
        char *p = static_cast<char *>(std::realloc(m_buf, cap));
        if (!p)
            throw QString("Out of Memory");
        m_buf = p;
        m_cap = cap;
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

bool OvTextInputFile::atEnd() {
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
        if (p >= e || argc == MaxTokens)
            break;
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
    argc = 0;
    if (atEnd())
        return false;
    size_t scanned = 0; // bytes of this line already searched for its end
    for (;;) {
        size_t avail = m_end - m_begin;
        void *nl = std::memchr(m_buf + m_begin + scanned, m_eol, avail - scanned);
        if (nl) {
            char *s = m_buf + m_begin;
            char *e = static_cast<char *>(nl);
            m_begin = size_t(e - m_buf) + 1;
            argc = tokenize(s, e, argv);
            return true;
        }
        scanned = avail;
        if (avail >= MaxLineLength) {
            char *s = m_buf + m_begin;
            char *e = s + MaxLineLength;
            m_begin = m_end;
            m_skipping = true;
            ++m_truncatedLines;
            argc = tokenize(s, e, argv);
            return true;
        }
        if (!fillMore()) {
            // Last line without an end-of-line: the spare byte after the data takes the final NUL.
            char *s = m_buf + m_begin;
            char *e = m_buf + m_end;
            m_begin = m_end;
            argc = tokenize(s, e, argv);
            return true;
        }
    }
}
