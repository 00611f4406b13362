#pragma once
// Scene graph: elements carry properties and data items; nodes form the hierarchy, carry their
// placement (origin, end point, orientation, transform controls, flags) and an object; objects
// hold shapes and modifiers.

#include "OvBase.h"
#include "OvMath.h"
#include "OvProperty.h"
#include "OvPropertyGroups.h"
#include "OvShape.h"
#include <memory>
#include <utility>
#include <vector>

class OvSkeleton;

enum class OvRotationOrder : int { XYZ = 0, XZY = 1, YXZ = 2, YZX = 3, ZXY = 4, ZYX = 5 };
const char *rotationOrderName(OvRotationOrder order);
// The quaternion of three angles (radians, about X, Y and Z) applied in the given order.
OvQuat quatFromEuler(OvRotationOrder order, const OvVec3 &angles);

class OvElement : public OvBase {
    Q_OBJECT
public:
    OvElement() = default;
    ~OvElement() override;

    const QString &getName() const { return m_name; }
    void setName(const QString &name) {
        OvUndoStack::noteElement(this);
        const QString old = std::exchange(m_name, name);
        if (old != m_name)
            nameChanged(old);
    }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label);
    // Every live element with this label (any order), so that label lookups need not walk a scene.
    static QList<OvElement *> elementsLabelled(const QString &label);

    OvElementData *findDataItem(const QString &name) const;
    // Takes ownership.
    void addDataItem(OvElementData *item);
    int getNumDataItems() const { return int(m_dataItems.size()); }
    OvElementData *getDataItem(int i) const { return m_dataItems[size_t(i)].get(); }

    int getNumProperties() const { return int(m_properties.size()); }
    OvProperty *getProperty(int i) const { return m_properties[size_t(i)].get(); }
    OvProperty *findProperty(const QString &name) const;
    // The first property with this label, or null.
    OvProperty *findPropertyByLabel(const QString &label) const;
    // Takes ownership; returns the property.
    template <class P> P *addProperty(P *property) {
        property->setOwner(this);
        m_properties.emplace_back(property);
        return property;
    }

    // True when this object's class is exactly `className`.
    bool isA(const char *className) const;

    // How the properties are grouped for the user; made on first use.
    OvPropertyGroupTree *getPropertyGroups();
    const OvPropertyGroupTree *findPropertyGroups() const { return m_groups.get(); }

protected:
    // After setName changed the name (lookups by name follow it).
    virtual void nameChanged(const QString & /*oldName*/) {}

private:
    QString m_name;
    QString m_label;
    std::vector<std::unique_ptr<OvElementData>> m_dataItems;
    std::vector<std::unique_ptr<OvProperty>> m_properties;
    std::unique_ptr<OvPropertyGroupTree> m_groups;
};

// Something an object applies to its shapes: a joint, a deformer, a morph.
class OvModifier {
public:
    virtual ~OvModifier() = default;
    virtual const char *className() const = 0;
    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

private:
    QString m_name;
};

// What a node shows: its shapes (owned), one of which the geometry switch selects, and the
// modifiers (owned) applied to them.
class OvObject : public OvElement {
    Q_OBJECT
public:
    OvObject();
    ~OvObject() override;
    int getNumShapes() const { return int(m_shapes.size()); }
    OvShape *getShape(int i) const { return m_shapes[size_t(i)]; }
    // Takes ownership; position -1 appends.
    void addShape(OvShape *shape, int position = -1);
    // Chooses the shown shape; its items follow the shapes' labels (names when unlabelled).
    OvEnumProperty *getGeometryControl() const { return m_geometrySwitch; }

    int getNumModifiers() const { return int(m_modifiers.size()); }
    OvModifier *getModifier(int i) const { return m_modifiers[size_t(i)].get(); }
    // Takes ownership; position -1 appends.
    void addModifier(OvModifier *modifier, int position = -1);
    template <class M> M *findModifier() const {
        for (const auto &m : m_modifiers)
            if (auto *found = dynamic_cast<M *>(m.get()))
                return found;
        return nullptr;
    }

    // Refreshes the geometry switch's items after shapes were renamed.
    void updateGeometryItems();

private:
    std::vector<OvShape *> m_shapes;
    std::vector<std::unique_ptr<OvModifier>> m_modifiers;
    OvEnumProperty *m_geometrySwitch;
};

class OvNode : public OvElement {
    Q_OBJECT
public:
    OvNode();
    ~OvNode() override;

    OvNode *getNodeParent() const { return m_parent; }
    int getNumNodeChildren() const { return int(m_children.size()); }
    OvNode *getNodeChild(int i) const { return m_children[size_t(i)]; }
    // Takes ownership; a child that has another parent is taken from it first. Refuses (false) to
    // make a node its own ancestor.
    bool addNodeChild(OvNode *child, bool keepWorldPosition = false);
    // Gives up ownership; the caller then owns the child.
    bool removeNodeChild(OvNode *child, bool keepWorldPosition = false);
    // Puts a child without a parent back at `index` among the children (undo uses it).
    void insertNodeChild(OvNode *child, int index);
    bool isAncestorOf(const OvNode *node) const;
    // The descendant with this object name (depth first); only direct children unless recursive.
    // Constant time below a skeleton unless several descendants share the name.
    OvNode *findNodeChild(const QString &name, bool recursive = true) const;
    // The nearest skeleton at or above this node, or null; kept as nodes move, so asking costs
    // nothing however deep the node hangs.
    OvSkeleton *getSkeleton() const { return m_skeleton; }

    OvObject *getObject() const { return m_object.get(); }
    // Takes ownership; replaces any previous object.
    void setObject(OvObject *object) { m_object.reset(object); }

    // Joint placement, in host units.
    const OvVec3 &getOrigin() const { return m_origin; }
    void setOrigin(const OvVec3 &v) {
        OvUndoStack::noteElement(this);
        m_origin = v;
    }
    const OvVec3 &getEndPoint() const { return m_endPoint; }
    void setEndPoint(const OvVec3 &v) {
        OvUndoStack::noteElement(this);
        m_endPoint = v;
    }
    const OvQuat &getOrientation() const { return m_orientation; }
    void setOrientation(const OvQuat &q) {
        OvUndoStack::noteElement(this);
        m_orientation = q;
    }
    OvRotationOrder getRotationOrder() const { return m_rotationOrder; }
    void setRotationOrder(OvRotationOrder order) {
        OvUndoStack::noteElement(this);
        m_rotationOrder = order;
    }

    // Transform controls.
    OvFloatProperty *getXPosControl() const { return m_pos[0]; }
    OvFloatProperty *getYPosControl() const { return m_pos[1]; }
    OvFloatProperty *getZPosControl() const { return m_pos[2]; }
    OvFloatProperty *getXRotControl() const { return m_rot[0]; }
    OvFloatProperty *getYRotControl() const { return m_rot[1]; }
    OvFloatProperty *getZRotControl() const { return m_rot[2]; }
    OvFloatProperty *getXScaleControl() const { return m_scale[0]; }
    OvFloatProperty *getYScaleControl() const { return m_scale[1]; }
    OvFloatProperty *getZScaleControl() const { return m_scale[2]; }
    OvFloatProperty *getScaleControl() const { return m_uniformScale; }
    // Aims the node at another; the host adds it to a node's properties when first asked for it.
    OvNumericNodeProperty *getPointAtControl();
    OvNumericNodeProperty *findPointAtControl() const { return m_pointAt; }

    // Flags.
    OvBoolProperty *getVisibilityControl() const { return m_visible; }
    OvBoolProperty *getShadowControl() const { return m_shadow; }
    OvBoolProperty *getSelectabilityControl() const { return m_selectable; }
    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) {
        OvUndoStack::noteElement(this);
        m_hidden = hidden;
    }

    // World space: the host composes translations only (rotations do not move children here).
    OvVec3 getWSPos() const;
    // Position relative to the parent, at the scene's current time.
    OvVec3 localPos() const;
    OvVec3 getLocalPos() const { return localPos(); }
    void setWSPos(const OvVec3 &p);
    // Bounds of this node's shown shapes and of its children's, in world space; empty when none.
    OvBox3 getWSBoundingBox() const;

private:
    friend class OvSkeleton;
    // After this node moved below a node whose nearest skeleton is `skeleton` (or out of any):
    // this node and those below it, up to a figure of their own, follow, and so do the
    // skeletons' name indexes.
    void joinSkeleton(OvSkeleton *skeleton);
    void nameChanged(const QString &oldName) override;
    // Takes the child out of the list (false when it is not there); its skeleton stays.
    bool detach(OvNode *child);

    OvNode *m_parent = nullptr;
    OvSkeleton *m_skeleton = nullptr; // this node itself for a skeleton
    std::vector<OvNode *> m_children;
    std::unique_ptr<OvObject> m_object;
    OvVec3 m_origin, m_endPoint;
    OvQuat m_orientation;
    OvRotationOrder m_rotationOrder = OvRotationOrder::XYZ;
    OvFloatProperty *m_pos[3];
    OvFloatProperty *m_rot[3];
    OvFloatProperty *m_scale[3];
    OvFloatProperty *m_uniformScale;
    OvNumericNodeProperty *m_pointAt = nullptr;
    OvBoolProperty *m_visible;
    OvBoolProperty *m_shadow;
    OvBoolProperty *m_selectable;
    bool m_hidden = false;
};

// Calls visit(node) for `root` and every node below it, parents before children and children in
// order, without recursion: how deep a hierarchy goes is up to the input. visit returns false to
// skip the node's children.
template <class Visit> void forEachNode(OvNode *root, Visit &&visit) {
    std::vector<OvNode *> pending{root};
    while (!pending.empty()) {
        OvNode *node = pending.back();
        pending.pop_back();
        if (!visit(node))
            continue;
        for (int i = node->getNumNodeChildren(); i-- > 0;)
            pending.push_back(node->getNodeChild(i));
    }
}
