#pragma once
#include <OvTextInputFile.h>

namespace poser {

// How the driver reads, process-wide. With `fastPaths` off every line is split into tokens (the
// general path, which defines what a line means); a `chunkSize` other than 0 is the line reader's
// chunk size (tiny chunks make lines cross the chunk edges). Tests set both.
struct ReadTuning {
    bool fastPaths = true;
    size_t chunkSize = 0;
};
ReadTuning &readTuning();

} // namespace poser

// One Poser input file: the host's line reader plus the counters diagnostics and sections need.
struct Pz3InputFile : public OvTextInputFile {
    Pz3InputFile(const QString &path, bool compressed) : OvTextInputFile(path, compressed, true) {
        if (poser::readTuning().chunkSize)
            setChunkSize(poser::readTuning().chunkSize);
    }
    int m_lineNumber = 0;    // lines read so far
    int m_braceDepth = 0;    // '{' lines minus '}' lines seen in this file
    QString m_canonicalPath; // tells an include cycle from a file included twice in a row
};
