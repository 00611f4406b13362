#include "ObjParse.h"

#include <climits>

namespace obj {

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

} // namespace obj
