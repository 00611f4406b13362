// The scene and the import log as one JSON document; the layout is described in
// docs/scene-json.md.
#include "JsonWriter.h"
#include "SceneAnimation.h"
#include "SceneDump.h"

#include "SceneWalk.h"
#include <cmath>

#include <OvApp.h>
#include <OvAudio.h>
#include <OvDeformers.h>
#include <OvIKChains.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvMorph.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <QBuffer>

namespace {

using Layout = JsonWriter::Layout;

const char *listKey(SceneVisitor::List which) {
    // In the order of SceneVisitor::List.
    static const char *const keys[] = {"nodes",     "children", "dataItems", "properties",
                                       "modifiers", "shapes",   "materials"};
    return keys[int(which)];
}

// A short list of numbers on one line.
void numbers(JsonWriter &w, const char *key, std::initializer_list<float> values) {
    w.key(key);
    w.beginArray(Layout::Line);
    for (float v : values)
        w.value(v);
    w.endArray();
}

void timeRange(JsonWriter &w, const char *key, const OvTimeRange &r) {
    w.key(key);
    w.beginArray(Layout::Line);
    w.value(r.getStart());
    w.value(r.getEnd());
    w.endArray();
}

// The n ints that at(0) .. at(n - 1) give.
template <class At> void intList(JsonWriter &w, const char *key, Layout layout, int n, At at) {
    w.key(key);
    w.beginArray(layout);
    for (int i = 0; i < n; ++i)
        w.value(at(i));
    w.endArray();
}

void texture(JsonWriter &w, const char *key, const OvTexture *t) {
    w.key(key);
    if (!t) {
        w.valueNull();
        return;
    }
    w.beginObject(Layout::Line);
    w.field("path", t->getPath());
    w.field("name", t->getName());
    w.field("width", t->getWidth());
    w.field("height", t->getHeight());
    w.endObject();
}

void defaultMaterial(JsonWriter &w, const OvDefaultMaterial &d) {
    w.field("diffuseColor", colorText(d.getDiffuseColor()));
    w.field("ambientColor", colorText(d.getAmbientColor()));
    w.field("ambientStrength", d.getAmbientStrength());
    w.field("specularColor", colorText(d.getSpecularColor()));
    w.field("reflectionColor", colorText(d.getReflectionColor()));
    w.field("reflectionStrength", d.getReflectionStrength());
    w.field("glossinessStrength", d.getGlossinessStrength());
    w.field("indexOfRefraction", d.getIndexOfRefraction());
    w.field("bumpStrength", d.getBumpStrength());
    w.field("bumpMin", d.getBumpMin());
    w.field("bumpMax", d.getBumpMax());
    w.field("baseOpacity", d.getBaseOpacity());
    w.key("maps");
    w.beginObject();
    texture(w, "ambientColor", d.getAmbientColorMap());
    texture(w, "color", d.getColorMap());
    texture(w, "specularColor", d.getSpecularColorMap());
    texture(w, "bump", d.getBumpMap());
    texture(w, "opacity", d.getOpacityMap());
    texture(w, "reflection", d.getReflectionMap());
    w.endObject();
}

// n tuples of `size` floats, one tuple to a line.
template <class At> void tuples(JsonWriter &w, const char *key, int n, int size, At at) {
    w.key(key);
    w.beginArray();
    for (int i = 0; i < n; ++i) {
        w.beginArray(Layout::Line);
        for (int k = 0; k < size; ++k)
            w.value(at(i)[k]);
        w.endArray();
    }
    w.endArray();
}

// Vertices, UVs and faces one to a line.
void meshData(JsonWriter &w, const OvPolyMesh &mesh) {
    tuples(w, "vertices", mesh.getNumVertices(), 3, [&](int i) { return mesh.getVertex(i); });
    tuples(w, "uvs", mesh.getUVs()->getNumValues(), 2, [&](int i) { return mesh.getUVs()->getPnt2Value(i); });
    w.key("faces");
    w.beginArray();
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        w.beginObject(Layout::Line);
        const int n = mesh.getFaceSize(f);
        intList(w, "v", Layout::Line, n, [&](int c) { return mesh.getFaceVertex(f, c); });
        intList(w, "uv", Layout::Line, n, [&](int c) { return mesh.getFaceUV(f, c); });
        w.field("material", mesh.getFaceMaterial(f));
        w.endObject();
    }
    w.endArray();
}

// The first shape that shows a mesh writes it whole; later ones write only {"meshId": n}.
void mesh(JsonWriter &w, const MeshUse &use, bool data) {
    const OvPolyMesh &mesh = *use.mesh;
    w.beginObject(use.first ? Layout::Block : Layout::Line);
    w.field("meshId", use.id);
    if (!use.first) {
        w.endObject();
        return;
    }
    w.field("class", mesh.className());
    w.field("name", mesh.getName());
    w.field("vertexCount", mesh.getNumVertices());
    w.field("uvCount", mesh.getUVs()->getNumValues());
    w.field("faceCount", mesh.getNumFaces());
    w.field("groupCount", mesh.getNumFaceGroups());
    if (data)
        meshData(w, mesh);
    w.key("groups");
    w.beginArray();
    for (int g = 0; g < mesh.getNumFaceGroups(); ++g) {
        const int count = mesh.getNumFaceGroupFaces(g);
        w.beginObject(data ? Layout::Block : Layout::Line);
        w.field("name", mesh.getFaceGroupName(g));
        w.field("faceCount", count);
        if (data)
            intList(w, "faces", Layout::Rows, count, [&](int i) { return mesh.getFaceGroupFace(g, i); });
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

class JsonSceneWriter : public SceneVisitor {
public:
    JsonSceneWriter(JsonWriter &w, const SceneWalk &walk, bool data, int time, int step)
        : m_w(w), m_walk(walk), m_data(data), m_time(time), m_step(step) {}

    void beginList(List which) override {
        m_w.key(listKey(which));
        m_w.beginArray();
    }
    void endList(List) override { m_w.endArray(); }
    void enterNode(const OvNode &node) override;
    void leaveNode(const OvNode &) override { m_w.endObject(); }
    void skeleton(const OvSkeleton &skeleton) override;
    void deformer(const OvDForm &dform) override;
    void zone(const OvDFormZone &zone) override;
    void light(const OvLight &light) override;
    void camera(const OvBasicCamera &camera) override;
    void dataItem(const OvElementData &d) override;
    void property(const OvElement &, const OvProperty &p) override { writeProperty(p); }
    void enterObject(const OvObject &object) override;
    void leaveObject(const OvObject &) override { m_w.endObject(); }
    void modifier(OvModifier &m) override;
    void enterShape(const OvShape &shape, const MeshUse &use) override;
    void leaveShape(const OvShape &) override { m_w.endObject(); }
    void material(const OvMaterial &m, int id, bool first) override;

private:
    void nodeRef(const OvNode *node);
    void ikChains(const OvPoserIKChains &chains);
    void jointParam(const OvPoserJointParam &p);
    void writeProperty(const OvProperty &p);
    void writeController(const OvController &c);
    // A property that another follows: its name, owner and node; null for none.
    void linkSource(const OvNumericProperty *source);
    void morphDeltas(OvMorph &morph);

    JsonWriter &m_w;
    const SceneWalk &m_walk;
    bool m_data;
    int m_time; // values are shown at this time
    int m_step;
};

// A node is referred to by name; null when there is none, {"outsideScene": true} when it is not
// in the scene.
void JsonSceneWriter::nodeRef(const OvNode *node) {
    if (!node) {
        m_w.valueNull();
    } else if (!m_walk.hasNode(node)) {
        m_w.beginObject(Layout::Line);
        m_w.field("outsideScene", true);
        m_w.endObject();
    } else {
        m_w.value(node->getName());
    }
}

void JsonSceneWriter::enterNode(const OvNode &node) {
    m_w.beginObject();
    m_w.field("class", node.metaObject()->className());
    m_w.field("name", node.getName());
    m_w.field("label", node.getLabel());
    m_w.field("hidden", node.isHidden());
    const OvVec3 &o = node.getOrigin(), &e = node.getEndPoint();
    const OvQuat &q = node.getOrientation();
    numbers(m_w, "origin", {o[0], o[1], o[2]});
    numbers(m_w, "endPoint", {e[0], e[1], e[2]});
    numbers(m_w, "orientation", {q[0], q[1], q[2], q[3]});
    m_w.field("rotationOrder", rotationOrderName(node.getRotationOrder()));
    writeGroupsJson(m_w, node.findPropertyGroups());
}

void JsonSceneWriter::skeleton(const OvSkeleton &skeleton) {
    m_w.key("skeleton");
    m_w.beginObject();
    m_w.key("followTarget");
    nodeRef(skeleton.getFollowTarget());
    m_w.key("welds");
    m_w.beginArray();
    for (const OvSkeleton::Weld &weld : skeleton.getWelds()) {
        m_w.beginObject(Layout::Line);
        m_w.key("bone");
        nodeRef(weld.bone);
        m_w.key("target");
        nodeRef(weld.target);
        m_w.endObject();
    }
    m_w.endArray();
    m_w.endObject();
}

void JsonSceneWriter::deformer(const OvDForm &dform) {
    m_w.key("deformer");
    m_w.beginObject();
    m_w.key("base");
    nodeRef(dform.getBase());
    m_w.key("zones");
    m_w.beginArray();
    for (const OvDFormZone *zone : dform.getZones())
        nodeRef(zone);
    m_w.endArray();
    m_w.endObject();
}

void JsonSceneWriter::zone(const OvDFormZone &zone) {
    m_w.key("zone");
    m_w.beginObject();
    m_w.key("falloff");
    m_w.beginArray(Layout::Line);
    const OvNaturalSpline *spline = zone.getSpline();
    for (int i = 0; i < spline->getNumPoints(); ++i) {
        m_w.beginArray();
        m_w.value(spline->getPoint(i).first);
        m_w.value(spline->getPoint(i).second);
        m_w.endArray();
    }
    m_w.endArray();
    m_w.endObject();
}

void JsonSceneWriter::light(const OvLight &light) {
    m_w.key("light");
    m_w.beginObject();
    m_w.field("kind", lightKind(light));
    if (auto *spot = qobject_cast<const OvSpotLight *>(&light))
        m_w.field("spreadAngle", spot->getSpreadAngleControl()->getValue());
    m_w.endObject();
}

void JsonSceneWriter::camera(const OvBasicCamera &camera) {
    m_w.key("camera");
    m_w.beginObject();
    m_w.field("type", camera.getCameraType());
    m_w.field("perspective", camera.isPerspective());
    m_w.field("creationFlag", camera.getCreationFlag());
    m_w.field("focalLength", camera.getFocalLengthChannel()->getValueAt(m_time));
    m_w.field("focalDistance", camera.getFocalDistance());
    m_w.endObject();
}

void JsonSceneWriter::dataItem(const OvElementData &d) {
    if (auto *chains = dynamic_cast<const OvPoserIKChains *>(&d)) {
        ikChains(*chains);
        return;
    }
    m_w.beginObject(Layout::Line);
    m_w.field("class", d.className());
    m_w.field("name", d.getName());
    if (auto *s = dynamic_cast<const OvSourceFileData *>(&d))
        m_w.field("path", s->getSourceFilePath());
    if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(&d)) {
        m_w.key("group");
        if (g->getGroupName().isNull())
            m_w.valueNull();
        else
            m_w.value(g->getGroupName());
    }
    m_w.endObject();
}

// The only data item written as a block: a chain a block, a link a line.
void JsonSceneWriter::ikChains(const OvPoserIKChains &chains) {
    m_w.beginObject();
    m_w.field("class", chains.className());
    m_w.field("name", chains.getName());
    m_w.key("chains");
    m_w.beginArray();
    for (int i = 0; i < chains.getNumChains(); ++i) {
        const OvPoserIKChain &chain = *chains.getChain(i);
        m_w.beginObject();
        m_w.field("name", chain.getName());
        m_w.field("label", chain.getLabel());
        m_w.field("active", chain.isActive());
        m_w.key("links");
        m_w.beginArray();
        for (int l = 0; l < chain.getNumLinks(); ++l) {
            m_w.beginObject(Layout::Line);
            m_w.key("node");
            nodeRef(chain.getLink(l).node);
            m_w.field("weight", chain.getLink(l).weight);
            m_w.endObject();
        }
        m_w.endArray();
        m_w.key("goal");
        nodeRef(chain.getGoal());
        m_w.endObject();
    }
    m_w.endArray();
    m_w.endObject();
}

// One line, unless controllers follow: then one line for each of them.
void JsonSceneWriter::writeProperty(const OvProperty &p) {
    m_w.beginObject(p.getNumControllers() > 0 ? Layout::Block : Layout::Line);
    m_w.field("class", p.className());
    m_w.field("name", p.getName());
    m_w.field("label", p.getLabel());
    m_w.field("hidden", p.isHidden());
    m_w.field("user", p.isUserProperty());
    m_w.field("canAnimate", p.canAnimate());
    if (auto *n = dynamic_cast<const OvNumericProperty *>(&p))
        m_w.field("clamped", n->isClamped());
    if (!p.getPath().isEmpty())
        m_w.field("path", p.getPath());
    if (auto *i = dynamic_cast<const OvIntProperty *>(&p)) {
        m_w.field("value", i->getValueAt(m_time));
        m_w.field("min", i->getMin());
        m_w.field("max", i->getMax());
    } else if (auto *f = dynamic_cast<const OvFloatProperty *>(&p)) {
        m_w.field("value", f->getValueAt(m_time));
        m_w.field("default", f->getDefaultValue());
        // An unbounded end is null.
        m_w.key("min");
        if (std::isinf(f->getMin()))
            m_w.valueNull();
        else
            m_w.value(f->getMin());
        m_w.key("max");
        if (std::isinf(f->getMax()))
            m_w.valueNull();
        else
            m_w.value(f->getMax());
        m_w.field("sensitivity", f->getSensitivity());
        if (auto *target = dynamic_cast<const OvNumericNodeProperty *>(&p)) {
            m_w.key("target");
            nodeRef(target->getNode());
        }
    } else if (auto *c = dynamic_cast<const OvColorProperty *>(&p)) {
        m_w.field("value", colorText(c->getColorValue(m_time)));
    } else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p)) {
        m_w.field("value", b->getValueAt(m_time));
    } else if (auto *s = dynamic_cast<const OvSkeletonProperty *>(&p)) {
        m_w.key("value");
        nodeRef(s->getValue());
    }
    if (auto *e = dynamic_cast<const OvEnumProperty *>(&p)) {
        m_w.key("items");
        m_w.beginArray(Layout::Line);
        for (const QString &item : e->getItems())
            m_w.value(item);
        m_w.endArray();
    }
    if (auto *n = dynamic_cast<const OvNumericProperty *>(&p); n && n->getLinkProperty()) {
        m_w.key("linkedTo");
        linkSource(n->getLinkProperty());
    }
    writeKeysJson(m_w, p, m_step);
    m_w.key("controllers");
    m_w.beginArray();
    for (int i = 0; i < p.getNumControllers(); ++i)
        writeController(*p.getController(i));
    m_w.endArray();
    m_w.endObject();
}

void JsonSceneWriter::writeController(const OvController &c) {
    m_w.beginObject(Layout::Line);
    m_w.field("class", c.className());
    m_w.field("name", c.getName());
    if (auto *link = dynamic_cast<const OvERCLink *>(&c)) {
        m_w.field("type", OvERCLink::typeName(link->getType()));
        m_w.key("source");
        linkSource(link->getProperty());
        m_w.field("scalar", float(link->getScalar()));
    }
    m_w.endObject();
}

void JsonSceneWriter::linkSource(const OvNumericProperty *source) {
    const OvNode *node = m_walk.propertyNode(source);
    if (!source) {
        m_w.valueNull();
        return;
    }
    m_w.beginObject();
    if (!node) {
        m_w.field("outsideScene", true);
    } else {
        m_w.field("property", source->getName());
        m_w.key("owner");
        if (source->getOwner())
            m_w.value(source->getOwner()->getName());
        else
            m_w.valueNull();
        m_w.field("node", node->getName());
    }
    m_w.endObject();
}

void JsonSceneWriter::enterObject(const OvObject &object) {
    m_w.key("object");
    m_w.beginObject();
    m_w.field("class", object.metaObject()->className());
    m_w.field("name", object.getName());
    m_w.field("label", object.getLabel());
}

void JsonSceneWriter::modifier(OvModifier &m) {
    m_w.beginObject();
    m_w.field("class", m.className());
    m_w.field("name", m.getName());
    if (auto *joint = dynamic_cast<const OvPoserJoint *>(&m)) {
        m_w.key("bend");
        writeProperty(*joint->getBendControl());
        m_w.key("params");
        m_w.beginArray();
        for (int i = 0; i < joint->getNumParams(); ++i)
            jointParam(*joint->getParam(i));
        m_w.endArray();
    } else if (auto *dform = dynamic_cast<OvDFormModifier *>(&m)) {
        m_w.key("deformer");
        nodeRef(dform->getDForm());
        m_w.key("value");
        writeProperty(*dform->getValueChannel());
    } else if (auto *morph = dynamic_cast<OvMorph *>(&m)) {
        morphDeltas(*morph);
    }
    m_w.endObject();
}

// A morph's dial and its deltas: the count always, the vertex numbers and offsets with mesh data.
void JsonSceneWriter::morphDeltas(OvMorph &morph) {
    m_w.key("value");
    writeProperty(*morph.getValueChannel());
    const OvMorphDeltas &deltas = *morph.getDeltas();
    m_w.key("deltas");
    m_w.beginObject();
    m_w.field("name", deltas.getName());
    m_w.field("vertCount", deltas.getVertCount());
    m_w.field("count", deltas.getNumDeltas());
    if (m_data) {
        m_w.key("offsets");
        m_w.beginArray();
        for (int i = 0; i < deltas.getNumDeltas(); ++i) {
            const OvVec3 v = deltas.getOffset(i);
            m_w.beginArray(Layout::Line);
            m_w.value(deltas.getIndex(i));
            for (int k = 0; k < 3; ++k)
                m_w.value(v[k]);
            m_w.endArray();
        }
        m_w.endArray();
    }
    m_w.endObject();
}

// What each kind of joint parameter holds; the sphere matrices when they are applied.
void JsonSceneWriter::jointParam(const OvPoserJointParam &p) {
    m_w.beginObject();
    m_w.field("class", p.className());
    m_w.field("name", p.getName());
    m_w.field("axis", int(p.getAxis()));
    m_w.key("driver");
    nodeRef(p.getDriver());
    m_w.field("flipped", p.isFlipped());
    if (auto *bend = dynamic_cast<const OvPoserBendParam *>(&p)) {
        numbers(m_w, "angles", {bend->getAngle(0), bend->getAngle(1), bend->getAngle(2), bend->getAngle(3)});
        m_w.field("applyAngles", bend->getApplyAngles());
        numbers(m_w, "bulges",
                {bend->getPosLeftBulge(), bend->getPosRightBulge(), bend->getNegLeftBulge(),
                 bend->getNegRightBulge()});
        m_w.field("applyBulges", bend->getApplyBulges());
    } else if (auto *twist = dynamic_cast<const OvPoserTwistParam *>(&p)) {
        m_w.field("start", twist->getStart());
        m_w.field("end", twist->getEnd());
        m_w.field("applyBlend", twist->getApplyBlend());
    } else if (auto *smooth = dynamic_cast<const OvPoserSmoothScale *>(&p)) {
        numbers(m_w, "zones",
                {smooth->getSmoothZone(0), smooth->getSmoothZone(1), smooth->getSmoothZone(2),
                 smooth->getSmoothZone(3)});
    } else if (auto *curve = dynamic_cast<const OvPoserCurve *>(&p)) {
        m_w.key("bone");
        nodeRef(curve->getBone());
    }
    if (p.getApplyMatrices()) {
        m_w.key("sphereMatrices");
        m_w.beginArray();
        for (const OvMatrix4 *m : {&p.getFirstMatrix(), &p.getSecondMatrix()}) {
            m_w.beginArray(Layout::Line);
            for (int i = 0; i < 16; ++i)
                m_w.value(m->data()[i]);
            m_w.endArray();
        }
        m_w.endArray();
    }
    m_w.endObject();
}

void JsonSceneWriter::enterShape(const OvShape &shape, const MeshUse &use) {
    m_w.beginObject();
    m_w.field("class", shape.className());
    m_w.field("name", shape.getName());
    m_w.field("label", shape.getLabel());
    m_w.key("mesh");
    if (use.mesh)
        mesh(m_w, use, m_data);
    else
        m_w.valueNull();
}

void JsonSceneWriter::material(const OvMaterial &m, int id, bool) {
    m_w.beginObject();
    m_w.field("materialId", id);
    m_w.field("class", m.className());
    m_w.field("name", m.getName());
    if (auto *d = dynamic_cast<const OvDefaultMaterial *>(&m))
        defaultMaterial(m_w, *d);
    m_w.endObject();
}

} // namespace

namespace {

// The scene's frame rate and current frame, in frames, and its sound (null when it has none).
void movieJson(JsonWriter &w, const OvScene &scene) {
    const float step = float(scene.getTimeStep());
    w.field("framesPerSecond", float(OvScene::TimeUnitsPerSecond) / step);
    w.field("currentFrame", float(scene.getTime()) / step);
    w.key("audio");
    const OvAudioClip *clip = scene.getAudio();
    if (!clip) {
        w.valueNull();
        return;
    }
    const OvAudioFormat &f = clip->getFormat();
    w.beginObject();
    w.field("path", clip->getPath());
    w.field("format", f.container);
    w.field("channels", f.channels);
    w.field("sampleRate", float(f.sampleRate));
    w.field("bitsPerSample", f.bitsPerSample);
    w.field("sampleFrames", qint64(f.sampleFrames));
    w.field("length", clip->getLength());
    w.field("startFrame", scene.getAudioStartFrame());
    w.endObject();
}

void writeLog(JsonWriter &w, const QList<OvApp::LogEntry> &log) {
    w.beginArray();
    for (const OvApp::LogEntry &e : log) {
        w.beginObject(Layout::Line);
        w.field("level", e.level == OvApp::LogError ? "error" : "info");
        w.field("text", e.text);
        w.endObject();
    }
    w.endArray();
}

// Each file of a run of several, and what --undo undid.
void writeImports(JsonWriter &w, const ImportReport &report) {
    if (report.imports.size() > 1 || report.undoAsked) {
        w.key("imports");
        w.beginArray();
        for (const ImportRecord &r : report.imports) {
            w.beginObject();
            w.field("file", r.file);
            w.field("result", r.result);
            w.key("log");
            writeLog(w, r.log);
            w.endObject();
        }
        w.endArray();
    }
    if (report.undoAsked) {
        w.key("undo");
        w.beginObject(Layout::Line);
        w.field("undone", !report.undoneStep.isEmpty());
        w.field("step", report.undoneStep);
        w.endObject();
    }
}

} // namespace

void writeSceneJson(QIODevice &out, const OvScene &scene, const ImportReport &report) {
    JsonWriter w(out);
    w.beginObject();
    w.field("result", report.result);
    w.key("log");
    QList<OvApp::LogEntry> log = OvApp::log();
    if (!report.imports.isEmpty()) {
        log.clear();
        for (const ImportRecord &r : report.imports)
            log += r.log;
    }
    writeLog(w, log);
    writeImports(w, report);
    w.key("scene");
    w.beginObject();
    w.field("time", scene.getTime());
    w.field("timeStep", scene.getTimeStep());
    timeRange(w, "animRange", scene.getAnimRange());
    timeRange(w, "playRange", scene.getPlayRange());
    movieJson(w, scene);
    if (report.frame >= 0)
        w.field("frame", report.frame);
    writeViewportsJson(w);
    SceneWalk walk(scene);
    JsonSceneWriter writer(w, walk, report.includeMeshData, dumpTime(scene, report.frame),
                           scene.getTimeStep());
    walk.walk(writer);
    w.endObject();
    w.endObject();
}

void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report) {
    out.flush();
    if (QIODevice *device = out.device()) {
        writeSceneJson(*device, scene, report);
        return;
    }
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    writeSceneJson(bytes, scene, report);
    out << QString::fromUtf8(bytes.data());
}
