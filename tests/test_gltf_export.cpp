// glTF export: files written for small scenes built here are read back with tinygltf and their
// numbers checked (units, rotation orders, sharing, morph targets, skins, sampled keys, bad input).
#include "ImportTest.h"

#include <GltfExport.h>
#include <OvApp.h>
#include <OvMorph.h>
#include <OvProperty.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <cmath>
#include <poser/OvPZ3Importer.h>
#include <tiny_gltf.h>

namespace {

OvScene &scene() {
    return *OvApp::getScene();
}

// A w x h grid of vertices (host units) in the XY plane, one quad per cell, UVs per vertex.
OvPolyMesh *grid(int w, int h) {
    auto *mesh = new OvPolyMesh;
    float *v = mesh->setVertexArray(w * h);
    for (int i = 0; i < w * h; ++i) {
        v[3 * i] = float(i % w);
        v[3 * i + 1] = float(i / w);
        v[3 * i + 2] = 0;
        const float uv[2] = {float(i % w) / float(w), float(i / w) / float(h)};
        mesh->getUVs()->appendPnt2Value(uv);
    }
    for (int y = 0; y + 1 < h; ++y)
        for (int x = 0; x + 1 < w; ++x) {
            const int c[4] = {y * w + x, y * w + x + 1, (y + 1) * w + x + 1, (y + 1) * w + x};
            mesh->addFace(c, c, 4);
        }
    return mesh;
}

// A node showing `mesh` (shared when given to several), at the top or below `parent`.
template <class Node = OvNode> Node *node(const QString &name, OvPolyMesh *mesh, OvNode *parent = nullptr) {
    auto *n = new Node;
    n->setName(name);
    if (mesh) {
        n->setObject(new OvObject);
        auto *shape = new OvPolyShape;
        shape->setPolyMesh(mesh);
        shape->addMaterial(new OvDefaultMaterial);
        n->getObject()->addShape(shape);
    }
    parent ? void(parent->addNodeChild(n)) : scene().addNode(n);
    return n;
}

OvMorph *addMorph(OvNode *n, const QString &name, const std::vector<int> &moved, float value) {
    auto *m = new OvMorph(name);
    for (int v : moved)
        m->getDeltas()->addDelta(v, OvVec3(0, 0, 100), false);
    m->getValueChannel()->setValue(value);
    n->getObject()->addModifier(m);
    return m;
}

class GltfExportTest : public ImportTest {
protected:
    // Exports the scene to dir/name and reads it back; false when the export failed.
    bool exportAndLoad(const QString &name = QStringLiteral("out.glb")) {
        path = dir.filePath(name);
        result = exportGltf(scene(), path, 0);
        if (!result.ok)
            return false;
        tinygltf::TinyGLTF loader;
        std::string err, warn;
        const std::string file = path.toStdString();
        const bool loaded = name.endsWith(QLatin1String(".glb"))
                                ? loader.LoadBinaryFromFile(&model, &err, &warn, file)
                                : loader.LoadASCIIFromFile(&model, &err, &warn, file);
        EXPECT_TRUE(loaded) << err;
        return loaded;
    }
    int nodeNamed(const std::string &name) const {
        for (size_t i = 0; i < model.nodes.size(); ++i)
            if (model.nodes[i].name == name)
                return int(i);
        ADD_FAILURE() << "no node " << name;
        return 0;
    }
    // The values of a plain (not sparse) float accessor.
    std::vector<float> floats(int accessor) const {
        const tinygltf::Accessor &a = model.accessors[size_t(accessor)];
        const tinygltf::BufferView &v = model.bufferViews[size_t(a.bufferView)];
        const auto *p = reinterpret_cast<const float *>(&model.buffers[0].data[v.byteOffset + a.byteOffset]);
        return std::vector<float>(p, p + v.byteLength / 4);
    }
    const tinygltf::AnimationSampler &sampler(int node, const std::string &path) const {
        for (const tinygltf::AnimationChannel &c : model.animations.at(0).channels)
            if (c.target_node == node && c.target_path == path)
                return model.animations[0].samplers[size_t(c.sampler)];
        throw std::runtime_error("no channel " + path);
    }

    QString path;
    GltfExportResult result;
    tinygltf::Model model;
};

// v turned by the rotations about x, y and z (degrees), the first axis of `order` first.
OvVec3 turnInOrder(OvVec3 v, const char *order, const double deg[3]) {
    for (const char *axis = order; *axis; ++axis) {
        const int k = *axis - 'X';
        const double a = deg[k] * M_PI / 180, c = std::cos(a), s = std::sin(a);
        const int i = (k + 1) % 3, j = (k + 2) % 3;
        const double vi = v[i], vj = v[j];
        v[i] = float(c * vi - s * vj);
        v[j] = float(s * vi + c * vj);
    }
    return v;
}

OvVec3 turnByQuat(const std::vector<double> &q, const OvVec3 &v) {
    return OvQuat(float(q[0]), float(q[1]), float(q[2]), float(q[3])).multVec(v);
}

TEST_F(GltfExportTest, PlacesNodesInMetresAboutTheirOriginsWithEachRotationOrder) {
    static const char *const orders[6] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};
    const double deg[3] = {30, 45, 60};
    OvNode *parent = node("parent", grid(2, 2));
    parent->setOrigin(OvVec3(10, 20, 30));
    parent->getXPosControl()->setValue(100);
    parent->getZPosControl()->setValue(-50);
    for (int o = 0; o < 6; ++o) {
        OvNode *n = node(QStringLiteral("turned%1").arg(o), nullptr, parent);
        n->setRotationOrder(OvRotationOrder(o));
        n->getXRotControl()->setValue(float(deg[0]));
        n->getYRotControl()->setValue(float(deg[1]));
        n->getZRotControl()->setValue(float(deg[2]));
    }
    ASSERT_TRUE(exportAndLoad());
    const tinygltf::Node &p = model.nodes[size_t(nodeNamed("parent"))];
    EXPECT_NEAR(p.translation[0], 1.1, 1e-6);
    EXPECT_NEAR(p.translation[1], 0.2, 1e-6);
    EXPECT_NEAR(p.translation[2], -0.2, 1e-6);
    const tinygltf::Node &shape = model.nodes[size_t(nodeNamed("parent_shape"))];
    EXPECT_NEAR(shape.translation[1], -0.2, 1e-6) << "the shape is moved back by the origin";
    EXPECT_EQ(model.nodes[size_t(nodeNamed("turned0"))].translation.size(), 3u)
        << "children sit at the parent's origin";
    const OvVec3 probe(1, 2, 3);
    for (int o = 0; o < 6; ++o) {
        const OvVec3 want = turnInOrder(probe, orders[o], deg);
        const OvVec3 got =
            turnByQuat(model.nodes[size_t(nodeNamed("turned" + std::to_string(o)))].rotation, probe);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(got[k], want[k], 1e-4) << orders[o];
    }
}

TEST_F(GltfExportTest, WritesASharedMeshOnceAndSplitsVerticesWithSeveralUVs) {
    OvPolyMesh *shared = grid(3, 2);
    node("a", shared);
    node("b", shared);
    OvPolyMesh *seam = grid(2, 2);
    seam->getUVs()->appendPnt2Value(std::array<float, 2>{0.5f, 0.5f}.data());
    const int c[3] = {1, 3, 2}, uv[3] = {1, 4, 2}; // vertex 3 again, with another UV
    seam->addFace(c, uv, 3);
    node("seam", seam);
    ASSERT_TRUE(exportAndLoad());
    ASSERT_EQ(model.meshes.size(), 2u);
    EXPECT_EQ(model.nodes[size_t(nodeNamed("a"))].mesh, model.nodes[size_t(nodeNamed("b"))].mesh);
    const tinygltf::Primitive &prim =
        model.meshes[size_t(model.nodes[size_t(nodeNamed("seam"))].mesh)].primitives[0];
    EXPECT_EQ(model.accessors[size_t(prim.attributes.at("POSITION"))].count, 5u);
    EXPECT_EQ(model.accessors[size_t(prim.indices)].count, 9u) << "a quad is two triangles";
    const std::vector<float> uvs = floats(prim.attributes.at("TEXCOORD_0"));
    EXPECT_FLOAT_EQ(uvs[1], 1.0f) << "v counts from the top";
}

TEST_F(GltfExportTest, WritesMorphsSparseWhenSmallerAndLeavesEmptyOnesOut) {
    OvNode *n = node("face:1", grid(10, 10));
    addMorph(n, "Smile", {3, 17, 42}, 0.25f);
    addMorph(n, "Empty", {}, 0);
    std::vector<int> all(100);
    for (int i = 0; i < 100; ++i)
        all[size_t(i)] = i;
    addMorph(n, "Brow.Up", all, 1);
    ASSERT_TRUE(exportAndLoad());
    EXPECT_TRUE(result.notes.join(' ').contains("Empty")) << result.notes.join('\n').toStdString();
    const tinygltf::Mesh &mesh = model.meshes[0];
    ASSERT_EQ(mesh.primitives[0].targets.size(), 2u);
    EXPECT_EQ(mesh.weights, (std::vector<double>{0.25, 1.0}));
    const tinygltf::Value &names = mesh.extras.Get("targetNames");
    EXPECT_EQ(names.Get(0).Get<std::string>(), "Smile");
    EXPECT_EQ(names.Get(1).Get<std::string>(), "Brow_Up");
    const tinygltf::Accessor &sparse = model.accessors[size_t(mesh.primitives[0].targets[0].at("POSITION"))];
    ASSERT_TRUE(sparse.sparse.isSparse);
    EXPECT_EQ(sparse.sparse.count, 3);
    EXPECT_EQ(sparse.count, 100u);
    EXPECT_DOUBLE_EQ(sparse.maxValues[2], 1.0) << "100 host units are a metre";
    const tinygltf::Accessor &dense = model.accessors[size_t(mesh.primitives[0].targets[1].at("POSITION"))];
    EXPECT_FALSE(dense.sparse.isSparse);
    EXPECT_EQ(floats(mesh.primitives[0].targets[1].at("POSITION"))[2], 1.0f);
    EXPECT_EQ(model.nodes[0].name, "face_1");
}

TEST_F(GltfExportTest, SkinsEachBodyPartWhollyToItsBone) {
    auto *figure = node<OvSkeleton>("figure", nullptr);
    auto *hip = node<OvBone>("hip", grid(2, 2), figure);
    auto *chest = node<OvBone>("chest", grid(2, 3), hip);
    hip->setOrigin(OvVec3(0, 50, 0));
    chest->setOrigin(OvVec3(0, 150, 0));
    node<OvBone>("hand", nullptr, chest);
    ASSERT_TRUE(exportAndLoad());
    ASSERT_EQ(model.skins.size(), 1u);
    const tinygltf::Skin &skin = model.skins[0];
    EXPECT_EQ(skin.joints, (std::vector<int>{nodeNamed("hip"), nodeNamed("chest"), nodeNamed("hand")}));
    EXPECT_TRUE(result.notes.join(' ').contains("bone hand has no shape"));
    const std::vector<float> ibm = floats(skin.inverseBindMatrices);
    EXPECT_FLOAT_EQ(ibm[16 + 13], -1.5f) << "the chest's bind matrix moves its origin back to 0";
    EXPECT_NEAR(model.nodes[size_t(nodeNamed("chest"))].translation[1], 1.0, 1e-6);
    const tinygltf::Node &skinned = model.nodes[size_t(nodeNamed("chest_skin"))];
    EXPECT_EQ(skinned.skin, 0);
    const auto &attrs = model.meshes[size_t(skinned.mesh)].primitives[0].attributes;
    const tinygltf::Accessor &joints = model.accessors[size_t(attrs.at("JOINTS_0"))];
    const unsigned char *j = &model.buffers[0].data[model.bufferViews[size_t(joints.bufferView)].byteOffset];
    for (size_t v = 0; v < joints.count; ++v)
        EXPECT_EQ(int(j[4 * v]), 1) << "vertex " << v;
    EXPECT_TRUE(std::find(model.scenes[0].nodes.begin(), model.scenes[0].nodes.end(),
                          nodeNamed("chest_skin")) != model.scenes[0].nodes.end());
}

TEST_F(GltfExportTest, MapsStepAndLinearKeysAndSamplesSplinesAndRotations) {
    OvNode *n = node("moving", grid(2, 2));
    const int f = scene().getTimeStep();
    n->getXPosControl()->setValue(0, 0.0f, OvInterpolation::Linear);
    n->getXPosControl()->setValue(10 * f, 100.0f, OvInterpolation::Linear);
    n->getScaleControl()->setValue(0, 1.0f, OvInterpolation::Constant);
    n->getScaleControl()->setValue(5 * f, 2.0f, OvInterpolation::Constant);
    n->getXRotControl()->setValue(0, 0.0f, OvInterpolation::Linear);
    n->getXRotControl()->setValue(30 * f, 90.0f, OvInterpolation::Linear);
    OvMorph *m = addMorph(n, "Blink", {0}, 0);
    m->getValueChannel()->setValue(0, 0.0f, OvInterpolation::Spline);
    m->getValueChannel()->setValue(10 * f, 1.0f, OvInterpolation::Spline);
    m->getValueChannel()->setValue(20 * f, 0.0f, OvInterpolation::Spline);
    ASSERT_TRUE(exportAndLoad());
    const int i = nodeNamed("moving");
    const tinygltf::AnimationSampler &t = sampler(i, "translation");
    EXPECT_EQ(t.interpolation, "LINEAR");
    EXPECT_EQ(floats(t.input), (std::vector<float>{0, 10.0f / 30}));
    EXPECT_FLOAT_EQ(floats(t.output)[3], 1.0f);
    const tinygltf::AnimationSampler &s = sampler(i, "scale");
    EXPECT_EQ(s.interpolation, "STEP");
    EXPECT_EQ(floats(s.output), (std::vector<float>{1, 1, 1, 2, 2, 2}));
    const tinygltf::AnimationSampler &r = sampler(i, "rotation");
    EXPECT_EQ(floats(r.input).size(), 31u) << "rotations are sampled at every frame";
    EXPECT_NEAR(floats(r.output)[4 * 15], std::sin(M_PI / 8), 1e-5) << "45 degrees about x at frame 15";
    const tinygltf::AnimationSampler &w = sampler(i, "weights");
    const std::vector<float> weights = floats(w.output);
    ASSERT_EQ(floats(w.input).size(), 31u) << "splines are sampled at every frame of the animation";
    for (int k : {3, 10, 14})
        EXPECT_FLOAT_EQ(weights[size_t(k)], m->getValueChannel()->getValueAt(k * f)) << "frame " << k;
    EXPECT_EQ(model.animations.size(), 1u);
}

TEST_F(GltfExportTest, RefusesWhatItCannotWriteValidly) {
    EXPECT_FALSE(exportAndLoad());
    EXPECT_TRUE(result.errors.join(' ').contains("no meshes"));
    OvPolyMesh *broken = grid(2, 2);
    broken->setVertexArray(4)[4] = std::nanf("");
    std::unique_ptr<OvNode> owned(node("broken", broken));
    EXPECT_FALSE(exportAndLoad());
    EXPECT_TRUE(result.errors.join(' ').contains("not a number"));
    EXPECT_FALSE(QFile::exists(path)) << "nothing is written";
    scene().removeNode(owned.get()); // the scene's checks refuse what this test had to make
    EXPECT_FALSE(exportAndLoad("missing/out.glb"));
    EXPECT_FALSE(exportAndLoad("out.obj"));
}

uint32_t word(const QByteArray &bytes, int at) {
    uint32_t w = 0;
    for (int i = 3; i >= 0; --i)
        w = (w << 8) | uint8_t(bytes[at + i]);
    return w;
}

TEST_F(GltfExportTest, WritesTheBufferBesideAGltfAndInsideAGlb) {
    OvPolyMesh *mesh = grid(2, 2);
    const int corners[3] = {0, 1, 2};
    mesh->addFace(corners, corners, 3); // 9 indices: the buffer's end is not at a 4-byte boundary
    node("a", mesh);
    ASSERT_TRUE(exportAndLoad("scene.gltf"));
    EXPECT_TRUE(QFile::exists(dir.filePath("scene.bin")));
    EXPECT_EQ(model.buffers[0].uri, "scene.bin");
    model = tinygltf::Model();
    ASSERT_TRUE(exportAndLoad("\"quoted\".gltf")) << "a name that JSON escapes";
    EXPECT_EQ(model.buffers[0].uri, "\"quoted\".bin");
    const size_t binBytes = model.buffers[0].data.size();
    model = tinygltf::Model();
    ASSERT_TRUE(exportAndLoad("scene.glb"));
    EXPECT_EQ(model.buffers[0].data.size(), binBytes);
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray glb = f.readAll();
    ASSERT_GT(glb.size(), 28);
    EXPECT_EQ(glb.left(4), "glTF");
    EXPECT_EQ(word(glb, 4), 2u);
    EXPECT_EQ(word(glb, 8), uint32_t(glb.size()));
    const uint32_t json = word(glb, 12);
    EXPECT_EQ(json % 4, 0u);
    EXPECT_EQ(word(glb, 16), 0x4E4F534Au) << "JSON";
    const QByteArray text = glb.mid(20, int(json));
    EXPECT_TRUE(text.trimmed().endsWith('}')) << "padded with spaces";
    EXPECT_TRUE(text.contains("\"byteLength\":" + QByteArray::number(qulonglong(binBytes)) + ","));
    const int bin = 20 + int(json);
    EXPECT_EQ(word(glb, bin), uint32_t((binBytes + 3) & ~size_t(3)));
    EXPECT_EQ(word(glb, bin + 4), 0x004E4942u) << "BIN";
    EXPECT_EQ(glb.size(), bin + 8 + int(word(glb, bin)));
}

const tinygltf::Material &materialNamed(const tinygltf::Model &model, const std::string &name) {
    for (const tinygltf::Material &m : model.materials)
        if (m.name == name)
            return m;
    throw std::runtime_error("no material " + name);
}

TEST_F(GltfExportTest, CarriesTheStudioMaterialsTexturesAndDrivenJoints) {
    OvApp::getContentMgr()->addPoserDirectory(QStringLiteral(OV_SOURCE_DIR "/examples/poser"));
    OvPZ3Importer importer;
    ASSERT_EQ(
        importer.read(QStringLiteral(OV_SOURCE_DIR "/examples/poser/Runtime/libraries/scene/studio.pz3"),
                      OvFileIOSettings()),
        0u);
    ASSERT_TRUE(exportAndLoad("studio.glb"));
    const tinygltf::Material &shirt = materialNamed(model, "shirt"), &skin = materialNamed(model, "skin");
    EXPECT_EQ(shirt.alphaMode, "BLEND") << "the shirt has an opacity map";
    EXPECT_GE(shirt.pbrMetallicRoughness.baseColorTexture.index, 0);
    EXPECT_GE(skin.normalTexture.index, 0) << "from the skin's bump map";
    for (const tinygltf::Image &image : model.images)
        EXPECT_GE(image.bufferView, 0) << "a .glb carries its images";
    for (const tinygltf::Mesh &mesh : model.meshes)
        for (const tinygltf::Primitive &p : mesh.primitives)
            EXPECT_EQ(p.attributes.count("TANGENT"),
                      size_t(model.materials[size_t(p.material)].normalTexture.index >= 0));
    const std::vector<float> chest = floats(sampler(nodeNamed("chest"), "rotation").output);
    EXPECT_EQ(chest.size(), 31u * 4) << "the wave dial turns the chest through an ERC link: sampled";
    EXPECT_NE(chest[15 * 4 + 3], chest[3]);

    model = tinygltf::Model();
    ASSERT_TRUE(exportAndLoad("studio.gltf"));
    const tinygltf::Texture &skinMap =
        model.textures[size_t(materialNamed(model, "skin").pbrMetallicRoughness.baseColorTexture.index)];
    const QString uri =
        QUrl::fromPercentEncoding(QByteArray::fromStdString(model.images[size_t(skinMap.source)].uri));
    EXPECT_TRUE(uri.endsWith("Textures/doll/dollSkin.png")) << uri.toStdString();
    EXPECT_TRUE(QFileInfo::exists(QDir(dir.path()).filePath(uri))) << "referenced where it is";
}

} // namespace
