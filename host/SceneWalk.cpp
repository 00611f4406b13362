#include "SceneWalk.h"

#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvMorph.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <vector>

namespace {

// True the first time an item is written; later uses only refer to it.
template <class T> bool markWritten(QSet<const T *> &written, const T *item) {
    if (written.contains(item))
        return false;
    written.insert(item);
    return true;
}

// Announces a list, visits its n members and closes it.
template <class Each> void list(SceneVisitor &v, SceneVisitor::List which, int n, Each each) {
    v.beginList(which);
    for (int i = 0; i < n; ++i)
        each(i);
    v.endList(which);
}

} // namespace

SceneWalk::SceneWalk(const OvScene &scene) : m_scene(scene) {
    for (int i = 0; i < scene.getNumNodes(); ++i)
        collect(scene.getNode(i));
}

void SceneWalk::addProperty(const OvProperty *p, const OvNode *node) {
    if (p && !m_propertyNodes.contains(p))
        m_propertyNodes.insert(p, node);
}

// Same order as the walk: a node, its object's shapes, then its children. With a stack of its own
// rather than recursion, so that a hierarchy of any depth is walked.
void SceneWalk::collect(const OvNode *top) {
    struct Frame {
        const OvNode *node;
        int next; // the child to go to next
    };
    std::vector<Frame> stack;
    auto visit = [&](const OvNode *node) {
        if (node && !m_nodes.contains(node)) {
            addNode(node);
            stack.push_back({node, 0});
        }
    };
    visit(top);
    while (!stack.empty()) {
        Frame &f = stack.back();
        if (f.next < f.node->getNumNodeChildren())
            visit(f.node->getNodeChild(f.next++));
        else
            stack.pop_back();
    }
}

void SceneWalk::addNode(const OvNode *node) {
    m_nodes.insert(node);
    for (int i = 0; i < node->getNumProperties(); ++i)
        addProperty(node->getProperty(i), node);
    const OvObject *object = node->getObject();
    if (!object)
        return;
    for (int i = 0; i < object->getNumProperties(); ++i)
        addProperty(object->getProperty(i), node);
    for (int i = 0; i < object->getNumModifiers(); ++i) {
        OvModifier *m = object->getModifier(i);
        if (auto *joint = dynamic_cast<OvPoserJoint *>(m))
            addProperty(joint->getBendControl(), node);
        else if (auto *dform = dynamic_cast<OvDFormModifier *>(m))
            addProperty(dform->getValueChannel(), node);
        else if (auto *morph = dynamic_cast<OvMorph *>(m))
            addProperty(morph->getValueChannel(), node);
    }
    for (int i = 0; i < object->getNumShapes(); ++i) {
        const OvShape *shape = object->getShape(i);
        for (int k = 0; k < shape->getNumMaterials(); ++k)
            if (const OvMaterial *material = shape->getMaterial(k); !m_materialIds.contains(material))
                m_materialIds.insert(material, int(m_materialIds.size()) + 1);
        if (auto *mesh = dynamic_cast<const OvPolyMesh *>(shape->getGeometry()))
            if (!m_meshIds.contains(mesh))
                m_meshIds.insert(mesh, int(m_meshIds.size()) + 1);
    }
}

// Each node is entered, its children walked and the node left, with a stack of its own.
void SceneWalk::walk(SceneVisitor &v) {
    struct Frame {
        const OvNode *node;
        int next; // the child to enter next
    };
    std::vector<Frame> stack;
    v.beginList(SceneVisitor::List::Nodes);
    for (int i = 0; i < m_scene.getNumNodes(); ++i) {
        enterNode(*m_scene.getNode(i), v);
        stack.push_back({m_scene.getNode(i), 0});
        while (!stack.empty()) {
            Frame &f = stack.back();
            if (f.next < f.node->getNumNodeChildren()) {
                const OvNode *child = f.node->getNodeChild(f.next++);
                enterNode(*child, v);
                stack.push_back({child, 0});
            } else {
                v.endList(SceneVisitor::List::Children);
                v.leaveNode(*f.node);
                stack.pop_back();
            }
        }
    }
    v.endList(SceneVisitor::List::Nodes);
}

// Everything of a node up to its children, and the opening of their list.
void SceneWalk::enterNode(const OvNode &node, SceneVisitor &v) {
    v.enterNode(node);
    if (auto *skeleton = qobject_cast<const OvSkeleton *>(&node))
        v.skeleton(*skeleton);
    else if (auto *dform = qobject_cast<const OvDForm *>(&node))
        v.deformer(*dform);
    else if (auto *zone = qobject_cast<const OvDFormZone *>(&node))
        v.zone(*zone);
    else if (auto *light = qobject_cast<const OvLight *>(&node))
        v.light(*light);
    else if (auto *camera = qobject_cast<const OvBasicCamera *>(&node))
        v.camera(*camera);
    elementLists(node, v);
    if (const OvObject *o = node.getObject())
        object(*o, v);
    v.beginList(SceneVisitor::List::Children);
}

// Data items and properties, which nodes and objects both carry.
void SceneWalk::elementLists(const OvElement &e, SceneVisitor &v) {
    list(v, SceneVisitor::List::DataItems, e.getNumDataItems(),
         [&](int i) { v.dataItem(*e.getDataItem(i)); });
    list(v, SceneVisitor::List::Properties, e.getNumProperties(),
         [&](int i) { v.property(e, *e.getProperty(i)); });
}

void SceneWalk::object(const OvObject &object, SceneVisitor &v) {
    v.enterObject(object);
    elementLists(object, v);
    list(v, SceneVisitor::List::Modifiers, object.getNumModifiers(),
         [&](int i) { v.modifier(*object.getModifier(i)); });
    list(v, SceneVisitor::List::Shapes, object.getNumShapes(), [&](int i) { shape(*object.getShape(i), v); });
    v.leaveObject(object);
}

void SceneWalk::shape(const OvShape &shape, SceneVisitor &v) {
    MeshUse use;
    use.mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry());
    if (use.mesh) {
        use.id = m_meshIds.value(use.mesh, 0);
        use.first = markWritten(m_writtenMeshes, use.mesh);
    }
    v.enterShape(shape, use);
    list(v, SceneVisitor::List::Materials, shape.getNumMaterials(), [&](int i) {
        const OvMaterial *m = shape.getMaterial(i);
        v.material(*m, m_materialIds.value(m, 0), markWritten(m_writtenMaterials, m));
    });
    v.leaveShape(shape);
}

QString colorText(const QColor &c) {
    return c.isValid() ? c.name(QColor::HexRgb) : QStringLiteral("invalid");
}

const char *lightKind(const OvLight &light) {
    if (qobject_cast<const OvSpotLight *>(&light))
        return "spot";
    if (qobject_cast<const OvDistantLight *>(&light))
        return "distant";
    return "light";
}
