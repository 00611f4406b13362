#pragma once
// Minimal streaming JSON writer: keys come out in the order they are written, floats with nine
// significant digits, so the same scene always gives the same bytes.

#include <QString>
#include <QTextStream>
#include <vector>

class JsonWriter {
public:
    explicit JsonWriter(QTextStream &out) : m_out(out) {}

    void beginObject();
    void endObject();
    void beginArray();
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
    void separate();
    void newline();

    QTextStream &m_out;
    struct Level {
        bool array;
        bool empty;
    };
    std::vector<Level> m_levels;
    bool m_afterKey = false;
};
