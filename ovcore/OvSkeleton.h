#pragma once
// Figures: a skeleton node whose bones (descendants) carry the body parts.

#include "OvNode.h"
#include <QMultiHash>
#include <QSet>

class OvBone : public OvNode {
    Q_OBJECT
public:
    OvBone() = default;
    ~OvBone() override;
};

class OvSkeleton : public OvNode {
    Q_OBJECT
public:
    OvSkeleton();
    ~OvSkeleton() override;

    // The first bone of getAllBones with this object name. Constant time: the nodes of a figure
    // are indexed by name as they join, leave or are renamed; only a name that several bones
    // share is looked up in walk order.
    OvBone *findBone(const QString &name) const;
    // Every bone below the skeleton, depth first in child order; a figure parented below keeps its own.
    QList<OvBone *> getAllBones() const;

    // The figure this one conforms to (follows), through its follow property.
    OvSkeletonProperty *getFollowControl() const { return m_follow; }
    OvSkeleton *getFollowTarget() const { return m_follow->getValue(); }
    void setFollowTarget(OvSkeleton *target) { m_follow->setValue(target); }

    // Welded bone pairs: the first bone's mesh is welded to the second's.
    struct Weld {
        OvBone *bone;
        OvBone *target;
    };
    void addWeld(OvBone *bone, OvBone *target) { m_welds.push_back({bone, target}); }
    const std::vector<Weld> &getWelds() const { return m_welds; }

private:
    friend class OvNode;
    friend class OvBone;
    void indexNode(OvNode *node) { m_nodesNamed.insert(node->getName(), node); }
    void unindexNode(OvNode *node, const QString &name) { m_nodesNamed.remove(name, node); }
    // Records the figure whose node this skeleton now hangs below (null: none).
    void setOuter(OvSkeleton *outer);
    // How many nodes below this skeleton, nested figures included, carry this name: 0, 1 or 2
    // (two or more); `found` is the one when there is one.
    int countNamed(const QString &name, OvNode *&found) const;

    OvSkeletonProperty *m_follow;
    std::vector<Weld> m_welds;
    QMultiHash<QString, OvNode *> m_nodesNamed; // the nodes whose nearest skeleton this is
    OvSkeleton *m_outer = nullptr;              // nearest skeleton above this one
    QSet<OvSkeleton *> m_nested;                // skeletons whose outer figure this is
};
