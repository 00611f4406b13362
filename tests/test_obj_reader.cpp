// The OBJ reader on small files written for each case: face corner forms, groups, materials, the
// options, naming, continuation lines, lines read only in part, and input that refers to nothing or
// is not OBJ at all. Every case runs three ways: every line by the general path, lines of the usual
// forms by the fast path, and the fast path with a tiny chunk, so that lines cross chunk edges.
#include "ImportTest.h"
#include "support/SceneInvariants.h"

#include <OvApp.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <memory>
#include <obj/ObjParse.h>
#include <obj/OvObjImporter.h>
#include <random>
#include <string>
#include <text/ObjOptions.h>

namespace {

OvFileIOSettings option(const QString &key, const QVariant &value) {
    OvFileIOSettings s;
    value.typeId() == QMetaType::Bool ? s.setBoolValue(key, value.toBool())
                                      : s.setFloatValue(key, value.toFloat());
    return s;
}

// Corners as " vertex/uv", faces separated by " |".
std::string faces(const OvPolyMesh *m) {
    std::string s;
    for (int f = 0; f < m->getNumFaces(); ++f) {
        s += f ? " |" : "";
        for (int c = 0; c < m->getFaceSize(f); ++c)
            s += " " + std::to_string(m->getFaceVertex(f, c)) + "/" + std::to_string(m->getFaceUV(f, c));
    }
    return s;
}

std::vector<float> vertices(const OvPolyMesh *m) {
    std::vector<float> v;
    for (int i = 0; i < m->getNumVertices(); ++i)
        v.insert(v.end(), m->getVertex(i), m->getVertex(i) + 3);
    return v;
}

std::vector<float> uvs(const OvPolyMesh *m) {
    std::vector<float> v;
    for (int i = 0; i < m->getUVs()->getNumValues(); ++i)
        v.insert(v.end(), m->getUVs()->getPnt2Value(i), m->getUVs()->getPnt2Value(i) + 2);
    return v;
}

struct ReadMode {
    const char *name;
    obj::ReadTuning tuning;
};
const ReadMode kModes[] = {{"General", {false, 0}}, {"Fast", {true, 0}}, {"FastTinyChunks", {true, 16}}};

class ObjReader : public ImportTest, public ::testing::WithParamInterface<ReadMode> {
protected:
    void SetUp() override {
        ImportTest::SetUp();
        obj::readTuning() = GetParam().tuning;
    }
    void TearDown() override {
        obj::readTuning() = obj::ReadTuning();
        ImportTest::TearDown();
    }
    bool fast() const { return GetParam().tuning.fastPaths; }

    // Reads `text` written to a file called `name` (an empty mesh when that fails); the result code
    // goes to `result`.
    const OvPolyMesh *import(const QByteArray &text, const OvFileIOSettings &settings = OvFileIOSettings(),
                             const QString &name = QStringLiteral("model.obj")) {
        const bool gz = name.endsWith(QLatin1String(".obz"));
        OvShape *raw = nullptr;
        result = importer.readShape(gz ? writeGzipFile(dir, name, text) : file(name, text), &raw, settings);
        shape.reset(raw);
        auto *poly = dynamic_cast<OvPolyShape *>(raw);
        static const OvPolyMesh none;
        if (!poly || !poly->getPolyMesh()) {
            ADD_FAILURE() << "no mesh";
            return &none;
        }
        EXPECT_EQ(checkShapeInvariants(*shape).join('\n').toStdString(), "");
        return poly->getPolyMesh();
    }
    // Material of every face, then the shape's material names.
    std::string materials(const OvPolyMesh *m) const {
        std::string s;
        for (int f = 0; f < m->getNumFaces(); ++f)
            s += std::to_string(m->getFaceMaterial(f)) + " ";
        for (int i = 0; shape && i < shape->getNumMaterials(); ++i)
            s += " " + shape->getMaterial(i)->getName().toStdString();
        return s;
    }

    OvObjImporter importer;
    std::unique_ptr<OvShape> shape;
    unsigned result = ~0u;
};

TEST_P(ObjReader, FaceCornerFormsAndFacesThatReferToNothing) {
    QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n"
                      "f 1/2/3 2/3/1 3/1/2\nf 1/2 2/3 3/1\nf 1//3 2//1 3//2\nf 1 2 3\n" // 7-10
                      "f -3/-1 -2/-2 -1/-3\n" // 11: counted back from what was read so far
                      "f 1/0 2/4 3/99\n"      // 12: 0 and beyond the count give the first UV
                      "f 1 2/2 3/3\n"         // 13: no texture part at the first corner: none at all
                      "f 1/2 2 3/3\n"         // 14: a corner without one keeps the one before
                      "v 1 1 1\nf -1 -2 -4\n" // 15-16
                      "f 12/2/3 3/3/3 1/1/1\nf 0 1 2\nf -5 1 2\nf 1/-4 2 3\n" // 17-20: dropped
                      "f 1 2\n";                                              // 21: two corners kept
    for (int i = 0; i < 8; ++i) // 22-29: ten reports in all, then a count
        text += "f 9 9 9\n";
    const OvPolyMesh *m = import(text);
    EXPECT_EQ(faces(m),
              " 0/1 1/2 2/0 | 0/1 1/2 2/0 | 0/0 1/0 2/0 | 0/0 1/0 2/0 | 0/2 1/1 2/0 | 0/0 1/0 2/0 | "
              "0/0 1/0 2/0 | 0/1 1/1 2/2 | 3/0 2/0 0/0 | 0/0 1/0");
    EXPECT_EQ(m->getUVs()->getNumValues(), 3);
    const QString log = logText();
    for (int line : {17, 18, 19, 20, 22, 27})
        EXPECT_TRUE(log.contains(QStringLiteral("on line %1 in OvObjImporter").arg(line))) << line;
    EXPECT_FALSE(log.contains("on line 21 ") || log.contains("on line 28 ")) << log.toStdString();
    EXPECT_TRUE(log.contains("corner \"12/2/3\" refers to no vertex")) << log.toStdString();
    EXPECT_TRUE(log.contains("2 more faces with indices out of range were ignored in model.obj"));

    // Without texture coordinates (or with them switched off) every corner uses one (0, 0). The mesh
    // is named after the file without ".obj" in any case, the shape without its last extension.
    m = import("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1/1 2/2 3/3\nf 1 2 3\n", {}, QStringLiteral("my.part.OBJ"));
    EXPECT_EQ(m->getName() + " " + shape->getName(), "my.part my.part");
    EXPECT_EQ(uvs(m), std::vector<float>({0.0f, 0.0f}));
    EXPECT_EQ(faces(m), " 0/0 1/0 2/0 | 0/0 1/0 2/0");
    m = import("vt 0.5 0.5\nvt 1 1\nv 0 0 0\nf 1/2 1 1/1\n", option(ObjOption::IncludeVT, false));
    EXPECT_EQ(uvs(m), std::vector<float>({0.0f, 0.0f}));
    EXPECT_EQ(faces(m), " 0/0 0/0 0/0");
    // A vt line with one number adds (0, 0); a third number is ignored.
    EXPECT_EQ(uvs(import("vt 0.5\nvt 0.25 0.75 9\n")), std::vector<float>({0.0f, 0.0f, 0.25f, 0.75f}));
}

// A backslash continues a face on the next line; a chunk size of one byte moves the buffer under the
// face's tokens. Inline geometry in a Poser file ends at a '}' line and leaves the rest to the caller.
TEST_P(ObjReader, ContinuationLinesAndTheClosingBrace) {
    OvTextInputFile input(file("inline.txt", "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 77 \\\n2 3 3 3 3 3 3 3 3 3 3 3\n"
                                             "f 1 2 \\\n3\n}\nafter 1\n"),
                          false, true);
    input.setChunkSize(1);
    ASSERT_TRUE(input.open());
    OvShape *raw = nullptr;
    int line = 10;
    EXPECT_EQ(importer.readObj(input, &raw, line, OvFileIOSettings()), 0u);
    shape.reset(raw);
    EXPECT_EQ(line, 18);
    EXPECT_EQ(faces(static_cast<OvPolyShape *>(raw)->getPolyMesh()), " 0/0 1/0 2/0"); // the second face
    EXPECT_TRUE(logText().contains("corner \"77\"") && logText().contains("on line 14 in OvObjImporter"))
        << logText().toStdString();
    char *argv[OvTextInputFile::MaxTokens];
    int argc = 0;
    ASSERT_TRUE(input.getLine(argv, argc));
    EXPECT_STREQ(argv[0], "after");
}

TEST_P(ObjReader, GroupsMaterialsAndTheirLibrary) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 5 5 5\n"
                            "g a b\nf 1 2 3\ng\nf 1 3 4\ng b c\nf 4 3 5\ngx c\nf 5 4 3\n"; // gx is a g line
    for (bool on : {true, false}) {
        const OvPolyMesh *m = import(text, option(ObjOption::IncludeG, on));
        std::string groups;
        for (int g = 0; g < m->getNumFaceGroups(); ++g) {
            groups += " " + m->getFaceGroupName(g).toStdString() + ":";
            for (int i = 0; i < m->getNumFaceGroupFaces(g); ++i)
                groups += std::to_string(m->getFaceGroupFace(g, i)) + ",";
        }
        EXPECT_EQ(groups, on ? " a:0, b:0,2, c:2,3," : " :0,1,2,3,");
    }
    // One material per name, in order of first use; "default" only for faces before any usemtl.
    const QByteArray mtl =
        "v 0 0 0\nf 1 1 1\nusemtl red\nf 1 1 1\nusemtl blue\nf 1 1 1\nusemtl red\nf 1 1 1\n"
        "usemtl\nf 1 1 1\n";
    EXPECT_EQ(materials(import(mtl)), "0 1 2 1 1  default red blue");
    EXPECT_EQ(materials(import(mtl, option(ObjOption::IncludeUsemtl, false))), "0 0 0 0 0  default");
    EXPECT_EQ(materials(import("v 0 0 0\nusemtl skin\nf 1 1 1\n")), "0  skin");
    EXPECT_EQ(materials(import("v 0 0 0\nv 1 1 1\n")), "");

    // The material library: the first name of the last mtllib line, relative to the OBJ's folder.
    file("first.mtl", "newmtl red\nKd 1 0 0\n");
    file("second.mtl", "newmtl red\nKd 0 0 1\n");
    auto red = [this] {
        return static_cast<OvDefaultMaterial *>(shape->findMaterial("red"))->getDiffuseColor();
    };
    const QByteArray libs = "mtllib first.mtl\nmtllib second.mtl other.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n";
    import(libs);
    EXPECT_EQ(importer.materialLibrary(), dir.filePath("second.mtl"));
    EXPECT_EQ(red(), QColor(0, 0, 255));
    import(libs, option(ObjOption::IncludeMtllib, false)); // not even looked for
    EXPECT_TRUE(importer.materialLibrary().isEmpty());
    EXPECT_EQ(red(), QColor(255, 255, 255));
    import("mtllib " + dir.filePath("first.mtl").toUtf8() + "\nusemtl red\n");
    EXPECT_EQ(red(), QColor(255, 0, 0));

    // Missing: the geometry import still succeeds. Found but unreadable: 0x200, the shape kept.
    EXPECT_EQ(materials(import("mtllib nowhere.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n")), "0  red");
    EXPECT_EQ(result, 0u);
    file("folder.mtl/inside", "");
    EXPECT_EQ(materials(import("mtllib folder.mtl\nv 0 0 0\nusemtl red\nf 1 1 1\n")), "0  red");
    EXPECT_EQ(result, 0x200u);
}

// Positions are scaled (by default to Poser units) and may be turned Z up. Long runs of positions
// keep their order, also when the mesh arrays outgrow the heap (2 MB and more). A face longer than
// the token array is read whole by the fast path; the general path keeps its first 255 corners.
TEST_P(ObjReader, ScaleSwapLongVertexRunsAndLongFaceLines) {
    // The default scale; a line with two numbers gives (0, 0, 0), a fourth number is ignored.
    const float u = 243.84f;
    EXPECT_EQ(vertices(import("v 1 2 3\nv 1 2\nv 1 2 3 4\n")),
              std::vector<float>({u, 2 * u, 3 * u, 0, 0, 0, u, 2 * u, 3 * u}));
    const std::vector<float> swapped = vertices(import("v 1 2 3\n", option(ObjOption::SwapYZ, true)));
    EXPECT_NEAR(swapped.at(0), u, 0.005f);
    EXPECT_NEAR(swapped.at(1), -3 * u, 0.005f);
    EXPECT_NEAR(swapped.at(2), 2 * u, 0.005f);
    QByteArray runs;
    std::vector<float> written;
    for (int i = 0; i < 200000; ++i) {
        runs += "v " + QByteArray::number(i) + " " + QByteArray::number(-i) + " 1\n" +
                (i == 699 ? "f 1 -1 700\n" : "");
        written.insert(written.end(), {float(i), float(-i), 1.0f});
    }
    runs += "f 200000 701\nf";
    for (int i = 0; i < 299; ++i)
        runs += " " + QByteArray::number(i % 3 + 1);
    const OvPolyMesh *m = import(runs + "\n", option(ObjOption::Scale, 1.0f));
    EXPECT_EQ(vertices(m), written);
    ASSERT_EQ(m->getNumFaces(), 3);
    EXPECT_EQ(faces(m).substr(0, 34), " 0/0 699/0 699/0 | 199999/0 700/0 ");
    EXPECT_EQ(m->getFaceSize(2), fast() ? 299 : 255);
    EXPECT_EQ(
        logText().contains("error: 1 line(s) with more than 256 words lost the rest in model.obj (a face "
                           "keeps its first 255 corners), the first on line 200003 in OvObjImporter"),
        !fast());
}

// Lines end with CR alone when the first 256 KiB hold no '\n'; a '\n' after that is a blank within
// a line.
TEST_P(ObjReader, LinesThatEndWithCarriageReturnAlone) {
    QByteArray text = "v 0 0 0\rv 1 0 0\rv 0 1 0\rv 1 1 0\r";
    while (text.size() < (1 << 18))
        text += "# no newline yet\r";
    const OvPolyMesh *m = import(text + "f 1 2 3\n4\rf 3\n2 1\r");
    EXPECT_EQ(faces(m), " 0/0 1/0 2/0 3/0 | 2/0 1/0 0/0");
}

// A compressed file keeps ".obz" in its mesh name; plain text under that extension does not open,
// nor does a missing file, and neither says anything. One that ends too early is read as far as it
// goes.
TEST_P(ObjReader, CompressedFilesAndFilesThatDoNotOpen) {
    const QByteArray text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0.5 0.5\nf 1/1 2/1 3/1\n";
    const OvPolyMesh *m = import(text, OvFileIOSettings(), QStringLiteral("model.obz"));
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(m->getName() + " " + shape->getName(), "model.obz model");
    EXPECT_EQ(uvs(m), std::vector<float>({0.5f, 0.5f}));
    OvShape *raw = nullptr;
    EXPECT_EQ(importer.readShape(file("plain.obz", text), &raw, OvFileIOSettings()), 0x200u);
    EXPECT_EQ(importer.readShape(dir.filePath("missing.obj"), &raw, OvFileIOSettings()), 0x200u);
    EXPECT_EQ(raw, nullptr);
    EXPECT_TRUE(OvApp::log().isEmpty()) << logText().toStdString();

    // Cut short: 0x200 and why, and the faces read so far refer only to what was read before them.
    QByteArray many;
    for (int i = 0; i < 5000; ++i)
        many +=
            "v " + QByteArray::number(i) + " 0 0\nvt 0 1\nf -1/-1 1/1 " + QByteArray::number(i + 1) + "\n";
    const QByteArray packed = gzipBytes(many);
    const QString cut = file("cut.obz", packed.left(packed.size() / 2));
    EXPECT_EQ(importer.readShape(cut, &raw, OvFileIOSettings()), 0x200u);
    shape.reset(raw);
    ASSERT_TRUE(raw);
    EXPECT_EQ(checkShapeInvariants(*shape).join('\n').toStdString(), "");
    const int faceCount = static_cast<OvPolyShape *>(raw)->getPolyMesh()->getNumFaces();
    EXPECT_TRUE(faceCount > 100 && faceCount < 5000) << faceCount;
    EXPECT_TRUE(
        logText().endsWith("error: Could not read all of " + cut + ": the compressed data ends too early"))
        << logText().toStdString();
}

// Lines read in part are reported once per file, with how many there were and the first: vertex
// lines without three numbers, lines of more words than the token array holds and lines longer than
// the line reader keeps (the rest of such a line is skipped, the next line read).
TEST_P(ObjReader, LinesReadInPartAreCountedAndReported) {
    QByteArray names = "g", longLine = "v 1 2 3";
    for (int i = 0; i < 300; ++i)
        names += " g" + QByteArray::number(i);
    longLine += QByteArray(" 4").repeated(int(OvTextInputFile::MaxLineLength / 2));
    const OvPolyMesh *m = import("v 1 2\nv 1 x 3\nv 4 5 6\nv 1e 2 +\n" + names + "\nv 0 0 0\nf 1 2 3\n" +
                                     longLine + "\nv 7 8 9\n",
                                 option(ObjOption::Scale, 1.0f));
    EXPECT_EQ(vertices(m),
              std::vector<float>({0, 0, 0, 1, 0, 3, 4, 5, 6, 1, 2, 0, 0, 0, 0, 1, 2, 3, 7, 8, 9}));
    EXPECT_EQ(m->getNumFaceGroups(), 255);
    EXPECT_EQ(logText(),
              "error: 3 vertex line(s) with missing or non-numeric coordinates read as 0 in model.obj, "
              "the first on line 1 in OvObjImporter\n"
              "error: 2 line(s) with more than 256 words lost the rest in model.obj (a face keeps its "
              "first 255 corners), the first on line 5 in OvObjImporter\n"
              "error: 1 line(s) longer than 16 MB were cut in model.obj, the first on line 8 in "
              "OvObjImporter");
}

// Whatever the bytes, the reader finishes and leaves a sound mesh, and the fast path reads what
// the general path reads.
TEST_P(ObjReader, GarbageInputLeavesASoundMeshAndBothPathsAgree) {
    std::mt19937 rng(7);
    const QList<QByteArray> words =
        QByteArray("v|vt|f|g|usemtl|mtllib|}|\\|1|-1|0|2|3/1|1//2|-2/-1|9/9/9|1e9|-0.5|x|#|\n|"
                   "\n|\r\n|\t|4/|5/|vtx|99999999999|1.5.|\"2|vn|")
            .split('|'); // the last word is empty: a NUL
    auto read = [this](const QByteArray &text, bool swap, const obj::ReadTuning &tuning) {
        OvApp::clearLog();
        obj::readTuning() = tuning;
        const OvPolyMesh *m = import(text, option(ObjOption::SwapYZ, swap));
        EXPECT_EQ(result, 0u);
        EXPECT_GE(m->getUVs()->getNumValues(), 1);
        std::vector<float> v = vertices(m), t = uvs(m);
        return faces(m) + logText().toStdString() + std::string((const char *)v.data(), v.size() * 4) +
               std::string((const char *)t.data(), t.size() * 4);
    };
    for (int round = 0; round < 60; ++round) {
        QByteArray text;
        for (int i = 0; i < 3000; ++i) {
            const QByteArray &w = words[int(rng() % unsigned(words.size()))];
            text += round % 3 == 0 ? QByteArray(1, char(rng())) : w.isEmpty() ? QByteArray(1, '\0') : w;
            text += round % 3 && rng() % 4 ? " " : "";
        }
        SCOPED_TRACE(round);
        EXPECT_EQ(read(text, round % 2, GetParam().tuning), read(text, round % 2, {false, 0}));
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, ObjReader, ::testing::ValuesIn(kModes),
                         [](const ::testing::TestParamInfo<ReadMode> &info) { return info.param.name; });

} // namespace
