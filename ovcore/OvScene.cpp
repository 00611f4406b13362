#include "OvScene.h"
#include "OvLight.h"
#include "OvNode.h"

#include <algorithm>

OvScene::~OvScene() {
    for (OvNode *n : m_nodes)
        delete n;
}

void OvScene::addNode(OvNode *node) {
    if (node && std::find(m_nodes.begin(), m_nodes.end(), node) == m_nodes.end())
        m_nodes.push_back(node);
}

bool OvScene::removeNode(OvNode *node) {
    if (m_selection && node && (m_selection == node || node->isAncestorOf(m_selection)))
        m_selection = nullptr;
    auto it = std::find(m_nodes.begin(), m_nodes.end(), node);
    if (it != m_nodes.end()) {
        m_nodes.erase(it);
        return true;
    }
    if (node && node->getNodeParent() && contains(node))
        return node->getNodeParent()->removeNodeChild(node);
    return false;
}

template <class F> static OvNode *findDepthFirst(OvNode *root, F &&match) {
    OvNode *found = nullptr;
    forEachNode(root, [&](OvNode *n) {
        if (!found && match(n))
            found = n;
        return !found;
    });
    return found;
}

OvNode *OvScene::findNodeByLabel(const QString &label) const {
    for (OvNode *n : m_nodes)
        if (OvNode *found = findDepthFirst(n, [&](OvNode *x) { return x->getLabel() == label; }))
            return found;
    return nullptr;
}

OvBasicCamera *OvScene::findCamera(const QString &name) const {
    for (OvNode *n : m_nodes)
        if (OvNode *found = findDepthFirst(
                n, [&](OvNode *x) { return x->getName() == name && x->inherits("OvBasicCamera"); }))
            return static_cast<OvBasicCamera *>(found);
    return nullptr;
}

bool OvScene::contains(const OvNode *node) const {
    if (!node)
        return false;
    const OvNode *top = node;
    while (top->getNodeParent())
        top = top->getNodeParent();
    return std::find(m_nodes.begin(), m_nodes.end(), top) != m_nodes.end();
}

// Removes and deletes the nodes of a class below `top` (not `top` itself), with what is below them.
static int removeFromChildren(OvNode *top, const char *className, OvNode *&selection) {
    int removed = 0;
    std::vector<OvNode *> pending{top};
    while (!pending.empty()) {
        OvNode *parent = pending.back();
        pending.pop_back();
        for (int i = parent->getNumNodeChildren() - 1; i >= 0; --i) {
            OvNode *child = parent->getNodeChild(i);
            if (!child->inherits(className)) {
                pending.push_back(child);
                continue;
            }
            if (selection && (selection == child || child->isAncestorOf(selection)))
                selection = nullptr;
            parent->removeNodeChild(child);
            delete child;
            ++removed;
        }
    }
    return removed;
}

int OvScene::removeNodesOfClass(const char *className) {
    int removed = 0;
    for (size_t i = m_nodes.size(); i-- > 0;) {
        OvNode *node = m_nodes[i];
        if (node->inherits(className)) {
            if (m_selection && (m_selection == node || node->isAncestorOf(m_selection)))
                m_selection = nullptr;
            m_nodes.erase(m_nodes.begin() + long(i));
            delete node;
            ++removed;
        } else {
            removed += removeFromChildren(node, className, m_selection);
        }
    }
    return removed;
}

int OvScene::removeAllLights() {
    return removeNodesOfClass("OvLight");
}

int OvScene::removeAllCameras() {
    return removeNodesOfClass("OvBasicCamera");
}
