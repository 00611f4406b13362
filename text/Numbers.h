#pragma once
// The number and integer grammar shared by the Poser and the OBJ readers.

#include <cstdint>

// The number parser of Poser and OBJ files. Not a standard conversion: signs and dots may stand
// anywhere among the digits, any other character makes the whole number 0, and every step is
// rounded to single precision (so results can differ in the last bit from strtof).
float parsePoserFloat(const char *s);

// parsePoserFloat of several tokens at once (the numbers of one line), with the same results.
void parsePoserFloats(const char *const *tokens, int count, float *out);

namespace text {

// The blanks that separate tokens, as the line reader splits lines (NUL is one).
// One bit per blank among the first 33 characters: NUL, tab to carriage return, and space.
constexpr uint64_t kBlankBits = 0x1u | 0x3Eu << 8 | uint64_t(1) << ' ';
inline bool isBlank(char c) {
    const unsigned u = static_cast<unsigned char>(c);
    return u <= ' ' && (kBlankBits >> u) & 1u;
}

// After this many divisions by 10 every float has become 0 (or stays infinite), so longer fractions
// stop there.
constexpr int32_t kMaxDivisions = 90;

// The digits in [begin, end) (a dot among them is passed over) accumulated as the grammar does:
// v = v x 10, then v = v + digit, each step in single precision.
float digitSteps(const char *begin, const char *end);

// out[i] = values[i] divided by 10, divisions[i] times (at most kMaxDivisions), each quotient
// rounded to single precision: bit for bit the steps of the grammar. Several numbers are divided
// side by side. NumberScan.h reads values and divisions from text.
void finishFloats(const float *values, const int32_t *divisions, int count, float *out);

// True when parsePoserFloat reads a number from s rather than falling back to 0: at least one digit
// before any exponent mark, and before it nothing but digits, signs and dots.
bool isPoserNumber(const char *s);

// The integer value of the leading digits, as atoi reads them (blanks, an optional sign, digits),
// saturated to the int range instead of overflowing.
int leadingInt(const char *s);

// Texture part of an OBJ face corner "v/t[/n]": true with atoi(t) - 1 in `index` when the character
// after the first '/' is not a second '/'; false for "v" and "v//n".
bool faceTexIndex(const char *token, int &index);

// leadingInt and faceTexIndex of a corner in one pass, for the usual forms "v", "v/t", "v//n" and
// "v/t/n" with optionally negative numbers of up to nine digits; the corner ends at a blank (NUL
// included), whatever follows t or a second '/' is not looked at. Null for any other form, which
// the two functions above then read (with the same results); else where reading stopped: the blank
// after "v", the second '/' of "v//n", or the character after t.
inline const char *readCorner(const char *p, int &vertex, bool &hasTex, int &texIndex) {
    auto number = [&p](int &out) {
        const bool negative = *p == '-';
        p += negative;
        const char *const first = p;
        unsigned v = 0, d;
        while ((d = unsigned(static_cast<unsigned char>(*p)) - '0') < 10) {
            v = v * 10 + d; // wraps past nine digits, which are refused below
            ++p;
        }
        if (p == first || p - first > 9)
            return false;
        out = negative ? -int(v) : int(v);
        return true;
    };
    if (!number(vertex))
        return nullptr;
    if (isBlank(*p) || (p[0] == '/' && p[1] == '/')) {
        hasTex = false;
        return p;
    }
    if (*p != '/')
        return nullptr;
    ++p;
    int t = 0;
    if (!number(t))
        return nullptr;
    hasTex = true;
    texIndex = t - 1;
    return p;
}

} // namespace text
