#include "FloatText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

using u128 = unsigned __int128;

const uint64_t kBillion = 1000000000;

struct Powers {
    u128 of[31];
    constexpr Powers() : of() {
        u128 p = 1;
        for (u128 &x : of) {
            x = p;
            p *= 10;
        }
    }
};
constexpr Powers kPow10;

// m x 2^e2 x 10^p rounded to an integer (ties to even), exactly, when that fits the arithmetic
// here: false for values too small or too large for 128 bits, which snprintf then writes.
bool scaledRound(uint64_t m, int e2, int p, uint64_t &rounded, bool &billionOrMore) {
    u128 q = 0, r = 0, half = 0;
    bool tieable = false;
    if (p >= 0) {
        if (p > 30 || e2 <= -127)
            return false;
        const u128 num = u128(m) * kPow10.of[p]; // below 2^24 x 10^30 < 2^124
        if (e2 >= 0) {
            q = num << e2; // the value is below 10^10 here, so this is small
        } else {
            const int s = -e2;
            q = num >> s;
            r = num & ((u128(1) << s) - 1);
            half = u128(1) << (s - 1);
            tieable = true;
        }
    } else {
        if (-p > 30 || e2 < 0)
            return false;
        const u128 num = u128(m) << e2, den = kPow10.of[-p]; // m x 2^e2 is a float: below 2^128
        q = num / den;
        r = num % den;
        half = den / 2; // den is even: 10^k
        tieable = true;
    }
    billionOrMore = q >= kBillion;
    if (tieable && (r > half || (r == half && (q & 1))))
        ++q;
    rounded = uint64_t(q);
    return true;
}

char *putExponent(char *p, int x) {
    *p++ = 'e';
    *p++ = x < 0 ? '-' : '+';
    unsigned a = unsigned(x < 0 ? -x : x);
    if (a >= 100)
        *p++ = char('0' + a / 100);
    *p++ = char('0' + a / 10 % 10);
    *p++ = char('0' + a % 10);
    return p;
}

} // namespace

size_t formatFloat9(float v, char *out) {
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    const uint32_t biased = (bits >> 23) & 0xFF, fraction = bits & 0x7FFFFF;
    if (fraction == 0 && biased == 0)
        return size_t(std::snprintf(out, 32, "%.9g", double(v)));
    const uint64_t m = biased ? fraction | 0x800000 : fraction;
    const int e2 = biased ? int(biased) - 150 : -149;
    // floor(log10 |v|) is this or one more: floor(log2 |v|) x log10(2), 78913 / 2^18 standing for log10(2).
    const int log2v = e2 + 63 - __builtin_clzll(m);
    int x = (log2v * 78913) >> 18;
    uint64_t n = 0;
    bool billionOrMore = false;
    if (!scaledRound(m, e2, 8 - x, n, billionOrMore))
        return size_t(std::snprintf(out, 32, "%.9g", double(v)));
    if (billionOrMore) {
        ++x;
        scaledRound(m, e2, 8 - x, n, billionOrMore);
    }
    if (n == kBillion) { // rounded up to the next power of ten
        n /= 10;
        ++x;
    }
    char digits[9];
    for (int i = 8; i >= 0; --i, n /= 10)
        digits[i] = char('0' + n % 10);
    int count = 9;
    while (count > 1 && digits[count - 1] == '0')
        --count;

    char *p = out;
    if (bits >> 31)
        *p++ = '-';
    if (x < -4 || x >= 9) {
        *p++ = digits[0];
        if (count > 1) {
            *p++ = '.';
            std::memcpy(p, digits + 1, size_t(count - 1));
            p += count - 1;
        }
        p = putExponent(p, x);
    } else if (x >= 0) {
        for (int i = 0; i <= x; ++i)
            *p++ = i < count ? digits[i] : '0';
        if (count > x + 1) {
            *p++ = '.';
            std::memcpy(p, digits + x + 1, size_t(count - x - 1));
            p += count - x - 1;
        }
    } else {
        *p++ = '0';
        *p++ = '.';
        for (int i = 0; i < -x - 1; ++i)
            *p++ = '0';
        std::memcpy(p, digits, size_t(count));
        p += count;
    }
    return size_t(p - out);
}
