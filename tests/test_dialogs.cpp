// The host's file choosers and the dialog answerer, driven through real modal dialogs.

#include "ImportTest.h"
#include "support/DialogAnswerer.h"

#include <OvApp.h>
#include <OvMainWindow.h>

#include <QFileInfo>
#include <QImage>
#include <QMessageBox>

#include <memory>

namespace {

QString canonical(const QString &path) {
    return QFileInfo(path).canonicalFilePath();
}

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
// The importer's three-way question: Locate (0), Skip (1, also Escape), Stop Asking (2).
int askLikeTheImporter(QWidget *parent, int escapeButton = 1) {
    return QMessageBox::warning(parent, "Unable to locate file", "Cannot find a file for \"x.obj\".",
                                "Locate", "Skip", "Stop Asking", 0, escapeButton);
}
QT_WARNING_POP

class Dialogs : public ImportTest {
protected:
    OvMainWindow window;
};

TEST_F(Dialogs, AnswersGoToSuccessiveQuestionsByButtonName) {
    DialogAnswerer answerer;
    answerer.pressButton("Stop Asking").pressButton("Locate").pressEscape().pressButton("Skip");
    for (int expected : {2, 0, 1, 1})
        EXPECT_EQ(askLikeTheImporter(&window), expected);
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    ASSERT_EQ(answerer.seen().size(), 4);
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    EXPECT_EQ(
        seen.className + ": " + seen.title + ": " + seen.text + ": " + seen.buttons.join(", "),
        "QMessageBox: Unable to locate file: Cannot find a file for \"x.obj\".: Locate, Skip, Stop Asking");
}

TEST_F(Dialogs, AnswererGivesUpInsteadOfHanging) {
    DialogAnswerer answerer(300);
    answerer.pressButton("Retry").pressEscape();
    askLikeTheImporter(&window);     // no such button
    askLikeTheImporter(&window, -1); // Escape without an escape button: up until the timeout
    askLikeTheImporter(&window);     // no answer left
    EXPECT_EQ(answerer.failures().join('\n'),
              "QMessageBox \"Unable to locate file\": no button \"Retry\"\n"
              "QMessageBox \"Unable to locate file\": still open after 300 ms\n"
              "QMessageBox \"Unable to locate file\": no answer queued");
}

TEST_F(Dialogs, OpenDialogStartsAtTheMissingFileAndInsistsOnAnExistingOne) {
    const QString file = this->file("ball.obj", "v 0 0 0\n");
    OvFileFilter filter;
    filter.newFilter("OBJFile");
    for (const char *ext : {"*.obj", ".obz", "obj"}) // the same extension once is enough
        filter.addExtension(ext);
    DialogAnswerer answerer;
    // A missing file is refused with a nested warning and the chooser stays open.
    answerer.chooseFile(dir.filePath("missing.obj")).pressButton("OK").chooseFile(file);
    QString selected;
    EXPECT_TRUE(window.doFileDialog(true, "Please locate the file: ball.obj", dir.filePath("ball2.obj"),
                                    filter, selected));
    EXPECT_EQ(canonical(selected), canonical(file));
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    ASSERT_EQ(answerer.seen().size(), 3);
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    EXPECT_EQ(seen.className + ": " + seen.title, "QFileDialog: Please locate the file: ball.obj");
    EXPECT_EQ(seen.filters, QStringList({"OBJFile (*.obj *.obz)", "All Files (*)"}));
    EXPECT_EQ(canonical(seen.directory), canonical(dir.path()));
    EXPECT_EQ(seen.selection, QStringList{dir.filePath("ball2.obj")});
    EXPECT_TRUE(answerer.seen()[1].text.contains("missing.obj"));
}

TEST_F(Dialogs, CancelledSavedAndImageChoices) {
    QWidget owner;
    OvFileFilter unnamed;
    unnamed.addExtension("obj");
    ASSERT_TRUE(QImage(4, 4, QImage::Format_RGB32).save(dir.filePath("skin.png")));
    DialogAnswerer answerer;
    answerer.reject().pressEscape().chooseFile(dir.filePath("new.obj")).chooseFile(dir.filePath("skin.png"));
    QString selected = "unchanged";
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), unnamed, selected, nullptr, &owner));
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), OvFileFilter(), selected));
    EXPECT_EQ(selected, "unchanged");
    EXPECT_TRUE(window.doFileDialog(false, "Save", dir.path(), OvFileFilter(), selected));
    EXPECT_EQ(selected, dir.filePath("new.obj"));
    EXPECT_TRUE(window.doImageDialog(true, selected, nullptr, dir.path()));
    EXPECT_EQ(canonical(selected), canonical(dir.filePath("skin.png")));
    ASSERT_EQ(answerer.seen().size(), 4);
    EXPECT_EQ(answerer.seen()[0].parent, &owner);
    EXPECT_EQ(answerer.seen()[0].filters, QStringList({"*.obj", "All Files (*)"}));
    EXPECT_EQ(answerer.seen()[1].filters, QStringList({"All Files (*)"}));
    EXPECT_TRUE(answerer.seen()[2].saving);
    const QStringList images = answerer.seen()[3].filters;
    EXPECT_TRUE(images.value(0).startsWith("Images (") && images[0].contains("*.png") &&
                images[0].contains("*.jpg"))
        << images.join(';').toStdString();
    EXPECT_EQ(images.value(1), "All Files (*)");
}

TEST(MainWindow, ForgetsItselfAsTheInterfaceWhenDestroyed) {
    OvApp::reset();
    auto window = std::make_unique<OvMainWindow>();
    OvApp::setInterface(window.get());
    window.reset(); // a question asked now must not reach a deleted window
    EXPECT_EQ(OvApp::getInterface(), nullptr);
}

} // namespace
