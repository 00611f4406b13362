#pragma once
// Lookups of an import's scene items by node, name, figure number and key without scanning the
// list: a scene of 40,000 props asks for each of them several times, and a scan per question
// would make the import quadratic.

#include "SceneItems.h"

#include <QHash>
#include <QString>
#include <vector>

class Pz3SceneItemIndex {
public:
    // Records items[position], just appended.
    void add(const OvTArray<OvPz3SceneItem> &items, int position);
    // After items were removed (positions moved).
    void rebuild(const OvTArray<OvPz3SceneItem> &items);

    // Positions of the first item of that node, name, prop name or figure number; -1 for none.
    int firstOfNode(const OvNode *node) const { return m_byNode.value(node, -1); }
    int firstNamed(const QString &name) const { return m_byName.value(name, -1); }
    int firstPropNamed(const QString &name) const { return m_propByName.value(name, -1); }
    int firstFigure(int number) const { return m_figureByNumber.value(number, -1); }
    // The last item whose key (its Poser name, else its node's label as it is now) is `key`.
    int lastWithKey(const OvTArray<OvPz3SceneItem> &items, const QString &key) const;
    // The first such item.
    int firstWithKey(const OvTArray<OvPz3SceneItem> &items, const QString &key) const;
    // Positions of every item with that Poser name, in order.
    std::vector<int> allNamed(const QString &name) const { return m_allByName.value(name); }

private:
    QHash<const OvNode *, int> m_byNode;
    QHash<QString, int> m_byName, m_propByName, m_lastNamed;
    QHash<int, int> m_figureByNumber;
    QHash<QString, std::vector<int>> m_unnamedByLabel; // items known by their node's label
    QHash<QString, std::vector<int>> m_allByName;
};
