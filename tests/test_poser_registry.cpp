// The node registry and the top-level sections: figure numbers, unique labels, bones, props,
// lights, cameras, hand renaming and selection mode.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <OvSubDShape.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <poser/OvPZ3Importer.h>

namespace {

// Reaches the per-read fields that the top-level sections and pose preparation normally set.
class RegistryImporter : public OvPZ3Importer {
public:
    void figureGeometry(const QString &name, int vertices) {
        m_figureResName = name;
        m_figureVertexCount = vertices;
    }
    void selectionMode(bool on) { m_applyToSelection = on; }
    void handSide(int side) { m_handSide = Pz3HandSide(side); }
    int fileHandSide() const { return int(m_fileHandSide); }
    void figureBaseName(const QString &name) { m_figureBaseName = name; }
    OvTArray<OvPz3SceneItem> &items() { return m_sceneItems; }
};

class Registry : public ::testing::Test {
protected:
    void SetUp() override { OvApp::reset(); }
    OvScene *scene() { return OvApp::getScene(); }
    RegistryImporter importer;
};

TEST_F(Registry, FigureNumbers) {
    QString name = "hip:2";
    EXPECT_EQ(OvPZ3Importer::stripFigureNumber(name), 2);
    EXPECT_EQ(name, QStringLiteral("hip"));
    name = "hip:x";
    EXPECT_EQ(OvPZ3Importer::stripFigureNumber(name), 0);
    EXPECT_EQ(name, QStringLiteral("hip"));
    name = ":1";
    EXPECT_EQ(OvPZ3Importer::stripFigureNumber(name), -1);
    EXPECT_EQ(name, QStringLiteral(":1"));
    name = "box";
    EXPECT_EQ(OvPZ3Importer::stripFigureNumber(name), -1);
    name = "a:1:2";
    EXPECT_EQ(OvPZ3Importer::stripFigureNumber(name), 0) << "\"1:2\" is not a number";
    EXPECT_EQ(name, QStringLiteral("a"));
}

TEST_F(Registry, UniqueLabelsSkipDeformers) {
    EXPECT_EQ(importer.makeUniqueLabel("box"), QStringLiteral("box"));
    auto *zone = new OvDFormZone;
    zone->setLabel("box");
    scene()->addNode(zone);
    EXPECT_EQ(importer.makeUniqueLabel("box"), QStringLiteral("box")) << "a deformer's label does not clash";
    auto *plain = new OvNode;
    plain->setLabel("ball");
    scene()->addNode(plain);
    auto *child = new OvNode;
    child->setLabel("ball (2)");
    plain->addNodeChild(child);
    EXPECT_EQ(importer.makeUniqueLabel("ball"), QStringLiteral("ball (3)")) << "labels deep in the tree count";
}

TEST_F(Registry, SkeletonsByFigureNumber) {
    importer.figureGeometry("man", 2906);
    OvNode *three = importer.getSkeleton(3, true);
    ASSERT_NE(three, nullptr);
    EXPECT_TRUE(three->inherits("OvSkeleton"));
    EXPECT_EQ(three->getName(), QStringLiteral("man_2906"));
    EXPECT_EQ(three->getLabel(), QStringLiteral("man"));
    EXPECT_EQ(importer.getSkeleton(3, true), three);
    EXPECT_EQ(importer.getSkeleton(4, false), nullptr);
    EXPECT_EQ(scene()->getNumNodes(), 1);
    ASSERT_EQ(importer.sceneItems().size(), 1);
    EXPECT_EQ(importer.sceneItems()[0].figureNumber, 3);
    EXPECT_TRUE(importer.sceneItems()[0].created);

    // The figure file's own name labels the first skeleton only; labels stay unique.
    importer.figureBaseName("Judy");
    EXPECT_EQ(importer.getSkeleton(5, true)->getLabel(), QStringLiteral("Judy"));
    EXPECT_EQ(importer.getSkeleton(6, true)->getLabel(), QStringLiteral("man (2)"));
    importer.selectionMode(true);
    EXPECT_EQ(importer.getSkeleton(7, true), nullptr) << "selection mode makes nothing";
}

TEST_F(Registry, BonesAreMadeOnceWithAJoint) {
    OvNode *figure = importer.getSkeleton(1, true);
    EXPECT_EQ(importer.getNode(figure, "BODY"), figure);
    OvNode *hip = importer.getNode(figure, "hip");
    ASSERT_NE(hip, nullptr);
    EXPECT_TRUE(hip->inherits("OvBone"));
    EXPECT_EQ(hip->getNodeParent(), figure);
    EXPECT_TRUE(hip->getLabel().isEmpty());
    ASSERT_NE(hip->getObject(), nullptr);
    EXPECT_EQ(hip->getObject()->getName(), QStringLiteral("hip"));
    ASSERT_EQ(hip->getObject()->getNumModifiers(), 1);
    EXPECT_NE(dynamic_cast<OvPoserJoint *>(hip->getObject()->getModifier(0)), nullptr);
    EXPECT_EQ(importer.getNode(figure, "hip"), hip);
    EXPECT_EQ(importer.getNode(nullptr, "hip"), nullptr);

    importer.selectionMode(true);
    EXPECT_EQ(importer.getNode(figure, "chest"), nullptr);
    EXPECT_EQ(figure->getNumNodeChildren(), 1);
}

TEST_F(Registry, HandPosesRenameTheFirstLetter) {
    OvNode *figure = importer.getSkeleton(1, true);
    OvNode *left = importer.getNode(figure, "lHand");
    OvNode *right = importer.getNode(figure, "rHand");
    importer.handSide(1);
    EXPECT_EQ(importer.getNode(figure, "rHand"), left);
    EXPECT_EQ(importer.fileHandSide(), 0);
    importer.handSide(0);
    EXPECT_EQ(importer.getNode(figure, "lHand"), right);
    EXPECT_EQ(importer.fileHandSide(), 1);
    EXPECT_EQ(importer.getNode(figure, "BODY"), figure) << "BODY is never renamed";
}

TEST_F(Registry, PropsByNameAndKind) {
    auto *existing = new OvNode;
    existing->setLabel("box");
    scene()->addNode(existing);
    OvNode *box = importer.getPropNode("box", PropPlain);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->getLabel(), QStringLiteral("box (2)"));
    EXPECT_EQ(box->getName(), QStringLiteral("box (2)"));
    EXPECT_EQ(importer.getPropNode("box", PropPlain), box) << "found again under its Poser name";
    EXPECT_TRUE(importer.getPropNode("mag", PropDForm)->inherits("OvDForm"));
    EXPECT_TRUE(importer.getPropNode("base", PropDFormBase)->inherits("OvDFormBase"));
    EXPECT_TRUE(importer.getPropNode("zone", PropDFormZone)->inherits("OvDFormZone"));
    EXPECT_EQ(importer.findSceneItemByName("box")->node, box);
}

TEST_F(Registry, SelectionModeFindsUnderTheSelectedFigure) {
    auto *skeleton = new OvSkeleton;
    auto *bone = new OvBone;
    bone->setName("hip");
    auto *hat = new OvNode;
    hat->setName("hat");
    skeleton->addNodeChild(bone);
    bone->addNodeChild(hat);
    scene()->addNode(skeleton);
    importer.selectionMode(true);
    EXPECT_EQ(importer.getPropNode("hat", PropPlain), nullptr) << "nothing selected";
    scene()->setPrimarySelection(bone);
    EXPECT_EQ(importer.getSelectedSkeleton(), skeleton);
    EXPECT_EQ(importer.getPropNode("hat", PropPlain), hat);
    EXPECT_EQ(importer.getPropNode("cane", PropPlain), nullptr);

    // A magnet missing under the figure is looked for on the figure it follows.
    auto *followed = new OvSkeleton;
    auto *magnet = new OvDForm;
    magnet->setName("mag");
    followed->addNodeChild(magnet);
    scene()->addNode(followed);
    skeleton->setFollowTarget(followed);
    EXPECT_EQ(importer.getPropNode("mag", PropDForm), magnet);
    EXPECT_EQ(importer.getPropNode("mag", PropPlain), nullptr) << "only magnets look there";
    EXPECT_EQ(scene()->getNumNodes(), 2) << "nothing was made";
}

TEST_F(Registry, LightsAndCameras) {
    OvLight *light = importer.getLight("LIGHT_1");
    EXPECT_TRUE(light->inherits("OvDistantLight"));
    EXPECT_EQ(importer.getLight("LIGHT_1"), light);
    EXPECT_EQ(importer.getCamera("SHADOW_CAM_LITE_1"), nullptr);
    EXPECT_EQ(importer.getCamera("TOP_CAMERA"), nullptr);
    OvBasicCamera *main = importer.getCamera("MAIN_CAMERA");
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(main->getCameraType(), 6);
    EXPECT_EQ(importer.getCamera("MAIN_CAMERA"), main);
    EXPECT_EQ(importer.cameras().size(), 1);
    EXPECT_EQ(scene()->getNumNodes(), 2);
}

TEST_F(Registry, PreviewMaterialFallsBackToDefault) {
    auto *node = new OvNode;
    auto *object = new OvObject;
    auto *shape = new OvPolyShape;
    auto *material = new OvDefaultMaterial;
    material->setName("default");
    shape->addMaterial(material);
    object->addShape(shape);
    node->setObject(object);
    scene()->addNode(node);
    OvPz3SceneItem item(node, false, true);
    EXPECT_EQ(item.findMaterial("Preview").get(), material);
    EXPECT_EQ(item.findMaterial("default").get(), material);
    EXPECT_FALSE(item.findMaterial("skin"));
}

// ---- through files ----

class TopLevel : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
    }
    unsigned read(const QString &name, const QByteArray &text) {
        path = writeFile(dir, name, text);
        return importer.read(path, OvFileIOSettings());
    }
    OvScene *scene() { return OvApp::getScene(); }
    QTemporaryDir dir;
    QString path;
    OvPZ3Importer importer;
};

TEST_F(TopLevel, NullFigureGeometryAndRepeatedSections) {
    EXPECT_EQ(read("a.pz3", "{\nfigureResFile none\nactor hip:1\n{\n}\nactor hip:1\n{\n}\nactor UNIVERSE\n{\nversion\n"
                            "{\nnumber 2\n}\n}\nprop box\n{\n}\nprop box\n{\n}\nlight LIGHT_1\n{\n}\n"
                            "camera SHADOW_CAM_LITE_1\n{\n}\ncamera MAIN_CAMERA\n{\n}\ncamera MAIN_CAMERA\n{\n}\n}\n"),
              0u);
    EXPECT_EQ(logText(), QStringLiteral("info: Null object found"));
    ASSERT_EQ(scene()->getNumNodes(), 4) << "figure, box, light, camera";
    OvNode *figure = scene()->getNode(0);
    EXPECT_EQ(figure->getName(), QStringLiteral("NULL_0"));
    EXPECT_EQ(figure->getNumNodeChildren(), 1) << "one hip";
    EXPECT_EQ(scene()->getNode(1)->getLabel(), QStringLiteral("box"));
    EXPECT_TRUE(scene()->getNode(2)->inherits("OvDistantLight"));
    EXPECT_TRUE(scene()->getNode(3)->inherits("OvBasicCamera"));
    EXPECT_EQ(importer.version(), 2.0f) << "the UNIVERSE section's lines are read at the top level";
    for (int i = 0; i < 2; ++i) {
        auto *data = dynamic_cast<OvSourceFileData *>(scene()->getNode(i)->findDataItem("SourceFileData"));
        ASSERT_NE(data, nullptr) << i;
        EXPECT_EQ(data->getSourceFilePath(), path);
    }
    EXPECT_TRUE(checkSceneInvariants(*scene()).isEmpty()) << qPrintable(checkSceneInvariants(*scene()).join('\n'));
}

TEST_F(TopLevel, MissingArgumentsAndMissingGeometryStopTheRead) {
    EXPECT_EQ(read("b.cr2", "actor\nversion\n{\nnumber 3\n}\n"), 0x62u);
    EXPECT_EQ(logText(), QStringLiteral("error: No actor part was specified on line 1 in ") + path);
    EXPECT_EQ(importer.version(), 4.0f) << "nothing after the failing line is read";

    OvApp::clearLog();
    EXPECT_EQ(read("c.cr2", "figureResFile :Runtime:Geometries:gone.obj\nactor hip:1\n{\n}\n"), 0x62u);
    EXPECT_EQ(logText(), QStringLiteral("error: Error loading figureResFile on line 1 in ") + path);
    EXPECT_EQ(scene()->getNumNodes(), 0);

    for (const char *line : {"prop\n", "light\n", "camera\n", "baseProp\n", "magnetDeformerProp\n", "sphereZoneProp\n",
                             "figureResFile\n", "morphBinaryFile\n"}) {
        OvApp::clearLog();
        EXPECT_EQ(read("d.pz3", line), 0x62u) << line;
        EXPECT_EQ(OvApp::log().size(), 1) << line;
    }
}

TEST_F(TopLevel, DeformerPropsOfTheWrongKindAreSkipped) {
    // "mag" is first made as a plain prop, so the magnet section that names it is skipped.
    EXPECT_EQ(read("e.pz3", "prop mag\n{\n}\nmagnetDeformerProp mag\n{\nversion\n{\nnumber 5\n}\n}\n"
                            "sphereZoneProp zone:1\n{\n}\n"),
              0u);
    EXPECT_EQ(importer.version(), 5.0f) << "the skipped section's lines fall back to the top level";
    ASSERT_EQ(scene()->getNumNodes(), 2);
    EXPECT_TRUE(scene()->getNode(1)->inherits("OvDFormZone"));
    EXPECT_EQ(scene()->getNode(1)->getLabel(), QStringLiteral("zone"));
}

TEST_F(TopLevel, SubdivisionRequestsAreAppliedAfterReading) {
    EXPECT_EQ(read("f.pz3", "prop cube\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\nsubdivision 2\n}\n"
                            "prop flat\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\nsubdivision 0\n}\n"),
              0u);
    ASSERT_EQ(scene()->getNumNodes(), 2) << qPrintable(logText());
    EXPECT_EQ(OvSubDShape::subDivisionLevel(scene()->getNode(0)), 2);
    EXPECT_EQ(OvSubDShape::subDivisionLevel(scene()->getNode(1)), 0) << "level 0 asks for nothing";
    EXPECT_EQ(importer.subDNodes().size(), 1) << "the requests stay listed after the read";
}

} // namespace
