#pragma once
// Morph targets: a set of per-vertex offsets (the deltas) blended into an object's shape by the
// morph's value channel.

#include "OvMath.h"
#include "OvNode.h"
#include "OvProperty.h"
#include "OvTypes.h"
#include "OvUndoStack.h"
#include <memory>

// Offsets of some vertices of one mesh, in the order they were added. Stored as two flat arrays
// (vertex numbers, then x y z per delta): a figure carries millions of deltas, so there is no
// allocation per delta and nothing beyond 16 bytes each once the set is compacted.
class OvMorphDeltas {
public:
    OvMorphDeltas() = default;
    OvMorphDeltas(const OvMorphDeltas &) = default;
    OvMorphDeltas &operator=(const OvMorphDeltas &) = default;
    ~OvMorphDeltas() { OvUndoStack::forget(this); }

    const QString &getName() const { return m_name; }
    void setName(const QString &name) {
        OvUndoStack::noteDeltas(this);
        m_name = name;
    }
    // Vertices of the mesh the deltas were made for, as the content says; 0 when not given.
    int getVertCount() const { return m_vertCount; }
    void setVertCount(int n) {
        OvUndoStack::noteDeltas(this);
        m_vertCount = n;
    }

    // Appends the offset of vertex `index`. With `accumulate` set, an existing delta of the same
    // vertex (looked up from the end) takes the offset added to it instead.
    void addDelta(int index, const OvVec3 &offset, bool accumulate);
    // Appends n deltas at once: n vertex numbers and 3 n offsets (never accumulated).
    void appendDeltas(const int *indices, const float *offsets, size_t n);
    int getNumDeltas() const { return int(m_indices.size()); }
    int getIndex(int i) const { return m_indices[size_t(i)]; }
    OvVec3 getOffset(int i) const { return OvVec3(&m_offsets[3 * size_t(i)]); }
    // Raw arrays: getNumDeltas() vertex numbers and three times as many floats.
    const int *indices() const { return m_indices.data(); }
    const float *offsets() const { return m_offsets.data(); }

    // Room for n more deltas, for readers that know the count before they add.
    void reserveMore(size_t n);
    // Gives back the room that growth left unused.
    void squeeze();
    void clear();
    // Drops the deltas that name no vertex of a mesh of `vertices` vertices; returns how many.
    int dropOutside(int vertices);
    // Bytes held for the deltas, reserved room included.
    size_t bytesHeld() const { return m_indices.bytes() + m_offsets.bytes(); }

private:
    QString m_name;
    int m_vertCount = 0;
    OvPodArray<int> m_indices;
    OvPodArray<float> m_offsets;
};

// A morph modifier: its deltas (owned; there is always a set) and the dial that blends them in.
class OvMorph : public OvModifier {
public:
    // The value channel is named after the morph, as is the delta set until replaced.
    explicit OvMorph(const QString &name);
    ~OvMorph() override { OvUndoStack::forget(this); }
    const char *className() const override { return "OvMorph"; }
    OvFloatProperty *getValueChannel() { return &m_value; }
    const OvFloatProperty *getValueChannel() const { return &m_value; }
    OvMorphDeltas *getDeltas() const { return m_deltas.get(); }
    // Takes ownership and drops the previous set; a null set is replaced by an empty one.
    void setDeltas(OvMorphDeltas *deltas);

private:
    OvFloatProperty m_value;
    std::unique_ptr<OvMorphDeltas> m_deltas;
};
