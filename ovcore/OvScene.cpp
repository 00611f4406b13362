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
