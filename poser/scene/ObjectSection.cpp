// Object sections (actor, prop, light, camera and deformer props): the keyword table, placement in
// the hierarchy, origin, end point and orientation, flags and spot lights. Materials and deformer
// wiring have files of their own.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"
#include "SceneHelpers.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <new>
#include <text/Numbers.h>

using poser::isDeformer;
using poser::make;
using poser::moveUnder;

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
    setBending(m_curNode, text::leadingInt(argv[1]) != 0);
    return true;
}

bool OvPZ3Importer::objCastsShadow(char **argv, int) {
    if (m_curNode)
        static_cast<OvProperty *>(m_curNode->getShadowControl())->setIntValue(text::leadingInt(argv[1]) != 0);
    return true;
}

bool OvPZ3Importer::objLightType(char **argv, int) {
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
        const bool hidden = text::leadingInt(argv[1]) != 0;
        m_curNode->setHidden(hidden);
        if (hidden)
            static_cast<OvProperty *>(m_curNode->getSelectabilityControl())->setIntValue(0);
    }
    return true;
}

bool OvPZ3Importer::objSubdivision(char **argv, int) {
    const int level = text::leadingInt(argv[1]);
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
        if (!parent) {
            const int byShort = m_itemIndex.firstWithKey(m_sceneItems, shortName);
            const int byFull = m_itemIndex.firstWithKey(m_sceneItems, full);
            const int first = byShort < 0 || (byFull >= 0 && byFull < byShort) ? byFull : byShort;
            if (first >= 0)
                parent = m_sceneItems[first].node;
        }
    }
    if (!parent && shortName != QLatin1String("UNIVERSE"))
        if (const int i = m_itemIndex.lastWithKey(m_sceneItems, shortName); i >= 0)
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
        const int i = m_itemIndex.firstPropNamed(n);
        return i < 0 ? nullptr : m_sceneItems[i].node;
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

// ---- flags and lights ----

void OvPZ3Importer::setBending(OvNode *node, bool on) {
    OvPoserJoint *joint = poser::findPoserJoint(node);
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
    if (place >= 0) {
        m_lights.insert(place, spot);
        reindexLights();
    }
    m_curNode = spot;
}
