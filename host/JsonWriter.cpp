#include "JsonWriter.h"

#include <cmath>

void JsonWriter::newline(size_t depth) {
    m_out << '\n';
    for (size_t i = 0; i < depth; ++i)
        m_out << "  ";
}

void JsonWriter::separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_levels.empty())
        return;
    Level &level = m_levels.back();
    if (level.members > 0)
        m_out << ',';
    const bool breakLine =
        level.layout == Layout::Block || (level.layout == Layout::Rows && level.members % kRowLength == 0);
    if (breakLine)
        newline(m_levels.size());
    else if (level.members > 0)
        m_out << ' ';
    ++level.members;
}

void JsonWriter::begin(char bracket, Layout layout) {
    separate();
    m_out << bracket;
    if (!m_levels.empty() && m_levels.back().layout != Layout::Block)
        layout = Layout::Line;
    m_levels.push_back({layout, 0});
}

void JsonWriter::end(char bracket) {
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.layout != Layout::Line && level.members > 0)
        newline(m_levels.size());
    m_out << bracket;
    if (m_levels.empty())
        m_out << '\n';
}

void JsonWriter::beginObject(Layout layout) {
    begin('{', layout);
}

void JsonWriter::endObject() {
    end('}');
}

void JsonWriter::beginArray(Layout layout) {
    begin('[', layout);
}

void JsonWriter::endArray() {
    end(']');
}

void JsonWriter::key(const char *name) {
    separate();
    m_out << quote(QString::fromUtf8(name)) << ": ";
    m_afterKey = true;
}

void JsonWriter::value(const QString &s) {
    separate();
    m_out << quote(s);
}

void JsonWriter::value(int v) {
    separate();
    m_out << v;
}

void JsonWriter::value(unsigned v) {
    separate();
    m_out << v;
}

void JsonWriter::value(qint64 v) {
    separate();
    m_out << v;
}

void JsonWriter::value(bool v) {
    separate();
    m_out << (v ? "true" : "false");
}

void JsonWriter::value(float v) {
    separate();
    m_out << formatFloat(v);
}

void JsonWriter::valueNull() {
    separate();
    m_out << "null";
}

QString JsonWriter::formatFloat(float v) {
    if (std::isnan(v))
        return QStringLiteral("\"nan\"");
    if (std::isinf(v))
        return v > 0 ? QStringLiteral("\"inf\"") : QStringLiteral("\"-inf\"");
    if (v == 0.0f)
        return std::signbit(v) ? QStringLiteral("-0") : QStringLiteral("0");
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.9g", double(v));
    return QString::fromLatin1(buf);
}

QString JsonWriter::quote(const QString &s) {
    QString r;
    r.reserve(s.size() + 2);
    r += QLatin1Char('"');
    for (QChar c : s) {
        switch (c.unicode()) {
        case '"':
            r += QLatin1String("\\\"");
            break;
        case '\\':
            r += QLatin1String("\\\\");
            break;
        case '\n':
            r += QLatin1String("\\n");
            break;
        case '\r':
            r += QLatin1String("\\r");
            break;
        case '\t':
            r += QLatin1String("\\t");
            break;
        default:
            if (c.unicode() < 0x20)
                r += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                r += c;
        }
    }
    r += QLatin1Char('"');
    return r;
}
