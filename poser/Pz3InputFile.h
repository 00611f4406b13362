#pragma once
#include <OvTextInputFile.h>

// One Poser input file: the host's line reader plus the counters diagnostics and sections need.
struct Pz3InputFile : public OvTextInputFile {
    Pz3InputFile(const QString &path, bool compressed) : OvTextInputFile(path, compressed, true) {}
    int m_lineNumber = 0;    // lines read so far
    int m_braceDepth = 0;    // '{' lines minus '}' lines seen in this file
    QString m_canonicalPath; // tells an include cycle from a file included twice in a row
};
