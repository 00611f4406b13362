#include "OvMorph.h"

void OvMorphDeltas::addDelta(int index, const OvVec3 &offset, bool accumulate) {
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

void OvMorphDeltas::reserveMore(size_t n) {
    m_indices.reserve(m_indices.size() + n);
    m_offsets.reserve(m_offsets.size() + 3 * n);
}

void OvMorphDeltas::squeeze() {
    m_indices.shrinkToFit();
    m_offsets.shrinkToFit();
}

void OvMorphDeltas::clear() {
    m_indices = OvPodArray<int>();
    m_offsets = OvPodArray<float>();
}

OvMorph::OvMorph(const QString &name) : m_value(name, 0.0f), m_deltas(new OvMorphDeltas) {
    setName(name);
    m_deltas->setName(name);
}

void OvMorph::setDeltas(OvMorphDeltas *deltas) {
    m_deltas.reset(deltas ? deltas : new OvMorphDeltas);
}
