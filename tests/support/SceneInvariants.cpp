#include "SceneInvariants.h"

#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <QSet>

QStringList checkMeshInvariants(const OvPolyMesh &mesh, int materialCount) {
    QStringList problems;
    const QString where = QStringLiteral("mesh \"%1\"").arg(mesh.getName());
    const int nv = mesh.getNumVertices(), nuv = mesh.getUVs()->getNumValues(), nf = mesh.getNumFaces();
    if (mesh.isEditing())
        problems << where + QStringLiteral(": still being edited");
    if (nf > 0 && nuv == 0)
        problems << where + QStringLiteral(": faces but no UV");
    int corners = 0;
    for (int f = 0; f < nf; ++f) {
        int n = mesh.getFaceSize(f);
        if (n <= 0) {
            problems << where + QStringLiteral(": face %1 has %2 corners").arg(f).arg(n);
            continue;
        }
        corners += n;
        const int *v = mesh.getFaceVertices(f), *t = mesh.getFaceUVs(f);
        for (int c = 0; c < n; ++c) {
            if (v[c] < 0 || v[c] >= nv)
                problems << where + QStringLiteral(": face %1 vertex %2 outside 0..%3").arg(f).arg(v[c]).arg(nv - 1);
            if (t[c] < 0 || t[c] >= nuv)
                problems << where + QStringLiteral(": face %1 uv %2 outside 0..%3").arg(f).arg(t[c]).arg(nuv - 1);
        }
        int m = mesh.getFaceMaterial(f);
        if (m < 0 || (materialCount >= 0 && m >= materialCount))
            problems << where + QStringLiteral(": face %1 material %2 of %3").arg(f).arg(m).arg(materialCount);
        if (problems.size() > 20)
            return problems;
    }
    if (corners != mesh.getNumCorners())
        problems << where + QStringLiteral(": %1 corners counted, %2 stored").arg(corners).arg(mesh.getNumCorners());
    QSet<QString> names;
    for (int g = 0; g < mesh.getNumFaceGroups(); ++g) {
        const QString &name = mesh.getFaceGroupName(g);
        if (names.contains(name))
            problems << where + QStringLiteral(": group \"%1\" twice").arg(name);
        names.insert(name);
        if (mesh.findFaceGroup(name) != g)
            problems << where + QStringLiteral(": group \"%1\" not found by name").arg(name);
        int last = -1;
        for (int f : mesh.getFaceGroupFaces(g)) {
            if (f <= last || f >= nf) {
                problems << where + QStringLiteral(": group \"%1\" lists face %2").arg(name).arg(f);
                break;
            }
            last = f;
        }
    }
    for (int i = 0; i < 3 * nv; ++i)
        if (mesh.getVertexArray()[i] != mesh.getVertexArray()[i]) {
            problems << where + QStringLiteral(": vertex coordinate %1 is NaN").arg(i);
            break;
        }
    return problems;
}

QStringList checkShapeInvariants(const OvShape &shape) {
    QStringList problems;
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        if (!shape.getMaterial(i))
            problems << QStringLiteral("shape \"%1\": material %2 is null").arg(shape.getName()).arg(i);
    if (auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry()))
        problems << checkMeshInvariants(*mesh, shape.getNumMaterials());
    return problems;
}

QStringList checkNodeInvariants(const OvNode &node) {
    QStringList problems;
    for (int i = 0; i < node.getNumNodeChildren(); ++i) {
        const OvNode *child = node.getNodeChild(i);
        if (!child) {
            problems << QStringLiteral("node \"%1\": null child %2").arg(node.getName()).arg(i);
            continue;
        }
        if (child->getNodeParent() != &node)
            problems << QStringLiteral("node \"%1\": child \"%2\" names another parent")
                            .arg(node.getName(), child->getName());
        problems << checkNodeInvariants(*child);
    }
    if (const OvObject *object = node.getObject())
        for (int i = 0; i < object->getNumShapes(); ++i)
            problems << checkShapeInvariants(*object->getShape(i));
    return problems;
}

QStringList checkSceneInvariants(const OvScene &scene) {
    QStringList problems;
    QSet<const OvNode *> seen;
    for (int i = 0; i < scene.getNumNodes(); ++i) {
        const OvNode *node = scene.getNode(i);
        if (!node) {
            problems << QStringLiteral("scene: null node %1").arg(i);
            continue;
        }
        if (node->getNodeParent())
            problems << QStringLiteral("scene: top-level node \"%1\" has a parent").arg(node->getName());
        if (seen.contains(node))
            problems << QStringLiteral("scene: node \"%1\" listed twice").arg(node->getName());
        seen.insert(node);
        problems << checkNodeInvariants(*node);
    }
    return problems;
}
