#include "SceneDump.h"
#include "JsonWriter.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <QHash>
#include <QSet>
#include <algorithm>

namespace {

// What both writers learn about the scene before writing it: which nodes and properties hang in it
// (a reference to anything else is reported, never followed: it may point at a deleted object), and
// the ids of meshes and materials, which make sharing visible.
class DumpContext {
public:
    explicit DumpContext(const OvScene &scene) {
        for (int i = 0; i < scene.getNumNodes(); ++i)
            collect(scene.getNode(i));
    }

    bool hasNode(const OvNode *node) const { return m_nodes.contains(node); }
    // The scene node that carries the property (on itself, its object or a modifier), or null.
    const OvNode *propertyNode(const OvProperty *p) const { return m_propertyNodes.value(p, nullptr); }
    int meshId(const OvPolyMesh *mesh) const { return m_meshIds.value(mesh, 0); }
    int materialId(const OvMaterial *material) const { return m_materialIds.value(material, 0); }
    // True the first time an item is written; later shapes only refer to it.
    bool firstMeshUse(const OvPolyMesh *mesh) { return markWritten(m_writtenMeshes, mesh); }
    bool firstMaterialUse(const OvMaterial *material) { return markWritten(m_writtenMaterials, material); }

private:
    template <class T> static bool markWritten(QSet<const T *> &written, const T *item) {
        if (written.contains(item))
            return false;
        written.insert(item);
        return true;
    }

    void addProperty(const OvProperty *p, const OvNode *node) {
        if (p && !m_propertyNodes.contains(p))
            m_propertyNodes.insert(p, node);
    }

    // Same order as the writers: a node, its object's shapes, then its children.
    void collect(const OvNode *node) {
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

    QSet<const OvNode *> m_nodes;
    QHash<const OvProperty *, const OvNode *> m_propertyNodes;
    QHash<const OvPolyMesh *, int> m_meshIds;
    QHash<const OvMaterial *, int> m_materialIds;
    QSet<const OvPolyMesh *> m_writtenMeshes;
    QSet<const OvMaterial *> m_writtenMaterials;
};

QString colorText(const QColor &c) {
    return c.isValid() ? c.name(QColor::HexRgb) : QStringLiteral("invalid");
}

QString num(float v) {
    return JsonWriter::formatFloat(v);
}

QString quoted(const QString &s) {
    return JsonWriter::quote(s);
}

QString vecText(const OvVec3 &v) {
    return QStringLiteral("(%1, %2, %3)").arg(num(v[0]), num(v[1]), num(v[2]));
}

QString quatText(const OvQuat &q) {
    return QStringLiteral("(%1, %2, %3, %4)").arg(num(q[0]), num(q[1]), num(q[2]), num(q[3]));
}

const char *className(const QObject &o) {
    return o.metaObject()->className();
}

// The values a freshly made node has; the tree shows placement and standard properties only when
// they differ.
bool isRestPlacement(const OvNode &node) {
    const OvQuat &q = node.getOrientation();
    return node.getOrigin() == OvVec3() && node.getEndPoint() == OvVec3() && q[0] == 0 && q[1] == 0 &&
           q[2] == 0 && q[3] == 1 && node.getRotationOrder() == OvRotationOrder::XYZ;
}

// A property the host makes for every node (or every object, skeleton, spot light, camera) that
// still looks as the host made it; the tree leaves these out. The follow target, spread angle and
// focal length are shown on their class's own line instead.
bool isStandardAtRest(const OvElement &owner, const OvProperty &p) {
    if (p.isHidden() || p.getLabel() != p.getName() || p.getNumControllers() > 0)
        return false;
    auto floatIs = [&p](const OvFloatProperty *control, float fresh) {
        return &p == control && control->getValue() == fresh;
    };
    auto boolIs = [&p](const OvBoolProperty *control) { return &p == control && control->getValue(); };
    if (auto *node = qobject_cast<const OvNode *>(&owner)) {
        if (floatIs(node->getXPosControl(), 0) || floatIs(node->getYPosControl(), 0) ||
            floatIs(node->getZPosControl(), 0) || floatIs(node->getXRotControl(), 0) ||
            floatIs(node->getYRotControl(), 0) || floatIs(node->getZRotControl(), 0) ||
            floatIs(node->getXScaleControl(), 1) || floatIs(node->getYScaleControl(), 1) ||
            floatIs(node->getZScaleControl(), 1) || floatIs(node->getScaleControl(), 1) ||
            boolIs(node->getVisibilityControl()) || boolIs(node->getShadowControl()) ||
            boolIs(node->getSelectabilityControl()))
            return true;
        if (auto *skeleton = qobject_cast<const OvSkeleton *>(node))
            return &p == skeleton->getFollowControl();
        if (auto *spot = qobject_cast<const OvSpotLight *>(node))
            return &p == spot->getSpreadAngleControl();
        if (auto *camera = qobject_cast<const OvBasicCamera *>(node))
            return &p == camera->getFocalLengthChannel();
        return false;
    }
    if (auto *object = qobject_cast<const OvObject *>(&owner))
        return &p == object->getGeometryControl() && object->getGeometryControl()->getValue() == 0;
    return false;
}

// ---- JSON -----------------------------------------------------------------------------------

void jsonVec(JsonWriter &w, const char *key, const OvVec3 &v) {
    w.key(key);
    w.beginArray();
    for (int i = 0; i < 3; ++i)
        w.value(v[i]);
    w.endArray();
}

// A node is referred to by name; null when there is none, {"outsideScene": true} when it is not
// in the scene.
void jsonNodeRef(JsonWriter &w, const DumpContext &ctx, const OvNode *node) {
    if (!node) {
        w.valueNull();
    } else if (!ctx.hasNode(node)) {
        w.beginObject();
        w.field("outsideScene", true);
        w.endObject();
    } else {
        w.value(node->getName());
    }
}

void jsonTexture(JsonWriter &w, const char *key, const OvTexture *t) {
    w.key(key);
    if (!t) {
        w.valueNull();
        return;
    }
    w.beginObject();
    w.field("path", t->getPath());
    w.field("name", t->getName());
    w.field("width", t->getWidth());
    w.field("height", t->getHeight());
    w.endObject();
}

void jsonMaterial(JsonWriter &w, DumpContext &ctx, const OvMaterial &m) {
    w.beginObject();
    w.field("materialId", ctx.materialId(&m));
    w.field("class", m.className());
    w.field("name", m.getName());
    if (auto *d = dynamic_cast<const OvDefaultMaterial *>(&m)) {
        w.field("diffuseColor", colorText(d->getDiffuseColor()));
        w.field("ambientColor", colorText(d->getAmbientColor()));
        w.field("ambientStrength", d->getAmbientStrength());
        w.field("specularColor", colorText(d->getSpecularColor()));
        w.field("reflectionColor", colorText(d->getReflectionColor()));
        w.field("reflectionStrength", d->getReflectionStrength());
        w.field("glossinessStrength", d->getGlossinessStrength());
        w.field("indexOfRefraction", d->getIndexOfRefraction());
        w.field("bumpStrength", d->getBumpStrength());
        w.field("bumpMin", d->getBumpMin());
        w.field("bumpMax", d->getBumpMax());
        w.field("baseOpacity", d->getBaseOpacity());
        w.key("maps");
        w.beginObject();
        jsonTexture(w, "ambientColor", d->getAmbientColorMap());
        jsonTexture(w, "color", d->getColorMap());
        jsonTexture(w, "specularColor", d->getSpecularColorMap());
        jsonTexture(w, "bump", d->getBumpMap());
        jsonTexture(w, "opacity", d->getOpacityMap());
        jsonTexture(w, "reflection", d->getReflectionMap());
        w.endObject();
    }
    w.endObject();
}

// A JSON array of the n ints that at(0) .. at(n - 1) give.
template <class At> void jsonIntList(JsonWriter &w, int n, At at) {
    w.beginArray();
    for (int i = 0; i < n; ++i)
        w.value(at(i));
    w.endArray();
}

// The first shape that shows a mesh writes it whole; later ones write only {"meshId": n}.
void jsonMesh(JsonWriter &w, DumpContext &ctx, const OvPolyMesh &mesh, bool data) {
    w.beginObject();
    w.field("meshId", ctx.meshId(&mesh));
    if (!ctx.firstMeshUse(&mesh)) {
        w.endObject();
        return;
    }
    w.field("class", mesh.className());
    w.field("name", mesh.getName());
    w.field("vertexCount", mesh.getNumVertices());
    w.field("uvCount", mesh.getUVs()->getNumValues());
    w.field("faceCount", mesh.getNumFaces());
    w.field("groupCount", mesh.getNumFaceGroups());
    if (data) {
        w.key("vertices");
        w.beginArray();
        for (int i = 0; i < mesh.getNumVertices(); ++i) {
            const float *p = mesh.getVertex(i);
            w.beginArray();
            w.value(p[0]);
            w.value(p[1]);
            w.value(p[2]);
            w.endArray();
        }
        w.endArray();
        w.key("uvs");
        w.beginArray();
        for (int i = 0; i < mesh.getUVs()->getNumValues(); ++i) {
            const float *t = mesh.getUVs()->getPnt2Value(i);
            w.beginArray();
            w.value(t[0]);
            w.value(t[1]);
            w.endArray();
        }
        w.endArray();
        w.key("faces");
        w.beginArray();
        for (int f = 0; f < mesh.getNumFaces(); ++f) {
            w.beginObject();
            const int n = mesh.getFaceSize(f);
            w.key("v");
            jsonIntList(w, n, [&](int c) { return mesh.getFaceVertex(f, c); });
            w.key("uv");
            jsonIntList(w, n, [&](int c) { return mesh.getFaceUV(f, c); });
            w.field("material", mesh.getFaceMaterial(f));
            w.endObject();
        }
        w.endArray();
    }
    w.key("groups");
    w.beginArray();
    for (int g = 0; g < mesh.getNumFaceGroups(); ++g) {
        w.beginObject();
        w.field("name", mesh.getFaceGroupName(g));
        const int count = mesh.getNumFaceGroupFaces(g);
        w.field("faceCount", count);
        if (data) {
            w.key("faces");
            jsonIntList(w, count, [&](int i) { return mesh.getFaceGroupFace(g, i); });
        }
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

void jsonShape(JsonWriter &w, DumpContext &ctx, const OvShape &shape, bool data) {
    w.beginObject();
    w.field("class", shape.className());
    w.field("name", shape.getName());
    w.field("label", shape.getLabel());
    w.key("materials");
    w.beginArray();
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        jsonMaterial(w, ctx, *shape.getMaterial(i));
    w.endArray();
    w.key("mesh");
    if (auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry()))
        jsonMesh(w, ctx, *mesh, data);
    else
        w.valueNull();
    w.endObject();
}

void jsonERCLink(JsonWriter &w, const DumpContext &ctx, const OvERCLink &link) {
    w.key("source");
    const OvNumericProperty *source = link.getSource();
    const OvNode *node = ctx.propertyNode(source);
    if (!source) {
        w.valueNull();
    } else if (!node) {
        w.beginObject();
        w.field("outsideScene", true);
        w.endObject();
    } else {
        w.beginObject();
        w.field("property", source->getName());
        w.key("owner");
        if (source->getOwner())
            w.value(source->getOwner()->getName());
        else
            w.valueNull();
        w.field("node", node->getName());
        w.endObject();
    }
    w.field("a", float(link.getA()));
    w.field("b", float(link.getB()));
}

void jsonController(JsonWriter &w, const DumpContext &ctx, const OvController &c) {
    w.beginObject();
    w.field("class", c.className());
    w.field("name", c.getName());
    if (auto *link = dynamic_cast<const OvERCLink *>(&c))
        jsonERCLink(w, ctx, *link);
    w.endObject();
}

void jsonIntRange(JsonWriter &w, const OvIntProperty &p) {
    w.field("min", p.getMin());
    w.field("max", p.getMax());
}

void jsonProperty(JsonWriter &w, const DumpContext &ctx, const OvProperty &p) {
    w.beginObject();
    w.field("class", p.className());
    w.field("name", p.getName());
    w.field("label", p.getLabel());
    w.field("hidden", p.isHidden());
    if (auto *e = dynamic_cast<const OvEnumProperty *>(&p)) {
        w.field("value", e->getValue());
        jsonIntRange(w, *e);
        w.key("items");
        w.beginArray();
        for (const QString &item : e->getItems())
            w.value(item);
        w.endArray();
    } else if (auto *i = dynamic_cast<const OvIntProperty *>(&p)) {
        w.field("value", i->getValue());
        jsonIntRange(w, *i);
    } else if (auto *f = dynamic_cast<const OvFloatProperty *>(&p)) {
        w.field("value", f->getValue());
    } else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p)) {
        w.field("value", b->getValue());
    } else if (auto *s = dynamic_cast<const OvSkeletonProperty *>(&p)) {
        w.key("value");
        jsonNodeRef(w, ctx, s->getValue());
    }
    w.key("controllers");
    w.beginArray();
    for (int i = 0; i < p.getNumControllers(); ++i)
        jsonController(w, ctx, *p.getController(i));
    w.endArray();
    w.endObject();
}

void jsonDataItem(JsonWriter &w, const OvElementData &d) {
    w.beginObject();
    w.field("class", d.className());
    w.field("name", d.getName());
    if (auto *s = dynamic_cast<const OvSourceFileData *>(&d))
        w.field("path", s->getSourceFilePath());
    if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(&d)) {
        w.key("group");
        if (g->getGroupName().isNull())
            w.valueNull();
        else
            w.value(g->getGroupName());
    }
    w.endObject();
}

// Properties and data items, which nodes and objects both carry.
void jsonElementLists(JsonWriter &w, const DumpContext &ctx, const OvElement &e) {
    w.key("properties");
    w.beginArray();
    for (int i = 0; i < e.getNumProperties(); ++i)
        jsonProperty(w, ctx, *e.getProperty(i));
    w.endArray();
    w.key("dataItems");
    w.beginArray();
    for (int i = 0; i < e.getNumDataItems(); ++i)
        jsonDataItem(w, *e.getDataItem(i));
    w.endArray();
}

void jsonPoserJoint(JsonWriter &w, const DumpContext &ctx, const OvPoserJoint &joint) {
    w.key("bend");
    jsonProperty(w, ctx, *joint.getBendControl());
}

void jsonDFormModifier(JsonWriter &w, const DumpContext &ctx, OvDFormModifier &modifier) {
    w.key("deformer");
    jsonNodeRef(w, ctx, modifier.getDForm());
    w.key("value");
    jsonProperty(w, ctx, *modifier.getValueChannel());
}

void jsonModifier(JsonWriter &w, const DumpContext &ctx, OvModifier &m) {
    w.beginObject();
    w.field("class", m.className());
    w.field("name", m.getName());
    if (auto *joint = dynamic_cast<const OvPoserJoint *>(&m))
        jsonPoserJoint(w, ctx, *joint);
    else if (auto *dform = dynamic_cast<OvDFormModifier *>(&m))
        jsonDFormModifier(w, ctx, *dform);
    w.endObject();
}

void jsonObject(JsonWriter &w, DumpContext &ctx, const OvObject &object, bool data) {
    w.beginObject();
    w.field("class", className(object));
    w.field("name", object.getName());
    w.field("label", object.getLabel());
    w.key("shapes");
    w.beginArray();
    for (int i = 0; i < object.getNumShapes(); ++i)
        jsonShape(w, ctx, *object.getShape(i), data);
    w.endArray();
    w.key("modifiers");
    w.beginArray();
    for (int i = 0; i < object.getNumModifiers(); ++i)
        jsonModifier(w, ctx, *object.getModifier(i));
    w.endArray();
    jsonElementLists(w, ctx, object);
    w.endObject();
}

void jsonSkeleton(JsonWriter &w, const DumpContext &ctx, const OvSkeleton &skeleton) {
    w.key("skeleton");
    w.beginObject();
    w.key("followTarget");
    jsonNodeRef(w, ctx, skeleton.getFollowTarget());
    w.key("welds");
    w.beginArray();
    for (const OvSkeleton::Weld &weld : skeleton.getWelds()) {
        w.beginObject();
        w.key("bone");
        jsonNodeRef(w, ctx, weld.bone);
        w.key("target");
        jsonNodeRef(w, ctx, weld.target);
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

void jsonDForm(JsonWriter &w, const DumpContext &ctx, const OvDForm &dform) {
    w.key("deformer");
    w.beginObject();
    w.key("base");
    jsonNodeRef(w, ctx, dform.getBase());
    w.key("zones");
    w.beginArray();
    for (const OvDFormZone *zone : dform.getZones())
        jsonNodeRef(w, ctx, zone);
    w.endArray();
    w.endObject();
}

void jsonDFormZone(JsonWriter &w, const OvDFormZone &zone) {
    w.key("zone");
    w.beginObject();
    w.key("falloff");
    w.beginArray();
    const OvNaturalSpline *spline = zone.getSpline();
    for (int i = 0; i < spline->getNumPoints(); ++i) {
        w.beginArray();
        w.value(spline->getPoint(i).first);
        w.value(spline->getPoint(i).second);
        w.endArray();
    }
    w.endArray();
    w.endObject();
}

const char *lightKind(const OvLight &light) {
    if (qobject_cast<const OvSpotLight *>(&light))
        return "spot";
    if (qobject_cast<const OvDistantLight *>(&light))
        return "distant";
    return "light";
}

void jsonLight(JsonWriter &w, const OvLight &light) {
    w.key("light");
    w.beginObject();
    w.field("kind", lightKind(light));
    if (auto *spot = qobject_cast<const OvSpotLight *>(&light))
        w.field("spreadAngle", spot->getSpreadAngleControl()->getValue());
    w.endObject();
}

void jsonCamera(JsonWriter &w, const OvBasicCamera &camera) {
    w.key("camera");
    w.beginObject();
    w.field("type", camera.getCameraType());
    w.field("perspective", camera.isPerspective());
    w.field("creationFlag", camera.getCreationFlag());
    w.field("focalLength", camera.getFocalLengthChannel()->getValue());
    w.field("focalDistance", camera.getFocalDistance());
    w.endObject();
}

void jsonNode(JsonWriter &w, DumpContext &ctx, const OvNode &node, bool data) {
    w.beginObject();
    w.field("class", className(node));
    w.field("name", node.getName());
    w.field("label", node.getLabel());
    w.field("hidden", node.isHidden());
    jsonVec(w, "origin", node.getOrigin());
    jsonVec(w, "endPoint", node.getEndPoint());
    w.key("orientation");
    w.beginArray();
    for (int i = 0; i < 4; ++i)
        w.value(node.getOrientation()[i]);
    w.endArray();
    w.field("rotationOrder", rotationOrderName(node.getRotationOrder()));
    if (auto *skeleton = qobject_cast<const OvSkeleton *>(&node))
        jsonSkeleton(w, ctx, *skeleton);
    else if (auto *dform = qobject_cast<const OvDForm *>(&node))
        jsonDForm(w, ctx, *dform);
    else if (auto *zone = qobject_cast<const OvDFormZone *>(&node))
        jsonDFormZone(w, *zone);
    else if (auto *light = qobject_cast<const OvLight *>(&node))
        jsonLight(w, *light);
    else if (auto *camera = qobject_cast<const OvBasicCamera *>(&node))
        jsonCamera(w, *camera);
    if (node.getObject()) {
        w.key("object");
        jsonObject(w, ctx, *node.getObject(), data);
    }
    jsonElementLists(w, ctx, node);
    w.key("children");
    w.beginArray();
    for (int i = 0; i < node.getNumNodeChildren(); ++i)
        jsonNode(w, ctx, *node.getNodeChild(i), data);
    w.endArray();
    w.endObject();
}

void jsonRange(JsonWriter &w, const char *key, const OvTimeRange &r) {
    w.key(key);
    w.beginArray();
    w.value(r.getStart());
    w.value(r.getEnd());
    w.endArray();
}

// ---- tree -----------------------------------------------------------------------------------

QString treeNodeRef(const DumpContext &ctx, const OvNode *node) {
    if (!node)
        return QStringLiteral("none");
    if (!ctx.hasNode(node))
        return QStringLiteral("<outside the scene>");
    return quoted(node->getName());
}

void treeMaterial(QTextStream &out, DumpContext &ctx, const QString &indent, const OvMaterial &m) {
    out << indent << "material #" << ctx.materialId(&m) << " " << quoted(m.getName());
    if (!ctx.firstMaterialUse(&m)) {
        out << " (shared, listed above)\n";
        return;
    }
    out << " (" << m.className() << ")";
    if (auto *d = dynamic_cast<const OvDefaultMaterial *>(&m)) {
        out << ": diffuse " << colorText(d->getDiffuseColor()) << ", ambient "
            << colorText(d->getAmbientColor()) << ", specular " << colorText(d->getSpecularColor())
            << ", glossiness " << num(d->getGlossinessStrength()) << ", opacity " << num(d->getBaseOpacity())
            << ", ior " << num(d->getIndexOfRefraction()) << ", bump " << num(d->getBumpStrength()) << "\n";
        const struct {
            const char *name;
            const OvTexture *t;
        } maps[] = {{"ambientColor", d->getAmbientColorMap()},
                    {"color", d->getColorMap()},
                    {"specularColor", d->getSpecularColorMap()},
                    {"bump", d->getBumpMap()},
                    {"opacity", d->getOpacityMap()},
                    {"reflection", d->getReflectionMap()}};
        for (const auto &map : maps)
            if (map.t)
                out << indent << "  map " << map.name << ": " << map.t->getPath() << " (" << map.t->getWidth()
                    << "x" << map.t->getHeight() << ")\n";
    } else {
        out << "\n";
    }
}

void treeShape(QTextStream &out, DumpContext &ctx, const QString &indent, const OvShape &shape) {
    out << indent << "shape " << quoted(shape.getName());
    if (!shape.getLabel().isEmpty() && shape.getLabel() != shape.getName())
        out << " label " << quoted(shape.getLabel());
    out << " (" << shape.className() << ")";
    auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry());
    const bool first = mesh && ctx.firstMeshUse(mesh);
    if (mesh) {
        out << ": mesh #" << ctx.meshId(mesh);
        if (first)
            out << " " << quoted(mesh->getName()) << ", " << mesh->getNumVertices() << " vertices, "
                << mesh->getUVs()->getNumValues() << " uvs, " << mesh->getNumFaces() << " faces, "
                << mesh->getNumFaceGroups() << " groups";
        else
            out << " (shared, listed above)";
        out << ", " << shape.getNumMaterials() << " materials";
    }
    out << "\n";
    if (first)
        for (int g = 0; g < mesh->getNumFaceGroups(); ++g)
            out << indent << "  group " << quoted(mesh->getFaceGroupName(g)) << ": "
                << mesh->getNumFaceGroupFaces(g) << " faces\n";
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        treeMaterial(out, ctx, indent + QLatin1String("  "), *shape.getMaterial(i));
}

void treeController(QTextStream &out, const DumpContext &ctx, const QString &indent, const OvController &c) {
    out << indent << "controller " << c.className() << " " << quoted(c.getName());
    if (auto *link = dynamic_cast<const OvERCLink *>(&c)) {
        const OvNumericProperty *source = link->getSource();
        const OvNode *node = ctx.propertyNode(source);
        out << ": source ";
        if (!source) {
            out << "none";
        } else if (!node) {
            out << "<outside the scene>";
        } else {
            out << quoted(source->getName()) << " of "
                << (source->getOwner() ? quoted(source->getOwner()->getName()) : QStringLiteral("no owner"));
            if (!source->getOwner() || source->getOwner() != node)
                out << " on node " << quoted(node->getName());
        }
        out << ", numbers " << num(float(link->getA())) << ", " << num(float(link->getB()));
    }
    out << "\n";
}

QString intRangeText(const OvIntProperty &p) {
    if (p.getMin() == -2147483647 - 1 && p.getMax() == 2147483647)
        return QString();
    return QStringLiteral(", range %1..%2").arg(p.getMin()).arg(p.getMax());
}

void treeProperty(QTextStream &out, const DumpContext &ctx, const QString &indent, const OvProperty &p) {
    out << indent << "property " << p.getName() << " (" << p.className() << ")";
    if (auto *e = dynamic_cast<const OvEnumProperty *>(&p)) {
        out << " = " << e->getValue();
        QStringList items;
        for (const QString &item : e->getItems())
            items << quoted(item);
        out << " of [" << items.join(QLatin1String(", ")) << "]";
        // The switch's range normally just spans its items.
        if (e->getMin() != 0 || e->getMax() != std::max(0, e->getNumItems() - 1))
            out << intRangeText(*e);
    } else if (auto *i = dynamic_cast<const OvIntProperty *>(&p)) {
        out << " = " << i->getValue() << intRangeText(*i);
    } else if (auto *f = dynamic_cast<const OvFloatProperty *>(&p)) {
        out << " = " << num(f->getValue());
    } else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p)) {
        out << " = " << (b->getValue() ? "true" : "false");
    } else if (auto *s = dynamic_cast<const OvSkeletonProperty *>(&p)) {
        out << " = " << treeNodeRef(ctx, s->getValue());
    }
    if (p.getLabel() != p.getName())
        out << ", label " << quoted(p.getLabel());
    if (p.isHidden())
        out << ", hidden";
    out << "\n";
    for (int i = 0; i < p.getNumControllers(); ++i)
        treeController(out, ctx, indent + QLatin1String("  "), *p.getController(i));
}

void treeDataItem(QTextStream &out, const QString &indent, const OvElementData &d) {
    out << indent << "data " << d.getName();
    if (auto *s = dynamic_cast<const OvSourceFileData *>(&d))
        out << ": " << s->getSourceFilePath();
    if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(&d); g && !g->getGroupName().isNull())
        out << ", group " << quoted(g->getGroupName());
    out << "\n";
}

void treeElementLists(QTextStream &out, const DumpContext &ctx, const QString &indent, const OvElement &e) {
    for (int i = 0; i < e.getNumDataItems(); ++i)
        treeDataItem(out, indent, *e.getDataItem(i));
    for (int i = 0; i < e.getNumProperties(); ++i)
        if (!isStandardAtRest(e, *e.getProperty(i)))
            treeProperty(out, ctx, indent, *e.getProperty(i));
}

void treePoserJoint(QTextStream &out, const DumpContext &ctx, const QString &indent,
                    const OvPoserJoint &joint) {
    const OvIntProperty *bend = joint.getBendControl();
    out << ": bend " << bend->getValue() << "\n";
    if (bend->getNumControllers() > 0 || bend->isHidden() || bend->getLabel() != bend->getName())
        treeProperty(out, ctx, indent + QLatin1String("  "), *bend);
}

void treeDFormModifier(QTextStream &out, const DumpContext &ctx, const QString &indent,
                       OvDFormModifier &modifier) {
    const OvFloatProperty *value = modifier.getValueChannel();
    out << ": deformer " << treeNodeRef(ctx, modifier.getDForm()) << ", value " << num(value->getValue())
        << "\n";
    if (value->getNumControllers() > 0 || value->isHidden() || value->getLabel() != value->getName())
        treeProperty(out, ctx, indent + QLatin1String("  "), *value);
}

void treeModifier(QTextStream &out, const DumpContext &ctx, const QString &indent, OvModifier &m) {
    out << indent << "modifier " << m.className() << " " << quoted(m.getName());
    if (auto *joint = dynamic_cast<const OvPoserJoint *>(&m))
        treePoserJoint(out, ctx, indent, *joint);
    else if (auto *dform = dynamic_cast<OvDFormModifier *>(&m))
        treeDFormModifier(out, ctx, indent, *dform);
    else
        out << "\n";
}

void treeObject(QTextStream &out, DumpContext &ctx, const QString &indent, const OvObject &object) {
    out << indent << "object";
    if (!object.getName().isEmpty())
        out << " " << quoted(object.getName());
    if (!object.getLabel().isEmpty() && object.getLabel() != object.getName())
        out << " label " << quoted(object.getLabel());
    out << " (" << className(object) << ")\n";
    const QString inner = indent + QLatin1String("  ");
    treeElementLists(out, ctx, inner, object);
    for (int i = 0; i < object.getNumModifiers(); ++i)
        treeModifier(out, ctx, inner, *object.getModifier(i));
    for (int i = 0; i < object.getNumShapes(); ++i)
        treeShape(out, ctx, inner, *object.getShape(i));
}

void treeSkeleton(QTextStream &out, const DumpContext &ctx, const QString &indent,
                  const OvSkeleton &skeleton) {
    const OvSkeletonProperty *follow = skeleton.getFollowControl();
    if (follow->getValue())
        out << indent << "follows " << treeNodeRef(ctx, follow->getValue()) << "\n";
    for (const OvSkeleton::Weld &weld : skeleton.getWelds())
        out << indent << "weld " << treeNodeRef(ctx, weld.bone) << " to " << treeNodeRef(ctx, weld.target)
            << "\n";
}

void treeDForm(QTextStream &out, const DumpContext &ctx, const QString &indent, const OvDForm &dform) {
    QStringList zones;
    for (const OvDFormZone *zone : dform.getZones())
        zones << treeNodeRef(ctx, zone);
    out << indent << "deformer: base " << treeNodeRef(ctx, dform.getBase()) << ", zones "
        << (zones.isEmpty() ? QStringLiteral("none") : zones.join(QLatin1String(", "))) << "\n";
}

void treeDFormZone(QTextStream &out, const QString &indent, const OvDFormZone &zone) {
    QStringList points;
    const OvNaturalSpline *spline = zone.getSpline();
    for (int i = 0; i < spline->getNumPoints(); ++i)
        points << QStringLiteral("(%1, %2)")
                      .arg(num(spline->getPoint(i).first), num(spline->getPoint(i).second));
    out << indent
        << "falloff: " << (points.isEmpty() ? QStringLiteral("no points") : points.join(QLatin1String(" ")))
        << "\n";
}

void treeLight(QTextStream &out, const QString &indent, const OvLight &light) {
    out << indent << lightKind(light) << " light";
    if (auto *spot = qobject_cast<const OvSpotLight *>(&light))
        out << ", spread angle " << num(spot->getSpreadAngleControl()->getValue());
    out << "\n";
}

void treeCamera(QTextStream &out, const QString &indent, const OvBasicCamera &camera) {
    out << indent << "camera type " << camera.getCameraType();
    if (camera.isPerspective())
        out << " (perspective)";
    if (camera.getCreationFlag())
        out << ", creation flag";
    out << ", focal length " << num(camera.getFocalLengthChannel()->getValue()) << ", focal distance "
        << num(camera.getFocalDistance()) << "\n";
}

void treeNode(QTextStream &out, DumpContext &ctx, const QString &indent, const OvNode &node) {
    out << indent << className(node) << " " << quoted(node.getName());
    if (node.getLabel() != node.getName())
        out << " label " << quoted(node.getLabel());
    if (node.isHidden())
        out << " (hidden)";
    out << "\n";
    const QString inner = indent + QLatin1String("  ");
    if (!isRestPlacement(node))
        out << inner << "origin " << vecText(node.getOrigin()) << ", end point "
            << vecText(node.getEndPoint()) << ", orientation " << quatText(node.getOrientation())
            << ", rotation order " << rotationOrderName(node.getRotationOrder()) << "\n";
    if (auto *skeleton = qobject_cast<const OvSkeleton *>(&node))
        treeSkeleton(out, ctx, inner, *skeleton);
    else if (auto *dform = qobject_cast<const OvDForm *>(&node))
        treeDForm(out, ctx, inner, *dform);
    else if (auto *zone = qobject_cast<const OvDFormZone *>(&node))
        treeDFormZone(out, inner, *zone);
    else if (auto *light = qobject_cast<const OvLight *>(&node))
        treeLight(out, inner, *light);
    else if (auto *camera = qobject_cast<const OvBasicCamera *>(&node))
        treeCamera(out, inner, *camera);
    treeElementLists(out, ctx, inner, node);
    if (const OvObject *object = node.getObject())
        treeObject(out, ctx, inner, *object);
    for (int i = 0; i < node.getNumNodeChildren(); ++i)
        treeNode(out, ctx, inner, *node.getNodeChild(i));
}

} // namespace

void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report) {
    DumpContext ctx(scene);
    JsonWriter w(out);
    w.beginObject();
    w.field("result", report.result);
    w.key("log");
    w.beginArray();
    for (const OvApp::LogEntry &e : OvApp::log()) {
        w.beginObject();
        w.field("level", e.level == OvApp::LogError ? "error" : "info");
        w.field("text", e.text);
        w.endObject();
    }
    w.endArray();
    w.key("scene");
    w.beginObject();
    w.field("time", scene.getTime());
    w.field("timeStep", scene.getTimeStep());
    jsonRange(w, "animRange", scene.getAnimRange());
    jsonRange(w, "playRange", scene.getPlayRange());
    w.key("nodes");
    w.beginArray();
    for (int i = 0; i < scene.getNumNodes(); ++i)
        jsonNode(w, ctx, *scene.getNode(i), report.includeMeshData);
    w.endArray();
    w.endObject();
    w.endObject();
}

void writeSceneTree(QTextStream &out, const OvScene &scene) {
    DumpContext ctx(scene);
    out << "scene: time " << scene.getTime() << ", time step " << scene.getTimeStep() << ", animation "
        << scene.getAnimRange().getStart() << ".." << scene.getAnimRange().getEnd() << ", play "
        << scene.getPlayRange().getStart() << ".." << scene.getPlayRange().getEnd() << "\n";
    for (int i = 0; i < scene.getNumNodes(); ++i)
        treeNode(out, ctx, QStringLiteral("  "), *scene.getNode(i));
}
