#include "PoserFloat.h"

#include <cmath>

namespace {

// State of one run of characters up to an exponent mark.
struct Mantissa {
    float v = 0.0f;
    bool negative = false;
    bool dot = false;
    long long fraction = 0;
};

inline bool isExponentMark(char c) { return c == 'e' || c == 'E'; }

// Reads [p, end) into m; false when a character outside digits, signs and dots is met.
bool readMantissa(const char *p, const char *end, Mantissa &m) {
    for (; p < end; ++p) {
        char c = *p;
        if (c >= '0' && c <= '9') {
            m.v = m.v * 10.0f;
            m.v = m.v + float(c - '0');
            if (m.dot)
                ++m.fraction;
        } else if (c == '-') {
            m.negative = true;
        } else if (c == '.') {
            m.dot = true;
        } else if (c != '+') {
            return false;
        }
    }
    return true;
}

// Exponent value truncated toward zero; beyond +-1000 every float has long become 0 or infinite.
int exponentOf(float x) {
    if (x >= 1000.0f)
        return 1000;
    if (x <= -1000.0f)
        return -1000;
    return int(x);
}

float finish(const Mantissa &m, int exponent) {
    float v = m.v;
    for (int i = 0; i < exponent && v != 0.0f && !std::isinf(v); ++i)
        v = v * 10.0f;
    for (int i = 0; i > exponent && v != 0.0f; --i)
        v = v / 10.0f;
    if (m.negative)
        v = -v;
    if (m.dot)
        for (long long i = 0; i < m.fraction && v != 0.0f && !std::isinf(v); ++i)
            v = v / 10.0f;
    return v;
}

// Value of a text that may hold exponent marks: "a e b e c" is a x 10^trunc(b x 10^trunc(c)).
// Evaluated from the right so that a long run of marks costs no recursion.
float parseWithExponents(const char *s, const char *firstMark, const char *end) {
    const char *segEnd = end;
    float inner = 0.0f;
    bool haveInner = false;
    for (const char *q = end; q > firstMark;) {
        --q;
        if (!isExponentMark(*q))
            continue;
        // [q + 1, segEnd) is one segment; q is the mark before it.
        Mantissa m;
        inner = readMantissa(q + 1, segEnd, m) ? finish(m, haveInner ? exponentOf(inner) : 0) : 0.0f;
        haveInner = true;
        segEnd = q;
    }
    Mantissa head;
    if (!readMantissa(s, firstMark, head))
        return 0.0f;
    return finish(head, exponentOf(inner));
}

} // namespace

float parsePoserFloat(const char *s) {
    if (!s || !*s)
        return 0.0f;
    Mantissa m;
    const char *p = s;
    for (;; ++p) {
        char c = *p;
        if (c >= '0' && c <= '9') {
            m.v = m.v * 10.0f;
            m.v = m.v + float(c - '0');
            if (m.dot)
                ++m.fraction;
        } else if (c == '.') {
            m.dot = true;
        } else if (c == '-') {
            m.negative = true;
        } else if (c == '+') {
        } else if (c == '\0') {
            return finish(m, 0);
        } else if (isExponentMark(c)) {
            const char *end = p;
            while (*end)
                ++end;
            return parseWithExponents(s, p, end);
        } else {
            return 0.0f;
        }
    }
}
