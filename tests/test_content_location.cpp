// Mapping the paths Poser files name onto content folders, folders the user located, and the
// Locate question with the host's real dialogs; content written on file systems that ignore letter
// case, and what an import says about the files it could not find.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvMainWindow.h>
#include <OvShape.h>
#include <memory>
#include <obj/OvObjImporter.h>

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

const QByteArray kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

// The path a node or shape records for its geometry, or "<none>".
template <class Element> QString geometrySource(const Element *element) {
    auto *data = element ? dynamic_cast<const OvGeomSourceFileData *>(
                               element->findDataItem(QStringLiteral("GeomSourceFileData")))
                         : nullptr;
    return data ? data->getSourceFilePath() : QStringLiteral("<none>");
}

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

// References and folders that disagree in letter case in every form a Poser file names a file:
// each is found, an exact name in a later content folder wins over a folded one in an earlier
// folder, and every record is a clean absolute path however the folders were written.
TEST_F(ContentLocation, ReferencesFindFilesWhoseNamesDifferInLetterCase) {
    OvApp::getContentMgr()->addPoserDirectory(dir.path() + "/./second//");
    const QString exact = file("second/Runtime/Geometries/Doll.obj", kTriangle + "g hip\nf 1 2 3\n");
    file("content/runtime/geometries/Doll.obj", kTriangle);
    const QString mapcase = file("content/Runtime/Geometries/mapcase.obj", kTriangle),
                  ball = file("content/Runtime/Geometries/props/ball.obj", kTriangle),
                  win = file("content/Runtime/Geometries/win.obj", kTriangle),
                  alt = file("content/Runtime/Geometries/ALT.obj", kTriangle),
                  twin = writeGzipFile(dir, "content/Runtime/Geometries/twin.obz", kTriangle);
    file("content/Runtime/Libraries/Pose/inc.pz2", "prop included\n{\n}\n");
    const QString scene = file(
        "mixed.cr2", "readScript :RUNTIME:libraries:pose:INC.pz2\n"
                     "figureResFile :Runtime:Geometries:Doll.obj\nactor hip:1\n{\n}\n"
                     "prop mac\n{\nobjFileGeom 0 0 :runtime:geometries:mapcase.obj\n"
                     "alternateGeom a\n{\nname Alt\nobjFile 1 :RUNTIME:Geometries:alt.obj\n}\n}\n"
                     "prop windows\n{\nobjFileGeom 0 0 runtime\\GEOMETRIES\\Props\\Ball.obj\n}\n"
                     "prop drive\n{\nobjFileGeom 0 0 C:\\Program Files\\Poser 6\\RUNTIME\\"
                     "geometries\\Win.obj\n}\n"
                     "prop twin\n{\nobjFileGeom 0 0 Macintosh HD:Poser:runtime:Geometries:Twin.obj\n}\n");
    EXPECT_EQ(importer.read(dir.path() + "/.//mixed.cr2", OvFileIOSettings()), 0u) << qPrintable(logText());
    EXPECT_EQ(logText(), QString());
    EXPECT_TRUE(labelled("included"));
    EXPECT_EQ(geometrySource(skeleton("mixed")), exact);
    EXPECT_EQ(geometrySource(labelled("mac")), mapcase);
    EXPECT_EQ(geometrySource(lastShape(labelled("mac"))), alt) << "the alternate geometry";
    EXPECT_EQ(geometrySource(labelled("windows")), ball);
    EXPECT_EQ(geometrySource(labelled("drive")), win);
    EXPECT_EQ(geometrySource(lastShape(labelled("twin"))), twin);
    auto *source = dynamic_cast<const OvSourceFileData *>(
        labelled("mac")->findDataItem(QStringLiteral("SourceFileData")));
    EXPECT_EQ(source ? source->getSourceFilePath() : QString(), scene);
}

// What could not be found is named in the log, with where it was looked for: a prop's geometry,
// the figure geometry, a section the file never closes, and an OBJ's material library.
TEST_F(ContentLocation, WhatCannotBeFoundIsNamedInTheLog) {
    EXPECT_EQ(read("lost.pz3", "prop box\n{\nobjFileGeom 0 0 :Runtime:Geometries:Ville_base.obj\n"
                               "prop ball\n{\n}\n"),
              0u);
    EXPECT_EQ(read("fig.cr2", "figureResFile :Runtime:Geometries:gone.obj\n"), OvImporter::ResultStopped);
    OvObjImporter obj;
    OvShape *shape = nullptr;
    const QString model = file("model.obj", "mtllib Nowhere.mtl\n" + kTriangle);
    EXPECT_EQ(obj.readShape(model, &shape, OvFileIOSettings()), 0u);
    delete shape;
    const QString looked = " (looked in: " + dir.filePath("content") + "); continuing without it\n";
    EXPECT_EQ(logText(),
              "info: Could not find \"/Runtime/Geometries/Ville_base.obj\"" + looked +
                  "info: 1 sections still open at the end of file on line 6 in " + dir.filePath("lost.pz3") +
                  "\ninfo: Could not find \"/Runtime/Geometries/gone.obj\"" + looked +
                  "error: Error loading figureResFile :Runtime:Geometries:gone.obj on line 1 in " + path +
                  "\ninfo: Could not find material file : Nowhere.mtl (looked in: " + dir.path() +
                  "); continuing without it");
}

} // namespace
