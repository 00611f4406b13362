#pragma once
// The one binary buffer of an export and the views and accessors into it.

#include <cstdint>
#include <tiny_gltf.h>
#include <vector>

class GltfBuffer {
public:
    explicit GltfBuffer(tinygltf::Model &model);

    // A view of `bytes` bytes appended at a 4-byte boundary; target 0 for none.
    int addView(const void *data, size_t bytes, int target = 0);
    // Float tuples of `components` each (1 SCALAR, 2 VEC2, 3 VEC3, 4 VEC4, 16 MAT4), with min and
    // max when `bounds` is set.
    int addFloats(const std::vector<float> &values, int components, bool bounds, int target = 0);
    // Triangle or sparse indices: unsigned shorts when every value fits, else unsigned ints.
    int addIndices(const std::vector<uint32_t> &indices, int target);
    // Unsigned bytes, four per vertex (JOINTS_0 with fewer than 256 joints), or shorts.
    int addJoints(const std::vector<uint16_t> &joints);
    tinygltf::Model &model() { return m_model; }
    // Room for `bytes` more: growing a large buffer step by step would copy it several times.
    void reserve(size_t bytes) { m_model.buffers[0].data.reserve(m_model.buffers[0].data.size() + bytes); }

private:
    tinygltf::Model &m_model;
};

// The glTF accessor type of a tuple size.
int accessorType(int components);
