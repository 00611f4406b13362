#pragma once
// Shapes: a piece of geometry with the materials its faces refer to by index.

#include "OvMaterial.h"
#include "OvPolyMesh.h"
#include "OvProperty.h"
#include "OvUndoStack.h"
#include <QString>
#include <memory>
#include <vector>

class OvShape {
public:
    virtual ~OvShape() { OvUndoStack::forget(this); }
    virtual const char *className() const { return "OvShape"; }

    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }

    OvGeometry *getGeometry() const { return m_geometry.get(); }
    void setGeometry(OvGeometry *geometry) { m_geometry = geometry; }

    int getNumMaterials() const { return int(m_materials.size()); }
    OvMaterial *getMaterial(int i) const { return m_materials[size_t(i)].get(); }
    // Adds (and shares) a material; returns its index.
    int addMaterial(OvMaterial *material);
    int findMaterialIndex(const QString &name) const;
    int findMaterialIndex(const OvMaterial *material) const;
    OvMaterial *findMaterial(const QString &name) const;
    // Puts `replacement` where `old` was (the faces keep their index); false when `old` is absent.
    bool replaceMaterial(OvMaterial *old, OvMaterial *replacement);
    // The material list as a whole, for undo.
    using MaterialList = std::vector<OvTSharedPointer<OvMaterial>>;
    const MaterialList &materialList() const { return m_materials; }
    void restoreMaterialList(MaterialList list) { m_materials = std::move(list); }

    // Records importers leave on the shape (where its geometry came from); owned.
    OvElementData *findDataItem(const QString &name) const;
    void addDataItem(OvElementData *item) { m_dataItems.emplace_back(item); }
    int getNumDataItems() const { return int(m_dataItems.size()); }
    OvElementData *getDataItem(int i) const { return m_dataItems[size_t(i)].get(); }

private:
    QString m_name;
    QString m_label;
    OvTSharedPointer<OvGeometry> m_geometry;
    MaterialList m_materials;
    std::vector<std::unique_ptr<OvElementData>> m_dataItems;
};

class OvPolyShape : public OvShape {
public:
    const char *className() const override { return "OvPolyShape"; }
    OvPolyMesh *getPolyMesh() const { return dynamic_cast<OvPolyMesh *>(getGeometry()); }
    void setPolyMesh(OvPolyMesh *mesh) { setGeometry(mesh); }
};
