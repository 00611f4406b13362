#include "OvMorph.h"

#include <algorithm>

void OvMorphDeltas::addDelta(int index, const OvVec3 &offset, bool accumulate) {
    OvUndoStack::noteDeltas(this);
    if (accumulate) {
        for (size_t i = m_indices.size(); i-- > 0;) {
            if (m_indices[i] == index) {
                for (int k = 0; k < 3; ++k)
                    m_offsets[3 * i + size_t(k)] += offset[k];
                return;
            }
        }
    }
    m_indices.push_back(index);
    const size_t at = m_offsets.size();
    m_offsets.resize(at + 3);
    offset.getValue(&m_offsets[at]);
}

void OvMorphDeltas::appendDeltas(const int *indices, const float *offsets, size_t n) {
    OvUndoStack::noteDeltas(this);
    m_indices.append(indices, n);
    m_offsets.append(offsets, 3 * n);
}

// Room for n more, growing by half at a time: a batch-sized step would move the deltas once per batch.
void OvMorphDeltas::reserveMore(size_t n) {
    const size_t need = m_indices.size() + n;
    if (need <= m_indices.capacity())
        return;
    const size_t cap = std::max(need, m_indices.capacity() + m_indices.capacity() / 2);
    m_indices.reserve(cap);
    m_offsets.reserve(3 * cap);
}

void OvMorphDeltas::squeeze() {
    m_indices.shrinkToFit();
    m_offsets.shrinkToFit();
}

int OvMorphDeltas::dropOutside(int vertices) {
    OvUndoStack::noteDeltas(this);
    size_t kept = 0;
    for (size_t i = 0; i < m_indices.size(); ++i) {
        if (m_indices[i] < 0 || m_indices[i] >= vertices)
            continue;
        m_indices[kept] = m_indices[i];
        for (size_t k = 0; k < 3; ++k)
            m_offsets[3 * kept + k] = m_offsets[3 * i + k];
        ++kept;
    }
    const int dropped = int(m_indices.size() - kept);
    m_indices.truncate(kept);
    m_offsets.truncate(3 * kept);
    return dropped;
}

void OvMorphDeltas::clear() {
    OvUndoStack::noteDeltas(this);
    m_indices = OvPodArray<int>();
    m_offsets = OvPodArray<float>();
}

OvMorph::OvMorph(const QString &name) : m_value(name, 0.0f), m_deltas(new OvMorphDeltas) {
    setName(name);
    m_deltas->setName(name);
}

void OvMorph::setDeltas(OvMorphDeltas *deltas) {
    OvUndoStack::noteMorph(this);
    m_deltas.reset(deltas ? deltas : new OvMorphDeltas);
}
