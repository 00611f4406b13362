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

TEST_F(Dialogs, MessageBoxAnswersGoToSuccessiveQuestions) {
    DialogAnswerer answerer;
    answerer.pressButton("Stop Asking").pressButton("Locate").pressEscape().pressButton("Skip");
    EXPECT_EQ(askLikeTheImporter(&window), 2);
    EXPECT_EQ(askLikeTheImporter(nullptr), 0);
    EXPECT_EQ(askLikeTheImporter(nullptr), 1);
    EXPECT_EQ(askLikeTheImporter(nullptr), 1);
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    EXPECT_EQ(answerer.pendingAnswers(), 0);
    ASSERT_EQ(answerer.seen().size(), 4);
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    EXPECT_EQ(seen.className, "QMessageBox");
    EXPECT_EQ(seen.title, "Unable to locate file");
    EXPECT_EQ(seen.text, "Cannot find a file for \"x.obj\".");
    EXPECT_EQ(seen.buttons, QStringList({"Locate", "Skip", "Stop Asking"}));
    EXPECT_EQ(seen.parent, &window);
}

TEST_F(Dialogs, AnswererGivesUpInsteadOfHanging) {
    DialogAnswerer answerer(300);
    answerer.pressButton("Retry").pressEscape();
    askLikeTheImporter(&window);     // no such button
    askLikeTheImporter(&window, -1); // Escape without an escape button: up until the timeout
    askLikeTheImporter(&window);     // no answer left
    const QStringList failures = answerer.failures();
    ASSERT_EQ(failures.size(), 3) << failures.join('\n').toStdString();
    EXPECT_TRUE(failures[0].contains("no button \"Retry\""));
    EXPECT_TRUE(failures[1].contains("still open after 300 ms"));
    EXPECT_TRUE(failures[2].contains("no answer queued"));
}

TEST(FileFilter, EntriesBecomeChooserFilters) {
    OvFileFilter filter;
    filter.newFilter("OBJFile");
    filter.addExtension("obj");
    filter.newFilter("Poser");
    filter.addExtension(".cr2");
    filter.addExtension("*.crz");
    filter.addExtension("cr2"); // once is enough
    filter.newFilter("Anything");
    EXPECT_EQ(filter.qtFilters(), QStringList({"OBJFile (*.obj)", "Poser (*.cr2 *.crz)", "Anything (*)"}));
    OvFileFilter unnamed;
    unnamed.addExtension("png");
    EXPECT_EQ(unnamed.qtFilters(), QStringList({"*.png"}));
}

TEST_F(Dialogs, OpenDialogStartsAtTheMissingFileAndInsistsOnAnExistingOne) {
    const QString file = this->file("ball.obj", "v 0 0 0\n");
    OvFileFilter filter;
    filter.newFilter("OBJFile");
    filter.addExtension("obj");
    DialogAnswerer answerer;
    // A missing file is refused with a nested warning and the chooser stays open.
    answerer.chooseFile(dir.filePath("missing.obj")).pressButton("OK").chooseFile(file);
    QString selected;
    int filterIndex = -1;
    EXPECT_TRUE(window.doFileDialog(true, "Please locate the file: ball.obj", dir.filePath("ball2.obj"),
                                    filter, selected, &filterIndex));
    EXPECT_EQ(canonical(selected), canonical(file));
    EXPECT_EQ(filterIndex, 0);
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    ASSERT_EQ(answerer.seen().size(), 3);
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    EXPECT_EQ(seen.className, "QFileDialog");
    EXPECT_EQ(seen.title, "Please locate the file: ball.obj");
    EXPECT_EQ(seen.filters, QStringList({"OBJFile (*.obj)", "All Files (*)"}));
    EXPECT_EQ(canonical(seen.directory), canonical(dir.path()));
    EXPECT_EQ(seen.selection.size(), 1);
    EXPECT_EQ(QFileInfo(seen.selection.value(0)).fileName(), "ball2.obj");
    EXPECT_FALSE(seen.saving);
    EXPECT_EQ(seen.parent, &window);
    EXPECT_TRUE(answerer.seen()[1].text.contains("missing.obj"));
}

TEST_F(Dialogs, CancelledOrSavedChoices) {
    QWidget owner;
    DialogAnswerer answerer;
    answerer.reject().pressEscape().chooseFile(dir.filePath("new.obj"));
    QString selected = "unchanged";
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), OvFileFilter(), selected, nullptr, &owner));
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), OvFileFilter(), selected));
    EXPECT_EQ(selected, "unchanged");
    EXPECT_TRUE(window.doFileDialog(false, "Save", dir.path(), OvFileFilter(), selected));
    EXPECT_EQ(selected, dir.filePath("new.obj"));
    ASSERT_EQ(answerer.seen().size(), 3);
    EXPECT_EQ(answerer.seen()[0].parent, &owner);
    EXPECT_EQ(answerer.seen()[0].filters, QStringList({"All Files (*)"}));
    EXPECT_TRUE(answerer.seen()[2].saving);
}

TEST_F(Dialogs, ImageDialogOffersReadableFormats) {
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString png = dir.filePath("skin.png");
    ASSERT_TRUE(image.save(png));
    DialogAnswerer answerer;
    answerer.chooseFile(png);
    QString selected;
    EXPECT_TRUE(window.doImageDialog(true, selected, nullptr, dir.path()));
    EXPECT_EQ(canonical(selected), canonical(png));
    ASSERT_EQ(answerer.seen().size(), 1);
    const QStringList filters = answerer.seen()[0].filters;
    ASSERT_EQ(filters.size(), 2);
    EXPECT_TRUE(filters[0].startsWith("Images (") && filters[0].contains("*.png") &&
                filters[0].contains("*.jpg"))
        << filters[0].toStdString();
    EXPECT_EQ(filters[1], "All Files (*)");
}

TEST(MainWindow, ForgetsItselfAsTheInterfaceWhenDestroyed) {
    OvApp::reset();
    auto window = std::make_unique<OvMainWindow>();
    OvApp::setInterface(window.get());
    EXPECT_EQ(OvApp::getInterface(), window.get());
    window.reset();
    EXPECT_EQ(OvApp::getInterface(), nullptr);
}

} // namespace
