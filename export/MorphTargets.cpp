#include "MorphTargets.h"

#include "ExportScene.h"
#include "GltfBuffer.h"

#include <OvMorph.h>
#include <algorithm>
#include <cmath>

MorphTargets::MorphTargets(const BuiltMesh &mesh, int hostVertices)
    : m_mesh(mesh), m_perHost(3 * size_t(std::max(hostVertices, 0)), 0.0f) {}

size_t MorphTargets::sparseBytes() const {
    const size_t indexBytes = shortIndices(uint32_t(vertexCount())) ? 2 : 4;
    return m_moved.size() * (indexBytes + 12);
}

void MorphTargets::load(const OvMorphDeltas &deltas) {
    for (int v : m_touched)
        std::fill_n(&m_perHost[3 * size_t(v)], 3, 0.0f);
    m_touched.clear();
    const int hostVertices = int(m_perHost.size() / 3);
    const float *offsets = deltas.offsets();
    for (int i = 0; i < deltas.getNumDeltas(); ++i) {
        const int v = deltas.getIndex(i);
        if (v < 0 || v >= hostVertices)
            continue;
        m_touched.push_back(v);
        for (size_t k = 0; k < 3; ++k)
            m_perHost[3 * size_t(v) + k] += offsets[3 * size_t(i) + k];
    }
    m_moved.clear();
    m_finite = true;
    std::fill_n(m_min, 3, 0.0f);
    std::fill_n(m_max, 3, 0.0f);
    for (size_t v = 0; v < m_mesh.sourceVertex.size(); ++v) {
        const float *d = offset(uint32_t(v));
        if (d[0] == 0 && d[1] == 0 && d[2] == 0)
            continue;
        m_moved.push_back(uint32_t(v));
        for (int k = 0; k < 3; ++k) {
            const float m = d[k] * kMetresPerHostUnit;
            m_finite = m_finite && std::isfinite(m);
            m_min[k] = std::min(m_min[k], m);
            m_max[k] = std::max(m_max[k], m);
        }
    }
}

void MorphTargets::writeMoved(float *out) const {
    for (uint32_t v : m_moved) {
        const float *d = offset(v);
        for (int k = 0; k < 3; ++k)
            *out++ = d[k] * kMetresPerHostUnit;
    }
}

void MorphTargets::writeDense(float *all) const {
    for (uint32_t v : m_moved) {
        const float *d = offset(v);
        for (int k = 0; k < 3; ++k)
            all[3 * size_t(v) + size_t(k)] = d[k] * kMetresPerHostUnit;
    }
}
