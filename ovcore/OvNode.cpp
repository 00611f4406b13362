#include "OvNode.h"

#include <algorithm>
#include <cstring>

OvElement::~OvElement() = default;

OvElementData *OvElement::findDataItem(const QString &name) const {
    for (const auto &d : m_dataItems)
        if (d->getName() == name)
            return d.get();
    return nullptr;
}

void OvElement::addDataItem(OvElementData *item) { m_dataItems.emplace_back(item); }

bool OvElement::isA(const char *className) const {
    return std::strcmp(metaObject()->className(), className) == 0;
}

OvObject::~OvObject() {
    for (OvShape *s : m_shapes)
        delete s;
}

OvNode::~OvNode() {
    for (OvNode *c : m_children) {
        c->m_parent = nullptr;
        delete c;
    }
}

bool OvNode::isAncestorOf(const OvNode *node) const {
    for (const OvNode *p = node ? node->m_parent : nullptr; p; p = p->m_parent)
        if (p == this)
            return true;
    return false;
}

bool OvNode::addNodeChild(OvNode *child, bool) {
    if (!child || child == this || child->isAncestorOf(this))
        return false;
    if (child->m_parent == this)
        return true;
    if (child->m_parent)
        child->m_parent->removeNodeChild(child);
    child->m_parent = this;
    m_children.push_back(child);
    return true;
}

bool OvNode::removeNodeChild(OvNode *child, bool) {
    auto it = std::find(m_children.begin(), m_children.end(), child);
    if (it == m_children.end())
        return false;
    m_children.erase(it);
    child->m_parent = nullptr;
    return true;
}

OvProperty *OvNode::findProperty(const QString &name) const {
    for (const auto &p : m_properties)
        if (p->getName() == name)
            return p.get();
    return nullptr;
}
