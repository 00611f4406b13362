// Object sections of Poser files (actors, props, lights, deformer props), read through real files.
#include "PoserTest.h"

#include <OvDeformers.h>
#include <OvModifiers.h>

namespace {

using ObjectSection = PoserTest;

// A figure whose bones hip, chest, head and lHand carry the figure number 1.
const QByteArray kFigure = "figureResFile none\nactor hip:1\n{\n}\nactor chest:1\n{\nparent hip:1\n}\n"
                           "actor head:1\n{\nparent chest:1\n}\nactor lHand:1\n{\n}\n";

// How far `v` lies from (x, y, z).
float off(const OvVec3 &v, float x, float y, float z) {
    return (v - OvVec3(x, y, z)).length();
}

TEST_F(ObjectSection, FigurePartsArePlacedAndFlagged) {
    ASSERT_TRUE(
        readOk("fig.cr2",
               kFigure + "actor hip:1\n{\norigin 0.5 -2 3\nendPoint 0 1 0\norientation 90 90 0\nbend 0\n"
                         "castsShadow 0\nchannels\n{\nhidden 1\n}\n}\nactor chest:1\n{\n"
                         "orientation 0 0 0\norigin 0 1 0\nendPoint 0 2 0\nhidden 1\nsomeFutureKeyword 1\n}\n"
                         "actor head:1\n{\nhidden 0\noff\n}\nactor BODY:1\n{\nparent head:1\noff\n}\n"));
    OvSkeleton *figure = skeleton("fig");
    ASSERT_TRUE(figure);
    EXPECT_EQ(figure->getNodeParent(), nullptr) << "a figure never hangs under its own bone";
    EXPECT_TRUE(figure->getVisibilityControl()->getValue()) << "off does not hide a figure";
    OvNode *hip = figure->findBone("hip"), *chest = figure->findBone("chest"),
           *head = figure->findBone("head");
    ASSERT_TRUE(hip && chest && head);
    EXPECT_TRUE(chest->getNodeParent() == hip && head->getNodeParent() == chest);

    EXPECT_LT(off(hip->getOrigin(), 0.5f * 243.84f, -2 * 243.84f, 3 * 243.84f), 1e-3f) << "host units";
    EXPECT_LT(off(hip->getEndPoint(), 0, 243.84f, 0), 1e-3f);
    // X first, then Y: +Y turns to +Z, then to +X. Y first would give +Z.
    EXPECT_LT(off(hip->getOrientation().multVec(OvVec3(0, 1, 0)), 1, 0, 0), 1e-4f) << "rotation order XYZ";
    EXPECT_TRUE(!hip->getObject()->findModifier<OvPoserJoint>()->bendingOn() &&
                chest->getObject()->findModifier<OvPoserJoint>()->bendingOn());
    EXPECT_TRUE(!hip->getShadowControl()->getValue() && chest->getShadowControl()->getValue());
    EXPECT_FALSE(hip->isHidden()) << "channel lines are not object lines";

    // Values given after the orientation line wait in the node item for the next one.
    EXPECT_EQ(chest->getOrigin(), OvVec3(0, 0, 0));
    EXPECT_EQ(importer.findNodeItem(chest)->origin, OvVec3(0, 243.84f, 0));
    EXPECT_TRUE(chest->isHidden() && !chest->getSelectabilityControl()->getValue());
    EXPECT_TRUE(!head->isHidden() && head->getSelectabilityControl()->getValue()) << "hidden 0 only unhides";
    EXPECT_FALSE(head->getVisibilityControl()->getValue());
}

TEST_F(ObjectSection, PropsFindTheirParents) {
    ASSERT_TRUE(readOk("scene.pz3",
                       kFigure + "prop box\n{\nparent hip:1\norigin 0 1 0\norientation 10 20 30\non\n}\n"
                                 "prop lamp\n{\nparent UNIVERSE\noff\n}\nprop ring\n{\nsmartparent box\n}\n"
                                 "prop tag\n{\nparent nowhere:1\n}\n"));
    OvSkeleton *figure = skeleton("NULL");
    OvNode *box = figure->findBone("hip")->findNodeChild("box", false);
    ASSERT_TRUE(box) << "a prop goes under the named body part";
    EXPECT_EQ(box->getOrigin(), OvVec3(0, 243.84f, 0)) << "the origin is pushed with the orientation";
    EXPECT_LT(off(box->getOrientation().multVec(OvVec3(0, 1, 0)), 0, 1, 0), 1e-6f) << "props keep none";
    EXPECT_TRUE(box->getVisibilityControl()->getValue());
    EXPECT_FALSE(labelled("lamp")->getNodeParent()) << "UNIVERSE outside a hair file: nothing";
    EXPECT_FALSE(labelled("lamp")->getVisibilityControl()->getValue()) << "off";
    EXPECT_FALSE(labelled("tag")->getNodeParent()) << "an unknown parent changes nothing";
    EXPECT_EQ(labelled("ring")->getNodeParent(), box) << "the smart parent is applied after reading";

    // A hair file puts its hair on the head of the chosen figure; a bone selection is enough.
    scene()->setPrimarySelection(figure->findBone("chest"));
    ASSERT_TRUE(readOk("long.hr2", "prop hair\n{\nparent UNIVERSE\n}\n"));
    EXPECT_EQ(labelled("hair")->getNodeParent(), figure->findBone("head"));
    EXPECT_EQ(scene()->getPrimarySelection(), figure->findBone("chest"));
    // Smart parents of a prop file are looked for on the selected figure.
    scene()->setPrimarySelection(figure);
    ASSERT_TRUE(readOk("cap.pp2",
                       "prop cap\n{\nparent UNIVERSE\n}\nprop hat\n{\nsmartparent head:1\n}\n"
                       "prop cape\n{\nsmartparent BODY:1\n}\nprop self\n{\nsmartparent self\n}\n"));
    EXPECT_FALSE(labelled("cap")->getNodeParent()) << "only hair goes on the head";
    EXPECT_EQ(labelled("hat")->getNodeParent(), figure->findBone("head"));
    EXPECT_EQ(labelled("cape")->getNodeParent(), figure);
    EXPECT_FALSE(labelled("self")->getNodeParent()) << "a node is never its own smart parent";
}

// A figure known by its label and a later prop with that Poser name: a deformer takes the first
// item with the key, anything else the last.
TEST_F(ObjectSection, DeformersTakeTheFirstItemWithTheKeyOthersTheLast) {
    ASSERT_TRUE(readOk("scene.pz3", kFigure + "prop NULL\n{\n}\nbaseProp Base_1\n{\nparent NULL\n}\n"
                                              "prop box\n{\nparent NULL\n}\n"));
    OvSkeleton *figure = skeleton("NULL");
    ASSERT_TRUE(figure);
    EXPECT_EQ(labelled("Base_1")->getNodeParent(), figure);
    EXPECT_EQ(labelled("box")->getNodeParent(), labelled("NULL (2)"));
}

// Two figures, the second conforming to the first; a magnet with its base and zone on the first.
TEST_F(ObjectSection, DeformerPropsAreWiredTogetherAndBoundByPoses) {
    ASSERT_TRUE(readOk("scene.pz3", kFigure +
                                        "actor hip:2\n{\n}\nactor chest:2\n{\nparent hip:2\n}\n"
                                        "actor BODY:2\n{\nconformingTarget BODY:1\n}\n"
                                        "baseProp Base_1\n{\nparent hip:1\n}\nsphereZoneProp Zone_1\n{\n"
                                        "newFalloffCurve\nfalloffCpt 1 0\nfalloffCpt 0 1\nfalloffCpt 0.5\n"
                                        "endFalloffCurve\n}\nmagnetDeformerProp Mag_1\n{\nbaseProp Base_1:1\n"
                                        "addZone Zone_1\naddZone Base_1\ndeformTarget chest:1\n}\n"
                                        "sphereZoneProp Zone_1\n{\nparent Mag_1\n}\nbaseProp Base_1\n{\n"
                                        "deformerProp Mag_1\n}\n"));
    auto *first = skeleton("NULL"), *second = skeleton("NULL (2)");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(second->getFollowTarget(), first);
    auto *base = qobject_cast<OvDFormBase *>(first->findBone("hip")->findNodeChild("Base_1", false));
    ASSERT_TRUE(base) << "a deformer finds its parent in the figure";
    auto *magnet = qobject_cast<OvDForm *>(base->findNodeChild("Mag_1", false));
    ASSERT_TRUE(magnet) << "deformerProp puts the magnet under its base";
    auto *zone = qobject_cast<OvDFormZone *>(magnet->findNodeChild("Zone_1", false));
    ASSERT_TRUE(zone) << "a deformer finds a parent among the scene items";
    EXPECT_EQ(magnet->getBase(), base);
    EXPECT_EQ(magnet->getZones(), std::vector<OvDFormZone *>{zone}) << "only zones are added as zones";
    const OvNaturalSpline *curve = zone->getSpline();
    ASSERT_EQ(curve->getNumPoints(), 2) << "a point without its y is skipped";
    EXPECT_EQ(curve->getPoint(0), std::make_pair(0.0f, 1.0f));
    EXPECT_EQ(curve->getPoint(1), std::make_pair(1.0f, 0.0f));
    // Outside a pose the target's own channels bind the magnet; deformTarget adds nothing.
    EXPECT_EQ(first->findBone("chest")->getObject()->getNumModifiers(), 1);

    // A pose on the second figure binds the magnet found on the figure it follows, ahead of the joint.
    OvObject *chest = second->findBone("chest")->getObject();
    scene()->setPrimarySelection(second);
    for (int pass = 0; pass < 2; ++pass) { // the same pose again reuses the binding
        ASSERT_TRUE(
            readOk("mag.pz2", "magnetDeformerProp Mag_1\n{\ndeformTarget chest:1\ndeformTarget x\n}\n"));
        ASSERT_EQ(chest->getNumModifiers(), 2);
        auto *binding = dynamic_cast<OvDFormModifier *>(chest->getModifier(0));
        ASSERT_TRUE(binding);
        EXPECT_EQ(binding->getName(), QStringLiteral("Mag_1"));
        EXPECT_EQ(binding->getDForm(), magnet);
    }
    EXPECT_EQ(first->findBone("chest")->getObject()->getNumModifiers(), 1)
        << "the followed figure is untouched";
}

TEST_F(ObjectSection, BodyPartsGetMaterialsOfTheirOwnAndPosesStandardCopies) {
    geometry("fig.obj",
             "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\ng hip\nusemtl skin\nf 1 2 3\nusemtl cloth\nf 1 3 4\n"
             "g chest\nusemtl skin\nf 2 3 4\n");
    ASSERT_TRUE(
        readOk("fig.cr2",
               "figureResFile :Runtime:Geometries:fig.obj\nactor hip:1\n{\ngeomHandlerGeom 13 hip\n"
               "geomHandlerGeom 13 chest\nmaterial skin\n{\nhidden 1\n}\nmaterial none\n{\nhidden 1\n}\n}\n"
               "actor chest:1\n{\ngeomHandlerGeom 13 chest\n}\n"));
    OvSkeleton *figure = skeleton("fig");
    OvObject *hip = figure->findBone("hip")->getObject();
    OvMaterial *hipSkin = hip->getShape(0)->findMaterial("skin");
    const OvMaterial *figureSkin = lastShape(figure->findBone("chest"))->findMaterial("skin");
    ASSERT_TRUE(dynamic_cast<OvDefaultMaterial *>(hipSkin) && figureSkin);
    EXPECT_NE(hipSkin, figureSkin)
        << "the body part gets a material of its own; the others keep the figure's";
    EXPECT_EQ(hip->getShape(1)->findMaterial("skin"), hipSkin) << "one new material for every shape";
    EXPECT_FALSE(figure->findBone("hip")->isHidden()) << "material blocks are sections of their own";

    // A pose swaps materials the host made some other way for standard copies, once per figure.
    auto *oak = new OvMaterial;
    oak->setName("oak");
    oak->setLabel("Oak");
    for (const char *name : {"hip", "chest"}) {
        auto *shape = new OvShape;
        shape->addMaterial(oak);
        figure->findBone(name)->getObject()->addShape(shape);
    }
    scene()->setPrimarySelection(figure);
    ASSERT_TRUE(readOk("wood.pz2", "actor BODY:1\n{\nmaterial oak\n{\n}\n}\n"));
    auto *copy = dynamic_cast<OvDefaultMaterial *>(lastShape(figure->findBone("hip"))->getMaterial(0));
    ASSERT_TRUE(copy);
    EXPECT_EQ(QStringList({copy->getName(), copy->getLabel()}), QStringList({"oak", "Oak"}));
    EXPECT_EQ(lastShape(figure->findBone("chest"))->getMaterial(0), copy);
    EXPECT_EQ(importer.sceneItems()[0].findMaterial("oak").get(), copy)
        << "the copy takes the old one's place";
}

} // namespace
