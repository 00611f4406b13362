#include "OvScene.h"
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
    auto it = std::find(m_nodes.begin(), m_nodes.end(), node);
    if (it == m_nodes.end())
        return false;
    m_nodes.erase(it);
    return true;
}

static int removeFromChildren(OvNode *parent, const char *className) {
    int removed = 0;
    for (int i = parent->getNumNodeChildren() - 1; i >= 0; --i) {
        OvNode *child = parent->getNodeChild(i);
        if (child->inherits(className)) {
            parent->removeNodeChild(child);
            delete child;
            ++removed;
        } else {
            removed += removeFromChildren(child, className);
        }
    }
    return removed;
}

int OvScene::removeNodesOfClass(const char *className) {
    int removed = 0;
    for (size_t i = m_nodes.size(); i-- > 0;) {
        OvNode *node = m_nodes[i];
        if (node->inherits(className)) {
            m_nodes.erase(m_nodes.begin() + long(i));
            delete node;
            ++removed;
        } else {
            removed += removeFromChildren(node, className);
        }
    }
    return removed;
}

int OvScene::removeAllLights() { return removeNodesOfClass("OvLight"); }

int OvScene::removeAllCameras() { return removeNodesOfClass("OvBasicCamera"); }
