#pragma once
// Numbers and OBJ face corners read straight from a line of text, in one pass and eight characters
// at a time, for the usual forms only; anything else is left to the general grammar (Numbers.h),
// whose results these give.
//
// Every scanner reads a line [begin, last) whose byte at `last` is a blank (the reader writes a NUL
// there) and whose last eight bytes up to `last` can be read: the line with its final byte holds at
// least eight bytes. Nothing past `last` is read.

#include "Numbers.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace text {

// The scanners run for every number of a file: inlined into the reader's loops, whatever the
// compiler's own estimate.
#if defined(__GNUC__)
#define OV_SCAN_INLINE inline __attribute__((always_inline))
#else
#define OV_SCAN_INLINE inline
#endif

// The shortest line (with its final blank) the scanners take; shorter ones are copied first.
constexpr ptrdiff_t kMinScanBytes = 8;

namespace swar {

// The eight characters from p, the first in the low byte, with those past `last` read as 0.
OV_SCAN_INLINE uint64_t load8(const char *p, const char *last) {
    const char *from = last - p >= 7 ? p : last - 7;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    uint64_t x;
    std::memcpy(&x, from, 8);
#else
    uint64_t x = 0;
    for (int i = 0; i < 8; ++i)
        x |= uint64_t(static_cast<unsigned char>(from[i])) << (8 * i);
#endif
    return x >> (8 * (p - from));
}

// How many of the characters of x, from the first, are digits (0 to 8).
OV_SCAN_INLINE int digitRun(uint64_t x) {
    const uint64_t high = 0xF0F0F0F0F0F0F0F0u, three = 0x3030303030303030u;
    // Zero bytes where the high half is 3, and where the low half is at most 9. A carry out of a
    // byte (0xFA and above) only disturbs the bytes after it, which lie beyond that non-digit.
    const uint64_t other = ((x & high) ^ three) | (((x + 0x0606060606060606u) & high) ^ three);
    return other ? __builtin_ctzll(other) >> 3 : 8;
}

// The value of the first `run` (1 to 8) digit characters of x: pairs of digits, then pairs of
// pairs, then the two halves, each level with one multiplication (a x 10 + b in each pair).
OV_SCAN_INLINE uint32_t digitsValue(uint64_t x, int run) {
    x = (x << (8 * (8 - run))) & 0x0F0F0F0F0F0F0F0Fu; // the digits last, zeros before them
    x = ((x * (10 * 256 + 1)) >> 8) & 0x00FF00FF00FF00FFu;
    x = ((x * (100 * 65536 + 1)) >> 16) & 0x0000FFFF0000FFFFu;
    return uint32_t((x * ((uint64_t(10000) << 32) + 1)) >> 32);
}

constexpr uint64_t kPow10[9] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

} // namespace swar

OV_SCAN_INLINE unsigned digitOf(char c) {
    return unsigned(static_cast<unsigned char>(c)) - '0';
}

// Reads a number of the usual form, an optional sign, digits and at most one dot, that ends at a
// blank, and returns the position of that blank; null for any other text. `value` receives the
// digits as the grammar accumulates them, with the sign; each of the `divisions` digits after the
// dot still divides it by 10 (finishFloats).
OV_SCAN_INLINE const char *scanPlainFloat(const char *p, const char *last, float &value, int32_t &divisions) {
    const bool negative = *p == '-';
    p += negative | (*p == '+');
    const char *const first = p;
    uint64_t n = 0;
    for (unsigned d; (d = digitOf(*p)) < 10; ++p) // the whole part: mostly a digit or two
        n = n * 10 + d;
    ptrdiff_t digits = p - first, fraction = 0;
    if (*p == '.') {
        const char *const dot = ++p;
        for (int run = 8; run == 8; p += run) {
            const uint64_t x = swar::load8(p, last);
            run = swar::digitRun(x);
            if (run)
                n = n * swar::kPow10[run] + swar::digitsValue(x, run); // wraps past 19 digits: unused then
        }
        fraction = p - dot;
        digits += fraction;
    }
    if (digits == 0 || !isBlank(*p))
        return nullptr;
    // Up to 2^24 every step of the grammar's accumulation is exact, so the integer is its result.
    const float v = digits <= 19 && n <= (uint64_t(1) << 24) ? float(uint32_t(n)) : digitSteps(first, p);
    uint32_t bits; // the sign set without a branch: numbers are as often negative as not
    std::memcpy(&bits, &v, sizeof bits);
    bits |= uint32_t(negative) << 31;
    std::memcpy(&value, &bits, sizeof value);
    divisions = fraction < kMaxDivisions ? int32_t(fraction) : kMaxDivisions;
    return p;
}

// scanPlainFloat of a NUL-terminated token; a short one is read from a padded copy.
inline const char *scanToken(const char *s, float &value, int32_t &divisions) {
    const size_t length = std::strlen(s);
    if (ptrdiff_t(length) + 1 >= kMinScanBytes)
        return scanPlainFloat(s, s + length, value, divisions);
    char padded[kMinScanBytes] = {};
    std::memcpy(padded, s, length);
    const char *end = scanPlainFloat(padded, padded + kMinScanBytes - 1, value, divisions);
    return end ? s + (end - padded) : nullptr;
}

#if defined(__SSE2__)
// Corners of plain digits and slashes ("12", "12/7", "12/7/3", "12//3") that end within sixteen
// characters, classified all at once: one mask of digits and slashes shows where the corner and
// each of its numbers end. Reads the sixteen characters from p; null for any other corner, which the
// byte-wise scan then reads. Returns the blank after the corner.
OV_SCAN_INLINE const char *scanDigitCorner(const char *p, int &vertex, bool &hasTex, int &texIndex) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    const __m128i d = _mm_sub_epi8(x, _mm_set1_epi8('0'));
    const unsigned digits = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(d, _mm_set1_epi8(9)), d)));
    const unsigned slashes = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(x, _mm_set1_epi8('/'))));
    const int end = __builtin_ctz(~(digits | slashes)); // bit 16 and up are never set
    if (end == 16 || !isBlank(p[end]))
        return nullptr;
    const unsigned endBit = 1u << end, inside = slashes & (endBit - 1);
    const int a = __builtin_ctz(inside | endBit); // the vertex's digits
    if (a == 0 || a > 7)
        return nullptr;
    if (a == end || p[a + 1] == '/') { // "12", or "12//" and whatever digits and slashes follow
        vertex = int(swar::digitsValue(swar::load8(p, p + 15), a));
        hasTex = false;
        return p + end;
    }
    const int b = __builtin_ctz((inside & ~((2u << a) - 1)) | endBit) - a - 1; // the texture's digits
    if (b == 0 || b > 7)
        return nullptr;
    // Both numbers at once, one in each half: their digits last in it, zeros before them.
    const __m128i both =
        _mm_and_si128(_mm_set_epi64x(int64_t(swar::load8(p + a + 1, p + 15) << (8 * (8 - b))),
                                     int64_t(swar::load8(p, p + 15) << (8 * (8 - a)))),
                      _mm_set1_epi8(0x0F));
    // Pairs of digits (first x 10 + second), pairs of pairs, then the two halves of each number.
    const __m128i pairs =
        _mm_add_epi16(_mm_mullo_epi16(_mm_and_si128(both, _mm_set1_epi16(0xFF)), _mm_set1_epi16(10)),
                      _mm_srli_epi16(both, 8));
    const __m128i quads = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const __m128i values =
        _mm_add_epi64(_mm_mul_epu32(quads, _mm_set1_epi64x(10000)), _mm_srli_epi64(quads, 32));
    vertex = _mm_cvtsi128_si32(values);
    texIndex = _mm_cvtsi128_si32(_mm_unpackhi_epi64(values, values)) - 1;
    hasTex = true;
    return p + end; // what follows the texture index is not read
}
#endif

// readCorner (Numbers.h) of the corner at p, with the same results and the same null for other
// forms; returns where reading stopped (the corner's rest, "/n" or "//n", may follow).
OV_SCAN_INLINE const char *scanCorner(const char *p, const char *last, int &vertex, bool &hasTex,
                                      int &texIndex) {
#if defined(__SSE2__)
    if (last - p >= 15)
        if (const char *end = scanDigitCorner(p, vertex, hasTex, texIndex))
            return end;
#endif
    const char *const corner = p;
    bool longNumber = false;
    auto number = [&](int &out) {
        const bool negative = *p == '-';
        p += negative;
        const uint64_t x = swar::load8(p, last);
        const int run = swar::digitRun(x);
        longNumber = run == 8;
        if (run == 0 || longNumber)
            return false;
        p += run;
        const int v = int(swar::digitsValue(x, run));
        out = negative ? -v : v;
        return true;
    };
    if (!number(vertex))
        return longNumber ? readCorner(corner, vertex, hasTex, texIndex) : nullptr;
    if (isBlank(*p) || (p[0] == '/' && p[1] == '/')) {
        hasTex = false;
        return p;
    }
    if (*p != '/')
        return nullptr;
    ++p;
    int t = 0;
    if (!number(t))
        return longNumber ? readCorner(corner, vertex, hasTex, texIndex) : nullptr;
    hasTex = true;
    texIndex = t - 1;
    return p;
}

} // namespace text
