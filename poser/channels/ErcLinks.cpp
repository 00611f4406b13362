// Dependent parameters (valueOp blocks) become ERC link controllers on the driven property; a
// block whose controlling channel is not read yet leaves a place-holder that the end of the import
// resolves. linkParms pairs become property links. Neither may make a property depend on itself.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"

#include <OvDeformers.h>
#include <OvFileIO.h>
#include <OvModifiers.h>
#include <OvMorph.h>
#include <OvSkeleton.h>
#include <QElapsedTimer>
#include <QSet>
#include <QtDebug>
#include <cstring>
#include <new>
#include <text/Numbers.h>

namespace {

const char *const kImported = "Imported ERC Control";
const char *const kPlaceHolder = "Place-holder ERC Control";

OvERCLink *newLink(int type, OvNumericProperty *controller, double scalar) {
    auto *link = new (std::nothrow) OvERCLink(type, controller, scalar, 0.0);
    if (!link)
        throw QString("Out of Memory");
    return link;
}

bool isPositionControl(const OvNode *node, const OvProperty *p) {
    return node && p &&
           (p == node->getXPosControl() || p == node->getYPosControl() || p == node->getZPosControl());
}

// Bones carry no label of their own: messages name them by their name then.
QString labelOf(const OvElement *e) {
    return !e ? QString() : e->getLabel().isEmpty() ? e->getName() : e->getLabel();
}

// "owner:property", as the messages name a driven property (a morph dial has no owner).
QString propertyName(const OvProperty *p) {
    return p->getOwner() ? labelOf(p->getOwner()) + QLatin1Char(':') + p->getLabel() : p->getLabel();
}

// The value channel of the first morph of the node's object whose name (or dial label) matches.
OvNumericProperty *morphChannel(const OvNode *node, const QString &name, bool byLabel) {
    const OvObject *object = node->getObject();
    for (int i = 0; object && i < object->getNumModifiers(); ++i)
        if (auto *m = dynamic_cast<OvMorph *>(object->getModifier(i)))
            if ((byLabel ? m->getValueChannel()->getLabel() : m->getName()) == name)
                return m->getValueChannel();
    return nullptr;
}

} // namespace

bool OvPZ3Importer::readValueOp(char **argv, int argc, int type) {
    if (!m_curProperty) {
        reportError(tr("No current channel for valueOp"));
        return false;
    }
    // Messages about the link name the valueOp line, now and at the end of the import.
    OvPz3ERCLink where;
    where.fileName = m_file ? m_file->name() : QString();
    where.line = m_file ? m_file->m_lineNumber : 0;
    nextLine(argv, argc); // the controlling figure: the node name says which
    QString nodeName;
    if (nextLine(argv, argc) && argc > 0)
        nodeName = tokenText(argv, 0, argc);
    const int figureIndex = stripFigureNumber(nodeName);
    if (!nextLine(argv, argc) || argc == 0) {
        reportError(tr("Missing channel name for valueOp"));
        return true;
    }
    const QString channelName = tokenText(argv, 0, argc);
    float scalar = 1.0f;
    if (type == OvERCLink::DeltaAdd && nextLine(argv, argc) && argc >= 2 &&
        std::strcmp(argv[0], "deltaAddDelta") == 0)
        scalar = parsePoserFloat(argv[1]);
    auto *driven = dynamic_cast<OvNumericProperty *>(m_curProperty);
    if (!driven) {
        qDebug("valueOp on a channel that has no number");
        return true;
    }
    const int before = m_ercLinks.size();
    m_linkRecord = &where;
    createERCLink(driven, figureIndex, nodeName, channelName, scalar, type, nullptr, true);
    m_linkRecord = nullptr;
    if (m_ercLinks.size() > before) {
        m_ercLinks.last().fileName = where.fileName;
        m_ercLinks.last().line = where.line;
    }
    return true;
}

OvNode *OvPZ3Importer::findControlNode(OvNode *root, const QString &name) {
    if (!root)
        return nullptr;
    auto *skeleton = qobject_cast<OvSkeleton *>(root);
    if (!skeleton || m_applyToSelection || root->inherits("OvDFormBase"))
        return getNode(root, name);
    if (name == QLatin1String("BODY"))
        return root;
    return skeleton->findBone(name);
}

OvNumericProperty *OvPZ3Importer::findLinkProperty(OvNode *node, const QString &channelName) {
    if (!node)
        return nullptr;
    if (auto *p = dynamic_cast<OvNumericProperty *>(findChannelProperty(node, channelName)))
        return p;
    if (OvNumericProperty *p = morphChannel(node, channelName, false))
        return p;
    if (auto *p = dynamic_cast<OvNumericProperty *>(node->findPropertyByLabel(channelName)))
        return p;
    return morphChannel(node, channelName, true);
}

bool OvPZ3Importer::createERCLink(OvNumericProperty *driven, int figureIndex, const QString &nodeName,
                                  const QString &channelName, float scalar, int type, OvERCLink *placeHolder,
                                  bool deferIfMissing) {
    OvNode *root = m_applyToSelection ? getSelectedSkeleton()
                                      : (figureIndex < 0 ? m_curFigure : getSkeleton(figureIndex, false));
    OvNode *controlNode = findControlNode(root, nodeName);
    OvNumericProperty *controller = findLinkProperty(controlNode, channelName);
    // A deformer channel may name a channel of the figure its magnet belongs to.
    if (!controller && m_parseMode == ModeParmChannel && m_curDeformerChannel &&
        m_curDeformerChannel->modifier &&
        qstrcmp(m_curDeformerChannel->modifier->className(), "OvDFormModifier") == 0) {
        OvDForm *dform = m_curDeformerChannel->modifier->getDForm();
        if (OvNode *figure = dform ? dform->getSkeleton() : nullptr) {
            controlNode = findControlNode(figure, nodeName);
            controller = findLinkProperty(controlNode, channelName);
        }
    }
    if (!controller) {
        if (placeHolder && driven->removeController(placeHolder))
            delete placeHolder;
        if (!deferIfMissing)
            return false;
        OvERCLink *link = newLink(type, nullptr, scalar);
        link->setName(QString::fromLatin1(kPlaceHolder));
        driven->insertController(link, -1);
        OvPz3ERCLink record;
        record.property = driven;
        record.figureIndex = figureIndex;
        record.nodeName = nodeName;
        record.channelName = channelName;
        record.scalar = scalar;
        record.type = type;
        record.placeHolder = link;
        m_ercLinks.append(record);
        return false;
    }
    if (wouldCreateCycle(controller, driven)) {
        reportLinkInfo(tr("Attempted to create circular ERC: %1:%2 => %3:%4")
                           .arg(labelOf(driven->getOwner()), driven->getLabel(), nodeName, channelName));
        // Nothing is left half-linked: a place-holder has no link to become.
        if (placeHolder && driven->removeController(placeHolder))
            delete placeHolder;
        return true;
    }
    removeMatchingERC(driven, type, controller);
    // Translations are centimetres in the host and Poser units in the file; other channels have none.
    double factor = double(scalar);
    const bool drivenMoves = isPositionControl(qobject_cast<OvNode *>(driven->getOwner()), driven);
    const bool controllerMoves = isPositionControl(controlNode, controller);
    if (drivenMoves && !controllerMoves)
        factor *= double(POSER_UNIT_CM);
    else if (!drivenMoves && controllerMoves)
        factor /= double(POSER_UNIT_CM);
    if (placeHolder) {
        placeHolder->setType(type);
        placeHolder->setProperty(controller);
        placeHolder->setScalar(factor);
        placeHolder->setName(QString::fromLatin1(kImported));
        return true;
    }
    OvERCLink *link = newLink(type, controller, factor);
    driven->insertController(link, -1);
    link->setName(QString::fromLatin1(kImported));
    return true;
}

bool OvPZ3Importer::wouldCreateCycle(const OvNumericProperty *controller, const OvNumericProperty *driven) {
    if (controller == driven)
        return true;
    // Everything `controller` is computed from, each property once (links that already form a
    // cycle elsewhere must not keep the walk going).
    std::vector<const OvNumericProperty *> stack{controller};
    QSet<const OvNumericProperty *> visited{controller};
    auto reaches = [&](const OvNumericProperty *p) {
        if (p == driven)
            return true;
        if (p && !visited.contains(p)) {
            visited.insert(p);
            stack.push_back(p);
        }
        return false;
    };
    while (!stack.empty()) {
        const OvNumericProperty *p = stack.back();
        stack.pop_back();
        if (reaches(p->getLinkProperty()))
            return true;
        for (int i = 0; i < p->getNumControllers(); ++i)
            if (auto *erc = dynamic_cast<const OvERCLink *>(p->getController(i));
                erc && reaches(erc->getProperty()))
                return true;
    }
    return false;
}

void OvPZ3Importer::removeMatchingERC(OvNumericProperty *driven, int type,
                                      const OvNumericProperty *controller) {
    for (int i = 0; i < driven->getNumControllers(); ++i) {
        auto *erc = dynamic_cast<OvERCLink *>(driven->getController(i));
        if (erc && erc->getType() == type && erc->getProperty() == controller) {
            driven->removeController(erc);
            delete erc;
            return;
        }
    }
}

void OvPZ3Importer::resolveLinkParm(const OvPz3LinkParm &record) {
    auto find = [this](OvNode *node, const QString &parm) -> OvNumericProperty * {
        OvNumericProperty *p = findLinkProperty(node, parm);
        if (!p)
            reportInfo(tr("Could not find property \"%1\" on node \"%2\" for linkParms")
                           .arg(parm, node ? node->getName() : QString()));
        return p;
    };
    OvNumericProperty *master = find(record.masterNode, record.masterParm);
    OvNumericProperty *slave = master ? find(record.slaveNode, record.slaveParm) : nullptr;
    if (!slave || master->getLinkProperty() == slave)
        return;
    const QString masterName = labelOf(record.masterNode) + QLatin1Char(':') + record.masterParm;
    const QString slaveName = labelOf(record.slaveNode) + QLatin1Char(':') + record.slaveParm;
    // A slave that is driven already keeps its drivers: the master follows it instead.
    const bool slaveLeads = slave->getNumControllers() > 0;
    OvNumericProperty *follower = slaveLeads ? master : slave;
    OvNumericProperty *leader = slaveLeads ? slave : master;
    if (wouldCreateCycle(leader, follower)) {
        reportInfo(tr("Attempted to create a circular link: %1 <==> %2")
                       .arg(slaveLeads ? slaveName : masterName, slaveLeads ? masterName : slaveName));
        return;
    }
    follower->linkTo(leader);
}

void OvPZ3Importer::reportLinkInfo(const QString &message) {
    if (!m_linkRecord) {
        reportInfo(message);
        return;
    }
    OvFileIO::info(
        tr("%1 on line %2 in %3").arg(message, QString::number(m_linkRecord->line), m_linkRecord->fileName));
}

void OvPZ3Importer::resolveDeferredLinks() {
    QElapsedTimer clock;
    clock.start();
    QStringList unresolved;
    for (int i = 0; i < m_ercLinks.size(); ++i) {
        const OvPz3ERCLink record = m_ercLinks[i];
        m_linkRecord = &record;
        const bool found =
            createERCLink(record.property, record.figureIndex, record.nodeName, record.channelName,
                          record.scalar, record.type, record.placeHolder, false);
        m_linkRecord = nullptr;
        if (!found)
            unresolved << tr("%1 => %2:%3 (line %4 in %5)")
                              .arg(propertyName(record.property), record.nodeName, record.channelName)
                              .arg(record.line)
                              .arg(record.fileName);
    }
    for (int i = 0; i < m_linkParms.size(); ++i)
        resolveLinkParm(m_linkParms[i]);
    m_ercLinks.clear();
    m_linkParms.clear();
    m_linkResolveNanos = clock.nsecsElapsed();
    if (unresolved.isEmpty())
        return;
    // One line for all of them; a long list names the first few.
    constexpr int Named = 10;
    const int count = unresolved.size();
    if (count > Named) {
        unresolved.erase(unresolved.begin() + Named, unresolved.end());
        unresolved << tr("and %1 more").arg(count - Named);
    }
    OvFileIO::info(tr("%1 dependent parameter link(s) stayed unresolved, their controlling channel was never "
                      "read: %2")
                       .arg(count)
                       .arg(unresolved.join(QStringLiteral("; "))));
}

void OvPZ3Importer::forgetLinksOf(const OvNode *node) {
    const OvElement *object = node->getObject();
    for (int i = m_ercLinks.size() - 1; i >= 0; --i) {
        const OvElement *owner = m_ercLinks[i].property->getOwner();
        if (owner == node || (object && owner == object))
            m_ercLinks.removeAt(i);
    }
    for (int i = m_linkParms.size() - 1; i >= 0; --i)
        if (m_linkParms[i].masterNode == node || m_linkParms[i].slaveNode == node)
            m_linkParms.removeAt(i);
}
