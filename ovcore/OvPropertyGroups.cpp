#include "OvPropertyGroups.h"

bool OvPropertyGroup::movePropertyToIndex(const QString &name, int index) {
    const qsizetype from = m_properties.indexOf(name);
    if (from < 0 || index < 0 || index >= m_properties.size())
        return false;
    m_properties.move(from, index);
    return true;
}

OvPropertyGroup *OvPropertyGroup::findChildNamed(const QString &name) const {
    for (const auto &child : m_children)
        if (child->m_name == name)
            return child.get();
    return nullptr;
}

OvPropertyGroup *OvPropertyGroupTree::findChild(const QString &path) const {
    auto *group = const_cast<OvPropertyGroup *>(&m_root);
    if (path.isEmpty())
        return group;
    for (const QString &name : path.split(QLatin1Char('/'))) {
        group = group->findChildNamed(name);
        if (!group)
            return nullptr;
    }
    return group;
}

void OvPropertyGroupTree::place(const QString &property, const QString &oldPath, const QString &path) {
    if (!oldPath.isEmpty())
        if (OvPropertyGroup *old = findChild(oldPath))
            old->m_properties.removeAll(property);
    if (path.isEmpty())
        return;
    OvPropertyGroup *group = &m_root;
    for (const QString &name : path.split(QLatin1Char('/'))) {
        OvPropertyGroup *child = group->findChildNamed(name);
        if (!child) {
            group->m_children.emplace_back(new OvPropertyGroup(name));
            child = group->m_children.back().get();
        }
        group = child;
    }
    group->m_properties.append(property);
}
