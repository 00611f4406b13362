#pragma once
// Builds the tinygltf model of a scene (the file is written by GltfExport).

#include <QString>
#include <QStringList>
#include <tiny_gltf.h>

class OvScene;

struct ModelBuild {
    bool ok = true;
    QStringList errors;
    QStringList notes;
    QStringList sideFiles; // images written beside a .gltf, removed again when the export fails
};

// `outFile` tells where images referenced from a .gltf go; `embed` puts them into the buffer.
ModelBuild buildModel(tinygltf::Model &model, const OvScene &scene, int time, const QString &outFile,
                      bool embed);
