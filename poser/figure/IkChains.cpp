// The lines of an inkyChain section: the chain's label, whether it is active, its links with their
// weights, and its goal. Nothing here stops the import: a missing value is said and skipped.
#include "../OvPZ3Importer.h"

#include <OvIKChains.h>
#include <OvSkeleton.h>
#include <text/Numbers.h>

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_inkyChainKeywords[] = {
    {"on", 1, Short::Skip, nullptr, &OvPZ3Importer::ikOn},
    {"off", 1, Short::Skip, nullptr, &OvPZ3Importer::ikOff},
    {"name", 2, Short::Warn, "No value specified for name in inkyChain section", &OvPZ3Importer::ikName},
    {"addLink", 2, Short::Warn, "No value specified for addLink in inkyChain section",
     &OvPZ3Importer::ikAddLink},
    {"goal", 2, Short::Warn, "No goal specified for IK chain", &OvPZ3Importer::ikGoal},
    {"linkWeight", 3, Short::Warn, "No values specified for linkWeight in inkyChain section",
     &OvPZ3Importer::ikLinkWeight},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseInkyChainLine(char **argv, int argc) {
    dispatchKeyword(s_inkyChainKeywords, argv, argc);
    return true;
}

bool OvPZ3Importer::ikOn(char **, int) {
    if (m_curIKChain)
        m_curIKChain->setActive(true);
    return true;
}

bool OvPZ3Importer::ikOff(char **, int) {
    if (m_curIKChain)
        m_curIKChain->setActive(false);
    return true;
}

bool OvPZ3Importer::ikName(char **argv, int argc) {
    if (m_curIKChain)
        m_curIKChain->setLabel(tokenText(argv, 1, argc));
    return true;
}

// Links come in file order, each with full weight until a linkWeight line says otherwise.
bool OvPZ3Importer::ikAddLink(char **argv, int argc) {
    OvNode *node = nodeNamed(argv, 1, argc);
    if (node && m_curIKChain)
        m_curIKChain->addLink(node, 1.0f, -1);
    return true;
}

// The goal node of the chain; a bone of a figure becomes an IK target, whose translation the chain
// owns from now on: it rests at 0 and keeps no keys.
bool OvPZ3Importer::ikGoal(char **argv, int argc) {
    QString name = tokenText(argv, 1, argc);
    if (OvNode *node = findNode(name); node && m_curIKChain)
        m_curIKChain->setGoal(node);
    const int figureNumber = stripFigureNumber(name);
    auto *figure = qobject_cast<OvSkeleton *>(getSkeleton(figureNumber, false));
    OvBone *bone = figure ? figure->findBone(name) : nullptr;
    if (!bone)
        return true;
    if (!bone->findDataItem(QStringLiteral("PoserIKTarget")))
        bone->addDataItem(new OvPoserIKTargetFlag);
    for (OvFloatProperty *control :
         {bone->getXPosControl(), bone->getYPosControl(), bone->getZPosControl()}) {
        control->setDefaultValue(0.0f);
        control->deleteAllKeys();
    }
    return true;
}

// The index is the host's link number, as written; a number with no link changes nothing.
bool OvPZ3Importer::ikLinkWeight(char **argv, int) {
    if (m_curIKChain)
        m_curIKChain->setLinkWeight(text::leadingInt(argv[1]), parsePoserFloat(argv[2]));
    return true;
}
