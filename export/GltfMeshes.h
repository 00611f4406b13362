#pragma once
// glTF meshes of the scene's shapes: one primitive per material, the vertex arrays shared by the
// primitives, morph targets (sparse where smaller) named in extras.targetNames, and for a body part
// the binding to its bone. A host mesh shown by several nodes with the same morphs and joint is
// written once.

#include "ExportScene.h"
#include "GltfBuffer.h"
#include "GltfModel.h"
#include <map>
#include <tuple>
#include <vector>

class MaterialWriter;

struct WrittenMesh {
    int mesh = -1;                       // -1 when the shape could not be written
    std::vector<const OvMorph *> morphs; // the morphs that became targets, in target order
};

class MeshWriter {
public:
    MeshWriter(GltfBuffer &buffer, MaterialWriter &materials, ModelBuild &report)
        : m_buffer(buffer), m_materials(materials), m_report(report) {}
    WrittenMesh write(const ExportShape &shape, const QString &name, int time);

private:
    void addTargets(tinygltf::Mesh &mesh, const ExportShape &shape, const struct BuiltMesh &built,
                    const QString &name, WrittenMesh &out);

    GltfBuffer &m_buffer;
    MaterialWriter &m_materials;
    ModelBuild &m_report;
    std::map<std::tuple<const void *, int, std::vector<const OvMorph *>>, WrittenMesh> m_written;
};
