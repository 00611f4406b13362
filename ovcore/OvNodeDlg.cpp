#include "OvNodeDlg.h"
#include "OvApp.h"
#include "OvNode.h"
#include "OvScene.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

OvNodeDlg::OvNodeDlg(QWidget *parent, OvNode *initial, const char *name, bool modal)
    : QDialog(parent), m_tree(new QTreeWidget(this)) {
    setObjectName(QString::fromLatin1(name));
    setModal(modal);
    m_tree->setHeaderHidden(true);

    const OvScene *scene = OvApp::getScene();
    QHash<const OvNode *, QTreeWidgetItem *> itemOf;
    for (int i = 0; i < scene->getNumNodes(); ++i)
        forEachNode(scene->getNode(i), [&](OvNode *n) {
            QTreeWidgetItem *above = itemOf.value(n->getNodeParent());
            auto *item = above ? new QTreeWidgetItem(above) : new QTreeWidgetItem(m_tree);
            item->setText(0, n->getLabel().isEmpty() ? n->getName() : n->getLabel());
            itemOf.insert(n, item);
            m_nodes.insert(item, n);
            return true;
        });
    m_tree->expandAll();

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_tree, &QTreeWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(m_tree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem *current) { m_ok->setEnabled(m_nodes.contains(current)); });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tree);
    layout->addWidget(buttons);
    m_ok->setEnabled(false);
    setNode(initial);
}

OvNode *OvNodeDlg::getNode() const {
    return m_nodes.value(m_tree->currentItem());
}

void OvNodeDlg::setNode(OvNode *node) {
    for (auto it = m_nodes.cbegin(); it != m_nodes.cend(); ++it)
        if (it.value() == node && node) {
            m_tree->setCurrentItem(it.key());
            return;
        }
}
