#include "OvScene.h"
#include "OvAudio.h"
#include "OvLight.h"
#include "OvNode.h"
#include "OvUndoStack.h"

#include <algorithm>

OvScene::OvScene() : m_undo(new OvUndoStack(this)) {}

OvScene::~OvScene() {
    // The steps go first: the nodes they kept are deleted while the scene can still tell them apart.
    m_undo.reset();
    for (OvNode *n : m_nodes)
        delete n;
}

const QStringList &OvScene::undoSteps() const {
    return m_undo->captions();
}

bool OvScene::undo() {
    return m_undo->undo();
}

void OvScene::setPrimarySelection(OvNode *node) {
    OvUndoStack::noteScene(this);
    m_selection = node;
}

void OvScene::setTime(int t) {
    OvUndoStack::noteScene(this);
    m_time = t;
}

void OvScene::setTimeStep(int step) {
    OvUndoStack::noteScene(this);
    m_timeStep = step > 0 ? step : 1;
}

void OvScene::setAnimRange(const OvTimeRange &r) {
    OvUndoStack::noteScene(this);
    m_animRange = r;
}

void OvScene::setPlayRange(const OvTimeRange &r) {
    OvUndoStack::noteScene(this);
    m_playRange = r;
}

int OvScene::topLevelIndex(const OvNode *node) const {
    if (!m_position.contains(node))
        return -1;
    compact();
    return int(m_position.value(node));
}

void OvScene::insertNode(OvNode *node, int index) {
    if (!node || node->getNodeParent() || m_position.contains(node))
        return;
    compact();
    index = std::clamp(index, 0, int(m_nodes.size()));
    m_nodes.insert(m_nodes.begin() + index, node);
    for (size_t i = size_t(index); i < m_nodes.size(); ++i)
        m_position[m_nodes[i]] = i;
}

void OvScene::compact() const {
    if (m_holes == 0)
        return;
    m_nodes.erase(std::remove(m_nodes.begin(), m_nodes.end(), nullptr), m_nodes.end());
    m_holes = 0;
    auto &position = const_cast<QHash<const OvNode *, size_t> &>(m_position);
    for (size_t i = 0; i < m_nodes.size(); ++i)
        position[m_nodes[i]] = i;
}

void OvScene::addNode(OvNode *node) {
    if (!node || m_position.contains(node))
        return;
    OvUndoStack::notePlacement(node);
    m_position.insert(node, m_nodes.size());
    m_nodes.push_back(node);
}

bool OvScene::removeNode(OvNode *node) {
    if (m_selection && node && (m_selection == node || node->isAncestorOf(m_selection)))
        setPrimarySelection(nullptr);
    auto it = m_position.find(node);
    if (it != m_position.end()) {
        OvUndoStack::notePlacement(node);
        it = m_position.find(node);
        m_nodes[*it] = nullptr;
        ++m_holes;
        m_position.erase(it);
        return true;
    }
    if (node && node->getNodeParent() && contains(node))
        return node->getNodeParent()->removeNodeChild(node);
    return false;
}

template <class F> static OvNode *findDepthFirst(OvNode *root, F &&match) {
    OvNode *found = nullptr;
    forEachNode(root, [&](OvNode *n) {
        if (!found && match(n))
            found = n;
        return !found;
    });
    return found;
}

OvNode *OvScene::findNodeByLabel(const QString &label) const {
    OvNode *only = nullptr;
    int found = 0;
    for (OvElement *e : OvElement::elementsLabelled(label))
        if (auto *node = qobject_cast<OvNode *>(e); node && contains(node)) {
            only = node;
            ++found;
        }
    if (found < 2)
        return only;
    // Several nodes share the label: the first depth first, as a walk of the scene finds it.
    compact();
    for (OvNode *n : m_nodes)
        if (OvNode *first = findDepthFirst(n, [&](OvNode *x) { return x->getLabel() == label; }))
            return first;
    return nullptr;
}

OvBasicCamera *OvScene::findCamera(const QString &name) const {
    compact();
    for (OvNode *n : m_nodes)
        if (OvNode *found = findDepthFirst(
                n, [&](OvNode *x) { return x->getName() == name && x->inherits("OvBasicCamera"); }))
            return static_cast<OvBasicCamera *>(found);
    return nullptr;
}

bool OvScene::contains(const OvNode *node) const {
    if (!node)
        return false;
    const OvNode *top = node;
    while (top->getNodeParent())
        top = top->getNodeParent();
    return m_position.contains(top);
}

// Removes and deletes the nodes of a class below `top` (not `top` itself), with what is below them.
static int removeFromChildren(OvNode *top, const char *className, OvNode *&selection) {
    int removed = 0;
    std::vector<OvNode *> pending{top};
    while (!pending.empty()) {
        OvNode *parent = pending.back();
        pending.pop_back();
        for (int i = parent->getNumNodeChildren() - 1; i >= 0; --i) {
            OvNode *child = parent->getNodeChild(i);
            if (!child->inherits(className)) {
                pending.push_back(child);
                continue;
            }
            if (selection && (selection == child || child->isAncestorOf(selection)))
                selection = nullptr;
            parent->removeNodeChild(child);
            if (!OvUndoStack::keepRemoved(child))
                delete child;
            ++removed;
        }
    }
    return removed;
}

int OvScene::removeNodesOfClass(const char *className) {
    compact();
    OvUndoStack::noteScene(this);
    int removed = 0;
    for (size_t i = m_nodes.size(); i-- > 0;) {
        OvNode *node = m_nodes[i];
        if (node->inherits(className)) {
            if (m_selection && (m_selection == node || node->isAncestorOf(m_selection)))
                m_selection = nullptr;
            // Removed from the end, so the holes left so far all lie behind this node.
            OvUndoStack::notePlacement(node);
            m_nodes[i] = nullptr;
            ++m_holes;
            m_position.remove(node);
            if (!OvUndoStack::keepRemoved(node))
                delete node;
            ++removed;
        } else {
            removed += removeFromChildren(node, className, m_selection);
        }
    }
    compact();
    return removed;
}

void OvScene::setAudio(OvAudioClip *clip, int startFrame) {
    if (clip != m_audio.get())
        m_audio.reset(clip);
    m_audioStartFrame = clip ? startFrame : 0;
}

int OvScene::removeAllLights() {
    return removeNodesOfClass("OvLight");
}

int OvScene::removeAllCameras() {
    return removeNodesOfClass("OvBasicCamera");
}
