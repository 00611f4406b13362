#pragma once
// The host scene as plain records for the writer: nodes in glTF order with their parents, the
// shapes they show, figures with their bones, and the node transforms in glTF terms (metres, Y up,
// quaternions). Nothing here knows tinygltf.

#include <OvMath.h>
#include <QString>
#include <array>
#include <vector>

class OvFloatProperty;
class OvMorph;
class OvNode;
class OvPolyMesh;
class OvScene;
class OvShape;
class OvSkeleton;

// Host lengths are centimetres; glTF's are metres. Both are Y up and right-handed.
constexpr float kMetresPerHostUnit = 0.01f;

struct ExportNode {
    const OvNode *source = nullptr;
    QString name;
    int parent = -1; // index into ExportScene::nodes, -1 at the top
    // The joint centre (host units). A node is placed at its origin so that it turns about it; its
    // shape is moved back by the origin.
    OvVec3 origin;
    OvVec3 parentOrigin;
};

// A shape shown by a node: drawn in the node's space (moved back by its origin), or, for a bone,
// skinned to the bone in its figure's space.
struct ExportShape {
    int node = -1;
    const OvShape *shape = nullptr;
    const OvPolyMesh *mesh = nullptr;
    std::vector<const OvMorph *> morphs;
    int figure = -1; // index into ExportScene::figures when skinned
    int joint = -1;  // the bone's place in its figure's joints
};

struct ExportFigure {
    int skeleton = -1;       // node index
    std::vector<int> joints; // node indices of the bones, in the skeleton's order
};

struct ExportScene {
    std::vector<ExportNode> nodes;
    std::vector<ExportShape> shapes;
    std::vector<ExportFigure> figures;
};

// Walks the scene's nodes, parents before children.
ExportScene collectScene(const OvScene &scene);

struct NodeTransform {
    std::array<float, 3> translation{};
    std::array<float, 4> rotation{0, 0, 0, 1}; // x y z w
    std::array<float, 3> scale{1, 1, 1};
};

// The transform of a node at host time `time`: translation in metres relative to the parent's
// origin, the rotation of its three angles (degrees) in the node's rotation order turned into the
// node's joint orientation, and its scale (per axis times uniform).
NodeTransform nodeTransformAt(const ExportNode &node, int time);
// The same from the values themselves (translation in host units, angles in degrees).
NodeTransform makeTransform(const ExportNode &node, const OvVec3 &position, const OvVec3 &degrees,
                            const OvVec3 &scale);

// The transform properties of a node: position x y z, rotation x y z, scale x y z and uniform.
std::vector<const OvFloatProperty *> translationProperties(const OvNode &node);
std::vector<const OvFloatProperty *> rotationProperties(const OvNode &node);
std::vector<const OvFloatProperty *> scaleProperties(const OvNode &node);
