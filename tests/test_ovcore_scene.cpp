// The scene model of the SDK stand-in that import relies on: the node hierarchy and the scene's
// removals and lookups, materials, meshes cut from groups, magnet falloff curves, Euler angles,
// controllers, and the scene check that runs after every test.
#include "ImportTest.h"
#include "support/SceneInvariants.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <cmath>
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

// The names of a node's children, or of the top-level nodes for null.
QStringList names(const OvNode *node) {
    const OvScene &scene = *OvApp::getScene();
    QStringList names;
    for (int i = 0; i < (node ? node->getNumNodeChildren() : scene.getNumNodes()); ++i)
        names << (node ? node->getNodeChild(i) : scene.getNode(i))->getName();
    return names;
}

// The indices that index(f, c) gives for the corners of face f.
std::vector<int> corners(const OvPolyMesh &mesh, int f, int (OvPolyMesh::*index)(int, int) const) {
    std::vector<int> v;
    for (int c = 0; c < mesh.getFaceSize(f); ++c)
        v.push_back((mesh.*index)(f, c));
    return v;
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
    EXPECT_FALSE(b->addNodeChild(b));
    EXPECT_TRUE(d->addNodeChild(c));
    EXPECT_EQ(c->getNodeParent(), d);
    EXPECT_TRUE(names(b).isEmpty()) << "moving leaves no trace under the old parent";
    EXPECT_TRUE(a->isAncestorOf(c));
    EXPECT_FALSE(b->isAncestorOf(c));

    make("leaf", b);
    OvScene &scene = *OvApp::getScene();
    scene.setPrimarySelection(b->getNodeChild(0));
    ASSERT_TRUE(scene.removeNode(b));
    std::unique_ptr<OvNode> owned(b);
    EXPECT_EQ(b->getNodeParent(), nullptr);
    EXPECT_EQ(names(a), QStringList{"d"});
    EXPECT_EQ(names(b), QStringList{"leaf"}) << "the subtree leaves whole";
    EXPECT_EQ(scene.getPrimarySelection(), nullptr) << "the selection left with the subtree";
    EXPECT_FALSE(scene.removeNode(b)) << "no longer in the scene";
}

TEST_F(OvcoreScene, RemoveAllLightsAndCamerasFindsThemAtAnyDepth) {
    OvNode *hand = make("hand", make("arm", make("figure")));
    make("beam", make<OvSpotLight>("torch", hand));
    make<OvBasicCamera>("headCam", hand);
    make<OvDistantLight>("sun");
    make<OvBasicCamera>("main");
    make("prop");
    OvScene &scene = *OvApp::getScene();
    scene.setPrimarySelection(hand->getNodeChild(0)->getNodeChild(0));

    EXPECT_EQ(scene.removeAllLights(), 2);
    EXPECT_EQ(names(nullptr), (QStringList{"figure", "main", "prop"}));
    EXPECT_EQ(names(hand), QStringList{"headCam"});
    EXPECT_EQ(scene.getPrimarySelection(), nullptr) << "the selected node went with its light";
    EXPECT_EQ(scene.removeAllCameras(), 2);
    EXPECT_EQ(names(nullptr), (QStringList{"figure", "prop"}));
    EXPECT_TRUE(names(hand).isEmpty());
}

TEST_F(OvcoreScene, LookupOrders) {
    auto *skeleton = make<OvSkeleton>("Figure 1");
    OvBone *hip = make<OvBone>("hip", skeleton);
    OvNode *deep = make<OvBone>("x", make<OvBone>("chest", make<OvBone>("abdomen", hip)));
    OvBone *underProp = make<OvBone>("y", make("prop", hip)); // a prop parented to a body part
    OvNode *direct = make<OvBone>("x", skeleton);
    auto *sword = make<OvSkeleton>("sword", hip); // a figure parented to a body part
    OvBone *blade = make<OvBone>("blade", sword);
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
    EXPECT_EQ(skeleton->findBone("blade"), nullptr);
    EXPECT_EQ(underProp->getSkeleton(), skeleton);
    EXPECT_EQ(blade->getSkeleton(), sword);
    OvScene &scene = *OvApp::getScene();
    EXPECT_EQ(scene.findNodeByLabel("Shared Label"), deep) << "first depth first, across top-level nodes";
    EXPECT_EQ(scene.findCamera("cam"), camera);
    EXPECT_EQ(scene.findCamera("prop"), nullptr);
}

TEST_F(OvcoreScene, MaterialsAreReplacedInPlaceAndCopiedWithoutIdentity) {
    OvPolyShape shape;
    OvTSharedPointer<OvDefaultMaterial> a(new OvDefaultMaterial), b(new OvDefaultMaterial),
        r(new OvDefaultMaterial);
    b->setName("b");
    r->setName("r");
    shape.addMaterial(a.get());
    shape.addMaterial(b.get());
    ASSERT_TRUE(shape.replaceMaterial(b.get(), r.get()));
    EXPECT_EQ(shape.getMaterial(1), r.get());
    EXPECT_EQ(shape.findMaterialIndex("b"), -1);
    EXPECT_EQ(b->refCount(), 1) << "the shape let go of the replaced material";
    EXPECT_FALSE(shape.replaceMaterial(b.get(), a.get())) << "no longer in the shape";

    r->setLabel("R");
    a->setDiffuseColor(QColor(10, 20, 30));
    a->setColorMap(new OvTexture("/tex/skin.png", 4, 4));
    r->copyFrom(*a);
    EXPECT_EQ(r->getName(), "r");
    EXPECT_EQ(r->getLabel(), "R");
    EXPECT_EQ(r->getDiffuseColor(), QColor(10, 20, 30));
    EXPECT_EQ(r->getColorMap(), a->getColorMap()) << "maps are shared, not copied";
    EXPECT_EQ(r->refCount(), 2) << "copying settings must not copy the reference count";
}

TEST_F(OvcoreScene, MeshCutFromGroupRenumbersAndSharesStorageUntilWritten) {
    OvTSharedPointer<OvPolyMesh> whole(new OvPolyMesh);
    float *v = whole->setVertexArray(6);
    for (int i = 0; i < 6; ++i)
        v[3 * i] = float(i), v[3 * i + 1] = v[3 * i + 2] = 0;
    for (float u : {0.f, 0.5f, 0.25f, 1.f}) {
        const float uv[2] = {u, u};
        whole->getUVs()->appendPnt2Value(uv);
    }
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
    EXPECT_EQ(arm->getFaceMaterial(1), 0);
    // Vertices 4, 5, 0, 1 and UVs 3, 0, 2 in first-use order.
    ASSERT_EQ(arm->getNumVertices(), 4);
    EXPECT_EQ(arm->getVertex(3)[0], 1);
    EXPECT_EQ(corners(*arm, 1, &OvPolyMesh::getFaceVertex), (std::vector<int>{1, 3, 0}));
    ASSERT_EQ(arm->getUVs()->getNumValues(), 3);
    EXPECT_EQ(arm->getUVs()->getPnt2Value(2)[0], 0.25f);
    EXPECT_EQ(corners(*arm, 1, &OvPolyMesh::getFaceUV), (std::vector<int>{2, 0, 2}));
    EXPECT_EQ(arm->getFaceGroupName(0), "arm");
    EXPECT_EQ(OvTSharedPointer<OvPolyMesh>(whole->createMeshFromGroup("arm"))->getFaceMaterial(0), 3)
        << "without the list the indices stay";
    EXPECT_EQ(whole->createMeshFromGroup("leg"), nullptr);

    OvTSharedPointer<OvPolyMesh> again(arm->createMeshFromGroup("arm"));
    EXPECT_TRUE(arm->sharesVerticesWith(*whole));
    EXPECT_TRUE(again->sharesVerticesWith(*whole)) << "a cut of a cut reads the first storage";
    EXPECT_TRUE(arm->getUVs()->sharesStorageWith(*whole->getUVs()));
    whole = nullptr; // the cuts keep the storage alive
    EXPECT_EQ(again->getVertex(0)[0], 4);

    // Writing makes the storage the writer's own, with the old values; the other cut keeps its own view.
    arm->setVertexArray(70000)[0] = 30;
    EXPECT_FALSE(arm->sharesVerticesWith(*again));
    EXPECT_EQ(arm->getVertex(0)[0], 30);
    EXPECT_EQ(arm->getVertex(3)[0], 1);
    EXPECT_EQ(again->getVertex(0)[0], 4);
    // New faces widen the narrow corner arrays as needed and join only the groups active then.
    arm->deactivateAllFaceGroups();
    addFace(*arm, 0, {{0, 0}, {69999, 0}, {3, 0}});
    arm->activateFaceGroup("arm");
    addFace(*arm, 0, {{1, 0}, {2, 0}, {3, 0}});
    EXPECT_EQ(corners(*arm, 1, &OvPolyMesh::getFaceVertex), (std::vector<int>{1, 3, 0}));
    EXPECT_EQ(corners(*arm, 2, &OvPolyMesh::getFaceVertex), (std::vector<int>{0, 69999, 3}));
    ASSERT_EQ(arm->getNumFaceGroupFaces(0), 3);
    EXPECT_EQ(arm->getFaceGroupFace(0, 2), 3);
    EXPECT_TRUE(checkMeshInvariants(*arm).isEmpty());
}

TEST_F(OvcoreScene, InsertionOrders) {
    OvDFormZone zone;
    OvNaturalSpline *spline = zone.getSpline();
    for (auto [x, y] : {std::pair{0.5f, 1.f}, {0.f, 1.f}, {1.f, 0.f}, {0.5f, 2.f}, {-1.f, 3.f}})
        spline->insertPoint(x, y);
    std::vector<std::pair<float, float>> points;
    for (int i = 0; i < spline->getNumPoints(); ++i)
        points.push_back(spline->getPoint(i));
    EXPECT_EQ(points, (std::vector<std::pair<float, float>>{{-1, 3}, {0, 1}, {0.5f, 1}, {0.5f, 2}, {1, 0}}))
        << "sorted by x, equal x in insertion order";

    OvFloatProperty driven("xRotate");
    auto *a = new OvERCLink(&driven, 1, 0), *b = new OvERCLink(nullptr, 2, 0),
         *c = new OvERCLink(nullptr, 3, 0);
    driven.insertController(a);
    driven.insertController(b, 0);
    driven.insertController(c, 1);
    EXPECT_EQ(driven.getController(0), b);
    EXPECT_EQ(driven.getController(1), c);
    EXPECT_EQ(driven.getController(2), a);

    OvObject object;
    for (const char *name : {"body", "alt", "tail"}) {
        auto *shape = new OvPolyShape;
        shape->setName(name);
        object.addShape(shape, name == QLatin1String("alt") ? 0 : 17); // past the end appends
    }
    object.getShape(1)->setLabel("Body");
    object.updateGeometryItems();
    EXPECT_EQ(object.getGeometryControl()->getItems(), (QStringList{"alt", "Body", "tail"}));
    EXPECT_EQ(object.getGeometryControl()->getMax(), 2);
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
    const struct {
        OvRotationOrder order;
        int axes[3];
    } orders[] = {{OvRotationOrder::XYZ, {0, 1, 2}}, {OvRotationOrder::XZY, {0, 2, 1}},
                  {OvRotationOrder::YXZ, {1, 0, 2}}, {OvRotationOrder::YZX, {1, 2, 0}},
                  {OvRotationOrder::ZXY, {2, 0, 1}}, {OvRotationOrder::ZYX, {2, 1, 0}}};
    for (const auto &[order, axes] : orders) {
        OvVec3 expected = v;
        for (int axis : axes)
            expected = rotateAbout(axis, angles[axis], expected);
        const OvVec3 got = quatFromEuler(order, angles).multVec(v);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(got[k], expected[k], 1e-5) << rotationOrderName(order) << " component " << k;
    }
}

// The check that runs after every test catches links to nodes taken out of the scene.
TEST_F(OvcoreScene, SceneCheckCatchesLinksOutOfTheScene) {
    auto *figure = make<OvSkeleton>("figure");
    auto *clothes = make<OvSkeleton>("clothes");
    clothes->setFollowTarget(figure);
    auto *magnet = make<OvDForm>("magnet");
    magnet->setBase(make<OvDFormBase>("base", magnet));
    auto *object = new OvObject;
    auto *modifier = new OvDFormModifier;
    modifier->setName("magnet");
    modifier->setDForm(magnet);
    object->addModifier(modifier);
    make<OvBone>("hip", clothes)->setObject(object);
    clothes->getXRotControl()->insertController(new OvERCLink(figure->getXPosControl(), 1, 0));
    OvScene &scene = *OvApp::getScene();
    ASSERT_TRUE(checkSceneInvariants(scene).isEmpty())
        << checkSceneInvariants(scene).join('\n').toStdString();

    scene.removeNode(figure);
    scene.removeNode(magnet);
    std::unique_ptr<OvNode> keepFigure(figure), keepMagnet(magnet);
    const QString all = checkSceneInvariants(scene).join('\n');
    EXPECT_TRUE(all.contains("node \"clothes\": property Follow refers to a skeleton not in the scene"));
    EXPECT_TRUE(
        all.contains("node \"clothes\": property xRotate follows a property of no node in the scene"));
    EXPECT_TRUE(all.contains("deformer modifier magnet refers to a deformer not in the scene"))
        << all.toStdString();
    scene.removeNode(clothes); // leaves a sound scene for the check after the test
    delete clothes;
}

} // namespace
