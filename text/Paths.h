#pragma once
// Paths written on another machine: Poser's own ':' separators, Windows '\' separators.

#include <QString>

namespace text {

// Which characters withSlashes turns into '/'; combine them with '|'.
enum SlashRule : unsigned {
    Backslashes = 1u,           // every '\'
    Colons = 2u,                // every ':'
    ColonsUnlessBackslash = 4u, // every ':' when the path holds no '\' (else a colon is a drive letter's)
};

// `path` with the separators that `rules` names replaced by '/'.
QString withSlashes(QString path, unsigned rules);

} // namespace text
