#pragma once
// The number and integer grammar shared by the Poser and the OBJ readers.

// The number parser of Poser and OBJ files. Not a standard conversion: signs and dots may stand
// anywhere among the digits, any other character makes the whole number 0, and every step is
// rounded to single precision (so results can differ in the last bit from strtof).
float parsePoserFloat(const char *s);

// parsePoserFloat of several tokens at once (the numbers of one line), with the same results.
void parsePoserFloats(const char *const *tokens, int count, float *out);

namespace text {

// The integer value of the leading digits, as atoi reads them (blanks, an optional sign, digits),
// saturated to the int range instead of overflowing.
int leadingInt(const char *s);

// Texture part of an OBJ face corner "v/t[/n]": true with atoi(t) - 1 in `index` when the character
// after the first '/' is not a second '/'; false for "v" and "v//n".
bool faceTexIndex(const char *token, int &index);

// leadingInt and faceTexIndex of a corner token in one pass, for the usual forms "v", "v/t", "v//n" and
// "v/t/n" with optionally negative numbers of up to nine digits. False for any other form, which
// the two functions above then read (with the same results).
inline bool readCorner(const char *p, int &vertex, bool &hasTex, int &texIndex) {
    auto number = [&p](int &out) {
        bool negative = *p == '-';
        p += negative;
        unsigned d = unsigned(static_cast<unsigned char>(*p)) - '0';
        if (d >= 10)
            return false;
        int v = 0;
        for (int n = 0; d < 10; d = unsigned(static_cast<unsigned char>(*++p)) - '0') {
            if (++n > 9)
                return false;
            v = v * 10 + int(d);
        }
        out = negative ? -v : v;
        return true;
    };
    if (!number(vertex))
        return false;
    if (*p == '\0' || (p[0] == '/' && p[1] == '/')) {
        hasTex = false;
        return true;
    }
    if (*p != '/')
        return false;
    ++p;
    int t = 0;
    if (!number(t))
        return false;
    hasTex = true;
    texIndex = t - 1;
    return true;
}

} // namespace text
