#include "SceneItemIndex.h"
#include "SceneHelpers.h"

void Pz3SceneItemIndex::add(const OvTArray<OvPz3SceneItem> &items, int position) {
    const OvPz3SceneItem &item = items[position];
    if (!m_byNode.contains(item.node))
        m_byNode.insert(item.node, position);
    if (!m_byName.contains(item.name))
        m_byName.insert(item.name, position);
    if (!item.isFigure && !m_propByName.contains(item.name))
        m_propByName.insert(item.name, position);
    if (item.isFigure && !m_figureByNumber.contains(item.figureNumber))
        m_figureByNumber.insert(item.figureNumber, position);
    m_allByName[item.name].push_back(position);
    if (!item.name.isEmpty() || !item.node)
        m_lastNamed.insert(item.name, position);
    else
        m_unnamedByLabel[item.node->getLabel()].push_back(position);
}

void Pz3SceneItemIndex::rebuild(const OvTArray<OvPz3SceneItem> &items) {
    *this = Pz3SceneItemIndex();
    for (int i = 0; i < items.size(); ++i)
        add(items, i);
}

int Pz3SceneItemIndex::lastWithKey(const OvTArray<OvPz3SceneItem> &items, const QString &key) const {
    const int named = m_lastNamed.value(key, -1);
    const auto unnamed = m_unnamedByLabel.constFind(key);
    if (unnamed == m_unnamedByLabel.constEnd())
        return named;
    // Nodes are labelled before they become items; the check keeps a later relabelling honest.
    for (auto it = unnamed->rbegin(); it != unnamed->rend() && *it > named; ++it)
        if (items[*it].node->getLabel() == key)
            return *it;
    return named;
}

int Pz3SceneItemIndex::firstWithKey(const OvTArray<OvPz3SceneItem> &items, const QString &key) const {
    // Items without a name and without a node have the empty key too; too rare to index.
    if (key.isEmpty()) {
        for (int i = 0; i < items.size(); ++i)
            if (poser::itemKey(items[i]).isEmpty())
                return i;
        return -1;
    }
    const int named = m_byName.value(key, -1);
    const auto unnamed = m_unnamedByLabel.constFind(key);
    if (unnamed != m_unnamedByLabel.constEnd())
        for (int position : *unnamed) {
            if (named >= 0 && position > named)
                break;
            if (items[position].node->getLabel() == key)
                return position;
        }
    return named;
}
