#include "Questions.h"

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
