// The scene model of the SDK stand-in that figure import relies on: the node hierarchy and the
// scene's removals, lookups, placement, objects, materials, meshes cut from groups, magnet falloff
// curves, Euler angles, controllers, and the scene checks the other suites use.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

template <class T = OvNode> T *make(const char *name, OvNode *parent = nullptr) {
    T *node = new T;
    node->setName(QString::fromLatin1(name));
    node->setLabel(QString::fromLatin1(name));
    if (parent)
        parent->addNodeChild(node);
    return node;
}

QStringList childNames(const OvNode &node) {
    QStringList names;
    for (int i = 0; i < node.getNumNodeChildren(); ++i)
        names << node.getNodeChild(i)->getName();
    return names;
}

QStringList topNames(const OvScene &scene) {
    QStringList names;
    for (int i = 0; i < scene.getNumNodes(); ++i)
        names << scene.getNode(i)->getName();
    return names;
}

// A mesh of the given vertices and faces; each face is {material, vertex...}.
std::vector<int> corners(const OvPolyMesh &mesh, int f, int (OvPolyMesh::*index)(int, int) const) {
    std::vector<int> v;
    for (int c = 0; c < mesh.getFaceSize(f); ++c)
        v.push_back((mesh.*index)(f, c));
    return v;
}

OvPolyMesh *makeMesh(const std::vector<OvVec3> &vertices, const std::vector<std::vector<int>> &faces = {}) {
    auto *mesh = new OvPolyMesh;
    float *v = mesh->setVertexArray(int(vertices.size()));
    for (const OvVec3 &p : vertices) {
        p.getValue(v);
        v += 3;
    }
    const float uv[2] = {0, 0};
    mesh->getUVs()->appendPnt2Value(uv);
    for (const auto &face : faces) {
        mesh->activateMaterial(face[0]);
        mesh->startFace();
        for (size_t c = 1; c < face.size(); ++c)
            mesh->addFaceEdge(face[c], 0);
        mesh->finishFace();
    }
    return mesh;
}

OvPolyShape *makeShape(const char *name, OvPolyMesh *mesh, const char *label = "") {
    auto *shape = new OvPolyShape;
    shape->setName(QString::fromLatin1(name));
    shape->setLabel(QString::fromLatin1(label));
    shape->setPolyMesh(mesh);
    return shape;
}

// A fresh host state; made before the scene reference below, since the reset replaces the scene.
struct FreshApp {
    FreshApp() { OvApp::reset(); }
};

class OvcoreScene : public ::testing::Test {
protected:
    FreshApp fresh;
    OvScene &scene = *OvApp::getScene();
};

TEST_F(OvcoreScene, ReparentingKeepsBothEndsOfTheLinkAndRefusesCycles) {
    OvNode *a = make("a");
    scene.addNode(a);
    OvNode *b = make("b", a);
    OvNode *c = make("c", b);
    OvNode *d = make("d", a);

    EXPECT_FALSE(c->addNodeChild(a)) << "a node cannot become its own ancestor's child";
    EXPECT_FALSE(b->addNodeChild(b));
    EXPECT_FALSE(c->addNodeChild(b));
    EXPECT_EQ(b->getNodeParent(), a);
    EXPECT_EQ(childNames(*b), QStringList{"c"});

    // Moving c from b to d leaves no trace under b.
    EXPECT_TRUE(d->addNodeChild(c));
    EXPECT_EQ(c->getNodeParent(), d);
    EXPECT_TRUE(childNames(*b).isEmpty());
    EXPECT_EQ(childNames(*d), QStringList{"c"});
    EXPECT_TRUE(d->addNodeChild(c)) << "adding a child again is harmless";
    EXPECT_EQ(d->getNumNodeChildren(), 1);
    EXPECT_TRUE(a->isAncestorOf(c));
    EXPECT_FALSE(b->isAncestorOf(c));

    EXPECT_FALSE(b->removeNodeChild(c));
    EXPECT_TRUE(d->removeNodeChild(c));
    EXPECT_EQ(c->getNodeParent(), nullptr);
    delete c;
    EXPECT_TRUE(checkSceneInvariants(scene).isEmpty())
        << checkSceneInvariants(scene).join('\n').toStdString();
}

TEST_F(OvcoreScene, RemoveNodeTakesASubtreeFromTheMiddle) {
    OvNode *top = make("top");
    scene.addNode(top);
    OvNode *mid = make("mid", top);
    OvNode *leaf = make("leaf", mid);
    make("sibling", top);
    scene.setPrimarySelection(leaf);

    ASSERT_TRUE(scene.removeNode(mid));
    std::unique_ptr<OvNode> owned(mid);
    EXPECT_EQ(mid->getNodeParent(), nullptr);
    EXPECT_EQ(childNames(*top), QStringList{"sibling"});
    EXPECT_EQ(childNames(*mid), QStringList{"leaf"}) << "the subtree leaves whole";
    EXPECT_FALSE(scene.contains(leaf));
    EXPECT_EQ(scene.getPrimarySelection(), nullptr) << "the selection left with the subtree";
    EXPECT_FALSE(scene.removeNode(mid)) << "no longer in the scene";

    OvNode stray;
    EXPECT_FALSE(scene.removeNode(&stray));
    EXPECT_EQ(topNames(scene), QStringList{"top"});
}

TEST_F(OvcoreScene, RemoveAllLightsAndCamerasFindsThemAtAnyDepth) {
    OvNode *figure = make("figure");
    scene.addNode(figure);
    OvNode *hand = make("hand", make("arm", figure));
    OvSpotLight *torch = make<OvSpotLight>("torch", hand);
    make("beam", torch);
    make<OvBasicCamera>("headCam", hand);
    scene.addNode(make<OvDistantLight>("sun"));
    scene.addNode(make<OvBasicCamera>("main"));
    scene.addNode(make("prop"));
    scene.setPrimarySelection(torch->getNodeChild(0));

    EXPECT_EQ(scene.removeAllLights(), 2);
    EXPECT_EQ(topNames(scene), (QStringList{"figure", "main", "prop"}));
    EXPECT_EQ(childNames(*hand), QStringList{"headCam"});
    EXPECT_EQ(scene.getPrimarySelection(), nullptr) << "the selected node went with its light";

    EXPECT_EQ(scene.removeAllCameras(), 2);
    EXPECT_EQ(topNames(scene), (QStringList{"figure", "prop"}));
    EXPECT_TRUE(childNames(*hand).isEmpty());
    EXPECT_EQ(scene.removeAllLights(), 0);
    EXPECT_TRUE(checkSceneInvariants(scene).isEmpty());
}

TEST_F(OvcoreScene, NodeAndBoneLookupOrder) {
    auto *skeleton = make<OvSkeleton>("Figure 1");
    scene.addNode(skeleton);
    OvBone *hip = make<OvBone>("hip", skeleton);
    OvBone *abdomen = make<OvBone>("abdomen", hip);
    OvNode *deep = make<OvBone>("x", make<OvBone>("chest", abdomen));
    OvNode *prop = make("prop", hip); // a prop parented to a body part
    OvBone *underProp = make<OvBone>("y", prop);
    OvNode *direct = make<OvBone>("x", skeleton);

    // Direct children are searched before grandchildren; below them, the first child's subtree
    // comes first.
    EXPECT_EQ(skeleton->findNodeChild("x"), direct);
    EXPECT_EQ(hip->findNodeChild("x"), deep);
    EXPECT_EQ(hip->findNodeChild("x", false), nullptr);
    EXPECT_EQ(skeleton->findNodeChild("nothing"), nullptr);

    QStringList order;
    for (OvBone *b : skeleton->getAllBones())
        order << b->getName();
    EXPECT_EQ(order, (QStringList{"hip", "abdomen", "chest", "x", "y", "x"}));
    EXPECT_EQ(skeleton->findBone("x"), deep) << "findBone follows the depth-first bone order";
    EXPECT_EQ(skeleton->findBone("y"), underProp);
    EXPECT_EQ(skeleton->findBone("prop"), nullptr) << "not a bone";

    EXPECT_EQ(deep->getSkeleton(), skeleton);
    EXPECT_EQ(underProp->getSkeleton(), skeleton);
    EXPECT_EQ(skeleton->getSkeleton(), skeleton);
    OvNode loose;
    EXPECT_EQ(loose.getSkeleton(), nullptr);
}

// A figure parented to another figure's body part keeps its own bones.
TEST_F(OvcoreScene, NestedFigureBonesBelongToTheNearestSkeleton) {
    auto *body = make<OvSkeleton>("body");
    scene.addNode(body);
    OvBone *hand = make<OvBone>("hand", make<OvBone>("hip", body));
    auto *sword = make<OvSkeleton>("sword", hand);
    OvBone *blade = make<OvBone>("blade", sword);

    EXPECT_EQ(blade->getSkeleton(), sword);
    EXPECT_EQ(sword->getAllBones(), QList<OvBone *>{blade});
    for (OvBone *b : body->getAllBones())
        EXPECT_EQ(b->getSkeleton(), body) << b->getName().toStdString();
    EXPECT_EQ(body->findBone("blade"), nullptr);
}

TEST_F(OvcoreScene, FindByLabelAndFindCameraSearchTheWholeTree) {
    scene.addNode(make("cam")); // same name, not a camera
    OvNode *a = make("a");
    scene.addNode(a);
    OvNode *inner = make("inner", make("b", a));
    inner->setLabel("Shared Label");
    auto *camera = make<OvBasicCamera>("cam", inner);
    OvNode *later = make("later");
    later->setLabel("Shared Label");
    scene.addNode(later);

    EXPECT_EQ(scene.findNodeByLabel("Shared Label"), inner) << "first depth first, across top-level nodes";
    EXPECT_EQ(scene.findNodeByLabel("b"), a->getNodeChild(0));
    EXPECT_EQ(scene.findNodeByLabel("none"), nullptr);
    EXPECT_EQ(scene.findCamera("cam"), camera);
    EXPECT_EQ(scene.findCamera("a"), nullptr);
}

TEST_F(OvcoreScene, WorldPositionAddsTheParentsTranslations) {
    OvNode *a = make("a");
    scene.addNode(a);
    OvNode *b = make("b", a);
    OvNode *c = make("c", b);
    a->getXPosControl()->setValue(10);
    b->getXPosControl()->setValue(5);
    b->getYPosControl()->setValue(-2);
    b->getXRotControl()->setValue(90); // rotations do not move children in this host

    c->setWSPos(OvVec3(100, 0, 3));
    EXPECT_EQ(c->getXPosControl()->getValue(), 85);
    EXPECT_EQ(c->getYPosControl()->getValue(), 2);
    EXPECT_EQ(c->getZPosControl()->getValue(), 3);
    EXPECT_EQ(c->getWSPos(), OvVec3(100, 0, 3));
    a->setWSPos(OvVec3(0, 0, 0));
    EXPECT_EQ(c->getWSPos(), OvVec3(90, 0, 3)) << "children move with their parent";
}

TEST_F(OvcoreScene, BoundingBoxUsesTheShownShapeAndTheChildren) {
    OvNode *a = make("a");
    scene.addNode(a);
    EXPECT_TRUE(a->getWSBoundingBox().isEmpty());

    a->getXPosControl()->setValue(10);
    auto *object = new OvObject;
    object->addShape(makeShape("small", makeMesh({{0, 0, 0}, {1, 2, 3}})));
    object->addShape(makeShape("big", makeMesh({{-5, -5, -5}, {5, 5, 5}})));
    a->setObject(object);
    OvBox3 box = a->getWSBoundingBox();
    EXPECT_EQ(box.getMin(), OvVec3(10, 0, 0));
    EXPECT_EQ(box.getMax(), OvVec3(11, 2, 3));

    object->getGeometryControl()->setValue(1);
    OvNode *child = make("child", a);
    child->getYPosControl()->setValue(20);
    auto *childObject = new OvObject;
    childObject->addShape(makeShape("dot", makeMesh({{0, 1, 0}})));
    child->setObject(childObject);
    box = a->getWSBoundingBox();
    EXPECT_EQ(box.getMin(), OvVec3(5, -5, -5));
    EXPECT_EQ(box.getMax(), OvVec3(15, 21, 5));
}

TEST_F(OvcoreScene, GeometrySwitchItemsFollowTheShapes) {
    OvObject object;
    OvEnumProperty *sw = object.getGeometryControl();
    EXPECT_EQ(object.findProperty("Geometry"), sw);
    EXPECT_EQ(sw->getNumItems(), 0);

    object.addShape(makeShape("body", nullptr));
    object.addShape(makeShape("alt", nullptr, "Alternate"));
    object.addShape(makeShape("none", nullptr), 0);
    object.addShape(makeShape("tail", nullptr), 17); // past the end appends
    EXPECT_EQ(sw->getItems(), (QStringList{"none", "body", "Alternate", "tail"}));
    EXPECT_EQ(sw->getMin(), 0);
    EXPECT_EQ(sw->getMax(), 3);
    EXPECT_EQ(object.getShape(0)->getName(), "none");

    object.getShape(1)->setLabel("Body");
    object.updateGeometryItems();
    EXPECT_EQ(sw->getItems()[1], "Body");
}

TEST_F(OvcoreScene, ModifiersKeepTheirInsertPositions) {
    OvObject object;
    auto named = [](OvModifier *m, const char *name) {
        m->setName(QString::fromLatin1(name));
        return m;
    };
    OvModifier *joint = named(new OvPoserJoint, "joint");
    object.addModifier(joint);
    object.addModifier(named(new OvDFormModifier, "first"), 0);
    object.addModifier(named(new OvDFormModifier, "last"), 5);
    object.addModifier(named(new OvDFormModifier, "middle"), 1);
    object.addModifier(nullptr);

    QStringList names;
    for (int i = 0; i < object.getNumModifiers(); ++i)
        names << object.getModifier(i)->getName();
    EXPECT_EQ(names, (QStringList{"first", "middle", "joint", "last"}));
    EXPECT_EQ(object.findModifier<OvPoserJoint>(), joint);
    EXPECT_EQ(object.findModifier<OvDFormModifier>()->getName(), "first");

    auto *bend = static_cast<OvPoserJoint *>(joint)->getBendControl();
    EXPECT_TRUE(static_cast<OvPoserJoint *>(joint)->bendingOn());
    bend->setIntValue(0);
    EXPECT_FALSE(static_cast<OvPoserJoint *>(joint)->bendingOn());
}

TEST_F(OvcoreScene, ReplaceMaterialKeepsTheIndexAndReleasesTheOld) {
    OvPolyShape shape;
    OvTSharedPointer<OvMaterial> a(new OvDefaultMaterial), b(new OvDefaultMaterial), c(new OvDefaultMaterial);
    a->setName("a");
    b->setName("b");
    c->setName("c");
    shape.addMaterial(a.get());
    shape.addMaterial(b.get());
    shape.addMaterial(c.get());
    OvTSharedPointer<OvMaterial> r(new OvDefaultMaterial);
    r->setName("r");

    EXPECT_EQ(b->refCount(), 2);
    ASSERT_TRUE(shape.replaceMaterial(b.get(), r.get()));
    EXPECT_EQ(shape.getNumMaterials(), 3);
    EXPECT_EQ(shape.getMaterial(1), r.get());
    EXPECT_EQ(shape.findMaterialIndex("b"), -1);
    EXPECT_EQ(shape.findMaterial("r"), r.get());
    EXPECT_EQ(b->refCount(), 1) << "the shape let go of the replaced material";
    EXPECT_EQ(r->refCount(), 2);

    EXPECT_FALSE(shape.replaceMaterial(b.get(), c.get())) << "no longer in the shape";
    EXPECT_FALSE(shape.replaceMaterial(a.get(), nullptr));
    EXPECT_EQ(shape.getMaterial(0), a.get());
}

TEST_F(OvcoreScene, CopyFromTakesSettingsButKeepsNameLabelAndReferenceCount) {
    OvTSharedPointer<OvDefaultMaterial> source(new OvDefaultMaterial), extra(source),
        target(new OvDefaultMaterial);
    source->setName("skin");
    source->setLabel("Skin");
    source->setDiffuseColor(QColor(10, 20, 30));
    source->setBaseOpacity(0.25f);
    source->setColorMap(new OvTexture("/tex/skin.png", 4, 4));
    target->setName("cloth");
    target->setLabel("Cloth");

    target->copyFrom(*source);
    EXPECT_EQ(target->getName(), "cloth");
    EXPECT_EQ(target->getLabel(), "Cloth");
    EXPECT_EQ(target->getDiffuseColor(), QColor(10, 20, 30));
    EXPECT_EQ(target->getBaseOpacity(), 0.25f);
    EXPECT_EQ(target->getColorMap(), source->getColorMap()) << "maps are shared, not copied";
    EXPECT_EQ(source->getColorMap()->refCount(), 2);
    EXPECT_EQ(target->refCount(), 1) << "copying settings must not copy the reference count";
    EXPECT_EQ(source->refCount(), 2);

    OvMaterial plain;
    target->copyFrom(plain);
    EXPECT_EQ(target->getDiffuseColor(), QColor(10, 20, 30)) << "another kind of material gives nothing";
}

TEST_F(OvcoreScene, MeshFromGroupRenumbersVerticesAndMaterials) {
    std::unique_ptr<OvPolyMesh> mesh(
        makeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}}));
    const float uvs[3][2] = {{0.5f, 0.5f}, {0.25f, 0}, {1, 1}};
    mesh->getUVs()->appendPnt2Value(uvs[0]);
    mesh->getUVs()->appendPnt2Value(uvs[1]);
    mesh->getUVs()->appendPnt2Value(uvs[2]);
    auto face = [&](int material, std::vector<std::pair<int, int>> corners) {
        mesh->activateMaterial(material);
        mesh->startFace();
        for (auto [v, t] : corners)
            mesh->addFaceEdge(v, t);
        mesh->finishFace();
    };
    mesh->activateFaceGroup("arm");
    face(3, {{4, 3}, {5, 0}, {0, 3}});
    mesh->deactivateAllFaceGroups();
    face(0, {{1, 1}, {2, 1}, {3, 1}});
    mesh->activateFaceGroup("arm");
    face(1, {{5, 2}, {1, 3}, {4, 2}});
    face(3, {{0, 0}, {4, 3}, {5, 0}});

    std::vector<int> used = {99};
    std::unique_ptr<OvPolyMesh> arm(mesh->createMeshFromGroup("arm", &used));
    ASSERT_TRUE(arm);
    EXPECT_EQ(used, (std::vector<int>{1, 3}));
    ASSERT_EQ(arm->getNumFaces(), 3);
    EXPECT_EQ(arm->getFaceMaterial(0), 1) << "faces refer to positions in the list";
    EXPECT_EQ(arm->getFaceMaterial(1), 0);
    EXPECT_EQ(arm->getFaceMaterial(2), 1);
    // Vertices 4, 5, 0, 1 in first-use order.
    ASSERT_EQ(arm->getNumVertices(), 4);
    EXPECT_EQ(arm->getVertex(0)[0], 4);
    EXPECT_EQ(arm->getVertex(3)[0], 1);
    EXPECT_EQ(corners(*arm, 1, &OvPolyMesh::getFaceVertex), (std::vector<int>{1, 3, 0}));
    // UVs 3, 0, 2 in first-use order.
    ASSERT_EQ(arm->getUVs()->getNumValues(), 3);
    EXPECT_EQ(arm->getUVs()->getPnt2Value(0)[0], 1);
    EXPECT_EQ(arm->getUVs()->getPnt2Value(2)[0], 0.25f);
    EXPECT_EQ(corners(*arm, 1, &OvPolyMesh::getFaceUV), (std::vector<int>{2, 0, 2}));
    EXPECT_EQ(arm->getFaceGroupName(0), "arm");
    EXPECT_TRUE(checkMeshInvariants(*arm, int(used.size())).isEmpty());

    std::unique_ptr<OvPolyMesh> plain(mesh->createMeshFromGroup("arm"));
    EXPECT_EQ(plain->getFaceMaterial(0), 3) << "without the list the indices stay";
    EXPECT_EQ(mesh->createMeshFromGroup("leg"), nullptr);
}

TEST_F(OvcoreScene, MeshCutFromGroupSharesVerticesUntilWritten) {
    OvTSharedPointer<OvPolyMesh> whole(makeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}}));
    whole->activateFaceGroup("leg");
    whole->startFace();
    for (int v : {3, 4, 1})
        whole->addFaceEdge(v, 0);
    whole->finishFace();
    whole->activateFaceGroup("foot");
    whole->startFace();
    for (int v : {4, 1, 2})
        whole->addFaceEdge(v, 0);
    whole->finishFace();

    OvTSharedPointer<OvPolyMesh> leg(whole->createMeshFromGroup("leg"));
    OvTSharedPointer<OvPolyMesh> foot(whole->createMeshFromGroup("foot"));
    ASSERT_TRUE(leg && foot);
    OvTSharedPointer<OvPolyMesh> legAgain(leg->createMeshFromGroup("leg"));
    EXPECT_TRUE(leg->sharesVerticesWith(*whole));
    EXPECT_TRUE(legAgain->sharesVerticesWith(*whole)) << "a cut of a cut reads the first storage";
    EXPECT_TRUE(leg->getUVs()->sharesStorageWith(*whole->getUVs()));
    ASSERT_EQ(legAgain->getNumVertices(), 4);
    EXPECT_EQ(legAgain->getVertex(3)[0], 2);
    EXPECT_EQ(legAgain->getNumFaceGroupFaces(0), 2);

    whole = nullptr; // the cuts keep the storage alive
    EXPECT_EQ(leg->getVertex(0)[0], 3);
    EXPECT_EQ(foot->getVertex(0)[0], 4);

    float *writable = leg->setVertexArray(4);
    writable[0] = 30;
    writable[9] = 7;
    EXPECT_FALSE(leg->sharesVerticesWith(*foot));
    EXPECT_EQ(leg->getVertex(0)[0], 30);
    EXPECT_EQ(leg->getVertex(2)[0], 1) << "the old vertices come along";
    EXPECT_EQ(foot->getVertex(0)[0], 4) << "writing one cut leaves the others alone";
    foot->getUVs()->clear();
    EXPECT_EQ(foot->getUVs()->getNumValues(), 0);
    EXPECT_EQ(leg->getUVs()->getNumValues(), 1);

    // New faces widen the narrow corner arrays as needed and join only the groups active then.
    leg->setVertexArray(70000);
    leg->deactivateAllFaceGroups();
    leg->startFace();
    for (int v : {0, 69999, 3})
        leg->addFaceEdge(v, 0);
    ASSERT_TRUE(leg->finishFace());
    EXPECT_EQ(corners(*leg, 1, &OvPolyMesh::getFaceVertex), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(corners(*leg, 2, &OvPolyMesh::getFaceVertex), (std::vector<int>{0, 69999, 3}));
    EXPECT_EQ(leg->getNumFaceGroupFaces(0), 2);
    leg->activateFaceGroup("leg");
    leg->startFace();
    for (int v : {1, 2, 3})
        leg->addFaceEdge(v, 0);
    ASSERT_TRUE(leg->finishFace());
    ASSERT_EQ(leg->getNumFaceGroupFaces(0), 3);
    EXPECT_EQ(leg->getFaceGroupFace(0, 1), 1);
    EXPECT_EQ(leg->getFaceGroupFace(0, 2), 3);
    EXPECT_TRUE(checkMeshInvariants(*leg).isEmpty());
}

TEST_F(OvcoreScene, FalloffSplineStaysSortedByX) {
    OvDFormZone zone;
    OvNaturalSpline *spline = zone.getSpline();
    spline->insertPoint(0.5f, 1);
    spline->insertPoint(0, 1);
    spline->insertPoint(1, 0);
    spline->insertPoint(0.5f, 2); // equal x: after the earlier point
    spline->insertPoint(-1, 3);
    std::vector<std::pair<float, float>> points;
    for (int i = 0; i < spline->getNumPoints(); ++i)
        points.push_back(spline->getPoint(i));
    EXPECT_EQ(points, (std::vector<std::pair<float, float>>{{-1, 3}, {0, 1}, {0.5f, 1}, {0.5f, 2}, {1, 0}}));
    spline->clear();
    EXPECT_EQ(spline->getNumPoints(), 0);
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
        const char *name;
        int axes[3];
    } cases[] = {{OvRotationOrder::XYZ, "XYZ", {0, 1, 2}}, {OvRotationOrder::XZY, "XZY", {0, 2, 1}},
                 {OvRotationOrder::YXZ, "YXZ", {1, 0, 2}}, {OvRotationOrder::YZX, "YZX", {1, 2, 0}},
                 {OvRotationOrder::ZXY, "ZXY", {2, 0, 1}}, {OvRotationOrder::ZYX, "ZYX", {2, 1, 0}}};
    for (const auto &c : cases) {
        EXPECT_STREQ(rotationOrderName(c.order), c.name);
        OvVec3 expected = v;
        for (int axis : c.axes)
            expected = rotateAbout(axis, angles[axis], expected);
        const OvQuat q = quatFromEuler(c.order, angles);
        const OvVec3 got = q.multVec(v);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(got[k], expected[k], 1e-5) << c.name << " component " << k;
        EXPECT_NEAR(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3], 1.0, 1e-5) << c.name;
    }
}

TEST_F(OvcoreScene, ControllersInsertAndRemove) {
    OvFloatProperty driven("xRotate"), source("yRotate");
    auto *a = new OvERCLink(&source, 1, 0);
    auto *b = new OvERCLink(&source, 2, 0);
    auto *c = new OvERCLink(nullptr, 3, 0);
    driven.insertController(a);
    driven.insertController(b, 0);
    driven.insertController(c, 1);
    driven.insertController(nullptr);
    ASSERT_EQ(driven.getNumControllers(), 3);
    EXPECT_EQ(driven.getController(0), b);
    EXPECT_EQ(driven.getController(1), c);
    EXPECT_EQ(driven.getController(2), a);

    ASSERT_TRUE(driven.removeController(c));
    std::unique_ptr<OvController> removed(c); // the caller owns a removed controller
    EXPECT_EQ(driven.getNumControllers(), 2);
    EXPECT_EQ(driven.getController(1), a);
    EXPECT_FALSE(driven.removeController(c));
}

// ---- the scene checks themselves ------------------------------------------------------------

TEST_F(OvcoreScene, InvariantsCheckASharedMeshOnceAndAgainstEveryShape) {
    OvTSharedPointer<OvPolyMesh> mesh(makeMesh({{0, 0, 0}}, {{2, 0}}));
    mesh->beginEdit(); // left open: a broken mesh
    OvNode *a = make("a");
    scene.addNode(a);
    auto *object = new OvObject;
    auto *wide = makeShape("wide", mesh.get());
    for (int i = 0; i < 3; ++i)
        wide->addMaterial(new OvDefaultMaterial);
    object->addShape(wide);
    object->addShape(makeShape("narrow", mesh.get()));
    a->setObject(object);

    const QStringList problems = checkSceneInvariants(scene);
    EXPECT_EQ(problems.filter("still being edited").size(), 1) << problems.join('\n').toStdString();
    EXPECT_EQ(problems.filter("shape \"narrow\": its mesh uses material 2 of 0").size(), 1)
        << problems.join('\n').toStdString();
    EXPECT_EQ(problems.filter("wide").size(), 0);
}

TEST_F(OvcoreScene, InvariantsCatchLinksToNodesOutsideTheScene) {
    auto *figure = make<OvSkeleton>("figure");
    scene.addNode(figure);
    auto *clothes = make<OvSkeleton>("clothes");
    scene.addNode(clothes);
    clothes->setFollowTarget(figure);
    auto *magnet = make<OvDForm>("magnet");
    scene.addNode(magnet);
    magnet->setBase(make<OvDFormBase>("base", magnet));
    magnet->setZone(make<OvDFormZone>("zone", magnet));
    OvBone *hip = make<OvBone>("hip", figure);
    auto *object = new OvObject;
    auto *modifier = new OvDFormModifier;
    modifier->setName("magnet");
    modifier->setDForm(magnet);
    object->addModifier(modifier);
    hip->setObject(object);
    hip->getXRotControl()->insertController(new OvERCLink(object->getGeometryControl(), 1, 0));
    hip->getYRotControl()->insertController(new OvERCLink(nullptr, 1, 0)); // a place-holder
    ASSERT_TRUE(checkSceneInvariants(scene).isEmpty())
        << checkSceneInvariants(scene).join('\n').toStdString();

    // Take the deformer and the followed figure out of the scene (kept alive here, so the
    // check itself touches nothing freed).
    scene.removeNode(magnet);
    scene.removeNode(figure);
    std::unique_ptr<OvNode> keepMagnet(magnet);
    auto *strayLink = new OvERCLink(hip->getXPosControl(), 1, 0);
    clothes->getXRotControl()->insertController(strayLink);

    const QString all = checkSceneInvariants(scene).join('\n');
    EXPECT_TRUE(all.contains("node \"clothes\": property Follow refers to a skeleton not in the scene"))
        << all.toStdString();
    EXPECT_TRUE(all.contains("node \"clothes\": property xRotate follows a property of no node in the scene"))
        << all.toStdString();
    clothes->getXRotControl()->removeController(strayLink);
    delete strayLink;

    // The deformer's own wiring and the modifier pointing at it.
    scene.addNode(keepMagnet.release());
    OvNode *base = magnet->getNodeChild(0);
    magnet->removeNodeChild(base);
    std::unique_ptr<OvNode> keepBase(base);
    const QString wiring = checkSceneInvariants(scene).join('\n');
    EXPECT_TRUE(wiring.contains("node \"magnet\": deformer base not in the scene")) << wiring.toStdString();
    EXPECT_FALSE(wiring.contains("zone")) << wiring.toStdString();
    scene.addNode(figure); // its hip carries the modifier
    scene.removeNode(magnet);
    keepMagnet.reset(magnet);
    const QString modifierLink = checkSceneInvariants(scene).join('\n');
    EXPECT_TRUE(modifierLink.contains("deformer modifier magnet refers to a deformer not in the scene"))
        << modifierLink.toStdString();
}

} // namespace
