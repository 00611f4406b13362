#include "SceneAnimation.h"
#include "SceneWalk.h"

#include <OvApp.h>
#include <OvLight.h>
#include <OvPropertyGroups.h>
#include <OvScene.h>
#include <OvViewport.h>
#include <QStringList>

namespace {

using Layout = JsonWriter::Layout;

const char *interpolationName(OvInterpolation i) {
    switch (i) {
    case OvInterpolation::Linear:
        return "linear";
    case OvInterpolation::Constant:
        return "constant";
    case OvInterpolation::Spline:
        break;
    }
    return "spline";
}

// The value of key i as JSON, and as text.
void keyValueJson(JsonWriter &w, const OvProperty &p, int i) {
    if (auto *f = dynamic_cast<const OvFloatProperty *>(&p))
        w.value(f->getKeyValue(i));
    else if (auto *n = dynamic_cast<const OvIntProperty *>(&p))
        w.value(n->getKeyValue(i));
    else if (auto *b = dynamic_cast<const OvBoolProperty *>(&p))
        w.value(b->getKeyValue(i));
    else if (auto *c = dynamic_cast<const OvColorProperty *>(&p))
        w.value(colorText(c->getKeyValue(i)));
    else
        w.valueNull();
}

QString keyValueText(const OvProperty &p, int i) {
    if (auto *f = dynamic_cast<const OvFloatProperty *>(&p))
        return JsonWriter::formatFloat(f->getKeyValue(i));
    if (auto *n = dynamic_cast<const OvIntProperty *>(&p))
        return QString::number(n->getKeyValue(i));
    if (auto *b = dynamic_cast<const OvBoolProperty *>(&p))
        return b->getKeyValue(i) ? QStringLiteral("true") : QStringLiteral("false");
    if (auto *c = dynamic_cast<const OvColorProperty *>(&p))
        return colorText(c->getKeyValue(i));
    return QStringLiteral("?");
}

// Keys sit on whole frames; a time between frames is written as a fraction.
QString frameText(int time, int step) {
    return time % step == 0 ? QString::number(time / step)
                            : JsonWriter::formatFloat(float(time) / float(step));
}

void groupJson(JsonWriter &w, const OvPropertyGroup &g) {
    w.beginObject();
    w.field("name", g.getName());
    w.field("collapsed", g.isCollapsed());
    w.key("properties");
    w.beginArray(Layout::Line);
    for (const QString &name : g.propertyNames())
        w.value(name);
    w.endArray();
    w.key("children");
    w.beginArray();
    for (int i = 0; i < g.getNumChildren(); ++i)
        groupJson(w, *g.getChild(i));
    w.endArray();
    w.endObject();
}

void groupTree(QTextStream &out, const QString &indent, const OvPropertyGroup &g) {
    QStringList names;
    for (const QString &name : g.propertyNames())
        names << JsonWriter::quote(name);
    out << indent << "group " << JsonWriter::quote(g.getName()) << (g.isCollapsed() ? " (collapsed)" : "")
        << ": " << names.join(QLatin1String(", ")) << "\n";
    for (int i = 0; i < g.getNumChildren(); ++i)
        groupTree(out, indent + QLatin1String("  "), *g.getChild(i));
}

} // namespace

int dumpTime(const OvScene &scene, int frame) {
    return frame >= 0 ? frame * scene.getTimeStep() : scene.getTime();
}

void writeKeysJson(JsonWriter &w, const OvProperty &p, int timeStep) {
    const int n = p.getNumKeys();
    if (n == 0)
        return;
    w.key("keys");
    w.beginArray(Layout::Line);
    for (int i = 0; i < n; ++i) {
        w.beginArray();
        const int time = p.getKeyTime(i);
        if (time % timeStep == 0)
            w.value(time / timeStep);
        else
            w.value(float(time) / float(timeStep));
        keyValueJson(w, p, i);
        w.value(interpolationName(p.getKeyInterpolation(i)));
        w.endArray();
    }
    w.endArray();
}

QString keysText(const OvProperty &p, int timeStep) {
    constexpr int Shown = 8;
    const int n = p.getNumKeys();
    if (n == 0)
        return QString();
    QStringList keys;
    for (int i = 0; i < std::min(n, Shown); ++i)
        keys << QStringLiteral("%1: %2 %3")
                    .arg(frameText(p.getKeyTime(i), timeStep), keyValueText(p, i),
                         QLatin1String(interpolationName(p.getKeyInterpolation(i))));
    QString text = QStringLiteral(", keys ") + keys.join(QLatin1String(", "));
    if (n > Shown)
        text += QStringLiteral(" ... (%1 in all)").arg(n);
    return text;
}

void writeGroupsJson(JsonWriter &w, const OvPropertyGroupTree *groups) {
    if (!groups || groups->isEmpty())
        return;
    w.key("groups");
    w.beginArray();
    for (int i = 0; i < groups->root().getNumChildren(); ++i)
        groupJson(w, *groups->root().getChild(i));
    w.endArray();
}

void writeGroupsTree(QTextStream &out, const QString &indent, const OvPropertyGroupTree *groups) {
    if (!groups || groups->isEmpty())
        return;
    for (int i = 0; i < groups->root().getNumChildren(); ++i)
        groupTree(out, indent, *groups->root().getChild(i));
}

void writeViewportsJson(JsonWriter &w) {
    OvViewportMgr *mgr = OvApp::getViewportMgr();
    w.key("viewports");
    w.beginObject();
    w.field("active", mgr->getActiveIndex());
    w.key("views");
    w.beginArray();
    for (int i = 0; i < mgr->getNumViewports(); ++i) {
        const OvBasicCamera *camera = mgr->getViewport(i)->get3DViewport()->getCamera();
        w.beginObject(Layout::Line);
        w.key("camera");
        if (camera)
            w.value(camera->getName());
        else
            w.valueNull();
        w.field("type", camera ? camera->getCameraType() : -1);
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

QString viewportsText() {
    OvViewportMgr *mgr = OvApp::getViewportMgr();
    QStringList views;
    for (int i = 0; i < mgr->getNumViewports(); ++i) {
        const OvBasicCamera *camera = mgr->getViewport(i)->get3DViewport()->getCamera();
        views << (camera ? JsonWriter::quote(camera->getName()) : QStringLiteral("none")) +
                     (i == mgr->getActiveIndex() ? QStringLiteral(" (active)") : QString());
    }
    return QStringLiteral("viewports: ") + views.join(QLatin1String(", ")) + QLatin1Char('\n');
}
