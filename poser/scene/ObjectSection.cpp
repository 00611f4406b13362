// Object sections (actor, prop, light, camera and deformer props): placement in the hierarchy,
// origin, end point and orientation, flags, materials, spot lights and deformer wiring.
#include "../OvPZ3Importer.h"
#include "../PoserFloat.h"
#include "../Pz3InputFile.h"
#include "obj/ObjParse.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <new>

namespace {

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

// Keywords without a row (endFalloffCurve, transformPerVertex, buildSphere, ...) are ignored.
const OvPZ3Importer::KeywordRow OvPZ3Importer::s_objectKeywords[] = {
    {"name", 2, Short::Warn, "No name specified", &OvPZ3Importer::ignoreLine},
    {"parent", 2, Short::Stop, "No actor part was specified", &OvPZ3Importer::objParent},
    {"nonInkyParent", 2, Short::Stop, "No actor part was specified", &OvPZ3Importer::objParent},
    {"smartparent", 2, Short::Skip, nullptr, &OvPZ3Importer::objSmartParent},
    {"origin", 4, Short::Stop, "Insufficient arguments for origin", &OvPZ3Importer::objOrigin},
    {"endPoint", 4, Short::Stop, "Insufficient arguments for endPoint", &OvPZ3Importer::objEndPoint},
    {"orientation", 4, Short::Stop, "Insufficient arguments", &OvPZ3Importer::objOrientation},
    {"material", 2, Short::Stop, "No material name was specified", &OvPZ3Importer::objMaterial, Needs::Node},
    {"conformingTarget", 2, Short::Stop, "No conforming target was specified",
     &OvPZ3Importer::objConformingTarget},
    {"bend", 2, Short::Stop, "No bend type was specified", &OvPZ3Importer::objBend},
    {"castsShadow", 2, Short::Stop, "No shadow value was specified", &OvPZ3Importer::objCastsShadow},
    {"lightType", 2, Short::Stop, "No light type identifier was specified", &OvPZ3Importer::objLightType},
    {"channels", 0, Short::Skip, nullptr, &OvPZ3Importer::enterSection<ModeChannels>},
    {"on", 0, Short::Skip, nullptr, &OvPZ3Importer::objOn},
    {"off", 0, Short::Skip, nullptr, &OvPZ3Importer::objOff},
    {"hidden", 2, Short::Stop, "Insufficient Arguments", &OvPZ3Importer::objHidden},
    {"deformTarget", 2, Short::Skip, nullptr, &OvPZ3Importer::objDeformTarget},
    {"baseProp", 2, Short::Skip, nullptr, &OvPZ3Importer::objBaseProp},
    {"addZone", 2, Short::Skip, nullptr, &OvPZ3Importer::objAddZone},
    {"deformerProp", 2, Short::Skip, nullptr, &OvPZ3Importer::objDeformerProp},
    {"newFalloffCurve", 0, Short::Skip, nullptr, &OvPZ3Importer::objNewFalloffCurve},
    // A point without both coordinates is skipped: a guessed coordinate would bend the curve.
    {"falloffCpt", 3, Short::Skip, nullptr, &OvPZ3Importer::objFalloffCpt},
    // Without a level there is nothing to subdivide to.
    {"subdivision", 2, Short::Skip, nullptr, &OvPZ3Importer::objSubdivision},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

// The geometry keywords (Geometry.cpp) are looked up first.
bool OvPZ3Importer::parseObjectLine(char **argv, int argc) {
    const KeywordRow *row = findKeyword(s_geometryKeywords, argv[0]);
    if (!row)
        row = findKeyword(s_objectKeywords, argv[0]);
    return row ? runKeyword(*row, argv, argc) : true;
}

bool OvPZ3Importer::objParent(char **argv, int argc) {
    return reparent(tokenText(argv, 1, argc));
}

bool OvPZ3Importer::objSmartParent(char **argv, int argc) {
    recordSmartParent(tokenText(argv, 1, argc));
    return true;
}

bool OvPZ3Importer::objOrigin(char **argv, int) {
    if (!m_curNode) {
        qDebug("NULL m_curNode for origin");
        return true;
    }
    setNodeOrigin(m_curNode,
                  OvVec3(parsePoserFloat(argv[1]), parsePoserFloat(argv[2]), parsePoserFloat(argv[3])));
    return true;
}

bool OvPZ3Importer::objEndPoint(char **argv, int) {
    if (!m_curNode) {
        qDebug("NULL m_curNode for endPoint");
        return true;
    }
    setNodeEndPoint(m_curNode,
                    OvVec3(parsePoserFloat(argv[1]), parsePoserFloat(argv[2]), parsePoserFloat(argv[3])));
    return true;
}

bool OvPZ3Importer::objOrientation(char **argv, int) {
    if (!m_curNode) {
        qDebug("NULL m_curNode for orientation");
        return true;
    }
    // Only bones keep an orientation of their own; every other node is given none.
    OvVec3 angles;
    if (m_curNode->inherits("OvBone"))
        angles =
            OvVec3(parsePoserFloat(argv[1]) * POSER_DEG_TO_RAD, parsePoserFloat(argv[2]) * POSER_DEG_TO_RAD,
                   parsePoserFloat(argv[3]) * POSER_DEG_TO_RAD);
    setNodeOrientation(m_curNode, angles);
    return true;
}

bool OvPZ3Importer::objMaterial(char **argv, int) {
    return selectMaterial(OvFileIO::decodeText(argv[1]));
}

bool OvPZ3Importer::objConformingTarget(char **argv, int argc) {
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

bool OvPZ3Importer::objBend(char **argv, int) {
    setBending(m_curNode, obj::leadingInt(argv[1]) != 0);
    return true;
}

bool OvPZ3Importer::objCastsShadow(char **argv, int) {
    if (m_curNode)
        static_cast<OvProperty *>(m_curNode->getShadowControl())->setIntValue(obj::leadingInt(argv[1]) != 0);
    return true;
}

bool OvPZ3Importer::objLightType(char **argv, int) {
    if (!m_curNode) {
        qDebug("NULL light for lightType");
        return true;
    }
    // A light that is a spot light already keeps what its section gave it.
    if (obj::leadingInt(argv[1]) == 1 && m_curNode->inherits("OvLight") &&
        !m_curNode->inherits("OvSpotLight"))
        replaceWithSpotLight();
    return true;
}

bool OvPZ3Importer::objOn(char **, int) {
    if (m_curNode && !m_curNode->inherits("OvSkeleton"))
        static_cast<OvProperty *>(m_curNode->getVisibilityControl())->setIntValue(1);
    return true;
}

bool OvPZ3Importer::objOff(char **, int) {
    if (m_curNode && !m_curNode->inherits("OvSkeleton") && !m_curNode->inherits("OvLight"))
        static_cast<OvProperty *>(m_curNode->getVisibilityControl())->setIntValue(0);
    return true;
}

bool OvPZ3Importer::objHidden(char **argv, int) {
    if (m_curNode) {
        const bool hidden = obj::leadingInt(argv[1]) != 0;
        m_curNode->setHidden(hidden);
        if (hidden)
            static_cast<OvProperty *>(m_curNode->getSelectabilityControl())->setIntValue(0);
    }
    return true;
}

bool OvPZ3Importer::objDeformTarget(char **argv, int argc) {
    bindDeformTarget(tokenText(argv, 1, argc));
    return true;
}

bool OvPZ3Importer::objBaseProp(char **argv, int argc) {
    attachToMagnet(argv, argc, true);
    return true;
}

bool OvPZ3Importer::objAddZone(char **argv, int argc) {
    attachToMagnet(argv, argc, false);
    return true;
}

// The base (or a zone) of the magnet being read, by the Poser name of its prop.
void OvPZ3Importer::attachToMagnet(char **argv, int argc, bool base) {
    auto *dform = qobject_cast<OvDForm *>(m_curNode);
    if (!dform)
        return;
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
}

bool OvPZ3Importer::objDeformerProp(char **argv, int argc) {
    auto *base = qobject_cast<OvDFormBase *>(m_curNode);
    if (!base)
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

bool OvPZ3Importer::objNewFalloffCurve(char **, int) {
    if (auto *zone = qobject_cast<OvDFormZone *>(m_curNode))
        zone->getSpline()->clear();
    return true;
}

bool OvPZ3Importer::objFalloffCpt(char **argv, int) {
    if (auto *zone = qobject_cast<OvDFormZone *>(m_curNode))
        zone->getSpline()->insertPoint(parsePoserFloat(argv[1]), parsePoserFloat(argv[2]));
    return true;
}

bool OvPZ3Importer::objSubdivision(char **argv, int) {
    const int level = obj::leadingInt(argv[1]);
    if (level != 0 && m_curNode && !m_curNode->inherits("OvBone")) {
        OvPz3SubDNode record;
        record.node = m_curNode;
        record.level = level;
        m_subDNodes.append(record);
    }
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
        if (m_fileType != Pz3FileKind::Hair)
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
