#pragma once
// Minimal streaming JSON writer: keys come out in the order they are written, floats with nine
// significant digits, so the same scene always gives the same bytes.
//
// Each object or array is laid out one of three ways: Block puts every member on a line of its
// own, Line writes the whole container (and everything inside it) on one line, Rows writes the
// members kRowLength to a line. Containers begun inside a Line container are on that line too.

#include <QString>
#include <QTextStream>
#include <vector>

class JsonWriter {
public:
    enum class Layout { Block, Line, Rows };
    static constexpr int kRowLength = 20;

    explicit JsonWriter(QTextStream &out) : m_out(out) {}

    void beginObject(Layout layout = Layout::Block);
    void endObject();
    void beginArray(Layout layout = Layout::Block);
    void endArray();
    void key(const char *name);

    void value(const QString &s);
    void value(const char *s) { value(QString::fromUtf8(s)); }
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

    static QString formatFloat(float v);
    static QString quote(const QString &s);

private:
    void begin(char bracket, Layout layout);
    void end(char bracket);
    void separate();
    void newline(size_t depth);

    QTextStream &m_out;
    struct Level {
        Layout layout;
        int members;
    };
    std::vector<Level> m_levels;
    bool m_afterKey = false;
};
