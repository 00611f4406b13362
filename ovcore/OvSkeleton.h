#pragma once
// Figures: a skeleton node whose bones (descendants) carry the body parts.

#include "OvNode.h"
#include <QMultiHash>

class OvBone : public OvNode {
    Q_OBJECT
public:
    OvBone() = default;
    ~OvBone() override;

protected:
    void nameChanged(const QString &oldName) override;
};

class OvSkeleton : public OvNode {
    Q_OBJECT
public:
    OvSkeleton();

    // The first bone of getAllBones with this object name. Constant time: bones are indexed by
    // name as they join, leave or are renamed; only a name that several bones share is looked up
    // in walk order.
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
    void indexBone(OvBone *bone) { m_bonesNamed.insert(bone->getName(), bone); }
    void unindexBone(OvBone *bone, const QString &name) { m_bonesNamed.remove(name, bone); }

    OvSkeletonProperty *m_follow;
    std::vector<Weld> m_welds;
    QMultiHash<QString, OvBone *> m_bonesNamed; // the bones whose nearest skeleton this is
};
