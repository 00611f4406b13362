#pragma once
// Minimal streaming JSON writer: keys come out in the order they are written, floats with nine
// significant digits, so the same scene always gives the same bytes.
//
// Each object or array is laid out one of three ways: Block puts every member on a line of its
// own, Line writes the whole container (and everything inside it) on one line, Rows writes the
// members kRowLength to a line. Containers begun inside a Line container are on that line too.
// Indentation grows two spaces a level up to kMaxIndentLevels levels and no further, so that the
// document of a deeply nested scene grows linearly with its depth.
//
// The text is collected in a byte buffer and handed to the device a large piece at a time.

#include <QString>
#include <cstddef>
#include <vector>

class QIODevice;

class JsonWriter {
public:
    enum class Layout { Block, Line, Rows };
    static constexpr int kRowLength = 20;
    static constexpr size_t kMaxIndentLevels = 32;

    explicit JsonWriter(QIODevice &out);
    ~JsonWriter(); // writes what is left
    JsonWriter(const JsonWriter &) = delete;
    JsonWriter &operator=(const JsonWriter &) = delete;

    void beginObject(Layout layout = Layout::Block);
    void endObject();
    void beginArray(Layout layout = Layout::Block);
    void endArray();
    void key(const char *name);

    void value(const QString &s);
    void value(const char *s);
    void value(int v);
    void value(unsigned v);
    void value(qint64 v);
    void value(bool v);
    void value(float v);
    void valueNull();

    template <class T> void field(const char *name, const T &v) {
        key(name);
        value(v);
    }

    // Hands the buffered text to the device.
    void flush();

    // The text of a float as the document writes it: %.9g, "-0", or a quoted "nan", "inf", "-inf".
    static QString formatFloat(float v);
    // s in double quotes with JSON escapes.
    static QString quote(const QString &s);
    // formatFloat's text into `out` (at least kFloatChars bytes); returns its length.
    static constexpr size_t kFloatChars = 32;
    static size_t formatFloat(float v, char *out);

private:
    void begin(char bracket, Layout layout);
    void end(char bracket);
    void separate();
    void newline(size_t depth);
    void put(char c) {
        if (m_size == m_buf.size())
            grow(1);
        m_buf[m_size++] = c;
    }
    void put(const char *s, size_t n);
    char *room(size_t n) {
        if (m_buf.size() - m_size < n)
            grow(n);
        return m_buf.data() + m_size;
    }
    void grow(size_t n);
    void putQuoted(const QString &s);
    void putQuoted(const char *s);
    void putInteger(long long v);

    QIODevice &m_out;
    std::vector<char> m_buf;
    size_t m_size = 0;
    struct Level {
        Layout layout;
        int members;
    };
    std::vector<Level> m_levels;
    bool m_afterKey = false;
};
