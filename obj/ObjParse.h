#pragma once
// Face corner indices of the OBJ reader: from the numbers of a corner (text/Numbers.h reads them)
// to vertex and UV indices of the mesh. And the switches tests and benchmarks use to compare the
// reader's paths.

#include <cstddef>

namespace obj {

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

// How the reader goes about it, process-wide. With `fastPaths` off every line takes the general
// path (split into tokens), which defines what a line means; a `chunkSize` other than 0 is the
// line reader's chunk size in readShape (tiny chunks make lines cross the chunk edges).
struct ReadTuning {
    bool fastPaths = true;
    size_t chunkSize = 0;
};
ReadTuning &readTuning();

} // namespace obj
