#pragma once
#include <QMessageBox>
#include <QStringList>

class OvNode;

namespace poser {

// A modal message box with the given buttons, in order; returns the index of the button pressed
// (Escape presses `escapeButton`, -1 for none). The parent is the active modal widget when there is
// one, else `fallbackParent`.
int askUser(QMessageBox::Icon icon, QWidget *fallbackParent, const QString &caption, const QString &text,
            const QStringList &buttons, int defaultButton, int escapeButton);

// The host's node dialog over the scene, parented to `parent`; the node chosen, or null when the
// user cancels.
OvNode *askForNode(QWidget *parent);

// Which hand a hand pose is for: 0 right, 1 left, 2 cancelled (also by Escape). Asked with a main
// window; without one the host's answer for questions is taken (yes right, no left, cancel
// cancels, by default the default button, right). `said` is the answer as the log tells it.
int askHandSide(QString &said);

} // namespace poser
