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

int GltfBuffer::addView(const void *data, size_t bytes, int target) {
    std::vector<unsigned char> &buffer = m_model.buffers[0].data;
    buffer.resize((buffer.size() + 3) & ~size_t(3), 0);
    tinygltf::BufferView view;
    view.buffer = 0;
    view.byteOffset = buffer.size();
    view.byteLength = bytes;
    view.target = target;
    const auto *p = static_cast<const unsigned char *>(data);
    buffer.insert(buffer.end(), p, p + bytes);
    m_model.bufferViews.push_back(view);
    return int(m_model.bufferViews.size()) - 1;
}

int GltfBuffer::addFloats(const std::vector<float> &values, int components, bool bounds, int target) {
    tinygltf::Accessor a;
    a.bufferView = addView(values.data(), values.size() * sizeof(float), target);
    a.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
    a.count = values.size() / size_t(components);
    a.type = accessorType(components);
    if (bounds && a.count > 0) {
        a.minValues.assign(values.begin(), values.begin() + components);
        a.maxValues = a.minValues;
        for (size_t i = 0; i < values.size(); ++i) {
            const size_t k = i % size_t(components);
            a.minValues[k] = std::min(a.minValues[k], double(values[i]));
            a.maxValues[k] = std::max(a.maxValues[k], double(values[i]));
        }
    }
    m_model.accessors.push_back(a);
    return int(m_model.accessors.size()) - 1;
}

int GltfBuffer::addIndices(const std::vector<uint32_t> &indices, int target) {
    const uint32_t top = indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
    tinygltf::Accessor a;
    a.count = indices.size();
    a.type = TINYGLTF_TYPE_SCALAR;
    if (top < 0xFFFF) { // 65535 is the primitive restart value, never an index
        std::vector<uint16_t> narrow(indices.begin(), indices.end());
        a.bufferView = addView(narrow.data(), narrow.size() * 2, target);
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    } else {
        a.bufferView = addView(indices.data(), indices.size() * 4, target);
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    }
    m_model.accessors.push_back(a);
    return int(m_model.accessors.size()) - 1;
}

int GltfBuffer::addJoints(const std::vector<uint16_t> &joints) {
    const uint16_t top = joints.empty() ? 0 : *std::max_element(joints.begin(), joints.end());
    tinygltf::Accessor a;
    a.count = joints.size() / 4;
    a.type = TINYGLTF_TYPE_VEC4;
    if (top < 256) {
        std::vector<uint8_t> narrow(joints.begin(), joints.end());
        a.bufferView = addView(narrow.data(), narrow.size(), TINYGLTF_TARGET_ARRAY_BUFFER);
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    } else {
        a.bufferView = addView(joints.data(), joints.size() * 2, TINYGLTF_TARGET_ARRAY_BUFFER);
        a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    }
    m_model.accessors.push_back(a);
    return int(m_model.accessors.size()) - 1;
}
