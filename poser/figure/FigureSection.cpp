// The figure section that closes a figure file: which figure it is, welded body parts, materials,
// whether the figure conforms to the selected one, its IK chains, subdivision and linked
// parameters. Welds and linkParms span several lines, which their handlers read themselves.
#include "../OvPZ3Importer.h"
#include "../scene/SceneHelpers.h"

#include <OvApp.h>
#include <OvIKChains.h>
#include <OvMaterial.h>
#include <OvModifiers.h>
#include <OvSkeleton.h>
#include <QSet>
#include <text/Numbers.h>

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_figureKeywords[] = {
    {"root", 0, Short::Skip, nullptr, &OvPZ3Importer::figRoot},
    {"weld", 2, Short::Stop, "No group name was specified for weld", &OvPZ3Importer::figWeld},
    {"material", 2, Short::Stop, "No material name was specified", &OvPZ3Importer::figMaterial},
    {"conforming", 2, Short::Stop, "No conforming parameter was specified", &OvPZ3Importer::figConforming},
    {"inkyChain", 2, Short::Warn, "No name was specified for inkyChain", &OvPZ3Importer::figInkyChain},
    {"subdivision", 2, Short::Skip, nullptr, &OvPZ3Importer::figSubdivision},
    {"linkParms", 2, Short::Stop, "No master group name was specified for linkParms",
     &OvPZ3Importer::figLinkParms},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseFigureLine(char **argv, int argc) {
    return dispatchKeyword(s_figureKeywords, argv, argc);
}

bool OvPZ3Importer::nextLineNode(char **argv, int &argc, OvNode *&node) {
    node = nullptr;
    if (!nextLine(argv, argc))
        return false;
    if (argc > 0)
        node = nodeNamed(argv, 0, argc);
    return true;
}

// Names the figure this section belongs to, unless a figure is already current: looks up a figure
// of this import by its number, never makes one.
bool OvPZ3Importer::figRoot(char **argv, int argc) {
    if (m_curFigure)
        return true;
    QString name = tokenText(argv, 1, argc);
    m_curFigure = getSkeleton(stripFigureNumber(name), false);
    return true;
}

// "weld PART" and, on the next line, the part it is welded to. A part that does not bend is not
// welded, but its partner's line belongs to the weld all the same.
bool OvPZ3Importer::figWeld(char **argv, int argc) {
    OvNode *first = nodeNamed(argv, 1, argc);
    if (const OvPoserJoint *joint = first ? poser::findPoserJoint(first) : nullptr;
        joint && !joint->bendingOn())
        first = nullptr;
    OvNode *second = nullptr;
    nextLineNode(argv, argc, second);
    auto *bone = qobject_cast<OvBone *>(first);
    auto *target = qobject_cast<OvBone *>(second);
    if (bone && target && bone->getSkeleton())
        bone->getSkeleton()->addWeld(bone, target);
    return true;
}

// The figure's shared material of that name; a name the figure does not have skips the section.
bool OvPZ3Importer::figMaterial(char **argv, int) {
    OvTSharedPointer<OvMaterial> material = resolveMaterial(m_curFigure, OvFileIO::decodeText(argv[1]));
    m_material = dynamic_cast<OvDefaultMaterial *>(material.get());
    m_parseMode = m_material ? ModeMaterial : ModeIgnore;
    return true;
}

// A figure file's figure follows the selected figure, unless it was dropped with a placement of
// its own.
bool OvPZ3Importer::figConforming(char **argv, int) {
    auto *figure = qobject_cast<OvSkeleton *>(m_curFigure);
    if (m_fileType != Pz3FileKind::Figure || text::leadingInt(argv[1]) == 0 || !figure)
        return true;
    if (const OvContentDropOptions *drop = OvApp::getContentMgr()->getContentDropOptions();
        drop && drop->getDropMode() != OvContentDropOptions::Automatic &&
        drop->getDropMode() != OvContentDropOptions::Conform)
        return true;
    OvSkeleton *target = getSelectedSkeleton();
    if (!target)
        return true;
    // Following itself, or a figure that follows it already, would make figures follow in a circle.
    QSet<const OvSkeleton *> seen;
    for (const OvSkeleton *s = target; s && !seen.contains(s); s = s->getFollowTarget()) {
        if (s == figure) {
            reportInfo(tr("Figure \"%1\" cannot conform to itself or to a figure that follows it")
                           .arg(figure->getLabel()));
            return true;
        }
        seen.insert(s);
    }
    figure->getFollowControl()->setValue(target);
    return true;
}

// A new chain in the figure's chains item; the section's lines go to parseInkyChainLine even
// without a figure (they then change the chain made last, if any).
bool OvPZ3Importer::figInkyChain(char **argv, int argc) {
    if (auto *figure = qobject_cast<OvSkeleton *>(m_curFigure)) {
        auto *chains = dynamic_cast<OvPoserIKChains *>(figure->findDataItem(QStringLiteral("PoserIKChains")));
        if (!chains) {
            chains = new OvPoserIKChains;
            figure->addDataItem(chains);
        }
        m_curIKChain = chains->addChain(new OvPoserIKChain(tokenText(argv, 1, argc)));
    }
    m_parseMode = ModeInkyChain;
    return true;
}

bool OvPZ3Importer::figSubdivision(char **argv, int) {
    const int level = text::leadingInt(argv[1]);
    if (level != 0 && m_curFigure) {
        OvPz3SubDNode record;
        record.node = m_curFigure;
        record.level = level;
        m_subDNodes.append(record);
    }
    return true;
}

// "linkParms MASTER" and three more lines: the master's channel, the slave part and its channel.
// An unknown master reads no further line; an unknown slave ends the entry after its line.
bool OvPZ3Importer::figLinkParms(char **argv, int argc) {
    OvNode *master = nodeNamed(argv, 1, argc);
    if (!master)
        return true;
    nextLine(argv, argc);
    const QString masterParm = tokenText(argv, 0, argc);
    OvNode *slave = nullptr;
    if (!nextLineNode(argv, argc, slave) || !slave)
        return true;
    nextLine(argv, argc);
    addLinkParm(master, masterParm, slave, tokenText(argv, 0, argc));
    return true;
}

void OvPZ3Importer::addLinkParm(OvNode *master, const QString &masterParm, OvNode *slave,
                                const QString &slaveParm) {
    OvPz3LinkParm record;
    record.masterNode = master;
    record.masterParm = masterParm;
    record.slaveNode = slave;
    record.slaveParm = slaveParm;
    m_linkParms.append(record);
}
