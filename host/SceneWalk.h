#pragma once
// The one walk of the host scene that both dumps follow, so the JSON and the tree list the same
// things in the same order: top-level nodes in scene order, and for each node its class block
// (skeleton, magnet, zone, light or camera), its data items, its properties, its object (data
// items, properties, modifiers, then shapes with their mesh and materials) and its children.
//
// The walk also knows which nodes and properties hang in the scene (a reference to anything else
// is reported, never followed: it may point at a deleted object) and numbers meshes and materials
// by first appearance, which makes sharing visible.

#include <QColor>
#include <QHash>
#include <QSet>
#include <QString>

class OvBasicCamera;
class OvDForm;
class OvDFormZone;
class OvElement;
class OvElementData;
class OvLight;
class OvMaterial;
class OvModifier;
class OvNode;
class OvObject;
class OvPolyMesh;
class OvProperty;
class OvScene;
class OvShape;
class OvSkeleton;

// The mesh a shape shows: its number, and whether this is the first shape that shows it.
struct MeshUse {
    const OvPolyMesh *mesh = nullptr;
    int id = 0;
    bool first = false;
};

// What a dump does at each step of the walk. Lists are announced even when empty.
class SceneVisitor {
public:
    enum class List { Nodes, Children, DataItems, Properties, Modifiers, Shapes, Materials };

    virtual ~SceneVisitor() = default;
    virtual void beginList(List) {}
    virtual void endList(List) {}
    virtual void enterNode(const OvNode &node) = 0;
    virtual void leaveNode(const OvNode &) {}
    virtual void skeleton(const OvSkeleton &) {}
    virtual void deformer(const OvDForm &) {}
    virtual void zone(const OvDFormZone &) {}
    virtual void light(const OvLight &) {}
    virtual void camera(const OvBasicCamera &) {}
    virtual void dataItem(const OvElementData &item) = 0;
    virtual void property(const OvElement &owner, const OvProperty &p) = 0;
    virtual void enterObject(const OvObject &object) = 0;
    virtual void leaveObject(const OvObject &) {}
    virtual void modifier(OvModifier &m) = 0;
    virtual void enterShape(const OvShape &shape, const MeshUse &mesh) = 0;
    virtual void leaveShape(const OvShape &) {}
    // `first` is true where the material appears for the first time in the walk.
    virtual void material(const OvMaterial &m, int id, bool first) = 0;
};

class SceneWalk {
public:
    explicit SceneWalk(const OvScene &scene);

    // Walks the top-level nodes (one Nodes list); a walk is done once per dump.
    void walk(SceneVisitor &visitor);

    bool hasNode(const OvNode *node) const { return m_nodes.contains(node); }
    // The scene node that carries the property (on itself, its object or a modifier), or null.
    const OvNode *propertyNode(const OvProperty *p) const { return m_propertyNodes.value(p, nullptr); }

private:
    void collect(const OvNode *top);
    void addNode(const OvNode *node);
    void addProperty(const OvProperty *p, const OvNode *node);
    void enterNode(const OvNode &node, SceneVisitor &v);
    void elementLists(const OvElement &element, SceneVisitor &v);
    void object(const OvObject &object, SceneVisitor &v);
    void shape(const OvShape &shape, SceneVisitor &v);

    const OvScene &m_scene;
    QSet<const OvNode *> m_nodes;
    QHash<const OvProperty *, const OvNode *> m_propertyNodes;
    QHash<const OvPolyMesh *, int> m_meshIds;
    QHash<const OvMaterial *, int> m_materialIds;
    QSet<const OvPolyMesh *> m_writtenMeshes;
    QSet<const OvMaterial *> m_writtenMaterials;
};

// Shared wording of both dumps.
QString colorText(const QColor &c);
const char *lightKind(const OvLight &light);
