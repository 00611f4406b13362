#include "OvSkeleton.h"

OvBone::~OvBone() {
    if (OvSkeleton *skeleton = getSkeleton())
        skeleton->unindexBone(this, getName());
}

void OvBone::nameChanged(const QString &oldName) {
    if (OvSkeleton *skeleton = getSkeleton()) {
        skeleton->unindexBone(this, oldName);
        skeleton->indexBone(this);
    }
}

OvSkeleton::OvSkeleton() : m_follow(addProperty(new OvSkeletonProperty(QStringLiteral("Follow")))) {
    m_skeleton = this;
}

// A figure parented to one of this figure's nodes keeps its own bones.
static void collectBones(const OvNode *root, QList<OvBone *> &out) {
    forEachNode(const_cast<OvNode *>(root), [&](OvNode *n) {
        if (n == root)
            return true;
        if (qobject_cast<OvSkeleton *>(n))
            return false;
        if (auto *bone = qobject_cast<OvBone *>(n))
            out.append(bone);
        return true;
    });
}

OvBone *OvSkeleton::findBone(const QString &name) const {
    const auto [first, end] = m_bonesNamed.equal_range(name);
    if (first == end)
        return nullptr;
    if (std::next(first) == end)
        return *first;
    for (OvBone *b : getAllBones())
        if (b->getName() == name)
            return b;
    return nullptr;
}

QList<OvBone *> OvSkeleton::getAllBones() const {
    QList<OvBone *> bones;
    collectBones(this, bones);
    return bones;
}
