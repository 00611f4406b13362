#include "OvPolyMesh.h"

#include <algorithm>

void OvPolyMesh::beginEdit(bool) { m_editing = true; }

void OvPolyMesh::finishEdit() {
    m_editing = false;
    m_vertices.shrinkToFit();
    m_faceStart.shrinkToFit();
    m_cornerVerts.shrinkToFit();
    m_cornerUVs.shrinkToFit();
    m_faceMaterial.shrinkToFit();
    for (Group &g : m_groups)
        g.faces.shrinkToFit();
}

float *OvPolyMesh::setVertexArray(int n) {
    m_vertices.resize(3 * size_t(n < 0 ? 0 : n));
    return m_vertices.data();
}

bool OvPolyMesh::finishFace() {
    size_t end = m_cornerVerts.size();
    if (!m_faceOk || end == m_faceFirst) {
        m_cornerVerts.truncate(m_faceFirst);
        m_cornerUVs.truncate(m_faceFirst);
        m_faceOk = true;
        return false;
    }
    int face = int(m_faceMaterial.size());
    m_faceStart.push_back(int(end));
    m_faceMaterial.push_back(m_activeMaterial);
    for (int g : m_activeGroups)
        m_groups[size_t(g)].faces.push_back(face);
    m_faceFirst = end;
    return true;
}

int OvPolyMesh::activateFaceGroup(const QString &name) {
    auto it = m_groupIndex.constFind(name);
    int g;
    if (it == m_groupIndex.constEnd()) {
        g = int(m_groups.size());
        m_groups.push_back(Group{name, {}});
        m_groupIndex.insert(name, g);
    } else {
        g = *it;
    }
    if (std::find(m_activeGroups.begin(), m_activeGroups.end(), g) == m_activeGroups.end())
        m_activeGroups.push_back(g);
    return g;
}

OvPolyMesh *OvPolyMesh::createMeshFromGroup(const QString &name, std::vector<int> *materialIndices) const {
    int g = findFaceGroup(name);
    if (g < 0)
        return nullptr;
    const OvPodArray<int> &faces = m_groups[size_t(g)].faces;
    if (materialIndices) {
        materialIndices->clear();
        for (int f : faces)
            materialIndices->push_back(getFaceMaterial(f));
        std::sort(materialIndices->begin(), materialIndices->end());
        materialIndices->erase(std::unique(materialIndices->begin(), materialIndices->end()), materialIndices->end());
    }
    auto *mesh = new OvPolyMesh;
    mesh->setName(name);
    std::vector<int> vmap(size_t(getNumVertices()), -1);
    std::vector<int> uvmap(size_t(m_uvs.getNumValues()), -1);
    int nv = 0, nuv = 0;
    for (int f : faces) {
        const int *fv = getFaceVertices(f);
        const int *fuv = getFaceUVs(f);
        for (int c = 0, n = getFaceSize(f); c < n; ++c) {
            if (vmap[size_t(fv[c])] < 0)
                vmap[size_t(fv[c])] = nv++;
            if (size_t(fuv[c]) < uvmap.size() && uvmap[size_t(fuv[c])] < 0)
                uvmap[size_t(fuv[c])] = nuv++;
        }
    }
    float *dst = mesh->setVertexArray(nv);
    for (size_t v = 0; v < vmap.size(); ++v)
        if (vmap[v] >= 0)
            std::copy_n(getVertex(int(v)), 3, dst + 3 * size_t(vmap[v]));
    std::vector<float> uvs(2 * size_t(nuv));
    for (size_t t = 0; t < uvmap.size(); ++t)
        if (uvmap[t] >= 0)
            std::copy_n(m_uvs.getPnt2Value(int(t)), 2, uvs.data() + 2 * size_t(uvmap[t]));
    mesh->m_uvs.reserve(nuv);
    for (int t = 0; t < nuv; ++t)
        mesh->m_uvs.appendPnt2Value(uvs.data() + 2 * size_t(t));
    mesh->beginEdit(false);
    mesh->activateFaceGroup(name);
    for (int f : faces) {
        const int *fv = getFaceVertices(f);
        const int *fuv = getFaceUVs(f);
        int m = getFaceMaterial(f);
        if (materialIndices)
            m = int(std::lower_bound(materialIndices->begin(), materialIndices->end(), m) - materialIndices->begin());
        mesh->activateMaterial(m);
        mesh->startFace();
        for (int c = 0, n = getFaceSize(f); c < n; ++c) {
            int uv = size_t(fuv[c]) < uvmap.size() ? uvmap[size_t(fuv[c])] : 0;
            mesh->addFaceEdge(vmap[size_t(fv[c])], uv);
        }
        mesh->finishFace();
    }
    mesh->finishEdit();
    return mesh;
}

size_t OvPolyMesh::dataBytes() const {
    size_t n = m_vertices.bytes() + m_uvs.bytes() + m_faceStart.bytes() + m_cornerVerts.bytes() +
               m_cornerUVs.bytes() + m_faceMaterial.bytes();
    for (const Group &g : m_groups)
        n += g.faces.bytes();
    return n;
}
