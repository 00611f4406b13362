#include "SceneDump.h"
#include "JsonWriter.h"

#include <OvApp.h>
#include <OvMaterial.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>

namespace {

QString colorText(const QColor &c) {
    return c.isValid() ? c.name(QColor::HexRgb) : QStringLiteral("invalid");
}

// ---- JSON -----------------------------------------------------------------------------------

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

void jsonMaterial(JsonWriter &w, const OvMaterial &m) {
    w.beginObject();
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

void jsonIntList(JsonWriter &w, const int *v, int n) {
    w.beginArray();
    for (int i = 0; i < n; ++i)
        w.value(v[i]);
    w.endArray();
}

void jsonMesh(JsonWriter &w, const OvPolyMesh &mesh, bool data) {
    w.beginObject();
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
            w.key("v");
            jsonIntList(w, mesh.getFaceVertices(f), mesh.getFaceSize(f));
            w.key("uv");
            jsonIntList(w, mesh.getFaceUVs(f), mesh.getFaceSize(f));
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
        const OvPodArray<int> &faces = mesh.getFaceGroupFaces(g);
        w.field("faceCount", int(faces.size()));
        if (data) {
            w.key("faces");
            jsonIntList(w, faces.data(), int(faces.size()));
        }
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

void jsonShape(JsonWriter &w, const OvShape &shape, bool data) {
    w.beginObject();
    w.field("class", shape.className());
    w.field("name", shape.getName());
    w.field("label", shape.getLabel());
    w.key("materials");
    w.beginArray();
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        jsonMaterial(w, *shape.getMaterial(i));
    w.endArray();
    w.key("mesh");
    if (auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry()))
        jsonMesh(w, *mesh, data);
    else
        w.valueNull();
    w.endObject();
}

void jsonObject(JsonWriter &w, const OvObject &object, bool data) {
    w.beginObject();
    w.field("class", object.metaObject()->className());
    w.key("shapes");
    w.beginArray();
    for (int i = 0; i < object.getNumShapes(); ++i)
        jsonShape(w, *object.getShape(i), data);
    w.endArray();
    w.key("modifiers");
    w.beginArray();
    w.endArray();
    w.endObject();
}

void jsonProperty(JsonWriter &w, const OvProperty &p) {
    w.beginObject();
    w.field("class", p.className());
    w.field("name", p.getName());
    w.field("label", p.getLabel());
    if (auto *f = dynamic_cast<const OvFloatProperty *>(&p))
        w.field("value", f->getValue());
    else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p))
        w.field("value", b->getValue());
    w.endObject();
}

void jsonDataItem(JsonWriter &w, const OvElementData &d) {
    w.beginObject();
    w.field("class", d.className());
    w.field("name", d.getName());
    if (auto *s = dynamic_cast<const OvSourceFileData *>(&d))
        w.field("path", s->getSourceFilePath());
    else if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(&d))
        w.field("path", g->getSourceFilePath());
    w.endObject();
}

void jsonNode(JsonWriter &w, const OvNode &node, bool data) {
    w.beginObject();
    w.field("class", node.metaObject()->className());
    w.field("name", node.getName());
    w.field("label", node.getLabel());
    if (node.getObject()) {
        w.key("object");
        jsonObject(w, *node.getObject(), data);
    }
    w.key("properties");
    w.beginArray();
    for (int i = 0; i < node.getNumProperties(); ++i)
        jsonProperty(w, *node.getProperty(i));
    w.endArray();
    w.key("dataItems");
    w.beginArray();
    for (int i = 0; i < node.getNumDataItems(); ++i)
        jsonDataItem(w, *node.getDataItem(i));
    w.endArray();
    w.key("children");
    w.beginArray();
    for (int i = 0; i < node.getNumNodeChildren(); ++i)
        jsonNode(w, *node.getNodeChild(i), data);
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

void treeMaterial(QTextStream &out, const QString &indent, const OvMaterial &m) {
    out << indent << "material \"" << m.getName() << "\" (" << m.className() << ")";
    if (auto *d = dynamic_cast<const OvDefaultMaterial *>(&m)) {
        out << ": diffuse " << colorText(d->getDiffuseColor()) << ", ambient " << colorText(d->getAmbientColor())
            << ", specular " << colorText(d->getSpecularColor()) << ", glossiness "
            << JsonWriter::formatFloat(d->getGlossinessStrength()) << ", opacity "
            << JsonWriter::formatFloat(d->getBaseOpacity()) << ", ior "
            << JsonWriter::formatFloat(d->getIndexOfRefraction()) << ", bump "
            << JsonWriter::formatFloat(d->getBumpStrength()) << "\n";
        const struct {
            const char *name;
            const OvTexture *t;
        } maps[] = {{"ambientColor", d->getAmbientColorMap()}, {"color", d->getColorMap()},
                    {"specularColor", d->getSpecularColorMap()}, {"bump", d->getBumpMap()},
                    {"opacity", d->getOpacityMap()},       {"reflection", d->getReflectionMap()}};
        for (const auto &map : maps)
            if (map.t)
                out << indent << "  map " << map.name << ": " << map.t->getPath() << " (" << map.t->getWidth()
                    << "x" << map.t->getHeight() << ")\n";
    } else {
        out << "\n";
    }
}

void treeShape(QTextStream &out, const QString &indent, const OvShape &shape) {
    out << indent << "shape \"" << shape.getName() << "\" (" << shape.className() << ")";
    auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry());
    if (mesh)
        out << ": mesh \"" << mesh->getName() << "\", " << mesh->getNumVertices() << " vertices, "
            << mesh->getUVs()->getNumValues() << " uvs, " << mesh->getNumFaces() << " faces, "
            << mesh->getNumFaceGroups() << " groups, " << shape.getNumMaterials() << " materials";
    out << "\n";
    if (mesh)
        for (int g = 0; g < mesh->getNumFaceGroups(); ++g)
            out << indent << "  group \"" << mesh->getFaceGroupName(g) << "\": " << mesh->getFaceGroupFaces(g).size()
                << " faces\n";
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        treeMaterial(out, indent + QLatin1String("  "), *shape.getMaterial(i));
}

void treeNode(QTextStream &out, const QString &indent, const OvNode &node) {
    out << indent << node.metaObject()->className() << " \"" << node.getName() << "\"";
    if (node.getLabel() != node.getName())
        out << " label \"" << node.getLabel() << "\"";
    out << "\n";
    QString inner = indent + QLatin1String("  ");
    for (int i = 0; i < node.getNumDataItems(); ++i) {
        const OvElementData *d = node.getDataItem(i);
        out << inner << "data " << d->getName();
        if (auto *s = dynamic_cast<const OvSourceFileData *>(d))
            out << ": " << s->getSourceFilePath();
        else if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(d))
            out << ": " << g->getSourceFilePath();
        out << "\n";
    }
    for (int i = 0; i < node.getNumProperties(); ++i) {
        const OvProperty *p = node.getProperty(i);
        out << inner << "property " << p->getName() << " (" << p->className() << ")";
        if (auto *f = dynamic_cast<const OvFloatProperty *>(p))
            out << " = " << JsonWriter::formatFloat(f->getValue());
        else if (auto *b = dynamic_cast<const OvBoolProperty *>(p))
            out << " = " << (b->getValue() ? "true" : "false");
        out << "\n";
    }
    if (const OvObject *object = node.getObject())
        for (int i = 0; i < object->getNumShapes(); ++i)
            treeShape(out, inner, *object->getShape(i));
    for (int i = 0; i < node.getNumNodeChildren(); ++i)
        treeNode(out, inner, *node.getNodeChild(i));
}

} // namespace

void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report) {
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
        jsonNode(w, *scene.getNode(i), report.includeMeshData);
    w.endArray();
    w.endObject();
    w.endObject();
}

void writeSceneTree(QTextStream &out, const OvScene &scene) {
    out << "scene: time " << scene.getTime() << ", time step " << scene.getTimeStep() << ", animation "
        << scene.getAnimRange().getStart() << ".." << scene.getAnimRange().getEnd() << ", play "
        << scene.getPlayRange().getStart() << ".." << scene.getPlayRange().getEnd() << "\n";
    for (int i = 0; i < scene.getNumNodes(); ++i)
        treeNode(out, QStringLiteral("  "), *scene.getNode(i));
}
