// The Poser read driver: sections and the mode stack, includes, compressed files, diagnostics and
// the version section, through real files.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvLight.h>
#include <OvScene.h>
#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <poser/OvPZ3Importer.h>

namespace {

using Mode = OvPZ3Importer::ParseMode;

class PoserDriver : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
    }

    QString file(const QString &name, const QByteArray &text) { return writeFile(dir, name, text); }

    unsigned read(const QString &path) { return importer.read(path, OvFileIOSettings()); }

    QTemporaryDir dir;
    OvPZ3Importer importer;
};

TEST_F(PoserDriver, VersionSectionSetsTheFileVersion) {
    EXPECT_EQ(read(file("a.cr2", "{\nversion\n\t{\n\tnumber 5.25\n\t}\n}\n")), 0u);
    EXPECT_EQ(importer.version(), 5.25f);
    EXPECT_EQ(logText(), QString());
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeFile);
    EXPECT_EQ(importer.modeStack().size(), 1);

    OvApp::clearLog();
    const QString path = file("b.cr2", "version\n{\nnumber\n}\n");
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 4.0f) << "a new read starts again from version 4";
    EXPECT_EQ(logText(), QStringLiteral("error: No version number specified on line 3 in ") + path);
}

TEST_F(PoserDriver, StrayClosingBraceIsReportedAndLeavesTheStack) {
    const QString path = file("stray.pz3", "* comment\n}\nversion\n{\nnumber 2\n}\n");
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(logText(), QStringLiteral("info: Unexpected '}' found in file on line 2 in ") + path);
    EXPECT_EQ(importer.version(), 2.0f) << "the following sections are still read";
    EXPECT_EQ(importer.modeStack().size(), 1);
}

TEST_F(PoserDriver, SkippedSectionsKeepNestedBracesBalanced) {
    // The actor section is skipped whole, braces inside it included; the version section after it
    // is read at the top level again.
    const QString path = file("skip.pz3", "{\nactor hip:1\n{\nchannels\n{\nxrot x\n{\nk 1 2\n}\n}\nversion\n{\n"
                                          "number 9\n}\n}\nversion\n{\nnumber 3.5\n}\n}\n");
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 3.5f) << "a version section nested in a skipped section is not read";
    EXPECT_EQ(importer.modeStack().size(), 1);
    EXPECT_EQ(logText(), QString());
}

TEST_F(PoserDriver, CommentAndBlankLinesOnlyImportNothing) {
    EXPECT_EQ(read(file("c.pp2", "* one\n\n   \n*two three\n")), 0u);
    EXPECT_EQ(OvApp::log().size(), 0);
    EXPECT_EQ(OvApp::getScene()->getNumNodes(), 0);
}

TEST_F(PoserDriver, EveryExtensionIsReadPlainOrCompressed) {
    const QByteArray text = "{\nversion\n{\nnumber 4.5\n}\n}\n";
    for (int i = 0; i < OvPZ3Importer::NumExtensions; ++i) {
        const QString ext = importer.getExtension(i);
        const bool compressed = OvPZ3Importer::isCompressedExtension(ext);
        const QString path = compressed ? writeGzipFile(dir, "f." + ext, text) : file("f." + ext, text);
        OvApp::reset();
        OvPZ3Importer fresh;
        EXPECT_EQ(fresh.read(path, OvFileIOSettings()), 0u) << qPrintable(ext);
        EXPECT_EQ(fresh.version(), 4.5f) << qPrintable(ext);
        EXPECT_EQ(OvApp::log().size(), 0) << qPrintable(ext) << ": " << qPrintable(logText());
    }
    EXPECT_EQ(OvPZ3Importer::fileTypeOf("PZ3"), Pz3FileKind::Other);
    EXPECT_FALSE(importer.recognize("x.PZ3"));
    EXPECT_EQ(OvPZ3Importer::fileTypeOf("p2z"), Pz3FileKind::Pose);
    EXPECT_EQ(OvPZ3Importer::fileTypeOf("hdz"), Pz3FileKind::HandPose);
}

TEST_F(PoserDriver, FilesThatCannotBeReadReturn0x200OrReportTheDamage) {
    EXPECT_EQ(read(dir.filePath("missing.pz3")), 0x200u);
    EXPECT_EQ(read(file("plain.pzz", "version\n{\nnumber 2\n}\n")), 0x200u) << "compressed name, plain content";
    EXPECT_EQ(read(dir.path()), 0x200u) << "a folder";

    QByteArray big;
    for (int i = 0; i < 4000; ++i)
        big += "version\n{\nnumber 7\n}\n";
    QByteArray gz = gzipBytes(big);
    gz.chop(gz.size() / 3);
    OvApp::clearLog();
    const QString path = writeFile(dir, "cut.crz", gz);
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 7.0f) << "what could be read was read";
    EXPECT_TRUE(logText().startsWith(QStringLiteral("error: Could not read the rest of ") + path)) << qPrintable(logText());
}

TEST_F(PoserDriver, SceneFilesReplaceLightsAndCamerasSetsOnlyTheirKind) {
    auto populate = [] {
        OvScene *s = OvApp::getScene();
        s->addNode(new OvLight);
        s->addNode(new OvBasicCamera);
        s->addNode(new OvNode);
    };
    populate();
    read(file("s.pz3", "\n"));
    EXPECT_EQ(OvApp::getScene()->getNumNodes(), 1);
    OvApp::reset();
    populate();
    read(file("s.lt2", "\n"));
    EXPECT_EQ(OvApp::getScene()->getNumNodes(), 2);
    EXPECT_TRUE(OvApp::getScene()->getNode(0)->inherits("OvBasicCamera"));
    OvApp::reset();
    populate();
    read(writeGzipFile(dir, "s.cmz", "\n"));
    EXPECT_EQ(OvApp::getScene()->getNumNodes(), 2);
    EXPECT_TRUE(OvApp::getScene()->getNode(0)->inherits("OvLight"));
}

TEST_F(PoserDriver, PosesAndSetsAreOneUndoStepOtherKindsNone) {
    read(file("walk.pz2", "version\n{\nnumber 4\n}\n"));
    read(file("hand.hd2", "\n"));
    read(file("odd.xyz", "\n"));
    read(file("fig.cr2", "\n"));
    EXPECT_EQ(OvApp::getScene()->undoSteps(), QStringList({"\"walk.pz2\"", "\"hand.hd2\""}));
    EXPECT_FALSE(importer.applyToSelection()) << "the last read, a figure, makes new objects";
}

// ---- includes ----

class PoserIncludes : public PoserDriver {
protected:
    void SetUp() override {
        PoserDriver::SetUp();
        OvApp::getContentMgr()->addPoserDirectory(dir.filePath("content"));
    }
};

TEST_F(PoserIncludes, IncludedFileIsReadInPlaceAndTheOuterOneResumes) {
    file("content/Runtime/libraries/inc.pz2", "version\n{\nnumber 6\n}\n");
    const QString path = file("main.pz3", "version\n{\nnumber 1\n}\nreadScript :Runtime:libraries:inc.pz2\n"
                                          "version\n{\nnumber 8\n}\n");
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 8.0f);
    EXPECT_EQ(logText(), QString());

    OvApp::clearLog();
    const QString only = file("main2.pz3", "readScript :Runtime:libraries:inc.pz2\n");
    EXPECT_EQ(read(only), 0u);
    EXPECT_EQ(importer.version(), 6.0f);
}

TEST_F(PoserIncludes, SectionsLeftOpenByAnIncludeStayOpenAndItsBracesCountAlone) {
    // The include opens a version section and never closes it; its stray '}' cannot close the
    // outer file's sections.
    file("content/Runtime/open.pz2", "}\nversion\n{\n");
    const QString path = file("outer.pz3", "{\nreadScript Runtime/open.pz2\nnumber 5\n}\n");
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 5.0f) << "the outer line is read in the mode the include left";
    EXPECT_TRUE(logText().contains("Unexpected '}' found in file on line 1 in " + dir.filePath("content/Runtime/open.pz2")))
        << qPrintable(logText());
    EXPECT_EQ(importer.modeStack().size(), 2) << "file level plus the section the include left open";
}

TEST_F(PoserIncludes, CompressedTwinAndMissingIncludes) {
    writeGzipFile(dir, "content/Runtime/libraries/pose.p2z", "version\n{\nnumber 3\n}\n");
    const QString path = file("m.pz3", "readScript :Runtime:libraries:pose.p2z\nreadScript\n"
                                       "readScript :Runtime:libraries:gone.pz2\n");
    // A missing x.pz2 is looked for as x.pzz; here the file is named with its compressed name.
    EXPECT_EQ(read(path), 0u);
    EXPECT_EQ(importer.version(), 3.0f);
    EXPECT_EQ(logText(), QStringLiteral("error: No script name was specified on line 2 in %1\n"
                                        "error: Could not find file :Runtime:libraries:gone.pz2 on line 3 in %1")
                             .arg(path));

    OvApp::clearLog();
    writeGzipFile(dir, "content/Runtime/libraries/twin.crz", "version\n{\nnumber 2.5\n}\n");
    EXPECT_EQ(read(file("t.pz3", "readScript :Runtime:libraries:twin.cr2\n")), 0u);
    EXPECT_EQ(importer.version(), 2.5f) << qPrintable(logText());
}

TEST_F(PoserIncludes, IncludeCyclesAreRefusedAndTheImportGoesOn) {
    const QString self = file("content/self.pz2", "readScript /self.pz2\nversion\n{\nnumber 4.25\n}\n");
    EXPECT_EQ(read(self), 0u);
    EXPECT_EQ(importer.version(), 4.25f);
    EXPECT_EQ(logText(), QStringLiteral("error: %1 includes itself through readScript; it is not read again on line 1 "
                                        "in %2")
                             .arg(dir.filePath("content/self.pz2"), self));

    OvApp::clearLog();
    file("content/a.pz2", "readScript /b.pz2\n");
    file("content/b.pz2", "readScript /a.pz2\nversion\n{\nnumber 1.5\n}\n");
    EXPECT_EQ(read(dir.filePath("content/a.pz2")), 0u);
    EXPECT_EQ(importer.version(), 1.5f);
    EXPECT_EQ(OvApp::log().size(), 1);
    EXPECT_TRUE(logText().contains("a.pz2 includes itself")) << qPrintable(logText());

    // The same file twice in a row is not a cycle.
    OvApp::clearLog();
    file("content/twice.pz2", "version\n{\nnumber 2\n}\n");
    EXPECT_EQ(read(file("t.pz3", "readScript /twice.pz2\nreadScript /twice.pz2\n")), 0u);
    EXPECT_EQ(logText(), QString());
}

TEST_F(PoserIncludes, DeepIncludeChainsStopAtTheLimit) {
    const int depth = OvPZ3Importer::MaxIncludeDepth + 8;
    for (int i = 0; i < depth; ++i)
        file(QStringLiteral("content/c%1.pz2").arg(i), QStringLiteral("readScript /c%1.pz2\n").arg(i + 1).toLatin1());
    file(QStringLiteral("content/c%1.pz2").arg(depth), "version\n{\nnumber 9\n}\n");
    EXPECT_EQ(read(dir.filePath("content/c0.pz2")), 0u);
    EXPECT_EQ(importer.version(), 4.0f) << "the end of the chain is never reached";
    EXPECT_EQ(OvApp::log().size(), 1);
    EXPECT_TRUE(logText().contains("Too many nested readScript files")) << qPrintable(logText());
}

TEST_F(PoserDriver, HostileLinesNeitherCrashNorHang) {
    QByteArray text = "version\n{\n";
    text += "number 3";
    text += QByteArray(1 << 20, 'x'); // a 1 MB token: the number reads as 0
    text += "\n";
    QByteArray many = "number";
    for (int i = 0; i < 10000; ++i)
        many += " 7";
    text += many + "\n";
    text += QByteArray("num\0ber 2\n", 10);
    text += QByteArray("\xff\xfe\x80 \xc3\n");
    text += "}\n}\n}\n{\n{\n";
    EXPECT_EQ(read(file("h.pz3", text)), 0u);
    EXPECT_EQ(importer.version(), 7.0f);
    EXPECT_TRUE(checkSceneInvariants(*OvApp::getScene()).isEmpty());
}

} // namespace
