#pragma once
// Writes a built model to its files. The JSON text is tinygltf's; the buffer's bytes are taken out
// of the model first and written from where they are (tinygltf would copy them for a .glb), so
// tinygltf serialises an empty buffer and the buffer's length and file are put into its text.

#include <QString>
#include <tiny_gltf.h>

// A binary glTF: the header, the JSON chunk padded with spaces, the BIN chunk padded with zeros.
bool writeGlbFile(tinygltf::Model &model, const QString &path);
// A .gltf and its buffer in `binFile`, which the JSON names `binUri`; the buffer is written and
// released before the JSON is made. A name that JSON would escape is left to tinygltf altogether.
bool writeGltfFiles(tinygltf::Model &model, const QString &path, const QString &binFile,
                    const std::string &binUri);
