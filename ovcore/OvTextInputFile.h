#pragma once
// Line reader and tokenizer for plain and gzip-compressed text files.
//
// The file is read in reused chunks; getLine splits the next line in place at blanks into at most
// MaxTokens tokens. Each token ends with one NUL written over the first character after it; every
// other byte of the line stays as it was, so a caller can walk from one token across its NUL into
// the next and rejoin the original text. A token that begins with '"' runs to the closing quote
// (blanks included) and the quotes are not part of it. NUL bytes in the input count as blanks.

#include <QString>
#include <cstddef>
#include <cstring>

class OvTextInputFile {
public:
    static constexpr int MaxTokens = 256;
    // A longer line keeps its first MaxLineLength bytes; the rest of it is skipped.
    static constexpr size_t MaxLineLength = size_t(1) << 24;
    static constexpr size_t DefaultChunkSize = size_t(1) << 18;
    // Zero bytes kept readable past the buffer's end, so that line scanners may read eight
    // characters from any position of a line without a bound check.
    static constexpr size_t ReadSlack = 8;

    // A compressed stream is stopped once its text grows past `maxExpansion` times the compressed
    // bytes read (checked from `ratioFloor` bytes of text on: small files of one repeated line are
    // fine) or past `maxTextBytes` in all. Real content compresses 3-30 times; a "zip bomb" 1000.
    struct Limits {
        double maxExpansion = 250.0;
        qint64 ratioFloor = qint64(64) << 20;
        qint64 maxTextBytes = qint64(4) << 30;
    };
    static Limits limits();
    static void setLimits(const Limits &limits);

    // `flag` is accepted for the host's signature; lines are always tokenized.
    OvTextInputFile(const QString &name, bool compressed, bool flag = true);
    virtual ~OvTextInputFile();
    OvTextInputFile(const OvTextInputFile &) = delete;
    OvTextInputFile &operator=(const OvTextInputFile &) = delete;

    // Must be called before open(); tests use tiny chunks to exercise the chunk boundaries.
    void setChunkSize(size_t bytes);

    // Only regular files are opened (a FIFO or device would block or never end); text in UTF-16 or
    // UTF-32 is refused rather than half-read. Both are logged as errors naming the file; a file that
    // does not exist is left to the caller to report. A UTF-8 byte-order mark is skipped.
    bool open();
    bool isOpen() const { return m_open; }
    // Reads the next line into argv (MaxTokens entries) and argc; false when no line is left.
    bool getLine(char **argv, int &argc);
    // The next line as it stands in the buffer, [begin, end) without its end-of-line, for readers that
    // parse in place; valid until the next read. The byte at `end` may be overwritten.
    bool getRawLine(char *&begin, char *&end) {
        // Inline while the whole line is in the buffer: readers call this for millions of short lines.
        if (m_begin < m_end && !m_skipping) {
            char *line = m_buf + m_begin;
            if (char *eol = static_cast<char *>(std::memchr(line, m_eol, m_end - m_begin))) {
                ++m_lines;
                begin = line;
                end = eol;
                m_begin = size_t(eol - m_buf) + 1;
                return true;
            }
        }
        return readRawLine(begin, end);
    }
    // The whole lines waiting in the buffer, for readers that parse many lines in one pass: [begin, end)
    // where `end` follows the last complete line's '\n', valid until the next read; the caller then
    // passes the lines it took to skipLines. False when no whole line is waiting, when lines end with
    // CR alone, or inside the discarded rest of a cut line: getRawLine then reads the next line.
    bool peekLines(char *&begin, char *&end) {
        if (m_skipping || m_eol != '\n' || m_begin >= m_end)
            return false;
        char *first = m_buf + m_begin;
        char *last = static_cast<char *>(memrchr(first, '\n', m_end - m_begin));
        if (!last)
            return false;
        begin = first;
        end = last + 1;
        return true;
    }
    // Marks the `count` lines before `next` (from peekLines) as read.
    void skipLines(const char *next, int count) {
        m_begin = size_t(next - m_buf);
        m_lines += count;
    }
    // Splits a line from getRawLine as getLine does; returns the token count.
    int tokenize(char *begin, char *end, char **argv);
    bool atEnd() { return m_begin < m_end && !m_skipping ? false : atEndOfData(); }
    void close();
    QString name() const { return m_name; }
    bool isCompressed() const { return m_compressed; }

    // Set when reading failed part-way (a damaged or truncated compressed file, an I/O error).
    bool hasError() const { return !m_error.isEmpty(); }
    QString errorString() const { return m_error; }
    // Lines cut at MaxLineLength so far, and lines whose tokens past MaxTokens were dropped; each with
    // the number (counted from 1 by getLine) of the first such line.
    int truncatedLines() const { return m_truncatedLines; }
    int firstTruncatedLine() const { return m_firstTruncatedLine; }
    int tokenCutLines() const { return m_tokenCutLines; }
    int firstTokenCutLine() const { return m_firstTokenCutLine; }
    // Bytes of (uncompressed) text delivered so far.
    qint64 bytesRead() const { return m_bytesRead; }

private:
    bool readRawLine(char *&begin, char *&end);
    bool atEndOfData();
    bool fillMore();
    long readRaw(char *dst, size_t n);
    bool skipLongLineRest();
    bool refuse(const QString &why);
    bool checkEncoding();
    bool expansionExceeded();

    QString m_name;
    bool m_compressed;
    bool m_open = false;
    int m_fd = -1;
    void *m_gz = nullptr;
    char *m_buf = nullptr;
    size_t m_chunk = DefaultChunkSize;
    size_t m_cap = 0;   // bytes allocated; one byte is kept free after the data
    size_t m_begin = 0; // first unread byte
    size_t m_end = 0;   // end of the data in the buffer
    bool m_eof = false;
    bool m_skipping = false; // inside the discarded rest of an over-long line
    char m_eol = '\n';
    int m_truncatedLines = 0;
    int m_firstTruncatedLine = 0;
    int m_tokenCutLines = 0;
    int m_firstTokenCutLine = 0;
    int m_lines = 0;
    qint64 m_bytesRead = 0;
    QString m_error;
};
