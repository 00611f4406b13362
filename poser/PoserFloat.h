#pragma once

// The number parser of Poser and OBJ files. Not a standard conversion: signs and dots may stand
// anywhere among the digits, any other character makes the whole number 0, and every step is
// rounded to single precision (so results can differ in the last bit from strtof).
float parsePoserFloat(const char *s);

// parsePoserFloat of several tokens at once (the numbers of one line), with the same results.
void parsePoserFloats(const char *const *tokens, int count, float *out);
