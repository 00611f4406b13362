// Mapping the paths Poser files name onto content folders, folders the user located, and the
// Locate question with the host's real dialogs.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvMainWindow.h>
#include <memory>

namespace {

class ContentLocation : public PoserTest {
protected:
    void TearDown() override {
        OvApp::setInterface(nullptr);
        PoserTest::TearDown();
    }
    QString touch(const QString &name) { return file(name, "x"); }
    QString find(const QString &name, bool ask = false) {
        QString found;
        return importer.findContentFile(name, found, ask) ? found : QStringLiteral("<none>");
    }
    // A main window, so that questions are asked.
    void withWindow() {
        window = std::make_unique<OvMainWindow>();
        OvApp::setInterface(window.get());
    }

    std::unique_ptr<OvMainWindow> window;
};

TEST_F(ContentLocation, PathsMapOntoContentFoldersInOrder) {
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

    // Windows paths: as they are, then from their runtime folder, else without the drive.
    const QString lower = touch("first/runtime/textures/a.jpg");
    EXPECT_EQ(find("C:\\Poser\\runtime\\textures\\a.jpg"), lower);
    const QString whole = touch("first/Poser/Runtime/textures/b.jpg");
    EXPECT_EQ(find("C:\\Poser\\Runtime\\textures\\b.jpg"), whole);
    EXPECT_EQ(find("C:\\Poser\\runtime\\textures\\missing.jpg"), QStringLiteral("<none>"));

    DialogAnswerer answerer(500);
    EXPECT_EQ(find(":Runtime:Geometries:nowhere.obj", true), QStringLiteral("<none>"));
    EXPECT_TRUE(answerer.seen().isEmpty()) << "without a main window nothing is asked";
}

// A missing include is located by the user; what the user locates serves later lookups: a content
// root takes the whole requested path, a plain folder the file name.
TEST_F(ContentLocation, LocatedFoldersServeLaterLookups) {
    withWindow();
    const QString include = file("E/Content/Runtime/libraries/inc.pz2", "version\n{\nnumber 6.5\n}\n");
    const QString later = touch("E/Content/Runtime/Geometries/c/d.obj");
    const QString plain = touch("E/Misc/x.obj"), sibling = touch("E/Misc/y.obj");
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(include).pressButton("Locate").chooseFile(plain);
    EXPECT_TRUE(readOk("scene.pz3", "readScript :Runtime:libraries:inc.pz2\n"));
    EXPECT_EQ(importer.version(), 6.5f) << qPrintable(logText());
    ASSERT_EQ(answerer.seen().size(), 2) << qPrintable(answerer.failures().join('\n'));
    const DialogAnswerer::Seen &box = answerer.seen()[0], &chooser = answerer.seen()[1];
    EXPECT_EQ(box.title, QStringLiteral("Unable to locate file"));
    EXPECT_EQ(box.text,
              QStringLiteral("Cannot find a file for \"/Runtime/libraries/inc.pz2\".\n\nTo avoid seeing this "
                             "message, make sure that the Poser content directories are set up correctly"));
    QStringList buttons = box.buttons; // laid out in the style's order
    buttons.sort();
    EXPECT_EQ(buttons, QStringList({"Locate", "Skip", "Stop Asking"}));
    EXPECT_EQ(chooser.title, QStringLiteral("Please locate the file: inc.pz2"));
    EXPECT_TRUE(chooser.filters.value(0).startsWith(QStringLiteral("PZ2File")))
        << qPrintable(chooser.filters.join(';'));
    EXPECT_EQ(find(":Runtime:Geometries:c:d.obj", true), later)
        << "found under the learned root, no question";
    EXPECT_EQ(answerer.seen().size(), 2);

    EXPECT_EQ(find(":Runtime:Geometries:q:x.obj", true), plain);
    EXPECT_EQ(find(":Runtime:Geometries:r:y.obj"), sibling);
    EXPECT_EQ(find(":Runtime:Geometries:r:z.obj"), QStringLiteral("<none>"));
}

TEST_F(ContentLocation, SkipEscapeCancelAndStopAsking) {
    withWindow();
    DialogAnswerer answerer;
    answerer.pressButton("Skip").pressEscape().pressButton("Locate").reject().pressButton("Stop Asking");
    for (const char *name : {"/a.obj", "/b.obj", "/c.obj", "/d.obj", "/e.obj"})
        EXPECT_EQ(find(name, true), QStringLiteral("<none>")) << name;
    EXPECT_EQ(answerer.seen().size(), 5) << "no question after Stop Asking";
    EXPECT_TRUE(answerer.failures().isEmpty()) << qPrintable(answerer.failures().join('\n'));
    EXPECT_FALSE(OvApp::isProgressPaused());
    EXPECT_FALSE(importer.askForFiles());
    importer.read(dir.filePath("none.pz3"), OvFileIOSettings());
    EXPECT_TRUE(importer.askForFiles()) << "the next import asks again";
}

} // namespace
