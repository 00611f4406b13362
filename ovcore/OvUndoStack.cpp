#include "OvUndoStack.h"
#include "OvApp.h"
#include "OvLight.h"
#include "OvMaterial.h"
#include "OvMorph.h"
#include "OvNode.h"
#include "OvScene.h"
#include "OvShape.h"

#include <QHash>
#include <QSet>
#include <algorithm>

OvUndoStep *OvUndoStack::s_open = nullptr;
int OvUndoStack::s_liveStacks = 0;

namespace {

// Stacks that hold steps (or have one open): the ones a destroyed thing may be named in. Never
// destroyed: the application's scene, a static, may go after it.
std::vector<OvUndoStack *> &liveStacks() {
    static auto *stacks = new std::vector<OvUndoStack *>;
    return *stacks;
}

class UndoRecord {
public:
    virtual ~UndoRecord() = default;
    virtual void undo() = 0;
    // `thing` is going away: false when the record can no longer be undone.
    virtual bool survives(const void *thing) = 0;
    bool dead = false;
};

class PropertyRecord : public UndoRecord {
public:
    explicit PropertyRecord(OvProperty *p) : m_property(p), m_state(p->saveState()) {}
    void undo() override { m_property->restoreState(m_state); }
    bool survives(const void *thing) override { return thing != m_property; }

private:
    OvProperty *m_property;
    OvPropertyState m_state;
};

// Names, and for nodes their placement fields and flags (and a camera's focal distance).
class ElementRecord : public UndoRecord {
public:
    explicit ElementRecord(OvElement *e)
        : m_element(e), m_node(qobject_cast<OvNode *>(e)), m_name(e->getName()), m_label(e->getLabel()) {
        if (m_node) {
            m_origin = m_node->getOrigin();
            m_endPoint = m_node->getEndPoint();
            m_orientation = m_node->getOrientation();
            m_order = m_node->getRotationOrder();
            m_hidden = m_node->isHidden();
        }
        if (auto *camera = qobject_cast<OvBasicCamera *>(e))
            m_focalDistance = camera->getFocalDistance();
    }
    void undo() override {
        m_element->setName(m_name);
        m_element->setLabel(m_label);
        if (m_node) {
            m_node->setOrigin(m_origin);
            m_node->setEndPoint(m_endPoint);
            m_node->setOrientation(m_orientation);
            m_node->setRotationOrder(m_order);
            m_node->setHidden(m_hidden);
        }
        if (auto *camera = qobject_cast<OvBasicCamera *>(m_element))
            camera->setFocalDistance(m_focalDistance);
    }
    bool survives(const void *thing) override { return thing != m_element; }

private:
    OvElement *m_element;
    OvNode *m_node;
    QString m_name, m_label;
    OvVec3 m_origin, m_endPoint;
    OvQuat m_orientation;
    OvRotationOrder m_order = OvRotationOrder::XYZ;
    bool m_hidden = false;
    float m_focalDistance = 0.0f;
};

// Where a node hung: under a parent at an index, at the scene's top level at an index, or nowhere
// (a node made in this step, which undo deletes).
class PlacementRecord : public UndoRecord {
public:
    PlacementRecord(OvScene *scene, OvNode *n) : m_scene(scene), m_node(n), m_parent(n->getNodeParent()) {
        if (m_parent) {
            while (m_parent->getNodeChild(m_index) != n)
                ++m_index;
        } else {
            m_index = scene->topLevelIndex(n);
        }
    }
    void undo() override {
        if (OvNode *now = m_node->getNodeParent())
            now->removeNodeChild(m_node, false);
        else if (m_scene->topLevelIndex(m_node) >= 0)
            m_scene->removeNode(m_node);
        if (m_parent)
            m_parent->insertNodeChild(m_node, m_index);
        else if (m_index >= 0)
            m_scene->insertNode(m_node, m_index);
        else
            delete m_node;
    }
    bool survives(const void *thing) override { return thing != m_node && thing != m_parent; }
    OvNode *parent() const { return m_parent; }

private:
    OvScene *m_scene;
    OvNode *m_node;
    OvNode *m_parent;
    int m_index = 0;
};

class SceneRecord : public UndoRecord {
public:
    explicit SceneRecord(OvScene *s)
        : m_scene(s), m_selection(s->getPrimarySelection()), m_time(s->getTime()), m_step(s->getTimeStep()),
          m_anim(s->getAnimRange()), m_play(s->getPlayRange()) {}
    void undo() override {
        m_scene->setPrimarySelection(m_selection);
        m_scene->setTime(m_time);
        m_scene->setTimeStep(m_step);
        m_scene->setAnimRange(m_anim);
        m_scene->setPlayRange(m_play);
    }
    // A selection that goes away is forgotten; time and ranges still come back.
    bool survives(const void *thing) override {
        if (thing == m_selection)
            m_selection = nullptr;
        return thing != m_scene;
    }
    OvNode *selection() const { return m_selection; }

private:
    OvScene *m_scene;
    OvNode *m_selection;
    int m_time, m_step;
    OvTimeRange m_anim, m_play;
};

// A material's name and label, and for the standard material every setting and map.
class MaterialRecord : public UndoRecord {
public:
    explicit MaterialRecord(OvMaterial *m) : m_material(m), m_name(m->getName()), m_label(m->getLabel()) {
        if (auto *standard = dynamic_cast<OvDefaultMaterial *>(m))
            m_settings.reset(new OvDefaultMaterial(*standard));
    }
    void undo() override {
        if (m_settings)
            *static_cast<OvDefaultMaterial *>(m_material) = *m_settings;
        m_material->setName(m_name);
        m_material->setLabel(m_label);
    }
    bool survives(const void *thing) override { return thing != m_material; }

private:
    OvMaterial *m_material;
    QString m_name, m_label;
    std::unique_ptr<OvDefaultMaterial> m_settings;
};

// Which materials a shape used; the record shares them, so a material the step swapped out stays
// alive to be put back.
class ShapeRecord : public UndoRecord {
public:
    explicit ShapeRecord(OvShape *s) : m_shape(s), m_materials(s->materialList()) {}
    void undo() override { m_shape->restoreMaterialList(m_materials); }
    bool survives(const void *thing) override { return thing != m_shape; }

private:
    OvShape *m_shape;
    OvShape::MaterialList m_materials;
};

class DeltasRecord : public UndoRecord {
public:
    explicit DeltasRecord(OvMorphDeltas *d) : m_deltas(d), m_saved(*d) {}
    void undo() override { *m_deltas = m_saved; }
    bool survives(const void *thing) override { return thing != m_deltas; }

private:
    OvMorphDeltas *m_deltas;
    OvMorphDeltas m_saved;
};

// A morph whose delta set is replaced: undo gives it a set with the old contents.
class MorphRecord : public UndoRecord {
public:
    explicit MorphRecord(OvMorph *m) : m_morph(m), m_saved(new OvMorphDeltas(*m->getDeltas())) {}
    void undo() override { m_morph->setDeltas(m_saved.release()); }
    bool survives(const void *thing) override { return thing != m_morph; }

private:
    OvMorph *m_morph;
    std::unique_ptr<OvMorphDeltas> m_saved;
};

} // namespace

class OvUndoStep {
public:
    explicit OvUndoStep(OvScene *scene) : m_scene(scene) {}
    ~OvUndoStep() {
        // Kept nodes that undo did not put back go with the step. None of them has a parent, so
        // none is deleted with another.
        std::vector<OvNode *> gone;
        for (OvNode *n : m_kept)
            if (!n->getNodeParent() && !m_scene->contains(n))
                gone.push_back(n);
        m_kept.clear();
        for (OvNode *n : gone)
            delete n;
    }

    // True the first time a thing is noted for one kind of record in this step.
    bool first(const void *thing, int kind) {
        const auto key = qMakePair(thing, kind);
        if (m_noted.contains(key))
            return false;
        m_noted.insert(key);
        return true;
    }
    void add(UndoRecord *record, const void *thing, const void *other = nullptr) {
        m_records.emplace_back(record);
        refer(thing);
        refer(other);
    }
    void setSceneRecord(SceneRecord *record) {
        m_sceneRecord.reset(record);
        refer(record->selection());
    }
    void keep(OvNode *n) { m_kept.push_back(n); }

    void forget(const void *thing) {
        if (!m_refs.contains(thing))
            return;
        for (auto &r : m_records)
            if (!r->dead && !r->survives(thing))
                r->dead = true;
        if (m_sceneRecord)
            m_sceneRecord->survives(thing);
        m_kept.erase(std::remove(m_kept.begin(), m_kept.end(), thing), m_kept.end());
    }

    void undo() {
        // Records may die while earlier ones are undone (a node made in the step is deleted), so
        // the list is walked by index and never shortened here.
        for (size_t i = m_records.size(); i-- > 0;)
            if (!m_records[i]->dead)
                m_records[i]->undo();
        if (m_sceneRecord)
            m_sceneRecord->undo();
    }

    OvScene *scene() const { return m_scene; }

private:
    void refer(const void *thing) {
        if (thing)
            m_refs.insert(thing);
    }

    OvScene *m_scene;
    std::vector<std::unique_ptr<UndoRecord>> m_records;
    std::unique_ptr<SceneRecord> m_sceneRecord;
    QSet<QPair<const void *, int>> m_noted;
    QSet<const void *> m_refs;
    std::vector<OvNode *> m_kept;
};

namespace {
enum Kind {
    PropertyKind,
    ElementKind,
    PlacementKind,
    SceneKind,
    MaterialKind,
    ShapeKind,
    DeltasKind,
    MorphKind
};
}

OvUndoStack::OvUndoStack(OvScene *scene) : m_scene(scene) {}

OvUndoStack::~OvUndoStack() {
    setLive(false);
    if (m_open && s_open == m_open.get())
        s_open = nullptr;
    // Newest first, as their kept nodes were removed.
    m_open.reset();
    while (!m_steps.empty())
        m_steps.pop_back();
}

void OvUndoStack::setLive(bool live) {
    if (live == m_live)
        return;
    m_live = live;
    auto &stacks = liveStacks();
    if (live)
        stacks.push_back(this);
    else
        stacks.erase(std::remove(stacks.begin(), stacks.end(), this), stacks.end());
    s_liveStacks = int(stacks.size());
}

void OvUndoStack::open() {
    if (m_depth++ > 0)
        return;
    m_open.reset(new OvUndoStep(m_scene));
    s_open = m_open.get();
    setLive(true);
}

void OvUndoStack::accept(const QString &caption) {
    if (m_depth == 0 || --m_depth > 0)
        return;
    s_open = nullptr;
    m_steps.push_back(std::move(m_open));
    m_captions.append(caption);
}

void OvUndoStack::discard() {
    if (m_depth == 0 || --m_depth > 0)
        return;
    s_open = nullptr;
    std::unique_ptr<OvUndoStep> dropped = std::move(m_open);
    dropped.reset();
    setLive(!m_steps.empty());
}

bool OvUndoStack::undo() {
    if (m_depth > 0 || m_steps.empty())
        return false;
    m_steps.back()->undo();
    // Out of the list before it is destroyed: deleting its kept nodes must not reach it again.
    std::unique_ptr<OvUndoStep> done = std::move(m_steps.back());
    m_steps.pop_back();
    m_captions.removeLast();
    done.reset();
    setLive(!m_steps.empty());
    return true;
}

void OvUndoStack::recordProperty(OvProperty *p) {
    if (s_open->first(p, PropertyKind))
        s_open->add(new PropertyRecord(p), p);
}

void OvUndoStack::recordElement(OvElement *e) {
    if (s_open->first(e, ElementKind))
        s_open->add(new ElementRecord(e), e);
}

void OvUndoStack::recordPlacement(OvNode *n) {
    if (!n || !s_open->first(n, PlacementKind))
        return;
    auto *record = new PlacementRecord(s_open->scene(), n);
    s_open->add(record, n, record->parent());
}

void OvUndoStack::recordScene(OvScene *s) {
    if (s == s_open->scene() && s_open->first(s, SceneKind))
        s_open->setSceneRecord(new SceneRecord(s));
}

void OvUndoStack::recordMaterial(OvMaterial *m) {
    if (s_open->first(m, MaterialKind))
        s_open->add(new MaterialRecord(m), m);
}

void OvUndoStack::recordShape(OvShape *s) {
    if (s_open->first(s, ShapeKind))
        s_open->add(new ShapeRecord(s), s);
}

void OvUndoStack::recordDeltas(OvMorphDeltas *d) {
    if (s_open->first(d, DeltasKind))
        s_open->add(new DeltasRecord(d), d);
}

void OvUndoStack::recordMorph(OvMorph *m) {
    if (s_open->first(m, MorphKind))
        s_open->add(new MorphRecord(m), m);
}

bool OvUndoStack::keepRemoved(OvNode *n) {
    if (!s_open || !n)
        return false;
    recordPlacement(n);
    s_open->keep(n);
    return true;
}

void OvUndoStack::forgetEverywhere(const void *thing) {
    for (OvUndoStack *stack : liveStacks()) {
        for (auto &step : stack->m_steps)
            step->forget(thing);
        if (stack->m_open)
            stack->m_open->forget(thing);
    }
}
