#include "Numbers.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

namespace {

// State of one run of characters up to an exponent mark.
struct Mantissa {
    float v = 0.0f;
    bool negative = false;
    bool dot = false;
    long long fraction = 0;
};

inline bool isExponentMark(char c) {
    return c == 'e' || c == 'E';
}

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

// Without an exponent mark, and while the digits read so far stay below this, every step of the
// accumulation (v x 10, then + digit) is exact in single precision (the result is at most 2^24),
// so an integer can stand in for v.
const uint32_t kExactLimit = ((uint32_t(1) << 24) - 9) / 10;

// The usual case: digits, dots and signs only, and few enough digits that the integer stays exact.
// False for anything else; the general path then starts over from the first character.
inline bool readPlain(const char *p, Mantissa &m) {
    uint32_t n = 0;
    long long fraction = 0;
    bool dot = false, negative = false;
    for (;; ++p) {
        unsigned char c = static_cast<unsigned char>(*p);
        unsigned d = unsigned(c) - '0';
        if (d < 10) {
            if (n > kExactLimit)
                return false;
            n = n * 10 + d;
            fraction += dot;
        } else if (c == '.') {
            dot = true;
        } else if (c == '-') {
            negative = true;
        } else if (c == '\0') {
            break;
        } else if (c != '+') {
            return false;
        }
    }
    m.v = float(n);
    m.negative = negative;
    m.dot = dot;
    m.fraction = fraction;
    return true;
}

float parseGeneral(const char *s) {
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

} // namespace

float parsePoserFloat(const char *s) {
    if (!s || !*s)
        return 0.0f;
    Mantissa m;
    return readPlain(s, m) ? finish(m, 0) : parseGeneral(s);
}

namespace {

const int kMaxBatch = 4;

// After this many divisions by 10 any value of readPlain (at most 2^24) has become 0, and stays 0,
// so longer fractions can stop there.
const long long kMaxDivisions = 64;

// The fractional divisions form one chain of dependent divisions per number; running the chains of
// a line side by side lets them overlap instead of waiting on each other.
template <int N> void parseBatch(const char *const *tokens, float *out) {
    float v[N];
    long long divisions[N];
    long long steps = 0;
    for (int j = 0; j < N; ++j) {
        const char *s = tokens[j];
        Mantissa m;
        if (s && *s && readPlain(s, m)) {
            v[j] = m.negative ? -m.v : m.v;
            divisions[j] = m.dot ? std::min(m.fraction, kMaxDivisions) : 0;
        } else {
            v[j] = s && *s ? parseGeneral(s) : 0.0f;
            divisions[j] = 0;
        }
        steps = std::max(steps, divisions[j]);
    }
    for (long long i = 0; i < steps; ++i)
        for (int j = 0; j < N; ++j)
            if (i < divisions[j])
                v[j] = v[j] / 10.0f;
    for (int j = 0; j < N; ++j)
        out[j] = v[j];
}

} // namespace

void parsePoserFloats(const char *const *tokens, int count, float *out) {
    for (; count >= kMaxBatch; count -= kMaxBatch, tokens += kMaxBatch, out += kMaxBatch)
        parseBatch<kMaxBatch>(tokens, out);
    switch (count) {
    case 3:
        parseBatch<3>(tokens, out);
        break;
    case 2:
        parseBatch<2>(tokens, out);
        break;
    case 1:
        parseBatch<1>(tokens, out);
        break;
    default:
        break;
    }
}

namespace text {

int leadingInt(const char *s) {
    while (*s == ' ' || *s == '\t' || *s == '\n' || *s == '\r' || *s == '\v' || *s == '\f')
        ++s;
    bool negative = false;
    if (*s == '-' || *s == '+')
        negative = *s++ == '-';
    long long v = 0;
    for (; *s >= '0' && *s <= '9'; ++s) {
        v = v * 10 + (*s - '0');
        if (v > (long long)INT_MAX + 1)
            v = (long long)INT_MAX + 1;
    }
    if (negative)
        v = -v;
    if (v > INT_MAX)
        return INT_MAX;
    return int(v);
}

bool faceTexIndex(const char *token, int &index) {
    for (const char *p = token; *p; ++p) {
        if (*p != '/')
            continue;
        if (p[1] == '/')
            return false;
        long long t = (long long)leadingInt(p + 1) - 1;
        index = t < INT_MIN ? INT_MIN : int(t);
        return true;
    }
    return false;
}

} // namespace text
