// Whole imports through the command-line host, compared with checked-in scene dumps. The host loads
// the plug-in module exactly as the desktop host would, so these cover the shell, the importers and
// the dump together. UPDATE_GOLDEN=1 rewrites the references instead of comparing.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <gtest/gtest.h>

namespace {

struct GoldenCase {
    const char *reference; // file under tests/golden
    QStringList args;      // "$SRC" stands for the source tree
    int exitCode;
};

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
    if (qEnvironmentVariable("UPDATE_GOLDEN") == QLatin1String("1")) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
        f.write(actual.toUtf8());
        return;
    }
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly))
        << path.toStdString() << " is missing; run with UPDATE_GOLDEN=1 and review it";
    const QString expected = QString::fromUtf8(f.readAll());
    EXPECT_TRUE(expected == actual) << reference << ": " << firstDifference(expected, actual).toStdString();
}

class GoldenImport : public ::testing::TestWithParam<GoldenCase> {};

TEST_P(GoldenImport, MatchesReference) {
    const GoldenCase &c = GetParam();
    HostRun run = runHost(c.args);
    ASSERT_EQ(run.exitCode, c.exitCode) << run.err.toStdString();
    compareWithReference(c.reference, run.out);
}

const QString kTable = QStringLiteral("$SRC/examples/obj/table.obj");
const QString kFixtures = QStringLiteral("$SRC/tests/fixtures/golden/");
const QString kPoserContent = QStringLiteral("$SRC/examples/poser");
const QString kStudio = QStringLiteral("$SRC/examples/poser/Runtime/libraries/scene/studio.pz3");

void PrintTo(const GoldenCase &c, std::ostream *os) { *os << c.reference; }

INSTANTIATE_TEST_SUITE_P(
    Golden, GoldenImport,
    ::testing::Values(GoldenCase{"table.txt", {kTable}, 0},
                      GoldenCase{"table.json", {kTable, "--json", "-"}, 0},
                      GoldenCase{"table-no-mesh-data.json", {kTable, "--json", "-", "--no-mesh-data"}, 0},
                      GoldenCase{"swap.json",
                                 {kFixtures + "swap.obj", "--option", "SwapYZ=true", "--option", "Scale=100",
                                  "--json", "-"},
                                 0},
                      GoldenCase{"nogroups.json",
                                 {kFixtures + "nogroups.obj", "--option", "IncludeG=false", "--json", "-"},
                                 0},
                      GoldenCase{"tri-obz.json", {kFixtures + "tri.obz", "--json", "-"}, 0},
                      GoldenCase{"badindex.json", {kFixtures + "badindex.obj", "--json", "-"}, 0},
                      GoldenCase{"missing.json", {kFixtures + "missing.obj", "--json", "-"}, 1},
                      GoldenCase{"studio.txt", {kStudio, "--content", kPoserContent}, 0},
                      GoldenCase{"studio.json", {kStudio, "--content", kPoserContent, "--json", "-"}, 0},
                      GoldenCase{"doll-cr2.json",
                                 {"$SRC/examples/poser/Runtime/libraries/character/doll.cr2", "--content",
                                  kPoserContent, "--json", "-", "--no-mesh-data"},
                                 0},
                      GoldenCase{"poser-damaged.json",
                                 {kFixtures + "damaged.pz3", "--content", kPoserContent, "--json", "-",
                                  "--no-mesh-data"},
                                 1}),
    [](const ::testing::TestParamInfo<GoldenCase> &info) {
        std::string name = info.param.reference;
        for (char &ch : name)
            if (!isalnum(static_cast<unsigned char>(ch)))
                ch = '_';
        return name;
    });

// The host's own messages are not part of the scene dump.
TEST(GoldenHost, MissingFileFailsWithMessage) {
    HostRun run = runHost({kFixtures + "missing.obj"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              QStringLiteral("ovimport: importing $SRC/tests/fixtures/golden/missing.obj failed: result "
                             "0x200: the file cannot be opened or read\n"));
}

TEST(GoldenHost, LogGoesToStderrWithTheJson) {
    HostRun run = runHost({kFixtures + "badindex.obj", "--json", "-"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.err.startsWith(QStringLiteral("error: Face ignored: corner \"4\"")))
        << run.err.toStdString();
    EXPECT_EQ(run.err.count(QLatin1Char('\n')), 11);
}

TEST(GoldenHost, UnknownOptionIsAUsageError) {
    HostRun run = runHost({kTable, "--option", "Bogus=1"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.contains(QStringLiteral("the importer has no option Bogus")))
        << run.err.toStdString();
}

} // namespace
