#pragma once
// Morph targets: the host's deltas (per host vertex, centimetres) as glTF position offsets of the
// built mesh's vertices (metres), written sparse (the moved vertices and their offsets) when that
// is smaller than a full array, dense otherwise. The moved vertices are counted before anything
// is written, so that each target is built once, in its final form and place.

#include "MeshBuilder.h"
#include <cstddef>
#include <cstdint>
#include <vector>

class OvMorphDeltas;

// The targets of one built mesh, one morph at a time.
class MorphTargets {
public:
    MorphTargets(const BuiltMesh &mesh, int hostVertices);

    // Takes a morph's deltas in: a host vertex named twice takes both offsets, as the host adds them.
    void load(const OvMorphDeltas &deltas);
    const std::vector<uint32_t> &moved() const { return m_moved; } // built vertices that move, ascending
    bool finite() const { return m_finite; }
    float min(int k) const { return m_min[k]; } // over every vertex, unmoved ones included
    float max(int k) const { return m_max[k]; }
    int vertexCount() const { return int(m_mesh.sourceVertex.size()); }
    // Bytes of each form: indices (2 or 4 bytes) and offsets of the moved vertices, or all offsets.
    size_t sparseBytes() const;
    size_t denseBytes() const { return 12 * size_t(vertexCount()); }
    bool sparse() const { return sparseBytes() < denseBytes(); }
    // The offsets (metres) of the moved vertices in their order, or of every vertex into `all`
    // (zero-filled).
    void writeMoved(float *out) const;
    void writeDense(float *all) const;

private:
    const float *offset(uint32_t vertex) const { return &m_perHost[3 * size_t(m_mesh.sourceVertex[vertex])]; }

    const BuiltMesh &m_mesh;
    std::vector<float> m_perHost; // the loaded morph's offsets per host vertex
    std::vector<int> m_touched;   // host vertices the loaded morph names, cleared on the next load
    std::vector<uint32_t> m_moved;
    float m_min[3] = {0, 0, 0};
    float m_max[3] = {0, 0, 0};
    bool m_finite = true;
};
