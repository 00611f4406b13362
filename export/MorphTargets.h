#pragma once
// Morph targets: the host's deltas (per host vertex, centimetres) as glTF position offsets of the
// built mesh's vertices (metres), written sparse (the moved vertices and their offsets) when that
// is smaller than a full array, dense otherwise.

#include "MeshBuilder.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class OvMorphDeltas;

struct MorphTarget {
    std::vector<uint32_t> moved; // built vertices with a non-zero offset, ascending
    std::vector<float> offsets;  // x y z per moved vertex, metres
    int vertexCount = 0;         // vertices of the built mesh
    float min[3] = {0, 0, 0};    // over every vertex, unmoved ones included
    float max[3] = {0, 0, 0};
    bool finite = true;
    bool empty() const { return moved.empty(); }
    // Bytes of each form: indices (2 or 4 bytes) and offsets of the moved vertices, or all offsets.
    size_t sparseBytes() const;
    size_t denseBytes() const { return 12 * size_t(vertexCount); }
    bool sparse() const { return sparseBytes() < denseBytes(); }
    // Every vertex's offset, unmoved ones zero.
    std::vector<float> dense() const;
};

MorphTarget buildMorphTarget(const OvMorphDeltas &deltas, const BuiltMesh &mesh, int hostVertices);
