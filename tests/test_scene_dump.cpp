// The scene dump of the command-line host on a hand-built figure scene: every kind of node and
// link, a mesh shared by two shapes and references that leave the scene, in both the JSON and the
// tree. The OBJ goldens cover the plain parts.
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <SceneDump.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

template <class T = OvNode> T *make(const char *name, OvNode *parent = nullptr) {
    T *node = new T;
    node->setName(QString::fromLatin1(name));
    node->setLabel(QString::fromLatin1(name));
    if (parent)
        parent->addNodeChild(node);
    else
        OvApp::getScene()->addNode(node);
    return node;
}

OvPolyShape *shapeWith(OvPolyMesh *mesh, const char *name) {
    auto *shape = new OvPolyShape;
    shape->setName(QString::fromLatin1(name));
    shape->setPolyMesh(mesh);
    return shape;
}

class SceneDump : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        auto *figure = make<OvSkeleton>("Figure 1");
        figure->setLabel("Andy");
        OvBone *hip = make<OvBone>("hip", figure);
        hip->setOrigin(OvVec3(0, 90, 0));
        hip->setOrientation(OvQuat(0.5f, -0.5f, 0.5f, 0.5f));
        hip->setRotationOrder(OvRotationOrder::ZXY);
        OvBone *chest = make<OvBone>("chest", hip);
        chest->setHidden(true);
        chest->getXRotControl()->setValue(12.5f);
        chest->getShadowControl()->setValue(false);
        chest->addDataItem(new OvGeomSourceFileData("/c/andy.obj", "chest"));
        hip->addDataItem(new OvGeomSourceFileData("/c/andy.obj"));

        // One figure mesh, shown whole by the hip and again by the chest.
        auto *mesh = new OvPolyMesh;
        mesh->setName("andy");
        mesh->setVertexArray(3);
        auto *hipObject = new OvObject;
        hipObject->setName("hip_3");
        hipObject->addShape(shapeWith(mesh, "hip"));
        hipObject->addShape(shapeWith(nullptr, "hip off"));
        hipObject->getGeometryControl()->setValue(1);
        hipObject->addModifier(new OvPoserJoint);
        hip->setObject(hipObject);
        auto *chestObject = new OvObject;
        chestObject->addShape(shapeWith(mesh, "chest"));
        chest->setObject(chestObject);

        auto *magnet = make<OvDForm>("Mag 1");
        auto *base = make<OvDFormBase>("Mag Base 1", magnet);
        auto *zone = make<OvDFormZone>("Mag Zone 1", magnet);
        magnet->setBase(base);
        magnet->setZone(zone);
        zone->getSpline()->insertPoint(1, 0);
        zone->getSpline()->insertPoint(0, 1);
        auto *bendMod = new OvDFormModifier;
        bendMod->setName("Mag 1");
        bendMod->setDForm(magnet);
        bendMod->getValueChannel()->setValue(0.5f);
        chestObject->addModifier(bendMod);

        auto *shirt = make<OvSkeleton>("Figure 2");
        shirt->setFollowTarget(figure);
        OvBone *shirtChest = make<OvBone>("chest", shirt);
        shirt->addWeld(shirtChest, chest);
        auto *link = new OvERCLink(chest->getXRotControl(), 1, 0.25);
        link->setName("Imported ERC Control");
        shirtChest->getXRotControl()->insertController(link);
        auto *switchLink = new OvERCLink(hipObject->getGeometryControl(), 1, 0);
        switchLink->setName("Genitals Off Link");
        shirtChest->getYRotControl()->insertController(switchLink);
        shirtChest->getZRotControl()->insertController(new OvERCLink(nullptr, 2, 0));

        auto *spot = make<OvSpotLight>("Light 1");
        spot->getSpreadAngleControl()->setValue(30);
        auto *camera = make<OvBasicCamera>("Main Camera");
        camera->getFocalLengthChannel()->setValue(35);
        camera->setFocalDistance(200);
        make<OvDistantLight>("Sun");

        // A magnet that no longer hangs in the scene, still named by a modifier.
        m_gone.reset(new OvDForm);
        auto *stale = new OvDFormModifier;
        stale->setDForm(m_gone.get());
        chestObject->addModifier(stale);
    }

    QJsonObject json() {
        QString text;
        QTextStream out(&text);
        ImportReport report;
        writeSceneJson(out, *OvApp::getScene(), report);
        out.flush();
        QJsonParseError error;
        QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
        return doc.object()["scene"].toObject();
    }

    QString tree() {
        QString text;
        QTextStream out(&text);
        writeSceneTree(out, *OvApp::getScene());
        out.flush();
        return text;
    }

    static const QJsonObject child(const QJsonObject &node, const QString &name) {
        for (const QJsonValue &c : node["children"].toArray())
            if (c["name"].toString() == name)
                return c.toObject();
        ADD_FAILURE() << "no child " << name.toStdString();
        return {};
    }

    static const QJsonObject property(const QJsonObject &element, const QString &name) {
        for (const QJsonValue &p : element["properties"].toArray())
            if (p["name"].toString() == name)
                return p.toObject();
        ADD_FAILURE() << "no property " << name.toStdString();
        return {};
    }

    std::unique_ptr<OvDForm> m_gone;
};

TEST_F(SceneDump, JsonCarriesPlacementPropertiesAndDataItems) {
    const QJsonArray nodes = json()["nodes"].toArray();
    ASSERT_EQ(nodes.size(), 6);
    const QJsonObject figure = nodes[0].toObject();
    EXPECT_EQ(figure["class"], "OvSkeleton");
    EXPECT_EQ(figure["label"], "Andy");
    const QJsonObject hip = child(figure, "hip");
    EXPECT_EQ(hip["origin"].toArray(), (QJsonArray{0, 90, 0}));
    EXPECT_EQ(hip["orientation"].toArray(), (QJsonArray{0.5, -0.5, 0.5, 0.5}));
    EXPECT_EQ(hip["rotationOrder"], "ZXY");
    EXPECT_EQ(hip["dataItems"][0]["group"], QJsonValue::Null) << "no group name at all";
    const QJsonObject chest = child(hip, "chest");
    EXPECT_EQ(chest["hidden"], true);
    EXPECT_EQ(hip["hidden"], false);
    EXPECT_EQ(chest["dataItems"][0]["group"], "chest");
    EXPECT_EQ(chest["dataItems"][0]["path"], "/c/andy.obj");
    EXPECT_EQ(chest["properties"].toArray().size(), 13) << "the JSON lists every property";
    EXPECT_EQ(property(chest, "xRotate")["value"], 12.5);
    EXPECT_EQ(property(chest, "Casts Shadow")["value"], false);

    const QJsonObject geometry = property(hip["object"].toObject(), "Geometry");
    EXPECT_EQ(geometry["value"], 1);
    EXPECT_EQ(geometry["max"], 1);
    EXPECT_EQ(geometry["items"].toArray(), (QJsonArray{"hip", "hip off"}));
    const QJsonObject joint = hip["object"]["modifiers"][0].toObject();
    EXPECT_EQ(joint["class"], "OvPoserJoint");
    EXPECT_EQ(joint["bend"]["value"], 1);
    EXPECT_EQ(joint["bend"]["min"], 0);
}

TEST_F(SceneDump, JsonWritesASharedMeshOnceAndRefersToItById) {
    const QJsonObject hip = child(json()["nodes"][0].toObject(), "hip");
    const QJsonObject first = hip["object"]["shapes"][0]["mesh"].toObject();
    const QJsonObject again = child(hip, "chest")["object"]["shapes"][0]["mesh"].toObject();
    EXPECT_EQ(first["meshId"], 1);
    EXPECT_EQ(first["vertexCount"], 3);
    EXPECT_EQ(again, (QJsonObject{{"meshId", 1}}));
    EXPECT_EQ(hip["object"]["shapes"][1]["mesh"], QJsonValue::Null);
}

TEST_F(SceneDump, JsonNamesLinkTargets) {
    const QJsonObject scene = json();
    const QJsonArray nodes = scene["nodes"].toArray();
    const QJsonObject chest = child(child(nodes[0].toObject(), "hip"), "chest");
    const QJsonArray modifiers = chest["object"]["modifiers"].toArray();
    ASSERT_EQ(modifiers.size(), 2);
    EXPECT_EQ(modifiers[0]["deformer"], "Mag 1");
    EXPECT_EQ(modifiers[0]["value"]["value"], 0.5);
    EXPECT_EQ(modifiers[1]["deformer"], (QJsonObject{{"outsideScene", true}}));

    const QJsonObject magnet = nodes[1].toObject();
    EXPECT_EQ(magnet["deformer"], (QJsonObject{{"base", "Mag Base 1"}, {"zones", QJsonArray{"Mag Zone 1"}}}));
    EXPECT_EQ(child(magnet, "Mag Zone 1")["zone"]["falloff"],
              (QJsonArray{QJsonArray{0, 1}, QJsonArray{1, 0}}));

    const QJsonObject shirt = nodes[2].toObject();
    EXPECT_EQ(shirt["skeleton"]["followTarget"], "Figure 1");
    EXPECT_EQ(property(shirt, "Follow")["value"], "Figure 1");
    EXPECT_EQ(shirt["skeleton"]["welds"], (QJsonArray{QJsonObject{{"bone", "chest"}, {"target", "chest"}}}));
    const QJsonObject shirtChest = child(shirt, "chest");
    EXPECT_EQ(
        property(shirtChest, "xRotate")["controllers"][0],
        (QJsonObject{{"class", "OvERCLink"},
                     {"name", "Imported ERC Control"},
                     {"source", QJsonObject{{"property", "xRotate"}, {"owner", "chest"}, {"node", "chest"}}},
                     {"a", 1},
                     {"b", 0.25}}));
    // A property of an object: the owner is the object, the node the one that carries it.
    EXPECT_EQ(property(shirtChest, "yRotate")["controllers"][0]["source"],
              (QJsonObject{{"property", "Geometry"}, {"owner", "hip_3"}, {"node", "hip"}}));
    EXPECT_EQ(property(shirtChest, "zRotate")["controllers"][0]["source"], QJsonValue::Null);

    EXPECT_EQ(nodes[3]["light"], (QJsonObject{{"kind", "spot"}, {"spreadAngle", 30}}));
    EXPECT_EQ(nodes[4]["camera"], (QJsonObject{{"type", 6},
                                               {"perspective", true},
                                               {"creationFlag", false},
                                               {"focalLength", 35},
                                               {"focalDistance", 200}}));
    EXPECT_EQ(nodes[5]["light"], (QJsonObject{{"kind", "distant"}}));
}

TEST_F(SceneDump, TreeShowsOnlyWhatDiffersFromAFreshNode) {
    const QString t = tree();
    EXPECT_FALSE(t.contains("property xTran")) << t.toStdString();
    EXPECT_FALSE(t.contains("property Visible"));
    EXPECT_FALSE(t.contains("property Follow")) << "shown as the follows line";
    EXPECT_FALSE(t.contains("property Spread Angle")) << "shown on the light's line";
    EXPECT_TRUE(t.contains("\n      OvBone \"chest\" (hidden)\n")) << t.toStdString();
    EXPECT_TRUE(t.contains("property xRotate (OvFloatProperty) = 12.5\n"));
    EXPECT_TRUE(t.contains("property Casts Shadow (OvBoolProperty) = false\n"));
    EXPECT_TRUE(t.contains(
        "origin (0, 90, 0), end point (0, 0, 0), orientation (0.5, -0.5, 0.5, 0.5), rotation order ZXY\n"));
    EXPECT_TRUE(t.contains("property Geometry (OvEnumProperty) = 1 of [\"hip\", \"hip off\"]\n"));
    EXPECT_TRUE(t.contains("data GeomSourceFileData: /c/andy.obj, group \"chest\"\n"));
    EXPECT_TRUE(t.contains("shape \"hip\" (OvPolyShape): mesh #1 \"andy\", 3 vertices"));
    EXPECT_TRUE(t.contains("shape \"chest\" (OvPolyShape): mesh #1 (shared, listed above), 0 materials\n"));
    EXPECT_TRUE(t.contains("modifier OvDFormModifier \"Mag 1\": deformer \"Mag 1\", value 0.5\n"));
    EXPECT_TRUE(t.contains("modifier OvDFormModifier \"\": deformer <outside the scene>, value 1\n"));
    EXPECT_TRUE(t.contains("follows \"Figure 1\"\n"));
    EXPECT_TRUE(t.contains("weld \"chest\" to \"chest\"\n"));
    EXPECT_TRUE(
        t.contains("controller OvERCLink \"Imported ERC Control\": source \"xRotate\" of \"chest\", numbers "
                   "1, 0.25\n"));
    EXPECT_TRUE(t.contains("source \"Geometry\" of \"hip_3\" on node \"hip\", numbers 1, 0\n"));
    EXPECT_TRUE(t.contains("deformer: base \"Mag Base 1\", zones \"Mag Zone 1\"\n"));
    EXPECT_TRUE(t.contains("falloff: (0, 1) (1, 0)\n"));
    EXPECT_TRUE(t.contains("spot light, spread angle 30\n"));
    EXPECT_TRUE(t.contains("camera type 6 (perspective), focal length 35, focal distance 200\n"));
}

TEST_F(SceneDump, SameSceneSameBytes) {
    QString a, b;
    QTextStream outA(&a), outB(&b);
    writeSceneJson(outA, *OvApp::getScene(), ImportReport());
    writeSceneJson(outB, *OvApp::getScene(), ImportReport());
    outA.flush();
    outB.flush();
    EXPECT_EQ(a, b);
    EXPECT_EQ(tree(), tree());
}

} // namespace
