// Input that would hang, exhaust memory or be half-read: each is refused or cut with a message.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvLight.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace {

class HostileInput : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
    }
    void TearDown() override { OvTextInputFile::setLimits(OvTextInputFile::Limits()); }

    // Every line of the file as its first token ("" for an empty line).
    QStringList firstTokens(const QString &path, bool compressed, bool *opened = nullptr) {
        OvTextInputFile in(path, compressed);
        QStringList out;
        const bool ok = in.open();
        if (opened)
            *opened = ok;
        char *argv[OvTextInputFile::MaxTokens];
        int argc = 0;
        while (ok && in.getLine(argv, argc))
            out << (argc ? QString::fromLatin1(argv[0]) : QString());
        error = in.errorString();
        return out;
    }

    QTemporaryDir dir;
    QString error;
};

TEST_F(HostileInput, OnlyRegularFilesAreOpened) {
    const QString fifo = dir.filePath(QStringLiteral("pipe.obj"));
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    bool opened = true;
    // Opening a FIFO for reading would wait for a writer forever.
    firstTokens(fifo, false, &opened);
    EXPECT_FALSE(opened);
    firstTokens(dir.path(), true, &opened);
    EXPECT_FALSE(opened);
    EXPECT_EQ(logText(),
              QStringLiteral("error: \"%1\" is a named pipe: it is not read\nerror: \"%2\" is a folder: "
                             "it is not read")
                  .arg(fifo, dir.path()));
    firstTokens(dir.filePath(QStringLiteral("absent.obj")), false, &opened);
    EXPECT_FALSE(opened);
    EXPECT_EQ(OvApp::log().size(), 2) << "a missing file is the caller's to report";
}

TEST_F(HostileInput, WideTextIsRefusedAndAUtf8MarkSkipped) {
    const QString text = QStringLiteral("v 1 2 3\nv 4 5 6\n");
    struct Case {
        const char *name;
        QByteArray bytes;
    } wide[] = {
        {"utf16le-bom.obj",
         QByteArray("\xFF\xFE", 2) + QByteArray((const char *)text.utf16(), text.size() * 2)},
        {"utf16le.obj", QByteArray((const char *)text.utf16(), text.size() * 2)},
        {"utf32le.obj",
         [&] {
             QByteArray b;
             for (QChar c : text)
                 b += QByteArray(1, char(c.unicode())) + QByteArray(3, '\0');
             return b;
         }()},
    };
    for (const Case &c : wide) {
        bool opened = true;
        firstTokens(writeFile(dir, QLatin1String(c.name), c.bytes), false, &opened);
        EXPECT_FALSE(opened) << c.name;
        EXPECT_TRUE(error.startsWith(QLatin1String(c.name).contains(QLatin1String("32"))
                                         ? QStringLiteral("UTF-32")
                                         : QStringLiteral("UTF-16")))
            << c.name << ": " << error.toStdString();
    }
    EXPECT_EQ(OvApp::log().size(), 3);
    EXPECT_EQ(firstTokens(writeFile(dir, QStringLiteral("bom.obj"), "\xEF\xBB\xBFv 1 2 3\nf 1 1 1\n"), false),
              QStringList({QStringLiteral("v"), QStringLiteral("f")}));
}

TEST_F(HostileInput, CompressedTextThatExpandsWithoutBoundIsStopped) {
    OvTextInputFile::Limits limits;
    limits.ratioFloor = 1 << 20;
    limits.maxExpansion = 50;
    OvTextInputFile::setLimits(limits);
    const QByteArray braces = QByteArray("{\n").repeated(4 << 20); // 8 MiB that gzip packs about 1000:1
    const QStringList lines = firstTokens(writeGzipFile(dir, QStringLiteral("bomb.crz"), braces), true);
    EXPECT_LT(lines.size(), 1 << 20) << "stopped soon after the first MiB";
    EXPECT_GE(lines.size(), 1 << 19);
    EXPECT_EQ(error, QStringLiteral(
                         "its text grows past 50 times its compressed size, the limit for compressed files"));

    limits.maxExpansion = 2000;
    limits.maxTextBytes = 2 << 20;
    OvTextInputFile::setLimits(limits);
    EXPECT_LT(firstTokens(writeGzipFile(dir, QStringLiteral("big.crz"), braces), true).size(), 1 << 21);
    EXPECT_EQ(error, QStringLiteral("its text grows past 2 MiB, the limit for compressed files"));
}

TEST_F(HostileInput, CutLinesAreCountedWithTheFirstLineNumber) {
    QByteArray wide = "f";
    for (int i = 0; i < 300; ++i)
        wide += " " + QByteArray::number(i + 1);
    const QString path =
        writeFile(dir, QStringLiteral("wide.obj"), "v 1 2 3\n" + wide + "\nv 1\n" + wide + "\n");
    OvTextInputFile in(path, false);
    ASSERT_TRUE(in.open());
    char *argv[OvTextInputFile::MaxTokens];
    int argc = 0, longest = 0;
    while (in.getLine(argv, argc))
        longest = std::max(longest, argc);
    EXPECT_EQ(longest, OvTextInputFile::MaxTokens);
    EXPECT_EQ(in.tokenCutLines(), 2);
    EXPECT_EQ(in.firstTokenCutLine(), 2);
}

TEST_F(HostileInput, RepeatedMessagesAreCountedNotKept) {
    for (int i = 0; i < 100; ++i)
        OvApp::addLog(OvApp::LogError, QStringLiteral("Face ignored on line %1").arg(i));
    OvApp::addLog(OvApp::LogInfo, QStringLiteral("Something else"));
    ASSERT_EQ(OvApp::log().size(), OvApp::RepeatsShown + 2);
    EXPECT_EQ(OvApp::log()[OvApp::RepeatsShown - 1].text, QStringLiteral("Face ignored on line 9"));
    EXPECT_EQ(OvApp::log()[OvApp::RepeatsShown].text, QStringLiteral("\u2026 and 90 more like this"));
    EXPECT_EQ(OvApp::log().last().text, QStringLiteral("Something else"));

    OvApp::clearLog();
    // Names without digits: every message is of its own kind.
    for (int i = 0; i < OvApp::MaxLogEntries + 1500; ++i) {
        QString name;
        for (int n = i; n; n /= 26)
            name += QChar(u'a' + n % 26);
        OvApp::addLog(OvApp::LogInfo, QStringLiteral("Missing file x%1").arg(name));
    }
    ASSERT_EQ(OvApp::log().size(), OvApp::MaxLogEntries + 1);
    EXPECT_EQ(OvApp::log().last().text, QStringLiteral("\u2026 and 1,500 more messages"));
}

// Every walk of the hierarchy is iterative: a chain as deep as a hostile file can make is found,
// measured, checked, cleared of its lights and deleted without running out of stack.
TEST_F(HostileInput, DeepHierarchiesNeedNoRecursion) {
    const int depth = 100000;
    auto *skeleton = new OvSkeleton;
    skeleton->setName(QStringLiteral("BODY"));
    OvApp::getScene()->addNode(skeleton);
    OvNode *parent = skeleton;
    for (int i = 0; i < depth; ++i) {
        OvNode *node = i == depth / 2 ? static_cast<OvNode *>(new OvDistantLight) : new OvBone;
        node->setName(QStringLiteral("n%1").arg(i));
        node->getYPosControl()->setValue(1.0f);
        parent->addNodeChild(node);
        parent = node;
    }
    EXPECT_EQ(parent->getWSPos()[1], float(depth));
    EXPECT_EQ(skeleton->findNodeChild(QStringLiteral("n%1").arg(depth - 1), true), parent);
    EXPECT_EQ(skeleton->getAllBones().size(), depth - 1);
    EXPECT_EQ(checkSceneInvariants(*OvApp::getScene()), QStringList());
    EXPECT_EQ(OvApp::getScene()->removeAllLights(), 1);
    EXPECT_EQ(skeleton->getAllBones().size(), depth / 2);
    OvApp::reset(); // deletes the rest of the chain
}

} // namespace
