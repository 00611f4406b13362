#pragma once
// Surface materials and textures. Both are reference counted: shapes share them. A material's
// setters note its old settings for undo.

#include "OvTypes.h"
#include "OvUndoStack.h"
#include <QColor>
#include <QString>

class OvTexture : public OvRefCountedItem {
public:
    OvTexture(const QString &path, int width, int height) : m_path(path), m_width(width), m_height(height) {}
    const QString &getPath() const { return m_path; }
    int getWidth() const { return m_width; }
    int getHeight() const { return m_height; }
    // Importers give a texture the key they cached it under.
    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

private:
    QString m_path;
    QString m_name;
    int m_width;
    int m_height;
};

class OvMaterial : public OvRefCountedItem {
public:
    ~OvMaterial() override { OvUndoStack::forget(this); }
    virtual const char *className() const { return "OvMaterial"; }
    const QString &getName() const { return m_name; }
    void setName(const QString &name) {
        OvUndoStack::noteMaterial(this);
        m_name = name;
    }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) {
        OvUndoStack::noteMaterial(this);
        m_label = label;
    }

private:
    QString m_name;
    QString m_label;
};

// The host's standard surface: colours, strengths and texture maps.
class OvDefaultMaterial : public OvMaterial {
public:
    const char *className() const override { return "OvDefaultMaterial"; }
    // Takes every setting and map of another material (not its name or label).
    void copyFrom(const OvMaterial &other) {
        OvUndoStack::noteMaterial(this);
        if (auto *d = dynamic_cast<const OvDefaultMaterial *>(&other)) {
            QString name = getName(), label = getLabel();
            *this = *d;
            setName(name);
            setLabel(label);
        }
    }

    QColor getDiffuseColor() const { return m_diffuse; }
    void setDiffuseColor(const QColor &c) {
        OvUndoStack::noteMaterial(this);
        m_diffuse = c;
    }
    QColor getAmbientColor() const { return m_ambient; }
    void setAmbientColor(const QColor &c) {
        OvUndoStack::noteMaterial(this);
        m_ambient = c;
    }
    QColor getSpecularColor() const { return m_specular; }
    void setSpecularColor(const QColor &c) {
        OvUndoStack::noteMaterial(this);
        m_specular = c;
    }
    QColor getReflectionColor() const { return m_reflection; }
    void setReflectionColor(const QColor &c) {
        OvUndoStack::noteMaterial(this);
        m_reflection = c;
    }

    float getAmbientStrength() const { return m_ambientStrength; }
    void setAmbientStrength(float v) {
        OvUndoStack::noteMaterial(this);
        m_ambientStrength = v;
    }
    float getGlossinessStrength() const { return m_glossiness; }
    void setGlossinessStrength(float v) {
        OvUndoStack::noteMaterial(this);
        m_glossiness = v;
    }
    float getIndexOfRefraction() const { return m_ior; }
    void setIndexOfRefraction(float v) {
        OvUndoStack::noteMaterial(this);
        m_ior = v;
    }
    float getBumpStrength() const { return m_bumpStrength; }
    void setBumpStrength(float v) {
        OvUndoStack::noteMaterial(this);
        m_bumpStrength = v;
    }
    float getBumpMax() const { return m_bumpMax; }
    void setBumpMax(float v) {
        OvUndoStack::noteMaterial(this);
        m_bumpMax = v;
    }
    float getBumpMin() const { return m_bumpMin; }
    void setBumpMin(float v) {
        OvUndoStack::noteMaterial(this);
        m_bumpMin = v;
    }
    float getReflectionStrength() const { return m_reflectionStrength; }
    void setReflectionStrength(float v) {
        OvUndoStack::noteMaterial(this);
        m_reflectionStrength = v;
    }
    float getBaseOpacity() const { return m_baseOpacity; }
    void setBaseOpacity(float v) {
        OvUndoStack::noteMaterial(this);
        m_baseOpacity = v;
    }

    OvTexture *getAmbientColorMap() const { return m_ambientMap.get(); }
    void setAmbientColorMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_ambientMap = t;
    }
    OvTexture *getColorMap() const { return m_colorMap.get(); }
    void setColorMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_colorMap = t;
    }
    OvTexture *getSpecularColorMap() const { return m_specularMap.get(); }
    void setSpecularColorMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_specularMap = t;
    }
    OvTexture *getBumpMap() const { return m_bumpMap.get(); }
    void setBumpMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_bumpMap = t;
    }
    OvTexture *getOpacityMap() const { return m_opacityMap.get(); }
    void setOpacityMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_opacityMap = t;
    }
    OvTexture *getReflectionMap() const { return m_reflectionMap.get(); }
    void setReflectionMap(OvTexture *t) {
        OvUndoStack::noteMaterial(this);
        m_reflectionMap = t;
    }

private:
    QColor m_diffuse{255, 255, 255};
    QColor m_ambient{0, 0, 0};
    QColor m_specular{255, 255, 255};
    QColor m_reflection{255, 255, 255};
    float m_ambientStrength = 0.0f;
    float m_glossiness = 0.5f;
    float m_ior = 1.0f;
    float m_bumpStrength = 0.0f;
    float m_bumpMax = 1.0f;
    float m_bumpMin = -1.0f;
    float m_reflectionStrength = 0.0f;
    float m_baseOpacity = 1.0f;
    OvTSharedPointer<OvTexture> m_ambientMap, m_colorMap, m_specularMap, m_bumpMap, m_opacityMap,
        m_reflectionMap;
};
