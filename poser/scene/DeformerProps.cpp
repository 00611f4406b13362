// Deformer props: magnets wired to their bases and zones, zone falloff curves, and the deformer
// modifier a magnet binds on its target.
#include "../OvPZ3Importer.h"
#include "SceneHelpers.h"

#include <OvDeformers.h>
#include <OvModifiers.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <text/Numbers.h>

using poser::moveUnder;

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
    for (int i : m_itemIndex.allNamed(name)) {
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
    for (int i : m_itemIndex.allNamed(name))
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
    if (const int i = target ? -1 : m_itemIndex.firstWithKey(m_sceneItems, targetName); i >= 0)
        target = m_sceneItems[i].node;
    if (!target)
        qDebug("deformTarget %s not found", qPrintable(name));
}
