#pragma once
// Host materials as glTF metallic-roughness materials: diffuse colour and map as base colour,
// opacity (value and map) as alpha with alpha blending, the bump (height) map turned into a normal
// map, glossiness as roughness. Images are embedded in a .glb and referenced from a .gltf; images
// made here (a normal map, a colour map with the opacity map as alpha) are written beside a .gltf.

#include "GltfBuffer.h"
#include <QHash>
#include <QString>
#include <QStringList>

class OvMaterial;
class OvTexture;
class QImage;

class MaterialWriter {
public:
    // `outFile` is the file being written; `embed` puts images into the buffer.
    MaterialWriter(GltfBuffer &buffer, const QString &outFile, bool embed);
    // The glTF material of a host material (null: a plain grey one), made once per material.
    int material(const OvMaterial *material);
    // Problems worth telling (images that could not be read or written).
    const QStringList &notes() const { return m_notes; }
    // Side files written for a .gltf.
    const QStringList &sideFiles() const { return m_sideFiles; }

private:
    int texture(const QString &key, const QString &sourcePath, const QImage *made);
    int image(const QString &sourcePath, const QImage *made);

    GltfBuffer &m_buffer;
    QString m_outFile;
    bool m_embed;
    QHash<const OvMaterial *, int> m_materials;
    QHash<QString, int> m_textures;
    QStringList m_notes;
    QStringList m_sideFiles;
    int m_sampler = -1;
};

// A tangent-space normal map from a height map: slopes by central differences, wrapping at the
// edges (maps tile), `depth` scaling the heights (0..1 per grey level range).
QImage normalMapFromHeight(const QImage &height, float depth);
