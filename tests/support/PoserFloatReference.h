#pragma once
// The step-by-step reading of Poser numbers, written as plainly as possible, for comparing the
// optimised parser with it bit for bit.

#include <cmath>
#include <cstdint>
#include <cstring>

inline uint32_t bits(float f) {
    uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

// Straightforward reading of the steps. volatile keeps each intermediate in a float, so neither the
// compiler nor the hardware can fuse or widen an operation.
inline float reference(const char *s) {
    if (!*s)
        return 0.0f;
    volatile float v = 0.0f;
    bool negative = false, dot = false;
    long fraction = 0;
    for (; *s; ++s) {
        char c = *s;
        if (c >= '0' && c <= '9') {
            v = v * 10.0f;
            v = v + float(c - '0');
            if (dot)
                ++fraction;
        } else if (c == '-') {
            negative = true;
        } else if (c == '.') {
            dot = true;
        } else if (c == '+') {
        } else if (c == 'e' || c == 'E') {
            double e = std::trunc(double(reference(s + 1)));
            // Beyond the int range the count saturates; the loops stop once v is 0 or infinite
            // because further steps cannot change it.
            long long n = e > 2147483647.0 ? 2147483647LL : e < -2147483648.0 ? -2147483648LL : (long long)e;
            for (long long i = 0; i < n && v != 0.0f && !std::isinf(v); ++i)
                v = v * 10.0f;
            for (long long i = 0; i < -n && v != 0.0f; ++i)
                v = v / 10.0f;
            break;
        } else {
            return 0.0f;
        }
    }
    if (negative)
        v = -v;
    if (dot)
        for (long i = 0; i < fraction; ++i)
            v = v / 10.0f;
    return v;
}
