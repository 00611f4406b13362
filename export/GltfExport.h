#pragma once
// Writes the host scene as glTF 2.0: nodes with their transforms, meshes with materials and
// textures, morph targets, figures as skins and the keyed animation.

#include <QString>
#include <QStringList>

class OvScene;

struct GltfExportResult {
    bool ok = false;
    QStringList errors; // why nothing was written
    QStringList notes;  // what was changed or left out on the way
};

// Writes `scene` to `path`: binary glTF for a name ending in .glb (images inside), JSON for .gltf
// (the buffer in a .bin and made images in .png files beside it, texture files referenced where
// they are). Node transforms and morph weights are those at host time `time`.
GltfExportResult exportGltf(const OvScene &scene, const QString &path, int time);
