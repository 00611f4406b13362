// The scene as an indented tree for a person to read: what a freshly made node or object would
// show anyway is left out.
#include "JsonWriter.h"
#include "SceneAnimation.h"
#include "SceneDump.h"
#include "SceneWalk.h"
#include <cmath>

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
#include <algorithm>

namespace {

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

// The values a freshly made node has; the tree shows placement only when it differs.
bool isRestPlacement(const OvNode &node) {
    const OvQuat &q = node.getOrientation();
    return node.getOrigin() == OvVec3() && node.getEndPoint() == OvVec3() && q[0] == 0 && q[1] == 0 &&
           q[2] == 0 && q[3] == 1 && node.getRotationOrder() == OvRotationOrder::XYZ;
}

// A float property with nothing set but its value: no default of its own, limits, sensitivity or
// clamping.
bool isFreshFloat(const OvFloatProperty &f, float value) {
    return f.getDefaultValue() == value && std::isinf(f.getMin()) && std::isinf(f.getMax()) &&
           f.getSensitivity() == 1.0f && !f.isClamped();
}

// A property the host makes for every node (or every object, skeleton, spot light, camera) that
// still looks as the host made it; the tree leaves these out. The follow target, spread angle and
// focal length are shown on their class's own line instead.
bool isStandardAtRest(const OvElement &owner, const OvProperty &p) {
    auto *numeric = dynamic_cast<const OvNumericProperty *>(&p);
    if (p.isHidden() || p.getLabel() != p.getName() || (numeric && numeric->isDriven()) ||
        p.isUserProperty() || !p.canAnimate() || p.getNumKeys() > 0 || !p.getPath().isEmpty())
        return false;
    auto floatIs = [&p](const OvFloatProperty *control, float fresh) {
        return &p == control && control->getValue() == fresh && isFreshFloat(*control, fresh);
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
        if (auto *light = qobject_cast<const OvLight *>(node)) {
            const OvColorProperty *color = light->getColorControl();
            if ((&p == color && color->getValue() == QColor(Qt::white)) ||
                floatIs(light->getIntensityControl(), 1))
                return true;
        }
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

// A channel of a modifier gets a line of its own only when it differs from how the host made it.
bool isPlainChannel(const OvProperty &p) {
    auto *numeric = dynamic_cast<const OvNumericProperty *>(&p);
    return !(numeric && numeric->isDriven()) && !p.isHidden() && p.getLabel() == p.getName();
}

QString intRangeText(const OvIntProperty &p) {
    if (p.getMin() == -2147483647 - 1 && p.getMax() == 2147483647)
        return QString();
    return QStringLiteral(", range %1..%2").arg(p.getMin()).arg(p.getMax());
}

class TreeWriter : public SceneVisitor {
public:
    TreeWriter(QTextStream &out, const SceneWalk &walk, int time, int step)
        : m_out(out), m_walk(walk), m_time(time), m_step(step) {}

    void enterNode(const OvNode &node) override {
        m_out << m_indent << node.metaObject()->className() << " " << quoted(node.getName());
        if (node.getLabel() != node.getName())
            m_out << " label " << quoted(node.getLabel());
        if (node.isHidden())
            m_out << " (hidden)";
        m_out << "\n";
        indent();
        if (!isRestPlacement(node))
            m_out << m_indent << "origin " << vecText(node.getOrigin()) << ", end point "
                  << vecText(node.getEndPoint()) << ", orientation " << quatText(node.getOrientation())
                  << ", rotation order " << rotationOrderName(node.getRotationOrder()) << "\n";
        writeGroupsTree(m_out, m_indent, node.findPropertyGroups());
    }
    void leaveNode(const OvNode &) override { outdent(); }
    void skeleton(const OvSkeleton &skeleton) override;
    void deformer(const OvDForm &dform) override;
    void zone(const OvDFormZone &zone) override;
    void light(const OvLight &light) override;
    void camera(const OvBasicCamera &camera) override;
    void dataItem(const OvElementData &d) override;
    void property(const OvElement &owner, const OvProperty &p) override {
        if (!isStandardAtRest(owner, p))
            writeProperty(p);
    }
    void enterObject(const OvObject &object) override;
    void leaveObject(const OvObject &) override { outdent(); }
    void modifier(OvModifier &m) override;
    void enterShape(const OvShape &shape, const MeshUse &use) override;
    void leaveShape(const OvShape &) override { outdent(); }
    void material(const OvMaterial &m, int id, bool first) override;

private:
    // Two spaces a level, up to JsonWriter::kMaxIndentLevels levels: deep hierarchies stay linear.
    void indent() { setDepth(m_depth + 1); }
    void outdent() { setDepth(m_depth - 1); }
    void setDepth(size_t depth) {
        m_depth = depth;
        m_indent.fill(QLatin1Char(' '), qsizetype(2 * std::min(depth, JsonWriter::kMaxIndentLevels)));
    }
    QString nodeRef(const OvNode *node) const;
    void writeIKChains(const OvPoserIKChains &chains);
    void writeJointParam(const OvPoserJointParam &p);
    void writeProperty(const OvProperty &p);
    void writeController(const OvController &c);
    QString propertyRef(const OvNumericProperty *p) const;
    // A modifier's channel, one level further in, when it is not plain.
    void writeChannel(const OvProperty &p) {
        if (isPlainChannel(p))
            return;
        indent();
        writeProperty(p);
        outdent();
    }

    QTextStream &m_out;
    const SceneWalk &m_walk;
    size_t m_depth = 1;
    QString m_indent = QStringLiteral("  ");
    int m_time; // values are shown at this time
    int m_step;
};

QString TreeWriter::nodeRef(const OvNode *node) const {
    if (!node)
        return QStringLiteral("none");
    if (!m_walk.hasNode(node))
        return QStringLiteral("<outside the scene>");
    return quoted(node->getName());
}

void TreeWriter::skeleton(const OvSkeleton &skeleton) {
    const OvSkeletonProperty *follow = skeleton.getFollowControl();
    if (follow->getValue())
        m_out << m_indent << "follows " << nodeRef(follow->getValue()) << "\n";
    for (const OvSkeleton::Weld &weld : skeleton.getWelds())
        m_out << m_indent << "weld " << nodeRef(weld.bone) << " to " << nodeRef(weld.target) << "\n";
}

void TreeWriter::deformer(const OvDForm &dform) {
    QStringList zones;
    for (const OvDFormZone *zone : dform.getZones())
        zones << nodeRef(zone);
    m_out << m_indent << "deformer: base " << nodeRef(dform.getBase()) << ", zones "
          << (zones.isEmpty() ? QStringLiteral("none") : zones.join(QLatin1String(", "))) << "\n";
}

void TreeWriter::zone(const OvDFormZone &zone) {
    QStringList points;
    const OvNaturalSpline *spline = zone.getSpline();
    for (int i = 0; i < spline->getNumPoints(); ++i)
        points << QStringLiteral("(%1, %2)")
                      .arg(num(spline->getPoint(i).first), num(spline->getPoint(i).second));
    m_out << m_indent
          << "falloff: " << (points.isEmpty() ? QStringLiteral("no points") : points.join(QLatin1String(" ")))
          << "\n";
}

void TreeWriter::light(const OvLight &light) {
    m_out << m_indent << lightKind(light) << " light";
    if (auto *spot = qobject_cast<const OvSpotLight *>(&light))
        m_out << ", spread angle " << num(spot->getSpreadAngleControl()->getValue());
    m_out << "\n";
}

void TreeWriter::camera(const OvBasicCamera &camera) {
    m_out << m_indent << "camera type " << camera.getCameraType();
    if (camera.isPerspective())
        m_out << " (perspective)";
    if (camera.getCreationFlag())
        m_out << ", creation flag";
    m_out << ", focal length " << num(camera.getFocalLengthChannel()->getValueAt(m_time))
          << ", focal distance " << num(camera.getFocalDistance()) << "\n";
}

void TreeWriter::dataItem(const OvElementData &d) {
    m_out << m_indent << "data " << d.getName();
    if (auto *s = dynamic_cast<const OvSourceFileData *>(&d))
        m_out << ": " << s->getSourceFilePath();
    if (auto *g = dynamic_cast<const OvGeomSourceFileData *>(&d); g && !g->getGroupName().isNull())
        m_out << ", group " << quoted(g->getGroupName());
    m_out << "\n";
    if (auto *chains = dynamic_cast<const OvPoserIKChains *>(&d))
        writeIKChains(*chains);
}

// One line a chain, one level further in: `ik chain "NAME" label "…" (on|off): links "A" 1, "B" 0.5;
// goal "C"`.
void TreeWriter::writeIKChains(const OvPoserIKChains &chains) {
    indent();
    for (int i = 0; i < chains.getNumChains(); ++i) {
        const OvPoserIKChain &chain = *chains.getChain(i);
        QStringList links;
        for (int l = 0; l < chain.getNumLinks(); ++l)
            links << nodeRef(chain.getLink(l).node) + QLatin1Char(' ') + num(chain.getLink(l).weight);
        m_out << m_indent << "ik chain " << quoted(chain.getName());
        if (chain.getLabel() != chain.getName())
            m_out << " label " << quoted(chain.getLabel());
        m_out << (chain.isActive() ? " (on)" : " (off)") << ": links "
              << (links.isEmpty() ? QStringLiteral("none") : links.join(QLatin1String(", "))) << "; goal "
              << nodeRef(chain.getGoal()) << "\n";
    }
    outdent();
}

void TreeWriter::writeProperty(const OvProperty &p) {
    m_out << m_indent << "property " << p.getName() << " (" << p.className() << ")";
    if (auto *e = dynamic_cast<const OvEnumProperty *>(&p)) {
        QStringList items;
        for (const QString &item : e->getItems())
            items << quoted(item);
        m_out << " = " << e->getValueAt(m_time) << " of [" << items.join(QLatin1String(", ")) << "]";
        // The switch's range normally just spans its items.
        if (e->getMin() != 0 || e->getMax() != std::max(0, e->getNumItems() - 1))
            m_out << intRangeText(*e);
    } else if (auto *i = dynamic_cast<const OvIntProperty *>(&p)) {
        m_out << " = " << i->getValueAt(m_time) << intRangeText(*i);
    } else if (auto *f = dynamic_cast<const OvFloatProperty *>(&p)) {
        m_out << " = " << num(f->getValueAt(m_time));
        if (!isFreshFloat(*f, f->getValue())) {
            m_out << ", default " << num(f->getDefaultValue()) << ", range "
                  << (std::isinf(f->getMin()) ? QStringLiteral("-") : num(f->getMin())) << ".."
                  << (std::isinf(f->getMax()) ? QStringLiteral("-") : num(f->getMax()))
                  << (f->isClamped() ? " clamped" : "") << ", sensitivity " << num(f->getSensitivity());
        }
        if (auto *target = dynamic_cast<const OvNumericNodeProperty *>(&p))
            m_out << ", target " << nodeRef(target->getNode());
    } else if (auto *c = dynamic_cast<const OvColorProperty *>(&p)) {
        m_out << " = " << colorText(c->getColorValue(m_time));
    } else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p)) {
        m_out << " = " << (b->getValueAt(m_time) ? "true" : "false");
    } else if (auto *s = dynamic_cast<const OvSkeletonProperty *>(&p)) {
        m_out << " = " << nodeRef(s->getValue());
    }
    if (p.getLabel() != p.getName())
        m_out << ", label " << quoted(p.getLabel());
    if (p.isHidden())
        m_out << ", hidden";
    if (p.isUserProperty())
        m_out << ", user";
    if (!p.canAnimate())
        m_out << ", not animated";
    if (!p.getPath().isEmpty())
        m_out << ", group " << quoted(p.getPath());
    if (auto *n = dynamic_cast<const OvNumericProperty *>(&p); n && n->getLinkProperty())
        m_out << ", linked to " << propertyRef(n->getLinkProperty());
    m_out << keysText(p, m_step) << "\n";
    indent();
    for (int i = 0; i < p.getNumControllers(); ++i)
        writeController(*p.getController(i));
    outdent();
}

// "PROP" of "OWNER" [on node "NODE"], or why there is no such property.
QString TreeWriter::propertyRef(const OvNumericProperty *p) const {
    const OvNode *node = m_walk.propertyNode(p);
    if (!p)
        return QStringLiteral("none");
    if (!node)
        return QStringLiteral("<outside the scene>");
    QString text = quoted(p->getName()) + QStringLiteral(" of ") +
                   (p->getOwner() ? quoted(p->getOwner()->getName()) : QStringLiteral("no owner"));
    if (!p->getOwner() || p->getOwner() != node)
        text += QStringLiteral(" on node ") + quoted(node->getName());
    return text;
}

void TreeWriter::writeController(const OvController &c) {
    m_out << m_indent << "controller " << c.className() << " " << quoted(c.getName());
    if (auto *link = dynamic_cast<const OvERCLink *>(&c))
        m_out << ": " << OvERCLink::typeName(link->getType()) << " from " << propertyRef(link->getProperty())
              << ", scalar " << num(float(link->getScalar()));
    m_out << "\n";
}

void TreeWriter::enterObject(const OvObject &object) {
    m_out << m_indent << "object";
    if (!object.getName().isEmpty())
        m_out << " " << quoted(object.getName());
    if (!object.getLabel().isEmpty() && object.getLabel() != object.getName())
        m_out << " label " << quoted(object.getLabel());
    m_out << " (" << object.metaObject()->className() << ")\n";
    indent();
}

void TreeWriter::modifier(OvModifier &m) {
    m_out << m_indent << "modifier " << m.className() << " " << quoted(m.getName());
    if (auto *joint = dynamic_cast<const OvPoserJoint *>(&m)) {
        m_out << ": bend " << joint->getBendControl()->getValue() << "\n";
        writeChannel(*joint->getBendControl());
        indent();
        for (int i = 0; i < joint->getNumParams(); ++i)
            writeJointParam(*joint->getParam(i));
        outdent();
    } else if (auto *dform = dynamic_cast<OvDFormModifier *>(&m)) {
        m_out << ": deformer " << nodeRef(dform->getDForm()) << ", value "
              << num(dform->getValueChannel()->getValue()) << "\n";
        writeChannel(*dform->getValueChannel());
    } else if (auto *morph = dynamic_cast<OvMorph *>(&m)) {
        m_out << ": value " << num(morph->getValueChannel()->getValue()) << ", "
              << "deltas " << morph->getDeltas()->getNumDeltas() << "\n";
        writeChannel(*morph->getValueChannel());
    } else {
        m_out << "\n";
    }
}

// One line per joint parameter, with what its kind holds; its sphere matrices follow, one line
// each, when they are applied.
void TreeWriter::writeJointParam(const OvPoserJointParam &p) {
    auto four = [](float a, float b, float c, float d) {
        return QStringLiteral("(%1, %2, %3, %4)").arg(num(a), num(b), num(c), num(d));
    };
    auto onOff = [](bool on) { return on ? " on" : " off"; };
    m_out << m_indent << "param " << p.className() << " " << quoted(p.getName()) << ": axis "
          << int(p.getAxis()) << ", driver " << nodeRef(p.getDriver());
    if (p.isFlipped())
        m_out << ", flipped";
    if (auto *bend = dynamic_cast<const OvPoserBendParam *>(&p))
        m_out << ", angles "
              << four(bend->getAngle(0), bend->getAngle(1), bend->getAngle(2), bend->getAngle(3))
              << onOff(bend->getApplyAngles()) << ", bulges "
              << four(bend->getPosLeftBulge(), bend->getPosRightBulge(), bend->getNegLeftBulge(),
                      bend->getNegRightBulge())
              << onOff(bend->getApplyBulges());
    else if (auto *twist = dynamic_cast<const OvPoserTwistParam *>(&p))
        m_out << ", start " << num(twist->getStart()) << ", end " << num(twist->getEnd()) << ", blend"
              << onOff(twist->getApplyBlend());
    else if (auto *smooth = dynamic_cast<const OvPoserSmoothScale *>(&p))
        m_out << ", zones "
              << four(smooth->getSmoothZone(0), smooth->getSmoothZone(1), smooth->getSmoothZone(2),
                      smooth->getSmoothZone(3));
    else if (auto *curve = dynamic_cast<const OvPoserCurve *>(&p))
        m_out << ", bone " << nodeRef(curve->getBone());
    m_out << "\n";
    if (!p.getApplyMatrices())
        return;
    indent();
    for (const OvMatrix4 *m : {&p.getFirstMatrix(), &p.getSecondMatrix()}) {
        QStringList values;
        for (int i = 0; i < 16; ++i)
            values << num(m->data()[i]);
        m_out << m_indent << "sphere matrix (" << values.join(QStringLiteral(", ")) << ")\n";
    }
    outdent();
}

void TreeWriter::enterShape(const OvShape &shape, const MeshUse &use) {
    m_out << m_indent << "shape " << quoted(shape.getName());
    if (!shape.getLabel().isEmpty() && shape.getLabel() != shape.getName())
        m_out << " label " << quoted(shape.getLabel());
    m_out << " (" << shape.className() << ")";
    const OvPolyMesh *mesh = use.mesh;
    if (mesh) {
        m_out << ": mesh #" << use.id;
        if (use.first)
            m_out << " " << quoted(mesh->getName()) << ", " << mesh->getNumVertices() << " vertices, "
                  << mesh->getUVs()->getNumValues() << " uvs, " << mesh->getNumFaces() << " faces, "
                  << mesh->getNumFaceGroups() << " groups";
        else
            m_out << " (shared, listed above)";
        m_out << ", " << shape.getNumMaterials() << " materials";
    }
    m_out << "\n";
    indent();
    if (mesh && use.first)
        for (int g = 0; g < mesh->getNumFaceGroups(); ++g)
            m_out << m_indent << "group " << quoted(mesh->getFaceGroupName(g)) << ": "
                  << mesh->getNumFaceGroupFaces(g) << " faces\n";
}

void TreeWriter::material(const OvMaterial &m, int id, bool first) {
    m_out << m_indent << "material #" << id << " " << quoted(m.getName());
    if (!first) {
        m_out << " (shared, listed above)\n";
        return;
    }
    m_out << " (" << m.className() << ")";
    auto *d = dynamic_cast<const OvDefaultMaterial *>(&m);
    if (!d) {
        m_out << "\n";
        return;
    }
    m_out << ": diffuse " << colorText(d->getDiffuseColor()) << ", ambient "
          << colorText(d->getAmbientColor()) << " x" << num(d->getAmbientStrength()) << ", specular "
          << colorText(d->getSpecularColor()) << ", glossiness " << num(d->getGlossinessStrength())
          << ", reflection " << colorText(d->getReflectionColor()) << " x" << num(d->getReflectionStrength())
          << ", opacity " << num(d->getBaseOpacity()) << ", ior " << num(d->getIndexOfRefraction())
          << ", bump " << num(d->getBumpStrength()) << " (" << num(d->getBumpMin()) << ".."
          << num(d->getBumpMax()) << ")\n";
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
        if (map.t) {
            m_out << m_indent << "  map " << map.name << ": " << map.t->getPath() << " (" << map.t->getWidth()
                  << "x" << map.t->getHeight();
            if (!map.t->getName().isEmpty())
                m_out << ", key " << quoted(map.t->getName());
            m_out << ")\n";
        }
}

} // namespace

namespace {

// The scene's sound, on a line of its own when it has one.
void writeSound(QTextStream &out, const OvScene &scene) {
    const OvAudioClip *clip = scene.getAudio();
    if (!clip)
        return;
    const OvAudioFormat &f = clip->getFormat();
    out << "sound " << quoted(clip->getPath()) << ": " << f.container << ", " << f.channels << " channels, "
        << num(float(f.sampleRate)) << " samples a second, " << f.bitsPerSample << " bits, " << f.sampleFrames
        << " sample frames, length " << clip->getLength() << ", starts at frame "
        << scene.getAudioStartFrame() << "\n";
}

} // namespace

void writeSceneTree(QTextStream &out, const OvScene &scene, int frame) {
    const float step = float(scene.getTimeStep());
    out << "scene: time " << scene.getTime() << " (frame " << num(float(scene.getTime()) / step)
        << "), time step " << scene.getTimeStep() << " (" << num(float(OvScene::TimeUnitsPerSecond) / step)
        << " frames a second), animation " << scene.getAnimRange().getStart() << ".."
        << scene.getAnimRange().getEnd() << ", play " << scene.getPlayRange().getStart() << ".."
        << scene.getPlayRange().getEnd();
    if (frame >= 0)
        out << ", values at frame " << frame;
    out << "\n";
    writeSound(out, scene);
    out << viewportsText();
    SceneWalk walk(scene);
    TreeWriter writer(out, walk, dumpTime(scene, frame), scene.getTimeStep());
    walk.walk(writer);
}
