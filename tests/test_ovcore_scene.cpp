// The scene model of the SDK stand-in that import relies on: the node hierarchy and the scene's
// removals and lookups, shapes and materials, meshes cut from groups, magnet falloff curves and
// Euler angles. The scene check after every test comes with the fixture.
#include "ImportTest.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvPolyMesh.h>
#include <OvProperty.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <array>
#include <cmath>
#include <memory>

namespace {

OvScene &scene() {
    return *OvApp::getScene();
}

// A node named and labelled `name`, under `parent` or at the top of the scene.
template <class T = OvNode> T *make(const char *name, OvNode *parent = nullptr) {
    T *node = new T;
    node->setName(name);
    node->setLabel(name);
    parent ? (void)parent->addNodeChild(node) : scene().addNode(node);
    return node;
}

// The names of a node's children, or of the top-level nodes for null.
QStringList names(const OvNode *node) {
    QStringList names;
    for (int i = 0; i < (node ? node->getNumNodeChildren() : scene().getNumNodes()); ++i)
        names << (node ? node->getNodeChild(i) : scene().getNode(i))->getName();
    return names;
}

// Adds a face of {vertex, uv} corners.
void addFace(OvPolyMesh &mesh, int material, std::vector<std::pair<int, int>> cornerList) {
    mesh.activateMaterial(material);
    mesh.startFace();
    for (auto [v, t] : cornerList)
        mesh.addFaceEdge(v, t);
    mesh.finishFace();
}

using OvcoreScene = ImportTest;

TEST_F(OvcoreScene, ReparentingRefusesCyclesAndRemovalTakesWholeSubtrees) {
    OvNode *a = make("a"), *b = make("b", a), *c = make("c", b), *d = make("d", a);
    EXPECT_FALSE(c->addNodeChild(a)) << "a node cannot become its own ancestor's child";
    EXPECT_TRUE(d->addNodeChild(c));
    EXPECT_TRUE(names(b).isEmpty()) << "moving leaves no trace under the old parent";
    EXPECT_TRUE(a->isAncestorOf(c) && !b->isAncestorOf(c));

    scene().setPrimarySelection(make("leaf", b));
    ASSERT_TRUE(scene().removeNode(b));
    std::unique_ptr<OvNode> owned(b);
    EXPECT_EQ(names(a), QStringList{"d"});
    EXPECT_EQ(names(b), QStringList{"leaf"}) << "the subtree leaves whole";
    EXPECT_EQ(scene().getPrimarySelection(), nullptr) << "the selection left with the subtree";
    EXPECT_FALSE(scene().removeNode(b)) << "no longer in the scene";
}

TEST_F(OvcoreScene, RemoveAllLightsAndCamerasFindsThemAtAnyDepth) {
    OvNode *hand = make("hand", make("arm", make("figure")));
    scene().setPrimarySelection(make("beam", make<OvSpotLight>("torch", hand)));
    make<OvBasicCamera>("headCam", hand);
    make<OvDistantLight>("sun");
    make<OvBasicCamera>("main");
    EXPECT_EQ(scene().removeAllLights(), 2);
    EXPECT_EQ(names(nullptr), (QStringList{"figure", "main"}));
    EXPECT_EQ(names(hand), QStringList{"headCam"});
    EXPECT_EQ(scene().getPrimarySelection(), nullptr) << "the selected node went with its light";
    EXPECT_EQ(scene().removeAllCameras(), 2);
    EXPECT_EQ(names(nullptr), QStringList{"figure"});
    EXPECT_TRUE(names(hand).isEmpty());
}

TEST_F(OvcoreScene, LookupOrders) {
    auto *skeleton = make<OvSkeleton>("Figure 1");
    OvBone *hip = make<OvBone>("hip", skeleton);
    OvNode *deep = make<OvBone>("x", make<OvBone>("chest", make<OvBone>("abdomen", hip)));
    OvBone *underProp = make<OvBone>("y", make("prop", hip)); // a prop parented to a body part
    OvNode *direct = make<OvBone>("x", skeleton);
    OvBone *blade = make<OvBone>("blade", make<OvSkeleton>("sword", hip)); // a figure on a body part
    deep->setLabel("Shared Label");
    make("later")->setLabel("Shared Label");
    auto *camera = make<OvBasicCamera>("cam", deep);

    // Direct children come before grandchildren; below them, the first child's subtree first.
    EXPECT_EQ(skeleton->findNodeChild("x"), direct);
    EXPECT_EQ(hip->findNodeChild("x"), deep);
    EXPECT_EQ(hip->findNodeChild("x", false), nullptr);
    QStringList bones;
    for (OvBone *b : skeleton->getAllBones())
        bones << b->getName();
    EXPECT_EQ(bones, (QStringList{"hip", "abdomen", "chest", "x", "y", "x"})) << "the sword keeps its own";
    EXPECT_EQ(skeleton->findBone("x"), deep);
    EXPECT_EQ(underProp->getSkeleton(), skeleton);
    EXPECT_EQ(blade->getSkeleton()->getName(), "sword");
    EXPECT_EQ(scene().findNodeByLabel("Shared Label"), deep) << "first depth first, across top-level nodes";
    EXPECT_EQ(scene().findCamera("cam"), camera);
}

// The name index of a figure follows every change, and answers as the walk does.
TEST_F(OvcoreScene, FigureNameIndexFollowsRenameMoveAndDeletion) {
    auto *figure = make<OvSkeleton>("Figure 1");
    OvBone *hip = make<OvBone>("hip", figure);
    OvBone *chest = make<OvBone>("chest", hip);
    OvNode *gun = make("gun", chest);
    auto *sword = make<OvSkeleton>("sword", hip);
    OvBone *blade = make<OvBone>("blade", sword);
    EXPECT_EQ(figure->findNodeChild("gun"), gun) << "props on body parts are found too";
    EXPECT_EQ(figure->findNodeChild("blade"), blade) << "and the nodes of a figure nested below";
    EXPECT_EQ(figure->findNodeChild("sword"), sword);
    EXPECT_EQ(figure->findBone("blade"), nullptr) << "the nested figure keeps its bones";

    gun->setName("rifle");
    EXPECT_EQ(figure->findNodeChild("gun"), nullptr);
    EXPECT_EQ(figure->findNodeChild("rifle"), gun);

    OvNode *shelf = make("shelf");
    shelf->addNodeChild(chest);
    EXPECT_EQ(figure->findNodeChild("rifle"), nullptr) << "left with its body part";
    EXPECT_EQ(figure->findBone("chest"), nullptr);
    blade->addNodeChild(chest);
    EXPECT_EQ(figure->findNodeChild("rifle"), gun) << "back, inside the nested figure";
    figure->addNodeChild(sword);

    // A shared name: the first in walk order wins, whichever figure indexed it.
    OvBone *second = make<OvBone>("blade", hip);
    EXPECT_EQ(figure->findNodeChild("blade"), second) << "hip's subtree comes first";
    shelf->addNodeChild(hip);
    figure->addNodeChild(hip);
    EXPECT_EQ(figure->findNodeChild("blade"), blade) << "now the sword's comes first";
    EXPECT_EQ(figure->findBone("blade"), second);

    // A node deleted with what hangs below it leaves no entry behind, nested figures included.
    ASSERT_TRUE(figure->removeNodeChild(sword));
    delete sword;
    EXPECT_EQ(figure->findNodeChild("rifle"), nullptr);
    EXPECT_EQ(figure->findNodeChild("blade"), second);
    OvNode *holder = make("holder", hip);
    make<OvBone>("hilt", make<OvSkeleton>("dagger", holder));
    ASSERT_TRUE(hip->removeNodeChild(holder));
    delete holder;
    EXPECT_EQ(figure->findNodeChild("hilt"), nullptr);
    EXPECT_EQ(figure->findNodeChild("holder"), nullptr);
}

TEST_F(OvcoreScene, ShapesNameTheSwitchAndMaterialsAreReplacedInPlace) {
    OvObject object;
    auto *shape = new OvPolyShape, *alt = new OvPolyShape;
    shape->setName("body");
    alt->setName("alt");
    alt->setLabel("Alternate");
    object.addShape(shape);
    object.addShape(alt);
    EXPECT_EQ(object.getGeometryControl()->getItems(), (QStringList{"body", "Alternate"}));

    OvTSharedPointer<OvDefaultMaterial> a(new OvDefaultMaterial), b(new OvDefaultMaterial),
        r(new OvDefaultMaterial);
    r->setName("r");
    r->setLabel("R");
    shape->addMaterial(a.get());
    shape->addMaterial(b.get());
    ASSERT_TRUE(shape->replaceMaterial(b.get(), r.get()));
    EXPECT_EQ(shape->getMaterial(1), r.get());
    EXPECT_EQ(b->refCount(), 1) << "the shape let go of the replaced material";

    a->setDiffuseColor(QColor(10, 20, 30));
    a->setColorMap(new OvTexture("/tex/skin.png", 4, 4));
    r->copyFrom(*a);
    EXPECT_EQ(r->getName() + r->getLabel(), "rR") << "name and label stay";
    EXPECT_EQ(r->getDiffuseColor(), QColor(10, 20, 30));
    EXPECT_EQ(r->getColorMap(), a->getColorMap()) << "maps are shared, not copied";
    EXPECT_EQ(r->refCount(), 2) << "copying settings must not copy the reference count";
}

TEST_F(OvcoreScene, MeshCutFromGroupRenumbersAndSharesStorageUntilWritten) {
    OvTSharedPointer<OvPolyMesh> whole(new OvPolyMesh);
    float *v = whole->setVertexArray(6);
    for (int i = 0; i < 18; ++i)
        v[i] = i % 3 ? 0 : float(i / 3); // x = index
    for (float u : {0.f, 0.5f, 0.25f, 1.f})
        whole->getUVs()->appendPnt2Value(std::array<float, 2>{u, u}.data());
    whole->activateFaceGroup("arm");
    addFace(*whole, 3, {{4, 3}, {5, 0}, {0, 3}});
    whole->deactivateAllFaceGroups();
    addFace(*whole, 0, {{1, 1}, {2, 1}, {3, 1}});
    whole->activateFaceGroup("arm");
    addFace(*whole, 1, {{5, 2}, {1, 3}, {4, 2}});

    std::vector<int> used = {99};
    OvTSharedPointer<OvPolyMesh> arm(whole->createMeshFromGroup("arm", &used));
    ASSERT_TRUE(arm);
    EXPECT_EQ(used, (std::vector<int>{1, 3}));
    EXPECT_EQ(arm->getFaceMaterial(0), 1) << "faces refer to positions in the list";
    EXPECT_TRUE(arm->hasNarrowTables());
    // Vertices 4, 5, 0, 1 and UVs 3, 0, 2 in first-use order.
    ASSERT_EQ(arm->getNumVertices(), 4);
    EXPECT_EQ(arm->getVertex(3)[0], 1);
    EXPECT_EQ(QList({arm->getFaceVertex(1, 0), arm->getFaceVertex(1, 1), arm->getFaceVertex(1, 2)}),
              QList({1, 3, 0}));
    ASSERT_EQ(arm->getUVs()->getNumValues(), 3);
    EXPECT_EQ(arm->getUVs()->getPnt2Value(2)[0], 0.25f);
    EXPECT_EQ(QList({arm->getFaceUV(1, 0), arm->getFaceUV(1, 1), arm->getFaceUV(1, 2)}), QList({2, 0, 2}));
    EXPECT_EQ(OvTSharedPointer<OvPolyMesh>(whole->createMeshFromGroup("arm"))->getFaceMaterial(0), 3)
        << "without the list the indices stay";
    EXPECT_EQ(whole->createMeshFromGroup("leg"), nullptr);

    OvTSharedPointer<OvPolyMesh> again(arm->createMeshFromGroup("arm"));
    EXPECT_TRUE(again->sharesVerticesWith(*whole)) << "a cut of a cut reads the first storage";
    EXPECT_TRUE(arm->getUVs()->sharesStorageWith(*whole->getUVs()));
    whole = nullptr; // the cuts keep the storage alive
    EXPECT_EQ(again->getVertex(0)[0], 4);
    // Writing makes the storage the writer's own, with the old values; the other cut keeps its view.
    arm->setVertexArray(70000)[0] = 30;
    EXPECT_FALSE(arm->sharesVerticesWith(*again));
    EXPECT_EQ(arm->getVertex(0)[0] + arm->getVertex(3)[0] + again->getVertex(0)[0], 30 + 1 + 4);
    // New faces widen the narrow corner arrays as needed and join only the groups active then.
    arm->deactivateAllFaceGroups();
    addFace(*arm, 0, {{0, 0}, {69999, 0}, {3, 0}});
    arm->activateFaceGroup("arm");
    addFace(*arm, 0, {{1, 0}, {2, 0}, {3, 0}});
    EXPECT_EQ(arm->getFaceVertex(2, 1), 69999);
    ASSERT_EQ(arm->getNumFaceGroupFaces(0), 3);
    EXPECT_EQ(arm->getFaceGroupFace(0, 2), 3);
}

// Corner counts and vertex spreads past 16 bits widen only the tables they concern.
TEST_F(OvcoreScene, CutTablesStayNarrowUntilAValueNeedsMore) {
    OvTSharedPointer<OvPolyMesh> whole(new OvPolyMesh);
    float *v = whole->setVertexArray(70000);
    for (int i = 0; i < 70000; ++i)
        v[3 * i] = float(i);
    whole->getUVs()->appendPnt2Value(std::array<float, 2>{0.5f, 0.5f}.data());
    whole->activateFaceGroup("big"); // 65538 corners over vertices 0 to 65537
    for (int f = 0; f < 21846; ++f)
        addFace(*whole, f % 3, {{3 * f, 0}, {3 * f + 1, 0}, {3 * f + 2, 0}});
    whole->deactivateAllFaceGroups();
    whole->activateFaceGroup("tail");
    addFace(*whole, 0, {{69997, 0}, {69998, 0}, {69999, 0}});
    addFace(*whole, 2, {{69990, 0}, {69991, 0}, {69997, 0}, {69999, 0}});

    OvTSharedPointer<OvPolyMesh> big(whole->createMeshFromGroup("big"));
    EXPECT_FALSE(big->hasNarrowTables());
    EXPECT_EQ(big->getFaceSize(21845), 3);
    EXPECT_EQ(big->getFaceVertex(21845, 2), 65537);
    EXPECT_EQ(big->getVertex(65537)[0], 65537);
    EXPECT_EQ(big->getFaceMaterial(21844), 21844 % 3);

    std::vector<int> used;
    OvTSharedPointer<OvPolyMesh> tail(whole->createMeshFromGroup("tail", &used));
    EXPECT_TRUE(tail->hasNarrowTables());
    EXPECT_EQ(tail->getFaceSize(1), 4);
    EXPECT_EQ(tail->getFaceMaterial(1), 1);
    EXPECT_EQ(tail->getVertex(tail->getFaceVertex(1, 1))[0], 69991) << "16-bit entries above the lowest";
    OvTSharedPointer<OvPolyMesh> again(tail->createMeshFromGroup("tail"));
    EXPECT_EQ(again->getVertex(again->getFaceVertex(1, 0))[0], 69990) << "a cut of a cut";
    EXPECT_EQ(again->getVertex(again->getFaceVertex(0, 2))[0], 69999);
}

// Undo copies of a property carry its link, controllers and path, also when they were never set.
TEST_F(OvcoreScene, PropertyStateKeepsRareFieldsAndOneKeyTracks) {
    OvFloatProperty master("m"), p("p");
    p.setValue(10, 3.0f);
    OvPropertyState plain = p.saveState();
    p.linkTo(&master);
    p.insertController(new OvERCLink(&master, 2.0, 0.0));
    p.setPath(QStringLiteral("General/Dials"));
    p.setValue(20, 4.0f);
    OvPropertyState driven = p.saveState();
    p.restoreState(plain);
    EXPECT_FALSE(p.isDriven());
    EXPECT_EQ(p.getPath(), QString());
    ASSERT_EQ(p.getNumKeys(), 1);
    EXPECT_EQ(p.getKeyValue(0), 3.0f);
    EXPECT_FALSE(p.keys().isAllocated()) << "one key is kept inline";
    p.restoreState(driven);
    EXPECT_EQ(p.getLinkProperty(), &master);
    ASSERT_EQ(p.getNumControllers(), 1);
    EXPECT_EQ(static_cast<OvERCLink *>(p.getController(0))->getScalar(), 2.0);
    EXPECT_EQ(p.getPath(), QStringLiteral("General/Dials"));
    EXPECT_EQ(p.getNumKeys(), 2);
    p.deleteKey(0);
    EXPECT_FALSE(p.keys().isAllocated()) << "back to one key, back inline";
    EXPECT_EQ(p.getKeyTime(0) + int(p.getKeyValue(0)), 24);
    EXPECT_LE(sizeof(OvFloatProperty), 128u) << "thousands of these make a figure";
}

TEST_F(OvcoreScene, FalloffPointsStaySortedByX) {
    OvDFormZone zone;
    OvNaturalSpline &spline = *zone.getSpline();
    for (auto [x, y] : {std::pair{0.5f, 1.f}, {0.f, 1.f}, {1.f, 0.f}, {0.5f, 2.f}, {-1.f, 3.f}})
        spline.insertPoint(x, y);
    QStringList points;
    for (int i = 0; i < spline.getNumPoints(); ++i)
        points << QString("%1 %2").arg(spline.getPoint(i).first).arg(spline.getPoint(i).second);
    EXPECT_EQ(points.join(", "), "-1 3, 0 1, 0.5 1, 0.5 2, 1 0") << "equal x in insertion order";
}

// Rotation of v about one axis by the right-hand rule, in double precision.
OvVec3 rotateAbout(int axis, double angle, const OvVec3 &v) {
    const double c = std::cos(angle), s = std::sin(angle);
    const int i = (axis + 1) % 3, j = (axis + 2) % 3;
    OvVec3 r = v;
    r[i] = float(c * v[i] - s * v[j]);
    r[j] = float(s * v[i] + c * v[j]);
    return r;
}

TEST_F(OvcoreScene, EulerOrderAppliesTheFirstAxisFirst) {
    const OvVec3 angles(0.3f, -0.7f, 1.1f), v(0.2f, 0.5f, -0.9f);
    using O = OvRotationOrder;
    const std::pair<OvRotationOrder, std::vector<int>> orders[] = {{O::XYZ, {0, 1, 2}}, {O::XZY, {0, 2, 1}},
                                                                   {O::YXZ, {1, 0, 2}}, {O::YZX, {1, 2, 0}},
                                                                   {O::ZXY, {2, 0, 1}}, {O::ZYX, {2, 1, 0}}};
    for (const auto &[order, axes] : orders) {
        OvVec3 expected = v;
        for (int axis : axes)
            expected = rotateAbout(axis, angles[axis], expected);
        const OvVec3 got = quatFromEuler(order, angles).multVec(v);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(got[k], expected[k], 1e-5) << rotationOrderName(order) << " component " << k;
    }
}

} // namespace
