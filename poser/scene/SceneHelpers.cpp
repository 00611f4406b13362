// Small helpers the scene handlers share.
#include "SceneHelpers.h"
#include "SceneItems.h"

#include <OvApp.h>
#include <OvScene.h>

namespace poser {

bool isDeformer(const OvNode *node) {
    return node &&
           (node->inherits("OvDForm") || node->inherits("OvDFormBase") || node->inherits("OvDFormZone"));
}

QString itemKey(const OvPz3SceneItem &item) {
    if (!item.name.isEmpty() || !item.node)
        return item.name;
    return item.node->getLabel();
}

bool moveUnder(OvNode *parent, OvNode *child) {
    // A child without children cannot be above the parent: no walk up a long chain for it.
    if (!parent || !child || parent == child ||
        (child->getNumNodeChildren() > 0 && child->isAncestorOf(parent)))
        return false;
    if (child->getNodeParent() == parent)
        return true;
    if (OvNode *old = child->getNodeParent()) {
        old->removeNodeChild(child, false);
    } else {
        OvScene *scene = OvApp::getScene();
        if (scene->contains(child)) {
            OvNode *selection = scene->getPrimarySelection();
            scene->removeNode(child);
            scene->setPrimarySelection(selection);
        }
    }
    return parent->addNodeChild(child, false);
}

} // namespace poser
