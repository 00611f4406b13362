#pragma once
// Undo for the scene. While a step is open, the setters of properties, elements, nodes and the scene
// note what they are about to change: the first note of each thing in a step keeps its old state,
// later changes of the same thing add nothing. accept() closes the step under a caption; undo() puts
// back everything the last step noted, newest first, the scene's selection, time and ranges last.
//
// Nodes that a step removed from the scene (removeAllLights and the like) are kept alive by the step
// until it is undone or dropped, so that undo can put them back. Nodes that the step created are
// deleted by its undo. A step that is discarded (its hold was destroyed without accept) drops its
// records: its changes stay in the scene and cannot be undone, and the nodes it kept are deleted.

#include <QStringList>
#include <memory>
#include <vector>

class OvElement;
class OvMaterial;
class OvMorph;
class OvMorphDeltas;
class OvNode;
class OvShape;
class OvProperty;
class OvScene;
class OvUndoStep;

class OvUndoStack {
public:
    explicit OvUndoStack(OvScene *scene);
    ~OvUndoStack();
    OvUndoStack(const OvUndoStack &) = delete;
    OvUndoStack &operator=(const OvUndoStack &) = delete;

    // Hooks for the setters, called before they change anything: one test of a pointer while no step
    // is open.
    static void noteProperty(OvProperty *p) {
        if (s_open)
            recordProperty(p);
    }
    static void noteElement(OvElement *e) {
        if (s_open)
            recordElement(e);
    }
    // Before a node changes parent, enters the scene or leaves it.
    static void notePlacement(OvNode *n) {
        if (s_open)
            recordPlacement(n);
    }
    static void noteScene(OvScene *s) {
        if (s_open)
            recordScene(s);
    }
    // A material's settings and maps, a shape's list of materials, a delta set's contents, and
    // which delta set a morph holds.
    static void noteMaterial(OvMaterial *m) {
        if (s_open)
            recordMaterial(m);
    }
    static void noteShape(OvShape *s) {
        if (s_open)
            recordShape(s);
    }
    static void noteDeltas(OvMorphDeltas *d) {
        if (s_open)
            recordDeltas(d);
    }
    static void noteMorph(OvMorph *m) {
        if (s_open)
            recordMorph(m);
    }
    // A node that a removal would delete: while a step is open, the step keeps it instead (true).
    static bool keepRemoved(OvNode *n);
    // Something is being destroyed: the records that name it are dropped.
    static void forget(const void *thing) {
        if (s_liveStacks > 0)
            forgetEverywhere(thing);
    }

    // Steps: open() starts one (a nested open joins it), accept() closes the outermost with a
    // caption, discard() drops an unaccepted one.
    void open();
    void accept(const QString &caption);
    void discard();
    bool isOpen() const { return m_depth > 0; }
    // Reverts the last accepted step; false when there is none or a step is open.
    bool undo();
    const QStringList &captions() const { return m_captions; }

private:
    static void recordProperty(OvProperty *p);
    static void recordElement(OvElement *e);
    static void recordPlacement(OvNode *n);
    static void recordScene(OvScene *s);
    static void recordMaterial(OvMaterial *m);
    static void recordShape(OvShape *s);
    static void recordDeltas(OvMorphDeltas *d);
    static void recordMorph(OvMorph *m);
    static void forgetEverywhere(const void *thing);
    void setLive(bool live);

    static OvUndoStep *s_open;
    static int s_liveStacks;

    OvScene *m_scene;
    std::vector<std::unique_ptr<OvUndoStep>> m_steps;
    std::unique_ptr<OvUndoStep> m_open;
    int m_depth = 0;
    bool m_live = false;
    QStringList m_captions;
};
