#pragma once
// Small pure helpers of the OBJ reader, kept apart so tests can call them directly.

namespace obj {

// The integer value of the leading digits, as atoi reads them (blanks, an optional sign, digits),
// saturated to the int range instead of overflowing.
int leadingInt(const char *s);

// Texture part of a face corner "v/t[/n]": true with atoi(t) - 1 in `index` when the character after
// the first '/' is not a second '/'; false for "v" and "v//n".
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

// Vertex of a corner: negative values count back from `vertexCount` (-1 is the last vertex read),
// positive ones are 1-based; `base` is added. The result may be out of range: the mesh refuses it.
inline int resolveVertexIndex(int value, int vertexCount, int base) {
    long long v = value < 0 ? (long long)value + vertexCount : (long long)value - 1;
    v += base;
    return v < -1 ? -1 : (v > 0x7fffffff ? -1 : int(v));
}

// UV of a corner from faceTexIndex's value: negative values count back from `uvCount`; anything
// not below `uvCount` falls back to the first UV of the read.
inline int resolveUVIndex(int t, int uvCount, int base) {
    long long v = t;
    if (v < 0)
        v += (long long)uvCount + 1;
    if (v >= uvCount)
        v = 0;
    v += base;
    return v < -1 ? -1 : int(v);
}

} // namespace obj
