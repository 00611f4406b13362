#include "ExportScene.h"

#include <OvMorph.h>
#include <OvNode.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QHash>
#include <algorithm>
#include <cmath>

namespace {

// The shape an object shows (its geometry switch), when it is a polygon mesh.
const OvShape *shownShape(const OvNode &node, const OvPolyMesh **mesh) {
    const OvObject *object = node.getObject();
    if (!object || object->getNumShapes() == 0)
        return nullptr;
    const int shown = std::clamp(object->getGeometryControl()->getValue(), 0, object->getNumShapes() - 1);
    const OvShape *shape = object->getShape(shown);
    *mesh = dynamic_cast<const OvPolyMesh *>(shape->getGeometry());
    return *mesh ? shape : nullptr;
}

std::vector<const OvMorph *> morphsOf(const OvNode &node) {
    std::vector<const OvMorph *> morphs;
    if (const OvObject *object = node.getObject())
        for (int i = 0; i < object->getNumModifiers(); ++i)
            if (auto *m = dynamic_cast<const OvMorph *>(object->getModifier(i)))
                morphs.push_back(m);
    return morphs;
}

OvQuat conjugate(const OvQuat &q) {
    return OvQuat(-q[0], -q[1], -q[2], q[3]);
}

} // namespace

ExportScene collectScene(const OvScene &scene) {
    ExportScene out;
    QHash<const OvNode *, int> index;
    for (int top = 0; top < scene.getNumNodes(); ++top)
        forEachNode(scene.getNode(top), [&](OvNode *node) {
            ExportNode n;
            n.source = node;
            n.name = node->getLabel().isEmpty() ? node->getName() : node->getLabel();
            n.parent = index.value(node->getNodeParent(), -1);
            n.origin = node->getOrigin();
            if (n.parent >= 0)
                n.parentOrigin = out.nodes[size_t(n.parent)].origin;
            index.insert(node, int(out.nodes.size()));
            out.nodes.push_back(n);
            return true;
        });
    // Figures first, so that a bone's shape knows its joint.
    QHash<const OvNode *, std::pair<int, int>> jointOf;
    for (const ExportNode &n : out.nodes)
        if (auto *skeleton = dynamic_cast<const OvSkeleton *>(n.source)) {
            ExportFigure figure;
            figure.skeleton = index.value(skeleton);
            for (const OvBone *bone : skeleton->getAllBones()) {
                jointOf.insert(bone, {int(out.figures.size()), int(figure.joints.size())});
                figure.joints.push_back(index.value(bone));
            }
            out.figures.push_back(figure);
        }
    for (size_t i = 0; i < out.nodes.size(); ++i) {
        ExportShape s;
        s.node = int(i);
        s.shape = shownShape(*out.nodes[i].source, &s.mesh);
        if (!s.shape)
            continue;
        s.morphs = morphsOf(*out.nodes[i].source);
        if (auto it = jointOf.constFind(out.nodes[i].source); it != jointOf.constEnd()) {
            s.figure = it->first;
            s.joint = it->second;
        }
        out.shapes.push_back(s);
    }
    return out;
}

NodeTransform makeTransform(const ExportNode &node, const OvVec3 &position, const OvVec3 &degrees,
                            const OvVec3 &scale) {
    NodeTransform t;
    const OvVec3 at = position + node.origin - node.parentOrigin;
    for (int i = 0; i < 3; ++i)
        t.translation[size_t(i)] = at[i] * kMetresPerHostUnit;
    const double toRadians = 3.14159265358979323846 / 180.0;
    const OvVec3 radians(float(degrees[0] * toRadians), float(degrees[1] * toRadians),
                         float(degrees[2] * toRadians));
    // A joint turns about the axes of its orientation.
    const OvQuat o = node.source->getOrientation();
    const OvQuat q = o * quatFromEuler(node.source->getRotationOrder(), radians) * conjugate(o);
    const float len = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    // One sign for equal rotations, so that sampled keys do not flip between the two.
    const float sign = q[3] < 0 ? -1.0f : 1.0f;
    for (int i = 0; i < 4; ++i)
        t.rotation[size_t(i)] = len > 0 ? sign * q[i] / len : (i == 3 ? 1.0f : 0.0f);
    for (int i = 0; i < 3; ++i)
        t.scale[size_t(i)] = scale[i];
    return t;
}

NodeTransform nodeTransformAt(const ExportNode &node, int time) {
    OvVec3 values[3];
    const std::vector<const OvFloatProperty *> props[3] = {
        translationProperties(*node.source), rotationProperties(*node.source), scaleProperties(*node.source)};
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 3; ++i)
            values[k][i] = props[k][size_t(i)]->getValueAt(time);
    const float uniform = props[2][3]->getValueAt(time);
    return makeTransform(node, values[0], values[1], values[2] * uniform);
}

std::vector<const OvFloatProperty *> translationProperties(const OvNode &node) {
    return {node.getXPosControl(), node.getYPosControl(), node.getZPosControl()};
}

std::vector<const OvFloatProperty *> rotationProperties(const OvNode &node) {
    return {node.getXRotControl(), node.getYRotControl(), node.getZRotControl()};
}

std::vector<const OvFloatProperty *> scaleProperties(const OvNode &node) {
    return {node.getXScaleControl(), node.getYScaleControl(), node.getZScaleControl(),
            node.getScaleControl()};
}
