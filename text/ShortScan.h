#pragma once
// The short numbers Poser delta and key lines are made of ("-0.004512", "1234") read in one step of
// eight characters, with the results of NumberScan.h's scanners, which read every other form.
//
// The same conditions as NumberScan.h: the line [begin, last) has a blank at `last` and its last
// eight bytes up to `last` can be read; nothing past `last` is read. With `kSlack` the caller also
// promises seven readable bytes past `last` (the line reader's slack), and loads skip their bound.

#include "NumberScan.h"

namespace text {

namespace swar {

// The high bit of every byte of x that is not zero, exactly (no carry crosses a byte).
OV_SCAN_INLINE uint64_t nonZeroBytes(uint64_t x) {
    const uint64_t low7 = 0x7F7F7F7F7F7F7F7Fu;
    return (((x & low7) + low7) | x) & ~low7;
}

// How many of the characters of x, from the first, are tabs or spaces (0 to 8).
OV_SCAN_INLINE int indentRun(uint64_t x) {
    const uint64_t other = nonZeroBytes(x ^ 0x0909090909090909u) & nonZeroBytes(x ^ 0x2020202020202020u);
    return other ? __builtin_ctzll(other) >> 3 : 8;
}

// The eight characters from p; past `last` they are whatever follows when the caller has slack.
template <bool kSlack> OV_SCAN_INLINE uint64_t loadAt(const char *p, const char *last) {
    if (!kSlack)
        return load8(p, last);
    uint64_t x;
    std::memcpy(&x, p, 8);
    return x;
}

// isBlank by a table: one load instead of three comparisons, for the checks of every number.
struct BlankTable {
    bool is[256];
    constexpr BlankTable() : is() {
        for (int c = 0; c < 256; ++c)
            is[c] = c == ' ' || (c >= 9 && c <= 13) || c == 0;
    }
};
inline constexpr BlankTable kBlanks{};
OV_SCAN_INLINE bool blank(char c) {
    return kBlanks.is[static_cast<unsigned char>(c)];
}

} // namespace swar

// The first character at or after p that is no blank, or `last`. Indentation of tabs and spaces is
// passed eight characters at a time.
template <bool kSlack = false> OV_SCAN_INLINE const char *skipBlanks(const char *p, const char *last) {
    for (int run = 8; run == 8 && p < last; p += run)
        run = swar::indentRun(swar::loadAt<kSlack>(p, last));
    if (p > last)
        p = last;
    while (p < last && swar::blank(*p))
        ++p;
    return p;
}

// An optional minus and one to nine digits ending at a blank, as an int; null for any other text.
template <bool kSlack = false>
OV_SCAN_INLINE const char *scanShortInt(const char *p, const char *last, int &value) {
    const bool negative = *p == '-';
    p += negative;
    const uint64_t x = swar::loadAt<kSlack>(p, last);
    const int run = swar::digitRun(x);
    int v = 0;
    if (run < 8) {
        if (run == 0)
            return nullptr;
        v = int(swar::digitsValue(x, run));
        p += run;
    } else { // eight digits or more: the ninth one by one
        v = int(swar::digitsValue(x, 8));
        p += 8;
        if (digitOf(*p) < 10)
            v = v * 10 + int(digitOf(*p++));
    }
    if (!swar::blank(*p))
        return nullptr;
    value = negative ? -v : v;
    return p;
}

// scanPlainFloat with the same results, quicker for numbers of up to seven digits that fit in eight
// characters after the sign, with or without a dot; it hands any other number to scanPlainFloat.
template <bool kSlack = false>
OV_SCAN_INLINE const char *scanShortFloat(const char *p, const char *last, float &value, int32_t &divisions) {
    const char *const start = p;
    const bool negative = *p == '-';
    p += negative | (*p == '+');
    const uint64_t x = swar::loadAt<kSlack>(p, last);
    // Bytes that are no digit: exact up to and including the first one, and past it when that one is
    // a dot (only bytes from 0xFA up carry into the next).
    const uint64_t high = 0xF0F0F0F0F0F0F0F0u, three = 0x3030303030303030u;
    uint64_t other = ((x & high) ^ three) | (((x + 0x0606060606060606u) & high) ^ three);
    const int whole = other ? __builtin_ctzll(other) >> 3 : 8;
    uint64_t digits = x;
    int run = whole, length = whole;
    if (whole < 8 && ((x >> (8 * whole)) & 0xFF) == '.') {
        // The dot taken out: the digits after it move down one byte, next to the whole part.
        const uint64_t below = (uint64_t(1) << (8 * whole)) - 1;
        digits = (x & below) | ((x >> 8) & ~below);
        other &= other - 1; // the byte after the fraction
        length = other ? __builtin_ctzll(other) >> 3 : 8;
        run = length - 1;
    }
    if (run == 0 || run == 8 || !swar::blank(p[length]))
        return scanPlainFloat(start, last, value, divisions);
    // Seven digits stay below 2^24, where every step of the grammar's accumulation is exact.
    const float v = float(swar::digitsValue(digits, run));
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    bits |= uint32_t(negative) << 31;
    std::memcpy(&value, &bits, sizeof value);
    divisions = int32_t(run - whole);
    return p + length;
}

} // namespace text
