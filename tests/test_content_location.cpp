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
    EXPECT_EQ(QSet<QString>(box.buttons.begin(), box.buttons.end()),
              QSet<QString>({"Locate", "Skip", "Stop Asking"}))
        << "laid out in the style's order";
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
    const QString exact = file("second/Runtime/Geometries/Doll.obj", kTriangle);
    file("content/runtime/geometries/Doll.obj", kTriangle);
    file("second/Runtime/Geometries/box.obj", kTriangle);
    file("content/Runtime/Libraries/Pose/inc.pz2", "prop included\n{\n}\n");
    // At each level an exact name comes first, then the folded ones in sorted order.
    file("content/Runtime/Geometries/props/ball.obj", kTriangle);
    file("content/runtime/Geometries/ALT.obj", kTriangle);
    const struct {
        const char *prop, *reference, *file; // the file under the content folder
    } rows[] = {
        {"mac", ":runtime:geometries:mapcase.obj", "Runtime/Geometries/mapcase.obj"},
        {"windows", "runtime\\GEOMETRIES\\Props\\Ball.obj", "runtime/geometries/props/ball.obj"},
        {"drive", "C:\\Program Files\\Poser 6\\RUNTIME\\geometries\\Win.obj", "Runtime/Geometries/win.obj"},
        {"twin", "Macintosh HD:Poser:runtime:Geometries:Twin.obj", "Runtime/Geometries/twin.obz"},
        {"alt", ":RUNTIME:Geometries:alt.obj", "Runtime/Geometries/ALT.obj"}, // an alternate geometry
        {"cafe", ":Runtime:Geometries:caf\xC3\xA9.obj", "Runtime/Geometries/Cafe\xCC\x81.obj"}, // decomposed
        {"dots", ":Runtime:./geometries:x:..:Dots.obj", "Runtime/Geometries/dots.obj"},
        // Exact names: the first content folder wins; Windows paths from their runtime folder, else
        // without the drive.
        {"first", "/Runtime/Geometries/box.obj", "Runtime/Geometries/box.obj"},
        {"lower", "C:\\Poser\\runtime\\a\\b.obj", "runtime/a/b.obj"},
        {"whole", "C:\\Poser\\Runtime\\c.obj", "Poser/Runtime/c.obj"},
    };
    QByteArray text = "readScript :RUNTIME:libraries:pose:INC.pz2\n"
                      "figureResFile :Runtime:Geometries:Doll.obj\nactor hip:1\n{\n}\n";
    for (const auto &r : rows) {
        const QString name = QStringLiteral("content/") + r.file;
        name.endsWith(".obz") ? writeGzipFile(dir, name, kTriangle) : file(name, kTriangle);
        const bool alternate = QByteArray(r.prop) == "alt";
        text += QByteArray("prop ") + r.prop +
                (alternate ? "\n{\nalternateGeom a\n{\nobjFile 1 " : "\n{\nobjFileGeom 0 0 ") + r.reference +
                (alternate ? "\n}\n}\n" : "\n}\n");
    }
    const QString scene = file("mixed.cr2", text);
    EXPECT_EQ(importer.read(dir.path() + "/.//mixed.cr2", OvFileIOSettings()), 0u);
    EXPECT_EQ(logText(), QString()) << "the include and every geometry found";
    EXPECT_EQ(source(skeleton("mixed")).getSourceFilePath(), exact);
    for (const auto &r : rows)
        EXPECT_EQ(source(lastShape(labelled(r.prop))).getSourceFilePath(),
                  dir.filePath(QStringLiteral("content/") + r.file));
    auto *source = labelled("mac")->findDataItem(QStringLiteral("SourceFileData"));
    EXPECT_EQ(source ? static_cast<OvSourceFileData *>(source)->getSourceFilePath() : QString(), scene);
}

// What could not be found is named in the log, with where it was looked for: a prop's geometry,
// the figure geometry, a section the file never closes, and an OBJ's material library.
TEST_F(ContentLocation, WhatCannotBeFoundIsNamedInTheLog) {
    DialogAnswerer answerer(500);
    read("lost.pz3", "prop box\n{\nobjFileGeom 0 0 :Runtime:Geometries:Ville_base.obj\nprop ball\n{\n}\n");
    EXPECT_EQ(read("fig.cr2", "figureResFile :Runtime:Geometries:gone.obj\n"), OvImporter::ResultStopped);
    OvShape *shape = nullptr;
    OvObjImporter().readShape(file("model.obj", "mtllib Nowhere.mtl\n" + kTriangle), &shape,
                              OvFileIOSettings());
    delete shape;
    const QString looked = " (looked in: " + dir.filePath("content") + "); continuing without it\n";
    EXPECT_EQ(logText(),
              "info: Could not find \"/Runtime/Geometries/Ville_base.obj\"" + looked +
                  "info: 1 sections still open at the end of file on line 6 in " + dir.filePath("lost.pz3") +
                  "\ninfo: Could not find \"/Runtime/Geometries/gone.obj\"" + looked +
                  "error: Error loading figureResFile :Runtime:Geometries:gone.obj on line 1 in " + path +
                  "\ninfo: Could not find material file : Nowhere.mtl (looked in: " + dir.path() +
                  "); continuing without it");
    EXPECT_TRUE(answerer.seen().isEmpty()) << "without a main window nothing is asked";
}

} // namespace
