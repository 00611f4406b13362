#pragma once
// The one binary buffer of an export and the views and accessors into it. Large arrays are built
// in place: a view is appended and filled where it lies.

#include <cstdint>
#include <tiny_gltf.h>
#include <vector>

class GltfBuffer {
public:
    explicit GltfBuffer(tinygltf::Model &model);

    // A view of `bytes` bytes appended at a 4-byte boundary; target 0 for none.
    int addView(const void *data, size_t bytes, int target = 0);
    // A view of `count` values of T appended at a 4-byte boundary, zero-filled, to be filled through
    // the pointer before anything else is added (the buffer may move then).
    template <class T> T *appendView(size_t count, int target, int *view) {
        return reinterpret_cast<T *>(grow(count * sizeof(T), target, view));
    }
    // An accessor of the floats of `view`, tuples of `components` each (1 SCALAR, 2 VEC2, 3 VEC3,
    // 4 VEC4, 16 MAT4), with their min and max when `bounds` is set.
    int floatAccessor(int view, int components, bool bounds);
    int addFloats(const float *values, size_t count, int components, bool bounds, int target = 0);
    int addFloats(const std::vector<float> &values, int components, bool bounds, int target = 0) {
        return addFloats(values.data(), values.size(), components, bounds, target);
    }
    // Triangle or sparse indices: unsigned shorts when every value fits, else unsigned ints.
    int addIndices(const std::vector<uint32_t> &indices, int target);
    int addAccessor(tinygltf::Accessor accessor);
    tinygltf::Model &model() { return m_model; }
    // Room for `bytes` more: growing a large buffer step by step would copy it several times.
    void reserve(size_t bytes) { m_model.buffers[0].data.reserve(m_model.buffers[0].data.size() + bytes); }

private:
    unsigned char *grow(size_t bytes, int target, int *view);

    tinygltf::Model &m_model;
};

// Whether indices up to `top` fit unsigned shorts (65535 is the primitive restart value, never an
// index).
inline bool shortIndices(uint32_t top) {
    return top < 0xFFFF;
}

// The glTF accessor type of a tuple size.
int accessorType(int components);
