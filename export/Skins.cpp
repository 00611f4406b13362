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
    std::vector<uint16_t> joints(4 * vertices, 0);
    // Weights as normalised bytes: 1 is 255, a quarter of the size of floats.
    std::vector<uint8_t> weights(4 * vertices, 0);
    for (size_t v = 0; v < vertices; ++v) {
        joints[4 * v] = uint16_t(joint);
        weights[4 * v] = 255;
    }
    *jointsAccessor = buffer.addJoints(joints);
    tinygltf::Accessor a;
    a.bufferView = buffer.addView(weights.data(), weights.size(), TINYGLTF_TARGET_ARRAY_BUFFER);
    a.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    a.normalized = true;
    a.count = vertices;
    a.type = TINYGLTF_TYPE_VEC4;
    buffer.model().accessors.push_back(a);
    *weightsAccessor = int(buffer.model().accessors.size()) - 1;
}
