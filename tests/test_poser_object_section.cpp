// Object sections of Poser files (actors, props, lights, deformer props), read through real files.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <poser/OvPZ3Importer.h>
#include <string>
#include <vector>

namespace {

// Reaches the current material and feeds single lines to the object handler.
class Probe : public OvPZ3Importer {
public:
    bool line(OvNode *node, OvNode *figure, const char *text) {
        m_curNode = node;
        m_curFigure = figure;
        m_parseMode = ModeObject;
        buffer.assign(text, text + std::strlen(text) + 1);
        std::vector<char *> argv;
        for (size_t i = 0; buffer[i];) {
            while (buffer[i] == ' ')
                buffer[i++] = '\0';
            if (!buffer[i])
                break;
            argv.push_back(&buffer[i]);
            while (buffer[i] && buffer[i] != ' ')
                ++i;
        }
        return parseObjectLine(argv.data(), int(argv.size()));
    }
    OvMaterial *material() const { return m_material; }
    void setApplyToSelection(bool on) { m_applyToSelection = on; }

private:
    std::vector<char> buffer;
};

OvNode *topNode(const QString &name) {
    OvScene *scene = OvApp::getScene();
    for (int i = 0; i < scene->getNumNodes(); ++i)
        if (scene->getNode(i)->getName() == name)
            return scene->getNode(i);
    return nullptr;
}

OvSkeleton *firstSkeleton() {
    OvScene *scene = OvApp::getScene();
    for (int i = 0; i < scene->getNumNodes(); ++i)
        if (auto *skeleton = qobject_cast<OvSkeleton *>(scene->getNode(i)))
            return skeleton;
    return nullptr;
}

OvShape *shapeOf(OvNode *node, int i = 0) {
    return node && node->getObject() && node->getObject()->getNumShapes() > i ? node->getObject()->getShape(i)
                                                                              : nullptr;
}

void expectVec(const OvVec3 &actual, float x, float y, float z, const char *what) {
    EXPECT_EQ(actual.x(), x) << what;
    EXPECT_EQ(actual.y(), y) << what;
    EXPECT_EQ(actual.z(), z) << what;
}

void expectNear(const OvVec3 &actual, float x, float y, float z, const char *what) {
    EXPECT_NEAR(actual.x(), x, 1e-5) << what;
    EXPECT_NEAR(actual.y(), y, 1e-5) << what;
    EXPECT_NEAR(actual.z(), z, 1e-5) << what;
}

// A figure whose bones hip, chest, head and lHand carry the figure number 1.
const char *const kFigure = "figureResFile none\n"
                            "actor hip:1\n{\n}\n"
                            "actor chest:1\n{\nparent hip:1\n}\n"
                            "actor head:1\n{\nparent chest:1\n}\n"
                            "actor lHand:1\n{\n}\n";

class PoserObjectSection : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
    }

    QString file(const QString &name, const QByteArray &text) { return writeFile(dir, name, text); }
    unsigned read(OvPZ3Importer &importer, const QString &path) {
        return importer.read(path, OvFileIOSettings());
    }
    void expectSoundScene() { EXPECT_EQ(checkSceneInvariants(*OvApp::getScene()).join("\n"), QString()); }

    QTemporaryDir dir;
    Probe importer;
};

TEST_F(PoserObjectSection, FigurePartsArePlacedAndFlagged) {
    const QByteArray text =
        QByteArray("{\n") + kFigure +
        "actor hip:1\n{\n"
        "origin 0.5 -2 3\nendPoint 0 1 0\norientation 90 90 0\nbend 0\ncastsShadow 0\n}\n"
        "actor chest:1\n{\n"
        "orientation 0 0 0\norigin 0 1 0\nendPoint 0 2 0\nhidden 1\nsomeFutureKeyword 1 2\n}\n"
        "actor head:1\n{\nhidden 0\noff\n}\n"
        "actor BODY:1\n{\nparent head:1\noff\n}\n"
        "}\n";
    ASSERT_EQ(read(importer, file("fig.cr2", text)), 0u);
    EXPECT_EQ(logText(), QStringLiteral("info: Null object found"));
    expectSoundScene();

    OvSkeleton *skeleton = firstSkeleton();
    ASSERT_TRUE(skeleton);
    EXPECT_EQ(skeleton->getNodeParent(), nullptr) << "a figure never hangs under its own bone";
    EXPECT_TRUE(skeleton->getVisibilityControl()->getValue()) << "off does not hide a figure";
    OvNode *hip = skeleton->findBone("hip"), *chest = skeleton->findBone("chest"),
           *head = skeleton->findBone("head");
    ASSERT_TRUE(hip && chest && head);
    EXPECT_EQ(chest->getNodeParent(), hip);
    EXPECT_EQ(head->getNodeParent(), chest);

    expectVec(hip->getOrigin(), 0.5f * 243.84f, -2 * 243.84f, 3 * 243.84f, "hip origin in host units");
    expectVec(hip->getEndPoint(), 0, 243.84f, 0, "hip end point");
    // X first, then Y: +Y turns to +Z, then to +X. Y first would give +Z.
    expectNear(hip->getOrientation().multVec(OvVec3(0, 1, 0)), 1, 0, 0, "bone orientation order XYZ");

    auto *joint = hip->getObject()->findModifier<OvPoserJoint>();
    ASSERT_TRUE(joint);
    EXPECT_FALSE(joint->bendingOn());
    EXPECT_TRUE(chest->getObject()->findModifier<OvPoserJoint>()->bendingOn());
    EXPECT_FALSE(hip->getShadowControl()->getValue());
    EXPECT_TRUE(chest->getShadowControl()->getValue());

    // Values given after the orientation line wait in the node item.
    expectVec(chest->getOrigin(), 0, 0, 0, "chest origin not pushed");
    expectVec(importer.findNodeItem(chest)->origin, 0, 243.84f, 0, "chest origin stored");
    expectVec(importer.findNodeItem(chest)->endPoint, 0, 2 * 243.84f, 0, "chest end point stored");

    EXPECT_TRUE(chest->isHidden());
    EXPECT_FALSE(chest->getSelectabilityControl()->getValue());
    EXPECT_FALSE(head->isHidden());
    EXPECT_TRUE(head->getSelectabilityControl()->getValue());
    EXPECT_FALSE(head->getVisibilityControl()->getValue());
}

TEST_F(PoserObjectSection, PropsFindTheirParents) {
    const QByteArray text = QByteArray("{\n") + kFigure +
                            "prop box\n{\nparent hip:1\norigin 0 1 0\norientation 10 20 30\non\n}\n"
                            "prop lamp\n{\nparent UNIVERSE\noff\n}\n"
                            "prop ring\n{\nsmartparent box\n}\n"
                            "prop tag\n{\nparent nowhere:1\n}\n"
                            "}\n";
    ASSERT_EQ(read(importer, file("scene.pz3", text)), 0u);
    expectSoundScene();
    OvSkeleton *skeleton = firstSkeleton();
    ASSERT_TRUE(skeleton);
    OvNode *hip = skeleton->findBone("hip");
    OvNode *box = hip->findNodeChild("box", false);
    ASSERT_TRUE(box) << "a prop goes under the named body part";
    EXPECT_EQ(topNode("box"), nullptr) << "and leaves the scene's top level";
    expectVec(box->getOrigin(), 0, 243.84f, 0, "the origin is pushed with the orientation");
    expectNear(box->getOrientation().multVec(OvVec3(0, 1, 0)), 0, 1, 0, "props keep no orientation");
    EXPECT_TRUE(box->getVisibilityControl()->getValue());

    OvNode *lamp = topNode("lamp");
    ASSERT_TRUE(lamp) << "UNIVERSE outside a hair file changes nothing";
    EXPECT_FALSE(lamp->getVisibilityControl()->getValue());
    ASSERT_TRUE(topNode("tag")) << "an unknown parent changes nothing";

    OvNode *ring = box->findNodeChild("ring", false);
    ASSERT_TRUE(ring) << "the smart parent is applied after reading";
    EXPECT_EQ(importer.findNodeItem(ring)->smartParent, box);

    // A hair file puts its hair on the head of the chosen figure; a bone selection is enough.
    OvApp::getScene()->setPrimarySelection(skeleton->findBone("chest"));
    Probe hairImporter;
    ASSERT_EQ(read(hairImporter, file("long.hr2", "{\nprop hair\n{\nparent UNIVERSE\n}\n}\n")), 0u);
    EXPECT_TRUE(skeleton->findBone("head")->findNodeChild("hair", false));
    EXPECT_EQ(OvApp::getScene()->getPrimarySelection(), skeleton->findBone("chest"));
    Probe propImporter;
    ASSERT_EQ(read(propImporter, file("cap.pp2", "{\nprop cap\n{\nparent UNIVERSE\n}\n}\n")), 0u);
    EXPECT_TRUE(topNode("cap")) << "only hair goes on the head";
    expectSoundScene();
}

TEST_F(PoserObjectSection, SmartParentsResolveOnTheSelectedFigure) {
    ASSERT_EQ(read(importer, file("fig.cr2", QByteArray("{\n") + kFigure + "}\n")), 0u);
    OvSkeleton *skeleton = firstSkeleton();
    OvApp::getScene()->setPrimarySelection(skeleton);
    Probe second;
    ASSERT_EQ(read(second, file("hat.pp2", "{\nprop hat\n{\nsmartparent head:1\n}\n"
                                           "prop cape\n{\nsmartparent BODY:1\n}\n"
                                           "prop self\n{\nsmartparent self\n}\n}\n")),
              0u);
    EXPECT_TRUE(skeleton->findBone("head")->findNodeChild("hat", false));
    EXPECT_TRUE(skeleton->findNodeChild("cape", false));
    ASSERT_TRUE(topNode("self")) << "a node is never its own smart parent";
    EXPECT_EQ(second.findNodeItem(topNode("self")), nullptr);
    expectSoundScene();
}

TEST_F(PoserObjectSection, LightTypeOneTurnsTheLightIntoASpotLightInPlace) {
    const QByteArray text = "{\n"
                            "light LIGHT_1\n{\norigin 0 1 0\n}\n"
                            "light LIGHT_2\n{\nlightType 0\noff\n}\n"
                            "light LIGHT_1\n{\nlightType 1\ncastsShadow 0\noff\n}\n"
                            "light LIGHT_3\n{\n}\n"
                            "light LIGHT_1\n{\nlightType 1\n}\n"
                            "}\n";
    ASSERT_EQ(read(importer, file("scene.pz3", text)), 0u);
    expectSoundScene();
    const QList<OvLight *> &lights = importer.lights();
    ASSERT_EQ(lights.size(), 3);
    EXPECT_TRUE(lights[0]->inherits("OvSpotLight"));
    EXPECT_EQ(lights[0]->getName(), QStringLiteral("LIGHT_1"));
    EXPECT_FALSE(lights[0]->getShadowControl()->getValue()) << "later lines reach the spot light";
    EXPECT_TRUE(lights[0]->getVisibilityControl()->getValue()) << "off leaves lights on";
    EXPECT_EQ(importer.findNodeItem(lights[0]), nullptr) << "the origin went to the light that was replaced";
    EXPECT_TRUE(lights[1]->inherits("OvDistantLight"));
    EXPECT_EQ(lights[1]->getName(), QStringLiteral("LIGHT_2"));
    EXPECT_EQ(lights[2]->getName(), QStringLiteral("LIGHT_3"));
    EXPECT_EQ(OvApp::getScene()->getNumNodes(), 3) << "the distant light is gone";
    EXPECT_TRUE(OvApp::getScene()->contains(lights[0]));
}

TEST_F(PoserObjectSection, DeformerPropsAreWiredTogether) {
    const QByteArray text = QByteArray("{\n") + kFigure +
                            "baseProp Base_1\n{\nparent hip:1\n}\n"
                            "sphereZoneProp Zone_1\n{\nnewFalloffCurve\nfalloffCpt 1 0\nfalloffCpt 0 1\n"
                            "falloffCpt 0.5\nendFalloffCurve\n}\n"
                            "magnetDeformerProp Mag_1\n{\nbaseProp Base_1:1\naddZone Zone_1\naddZone Base_1\n"
                            "deformTarget chest:1\n}\n"
                            "sphereZoneProp Zone_1\n{\nparent Mag_1\n}\n"
                            "baseProp Base_1\n{\ndeformerProp Mag_1\n}\n"
                            "}\n";
    ASSERT_EQ(read(importer, file("scene.pz3", text)), 0u);
    EXPECT_EQ(logText(), QStringLiteral("info: Null object found"));
    expectSoundScene();
    OvNode *hip = firstSkeleton()->findBone("hip");
    auto *base = qobject_cast<OvDFormBase *>(hip->findNodeChild("Base_1", false));
    ASSERT_TRUE(base) << "a deformer finds its parent in the figure";
    auto *magnet = qobject_cast<OvDForm *>(base->findNodeChild("Mag_1", false));
    ASSERT_TRUE(magnet) << "deformerProp puts the magnet under its base";
    auto *zone = qobject_cast<OvDFormZone *>(magnet->findNodeChild("Zone_1", false));
    ASSERT_TRUE(zone) << "a deformer finds a parent among the scene items";
    EXPECT_EQ(magnet->getBase(), base);
    ASSERT_EQ(magnet->getZones().size(), 1u) << "only zones are added as zones";
    EXPECT_EQ(magnet->getZones()[0], zone);

    const OvNaturalSpline *curve = zone->getSpline();
    ASSERT_EQ(curve->getNumPoints(), 2) << "a point without its y is skipped";
    EXPECT_EQ(curve->getPoint(0), std::make_pair(0.0f, 1.0f));
    EXPECT_EQ(curve->getPoint(1), std::make_pair(1.0f, 0.0f));

    // Outside a pose the target's own channels bind the magnet; deformTarget adds nothing.
    const OvObject *chest = firstSkeleton()->findBone("chest")->getObject();
    ASSERT_EQ(chest->getNumModifiers(), 1);
    EXPECT_EQ(chest->findModifier<OvDFormModifier>(), nullptr);
}

TEST_F(PoserObjectSection, PoseBindsAMagnetOfTheFollowedFigureToTheSelectedFigure) {
    const QByteArray text = QByteArray("{\n") + kFigure +
                            "actor hip:2\n{\n}\nactor chest:2\n{\nparent hip:2\n}\n"
                            "actor BODY:2\n{\nconformingTarget BODY:1\n}\n"
                            "magnetDeformerProp Mag_1\n{\nparent hip:1\n}\n"
                            "}\n";
    ASSERT_EQ(read(importer, file("scene.pz3", text)), 0u);
    auto *first = qobject_cast<OvSkeleton *>(importer.getSkeleton(1, false));
    auto *second = qobject_cast<OvSkeleton *>(importer.getSkeleton(2, false));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(second->getFollowTarget(), first);
    auto *magnet = qobject_cast<OvDForm *>(first->findBone("hip")->findNodeChild("Mag_1", false));
    ASSERT_TRUE(magnet);
    // A joint modifier already sits on the part; deformer modifiers go ahead of it.
    OvObject *chest = second->findBone("chest")->getObject();
    ASSERT_EQ(chest->getNumModifiers(), 1);

    OvApp::getScene()->setPrimarySelection(second);
    Probe pose;
    const QByteArray poseText =
        "{\nmagnetDeformerProp Mag_1\n{\ndeformTarget chest:1\ndeformTarget nothing\n}\n}\n";
    ASSERT_EQ(read(pose, file("mag.pz2", poseText)), 0u);
    ASSERT_EQ(chest->getNumModifiers(), 2);
    auto *binding = dynamic_cast<OvDFormModifier *>(chest->getModifier(0));
    ASSERT_TRUE(binding);
    EXPECT_EQ(binding->getName(), QStringLiteral("Mag_1"));
    EXPECT_EQ(binding->getDForm(), magnet);
    EXPECT_TRUE(dynamic_cast<OvPoserJoint *>(chest->getModifier(1)));

    // The same pose again reuses the binding.
    Probe again;
    ASSERT_EQ(read(again, file("mag.pz2", poseText)), 0u);
    EXPECT_EQ(chest->getNumModifiers(), 2);
    EXPECT_EQ(first->findBone("chest")->getObject()->getNumModifiers(), 1)
        << "the followed figure is untouched";
}

TEST_F(PoserObjectSection, MaterialLinesOpenTheRightMaterial) {
    OvApp::getContentMgr()->addPoserDirectory(dir.path());
    file("Runtime/Geometries/fig.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nvt 0 0\n"
                                       "g hip\nusemtl skin\nf 1/1 2/1 3/1\nusemtl cloth\nf 1/1 3/1 4/1\n"
                                       "g chest\nusemtl skin\nf 2/1 3/1 4/1\n");
    file("Runtime/Geometries/box.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nusemtl wood\nf 1/1 2/1 3/1\n");
    const QByteArray text = "{\nfigureResFile :Runtime:Geometries:fig.obj\n"
                            "actor hip:1\n{\ngeomHandlerGeom 13 hip\ngeomHandlerGeom 13 chest\n"
                            "material skin\n{\nhidden 1\n}\nmaterial none\n{\nhidden 1\n}\n}\n"
                            "actor chest:1\n{\ngeomHandlerGeom 13 chest\n}\n"
                            "actor lHand:1\n{\n}\n"
                            "prop box\n{\nobjFileGeom 0 0 :Runtime:Geometries:box.obj\n}\n}\n";
    ASSERT_EQ(read(importer, file("fig.cr2", text)), 0u) << qPrintable(logText());
    EXPECT_EQ(logText(), QString());
    expectSoundScene();
    OvSkeleton *skeleton = firstSkeleton();
    OvNode *hip = skeleton->findBone("hip"), *chest = skeleton->findBone("chest");
    ASSERT_TRUE(shapeOf(hip, 1) && shapeOf(chest));
    EXPECT_FALSE(hip->isHidden()) << "material blocks are sections of their own";

    const OvTSharedPointer<OvMaterial> figureSkin = importer.sceneItems()[0].findMaterial("skin");
    OvMaterial *hipSkin = shapeOf(hip, 0)->findMaterial("skin");
    ASSERT_TRUE(figureSkin && hipSkin);
    EXPECT_NE(hipSkin, figureSkin.get()) << "the body part gets a material of its own";
    EXPECT_TRUE(dynamic_cast<OvDefaultMaterial *>(hipSkin));
    EXPECT_EQ(shapeOf(hip, 1)->findMaterial("skin"), hipSkin) << "one new material for every shape";
    EXPECT_EQ(shapeOf(chest)->findMaterial("skin"), figureSkin.get()) << "other parts keep the shared one";
    EXPECT_EQ(shapeOf(hip, 0)->findMaterial("cloth"), importer.sceneItems()[0].findMaterial("cloth").get());

    // The modes the following block is read in.
    ASSERT_TRUE(importer.line(hip, skeleton, "material cloth"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeMaterial);
    EXPECT_EQ(importer.material(), shapeOf(hip, 0)->findMaterial("cloth"));
    ASSERT_TRUE(importer.line(hip, skeleton, "material none"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeIgnore);
    EXPECT_EQ(importer.material(), nullptr);
    ASSERT_TRUE(importer.line(skeleton->findBone("lHand"), skeleton, "material skin"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeIgnore) << "a part without shapes has no materials";

    OvNode *box = topNode("box");
    ASSERT_TRUE(shapeOf(box));
    ASSERT_TRUE(importer.line(box, box, "material wood"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeMaterial);
    EXPECT_EQ(importer.material(), shapeOf(box)->findMaterial("wood")) << "props use the item's material";
    ASSERT_TRUE(importer.line(box, box, "material stone"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeIgnore);
    EXPECT_EQ(importer.material(), nullptr);
}

TEST_F(PoserObjectSection, PosesSwapOtherMaterialsForStandardCopies) {
    // A prop already in the scene, with a material the host did not make as a standard one.
    auto *crate = new OvNode;
    crate->setName("crate");
    crate->setObject(new OvObject);
    auto *shape = new OvShape;
    auto *plain = new OvMaterial;
    plain->setName("wood");
    plain->setLabel("Oak");
    shape->addMaterial(plain);
    crate->getObject()->addShape(shape);
    OvApp::getScene()->addNode(crate);
    OvApp::getScene()->setPrimarySelection(crate);

    ASSERT_EQ(read(importer, file("crate.pz2", "{\nprop crate\n{\nmaterial wood\n{\n}\n}\n}\n")), 0u);
    auto *copy = dynamic_cast<OvDefaultMaterial *>(shape->getMaterial(0));
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->getName(), QStringLiteral("wood"));
    EXPECT_EQ(copy->getLabel(), QStringLiteral("Oak"));
    const OvPz3SceneItem *item = nullptr;
    for (int i = 0; i < importer.sceneItems().size(); ++i)
        if (importer.sceneItems()[i].node == crate)
            item = &importer.sceneItems()[i];
    ASSERT_TRUE(item);
    ASSERT_EQ(item->materials.size(), 1) << "the copy takes the old material's place in the item";
    EXPECT_EQ(item->materials[0].get(), copy);

    // On a figure every bone gets the one copy.
    auto *skeleton = new OvSkeleton;
    OvMaterial *skin = new OvMaterial;
    skin->setName("skin");
    for (const char *name : {"hip", "chest"}) {
        auto *bone = new OvBone;
        bone->setName(name);
        bone->setObject(new OvObject);
        bone->getObject()->addShape(new OvShape);
        bone->getObject()->getShape(0)->addMaterial(skin);
        skeleton->addNodeChild(bone);
    }
    OvApp::getScene()->addNode(skeleton);
    OvApp::getScene()->setPrimarySelection(skeleton);
    Probe probe;
    probe.setApplyToSelection(true);
    ASSERT_EQ(probe.getSelectedSkeleton(), skeleton);
    const OvTSharedPointer<OvMaterial> resolved = probe.resolveMaterial(skeleton, "skin");
    ASSERT_TRUE(dynamic_cast<OvDefaultMaterial *>(resolved.get()));
    EXPECT_EQ(shapeOf(skeleton->findBone("hip"))->getMaterial(0), resolved.get());
    EXPECT_EQ(shapeOf(skeleton->findBone("chest"))->getMaterial(0), resolved.get());
    EXPECT_EQ(probe.resolveMaterial(skeleton, "skin"), resolved);
}

TEST_F(PoserObjectSection, MissingArgumentsStopTheImportExceptForName) {
    const struct {
        const char *line, *message;
    } cases[] = {
        {"parent", "No actor part was specified"},
        {"nonInkyParent", "No actor part was specified"},
        {"origin 1 2", "Insufficient arguments for origin"},
        {"endPoint 1", "Insufficient arguments for endPoint"},
        {"orientation 1 2", "Insufficient arguments"},
        {"material", "No material name was specified"},
        {"conformingTarget", "No conforming target was specified"},
        {"bend", "No bend type was specified"},
        {"castsShadow", "No shadow value was specified"},
        {"lightType", "No light type identifier was specified"},
        {"hidden", "Insufficient Arguments"},
    };
    for (const auto &c : cases) {
        OvApp::reset();
        Probe fresh;
        const QString path =
            file("stop.pz3", QByteArray("{\nlight L\n{\n") + c.line + "\n}\n}\nprop after\n{\n}\n");
        EXPECT_EQ(read(fresh, path), unsigned(OvImporter::ResultStopped)) << c.line;
        EXPECT_EQ(logText(), QStringLiteral("error: %1 on line 4 in %2").arg(c.message, path)) << c.line;
        EXPECT_EQ(topNode("after"), nullptr) << c.line;
    }

    OvApp::reset();
    const QString path = file("go.pp2", "{\nprop box\n{\nname\nsubdivision\nfalloffCpt 1\nhidden 1\n}\n}\n");
    EXPECT_EQ(read(importer, path), 0u);
    EXPECT_EQ(logText(), QStringLiteral("info: No name specified on line 4 in %1").arg(path));
    ASSERT_TRUE(topNode("box"));
    EXPECT_TRUE(topNode("box")->isHidden()) << "reading goes on after the warning";
}

TEST_F(PoserObjectSection, SubdivisionIsRecordedForPropsOnly) {
    ASSERT_EQ(read(importer, file("fig.cr2", QByteArray("{\n") + kFigure + "prop box\n{\n}\n}\n")), 0u);
    OvSkeleton *skeleton = firstSkeleton();
    OvNode *box = topNode("box");
    ASSERT_TRUE(box);
    EXPECT_TRUE(importer.line(box, box, "subdivision 2"));
    EXPECT_TRUE(importer.line(box, box, "subdivision 0"));
    EXPECT_TRUE(importer.line(box, box, "subdivision"));
    EXPECT_TRUE(importer.line(skeleton->findBone("hip"), skeleton, "subdivision 3"));
    EXPECT_TRUE(importer.line(skeleton, skeleton, "subdivision -1"));
    ASSERT_EQ(importer.subDNodes().size(), 2);
    EXPECT_EQ(importer.subDNodes()[0].node, box);
    EXPECT_EQ(importer.subDNodes()[0].level, 2);
    EXPECT_EQ(importer.subDNodes()[1].node, skeleton);
    EXPECT_EQ(importer.subDNodes()[1].level, -1);

    EXPECT_TRUE(importer.line(box, box, "channels"));
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeChannels);
}

} // namespace
