#pragma once
// printf's "%.9g" of a float, without printf: nine significant digits, rounded from the float's
// exact value with ties to even, in the style %g picks (fixed between 1e-4 and 1e9, else with an
// exponent) and without trailing zeros. The same bytes as snprintf(buf, n, "%.9g", double(v));
// bench/float_text_identity checks that.

#include <cstddef>

// The text of a finite v into `out` (at least 32 bytes); returns its length.
size_t formatFloat9(float v, char *out);
