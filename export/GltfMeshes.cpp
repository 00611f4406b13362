#include "GltfMeshes.h"

#include "GltfNames.h"
#include "Materials.h"
#include "MeshBuilder.h"
#include "MorphTargets.h"
#include "Skins.h"

#include <OvMorph.h>
#include <OvShape.h>

namespace {

// The loaded morph target's POSITION accessor: sparse over a zero-filled array, or dense.
int targetAccessor(GltfBuffer &buffer, const MorphTargets &t) {
    const std::vector<uint32_t> &moved = t.moved();
    if (!t.sparse()) {
        int view = -1;
        t.writeDense(
            buffer.appendView<float>(3 * size_t(t.vertexCount()), TINYGLTF_TARGET_ARRAY_BUFFER, &view));
        return buffer.floatAccessor(view, 3, true);
    }
    tinygltf::Accessor a;
    if (shortIndices(moved.back())) {
        std::copy(moved.begin(), moved.end(),
                  buffer.appendView<uint16_t>(moved.size(), 0, &a.sparse.indices.bufferView));
        a.sparse.indices.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    } else {
        a.sparse.indices.bufferView = buffer.addView(moved.data(), 4 * moved.size());
        a.sparse.indices.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    }
    t.writeMoved(buffer.appendView<float>(3 * moved.size(), 0, &a.sparse.values.bufferView));
    a.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
    a.type = TINYGLTF_TYPE_VEC3;
    a.count = size_t(t.vertexCount());
    a.minValues = {t.min(0), t.min(1), t.min(2)};
    a.maxValues = {t.max(0), t.max(1), t.max(2)};
    a.sparse.isSparse = true;
    a.sparse.count = int(moved.size());
    // tinygltf leaves these offsets uninitialised and writes them as they are.
    a.sparse.indices.byteOffset = 0;
    a.sparse.values.byteOffset = 0;
    return buffer.addAccessor(std::move(a));
}

} // namespace

WrittenMesh MeshWriter::write(const ExportShape &shape, const QString &name, int time) {
    const auto key = std::make_tuple(static_cast<const void *>(shape.mesh), shape.joint, shape.morphs);
    if (auto it = m_written.find(key); it != m_written.end())
        return it->second;
    WrittenMesh out;
    const BuiltMesh built = buildMesh(*shape.mesh);
    if (!built.finite) {
        m_report.errors << QStringLiteral("the mesh of %1 has a position that is not a number").arg(name);
        return out;
    }
    if (built.parts.empty()) {
        m_report.notes << QStringLiteral("%1 has no faces to draw: left out").arg(name);
        return out;
    }
    tinygltf::Mesh mesh;
    mesh.name = name.toStdString();
    std::map<std::string, int> attributes;
    attributes["POSITION"] = m_buffer.addFloats(built.positions, 3, true, TINYGLTF_TARGET_ARRAY_BUFFER);
    attributes["NORMAL"] = m_buffer.addFloats(built.normals, 3, false, TINYGLTF_TARGET_ARRAY_BUFFER);
    if (!built.uvs.empty())
        attributes["TEXCOORD_0"] = m_buffer.addFloats(built.uvs, 2, false, TINYGLTF_TARGET_ARRAY_BUFFER);
    if (shape.joint >= 0)
        bindAll(m_buffer, shape.joint, built.sourceVertex.size(), &attributes["JOINTS_0"],
                &attributes["WEIGHTS_0"]);
    bool normalMapped = false;
    for (const BuiltMesh::Part &part : built.parts) {
        tinygltf::Primitive p;
        p.mode = TINYGLTF_MODE_TRIANGLES;
        p.indices = m_buffer.addIndices(part.indices, TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
        const bool known = part.material >= 0 && part.material < shape.shape->getNumMaterials();
        p.material = m_materials.material(known ? shape.shape->getMaterial(part.material) : nullptr);
        normalMapped =
            normalMapped || m_buffer.model().materials[size_t(p.material)].normalTexture.index >= 0;
        mesh.primitives.push_back(p);
    }
    // Normal maps need the surface's tangents; viewers would each make their own otherwise.
    if (normalMapped && !built.uvs.empty())
        attributes["TANGENT"] =
            m_buffer.addFloats(vertexTangents(built), 4, false, TINYGLTF_TARGET_ARRAY_BUFFER);
    for (tinygltf::Primitive &p : mesh.primitives)
        p.attributes = attributes;
    addTargets(mesh, shape, built, name, out);
    if (!m_report.errors.isEmpty())
        return out;
    for (const OvMorph *m : out.morphs)
        mesh.weights.push_back(m->getValueChannel()->getValueAt(time));
    m_buffer.model().meshes.push_back(std::move(mesh));
    out.mesh = int(m_buffer.model().meshes.size()) - 1;
    m_written[key] = out;
    return out;
}

void MeshWriter::addTargets(tinygltf::Mesh &mesh, const ExportShape &shape, const BuiltMesh &built,
                            const QString &name, WrittenMesh &out) {
    GltfNames targetNames;
    tinygltf::Value::Array names;
    MorphTargets t(built, shape.mesh->getNumVertices());
    for (const OvMorph *m : shape.morphs) {
        t.load(*m->getDeltas());
        if (!t.finite()) {
            m_report.errors << QStringLiteral("morph %1 of %2 has an offset that is not a number")
                                   .arg(m->getName(), name);
            return;
        }
        if (t.moved().empty()) {
            m_report.notes
                << QStringLiteral("morph %1 of %2 moves no vertex: left out").arg(m->getName(), name);
            continue;
        }
        const int accessor = targetAccessor(m_buffer, t);
        for (tinygltf::Primitive &p : mesh.primitives)
            p.targets.push_back({{"POSITION", accessor}});
        names.emplace_back(targetNames.make(m->getName(), "morph"));
        out.morphs.push_back(m);
    }
    if (!names.empty()) {
        tinygltf::Value::Object extras;
        extras["targetNames"] = tinygltf::Value(names);
        mesh.extras = tinygltf::Value(extras);
    }
}
