// Object sections (actor, prop, light, camera and deformer props): placement in the hierarchy,
// origin, end point and orientation, flags, materials, spot lights and deformer wiring.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <cstring>
#include <new>
#include <text/Numbers.h>

namespace {

bool is(const char *token, const char *keyword) {
    return std::strcmp(token, keyword) == 0;
}

bool isDeformer(const OvNode *node) {
    return node &&
           (node->inherits("OvDForm") || node->inherits("OvDFormBase") || node->inherits("OvDFormZone"));
}

// A scene item is known by the Poser name it was created under, else by its node's label.
QString itemKey(const OvPz3SceneItem &item) {
    if (!item.name.isEmpty() || !item.node)
        return item.name;
    return item.node->getLabel();
}

// The node's Poser joint: the last joint modifier of its object.
OvPoserJoint *poserJointOf(const OvNode *node) {
    const OvObject *object = node ? node->getObject() : nullptr;
    if (!object)
        return nullptr;
    for (int i = object->getNumModifiers() - 1; i >= 0; --i)
        if (auto *joint = dynamic_cast<OvPoserJoint *>(object->getModifier(i)))
            return joint;
    return nullptr;
}

// Moves `child` under `parent`. The scene lists top-level nodes only, so a top-level child leaves
// that list (keeping the selection, since the node stays in the scene). Refused, with nothing
// changed, when it would make a node its own ancestor.
bool moveUnder(OvNode *parent, OvNode *child) {
    if (!parent || !child || parent == child || child->isAncestorOf(parent))
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

template <class T> T *make() {
    T *p = new (std::nothrow) T;
    if (!p)
        throw QString("Out of Memory");
    return p;
}

} // namespace

bool OvPZ3Importer::parseObjectLine(char **argv, int argc) {
    bool handled = false;
    const bool geometryResult = parseGeometryKeyword(argv, argc, handled);
    if (handled)
        return geometryResult;

    const char *key = argv[0];
    if (is(key, "name")) {
        if (argc < 2)
            reportInfo(tr("No name specified"));
        return true;
    }
    if (is(key, "parent") || is(key, "nonInkyParent")) {
        if (argc < 2) {
            reportError(tr("No actor part was specified"));
            return false;
        }
        return reparent(tokenText(argv, 1, argc));
    }
    if (is(key, "smartparent")) {
        if (argc >= 2)
            recordSmartParent(tokenText(argv, 1, argc));
        return true;
    }
    if (is(key, "origin") || is(key, "endPoint")) {
        const bool origin = is(key, "origin");
        if (argc < 4) {
            reportError(origin ? tr("Insufficient arguments for origin")
                               : tr("Insufficient arguments for endPoint"));
            return false;
        }
        if (!m_curNode) {
            qDebug(origin ? "NULL m_curNode for origin" : "NULL m_curNode for endPoint");
            return true;
        }
        const OvVec3 v(parsePoserFloat(argv[1]), parsePoserFloat(argv[2]), parsePoserFloat(argv[3]));
        if (origin)
            setNodeOrigin(m_curNode, v);
        else
            setNodeEndPoint(m_curNode, v);
        return true;
    }
    if (is(key, "orientation")) {
        if (argc < 4) {
            reportError(tr("Insufficient arguments"));
            return false;
        }
        if (!m_curNode) {
            qDebug("NULL m_curNode for orientation");
            return true;
        }
        // Only bones keep an orientation of their own; every other node is given none.
        OvVec3 angles;
        if (m_curNode->inherits("OvBone"))
            angles = OvVec3(parsePoserFloat(argv[1]) * POSER_DEG_TO_RAD,
                            parsePoserFloat(argv[2]) * POSER_DEG_TO_RAD,
                            parsePoserFloat(argv[3]) * POSER_DEG_TO_RAD);
        setNodeOrientation(m_curNode, angles);
        return true;
    }
    if (is(key, "material")) {
        if (!m_curNode)
            return true;
        if (argc < 2) {
            reportError(tr("No material name was specified"));
            return false;
        }
        return selectMaterial(OvFileIO::decodeText(argv[1]));
    }
    if (is(key, "conformingTarget")) {
        if (argc < 2) {
            reportError(tr("No conforming target was specified"));
            return false;
        }
        if (!m_curFigure) {
            qDebug("NULL object for conformingTarget on line %d", m_file ? m_file->m_lineNumber : 0);
            return true;
        }
        if (auto *figure = qobject_cast<OvSkeleton *>(m_curFigure)) {
            QString name = tokenText(argv, 1, argc);
            const int number = stripFigureNumber(name);
            auto *target = qobject_cast<OvSkeleton *>(getSkeleton(number, false));
            // A figure cannot conform to itself.
            if (target && target != figure)
                figure->getFollowControl()->setValue(target);
        }
        return true;
    }
    if (is(key, "bend")) {
        if (argc < 2) {
            reportError(tr("No bend type was specified"));
            return false;
        }
        setBending(m_curNode, text::leadingInt(argv[1]) != 0);
        return true;
    }
    if (is(key, "castsShadow")) {
        if (argc < 2) {
            reportError(tr("No shadow value was specified"));
            return false;
        }
        if (m_curNode)
            static_cast<OvProperty *>(m_curNode->getShadowControl())
                ->setIntValue(text::leadingInt(argv[1]) != 0);
        return true;
    }
    if (is(key, "lightType")) {
        if (argc < 2) {
            reportError(tr("No light type identifier was specified"));
            return false;
        }
        if (!m_curNode) {
            qDebug("NULL light for lightType");
            return true;
        }
        // A light that is a spot light already keeps what its section gave it.
        if (text::leadingInt(argv[1]) == 1 && m_curNode->inherits("OvLight") &&
            !m_curNode->inherits("OvSpotLight"))
            replaceWithSpotLight();
        return true;
    }
    if (is(key, "channels")) {
        m_parseMode = ModeChannels;
        return true;
    }
    if (is(key, "on")) {
        if (m_curNode && !m_curNode->inherits("OvSkeleton"))
            static_cast<OvProperty *>(m_curNode->getVisibilityControl())->setIntValue(1);
        return true;
    }
    if (is(key, "off")) {
        if (m_curNode && !m_curNode->inherits("OvSkeleton") && !m_curNode->inherits("OvLight"))
            static_cast<OvProperty *>(m_curNode->getVisibilityControl())->setIntValue(0);
        return true;
    }
    if (is(key, "hidden")) {
        if (argc < 2) {
            reportError(tr("Insufficient Arguments"));
            return false;
        }
        if (m_curNode) {
            const bool hidden = text::leadingInt(argv[1]) != 0;
            m_curNode->setHidden(hidden);
            if (hidden)
                static_cast<OvProperty *>(m_curNode->getSelectabilityControl())->setIntValue(0);
        }
        return true;
    }
    if (is(key, "deformTarget")) {
        if (argc >= 2)
            bindDeformTarget(tokenText(argv, 1, argc));
        return true;
    }
    if (is(key, "baseProp") || is(key, "addZone")) {
        auto *dform = qobject_cast<OvDForm *>(m_curNode);
        if (!dform || argc < 2)
            return true;
        const bool base = is(key, "baseProp");
        QString name = tokenText(argv, 1, argc);
        stripFigureNumber(name);
        for (int i = 0; i < m_sceneItems.size(); ++i) {
            if (m_sceneItems[i].name != name)
                continue;
            if (base) {
                if (auto *b = qobject_cast<OvDFormBase *>(m_sceneItems[i].node))
                    dform->setBase(b);
            } else if (auto *zone = qobject_cast<OvDFormZone *>(m_sceneItems[i].node)) {
                dform->setZone(zone);
            }
        }
        return true;
    }
    if (is(key, "deformerProp")) {
        auto *base = qobject_cast<OvDFormBase *>(m_curNode);
        if (!base || argc < 2)
            return true;
        const QString name = tokenText(argv, 1, argc);
        // Collected first: the items do not move while nodes are reparented, but keep it obvious.
        QList<OvDForm *> magnets;
        for (int i = 0; i < m_sceneItems.size(); ++i)
            if (m_sceneItems[i].name == name)
                if (auto *magnet = qobject_cast<OvDForm *>(m_sceneItems[i].node))
                    magnets.append(magnet);
        for (OvDForm *magnet : magnets) {
            moveUnder(base, magnet);
            magnet->setBase(base);
        }
        return true;
    }
    if (is(key, "newFalloffCurve")) {
        if (auto *zone = qobject_cast<OvDFormZone *>(m_curNode))
            zone->getSpline()->clear();
        return true;
    }
    if (is(key, "falloffCpt")) {
        // A point without both coordinates is skipped: a guessed coordinate would bend the curve.
        if (argc < 3)
            return true;
        if (auto *zone = qobject_cast<OvDFormZone *>(m_curNode))
            zone->getSpline()->insertPoint(parsePoserFloat(argv[1]), parsePoserFloat(argv[2]));
        return true;
    }
    if (is(key, "subdivision")) {
        // Without a level there is nothing to subdivide to.
        if (argc < 2)
            return true;
        const int level = text::leadingInt(argv[1]);
        if (level != 0 && m_curNode && !m_curNode->inherits("OvBone")) {
            OvPz3SubDNode record;
            record.node = m_curNode;
            record.level = level;
            m_subDNodes.append(record);
        }
        return true;
    }
    // endFalloffCurve, transformPerVertex, buildSphere and every keyword not read here.
    return true;
}

// ---- placement ----

void OvPZ3Importer::setNodeOrigin(OvNode *node, const OvVec3 &v) {
    if (node)
        getNodeItem(node)->origin = v * POSER_UNIT_CM;
}

void OvPZ3Importer::setNodeEndPoint(OvNode *node, const OvVec3 &v) {
    if (node)
        getNodeItem(node)->endPoint = v * POSER_UNIT_CM;
}

// Origin, orientation and end point reach the node together, here: an origin or end point given
// after the orientation waits for the next orientation line.
void OvPZ3Importer::setNodeOrientation(OvNode *node, const OvVec3 &angles) {
    if (!node)
        return;
    OvPz3NodeItem *item = findNodeItem(node);
    if (!item) {
        // A pose changes nothing about where existing joints sit.
        if (m_applyToSelection)
            return;
        item = getNodeItem(node);
    }
    item->orientation = quatFromEuler(OvRotationOrder::XYZ, angles);
    node->setOrigin(item->origin);
    node->setOrientation(item->orientation);
    node->setEndPoint(item->endPoint);
}

// ---- hierarchy ----

bool OvPZ3Importer::reparent(const QString &name) {
    if (!m_curNode)
        return true;
    const QString &full = name;
    QString shortName = name;
    const int figureNumber = stripFigureNumber(shortName);

    OvNode *parent = nullptr;
    if (shortName == QLatin1String("UNIVERSE")) {
        // The scene root: nothing to do, except that hair goes on the head of the chosen figure.
        if (m_fileType != 3)
            return true;
        if (OvSkeleton *skeleton = getSelectedSkeleton())
            parent = skeleton->findBone(QStringLiteral("head"));
    } else if (!isDeformer(m_curNode)) {
        if (OvNode *figure = getSkeleton(figureNumber, false))
            parent = figure->findNodeChild(shortName, true);
    } else {
        // Deformers may hang on a body part or on another prop of the scene.
        if (OvNode *figure = getSkeleton(figureNumber, false)) {
            parent = figure->findNodeChild(shortName, true);
            if (!parent)
                parent = figure->findNodeChild(full, true);
        }
        for (int i = 0; !parent && i < m_sceneItems.size(); ++i) {
            const QString key = itemKey(m_sceneItems[i]);
            if (key == shortName || key == full)
                parent = m_sceneItems[i].node;
        }
    }
    if (!parent && shortName != QLatin1String("UNIVERSE"))
        for (int i = m_sceneItems.size() - 1; !parent && i >= 0; --i)
            if (itemKey(m_sceneItems[i]) == shortName)
                parent = m_sceneItems[i].node;

    // moveUnder refuses a parent at or below the node, which also keeps a figure from hanging
    // under one of its own bones.
    if (parent)
        moveUnder(parent, m_curNode);
    return true;
}

void OvPZ3Importer::recordSmartParent(const QString &name) {
    if (!m_curNode)
        return;
    const QString &full = name;
    QString shortName = name;
    stripFigureNumber(shortName);

    auto propNamed = [this](const QString &n) -> OvNode * {
        for (int i = 0; i < m_sceneItems.size(); ++i)
            if (!m_sceneItems[i].isFigure && m_sceneItems[i].name == n)
                return m_sceneItems[i].node;
        return nullptr;
    };

    OvNode *found = propNamed(shortName);
    if (!found) {
        if (OvSkeleton *skeleton = getSelectedSkeleton()) {
            if (shortName == QLatin1String("BODY") || shortName == skeleton->getName())
                found = skeleton;
            else
                found = skeleton->findNodeChild(shortName, true);
        }
    }
    if (!found)
        found = propNamed(full);
    if (!found) {
        if (OvSkeleton *skeleton = getSelectedSkeleton())
            found = skeleton->getName() == full ? skeleton : skeleton->findNodeChild(full, true);
    }
    // A node is never its own parent; any other cycle is refused when the parent is applied.
    if (found && found != m_curNode)
        getNodeItem(m_curNode)->smartParent = found;
}

// ---- materials ----

bool OvPZ3Importer::selectMaterial(const QString &name) {
    if (m_curNode->inherits("OvBone")) {
        // A body part gets a material of its own, in place of the figure's shared one.
        m_material = nullptr;
        const OvObject *object = m_curNode->getObject();
        if (!object || object->getNumShapes() == 0) {
            m_parseMode = ModeIgnore;
            return true;
        }
        for (int s = 0; s < object->getNumShapes(); ++s) {
            OvShape *shape = object->getShape(s);
            OvMaterial *found = shape->findMaterial(name);
            if (!found)
                continue;
            if (!m_material) {
                auto *material = make<OvDefaultMaterial>();
                material->setName(name);
                m_material = material;
            }
            shape->replaceMaterial(found, m_material);
        }
        m_parseMode = m_material ? ModeMaterial : ModeIgnore;
        return true;
    }
    OvTSharedPointer<OvMaterial> material = resolveMaterial(m_curFigure, name);
    if (auto *standard = dynamic_cast<OvDefaultMaterial *>(material.get())) {
        m_material = standard;
        m_parseMode = ModeMaterial;
    } else {
        m_material = nullptr;
        m_parseMode = ModeIgnore;
    }
    return true;
}

OvTSharedPointer<OvMaterial> OvPZ3Importer::resolveMaterial(OvNode *node, const QString &name) {
    OvPz3SceneItem *item = findSceneItem(node);
    if (!item)
        return OvTSharedPointer<OvMaterial>();
    OvTSharedPointer<OvMaterial> material = item->findMaterial(name);
    // Settings can be applied to the host's standard material only: a pose swaps any other kind
    // for a standard copy of it first.
    if (material && !dynamic_cast<OvDefaultMaterial *>(material.get()) && m_applyToSelection) {
        replaceMaterialOnNode(node, item, material.get());
        return item->findMaterial(name);
    }
    return material;
}

void OvPZ3Importer::replaceMaterialOnNode(OvNode *node, OvPz3SceneItem *item, OvMaterial *old) {
    if (!node || !item || !old)
        return;
    if (auto *skeleton = qobject_cast<OvSkeleton *>(node)) {
        for (OvBone *bone : skeleton->getAllBones())
            replaceMaterialOnNode(bone, item, old);
        return;
    }
    const OvObject *object = node->getObject();
    if (!object)
        return;
    // The old material may lose its last owner below.
    const OvTSharedPointer<OvMaterial> keepOld(old);
    for (int s = 0; s < object->getNumShapes(); ++s) {
        OvTSharedPointer<OvMaterial> replacement = item->replacedMaterials.value(old);
        if (!replacement) {
            auto *copy = make<OvDefaultMaterial>();
            replacement = copy;
            copy->setName(old->getName());
            copy->setLabel(old->getLabel());
            copy->copyFrom(*old);
            item->replacedMaterials.insert(old, replacement);
            bool listed = false;
            for (int i = item->materials.size() - 1; i >= 0; --i) {
                if (item->materials[i].get() == old)
                    item->materials.removeAt(i);
                else if (item->materials[i] == replacement)
                    listed = true;
            }
            if (!listed)
                item->materials.append(replacement);
        }
        object->getShape(s)->replaceMaterial(old, replacement.get());
    }
}

// ---- flags and lights ----

void OvPZ3Importer::setBending(OvNode *node, bool on) {
    OvPoserJoint *joint = poserJointOf(node);
    if (!joint)
        return;
    if (m_applyToSelection)
        joint->getBendControl()->setValue(on ? 1 : 0);
    else
        static_cast<OvProperty *>(joint->getBendControl())->setIntValue(on ? 1 : 0);
}

// Every light section starts as a distant light; a spot light takes its place, its name, its
// place in the hierarchy and in the import's light list.
void OvPZ3Importer::replaceWithSpotLight() {
    OvNode *old = m_curNode;
    OvScene *scene = OvApp::getScene();
    auto *spot = make<OvSpotLight>();
    spot->setName(old->getName());
    spot->setLabel(old->getLabel());
    OvNode *parent = old->getNodeParent();
    const int place = m_lights.indexOf(static_cast<OvLight *>(old));

    // Whatever was put under the old light moves to the new one rather than being deleted with it.
    while (old->getNumNodeChildren() > 0)
        if (!spot->addNodeChild(old->getNodeChild(0), false))
            break;
    scene->removeNode(old);
    if (parent)
        parent->addNodeChild(spot, false);
    else
        scene->addNode(spot);

    forgetNode(old);
    delete old;
    if (place >= 0)
        m_lights.insert(place, spot);
    m_curNode = spot;
}

// ---- deformers ----

void OvPZ3Importer::bindDeformTarget(const QString &name) {
    auto *magnet = qobject_cast<OvDForm *>(m_curNode);
    if (!magnet)
        return;
    QString targetName = name;
    const int figureNumber = stripFigureNumber(targetName);

    const OvPz3NodeItem *nodeItem = findNodeItem(m_curNode);
    if (m_foundOnFollowTarget || (nodeItem && nodeItem->smartParent)) {
        // A deformer brought onto a figure that already exists: the deformer modifier of the
        // target is bound here, since the target's own channels are not read again.
        OvSkeleton *skeleton = getSelectedSkeleton();
        if (!skeleton)
            return;
        OvNode *target =
            skeleton->getName() == targetName ? skeleton : skeleton->findNodeChild(targetName, true);
        if (!target)
            return;
        if (OvPz3DeformerChannelItem *channel = findOrCreateDeformerChannel(target, magnet->getName()))
            if (channel->modifier)
                channel->modifier->setDForm(magnet);
        return;
    }

    // Otherwise the target's deformerPropChan channel binds the deformer when its body is read;
    // the target is only looked up, for the developer log.
    OvNode *target = nullptr;
    if (OvNode *figure = getSkeleton(figureNumber, false))
        target = figure->findNodeChild(targetName, true);
    for (int i = 0; !target && i < m_sceneItems.size(); ++i)
        if (itemKey(m_sceneItems[i]) == targetName)
            target = m_sceneItems[i].node;
    if (!target)
        qDebug("deformTarget %s not found", qPrintable(name));
}
