// The OBJ reader on small files written for each case: face corner forms, groups, materials, the
// options, naming, continuation lines, and input that refers to nothing or is not OBJ at all.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <text/Numbers.h>
#include <obj/OvObjImporter.h>
#include <random>
#include <vector>

namespace {

using Ints = std::vector<int>;

QStringList g_warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext &, const QString &text) {
    if (type == QtWarningMsg)
        g_warnings << text;
}

class ObjReader : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        g_warnings.clear();
        previousHandler = qInstallMessageHandler(collectWarnings);
    }
    void TearDown() override { qInstallMessageHandler(previousHandler); }

    // Imports `text` written to a file called `name`; the result code goes to `result`.
    OvPolyMesh *import(const QByteArray &text, const OvFileIOSettings &settings = OvFileIOSettings(),
                       const QString &name = QStringLiteral("model.obj")) {
        QString path = name.endsWith(QLatin1String(".obz")) ? writeGzipFile(dir, name, text)
                                                            : writeFile(dir, name, text);
        OvShape *raw = nullptr;
        result = importer.readShape(path, &raw, settings);
        shape.reset(raw);
        auto *poly = dynamic_cast<OvPolyShape *>(raw);
        if (!poly || !poly->getPolyMesh()) {
            ADD_FAILURE() << "no mesh";
            return nullptr;
        }
        EXPECT_EQ(checkShapeInvariants(*shape).join('\n').toStdString(), "");
        return poly->getPolyMesh();
    }

    QStringList materialNames() const {
        QStringList names;
        for (int i = 0; i < shape->getNumMaterials(); ++i)
            names << shape->getMaterial(i)->getName();
        return names;
    }

    QTemporaryDir dir;
    OvObjImporter importer;
    std::unique_ptr<OvShape> shape;
    unsigned result = ~0u;
    QtMessageHandler previousHandler = nullptr;
};

Ints faceVerts(const OvPolyMesh *m, int f) {
    Ints v;
    for (int c = 0; c < m->getFaceSize(f); ++c)
        v.push_back(m->getFaceVertex(f, c));
    return v;
}
Ints faceUVs(const OvPolyMesh *m, int f) {
    Ints uv;
    for (int c = 0; c < m->getFaceSize(f); ++c)
        uv.push_back(m->getFaceUV(f, c));
    return uv;
}
Ints groupFaces(const OvPolyMesh *m, const char *name) {
    int g = m->findFaceGroup(QString::fromLatin1(name));
    if (g < 0)
        return {-1};
    Ints faces;
    for (int i = 0; i < m->getNumFaceGroupFaces(g); ++i)
        faces.push_back(m->getFaceGroupFace(g, i));
    return faces;
}

OvFileIOSettings option(const char *key, bool on) {
    OvFileIOSettings s;
    s.setBoolValue(QString::fromLatin1(key), on);
    return s;
}

void expectVertex(const OvPolyMesh *m, int i, float x, float y, float z, float tolerance = 0.0f) {
    const float *v = m->getVertex(i);
    EXPECT_NEAR(v[0], x, tolerance) << "vertex " << i;
    EXPECT_NEAR(v[1], y, tolerance) << "vertex " << i;
    EXPECT_NEAR(v[2], z, tolerance) << "vertex " << i;
}

TEST(ObjParse, CornerTokens) {
    EXPECT_EQ(text::leadingInt("12/5/3"), 12);
    EXPECT_EQ(text::leadingInt("-3//1"), -3);
    EXPECT_EQ(text::leadingInt("/4"), 0);
    EXPECT_EQ(text::leadingInt("99999999999"), 2147483647);
    EXPECT_EQ(text::leadingInt("-99999999999"), -2147483647 - 1);
    int t = 77;
    EXPECT_TRUE(text::faceTexIndex("12/5/3", t));
    EXPECT_EQ(t, 4);
    EXPECT_TRUE(text::faceTexIndex("1/-2", t));
    EXPECT_EQ(t, -3);
    EXPECT_TRUE(text::faceTexIndex("1/", t));
    EXPECT_EQ(t, -1);
    EXPECT_FALSE(text::faceTexIndex("1//3", t));
    EXPECT_FALSE(text::faceTexIndex("7", t));
    EXPECT_TRUE(text::faceTexIndex("-2147483648/-2147483648", t));
    EXPECT_EQ(t, -2147483647 - 1);
}

TEST_F(ObjReader, FaceCornerForms) {
    OvPolyMesh *m = import("v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                           "vt 0 0\nvt 1 0\nvt 0 1\n"
                           "f 1/2/3 2/3/1 3/1/2\n" // 0
                           "f 1/2 2/3 3/1\n"       // 1
                           "f 1//3 2//1 3//2\n"    // 2
                           "f 1 2 3\n"             // 3
                           "f -3/-1 -2/-2 -1/-3\n" // 4
                           "f 1/0 2/4 3/99\n"      // 5: 0 and beyond the count give the first UV
                           "f 1 2/2 3/3\n"         // 6: no texture part at the first corner
                           "f 1/2 2 3/3\n"         // 7: a corner without one keeps the one before
                           "v 1 1 1\n"
                           "f -1 -2 -4\n"           // 8: counts back from the vertices read so far
                           "f 12/2/3 3/3/3 1/1/1\n" // 9: vertex 12 does not exist: dropped
    );
    ASSERT_TRUE(m);
    EXPECT_EQ(result, 0u);
    ASSERT_EQ(m->getNumFaces(), 9);
    const Ints verts[] = {{0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {0, 1, 2},
                          {0, 1, 2}, {0, 1, 2}, {0, 1, 2}, {3, 2, 0}};
    const Ints uvs[] = {{1, 2, 0}, {1, 2, 0}, {0, 0, 0}, {0, 0, 0}, {2, 1, 0},
                        {0, 0, 0}, {0, 0, 0}, {1, 1, 2}, {0, 0, 0}};
    for (int f = 0; f < 9; ++f) {
        EXPECT_EQ(faceVerts(m, f), verts[f]) << "face " << f;
        EXPECT_EQ(faceUVs(m, f), uvs[f]) << "face " << f;
    }
    EXPECT_EQ(m->getUVs()->getNumValues(), 3);
    EXPECT_TRUE(logText().contains("on line 17 in OvObjImporter")) << logText().toStdString();
}

TEST_F(ObjReader, WithoutTextureCoordinatesEveryCornerUsesOneZeroUV) {
    auto expectOneZeroUV = [](const OvPolyMesh *m) {
        ASSERT_TRUE(m);
        ASSERT_EQ(m->getUVs()->getNumValues(), 1);
        EXPECT_EQ(m->getUVs()->getPnt2Value(0)[0], 0.0f);
        EXPECT_EQ(m->getUVs()->getPnt2Value(0)[1], 0.0f);
        ASSERT_EQ(m->getNumFaces(), 2);
        for (int f = 0; f < 2; ++f)
            EXPECT_EQ(faceUVs(m, f), Ints({0, 0, 0}));
    };
    expectOneZeroUV(import("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1/1 2/2 3/3\nf 1 2 3\n"));
    expectOneZeroUV(import("v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0.5 0.5\nvt 0.25 1\nf 1/2 2/1 3/2\nf 1/2 2 3\n",
                           option("IncludeVT", false)));

    // A vt line with one number adds (0, 0); a third number is ignored.
    OvPolyMesh *m = import("vt 0.5\nvt 0.25 0.75 9\n");
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getUVs()->getNumValues(), 2);
    EXPECT_EQ(m->getUVs()->getPnt2Value(0)[0], 0.0f);
    EXPECT_EQ(m->getUVs()->getPnt2Value(1)[0], 0.25f);
    EXPECT_EQ(m->getUVs()->getPnt2Value(1)[1], 0.75f);
}

TEST_F(ObjReader, ContinuationLinesExtendTheFaceAndCountAsLines) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                            "f 1 2 \\\n"
                            "3 4\n"
                            "f 1 2 9\n";
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumFaces(), 1);
    EXPECT_EQ(faceVerts(m, 0), Ints({0, 1, 2, 3}));
    EXPECT_TRUE(logText().contains("on line 7 in OvObjImporter")) << logText().toStdString();

    // The same through readObj with a tiny chunk size, so the continuation line moves the buffer: the
    // error still names the refused corner of the first line, and the counter counts every line.
    OvApp::reset();
    QString path =
        writeFile(dir, "cont.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 77 \\\n2 3 3 3 3 3 3 3 3 3 3 3 3 3 3 3\n");
    OvTextInputFile file(path, false, true);
    file.setChunkSize(1);
    ASSERT_TRUE(file.open());
    OvShape *raw = nullptr;
    int line = 0;
    importer.readObj(file, &raw, line, OvFileIOSettings());
    shape.reset(raw);
    EXPECT_EQ(line, 5);
    EXPECT_EQ(static_cast<OvPolyShape *>(raw)->getPolyMesh()->getNumFaces(), 0);
    EXPECT_TRUE(logText().contains("corner \"77\"")) << logText().toStdString();
    EXPECT_TRUE(logText().contains("on line 4 in OvObjImporter")) << logText().toStdString();
}

TEST_F(ObjReader, GroupsAndCuttingAMeshFromAGroup) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 5 5\n"
                            "vt 0 0\nvt 1 1\nvt 0.5 0.5\n"
                            "g a b\nf 1/1 2/2 3/3\n"
                            "g\nf 1 3 4\n"
                            "g b c\nf 4/3 3/2 5/1\n"
                            "gx c\nf 5 4 3\n";
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumFaces(), 4);
    EXPECT_EQ(groupFaces(m, "a"), Ints({0}));
    EXPECT_EQ(groupFaces(m, "b"), Ints({0, 2}));
    EXPECT_EQ(groupFaces(m, "c"), Ints({2, 3})); // any keyword starting with g is a group line
    EXPECT_EQ(m->getNumFaceGroups(), 3);

    std::unique_ptr<OvPolyMesh> part(m->createMeshFromGroup("b"));
    ASSERT_TRUE(part);
    EXPECT_EQ(checkMeshInvariants(*part).join('\n').toStdString(), "");
    EXPECT_EQ(part->getName(), "b");
    ASSERT_EQ(part->getNumFaces(), 2);
    // Vertices and UVs renumbered in first-use order: 0 1 2, then 3 (old 3) and 4 (old 4).
    EXPECT_EQ(faceVerts(part.get(), 0), Ints({0, 1, 2}));
    EXPECT_EQ(faceVerts(part.get(), 1), Ints({3, 2, 4}));
    ASSERT_EQ(part->getNumVertices(), 5);
    expectVertex(part.get(), 3, 0.0f, 243.84f, 0.0f);
    expectVertex(part.get(), 4, 5 * 243.84f, 5 * 243.84f, 5 * 243.84f);
    EXPECT_EQ(faceUVs(part.get(), 0), Ints({0, 1, 2}));
    EXPECT_EQ(faceUVs(part.get(), 1), Ints({2, 1, 0}));
    ASSERT_EQ(part->getUVs()->getNumValues(), 3);
    EXPECT_EQ(part->getUVs()->getPnt2Value(2)[0], 0.5f);
    EXPECT_EQ(part->findFaceGroup("b"), 0);
    EXPECT_EQ(part->getNumFaceGroups(), 1);

    std::unique_ptr<OvPolyMesh> none(m->createMeshFromGroup("zzz"));
    EXPECT_FALSE(none);

    // With groups off every face lands in the one unnamed group.
    m = import(text, option("IncludeG", false));
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumFaceGroups(), 1);
    EXPECT_EQ(m->getFaceGroupName(0), QString());
    EXPECT_EQ(groupFaces(m, ""), Ints({0, 1, 2, 3}));
}

TEST_F(ObjReader, MaterialsAreCreatedOncePerNameAndDefaultOnlyWhenNeeded) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                            "f 1 2 3\nusemtl red\nf 1 2 3\nusemtl blue\nf 1 2 3\nusemtl red\nf 1 2 3\n"
                            "usemtl\nf 1 2 3\n";
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    EXPECT_EQ(materialNames(), QStringList({"default", "red", "blue"}));
    ASSERT_EQ(m->getNumFaces(), 5);
    const int expected[] = {0, 1, 2, 1, 1};
    for (int f = 0; f < 5; ++f)
        EXPECT_EQ(m->getFaceMaterial(f), expected[f]) << "face " << f;
    for (int i = 0; i < shape->getNumMaterials(); ++i)
        EXPECT_STREQ(shape->getMaterial(i)->className(), "OvDefaultMaterial");

    m = import(text, option("IncludeUsemtl", false));
    ASSERT_TRUE(m);
    EXPECT_EQ(materialNames(), QStringList({"default"}));

    m = import("v 0 0 0\nusemtl skin\nf 1 1 1\n");
    ASSERT_TRUE(m);
    EXPECT_EQ(materialNames(), QStringList({"skin"}));

    m = import("v 0 0 0\nv 1 1 1\n");
    ASSERT_TRUE(m);
    EXPECT_EQ(shape->getNumMaterials(), 0);
}

TEST_F(ObjReader, MaterialLibraryNaming) {
    writeFile(dir, "first.mtl", "newmtl red\nKd 1 0 0\n");
    writeFile(dir, "second.mtl", "newmtl red\nKd 0 0 1\n");
    const QByteArray text = "mtllib first.mtl\nmtllib second.mtl other.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n";
    ASSERT_TRUE(import(text));
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(importer.materialLibrary(), dir.filePath("second.mtl"));
    auto *red = dynamic_cast<OvDefaultMaterial *>(shape->findMaterial("red"));
    ASSERT_TRUE(red);
    EXPECT_EQ(red->getDiffuseColor(), QColor(0, 0, 255));

    // Off: the library is not even looked for.
    ASSERT_TRUE(import(text, option("IncludeMtllib", false)));
    EXPECT_TRUE(importer.materialLibrary().isEmpty());
    red = dynamic_cast<OvDefaultMaterial *>(shape->findMaterial("red"));
    ASSERT_TRUE(red);
    EXPECT_EQ(red->getDiffuseColor(), QColor(255, 255, 255));

    // An absolute name is taken as it is.
    ASSERT_TRUE(import("mtllib " + dir.filePath("first.mtl").toUtf8() + "\nusemtl red\n"));
    red = dynamic_cast<OvDefaultMaterial *>(shape->findMaterial("red"));
    ASSERT_TRUE(red);
    EXPECT_EQ(red->getDiffuseColor(), QColor(255, 0, 0));

    // Missing: a warning, and the geometry import still succeeds.
    EXPECT_TRUE(g_warnings.isEmpty()) << g_warnings.join('\n').toStdString();
    ASSERT_TRUE(import("mtllib nowhere.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n"));
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(g_warnings, QStringList({"Could not find material file : nowhere.mtl"}));
    EXPECT_EQ(materialNames(), QStringList({"red"}));
}

TEST_F(ObjReader, ScaleAndSwap) {
    const QByteArray text = "v 1 0 0\nv 0 1 0\nv 0 0 1\nv 1 2\nv 1 2 3 4\n";
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumVertices(), 5);
    expectVertex(m, 0, 243.84f, 0, 0);
    expectVertex(m, 3, 0, 0, 0);
    expectVertex(m, 4, 243.84f, 2 * 243.84f, 3 * 243.84f);

    OvFileIOSettings scaled;
    scaled.setFloatValue("Scale", 2.5f);
    m = import(text, scaled);
    ASSERT_TRUE(m);
    expectVertex(m, 4, 2.5f, 5.0f, 7.5f);

    m = import(text, option("SwapYZ", true));
    ASSERT_TRUE(m);
    const float t = 0.005f;
    expectVertex(m, 0, 243.84f, 0, 0, t);
    expectVertex(m, 1, 0, 0, 243.84f, t);
    expectVertex(m, 2, 0, -243.84f, 0, t);
    expectVertex(m, 3, 0, 0, 0, t);
    expectVertex(m, 4, 243.84f, -3 * 243.84f, 2 * 243.84f, t);
}

// Runs of positions longer than one 256-vertex block, handed over before a face and at the end.
TEST_F(ObjReader, LongVertexRunsKeepTheirOrder) {
    QByteArray text;
    for (int i = 0; i < 700; ++i)
        text += "v " + QByteArray::number(i) + " " + QByteArray::number(-i) + " 1\n";
    text += "f 1 -1 700\n";
    for (int i = 700; i < 1000; ++i)
        text += "v " + QByteArray::number(i) + " " + QByteArray::number(-i) + " 1\n";
    text += "f -1 701\n";
    OvFileIOSettings unit;
    unit.setFloatValue("Scale", 1.0f);
    OvPolyMesh *m = import(text, unit);
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumVertices(), 1000);
    for (int i = 0; i < 1000; ++i)
        expectVertex(m, i, float(i), float(-i), 1.0f);
    ASSERT_EQ(m->getNumFaces(), 2);
    EXPECT_EQ(faceVerts(m, 0), Ints({0, 699, 699}));
    EXPECT_EQ(faceVerts(m, 1), Ints({999, 700}));
}

TEST_F(ObjReader, NamesCompressionAndEnd) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0.5 0.5\nf 1/1 2/1 3/1\n}\nv 9 9 9\nf 1 2 3\n";
    OvPolyMesh *m = import(text, OvFileIOSettings(), "model.OBJ");
    ASSERT_TRUE(m);
    EXPECT_EQ(m->getName(), "model");
    EXPECT_EQ(shape->getName(), "model");
    // The '}' line ends the read.
    EXPECT_EQ(m->getNumVertices(), 3);
    EXPECT_EQ(m->getNumFaces(), 1);

    m = import(text, OvFileIOSettings(), "model.obz");
    ASSERT_TRUE(m);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(m->getName(), "model.obz");
    EXPECT_EQ(shape->getName(), "model");
    EXPECT_EQ(m->getNumVertices(), 3);
    EXPECT_EQ(faceUVs(m, 0), Ints({0, 0, 0}));
    EXPECT_EQ(m->getUVs()->getPnt2Value(0)[0], 0.5f);

    m = import(text, OvFileIOSettings(), "my.part.obj");
    ASSERT_TRUE(m);
    EXPECT_EQ(m->getName(), "my.part");
    EXPECT_EQ(shape->getName(), "my.part");

    // Plain text under the compressed extension does not open.
    writeFile(dir, "plain.obz", text);
    OvShape *raw = nullptr;
    EXPECT_EQ(importer.readShape(dir.filePath("plain.obz"), &raw, OvFileIOSettings()), 0x200u);
    EXPECT_EQ(raw, nullptr);
    EXPECT_EQ(importer.readShape(dir.filePath("missing.obj"), &raw, OvFileIOSettings()), 0x200u);
    EXPECT_EQ(raw, nullptr);
    EXPECT_TRUE(OvApp::log().isEmpty()) << logText().toStdString();
}

// Inline geometry in a Poser file: the reader stops after the '}' line and leaves the rest of the
// stream to its caller, with the caller's line counter advanced by the lines it read.
TEST_F(ObjReader, InlineGeometryStopsAtTheClosingBrace) {
    QString path = writeFile(dir, "inline.txt", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\nafter 1\n");
    OvTextInputFile file(path, false, true);
    ASSERT_TRUE(file.open());
    OvShape *raw = nullptr;
    int line = 10;
    EXPECT_EQ(importer.readObj(file, &raw, line, OvFileIOSettings()), 0u);
    shape.reset(raw);
    EXPECT_EQ(line, 15);
    char *argv[OvTextInputFile::MaxTokens];
    int argc = 0;
    ASSERT_TRUE(file.getLine(argv, argc));
    ASSERT_EQ(argc, 2);
    EXPECT_STREQ(argv[0], "after");
}

TEST_F(ObjReader, FacesOutsideTheReadDataAreDroppedAndLogged) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\n"
                            "f 1/1 2/2 3/2\n" // 6 kept
                            "f 0 1 2\n"       // 7
                            "f 1 2 4\n"       // 8
                            "f -4 1 2\n"      // 9
                            "f 1/-3 2 3\n"    // 10: texture index before the first UV
                            "f 3/-1 2/-2 1\n" // 11 kept
                            "f 1 2\n";        // 12 kept: two corners are the file's business
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    EXPECT_EQ(result, 0u);
    ASSERT_EQ(m->getNumFaces(), 3);
    EXPECT_EQ(faceVerts(m, 1), Ints({2, 1, 0}));
    EXPECT_EQ(faceUVs(m, 1), Ints({1, 0, 0}));
    const QString log = logText();
    for (int line : {7, 8, 9, 10})
        EXPECT_TRUE(log.contains(QStringLiteral("on line %1 in OvObjImporter").arg(line)))
            << log.toStdString();
    EXPECT_FALSE(log.contains("on line 6 ")) << log.toStdString();
    EXPECT_FALSE(log.contains("on line 11 ")) << log.toStdString();
}

TEST_F(ObjReader, LongFaceLinesKeepTheFirstTokens) {
    QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf";
    for (int i = 0; i < 299; ++i)
        text += " " + QByteArray::number(i % 3 + 1);
    text += "\nv 2 2 2\nf 4 1 2\n";
    OvPolyMesh *m = import(text);
    ASSERT_TRUE(m);
    ASSERT_EQ(m->getNumFaces(), 2);
    EXPECT_EQ(m->getFaceSize(0), 255);
    EXPECT_EQ(m->getFaceVertex(0, 254), 254 % 3);
    EXPECT_EQ(faceVerts(m, 1), Ints({3, 0, 1}));
}

// Whatever the bytes, the reader finishes and leaves a sound mesh.
TEST_F(ObjReader, GarbageInputLeavesASoundMesh) {
    std::mt19937 rng(7);
    const char *words[] = {"v",   "vt",   "f",   "g",      "usemtl", "mtllib",     "}",     "\\",
                           "1",   "-1",   "0",   "2",      "3/1",    "1//2",       "-2/-1", "9/9/9",
                           "1e9", "-0.5", "x",   "#",      "\n",     "\n",         "\r\n",  "\t",
                           "4/",  "5/",   "vtx", "usemtl", "\0",     "99999999999"};
    for (int round = 0; round < 60; ++round) {
        QByteArray text;
        if (round % 3 == 0) {
            for (int i = 0; i < 4000; ++i)
                text += char(rng() % 256);
        } else {
            for (int i = 0; i < 3000; ++i) {
                const char *w = words[rng() % (sizeof words / sizeof *words)];
                text += *w ? QByteArray(w) : QByteArray(1, '\0');
                text += rng() % 4 ? " " : "";
            }
        }
        SCOPED_TRACE(round);
        OvPolyMesh *m = import(text, round % 2 ? option("SwapYZ", true) : OvFileIOSettings());
        ASSERT_TRUE(m);
        EXPECT_EQ(result, 0u);
        EXPECT_FALSE(m->isEditing());
        EXPECT_GE(m->getUVs()->getNumValues(), 1);
    }
}

} // namespace
