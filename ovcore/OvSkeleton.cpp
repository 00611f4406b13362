#include "OvSkeleton.h"

#include <algorithm>
#include <vector>

OvBone::~OvBone() = default;

OvSkeleton::OvSkeleton() : m_follow(addProperty(new OvSkeletonProperty(QStringLiteral("Follow")))) {
    m_skeleton = this;
}

OvSkeleton::~OvSkeleton() {
    if (m_outer)
        m_outer->m_nested.remove(this);
}

void OvSkeleton::setOuter(OvSkeleton *outer) {
    if (outer == m_outer)
        return;
    if (m_outer)
        m_outer->m_nested.remove(this);
    m_outer = outer;
    if (outer)
        outer->m_nested.insert(this);
}

int OvSkeleton::countNamed(const QString &name, OvNode *&found) const {
    int count = 0;
    std::vector<const OvSkeleton *> figures{this};
    while (!figures.empty() && count < 2) {
        const OvSkeleton *figure = figures.back();
        figures.pop_back();
        const auto [first, end] = figure->m_nodesNamed.equal_range(name);
        for (auto it = first; it != end && count < 2; ++it, ++count)
            found = *it;
        for (OvSkeleton *inner : figure->m_nested) {
            if (inner->getName() == name && count++ == 0)
                found = inner;
            figures.push_back(inner);
        }
    }
    return std::min(count, 2);
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

// Other nodes of the figure share the index; only bones count here.
OvBone *OvSkeleton::findBone(const QString &name) const {
    OvBone *found = nullptr;
    const auto [first, end] = m_nodesNamed.equal_range(name);
    for (auto it = first; it != end; ++it)
        if (auto *bone = qobject_cast<OvBone *>(*it)) {
            if (found) {
                for (OvBone *b : getAllBones())
                    if (b->getName() == name)
                        return b;
            }
            found = bone;
        }
    return found;
}

QList<OvBone *> OvSkeleton::getAllBones() const {
    QList<OvBone *> bones;
    collectBones(this, bones);
    return bones;
}
