// Channel groups: the `groups` channel's tree of named groups (groupNode), the channels each lists
// (parmNode) and whether it starts collapsed; given to the node's properties when the channels
// section closes.
#include "../OvPZ3Importer.h"

#include <OvModifiers.h>
#if __has_include(<OvMorph.h>)
#include <OvMorph.h>
#define OV_HAVE_MORPHS 1
#endif
#include <OvPropertyGroups.h>
#include <cstring>
#include <text/Numbers.h>

Pz3ChannelGroup::~Pz3ChannelGroup() {
    std::unique_ptr<Pz3ChannelGroup> next = std::move(nextSibling);
    while (next)
        next = std::move(next->nextSibling);
}

void Pz3ChannelGroup::addChild(std::unique_ptr<Pz3ChannelGroup> group) {
    group->parent = this;
    if (!firstChild) {
        firstChild = std::move(group);
        return;
    }
    firstChild->appendSibling(std::move(group));
}

void Pz3ChannelGroup::appendSibling(std::unique_ptr<Pz3ChannelGroup> group) {
    Pz3ChannelGroup *last = this;
    while (last->nextSibling)
        last = last->nextSibling.get();
    last->nextSibling = std::move(group);
}

namespace {

// A channel of the node, or the value channel of the morph of that name on its object.
OvProperty *groupedProperty(OvNode *node, const QString &name) {
    if (OvProperty *p = node->findProperty(name))
        return p;
    OvObject *object = node->getObject();
#ifdef OV_HAVE_MORPHS
    for (int i = 0; object && i < object->getNumModifiers(); ++i)
        if (auto *morph = dynamic_cast<OvMorph *>(object->getModifier(i)); morph && morph->getName() == name)
            return morph->getValueChannel();
#else
    (void)object;
#endif
    return nullptr;
}

} // namespace

// Siblings are walked in a loop, children by recursion: how deep groups nest is bounded by the
// reader's section depth, how many follow one another is not.
void Pz3ChannelGroup::applyTo(OvNode *node, const QString &parentPath) const {
    for (const Pz3ChannelGroup *group = this; group; group = group->nextSibling.get()) {
        const QString path = parentPath + group->name;
        for (const QString &parm : group->parms)
            if (OvProperty *p = groupedProperty(node, parm))
                p->setPath(path);
        if (OvPropertyGroup *host = node->getPropertyGroups()->findChild(path)) {
            for (qsizetype i = group->parms.size(); i-- > 0;)
                host->movePropertyToIndex(group->parms[i], 0);
            host->setCollapsed(group->collapsed);
        }
        if (group->firstChild)
            group->firstChild->applyTo(node, path + QLatin1Char('/'));
    }
}

void Pz3ChannelGroupBuilder::push(const QString &name) {
    std::unique_ptr<Pz3ChannelGroup> group(new Pz3ChannelGroup(name));
    Pz3ChannelGroup *made = group.get();
    if (current)
        current->addChild(std::move(group));
    else if (root)
        root->appendSibling(std::move(group));
    else
        root = std::move(group);
    current = made;
}

void Pz3ChannelGroupBuilder::apply(OvNode *node) const {
    if (node && root)
        root->applyTo(node, QString());
}

// ---- the reader's side ----

bool OvPZ3Importer::parseGroupsLine(char **argv, int argc) {
    if (std::strcmp(argv[0], "groupNode") == 0)
        return openGroupNode(argv, argc);
    return true;
}

bool OvPZ3Importer::openGroupNode(char **argv, int argc) {
    if (argc < 2) {
        reportError(tr("No name specified for groupNode"));
        m_parseMode = ModeIgnore;
        return true;
    }
    if (!m_curGroupNode) {
        reportError(tr("Found 'groupNode' outside of 'groups'."));
        m_parseMode = ModeIgnore;
        return true;
    }
    // The slash separates the levels of a group path.
    QString name = tokenText(argv, 1, argc);
    name.replace(QLatin1Char('/'), QLatin1Char('-')).replace(QLatin1Char('\\'), QLatin1Char('-'));
    if (name == QLatin1String("Transforms"))
        m_curGroupNode->push(QStringLiteral("General"));
    m_curGroupNode->push(name);
    m_parseMode = ModeGroupNode;
    return true;
}

bool OvPZ3Importer::parseGroupNodeLine(char **argv, int argc) {
    const char *keyword = argv[0];
    if (std::strcmp(keyword, "groupNode") == 0)
        return openGroupNode(argv, argc);
    const bool collapsed = std::strcmp(keyword, "collapsed") == 0;
    if (!collapsed && std::strcmp(keyword, "parmNode") != 0)
        return true;
    if (argc < 2) {
        reportError(collapsed ? tr("No value specified for collapsed") : tr("No parmNode name specified"));
        return collapsed;
    }
    if (!m_curGroupNode)
        return true;
    if (!m_curGroupNode->current) {
        reportError(collapsed ? tr("No current channel group for 'collapsed'.")
                              : tr("No current channel group for 'parmNode'."));
        return true;
    }
    if (collapsed)
        m_curGroupNode->current->setCollapsed(parsePoserFloat(argv[1]) != 0.0f);
    else
        m_curGroupNode->current->addParm(tokenText(argv, 1, argc));
    return true;
}

// A Transforms group sits in the General group that was opened for it: both are left.
void OvPZ3Importer::closeGroupNode() {
    if (!m_curGroupNode)
        return;
    const bool transforms = m_curGroupNode->currentName() == QLatin1String("Transforms");
    m_curGroupNode->pop();
    if (transforms)
        m_curGroupNode->pop();
}

void OvPZ3Importer::applyChannelGroups() {
    if (!m_curGroupNode)
        return;
    m_curGroupNode->apply(m_curNode);
    m_curGroupNode.reset();
}
