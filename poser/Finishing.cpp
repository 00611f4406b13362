// Steps of the end of an import that need the whole file: the movie section's time and loop range,
// and the placement of what the user dropped on the scene.
#include "OvPZ3Importer.h"

#include <OvApp.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <algorithm>
#include <climits>
#include <cmath>

namespace {

int toTimeUnits(qint64 frame, int step) {
    return int(std::clamp<qint64>(frame * step, INT_MIN, INT_MAX));
}

// Whether the node hangs in the scene, found without touching `node` itself: a drop target that
// the import deleted (a light replaced by a scene's lights) must not be followed.
bool sceneHolds(const OvNode *node) {
    if (!node)
        return false;
    OvScene *scene = OvApp::getScene();
    bool found = false;
    for (int i = 0; i < scene->getNumNodes() && !found; ++i)
        forEachNode(scene->getNode(i), [&](OvNode *n) {
            found = found || n == node;
            return !found;
        });
    return found;
}

} // namespace

// A loop that ends where it starts, or before, is one frame long.
void OvPZ3Importer::applyMovieTimes() {
    OvScene *scene = OvApp::getScene();
    if (m_movieCurrentTime >= 0)
        scene->setTime(m_movieCurrentTime);
    if (m_movieLoopStart < 0 || m_movieLoopEnd < 0)
        return;
    const qint64 start = m_movieLoopStart;
    const qint64 end = m_movieLoopEnd <= m_movieLoopStart ? start + 1 : m_movieLoopEnd;
    OvTimeRange range;
    range.setEnds(toTimeUnits(start, scene->getTimeStep()), toTimeUnits(end, scene->getTimeStep()));
    scene->setAnimRange(range);
    scene->setPlayRange(range);
}

// Only what this import created moves. In automatic mode the first item that decides (a figure
// dropped on a figure follows it, a loose prop goes under the target) decides for the rest.
void OvPZ3Importer::placeDroppedItems() {
    const OvContentDropOptions *drop = OvApp::getContentMgr()->getContentDropOptions();
    if (!drop)
        return;
    OvNode *target = sceneHolds(drop->getDropTarget()) ? drop->getDropTarget() : nullptr;
    int mode = drop->getDropMode();
    for (int i = 0; i < m_sceneItems.size(); ++i) {
        OvNode *node = m_sceneItems[i].node;
        if (!node || !m_sceneItems[i].created)
            continue;
        auto *figure = qobject_cast<OvSkeleton *>(node);
        if (mode == OvContentDropOptions::Automatic) {
            if (figure && !figure->getFollowTarget() && target && target->getSkeleton())
                mode = OvContentDropOptions::FollowTarget;
            if (node->isA("OvNode") && !node->getNodeParent())
                mode = OvContentDropOptions::ParentToTarget;
        }
        switch (mode) {
        case OvContentDropOptions::FollowTarget:
            if (figure && target) {
                auto *followed = qobject_cast<OvSkeleton *>(target);
                if (!followed)
                    followed = target->getSkeleton();
                if (followed && followed != figure)
                    figure->setFollowTarget(followed);
            }
            break;
        case OvContentDropOptions::ParentToTarget:
            if ((figure || node->isA("OvNode")) && target)
                dropOnTarget(node, target);
            break;
        case OvContentDropOptions::PlaceAtPoint:
            if (figure || node->isA("OvNode"))
                dropAtPoint(node, drop->getDropPoint());
            break;
        default:
            break;
        }
    }
}

// A node with a smart parent goes to that parent later instead. On a body part the node first moves
// to the bone's origin.
void OvPZ3Importer::dropOnTarget(OvNode *node, OvNode *target) {
    if (const OvPz3NodeItem *item = findNodeItem(node); item && item->smartParent)
        return;
    if (node == target || node->isAncestorOf(target))
        return;
    if (target->inherits("OvBone"))
        node->setWSPos(target->getOrigin());
    OvScene *scene = OvApp::getScene();
    const bool topLevel = !node->getNodeParent();
    if (topLevel)
        scene->removeNode(node);
    if (!target->addNodeChild(node, false) && topLevel)
        scene->addNode(node);
}

// A point at height 0 means the floor: the node's bounds come to rest on it.
void OvPZ3Importer::dropAtPoint(OvNode *node, const OvVec3 &point) {
    OvVec3 p = point;
    if (!(p == OvVec3()))
        node->setWSPos(p);
    if (std::fabs(p.y()) >= 0.0001f)
        return;
    const OvBox3 box = node->getWSBoundingBox();
    if (box.isEmpty())
        return;
    p[1] = p.y() - box.getMin().y();
    node->setWSPos(p);
}
