#pragma once
#include <QString>

namespace poser {

// The rest of a line from token `first`, as it stood in the file: each token end reads as one
// blank and every other character between tokens is kept. A token that begins with "GetStringRes"
// instead names a stock string by the first two runs of digits from there on (the scan may cross
// into the next token). Tokens must lie in one line buffer, each ended by a single NUL.
QString tokenText(char **argv, int first, int argc);

// The table id and index a GetStringRes reference names; false when the line holds fewer than two
// runs of digits from `token` on. `lineEnd` is the end of the line's last token.
bool parseStringResRef(const char *token, const char *lineEnd, int &tableId, int &index);

} // namespace poser
