#include "JsonWriter.h"
#include "FloatText.h"

#include <QIODevice>
#include <cmath>
#include <cstring>

namespace {

// The buffer goes to the device once it holds this much.
const size_t kFlushBytes = size_t(1) << 20;

const char kHex[] = "0123456789abcdef";

} // namespace

JsonWriter::JsonWriter(QIODevice &out) : m_out(out), m_buf(kFlushBytes + 4096) {}

JsonWriter::~JsonWriter() {
    flush();
}

void JsonWriter::flush() {
    if (m_size)
        m_out.write(m_buf.data(), qint64(m_size));
    m_size = 0;
}

void JsonWriter::grow(size_t n) {
    m_buf.resize(std::max(2 * m_buf.size(), m_size + n));
}

void JsonWriter::put(const char *s, size_t n) {
    std::memcpy(room(n), s, n);
    m_size += n;
}

void JsonWriter::newline(size_t depth) {
    if (m_size >= kFlushBytes)
        flush();
    const size_t spaces = 2 * (depth < kMaxIndentLevels ? depth : kMaxIndentLevels);
    char *p = room(spaces + 1);
    *p = '\n';
    std::memset(p + 1, ' ', spaces);
    m_size += spaces + 1;
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
        put(',');
    const bool breakLine =
        level.layout == Layout::Block || (level.layout == Layout::Rows && level.members % kRowLength == 0);
    if (breakLine)
        newline(m_levels.size());
    else if (level.members > 0)
        put(' ');
    ++level.members;
}

void JsonWriter::begin(char bracket, Layout layout) {
    separate();
    put(bracket);
    if (!m_levels.empty() && m_levels.back().layout != Layout::Block)
        layout = Layout::Line;
    m_levels.push_back({layout, 0});
}

void JsonWriter::end(char bracket) {
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (level.layout != Layout::Line && level.members > 0)
        newline(m_levels.size());
    put(bracket);
    if (m_levels.empty())
        put('\n');
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
    putQuoted(name);
    put(": ", 2);
    m_afterKey = true;
}

void JsonWriter::value(const QString &s) {
    separate();
    putQuoted(s);
}

void JsonWriter::value(const char *s) {
    separate();
    putQuoted(s);
}

void JsonWriter::value(int v) {
    separate();
    putInteger(v);
}

void JsonWriter::value(unsigned v) {
    separate();
    putInteger(v);
}

void JsonWriter::value(qint64 v) {
    separate();
    putInteger(v);
}

void JsonWriter::value(bool v) {
    separate();
    v ? put("true", 4) : put("false", 5);
}

void JsonWriter::value(float v) {
    separate();
    m_size += formatFloat(v, room(kFloatChars));
}

void JsonWriter::valueNull() {
    separate();
    put("null", 4);
}

void JsonWriter::putInteger(long long v) {
    char digits[24];
    char *end = digits + sizeof digits, *p = end;
    unsigned long long a = v < 0 ? 0ULL - (unsigned long long)v : (unsigned long long)v;
    do
        *--p = char('0' + a % 10);
    while (a /= 10);
    if (v < 0)
        *--p = '-';
    put(p, size_t(end - p));
}

size_t JsonWriter::formatFloat(float v, char *out) {
    const char *special = std::isnan(v)   ? "\"nan\""
                          : std::isinf(v) ? (v > 0 ? "\"inf\"" : "\"-inf\"")
                          : v == 0.0f     ? (std::signbit(v) ? "-0" : "0")
                                          : nullptr;
    if (!special)
        return formatFloat9(v, out);
    const size_t n = std::strlen(special);
    std::memcpy(out, special, n);
    return n;
}

QString JsonWriter::formatFloat(float v) {
    char buf[kFloatChars];
    return QString::fromLatin1(buf, qsizetype(formatFloat(v, buf)));
}

// Keys and class names: plain ASCII is copied as it is, anything else quoted as a string.
void JsonWriter::putQuoted(const char *s) {
    const size_t n = std::strlen(s);
    for (size_t i = 0; i < n; ++i) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        if (c < 0x20 || c >= 0x80 || c == '"' || c == '\\') {
            putQuoted(QString::fromUtf8(s, qsizetype(n)));
            return;
        }
    }
    char *p = room(n + 2);
    p[0] = '"';
    std::memcpy(p + 1, s, n);
    p[n + 1] = '"';
    m_size += n + 2;
}

// ASCII is escaped or copied byte by byte; runs of other characters are encoded to UTF-8 by Qt, as
// the text stream this writer replaces did.
void JsonWriter::putQuoted(const QString &s) {
    put('"');
    const QChar *c = s.constData(), *end = c + s.size();
    while (c < end) {
        const char16_t u = c->unicode();
        if (u >= 0x80) {
            const QChar *run = c;
            while (c < end && c->unicode() >= 0x80)
                ++c;
            const QByteArray utf8 = QStringView(run, c).toUtf8();
            put(utf8.constData(), size_t(utf8.size()));
            continue;
        }
        ++c;
        switch (u) {
        case '"':
            put("\\\"", 2);
            break;
        case '\\':
            put("\\\\", 2);
            break;
        case '\n':
            put("\\n", 2);
            break;
        case '\r':
            put("\\r", 2);
            break;
        case '\t':
            put("\\t", 2);
            break;
        default:
            if (u < 0x20) {
                const char escape[6] = {'\\', 'u', '0', '0', kHex[u >> 4], kHex[u & 15]};
                put(escape, 6);
            } else {
                put(char(u));
            }
        }
    }
    put('"');
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
