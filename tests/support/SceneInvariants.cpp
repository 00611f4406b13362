#include "SceneInvariants.h"

#include <OvDeformers.h>
#include <OvIKChains.h>
#include <OvModifiers.h>
#include <OvMorph.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <QHash>
#include <QSet>
#include <algorithm>
#include <climits>
#include <vector>

QStringList checkMeshInvariants(const OvPolyMesh &mesh, int materialCount) {
    QStringList problems;
    const QString where = QStringLiteral("mesh \"%1\"").arg(mesh.getName());
    const int nv = mesh.getNumVertices(), nuv = mesh.getUVs()->getNumValues(), nf = mesh.getNumFaces();
    if (mesh.isEditing())
        problems << where + QStringLiteral(": still being edited");
    if (nf > 0 && nuv == 0)
        problems << where + QStringLiteral(": faces but no UV");
    int corners = 0;
    for (int f = 0; f < nf; ++f) {
        int n = mesh.getFaceSize(f);
        if (n <= 0) {
            problems << where + QStringLiteral(": face %1 has %2 corners").arg(f).arg(n);
            continue;
        }
        corners += n;
        for (int c = 0; c < n; ++c) {
            const int v = mesh.getFaceVertex(f, c), t = mesh.getFaceUV(f, c);
            if (v < 0 || v >= nv)
                problems << where +
                                QStringLiteral(": face %1 vertex %2 outside 0..%3").arg(f).arg(v).arg(nv - 1);
            if (t < 0 || t >= nuv)
                problems << where +
                                QStringLiteral(": face %1 uv %2 outside 0..%3").arg(f).arg(t).arg(nuv - 1);
        }
        int m = mesh.getFaceMaterial(f);
        if (m < 0 || (materialCount >= 0 && m >= materialCount))
            problems << where +
                            QStringLiteral(": face %1 material %2 of %3").arg(f).arg(m).arg(materialCount);
        if (problems.size() > 20)
            return problems;
    }
    if (corners != mesh.getNumCorners())
        problems
            << where +
                   QStringLiteral(": %1 corners counted, %2 stored").arg(corners).arg(mesh.getNumCorners());
    QSet<QString> names;
    for (int g = 0; g < mesh.getNumFaceGroups(); ++g) {
        const QString &name = mesh.getFaceGroupName(g);
        if (names.contains(name))
            problems << where + QStringLiteral(": group \"%1\" twice").arg(name);
        names.insert(name);
        if (mesh.findFaceGroup(name) != g)
            problems << where + QStringLiteral(": group \"%1\" not found by name").arg(name);
        int last = -1;
        for (int i = 0; i < mesh.getNumFaceGroupFaces(g); ++i) {
            const int f = mesh.getFaceGroupFace(g, i);
            if (f <= last || f >= nf) {
                problems << where + QStringLiteral(": group \"%1\" lists face %2").arg(name).arg(f);
                break;
            }
            last = f;
        }
    }
    for (int i = 0; i < nv; ++i) {
        const float *p = mesh.getVertex(i);
        if (p[0] != p[0] || p[1] != p[1] || p[2] != p[2]) {
            problems << where + QStringLiteral(": vertex %1 has a NaN coordinate").arg(i);
            break;
        }
    }
    return problems;
}

QStringList checkShapeInvariants(const OvShape &shape) {
    QStringList problems;
    for (int i = 0; i < shape.getNumMaterials(); ++i)
        if (!shape.getMaterial(i))
            problems << QStringLiteral("shape \"%1\": material %2 is null").arg(shape.getName()).arg(i);
    if (auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry()))
        problems << checkMeshInvariants(*mesh, shape.getNumMaterials());
    return problems;
}

namespace {

// One walk over a tree. Pointers to other scene objects are only looked up in the sets gathered
// beforehand, never followed: a dangling one must become a problem line, not a crash.
class Checker {
public:
    // With a scene, references between nodes (follow targets, welds, deformer wiring, ERC sources)
    // must point into it; without one they are not checked.
    explicit Checker(const OvScene *scene) : m_checkLinks(scene != nullptr) {
        if (scene)
            for (int i = 0; i < scene->getNumNodes(); ++i)
                if (scene->getNode(i))
                    gather(*scene->getNode(i));
    }

    // Walked with a list, not by recursion: a hostile file may nest nodes 100,000 deep.
    void check(const OvNode &top) {
        std::vector<const OvNode *> pending{&top};
        while (!pending.empty()) {
            const OvNode *node = pending.back();
            pending.pop_back();
            checkOne(*node, pending);
        }
    }

    QStringList problems;

private:
    void checkOne(const OvNode &node, std::vector<const OvNode *> &pending) {
        const QString where = QStringLiteral("node \"%1\"").arg(node.getName());
        for (int i = 0; i < node.getNumNodeChildren(); ++i) {
            const OvNode *child = node.getNodeChild(i);
            if (!child) {
                problems << where + QStringLiteral(": null child %1").arg(i);
                continue;
            }
            if (child->getNodeParent() != &node)
                problems << where +
                                QStringLiteral(": child \"%1\" names another parent").arg(child->getName());
            pending.push_back(child);
        }
        // A bone may end up outside its skeleton: a parent line may name a prop of the same name.
        // Wherever it is, its nearest figure knows it by name.
        const OvSkeleton *figure = qobject_cast<const OvSkeleton *>(&node);
        if (!figure && node.getNodeParent())
            figure = node.getNodeParent()->getSkeleton();
        const OvBone *named = figure && node.inherits("OvBone") ? figure->findBone(node.getName()) : nullptr;
        if (node.getSkeleton() != figure || (node.inherits("OvBone") && figure && !named) ||
            (named && named->getName() != node.getName()))
            problems << where + QStringLiteral(": its figure does not know it");
        if (figure == &node)
            checkNameIndex(where, node);
        checkProperties(where, node);
        if (const OvObject *object = node.getObject())
            checkObject(where, *object);
        if (!m_checkLinks)
            return;
        if (auto *skeleton = qobject_cast<const OvSkeleton *>(&node))
            for (const OvSkeleton::Weld &weld : skeleton->getWelds())
                if (!linkAlive(weld.bone) || !linkAlive(weld.target))
                    problems << where + QStringLiteral(": weld to a node not in the scene");
        checkIKChains(where, node);
        if (auto *dform = qobject_cast<const OvDForm *>(&node)) {
            if (!linkAlive(dform->getBase()))
                problems << where + QStringLiteral(": deformer base not in the scene");
            for (const OvDFormZone *zone : dform->getZones())
                if (!zone || !linkAlive(zone))
                    problems << where + QStringLiteral(": deformer zone not in the scene");
        }
    }

    // Every link of a chain is a node of the scene (a deleted one reads null); a goal is one or none.
    void checkIKChains(const QString &where, const OvNode &node) {
        for (int i = 0; i < node.getNumDataItems(); ++i) {
            auto *chains = dynamic_cast<const OvPoserIKChains *>(node.getDataItem(i));
            for (int c = 0; chains && c < chains->getNumChains(); ++c) {
                const OvPoserIKChain &chain = *chains->getChain(c);
                for (int l = 0; l < chain.getNumLinks(); ++l)
                    if (!chain.getLink(l).node || !linkAlive(chain.getLink(l).node))
                        problems << where + QStringLiteral(": IK chain \"%1\" links a node not in the scene")
                                                .arg(chain.getName());
                if (!linkAlive(chain.getGoal()))
                    problems << where + QStringLiteral(": IK chain \"%1\" aims at a node not in the scene")
                                            .arg(chain.getName());
            }
        }
    }

    void gatherProperty(const OvProperty *p) {
        if (p)
            m_properties.insert(p);
    }

    void gather(const OvNode &top) {
        std::vector<const OvNode *> pending{&top};
        while (!pending.empty()) {
            const OvNode *node = pending.back();
            pending.pop_back();
            gatherOne(*node);
            for (int i = 0; i < node->getNumNodeChildren(); ++i)
                if (node->getNodeChild(i))
                    pending.push_back(node->getNodeChild(i));
        }
    }

    void gatherOne(const OvNode &node) {
        m_nodes.insert(&node);
        for (int i = 0; i < node.getNumProperties(); ++i)
            gatherProperty(node.getProperty(i));
        if (const OvObject *object = node.getObject()) {
            for (int i = 0; i < object->getNumProperties(); ++i)
                gatherProperty(object->getProperty(i));
            for (int i = 0; i < object->getNumModifiers(); ++i) {
                OvModifier *m = object->getModifier(i);
                if (auto *joint = dynamic_cast<OvPoserJoint *>(m))
                    gatherProperty(joint->getBendControl());
                else if (auto *dform = dynamic_cast<OvDFormModifier *>(m))
                    gatherProperty(dform->getValueChannel());
                else if (auto *morph = dynamic_cast<OvMorph *>(m))
                    gatherProperty(morph->getValueChannel());
            }
        }
    }

    // Null means "no link" and is fine.
    bool linkAlive(const OvNode *target) const { return !target || m_nodes.contains(target); }

    void checkProperty(const QString &where, const OvProperty &p) {
        if (!m_checkLinks)
            return;
        if (auto *s = dynamic_cast<const OvSkeletonProperty *>(&p); s && !linkAlive(s->getValue()))
            problems << where + QStringLiteral(": property %1 refers to a skeleton not in the scene")
                                    .arg(p.getName());
        if (auto *n = dynamic_cast<const OvNumericNodeProperty *>(&p); n && !linkAlive(n->getNode()))
            problems << where +
                            QStringLiteral(": property %1 aims at a node not in the scene").arg(p.getName());
        // A clamped dial holds its value within limits that are the right way round.
        if (auto *f = dynamic_cast<const OvFloatProperty *>(&p)) {
            if (f->getMin() > f->getMax())
                problems << where + QStringLiteral(": property %1 has its minimum above its maximum")
                                        .arg(p.getName());
            else if (f->isClamped() && (f->getValue() < f->getMin() || f->getValue() > f->getMax()))
                problems << where + QStringLiteral(": property %1 lies outside its limits").arg(p.getName());
        }
        // Keys stand in time order, one per time.
        for (int i = 1; i < p.getNumKeys(); ++i)
            if (p.getKeyTime(i - 1) >= p.getKeyTime(i)) {
                problems << where + QStringLiteral(": keys of property %1 out of order").arg(p.getName());
                break;
            }
        // What the property's value is computed from must be in the scene, and nothing may end up
        // computed from itself.
        auto *numeric = dynamic_cast<const OvNumericProperty *>(&p);
        if (!numeric)
            return;
        std::vector<const OvProperty *> &sources = m_drivenBy[&p];
        if (const OvNumericProperty *master = numeric->getLinkProperty())
            sources.push_back(master);
        for (int i = 0; i < p.getNumControllers(); ++i)
            if (auto *link = dynamic_cast<const OvERCLink *>(p.getController(i)); link && link->getProperty())
                sources.push_back(link->getProperty());
        for (const OvProperty *source : sources)
            if (!m_properties.contains(source)) {
                problems << where + QStringLiteral(": property %1 follows a property of no node in the scene")
                                        .arg(p.getName());
                sources.clear(); // not followed further: it may be gone
                break;
            }
    }

public:
    // Depth-first over the drive graph with three colours; a grey property met again closes a cycle.
    void checkDriveCycles() {
        enum : char { White = 0, Grey, Black };
        QHash<const OvProperty *, char> colour;
        for (auto start = m_drivenBy.constBegin(); start != m_drivenBy.constEnd(); ++start) {
            if (colour.value(start.key()) != White)
                continue;
            std::vector<std::pair<const OvProperty *, size_t>> stack{{start.key(), 0}};
            colour[start.key()] = Grey;
            while (!stack.empty()) {
                auto &[p, next] = stack.back();
                const std::vector<const OvProperty *> sources = m_drivenBy.value(p);
                if (next == sources.size()) {
                    colour[p] = Black;
                    stack.pop_back();
                    continue;
                }
                const OvProperty *source = sources[next++];
                const char c = colour.value(source);
                if (c == Grey) {
                    problems
                        << QStringLiteral("property %1 is driven through a cycle").arg(source->getName());
                    return;
                }
                if (c == White) {
                    colour[source] = Grey;
                    stack.emplace_back(source, 0);
                }
            }
        }
    }

private:
    // Below a figure, lookups by name answer from indexes; a name carried by one node below it
    // must find that node.
    void checkNameIndex(const QString &where, const OvNode &figure) {
        QHash<QString, const OvNode *> first; // null once a second node has the name
        forEachNode(const_cast<OvNode *>(&figure), [&](OvNode *n) {
            if (n != &figure)
                first.insert(n->getName(), first.contains(n->getName()) ? nullptr : n);
            return true;
        });
        for (auto it = first.cbegin(); it != first.cend(); ++it)
            if (it.value() && figure.findNodeChild(it.key()) != it.value())
                problems << where + QStringLiteral(": \"%1\" is not found below it").arg(it.key());
    }

    void checkProperties(const QString &where, const OvElement &e) {
        for (int i = 0; i < e.getNumProperties(); ++i)
            checkProperty(where, *e.getProperty(i));
    }

    void checkObject(const QString &where, const OvObject &object) {
        checkProperties(where, object);
        const OvEnumProperty *geometry = object.getGeometryControl();
        const int shapes = object.getNumShapes();
        if (geometry->getNumItems() != shapes)
            problems << where + QStringLiteral(": geometry switch has %1 items for %2 shapes")
                                    .arg(geometry->getNumItems())
                                    .arg(shapes);
        if (shapes > 0 && (geometry->getValue() < 0 || geometry->getValue() >= shapes))
            problems << where + QStringLiteral(": geometry switch shows shape %1 of %2")
                                    .arg(geometry->getValue())
                                    .arg(shapes);
        for (int i = 0; i < object.getNumModifiers(); ++i) {
            auto *dform = dynamic_cast<OvDFormModifier *>(object.getModifier(i));
            if (dform) {
                if (m_checkLinks && !linkAlive(dform->getDForm()))
                    problems << where + QStringLiteral(
                                            ": deformer modifier %1 refers to a deformer not in the scene")
                                            .arg(dform->getName());
                checkProperty(where, *dform->getValueChannel());
            }
            if (auto *morph = dynamic_cast<OvMorph *>(object.getModifier(i)))
                checkMorph(where, object, *morph);
            if (auto *joint = dynamic_cast<const OvPoserJoint *>(object.getModifier(i)))
                checkJointParams(where, *joint);
        }
        for (int i = 0; i < shapes; ++i)
            checkShape(*object.getShape(i));
    }

    // Every delta names a vertex of the mesh the object shows first.
    void checkMorph(const QString &where, const OvObject &object, OvMorph &morph) {
        checkProperty(where, *morph.getValueChannel());
        const OvMorphDeltas &deltas = *morph.getDeltas();
        const auto *mesh = object.getNumShapes() > 0
                               ? dynamic_cast<const OvPolyMesh *>(object.getShape(0)->getGeometry())
                               : nullptr;
        const int vertices = mesh ? mesh->getNumVertices() : INT_MAX;
        for (int d = 0; d < deltas.getNumDeltas(); ++d) {
            const int index = deltas.getIndex(d);
            if (index < 0 || index >= vertices) {
                problems << where + QStringLiteral(": morph %1: delta %2 names vertex %3 of %4")
                                        .arg(morph.getName())
                                        .arg(d)
                                        .arg(index)
                                        .arg(mesh ? vertices : 0);
                return;
            }
        }
    }

    // Every parameter is there, and the bones it names are in the scene.
    void checkJointParams(const QString &where, const OvPoserJoint &joint) {
        for (int i = 0; i < joint.getNumParams(); ++i) {
            const OvPoserJointParam *p = joint.getParam(i);
            if (!p) {
                problems << where + QStringLiteral(": joint parameter %1 is null").arg(i);
                continue;
            }
            auto *curve = dynamic_cast<const OvPoserCurve *>(p);
            if (m_checkLinks && (!linkAlive(p->getDriver()) || (curve && !linkAlive(curve->getBone()))))
                problems << where + QStringLiteral(": joint parameter %1 refers to a bone not in the scene")
                                        .arg(p->getName());
        }
    }

    // A mesh that several shapes share is checked once; each shape still needs a material for
    // every index the mesh's faces use.
    void checkShape(const OvShape &shape) {
        for (int i = 0; i < shape.getNumMaterials(); ++i)
            if (!shape.getMaterial(i))
                problems << QStringLiteral("shape \"%1\": material %2 is null").arg(shape.getName()).arg(i);
        auto *mesh = dynamic_cast<const OvPolyMesh *>(shape.getGeometry());
        if (!mesh)
            return;
        auto known = m_highestMaterial.constFind(mesh);
        int highest = -1;
        if (known != m_highestMaterial.constEnd()) {
            highest = *known;
        } else {
            problems << checkMeshInvariants(*mesh);
            for (int f = 0; f < mesh->getNumFaces(); ++f)
                highest = std::max(highest, mesh->getFaceMaterial(f));
            m_highestMaterial.insert(mesh, highest);
        }
        if (highest >= shape.getNumMaterials())
            problems << QStringLiteral("shape \"%1\": its mesh uses material %2 of %3")
                            .arg(shape.getName())
                            .arg(highest)
                            .arg(shape.getNumMaterials());
    }

    bool m_checkLinks;
    QSet<const OvNode *> m_nodes;
    QSet<const OvProperty *> m_properties;
    QHash<const OvPolyMesh *, int> m_highestMaterial;
    // Property -> the properties its value is computed from (its link first, then its ERC links).
    QHash<const OvProperty *, std::vector<const OvProperty *>> m_drivenBy;
};

} // namespace

QStringList checkNodeInvariants(const OvNode &node) {
    Checker checker(nullptr);
    checker.check(node);
    return checker.problems;
}

QStringList checkSceneInvariants(const OvScene &scene) {
    Checker checker(&scene);
    QSet<const OvNode *> seen;
    for (int i = 0; i < scene.getNumNodes(); ++i) {
        const OvNode *node = scene.getNode(i);
        if (!node) {
            checker.problems << QStringLiteral("scene: null node %1").arg(i);
            continue;
        }
        if (node->getNodeParent())
            checker.problems
                << QStringLiteral("scene: top-level node \"%1\" has a parent").arg(node->getName());
        if (seen.contains(node)) {
            checker.problems << QStringLiteral("scene: node \"%1\" listed twice").arg(node->getName());
            continue;
        }
        seen.insert(node);
        checker.check(*node);
    }
    checker.checkDriveCycles();
    return checker.problems;
}
