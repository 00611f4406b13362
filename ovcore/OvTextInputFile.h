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

class OvTextInputFile {
public:
    static constexpr int MaxTokens = 256;
    // A longer line keeps its first MaxLineLength bytes; the rest of it is skipped.
    static constexpr size_t MaxLineLength = size_t(1) << 24;
    static constexpr size_t DefaultChunkSize = size_t(1) << 18;

    // `flag` is accepted for the host's signature; lines are always tokenized.
    OvTextInputFile(const QString &name, bool compressed, bool flag = true);
    virtual ~OvTextInputFile();
    OvTextInputFile(const OvTextInputFile &) = delete;
    OvTextInputFile &operator=(const OvTextInputFile &) = delete;

    // Must be called before open(); tests use tiny chunks to exercise the chunk boundaries.
    void setChunkSize(size_t bytes);

    bool open();
    bool isOpen() const { return m_open; }
    // Reads the next line into argv (MaxTokens entries) and argc; false when no line is left.
    bool getLine(char **argv, int &argc);
    bool atEnd();
    void close();
    QString name() const { return m_name; }
    bool isCompressed() const { return m_compressed; }

    // Set when reading failed part-way (a damaged or truncated compressed file, an I/O error).
    bool hasError() const { return !m_error.isEmpty(); }
    QString errorString() const { return m_error; }
    // Lines cut at MaxLineLength so far.
    int truncatedLines() const { return m_truncatedLines; }
    // Bytes of (uncompressed) text delivered so far.
    qint64 bytesRead() const { return m_bytesRead; }

private:
    bool fillMore();
    long readRaw(char *dst, size_t n);
    bool skipLongLineRest();
    static int tokenize(char *s, char *e, char **argv);

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
    qint64 m_bytesRead = 0;
    QString m_error;
};
