#pragma once
// The host scene: top-level nodes (owned), time and ranges, and its sound.

#include "OvMath.h"
#include <QHash>
#include <QStringList>
#include <memory>
#include <vector>

class OvAudioClip;
class OvNode;
class OvBasicCamera;
class OvUndoStack;

class OvScene {
public:
    static constexpr int TimeUnitsPerSecond = 4800;

    OvScene();
    ~OvScene();
    OvScene(const OvScene &) = delete;
    OvScene &operator=(const OvScene &) = delete;

    // Takes ownership of a top-level node.
    void addNode(OvNode *node);
    // Gives up ownership of a top-level node.
    bool removeNode(OvNode *node);
    int getNumNodes() const {
        compact();
        return int(m_nodes.size());
    }
    OvNode *getNode(int i) const {
        compact();
        return m_nodes[size_t(i)];
    }

    // The first node (depth first) with this label, or null.  Found through the label index, not by
    // walking the scene, unless several nodes share the label.
    OvNode *findNodeByLabel(const QString &label) const;
    // The camera with this object name, or null.
    OvBasicCamera *findCamera(const QString &name) const;
    // True when the node hangs in this scene (at the top or below).
    bool contains(const OvNode *node) const;

    // The position of a top-level node among the top-level nodes, -1 for any other node.
    int topLevelIndex(const OvNode *node) const;
    // Takes ownership of a node without a parent, at `index` among the top-level nodes (undo).
    void insertNode(OvNode *node, int index);

    OvNode *getPrimarySelection() const { return m_selection; }
    void setPrimarySelection(OvNode *node);

    // Deletes every light (cameras: every camera) in the scene, wherever it hangs; returns how many.
    int removeAllLights();
    int removeAllCameras();
    // Deletes the nodes that inherit `className`, with their children.
    int removeNodesOfClass(const char *className);

    // Undo steps made so far, by caption, oldest first.
    const QStringList &undoSteps() const;
    OvUndoStack *getUndoStack() const { return m_undo.get(); }
    // Reverts the last undo step; false when there is none (or a step is still open).
    bool undo();

    int getTime() const { return m_time; }
    void setTime(int t);
    int getTimeStep() const { return m_timeStep; }
    void setTimeStep(int step);
    const OvTimeRange &getAnimRange() const { return m_animRange; }
    void setAnimRange(const OvTimeRange &r);
    const OvTimeRange &getPlayRange() const { return m_playRange; }
    void setPlayRange(const OvTimeRange &r);

    // The scene's sound and the frame it starts at; null while the scene has none.
    OvAudioClip *getAudio() const { return m_audio.get(); }
    int getAudioStartFrame() const { return m_audioStartFrame; }
    // Takes ownership of the clip and deletes the one it replaces; null leaves the scene silent.
    void setAudio(OvAudioClip *clip, int startFrame);

private:
    // Top-level nodes in order; a removed one leaves a hole (null) until the list is next read, so
    // that removing many nodes one by one does not move the rest each time.
    void compact() const;
    mutable std::vector<OvNode *> m_nodes;
    mutable size_t m_holes = 0;
    QHash<const OvNode *, size_t> m_position; // where each top-level node is in m_nodes
    std::unique_ptr<OvUndoStack> m_undo;
    OvNode *m_selection = nullptr;
    int m_time = 0;
    int m_timeStep = TimeUnitsPerSecond / 30;
    OvTimeRange m_animRange{0, 30 * (TimeUnitsPerSecond / 30)};
    OvTimeRange m_playRange{0, 30 * (TimeUnitsPerSecond / 30)};
    std::unique_ptr<OvAudioClip> m_audio;
    int m_audioStartFrame = 0;
};
