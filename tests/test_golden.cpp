// Whole imports through the command-line host. The host loads the plug-in module exactly as the
// desktop host would, so these cover the shell, the importers and the dump together: a few scenes
// are compared with checked-in dumps (UPDATE_GOLDEN=1 rewrites them instead), and OBJ imports are
// checked by a summary of their JSON. The dumps of a scene too deep for a recursion are measured
// in the test process.
#include <JsonWriter.h>
#include <OvApp.h>
#include <OvNode.h>
#include <OvScene.h>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <SceneDump.h>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

struct HostRun {
    int exitCode = -1;
    QString out, err;
};

// Runs ovimport; "$SRC" in an argument stands for the source tree, and absolute paths in the output
// become "$SRC" again (canonical ones too: texture paths are), so results do not depend on the checkout.
HostRun runHost(const QStringList &args) {
    QStringList resolved;
    for (const QString &a : args)
        resolved << QString(a).replace("$SRC", OV_SOURCE_DIR);
    QProcess process;
    process.start(OV_BIN_DIR "/ovimport", resolved);
    HostRun run;
    process.waitForFinished(60000);
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1; // -1: crashed
    for (auto [text, bytes] : {std::pair{&run.out, process.readAllStandardOutput()},
                               std::pair{&run.err, process.readAllStandardError()}}) {
        *text = QString::fromUtf8(bytes);
        text->replace(QDir(OV_SOURCE_DIR).canonicalPath(), "$SRC").replace(OV_SOURCE_DIR, "$SRC");
    }
    return run;
}

const QString kTable = "$SRC/examples/obj/table.obj";
const QString kFixtures = "$SRC/tests/fixtures/golden/";
const QString kPoserContent = "$SRC/examples/poser";
const QString kStudio = "$SRC/examples/poser/Runtime/libraries/scene/studio.pz3";

TEST(Golden, ImportsMatchTheReferenceDumps) {
    const struct {
        const char *reference; // file under tests/golden
        QStringList args;
        int exitCode;
    } cases[] = {
        // clang-format off
        {"table.txt", {kTable}, 0},
        {"table.json", {kTable, "--json", "-"}, 0},
        {"studio.txt", {kStudio, "--content", kPoserContent}, 0},
        {"studio.json", {kStudio, "--content", kPoserContent, "--json", "-"}, 0},
        // The doll's wave dial at its peak drives chest, head and left arm.
        {"studio-frame15.txt", {kStudio, "--content", kPoserContent, "--frame", "15"}, 0},
        // The bundled light set: a spot light and two distant lights, coloured by keys at frame 0.
        {"lights.txt", {kPoserContent + "/Runtime/libraries/light/threePoint.lt2", "--content", kPoserContent}, 0},
        {"doll-cr2.json", {kPoserContent + "/Runtime/libraries/character/doll.cr2", "--content", kPoserContent,
                           "--json", "-", "--no-mesh-data"}, 0},
        {"poser-damaged.json", {kFixtures + "damaged.pz3", "--content", kPoserContent, "--json", "-",
                                "--no-mesh-data"}, 1},
        // clang-format on
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reference);
        const HostRun run = runHost(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
        QFile f(OV_GOLDEN_DIR "/" + QString::fromLatin1(c.reference));
        if (qEnvironmentVariable("UPDATE_GOLDEN") == "1") {
            ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(run.out.toUtf8());
        } else {
            ASSERT_TRUE(f.open(QIODevice::ReadOnly)) << "missing; run with UPDATE_GOLDEN=1 and review it";
            EXPECT_EQ(f.readAll().toStdString(), run.out.toStdString()); // a multi-line diff on failure
        }
    }
}

// The value at a path such as "vertices/0" below `v`, as compact JSON text.
std::string at(QJsonValue v, const QString &path) {
    for (const QString &part : path.split('/'))
        v = v.isArray() ? v.toArray().at(part.toInt()) : v.toObject().value(part);
    return QJsonDocument(QJsonArray{v}).toJson(QJsonDocument::Compact).toStdString();
}

TEST(GoldenSummary, ObjImportsThroughTheHost) {
    const struct {
        QStringList args; // the file and host options; "--json -" is added
        const char *summary;
        // Facts about the first mesh: a path below it and the value there, as JSON text.
        std::vector<std::pair<const char *, const char *>> facts;
    } rows[] = {
        // clang-format off
        {{kTable, "--no-mesh-data"}, "exit 0, result 0, log 0: 1 nodes, 18 vertices, 11 faces, 3 groups, 3 materials",
         {{"groups/1", R"({"name": "legs", "faceCount": 4})"}}},
        // Z up becomes Y up: (1, 2, 3) is read as (1, -3, 2), then scaled.
        {{kFixtures + "swap.obj", "--option", "SwapYZ=true", "--option", "Scale=100"},
         "exit 0, result 0, log 0: 1 nodes, 4 vertices, 1 faces, 0 groups, 1 materials",
         {{"vertices/0", "[100, -299.999878, 200.000122]"}, {"uvs", "[[0.25, 0.75]]"}}},
        {{kFixtures + "nogroups.obj", "--option", "IncludeG=false"},
         "exit 0, result 0, log 0: 1 nodes, 4 vertices, 2 faces, 1 groups, 1 materials",
         {{"groups/0", R"({"name": "", "faceCount": 2, "faces": [0, 1]})"}}},
        // Compressed; negative UV indices count back from the last one read.
        {{kFixtures + "tri.obz"}, "exit 0, result 0, log 0: 1 nodes, 3 vertices, 1 faces, 0 groups, 1 materials",
         {{"name", R"("tri.obz")"}, {"faces/0/uv", "[0, 1, 2]"}}},
        // Faces with corners that refer to nothing read so far are dropped, one log line each.
        {{kFixtures + "badindex.obj"}, "exit 0, result 0, log 11: 1 nodes, 3 vertices, 3 faces, 0 groups, 1 materials",
         {{"faces/2", R"({"v": [2, 1, 0], "uv": [1, 0, 0], "material": 0})"}}},
        {{kFixtures + "missing.obj"}, "exit 1, result 512, log 0: 0 nodes, 0 vertices, 0 faces, 0 groups, 0 materials", {}},
        // clang-format on
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.args.join(' ').toStdString());
        const HostRun run = runHost(row.args + QStringList{"--json", "-"});
        const QJsonObject doc = QJsonDocument::fromJson(run.out.toUtf8()).object();
        // An OBJ import makes at most one node, with one shape.
        const QJsonArray nodes = doc["scene"]["nodes"].toArray();
        const QJsonValue shape = nodes.at(0)["object"]["shapes"][0], mesh = shape["mesh"];
        const qsizetype logLines = doc["log"].toArray().size();
        EXPECT_EQ(QString::asprintf(
                      "exit %d, result %d, log %d: %d nodes, %d vertices, %d faces, %d groups, %d materials",
                      run.exitCode, doc["result"].toInt(-1), int(logLines), int(nodes.size()),
                      mesh["vertexCount"].toInt(), mesh["faceCount"].toInt(), mesh["groupCount"].toInt(),
                      int(shape["materials"].toArray().size())),
                  row.summary);
        // The log also goes to stderr, followed by the host's own line when the import failed.
        EXPECT_EQ(run.err.count('\n'), logLines + (run.exitCode ? 1 : 0)) << run.err.toStdString();
        for (const auto &[path, text] : row.facts)
            EXPECT_EQ(at(mesh, path), at(QJsonDocument::fromJson("[" + QByteArray(text) + "]").array(), "0"))
                << path;
    }
}

// The host's own messages are not part of the scene dump.
TEST(GoldenHost, FailuresAndUsageErrorsAreReportedOnStderr) {
    HostRun run = runHost({kFixtures + "missing.obj"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "ovimport: importing $SRC/tests/fixtures/golden/missing.obj failed: result 0x200: the file "
              "cannot be opened or read\n");
    run = runHost({kTable, "--option", "Bogus=1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.contains("the importer has no option Bogus")) << run.err.toStdString();
}

// Floats are written as printf's %.9g writes them, ties of the rounding to nine digits included
// (floats of few significant bits hold them); bench/float_text_identity compares 10^8 more.
TEST(SceneDump, FloatsAreWrittenAsPrintfWritesThem) {
    std::mt19937 rng(5);
    for (int i = 0; i < 200000; ++i) {
        const float v = i % 2 ? std::ldexp(float(1 + rng() % 4095), int(rng() % 265) - 149)
                              : float(int(rng() % 2000001) - 1000000) / 1e4f * 243.84f;
        char want[64];
        std::snprintf(want, sizeof want, "%.9g", double(v));
        ASSERT_EQ(JsonWriter::formatFloat(v).toStdString(), v == 0.0f ? "0" : want);
    }
    EXPECT_EQ(JsonWriter::formatFloat(std::ldexp(1.0f, -13)), "0.000122070312");
}

// Counts the bytes written to it.
struct ByteCounter : QIODevice {
    ByteCounter() { open(QIODevice::WriteOnly); }
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 n) override { return bytes += n, n; }
    qint64 bytes = 0;
};

// A parent chain far deeper than a recursion could follow: both dumps walk it with a stack of their
// own, and neither indents without end, so their size grows linearly with the depth.
TEST(SceneDump, DeepParentChainsDumpInLinearSize) {
    auto dumpSizes = [](int depth) {
        OvApp::reset();
        OvNode *parent = new OvNode;
        OvApp::getScene()->addNode(parent);
        for (int i = 1; i < depth; ++i, parent = parent->getNodeChild(0))
            parent->addNodeChild(new OvNode, false);
        ByteCounter json, tree;
        writeSceneJson(json, *OvApp::getScene(), ImportReport());
        QTextStream out(&tree);
        writeSceneTree(out, *OvApp::getScene());
        out.flush();
        return std::pair{json.bytes, tree.bytes};
    };
    const auto [json, tree] = dumpSizes(1000);
    const auto [deepJson, deepTree] = dumpSizes(100000);
    OvApp::reset();
    EXPECT_NEAR(double(deepJson) / double(json), 100.0, 3.0);
    EXPECT_NEAR(double(deepTree) / double(tree), 100.0, 3.0);
}

} // namespace
