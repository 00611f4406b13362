#pragma once
// The host's node chooser: a modal dialog listing the scene's nodes as a tree.

#include <QDialog>
#include <QHash>

class OvNode;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class OvNodeDlg : public QDialog {
    Q_OBJECT
public:
    // Lists the nodes of the application's scene; `initial`, when given, is chosen to begin with.
    OvNodeDlg(QWidget *parent, OvNode *initial, const char *name, bool modal = false);

    // The node chosen, or null when none is (the OK button is enabled only while one is).
    OvNode *getNode() const;
    void setNode(OvNode *node);

private:
    QTreeWidget *m_tree;
    QPushButton *m_ok;
    QHash<QTreeWidgetItem *, OvNode *> m_nodes;
};
