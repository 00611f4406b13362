#include "Skins.h"

std::vector<float> inverseBindMatrix(const OvVec3 &origin) {
    std::vector<float> m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (int k = 0; k < 3; ++k)
        m[12 + size_t(k)] = -origin[k] * kMetresPerHostUnit;
    return m;
}

std::vector<int> writeSkins(GltfBuffer &buffer, const ExportScene &scene) {
    std::vector<int> skins;
    for (const ExportFigure &figure : scene.figures) {
        if (figure.joints.empty()) {
            skins.push_back(-1);
            continue;
        }
        tinygltf::Skin skin;
        skin.name = buffer.model().nodes[size_t(figure.skeleton)].name;
        skin.skeleton = figure.skeleton;
        std::vector<float> matrices;
        for (int joint : figure.joints) {
            skin.joints.push_back(joint);
            const std::vector<float> m = inverseBindMatrix(scene.nodes[size_t(joint)].origin);
            matrices.insert(matrices.end(), m.begin(), m.end());
        }
        skin.inverseBindMatrices = buffer.addFloats(matrices, 16, false);
        buffer.model().skins.push_back(skin);
        skins.push_back(int(buffer.model().skins.size()) - 1);
    }
    return skins;
}

void bindAll(GltfBuffer &buffer, int joint, size_t vertices, int *jointsAccessor, int *weightsAccessor) {
    tinygltf::Accessor j;
    j.count = vertices;
    j.type = TINYGLTF_TYPE_VEC4;
    if (joint < 256) {
        auto *joints = buffer.appendView<uint8_t>(4 * vertices, TINYGLTF_TARGET_ARRAY_BUFFER, &j.bufferView);
        for (size_t v = 0; v < vertices; ++v)
            joints[4 * v] = uint8_t(joint);
        j.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    } else {
        auto *joints = buffer.appendView<uint16_t>(4 * vertices, TINYGLTF_TARGET_ARRAY_BUFFER, &j.bufferView);
        for (size_t v = 0; v < vertices; ++v)
            joints[4 * v] = uint16_t(joint);
        j.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    }
    *jointsAccessor = buffer.addAccessor(std::move(j));
    // Weights as normalised bytes: 1 is 255, a quarter of the size of floats.
    tinygltf::Accessor w;
    auto *weights = buffer.appendView<uint8_t>(4 * vertices, TINYGLTF_TARGET_ARRAY_BUFFER, &w.bufferView);
    for (size_t v = 0; v < vertices; ++v)
        weights[4 * v] = 255;
    w.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    w.normalized = true;
    w.count = vertices;
    w.type = TINYGLTF_TYPE_VEC4;
    *weightsAccessor = buffer.addAccessor(std::move(w));
}
