#pragma once
// Records of the node registry and of geometry sharing.

#include <OvMaterial.h>
#include <OvMath.h>
#include <OvNode.h>
#include <OvTypes.h>
#include <QHash>
#include <QList>
#include <QString>

class OvPolyShape;
class OvPZ3Importer;
class OvPoserJoint;
class OvPoserJointParam;

// Kinds of joint parameter getJointParam makes.
enum JointParamKind { JointBend = 0, JointTwist = 1, JointSmoothScale = 2, JointCurve = 3 };

// A top-level object that this import made or found: a figure's skeleton, a prop, a deformer prop.
struct OvPz3SceneItem {
    OvNode *node = nullptr; // owned by the scene
    int figureNumber = -1;  // figure number of a skeleton made by getSkeleton
    bool isFigure = false;  // looked up by figure number
    bool created = false;   // made by this import
    QString name;           // Poser name a prop was created under (before its label was made unique)
    // Replaced material -> the default material put in its place on this item's shapes.
    QHash<OvMaterial *, OvTSharedPointer<OvMaterial>> replacedMaterials;
    // Every material on the item's shapes (and its bones' shapes), in shape and material order.
    OvTArray<OvTSharedPointer<OvMaterial>> materials{8};

    OvPz3SceneItem() = default;
    OvPz3SceneItem(OvNode *node, bool isFigure, bool created);
    // The first material of that object name; "Preview" falls back to "default".
    OvTSharedPointer<OvMaterial> findMaterial(const QString &name) const;
};

// Per-node values that reach the node later, or that later sections need.
struct OvPz3NodeItem {
    explicit OvPz3NodeItem(OvNode *n) : node(n) {}
    OvNode *node;
    OvVec3 origin;   // host units
    OvVec3 endPoint; // host units
    OvQuat orientation;
    short rotAxisCount = 0;
    short rotAxes[3] = {0, 1, 2};
    OvRotationOrder rotOrder = OvRotationOrder::XYZ;
    bool rotOrderFixed = false;
    OvNode *smartParent = nullptr;
    // Joint parameters made for this node, in creation order; the node's joint owns them.
    QList<OvPoserJointParam *> jointParams;

    // The joint parameter of that name on the node's joint, whatever its kind, else a new one of
    // `kind` (JointParamKind); null when the node is no bone, has no joint or the kind cannot be
    // made there.
    OvPoserJointParam *getJointParam(const QString &name, int kind);
};

namespace poser {
// The last Poser joint among the node's object's modifiers, or null.
OvPoserJoint *findPoserJoint(const OvNode *node);
} // namespace poser

// A geometry file read once per importer and shared by every shape made from it.
struct OvPz3GeomItem {
    OvPolyShape *shape = nullptr; // null when reading failed; owned by the item
    QString path;                 // resolved path; the cache key

    OvPz3GeomItem() = default;
    ~OvPz3GeomItem();
    OvPz3GeomItem(const OvPz3GeomItem &) = delete;
    OvPz3GeomItem &operator=(const OvPz3GeomItem &) = delete;

    void loadGeometry(const QString &resolvedPath);
    // A shape showing the whole cached mesh (shared, not copied), made the shown geometry.
    void addShapeTo(OvNode *node, OvPz3SceneItem *sceneItem, const QString &label);
    // A shape of one face group of the cached mesh.
    void addGroupShapeTo(OvNode *node, const QString &group, OvPz3SceneItem *sceneItem);
};

// Kinds of prop getPropNode makes.
enum PropKind { PropPlain = 0, PropDFormBase = 1, PropDForm = 2, PropDFormZone = 3 };

// Poser lengths to host units (centimetres).
constexpr float POSER_UNIT_CM = 243.84f;
// Degrees to radians as Poser files have always been read (a hair below pi/180).
constexpr float POSER_DEG_TO_RAD = 0.01745329052209854f;
