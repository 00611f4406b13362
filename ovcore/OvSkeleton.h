#pragma once
// Figures: a skeleton node whose bones (descendants) carry the body parts.

#include "OvNode.h"

class OvBone : public OvNode {
    Q_OBJECT
public:
    OvBone() = default;
};

class OvSkeleton : public OvNode {
    Q_OBJECT
public:
    OvSkeleton();

    // The first bone of getAllBones with this object name.
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
    OvSkeletonProperty *m_follow;
    std::vector<Weld> m_welds;
};
