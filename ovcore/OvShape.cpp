#include "OvShape.h"

int OvShape::addMaterial(OvMaterial *material) {
    OvUndoStack::noteShape(this);
    m_materials.emplace_back(material);
    return int(m_materials.size()) - 1;
}

int OvShape::findMaterialIndex(const QString &name) const {
    for (size_t i = 0; i < m_materials.size(); ++i)
        if (m_materials[i]->getName() == name)
            return int(i);
    return -1;
}

int OvShape::findMaterialIndex(const OvMaterial *material) const {
    for (size_t i = 0; i < m_materials.size(); ++i)
        if (m_materials[i].get() == material)
            return int(i);
    return -1;
}

OvMaterial *OvShape::findMaterial(const QString &name) const {
    int i = findMaterialIndex(name);
    return i < 0 ? nullptr : m_materials[size_t(i)].get();
}

bool OvShape::replaceMaterial(OvMaterial *old, OvMaterial *replacement) {
    int i = findMaterialIndex(old);
    if (i < 0 || !replacement)
        return false;
    OvUndoStack::noteShape(this);
    m_materials[size_t(i)] = replacement;
    return true;
}

OvElementData *OvShape::findDataItem(const QString &name) const {
    for (const auto &d : m_dataItems)
        if (d->getName() == name)
            return d.get();
    return nullptr;
}
