// Materials of object sections: the material a section's block sets, found on the figure or prop,
// or made for one body part; in a pose, standard copies of materials the host cannot change.
#include "../OvPZ3Importer.h"
#include "SceneHelpers.h"

#include <OvMaterial.h>
#include <OvSkeleton.h>

using poser::make;

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
