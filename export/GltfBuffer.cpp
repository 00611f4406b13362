#include "GltfBuffer.h"

#include <algorithm>
#include <cstring>

GltfBuffer::GltfBuffer(tinygltf::Model &model) : m_model(model) {
    if (m_model.buffers.empty())
        m_model.buffers.emplace_back();
}

int accessorType(int components) {
    switch (components) {
    case 1:
        return TINYGLTF_TYPE_SCALAR;
    case 2:
        return TINYGLTF_TYPE_VEC2;
    case 3:
        return TINYGLTF_TYPE_VEC3;
    case 4:
        return TINYGLTF_TYPE_VEC4;
    default:
        return TINYGLTF_TYPE_MAT4;
    }
}

unsigned char *GltfBuffer::grow(size_t bytes, int target, int *view) {
    std::vector<unsigned char> &buffer = m_model.buffers[0].data;
    const size_t start = (buffer.size() + 3) & ~size_t(3);
    buffer.resize(start + bytes, 0);
    tinygltf::BufferView v;
    v.buffer = 0;
    v.byteOffset = start;
    v.byteLength = bytes;
    v.target = target;
    m_model.bufferViews.push_back(v);
    *view = int(m_model.bufferViews.size()) - 1;
    return buffer.data() + start;
}

int GltfBuffer::addView(const void *data, size_t bytes, int target) {
    int view = -1;
    unsigned char *at = grow(bytes, target, &view);
    if (bytes > 0)
        std::memcpy(at, data, bytes);
    return view;
}

int GltfBuffer::addAccessor(tinygltf::Accessor accessor) {
    m_model.accessors.push_back(std::move(accessor));
    return int(m_model.accessors.size()) - 1;
}

int GltfBuffer::floatAccessor(int view, int components, bool bounds) {
    const tinygltf::BufferView &v = m_model.bufferViews[size_t(view)];
    const auto *values = reinterpret_cast<const float *>(m_model.buffers[0].data.data() + v.byteOffset);
    tinygltf::Accessor a;
    a.bufferView = view;
    a.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
    a.count = v.byteLength / sizeof(float) / size_t(components);
    a.type = accessorType(components);
    if (bounds && a.count > 0) {
        const size_t n = size_t(components);
        std::vector<float> low(values, values + n), high = low;
        for (size_t i = n; i < a.count * n; i += n)
            for (size_t k = 0; k < n; ++k) {
                low[k] = std::min(low[k], values[i + k]);
                high[k] = std::max(high[k], values[i + k]);
            }
        a.minValues.assign(low.begin(), low.end());
        a.maxValues.assign(high.begin(), high.end());
    }
    return addAccessor(std::move(a));
}

int GltfBuffer::addFloats(const float *values, size_t count, int components, bool bounds, int target) {
    return floatAccessor(addView(values, count * sizeof(float), target), components, bounds);
}

int GltfBuffer::addIndices(const std::vector<uint32_t> &indices, int target) {
    const uint32_t top = indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
    tinygltf::Accessor a;
    a.count = indices.size();
    a.type = TINYGLTF_TYPE_SCALAR;
    if (shortIndices(top)) {
        std::copy(indices.begin(), indices.end(),
                  appendView<uint16_t>(indices.size(), target, &a.bufferView));
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    } else {
        a.bufferView = addView(indices.data(), indices.size() * 4, target);
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    }
    return addAccessor(std::move(a));
}
