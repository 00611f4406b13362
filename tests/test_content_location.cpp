// Mapping the paths Poser files name onto content folders, folders the user located, and the
// Locate question with the host's real dialogs.
#include "support/DialogAnswerer.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvMainWindow.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <poser/OvPZ3Importer.h>

namespace {

// Exposes the per-read reset so lookups can be tried outside a whole read.
class LocatingImporter : public OvPZ3Importer {
public:
    void startRead() { read(QStringLiteral("/nonexistent/start.pz3"), OvFileIOSettings()); }
};

class ContentLocation : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
        importer.startRead();
    }
    void TearDown() override { OvApp::setInterface(nullptr); }

    QString touch(const QString &name) { return writeFile(dir, name, "x"); }
    QString find(const QString &name, bool ask = false) {
        QString found;
        return importer.findContentFile(name, found, ask) ? found : QStringLiteral("<none>");
    }

    QTemporaryDir dir;
    LocatingImporter importer;
};

TEST_F(ContentLocation, MacRuntimePathsMapOntoContentFoldersInOrder) {
    OvContentMgr *content = OvApp::getContentMgr();
    content->addPoserDirectory(dir.filePath("first"));
    content->addPoserDirectory(dir.filePath("second"));
    const QString second = touch("second/Runtime/Geometries/props/ball.obj");
    EXPECT_EQ(find(":Runtime:Geometries:props:ball.obj"), second);
    const QString first = touch("first/Runtime/Geometries/props/ball.obj");
    EXPECT_EQ(find(":Runtime:Geometries:props:ball.obj"), first) << "the first folder wins";
    EXPECT_EQ(find("Runtime\\Geometries\\props\\ball.obj"), first) << "backslashes, no leading separator";
    EXPECT_EQ(find("/Runtime/Geometries/props/ball.obj"), first);
    EXPECT_EQ(find(":Runtime:Geometries:props:box.obj"), QStringLiteral("<none>"));
}

TEST_F(ContentLocation, WindowsPathsTryTheDriveThenTheRuntimeFolder) {
    OvApp::getContentMgr()->addPoserDirectory(dir.filePath("poser"));
    const QString lower = touch("poser/runtime/textures/a.jpg");
    EXPECT_EQ(find("C:\\Poser\\runtime\\textures\\a.jpg"), lower);
    // With "Runtime" capitalised only the drive letter and colon are dropped.
    const QString whole = touch("poser/Poser/Runtime/textures/b.jpg");
    EXPECT_EQ(find("C:\\Poser\\Runtime\\textures\\b.jpg"), whole);
    EXPECT_EQ(find("C:\\Poser\\runtime\\textures\\missing.jpg"), QStringLiteral("<none>"));
}

TEST_F(ContentLocation, WithoutMainWindowNothingIsAsked) {
    ASSERT_EQ(OvApp::getInterface(), nullptr);
    DialogAnswerer answerer(500);
    EXPECT_EQ(find(":Runtime:Geometries:nowhere.obj", true), QStringLiteral("<none>"));
    EXPECT_TRUE(answerer.seen().isEmpty());
}

class LocateDialogs : public ContentLocation {
protected:
    void SetUp() override {
        ContentLocation::SetUp();
        window = std::make_unique<OvMainWindow>();
        OvApp::setInterface(window.get());
    }
    std::unique_ptr<OvMainWindow> window;
};

TEST_F(LocateDialogs, LocatedContentRootServesLaterLookups) {
    const QString chosen = touch("E/Content/Runtime/Geometries/a/b.obj");
    const QString later = touch("E/Content/Runtime/Geometries/c/d.obj");
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(chosen);
    EXPECT_EQ(find(":Runtime:Geometries:a:b.obj", true), chosen);
    ASSERT_EQ(answerer.seen().size(), 2) << qPrintable(answerer.failures().join('\n'));
    const DialogAnswerer::Seen &box = answerer.seen()[0];
    EXPECT_EQ(box.className, QStringLiteral("QMessageBox"));
    EXPECT_EQ(box.title, QStringLiteral("Unable to locate file"));
    EXPECT_EQ(box.text, QStringLiteral("Cannot find a file for \"/Runtime/Geometries/a/b.obj\".\n\nTo avoid seeing this "
                                       "message, make sure that the Poser content directories are set up correctly"));
    EXPECT_EQ(box.buttons.size(), 3);
    for (const char *b : {"Locate", "Skip", "Stop Asking"})
        EXPECT_TRUE(box.buttons.contains(QString::fromLatin1(b))) << b;
    const DialogAnswerer::Seen &chooser = answerer.seen()[1];
    EXPECT_EQ(chooser.className, QStringLiteral("QFileDialog"));
    EXPECT_EQ(chooser.title, QStringLiteral("Please locate the file: b.obj"));
    EXPECT_TRUE(chooser.filters.value(0).startsWith(QStringLiteral("OBJFile"))) << qPrintable(chooser.filters.join(';'));

    ASSERT_EQ(importer.locatedDirs().dirs.size(), 1);
    EXPECT_EQ(importer.locatedDirs().dirs[0], dir.filePath("E/Content"));
    EXPECT_TRUE(importer.locatedDirs().isContentRoot[0]);
    DialogAnswerer none(500);
    EXPECT_EQ(find(":Runtime:Geometries:c:d.obj", true), later) << "found under the learned root, no question";
    EXPECT_TRUE(none.seen().isEmpty());
}

TEST_F(LocateDialogs, LocatedPlainFolderServesFilesByName) {
    const QString chosen = touch("E/Misc/b.obj");
    const QString sibling = touch("E/Misc/b2.obj");
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(chosen);
    EXPECT_EQ(find(":Runtime:Geometries:a:b.obj", true), chosen);
    ASSERT_EQ(importer.locatedDirs().dirs.size(), 1);
    EXPECT_FALSE(importer.locatedDirs().isContentRoot[0]);
    EXPECT_EQ(find(":Runtime:Geometries:x:b2.obj"), sibling);
}

TEST_F(LocateDialogs, SkipEscapeCancelAndStopAsking) {
    DialogAnswerer answerer;
    answerer.pressButton("Skip").pressEscape().pressButton("Locate").reject().pressButton("Stop Asking");
    EXPECT_EQ(find("/a.obj", true), QStringLiteral("<none>"));
    EXPECT_EQ(find("/b.obj", true), QStringLiteral("<none>"));
    EXPECT_EQ(find("/c.obj", true), QStringLiteral("<none>"));
    EXPECT_EQ(find("/d.obj", true), QStringLiteral("<none>"));
    EXPECT_FALSE(importer.askForFiles());
    EXPECT_EQ(find("/e.obj", true), QStringLiteral("<none>"));
    EXPECT_EQ(answerer.seen().size(), 5) << "no question after Stop Asking";
    EXPECT_EQ(answerer.pendingAnswers(), 0);
    EXPECT_TRUE(answerer.failures().isEmpty()) << qPrintable(answerer.failures().join('\n'));
    EXPECT_FALSE(OvApp::isProgressPaused());

    // The next import asks again.
    importer.startRead();
    EXPECT_TRUE(importer.askForFiles());
}

TEST_F(LocateDialogs, MissingIncludeIsLocatedByTheUser) {
    QTemporaryDir other;
    const QString include = writeFile(other, "elsewhere/inc.pz2", "version\n{\nnumber 6.5\n}\n");
    const QString scene = writeFile(dir, "scene.pz3", "readScript :Runtime:libraries:inc.pz2\n");
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(include);
    EXPECT_EQ(importer.read(scene, OvFileIOSettings()), 0u);
    EXPECT_EQ(importer.version(), 6.5f) << qPrintable(logText());
    EXPECT_EQ(answerer.seen().size(), 2);
}

} // namespace
