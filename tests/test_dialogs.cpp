// The host's file choosers and the dialog answerer, driven through real modal dialogs.

#include "support/DialogAnswerer.h"

#include <OvApp.h>
#include <OvMainWindow.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QWidget>
#include <gtest/gtest.h>

#include <memory>

namespace {

QString canonical(const QString &path) {
    return QFileInfo(path).canonicalFilePath();
}

// The importer's three-way question: Locate (0), Skip (1, also Escape), Stop Asking (2).
int askLikeTheImporter(QWidget *parent) {
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return QMessageBox::warning(parent, "Unable to locate file", "Cannot find a file for \"x.obj\".",
                                "Locate", "Skip", "Stop Asking", 0, 1);
    QT_WARNING_POP
}

QString touch(const QTemporaryDir &dir, const QString &name) {
    QFile f(dir.filePath(name));
    f.open(QIODevice::WriteOnly);
    f.write("v 0 0 0\n");
    return f.fileName();
}

class Dialogs : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
    }
    OvMainWindow window;
    QTemporaryDir dir;
};

} // namespace

TEST_F(Dialogs, MessageBoxReturnsTheIndexOfThePressedButton) {
    struct Case {
        const char *button; // null: Escape
        int expected;
    };
    for (Case c : {Case{"Locate", 0}, Case{"Skip", 1}, Case{"Stop Asking", 2}, Case{nullptr, 1}}) {
        DialogAnswerer answerer;
        if (c.button)
            answerer.pressButton(c.button);
        else
            answerer.pressEscape();
        EXPECT_EQ(askLikeTheImporter(&window), c.expected) << (c.button ? c.button : "Escape");
        EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
        ASSERT_EQ(answerer.seen().size(), 1);
        const DialogAnswerer::Seen &seen = answerer.seen().first();
        EXPECT_EQ(seen.className, "QMessageBox");
        EXPECT_EQ(seen.title, "Unable to locate file");
        EXPECT_EQ(seen.text, "Cannot find a file for \"x.obj\".");
        EXPECT_EQ(seen.buttons, QStringList({"Locate", "Skip", "Stop Asking"}));
        EXPECT_EQ(seen.parent, &window);
    }
}

TEST_F(Dialogs, QueuedAnswersGoToSuccessiveDialogs) {
    DialogAnswerer answerer;
    answerer.pressButton("Stop Asking").pressButton("Locate").pressEscape();
    EXPECT_EQ(askLikeTheImporter(nullptr), 2);
    EXPECT_EQ(askLikeTheImporter(nullptr), 0);
    EXPECT_EQ(askLikeTheImporter(nullptr), 1);
    EXPECT_EQ(answerer.seen().size(), 3);
    EXPECT_EQ(answerer.pendingAnswers(), 0);
    EXPECT_TRUE(answerer.failures().isEmpty());
}

TEST_F(Dialogs, AnswererGivesUpInsteadOfHanging) {
    DialogAnswerer answerer(300);
    // No such button, then no answer left: both rejected at once.
    answerer.pressButton("Retry");
    askLikeTheImporter(&window);
    askLikeTheImporter(&window);
    // Escape without an escape button leaves the box up until the timeout.
    answerer.pressEscape();
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QMessageBox::warning(&window, "No escape", "text", "A", "B", "C", 0, -1);
    QT_WARNING_POP
    const QStringList failures = answerer.failures();
    ASSERT_EQ(failures.size(), 3) << failures.join('\n').toStdString();
    EXPECT_TRUE(failures[0].contains("no button \"Retry\""));
    EXPECT_TRUE(failures[1].contains("no answer queued"));
    EXPECT_TRUE(failures[2].contains("still open after 300 ms"));
    EXPECT_EQ(answerer.seen().size(), 3);
}

TEST(FileFilter, EntriesAndFilterStrings) {
    OvFileFilter filter;
    EXPECT_TRUE(filter.qtFilters().isEmpty());
    filter.newFilter("OBJFile");
    filter.addExtension("obj");
    filter.newFilter("Poser");
    filter.addExtension(".cr2");
    filter.addExtension("*.crz");
    filter.addExtension("cr2"); // once is enough
    filter.newFilter("Anything");
    ASSERT_EQ(filter.count(), 3);
    EXPECT_EQ(filter.name(1), "Poser");
    EXPECT_EQ(filter.extensions(1), QStringList({"cr2", "crz"}));
    EXPECT_EQ(filter.qtFilters(), QStringList({"OBJFile (*.obj)", "Poser (*.cr2 *.crz)", "Anything (*)"}));

    OvFileFilter unnamed;
    unnamed.addExtension("png");
    EXPECT_EQ(unnamed.qtFilters(), QStringList({"*.png"}));
}

TEST_F(Dialogs, FileDialogAcceptsAChosenFile) {
    const QString file = touch(dir, "ball.obj");
    OvFileFilter filter;
    filter.newFilter("OBJFile");
    filter.addExtension("obj");

    DialogAnswerer answerer;
    answerer.chooseFile(file);
    QString selected;
    int filterIndex = 0;
    // The start file is the one being looked for; it does not exist in the start folder.
    EXPECT_TRUE(window.doFileDialog(true, "Please locate the file: ball.obj", dir.filePath("ball2.obj"),
                                    filter, selected, &filterIndex));
    EXPECT_EQ(canonical(selected), canonical(file));
    EXPECT_EQ(filterIndex, 0);
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    ASSERT_EQ(answerer.seen().size(), 1);
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    EXPECT_EQ(seen.className, "QFileDialog");
    EXPECT_EQ(seen.title, "Please locate the file: ball.obj");
    EXPECT_EQ(seen.filters, QStringList({"OBJFile (*.obj)", "All Files (*)"}));
    EXPECT_EQ(canonical(seen.directory), canonical(dir.path()));
    ASSERT_EQ(seen.selection.size(), 1);
    EXPECT_EQ(QFileInfo(seen.selection.first()).fileName(), "ball2.obj");
    EXPECT_FALSE(seen.saving);
    EXPECT_EQ(seen.parent, &window);
}

TEST_F(Dialogs, FileDialogCancelledLeavesTheSelectionAlone) {
    touch(dir, "ball.obj");
    OvFileFilter filter;
    QWidget owner;
    DialogAnswerer answerer;
    answerer.reject().pressEscape();
    QString selected = "unchanged";
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), filter, selected, nullptr, &owner));
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), filter, selected));
    EXPECT_EQ(selected, "unchanged");
    ASSERT_EQ(answerer.seen().size(), 2);
    EXPECT_EQ(answerer.seen()[0].parent, &owner);
    EXPECT_EQ(answerer.seen()[0].filters, QStringList({"All Files (*)"}));
    EXPECT_TRUE(answerer.failures().isEmpty());
}

TEST_F(Dialogs, OpenDialogInsistsOnAnExistingFile) {
    // The chooser refuses a missing file with a nested warning and stays open.
    DialogAnswerer answerer;
    answerer.chooseFile(dir.filePath("missing.obj")).pressButton("OK").reject();
    QString selected;
    EXPECT_FALSE(window.doFileDialog(true, "Open", dir.path(), OvFileFilter(), selected));
    EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
    ASSERT_EQ(answerer.seen().size(), 3);
    EXPECT_EQ(answerer.seen()[1].className, "QMessageBox");
    EXPECT_TRUE(answerer.seen()[1].text.contains("missing.obj"));
    EXPECT_EQ(answerer.seen()[2].className, "QFileDialog");
}

TEST_F(Dialogs, SaveDialogAcceptsANewName) {
    DialogAnswerer answerer;
    const QString target = dir.filePath("new.obj");
    answerer.chooseFile(target);
    QString selected;
    EXPECT_TRUE(window.doFileDialog(false, "Save", dir.path(), OvFileFilter(), selected));
    EXPECT_EQ(selected, target);
    ASSERT_EQ(answerer.seen().size(), 1);
    EXPECT_TRUE(answerer.seen().first().saving);
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
    const DialogAnswerer::Seen &seen = answerer.seen().first();
    ASSERT_EQ(seen.filters.size(), 2);
    EXPECT_TRUE(seen.filters[0].startsWith("Images (")) << seen.filters[0].toStdString();
    EXPECT_TRUE(seen.filters[0].contains("*.png"));
    EXPECT_TRUE(seen.filters[0].contains("*.jpg"));
    EXPECT_EQ(seen.filters[1], "All Files (*)");
    EXPECT_EQ(canonical(seen.directory), canonical(dir.path()));
    EXPECT_EQ(seen.parent, &window);
}

TEST(MainWindow, ForgetsItselfAsTheInterfaceWhenDestroyed) {
    OvApp::reset();
    auto window = std::make_unique<OvMainWindow>();
    OvApp::setInterface(window.get());
    EXPECT_EQ(OvApp::getInterface(), window.get());
    window.reset();
    EXPECT_EQ(OvApp::getInterface(), nullptr);
}
