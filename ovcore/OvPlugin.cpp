#include "OvPlugin.h"

#include <cctype>

static int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    c = char(std::tolower(static_cast<unsigned char>(c)));
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

OvGUID::OvGUID(const char *text) {
    m_bytes.fill(0);
    if (!text)
        return;
    std::array<uint8_t, 16> bytes{};
    const char *p = text;
    if (*p == '{')
        ++p;
    static const int groups[5] = {4, 2, 2, 2, 6};
    int b = 0;
    for (int g = 0; g < 5; ++g) {
        for (int i = 0; i < groups[g]; ++i) {
            int hi = hexValue(p[0]);
            int lo = hi < 0 ? -1 : hexValue(p[1]);
            if (lo < 0)
                return;
            bytes[size_t(b++)] = uint8_t(hi * 16 + lo);
            p += 2;
        }
        if (g < 4) {
            if (*p != '-')
                return;
            ++p;
        }
    }
    if (*p == '}')
        ++p;
    if (*p != '\0')
        return;
    m_bytes = bytes;
}

bool OvGUID::isNull() const {
    for (uint8_t b : m_bytes)
        if (b)
            return false;
    return true;
}

QString OvGUID::toString() const {
    static const char *hex = "0123456789ABCDEF";
    QString s = QStringLiteral("{");
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            s += QLatin1Char('-');
        s += QLatin1Char(hex[m_bytes[size_t(i)] >> 4]);
        s += QLatin1Char(hex[m_bytes[size_t(i)] & 15]);
    }
    s += QLatin1Char('}');
    return s;
}
