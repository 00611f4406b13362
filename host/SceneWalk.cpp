#include "SceneWalk.h"

#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>

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

// Same order as the walk: a node, its object's shapes, then its children.
void SceneWalk::collect(const OvNode *node) {
    if (!node || m_nodes.contains(node))
        return;
    m_nodes.insert(node);
    for (int i = 0; i < node->getNumProperties(); ++i)
        addProperty(node->getProperty(i), node);
    if (const OvObject *object = node->getObject()) {
        for (int i = 0; i < object->getNumProperties(); ++i)
            addProperty(object->getProperty(i), node);
        for (int i = 0; i < object->getNumModifiers(); ++i) {
            OvModifier *m = object->getModifier(i);
            if (auto *joint = dynamic_cast<OvPoserJoint *>(m))
                addProperty(joint->getBendControl(), node);
            else if (auto *dform = dynamic_cast<OvDFormModifier *>(m))
                addProperty(dform->getValueChannel(), node);
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
    for (int i = 0; i < node->getNumNodeChildren(); ++i)
        collect(node->getNodeChild(i));
}

void SceneWalk::walk(SceneVisitor &v) {
    list(v, SceneVisitor::List::Nodes, m_scene.getNumNodes(), [&](int i) { node(*m_scene.getNode(i), v); });
}

void SceneWalk::node(const OvNode &node, SceneVisitor &v) {
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
    list(v, SceneVisitor::List::Children, node.getNumNodeChildren(),
         [&](int i) { this->node(*node.getNodeChild(i), v); });
    v.leaveNode(node);
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
