// Poser channel names of host properties: value channels made on demand and the records through
// which dependent parameters find the property a channel name stands for.
#include "../OvPZ3Importer.h"

#include <QtDebug>

void OvPZ3Importer::addChannelNameMap(OvProperty *property, const QString &name) {
    // Lookups take the first property recorded under a name per owner.
    OvProperty *&first =
        m_channelNameIndex[qMakePair(static_cast<const OvElement *>(property->getOwner()), name)];
    if (!first)
        first = property;
}

OvProperty *OvPZ3Importer::findChannelProperty(OvNode *node, const QString &name) const {
    if (m_applyToSelection)
        return node->findProperty(name);
    return m_channelNameIndex.value(qMakePair(static_cast<const OvElement *>(node), name), nullptr);
}

OvFloatProperty *OvPZ3Importer::getValueProperty(OvNode *node, const QString &name) {
    if (!node) {
        qDebug("NULL node passed to OvPZ3Importer::getValueProperty()");
        return nullptr;
    }
    if (name.isEmpty()) {
        qDebug("NULL node name passed to OvPZ3Importer::getValueProperty()");
        return nullptr;
    }
    if (OvProperty *p = findChannelProperty(node, name))
        return dynamic_cast<OvFloatProperty *>(p);
    // A pose changes what exists; it does not add dials to figures.
    if (m_applyToSelection)
        return nullptr;
    auto *p = new OvFloatProperty(name);
    p->setIsUserProperty(true);
    p->setCanAnimate(true);
    node->addProperty(p);
    addChannelNameMap(p, name);
    return p;
}

OvNode *OvPZ3Importer::lastSceneItemNamed(const QString &name) const {
    const int i = m_itemIndex.lastWithKey(m_sceneItems, name);
    return i < 0 ? nullptr : m_sceneItems[i].node;
}
