#include "MorphTargets.h"

#include "ExportScene.h"

#include <OvMorph.h>
#include <algorithm>
#include <cmath>

size_t MorphTarget::sparseBytes() const {
    const size_t indexBytes = vertexCount < 0xFFFF ? 2 : 4;
    return moved.size() * (indexBytes + 12);
}

std::vector<float> MorphTarget::dense() const {
    std::vector<float> all(3 * size_t(vertexCount), 0.0f);
    for (size_t i = 0; i < moved.size(); ++i)
        std::copy_n(&offsets[3 * i], 3, &all[3 * size_t(moved[i])]);
    return all;
}

MorphTarget buildMorphTarget(const OvMorphDeltas &deltas, const BuiltMesh &mesh, int hostVertices) {
    MorphTarget t;
    t.vertexCount = int(mesh.sourceVertex.size());
    // Offsets per host vertex; a vertex named twice takes both offsets, as the host adds them.
    std::vector<float> perHost(3 * size_t(hostVertices), 0.0f);
    for (int i = 0; i < deltas.getNumDeltas(); ++i) {
        const int v = deltas.getIndex(i);
        if (v < 0 || v >= hostVertices)
            continue;
        for (int k = 0; k < 3; ++k)
            perHost[3 * size_t(v) + size_t(k)] += deltas.offsets()[3 * size_t(i) + size_t(k)];
    }
    for (size_t v = 0; v < mesh.sourceVertex.size(); ++v) {
        const float *d = &perHost[3 * size_t(mesh.sourceVertex[v])];
        if (d[0] == 0 && d[1] == 0 && d[2] == 0)
            continue;
        t.moved.push_back(uint32_t(v));
        for (int k = 0; k < 3; ++k) {
            const float m = d[k] * kMetresPerHostUnit;
            t.finite = t.finite && std::isfinite(m);
            t.offsets.push_back(m);
            t.min[k] = std::min(t.min[k], m);
            t.max[k] = std::max(t.max[k], m);
        }
    }
    if (t.moved.size() == size_t(t.vertexCount)) // no vertex keeps the implicit zero
        for (int k = 0; k < 3; ++k) {
            t.min[k] = t.offsets[size_t(k)];
            t.max[k] = t.offsets[size_t(k)];
            for (size_t i = 0; i < t.moved.size(); ++i) {
                t.min[k] = std::min(t.min[k], t.offsets[3 * i + size_t(k)]);
                t.max[k] = std::max(t.max[k], t.offsets[3 * i + size_t(k)]);
            }
        }
    return t;
}
