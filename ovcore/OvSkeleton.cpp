#include "OvSkeleton.h"

OvSkeleton::OvSkeleton() : m_follow(addProperty(new OvSkeletonProperty(QStringLiteral("Follow")))) {}

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
