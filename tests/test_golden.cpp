// Whole imports through the command-line host. The host loads the plug-in module exactly as the
// desktop host would, so these cover the shell, the importers and the dump together: a few scenes
// are compared with checked-in dumps (UPDATE_GOLDEN=1 rewrites them instead), and OBJ imports are
// checked by a summary of their JSON.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace {

// Absolute paths in the output become "$SRC" so the references do not depend on the checkout.
// Texture paths are canonical, so a source tree reached through a symbolic link is replaced too.
QString portable(QString text) {
    const QString canonical = QDir(QStringLiteral(OV_SOURCE_DIR)).canonicalPath();
    if (!canonical.isEmpty())
        text.replace(canonical, QStringLiteral("$SRC"));
    return text.replace(QStringLiteral(OV_SOURCE_DIR), QStringLiteral("$SRC"));
}

QString firstDifference(const QString &expected, const QString &actual) {
    const QStringList e = expected.split(QLatin1Char('\n')), a = actual.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < qMax(e.size(), a.size()); ++i) {
        QString el = i < e.size() ? e[i] : QStringLiteral("<end of file>");
        QString al = i < a.size() ? a[i] : QStringLiteral("<end of file>");
        if (el != al)
            return QStringLiteral("first difference at line %1:\n- %2\n+ %3").arg(i + 1).arg(el, al);
    }
    return QString();
}

struct HostRun {
    int exitCode = -1;
    QString out, err;
};

// Runs ovimport; "$SRC" in an argument stands for the source tree.
HostRun runHost(const QStringList &args) {
    QStringList resolved;
    for (const QString &a : args)
        resolved << QString(a).replace(QStringLiteral("$SRC"), QStringLiteral(OV_SOURCE_DIR));
    QProcess process;
    process.start(QStringLiteral(OV_BIN_DIR "/ovimport"), resolved);
    HostRun run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = portable(QString::fromUtf8(process.readAllStandardOutput()));
    run.err = portable(QString::fromUtf8(process.readAllStandardError()));
    return run;
}

void compareWithReference(const char *reference, const QString &actual) {
    const QString path = QStringLiteral(OV_GOLDEN_DIR "/") + QLatin1String(reference);
    QFile f(path);
    if (qEnvironmentVariable("UPDATE_GOLDEN") == QLatin1String("1")) {
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
        f.write(actual.toUtf8());
        return;
    }
    ASSERT_TRUE(f.open(QIODevice::ReadOnly)) << path.toStdString() << " is missing; run with UPDATE_GOLDEN=1";
    const QString expected = QString::fromUtf8(f.readAll());
    EXPECT_TRUE(expected == actual) << reference << ": " << firstDifference(expected, actual).toStdString();
}

const QString kTable = QStringLiteral("$SRC/examples/obj/table.obj");
const QString kFixtures = QStringLiteral("$SRC/tests/fixtures/golden/");
const QString kPoserContent = QStringLiteral("$SRC/examples/poser");
const QString kStudio = QStringLiteral("$SRC/examples/poser/Runtime/libraries/scene/studio.pz3");

struct GoldenCase {
    const char *reference; // file under tests/golden
    QStringList args;
    int exitCode;
};

void PrintTo(const GoldenCase &c, std::ostream *os) {
    *os << c.reference;
}

class GoldenImport : public ::testing::TestWithParam<GoldenCase> {};

TEST_P(GoldenImport, MatchesReference) {
    const GoldenCase &c = GetParam();
    HostRun run = runHost(c.args);
    ASSERT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
    compareWithReference(c.reference, run.out);
}

INSTANTIATE_TEST_SUITE_P(
    Golden, GoldenImport,
    ::testing::Values(
        GoldenCase{"table.txt", {kTable}, 0}, GoldenCase{"table.json", {kTable, "--json", "-"}, 0},
        GoldenCase{"studio.txt", {kStudio, "--content", kPoserContent}, 0},
        GoldenCase{"studio.json", {kStudio, "--content", kPoserContent, "--json", "-"}, 0},
        GoldenCase{"doll-cr2.json",
                   {"$SRC/examples/poser/Runtime/libraries/character/doll.cr2", "--content", kPoserContent,
                    "--json", "-", "--no-mesh-data"},
                   0},
        GoldenCase{"poser-damaged.json",
                   {kFixtures + "damaged.pz3", "--content", kPoserContent, "--json", "-", "--no-mesh-data"},
                   1}),
    [](const ::testing::TestParamInfo<GoldenCase> &info) {
        std::string name = info.param.reference;
        for (char &ch : name)
            if (!isalnum(static_cast<unsigned char>(ch)))
                ch = '_';
        return name;
    });

// ---- OBJ imports summarised ----------------------------------------------------------------

// What an import came to: the host's exit code, the importer's result, the log's length, and counts
// over the whole scene (meshes once each, materials by their number).
struct Counts {
    int exitCode = -1, result = -1, logLines = 0, nodes = 0, vertices = 0, faces = 0, groups = 0,
        materials = 0;
    bool operator==(const Counts &o) const {
        return std::tie(exitCode, result, logLines, nodes, vertices, faces, groups, materials) ==
               std::tie(o.exitCode, o.result, o.logLines, o.nodes, o.vertices, o.faces, o.groups,
                        o.materials);
    }
};

void PrintTo(const Counts &c, std::ostream *os) {
    *os << "exit " << c.exitCode << ", result " << c.result << ", log " << c.logLines << ", nodes " << c.nodes
        << ", vertices " << c.vertices << ", faces " << c.faces << ", groups " << c.groups << ", materials "
        << c.materials;
}

struct Summary {
    Counts counts;
    QSet<int> materialIds;
    QJsonObject firstMesh;
};

void addNode(Summary &s, const QJsonObject &node) {
    ++s.counts.nodes;
    for (const QJsonValue &shape : node[QLatin1String("object")][QLatin1String("shapes")].toArray()) {
        const QJsonObject mesh = shape[QLatin1String("mesh")].toObject();
        if (s.firstMesh.isEmpty())
            s.firstMesh = mesh;
        s.counts.vertices += mesh[QLatin1String("vertexCount")].toInt();
        s.counts.faces += mesh[QLatin1String("faceCount")].toInt();
        s.counts.groups += mesh[QLatin1String("groupCount")].toInt();
        for (const QJsonValue &m : shape[QLatin1String("materials")].toArray())
            s.materialIds.insert(m[QLatin1String("materialId")].toInt());
    }
    for (const QJsonValue &child : node[QLatin1String("children")].toArray())
        addNode(s, child.toObject());
}

Summary summarize(const HostRun &run) {
    Summary s;
    const QJsonObject doc = QJsonDocument::fromJson(run.out.toUtf8()).object();
    s.counts.exitCode = run.exitCode;
    s.counts.result = doc[QLatin1String("result")].toInt(-1);
    s.counts.logLines = int(doc[QLatin1String("log")].toArray().size());
    for (const QJsonValue &node : doc[QLatin1String("scene")][QLatin1String("nodes")].toArray())
        addNode(s, node.toObject());
    s.counts.materials = int(s.materialIds.size());
    return s;
}

// The value at a path such as "vertices/0" below `v`.
QJsonValue at(QJsonValue v, const QString &path) {
    for (const QString &part : path.split(QLatin1Char('/')))
        v = v.isArray() ? v.toArray().at(part.toInt()) : v.toObject().value(part);
    return v;
}

// Equal, numbers to the precision the dump writes them with.
bool same(const QJsonValue &a, const QJsonValue &b) {
    if (a.isDouble() && b.isDouble())
        return std::abs(a.toDouble() - b.toDouble()) <= 1e-6 * std::max(1.0, std::abs(b.toDouble()));
    if (!a.isArray() || !b.isArray() || a.toArray().size() != b.toArray().size())
        return a == b;
    for (qsizetype i = 0; i < a.toArray().size(); ++i)
        if (!same(a.toArray()[i], b.toArray()[i]))
            return false;
    return true;
}

struct SummaryRow {
    QStringList args; // the file and host options; "--json -" is added
    Counts expected;
    // Facts about the first mesh: a path below it and the value there, as JSON text.
    std::vector<std::pair<const char *, const char *>> facts;
};

TEST(GoldenSummary, ObjImportsThroughTheHost) {
    // clang-format off
    const SummaryRow rows[] = {
        {{kTable, "--no-mesh-data"}, {0, 0, 0, 1, 18, 11, 3, 3},
         {{"groups/1", R"({"name": "legs", "faceCount": 4})"}}},
        // Z up becomes Y up: (1, 2, 3) is read as (1, -3, 2), then scaled.
        {{kFixtures + "swap.obj", "--option", "SwapYZ=true", "--option", "Scale=100"}, {0, 0, 0, 1, 4, 1, 0, 1},
         {{"vertices/0", "[100, -299.999878, 200.000122]"}, {"uvs", "[[0.25, 0.75]]"}}},
        {{kFixtures + "nogroups.obj", "--option", "IncludeG=false"}, {0, 0, 0, 1, 4, 2, 1, 1},
         {{"groups/0/name", R"("")"}, {"groups/0/faces", "[0, 1]"}}},
        // Compressed; negative UV indices count back from the last one read.
        {{kFixtures + "tri.obz"}, {0, 0, 0, 1, 3, 1, 0, 1}, {{"name", R"("tri.obz")"}, {"faces/0/uv", "[0, 1, 2]"}}},
        // Faces with corners that refer to nothing read so far are dropped, one log line each.
        {{kFixtures + "badindex.obj"}, {0, 0, 11, 1, 3, 3, 0, 1},
         {{"faces/2", R"({"v": [2, 1, 0], "uv": [1, 0, 0], "material": 0})"}}},
        {{kFixtures + "missing.obj"}, {1, 512, 0, 0, 0, 0, 0, 0}, {}},
    };
    // clang-format on
    for (const SummaryRow &row : rows) {
        SCOPED_TRACE(row.args.join(QLatin1Char(' ')).toStdString());
        const HostRun run = runHost(row.args + QStringList{"--json", "-"});
        const Summary s = summarize(run);
        EXPECT_EQ(s.counts, row.expected) << run.err.toStdString();
        // The log also goes to stderr, followed by the host's own line when the import failed.
        EXPECT_EQ(run.err.count(QLatin1Char('\n')), row.expected.logLines + (row.expected.exitCode ? 1 : 0));
        for (const auto &[path, text] : row.facts) {
            const QJsonValue expected = QJsonDocument::fromJson(QByteArray("[") + text + "]").array().at(0);
            const QJsonValue actual = at(s.firstMesh, QString::fromLatin1(path));
            EXPECT_TRUE(same(actual, expected))
                << path << ": "
                << QJsonDocument(QJsonArray{actual}).toJson(QJsonDocument::Compact).toStdString();
        }
    }
}

// The host's own messages are not part of the scene dump.
TEST(GoldenHost, FailuresAndUsageErrorsAreReportedOnStderr) {
    HostRun run = runHost({kFixtures + "missing.obj"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              QStringLiteral("ovimport: importing $SRC/tests/fixtures/golden/missing.obj failed: result "
                             "0x200: the file cannot be opened or read\n"));
    run = runHost({kTable, "--option", "Bogus=1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.contains(QStringLiteral("the importer has no option Bogus")))
        << run.err.toStdString();
}

} // namespace
