#pragma once
#include <QMessageBox>
#include <QStringList>

namespace poser {

// A modal message box with the given buttons, in order; returns the index of the button pressed
// (Escape presses `escapeButton`, -1 for none). The parent is the active modal widget when there is
// one, else `fallbackParent`.
int askUser(QMessageBox::Icon icon, QWidget *fallbackParent, const QString &caption, const QString &text,
            const QStringList &buttons, int defaultButton, int escapeButton);

} // namespace poser
