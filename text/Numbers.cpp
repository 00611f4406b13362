#include "Numbers.h"
#include "NumberScan.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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
    float v = 0.0f, out = 0.0f;
    int32_t divisions = 0;
    const char *end = text::scanToken(s, v, divisions);
    if (!end || *end != '\0')
        return parseGeneral(s);
    text::finishFloats(&v, &divisions, 1, &out);
    return out;
}

void parsePoserFloats(const char *const *tokens, int count, float *out) {
    const int kGroup = 16;
    float values[kGroup];
    int32_t divisions[kGroup];
    for (; count > 0; count -= kGroup, tokens += kGroup, out += kGroup) {
        const int n = count < kGroup ? count : kGroup;
        for (int i = 0; i < n; ++i) {
            const char *s = tokens[i];
            const char *end = s && *s ? text::scanToken(s, values[i], divisions[i]) : nullptr;
            if (!end || *end != '\0') {
                values[i] = s && *s ? parseGeneral(s) : 0.0f;
                divisions[i] = 0;
            }
        }
        text::finishFloats(values, divisions, n, out);
    }
}

namespace text {

namespace {

#if defined(__SSE2__)
// kLanes numbers, four to a vector: each step divides every lane that still has divisions to take.
// The vectors' chains of dependent divisions overlap, and each division serves four numbers.
constexpr int kVectors = 3, kLanes = 4 * kVectors;

void finishGroup(const float *values, const int32_t *divisions, float *out) {
    __m128 v[kVectors];
    __m128i left[kVectors];
    int32_t fewest = divisions[0], most = divisions[0];
    for (int i = 1; i < kLanes; ++i) {
        fewest = divisions[i] < fewest ? divisions[i] : fewest;
        most = divisions[i] > most ? divisions[i] : most;
    }
    for (int j = 0; j < kVectors; ++j) {
        v[j] = _mm_loadu_ps(values + 4 * j);
        left[j] = _mm_loadu_si128(reinterpret_cast<const __m128i *>(divisions + 4 * j));
    }
    const __m128 ten = _mm_set1_ps(10.0f);
    int32_t i = 0;
    for (; i < fewest; ++i) // every lane: the usual case, numbers of a file share their decimals
        for (int j = 0; j < kVectors; ++j)
            v[j] = _mm_div_ps(v[j], ten);
    for (; i < most; ++i) {
        const __m128i step = _mm_set1_epi32(i);
        for (int j = 0; j < kVectors; ++j) {
            const __m128 take = _mm_castsi128_ps(_mm_cmpgt_epi32(left[j], step));
            const __m128 q = _mm_div_ps(v[j], ten);
            v[j] = _mm_or_ps(_mm_and_ps(take, q), _mm_andnot_ps(take, v[j]));
        }
    }
    for (int j = 0; j < kVectors; ++j)
        _mm_storeu_ps(out + 4 * j, v[j]);
}
#endif

} // namespace

void finishFloats(const float *values, const int32_t *divisions, int count, float *out) {
#if defined(__SSE2__)
    for (; count >= kLanes; count -= kLanes, values += kLanes, divisions += kLanes, out += kLanes)
        finishGroup(values, divisions, out);
    if (count > 4) { // a short group, padded with numbers that take no step
        float paddedValues[kLanes] = {}, result[kLanes];
        int32_t paddedDivisions[kLanes] = {};
        std::copy(values, values + count, paddedValues);
        std::copy(divisions, divisions + count, paddedDivisions);
        finishGroup(paddedValues, paddedDivisions, result);
        std::copy(result, result + count, out);
        return;
    }
#endif
    for (int i = 0; i < count; ++i) {
        float v = values[i];
        for (int32_t k = 0; k < divisions[i]; ++k)
            v = v / 10.0f;
        out[i] = v;
    }
}

float digitSteps(const char *begin, const char *end) {
    float v = 0.0f;
    for (const char *p = begin; p < end; ++p)
        if (*p != '.') {
            v = v * 10.0f;
            v = v + float(*p - '0');
        }
    return v;
}

bool isPoserNumber(const char *s) {
    bool digit = false;
    for (; *s && !isExponentMark(*s); ++s) {
        if (*s >= '0' && *s <= '9')
            digit = true;
        else if (*s != '-' && *s != '+' && *s != '.')
            return false;
    }
    return digit;
}

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
