#include "OvNode.h"
#include "OvApp.h"
#include "OvScene.h"

#include "OvPropertyGroups.h"
#include "OvSkeleton.h"
#include <QHash>

#include <algorithm>
#include <cstring>

const char *rotationOrderName(OvRotationOrder order) {
    static const char *const names[] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};
    int i = int(order);
    return i >= 0 && i < 6 ? names[i] : "?";
}

OvQuat quatFromEuler(OvRotationOrder order, const OvVec3 &angles) {
    const OvQuat q[3] = {OvQuat(OvVec3(1, 0, 0), angles[0]), OvQuat(OvVec3(0, 1, 0), angles[1]),
                         OvQuat(OvVec3(0, 0, 1), angles[2])};
    static const int sequence[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    const int *s = sequence[std::clamp(int(order), 0, 5)];
    // The first axis of the order is applied first, so it stands rightmost.
    return q[s[2]] * q[s[1]] * q[s[0]];
}

// ---- OvElement ----

namespace {

// Never destroyed: elements owned by other statics (the host's scene) may outlive it otherwise.
QMultiHash<QString, OvElement *> &labelIndex() {
    static auto *index = new QMultiHash<QString, OvElement *>;
    return *index;
}

} // namespace

OvElement::~OvElement() {
    OvUndoStack::forget(this);
    if (!m_label.isEmpty())
        labelIndex().remove(m_label, this);
}

void OvElement::setLabel(const QString &label) {
    if (label == m_label)
        return;
    OvUndoStack::noteElement(this);
    if (!m_label.isEmpty())
        labelIndex().remove(m_label, this);
    m_label = label;
    if (!m_label.isEmpty())
        labelIndex().insert(m_label, this);
}

QList<OvElement *> OvElement::elementsLabelled(const QString &label) {
    return labelIndex().values(label);
}

OvPropertyGroupTree *OvElement::getPropertyGroups() {
    if (!m_groups)
        m_groups.reset(new OvPropertyGroupTree);
    return m_groups.get();
}

OvElementData *OvElement::findDataItem(const QString &name) const {
    for (const auto &d : m_dataItems)
        if (d->getName() == name)
            return d.get();
    return nullptr;
}

void OvElement::addDataItem(OvElementData *item) {
    m_dataItems.emplace_back(item);
}

OvProperty *OvElement::findProperty(const QString &name) const {
    for (const auto &p : m_properties)
        if (p->getName() == name)
            return p.get();
    return nullptr;
}

OvProperty *OvElement::findPropertyByLabel(const QString &label) const {
    for (const auto &p : m_properties)
        if (p->getLabel() == label)
            return p.get();
    return nullptr;
}

bool OvElement::isA(const char *className) const {
    return std::strcmp(metaObject()->className(), className) == 0;
}

// ---- OvObject ----

OvObject::OvObject() : m_geometrySwitch(addProperty(new OvEnumProperty(QStringLiteral("Geometry")))) {}

OvObject::~OvObject() {
    for (OvShape *s : m_shapes)
        delete s;
}

void OvObject::addShape(OvShape *shape, int position) {
    if (!shape)
        return;
    if (position < 0 || position >= int(m_shapes.size()))
        m_shapes.push_back(shape);
    else
        m_shapes.insert(m_shapes.begin() + position, shape);
    updateGeometryItems();
}

void OvObject::updateGeometryItems() {
    QStringList items;
    for (OvShape *s : m_shapes)
        items << (s->getLabel().isEmpty() ? s->getName() : s->getLabel());
    m_geometrySwitch->setItems(items);
    m_geometrySwitch->setMin(0);
    m_geometrySwitch->setMax(std::max(0, int(items.size()) - 1));
}

void OvObject::addModifier(OvModifier *modifier, int position) {
    if (!modifier)
        return;
    if (position < 0 || position >= int(m_modifiers.size()))
        m_modifiers.emplace_back(modifier);
    else
        m_modifiers.emplace(m_modifiers.begin() + position, modifier);
}

// ---- OvNode ----

OvNode::OvNode() {
    static const char *const pos[3] = {"xTran", "yTran", "zTran"};
    static const char *const rot[3] = {"xRotate", "yRotate", "zRotate"};
    static const char *const scale[3] = {"xScale", "yScale", "zScale"};
    for (int i = 0; i < 3; ++i)
        m_pos[i] = addProperty(new OvFloatProperty(QString::fromLatin1(pos[i]), 0.0f));
    for (int i = 0; i < 3; ++i)
        m_rot[i] = addProperty(new OvFloatProperty(QString::fromLatin1(rot[i]), 0.0f));
    for (int i = 0; i < 3; ++i)
        m_scale[i] = addProperty(new OvFloatProperty(QString::fromLatin1(scale[i]), 1.0f));
    m_uniformScale = addProperty(new OvFloatProperty(QStringLiteral("Scale"), 1.0f));
    m_visible = addProperty(new OvBoolProperty(QStringLiteral("Visible"), true));
    m_shadow = addProperty(new OvBoolProperty(QStringLiteral("Casts Shadow"), true));
    m_selectable = addProperty(new OvBoolProperty(QStringLiteral("Selectable"), true));
}

// Descendants are deleted leaves first from a list, not by recursion, so that a hierarchy of any
// depth can be deleted; each arrives at its destructor without children, and without a skeleton
// whose name index it would have to leave (a figure above this node keeps an index that is right).
OvNode::~OvNode() {
    std::vector<OvNode *> below;
    for (size_t i = 0; i < m_children.size(); ++i)
        below.push_back(m_children[i]);
    m_children.clear();
    for (size_t i = 0; i < below.size(); ++i) {
        OvNode *n = below[i];
        n->m_parent = nullptr;
        below.insert(below.end(), n->m_children.begin(), n->m_children.end());
        n->m_children.clear();
    }
    OvSkeleton *above = m_skeleton == this ? nullptr : m_skeleton;
    if (above)
        above->unindexNode(this, getName());
    for (OvNode *n : below) {
        if (n->m_skeleton == n) {
            // Only a figure that outlives this deletion still has to forget the nested one.
            auto *inner = static_cast<OvSkeleton *>(n);
            if (above && inner->m_outer == above)
                inner->setOuter(nullptr);
            inner->m_outer = nullptr;
        } else if (above && n->m_skeleton == above) {
            above->unindexNode(n, n->getName());
        }
        n->m_skeleton = nullptr;
    }
    for (size_t i = below.size(); i-- > 0;)
        delete below[i];
}

bool OvNode::isAncestorOf(const OvNode *node) const {
    for (const OvNode *p = node ? node->m_parent : nullptr; p; p = p->m_parent)
        if (p == this)
            return true;
    return false;
}

bool OvNode::addNodeChild(OvNode *child, bool) {
    // A child without children of its own cannot be above this node: no walk up a deep chain then.
    if (!child || child == this || (!child->m_children.empty() && child->isAncestorOf(this)))
        return false;
    if (child->m_parent == this)
        return true;
    OvUndoStack::notePlacement(child);
    // Taken from its parent without leaving its figure first: a move within a figure changes no index.
    if (child->m_parent)
        child->m_parent->detach(child);
    child->m_parent = this;
    m_children.push_back(child);
    child->joinSkeleton(m_skeleton);
    return true;
}

bool OvNode::removeNodeChild(OvNode *child, bool) {
    if (!detach(child))
        return false;
    child->joinSkeleton(nullptr);
    return true;
}

bool OvNode::detach(OvNode *child) {
    auto it = std::find(m_children.begin(), m_children.end(), child);
    if (it == m_children.end())
        return false;
    OvUndoStack::notePlacement(child);
    m_children.erase(it);
    child->m_parent = nullptr;
    return true;
}

void OvNode::joinSkeleton(OvSkeleton *skeleton) {
    // A node that stays with its figure changes nothing below it; a figure keeps its own nodes and
    // only notes where it now hangs.
    if (m_skeleton == skeleton && m_skeleton != this)
        return;
    forEachNode(this, [skeleton](OvNode *n) {
        if (n->m_skeleton == n) {
            static_cast<OvSkeleton *>(n)->setOuter(skeleton);
            return false;
        }
        if (n->m_skeleton)
            n->m_skeleton->unindexNode(n, n->getName());
        if (skeleton)
            skeleton->indexNode(n);
        n->m_skeleton = skeleton;
        return true;
    });
}

void OvNode::nameChanged(const QString &oldName) {
    if (m_skeleton && m_skeleton != this) {
        m_skeleton->unindexNode(this, oldName);
        m_skeleton->indexNode(this);
    }
}

void OvNode::insertNodeChild(OvNode *child, int index) {
    if (!child || child->m_parent || child == this)
        return;
    index = std::clamp(index, 0, int(m_children.size()));
    child->m_parent = this;
    m_children.insert(m_children.begin() + index, child);
    child->joinSkeleton(m_skeleton);
}

// Each node's own children are looked at before any grandchild below them. Below a skeleton the
// figures' name indexes answer at once unless the name is shared.
OvNode *OvNode::findNodeChild(const QString &name, bool recursive) const {
    OvNode *found = nullptr;
    if (recursive && m_skeleton == this) {
        const int count = static_cast<const OvSkeleton *>(this)->countNamed(name, found);
        if (count < 2)
            return count == 1 ? found : nullptr;
        found = nullptr;
    }
    forEachNode(const_cast<OvNode *>(this), [&](OvNode *n) {
        if (found)
            return false;
        for (OvNode *c : n->m_children)
            if (c->getName() == name) {
                found = c;
                return false;
            }
        return recursive;
    });
    return found;
}

// At the scene's current time: keyed positions follow their keys.
OvVec3 OvNode::localPos() const {
    const int t = OvApp::getScene()->getTime();
    return OvVec3(m_pos[0]->getValueAt(t), m_pos[1]->getValueAt(t), m_pos[2]->getValueAt(t));
}

// Summed from the root down, as a parent's position is the sum of its own chain.
OvNumericNodeProperty *OvNode::getPointAtControl() {
    if (!m_pointAt)
        m_pointAt = addProperty(new OvNumericNodeProperty(QStringLiteral("Point At"), 1.0f));
    return m_pointAt;
}

OvVec3 OvNode::getWSPos() const {
    std::vector<const OvNode *> chain;
    for (const OvNode *n = this; n; n = n->m_parent)
        chain.push_back(n);
    OvVec3 p = chain.back()->localPos();
    for (size_t i = chain.size() - 1; i-- > 0;)
        p = p + chain[i]->localPos();
    return p;
}

void OvNode::setWSPos(const OvVec3 &p) {
    OvVec3 local = m_parent ? p - m_parent->getWSPos() : p;
    for (int i = 0; i < 3; ++i)
        m_pos[i]->setValue(local[i]);
}

OvBox3 OvNode::getWSBoundingBox() const {
    OvBox3 box;
    // Positions are carried down the walk: each node's is its parent's plus its own.
    QHash<const OvNode *, OvVec3> at;
    at.insert(this, getWSPos());
    forEachNode(const_cast<OvNode *>(this), [&](OvNode *n) {
        const OvVec3 pos = at.value(n);
        for (OvNode *c : n->m_children)
            at.insert(c, pos + c->localPos());
        OvObject *object = n->m_object.get();
        if (!object || object->getNumShapes() == 0)
            return true;
        int shown = std::clamp(object->getGeometryControl()->getValue(), 0, object->getNumShapes() - 1);
        if (auto *mesh = dynamic_cast<const OvPolyMesh *>(object->getShape(shown)->getGeometry()))
            for (int v = 0; v < mesh->getNumVertices(); ++v)
                box.extendBy(OvVec3(mesh->getVertex(v)) + pos);
        return true;
    });
    return box;
}
