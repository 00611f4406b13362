#pragma once
// The number grammar step by step, as plainly as it can be written: the reference that the unit
// tests and the bench/number_identity proof compare the fast parsers with.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

inline uint32_t floatBits(float f) {
    uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

// volatile keeps every intermediate a float.
inline float referenceNumber(const char *s) {
    volatile float v = 0.0f;
    bool negative = false, dot = false;
    long fraction = 0;
    for (; *s && *s != 'e' && *s != 'E'; ++s) {
        if (*s >= '0' && *s <= '9') {
            v = v * 10.0f;
            v = v + float(*s - '0');
            fraction += dot;
        } else if (*s == '-' || *s == '.') {
            (*s == '-' ? negative : dot) = true;
        } else if (*s != '+') {
            return 0.0f;
        }
    }
    if (*s) { // the text after the mark, truncated, is the exponent
        const long long n =
            (long long)std::clamp(std::trunc(double(referenceNumber(s + 1))), -2147483648.0, 2147483647.0);
        for (long long i = 0; i < n && v != 0.0f && !std::isinf(v); ++i)
            v = v * 10.0f;
        for (long long i = 0; i < -n && v != 0.0f; ++i)
            v = v / 10.0f;
    }
    if (negative)
        v = -v;
    for (long i = 0; i < fraction; ++i)
        v = v / 10.0f;
    return v;
}
