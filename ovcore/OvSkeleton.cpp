#include "OvSkeleton.h"

OvSkeleton::OvSkeleton() : m_follow(addProperty(new OvSkeletonProperty(QStringLiteral("Follow")))) {}

// A figure parented to one of this figure's nodes keeps its own bones.
static void collectBones(const OvNode *node, QList<OvBone *> &out) {
    for (int i = 0; i < node->getNumNodeChildren(); ++i) {
        OvNode *c = node->getNodeChild(i);
        if (qobject_cast<OvSkeleton *>(c))
            continue;
        if (auto *bone = qobject_cast<OvBone *>(c))
            out.append(bone);
        collectBones(c, out);
    }
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
