// The node registry and the top-level sections through real files: figures, bones, props, lights
// and cameras, poses on the selection, and what one importer carries from one file to the next.
#include "PoserTest.h"

#include <OvDeformers.h>
#include <OvLight.h>
#include <OvSubDShape.h>

namespace {

using Registry = PoserTest;

const QByteArray kMan = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\ng hip\nf 1 2 3\ng chest\nf 1 3 4\n";

OvNode *addNode(OvNode *node, const char *label, OvNode *parent = nullptr) {
    node->setLabel(label);
    node->setName(label);
    if (parent)
        parent->addNodeChild(node);
    else
        OvApp::getScene()->addNode(node);
    return node;
}

TEST_F(Registry, FigureNumbers) {
    auto strip = [](QString name) {
        const int number = OvPZ3Importer::stripFigureNumber(name);
        return name + "|" + QString::number(number);
    };
    EXPECT_EQ(QStringList({strip("hip:2"), strip("hip:x"), strip(":1"), strip("box"), strip("a:1:2")}),
              QStringList({"hip|2", "hip|0", ":1|-1", "box|-1", "a|0"}));
}

TEST_F(Registry, FiguresAreNamedAfterTheirGeometryAndLabelledUniquely) {
    geometry("man.obj", kMan);
    addNode(new OvNode, "man");
    addNode(new OvDFormZone, "Judy"); // a deformer's label does not clash
    ASSERT_TRUE(readOk("Judy.cr2",
                       "figureResFile :Runtime:Geometries:man.obj\nactor hip:3\n{\n}\nactor hip:3\n{\n}\n"
                       "actor BODY:3\n{\nhidden 1\n}\nactor hip:5\n{\n}\nactor chest:6\n{\n}\n"));
    ASSERT_EQ(scene()->getNumNodes(), 5);
    const char *labels[] = {"Judy", "man (2)", "man (3)"};
    for (int i = 0; i < 3; ++i) {
        auto *figure = qobject_cast<OvSkeleton *>(scene()->getNode(2 + i));
        ASSERT_TRUE(figure);
        EXPECT_EQ(figure->getName(), QStringLiteral("man_4"));
        EXPECT_EQ(figure->getLabel(), QString(labels[i])) << "the file's name labels the first figure only";
        EXPECT_EQ(figure->getNumNodeChildren(), 1) << "a second actor hip:3 finds the bone again";
        EXPECT_EQ(figure->isHidden(), i == 0) << "BODY is the figure itself";
    }
}

// The current geometry belongs to the file that named it: a second figure file read by the same
// importer without figureResFile has nothing to cut its body parts from.
TEST_F(Registry, OneImporterTwoFiguresTheSecondWithoutGeometry) {
    geometry("man.obj", kMan);
    geometry("old.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"); // no groups
    // The last figureResFile of a file is the one its figures are cut from.
    ASSERT_TRUE(readOk(
        "man.cr2", "figureResFile :Runtime:Geometries:old.obj\nfigureResFile :Runtime:Geometries:man.obj\n"
                   "actor hip:1\n{\ngeomHandlerGeom 13 hip\n}\n"));
    const OvShape *hip = lastShape(skeleton("man")->findBone("hip"));
    ASSERT_TRUE(hip && hip->getGeometry());
    ASSERT_TRUE(readOk("bare.cr2", "actor hip:1\n{\ngeomHandlerGeom 13 hip\n}\n"));
    OvSkeleton *bare = skeleton("bare");
    ASSERT_TRUE(bare && bare->findBone("hip"));
    EXPECT_EQ(bare->findDataItem("GeomSourceFileData"), nullptr);
    EXPECT_EQ(lastShape(bare->findBone("hip")), nullptr);
}

// Sections that name a node again find it; the lines of sections without a node (UNIVERSE, a
// deformer prop whose name a plain prop took, skipped cameras) are read at the top level.
TEST_F(Registry, TopLevelSectionsFindOrMakeTheirNodes) {
    addNode(new OvNode, "box");
    ASSERT_TRUE(readOk(
        "a.pz3", "{\nfigureResFile none\nactor hip:1\n{\n}\nactor hip:1\n{\nsubdivision 3\n}\n"
                 "actor BODY:1\n{\nsubdivision -1\n}\nactor UNIVERSE\n{\nprop u\n{\n}\n}\n"
                 "prop box:1\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\nsubdivision 2\n}\n"
                 "prop box\n{\nsubdivision 0\n}\nprop mag\n{\n}\nmagnetDeformerProp mag\n{\nprop m\n{\n}\n}\n"
                 "sphereZoneProp zone:1\n{\n}\nbaseProp base\n{\n}\nmagnetDeformerProp pull\n{\n}\n"
                 "light LIGHT_1\n{\nlightType 1\ncastsShadow 0\noff\n}\nlight LIGHT_2\n{\nlightType 0\n}\n"
                 "light LIGHT_1\n{\n}\ncamera SHADOW_CAM_LITE_1\n{\nprop s\n{\n}\n}\n"
                 "camera TOP_CAMERA\n{\n}\ncamera MAIN_CAMERA\n{\n}\ncamera MAIN_CAMERA\n{\n}\n}\n"));
    EXPECT_EQ(logText(), QStringLiteral("info: Null object found"));
    QStringList labels;
    for (int i = 0; i < scene()->getNumNodes(); ++i)
        labels << scene()->getNode(i)->getLabel() + "/" + scene()->getNode(i)->getName();
    ASSERT_EQ(labels,
              QStringList({"box/box", "NULL/NULL_0", "u/u", "box (2)/box (2)", "mag/mag", "m/m", "zone/zone",
                           "base/base", "pull/pull", "/LIGHT_1", "/LIGHT_2", "s/s", "/MAIN_CAMERA"}));
    EXPECT_EQ(scene()->getNode(1)->getNumNodeChildren(), 1);
    EXPECT_FALSE(labelled("mag")->inherits("OvDForm"));
    EXPECT_TRUE(labelled("zone")->inherits("OvDFormZone") && labelled("base")->inherits("OvDFormBase") &&
                labelled("pull")->inherits("OvDForm"));
    // lightType 1 turns the light into a spot light, which the later lines and sections reach.
    OvNode *spot = scene()->getNode(9);
    EXPECT_TRUE(spot->inherits("OvSpotLight") && scene()->getNode(10)->inherits("OvDistantLight"));
    EXPECT_TRUE(!spot->getShadowControl()->getValue() && spot->getVisibilityControl()->getValue())
        << "off leaves lights on";
    EXPECT_EQ(qobject_cast<OvBasicCamera *>(scene()->getNode(12))->getCameraType(), 6);
    // Subdivision: props and figures record their level, bones and level 0 nothing.
    EXPECT_EQ(OvSubDShape::subDivisionLevel(labelled("box (2)")), 2);
    ASSERT_EQ(importer.subDNodes().size(), 2);
    EXPECT_EQ(importer.subDNodes()[0].node, scene()->getNode(1));
    EXPECT_EQ(importer.subDNodes()[0].level, -1);
}

TEST_F(Registry, PosesFindTheirNodesUnderTheSelectedFigureAndMakeNothing) {
    auto *figure = qobject_cast<OvSkeleton *>(addNode(new OvSkeleton, "fig"));
    OvNode *hip = addNode(new OvBone, "hip", figure);
    OvNode *hat = addNode(new OvNode, "hat", hip);
    auto *followed = qobject_cast<OvSkeleton *>(addNode(new OvSkeleton, "other"));
    OvNode *magnet = addNode(new OvDForm, "mag", followed);
    figure->setFollowTarget(followed);
    const QByteArray pose =
        "actor hip:1\n{\nhidden 1\n}\nactor chest:1\n{\n}\nprop hat\n{\nhidden 1\n}\n"
        "prop cane\n{\n}\nmagnetDeformerProp mag\n{\nhidden 1\n}\nprop mag\n{\nhidden 0\n}\n";
    ASSERT_TRUE(readOk("p.pz2", pose));
    EXPECT_FALSE(hip->isHidden() || hat->isHidden() || magnet->isHidden()) << "nothing is selected";
    scene()->setPrimarySelection(hip);
    ASSERT_TRUE(readOk("p.pz2", pose));
    EXPECT_TRUE(hip->isHidden() && hat->isHidden());
    EXPECT_TRUE(magnet->isHidden()) << "a magnet missing under the figure is found on the figure it follows";
    EXPECT_EQ(figure->findBone("chest"), nullptr);
    EXPECT_EQ(scene()->getNumNodes(), 2);
    EXPECT_EQ(hip->getNumNodeChildren(), 1);
}

} // namespace
