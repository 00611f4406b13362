#include "OvIKChains.h"
#include "OvNode.h"

void OvPoserIKChain::addLink(OvNode *node, float weight, int index) {
    if (index < 0 || index >= int(m_links.size()))
        m_links.push_back(Link{node, weight});
    else
        m_links.insert(m_links.begin() + index, Link{node, weight});
}

bool OvPoserIKChain::setLinkWeight(int index, float weight) {
    if (index < 0 || index >= int(m_links.size()))
        return false;
    m_links[size_t(index)].weight = weight;
    return true;
}

OvPoserIKChain *OvPoserIKChains::addChain(OvPoserIKChain *chain) {
    if (chain)
        m_chains.emplace_back(chain);
    return chain;
}
