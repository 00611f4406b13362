#include "Questions.h"

#include <OvApp.h>
#include <OvMainWindow.h>
#include <OvNodeDlg.h>
#include <QAbstractButton>
#include <QApplication>
#include <QPushButton>
#include <vector>

namespace poser {

int askUser(QMessageBox::Icon icon, QWidget *fallbackParent, const QString &caption, const QString &text,
            const QStringList &buttons, int defaultButton, int escapeButton) {
    QWidget *parent = QApplication::activeModalWidget();
    QMessageBox box(icon, caption, text, QMessageBox::NoButton, parent ? parent : fallbackParent);
    std::vector<QPushButton *> pushButtons;
    for (const QString &label : buttons)
        pushButtons.push_back(box.addButton(label, QMessageBox::ActionRole));
    if (defaultButton >= 0 && defaultButton < int(pushButtons.size()))
        box.setDefaultButton(pushButtons[size_t(defaultButton)]);
    if (escapeButton >= 0 && escapeButton < int(pushButtons.size()))
        box.setEscapeButton(pushButtons[size_t(escapeButton)]);
    box.exec();
    QAbstractButton *clicked = box.clickedButton();
    for (size_t i = 0; i < pushButtons.size(); ++i)
        if (pushButtons[i] == clicked)
            return int(i);
    return escapeButton;
}

} // namespace poser

namespace poser {

OvNode *askForNode(QWidget *parent) {
    OvNodeDlg dialog(parent, nullptr, "PoserImportNodeDlg", false);
    dialog.setWindowTitle(QObject::tr("Select an item from the scene"));
    OvApp::pauseProgress();
    const bool chosen = dialog.exec() == QDialog::Accepted;
    OvApp::resumeProgress();
    return chosen ? dialog.getNode() : nullptr;
}

int askHandSide(QString &said) {
    static const char *const names[] = {"Right", "Left", "Cancel"};
    int side = 0;
    if (OvMainWindow *window = OvApp::getInterface()) {
        OvApp::pauseProgress();
        side = askUser(QMessageBox::Information, window, QObject::tr("Apply Hand Pose"),
                       QObject::tr("Which Hand would you like to pose?"),
                       {QObject::tr("Right"), QObject::tr("Left"), QObject::tr("&Cancel")}, 0, 2);
        OvApp::resumeProgress();
        said = QObject::tr(names[side]);
        return side;
    }
    switch (OvApp::headlessAnswer()) {
    case OvApp::AnswerYes:
        side = 0;
        break;
    case OvApp::AnswerNo:
        side = 1;
        break;
    case OvApp::AnswerCancel:
        side = 2;
        break;
    case OvApp::AnswerDefault:
        said = QObject::tr("Right (the host's default: no window to ask in)");
        return 0;
    }
    said = QObject::tr(names[side]);
    return side;
}

} // namespace poser
