#include "MeshBuilder.h"

#include "ExportScene.h"

#include <OvPolyMesh.h>
#include <algorithm>
#include <cmath>

namespace {

// The vertex of each (position, UV) pair, made on first use. The vertices of one position are
// chained from it: a position rarely has more than two UVs, and no allocation is made per vertex.
class VertexTable {
public:
    VertexTable(const OvPolyMesh &mesh, BuiltMesh &out)
        : m_mesh(mesh), m_out(out), m_first(size_t(mesh.getNumVertices()), -1) {
        m_useUVs = mesh.getUVs()->getNumValues() > 0;
        // About one vertex per position: a few more where UV seams split them.
        const size_t expected = size_t(mesh.getNumVertices()) + size_t(mesh.getNumVertices()) / 8;
        m_out.sourceVertex.reserve(expected);
        m_uv.reserve(expected);
        m_next.reserve(expected);
        if (m_useUVs)
            m_out.uvs.reserve(2 * expected);
    }
    uint32_t vertex(int position, int uv) {
        if (!m_useUVs)
            uv = 0;
        for (int v = m_first[size_t(position)]; v >= 0; v = m_next[size_t(v)])
            if (m_uv[size_t(v)] == uv)
                return uint32_t(v);
        const int v = int(m_out.sourceVertex.size());
        m_out.sourceVertex.push_back(position);
        m_uv.push_back(uv);
        m_next.push_back(m_first[size_t(position)]);
        m_first[size_t(position)] = v;
        if (m_useUVs) {
            const float *t = m_mesh.getUVs()->getPnt2Value(std::min(uv, m_mesh.getUVs()->getNumValues() - 1));
            m_out.uvs.push_back(t[0]);
            m_out.uvs.push_back(1.0f - t[1]); // glTF counts v from the top of the image
        }
        return uint32_t(v);
    }

private:
    const OvPolyMesh &m_mesh;
    BuiltMesh &m_out;
    std::vector<int> m_first; // per position: its latest vertex, -1 for none
    std::vector<int> m_next;  // per vertex: the position's previous vertex
    std::vector<int> m_uv;    // per vertex
    bool m_useUVs = false;
};

// Area-weighted normal of every host vertex, summed over the faces around it (Newell's method,
// so that polygons that are not flat still give a fair normal). `at` holds the host positions.
std::vector<float> vertexNormals(const OvPolyMesh &mesh, const std::vector<float> &at) {
    std::vector<float> n(at.size(), 0.0f);
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        const int size = mesh.getFaceSize(f);
        double face[3] = {0, 0, 0};
        for (int c = 0; c < size; ++c) {
            const float *a = &at[3 * size_t(mesh.getFaceVertex(f, c))];
            const float *b = &at[3 * size_t(mesh.getFaceVertex(f, c + 1 < size ? c + 1 : 0))];
            face[0] += double(a[1] - b[1]) * (a[2] + b[2]);
            face[1] += double(a[2] - b[2]) * (a[0] + b[0]);
            face[2] += double(a[0] - b[0]) * (a[1] + b[1]);
        }
        const float add[3] = {float(face[0]), float(face[1]), float(face[2])};
        for (int c = 0; c < size; ++c) {
            float *to = &n[3 * size_t(mesh.getFaceVertex(f, c))];
            to[0] += add[0];
            to[1] += add[1];
            to[2] += add[2];
        }
    }
    for (size_t v = 0; v < n.size(); v += 3) {
        const float len = std::sqrt(n[v] * n[v] + n[v + 1] * n[v + 1] + n[v + 2] * n[v + 2]);
        if (len > 0 && std::isfinite(len))
            for (int k = 0; k < 3; ++k)
                n[v + size_t(k)] /= len;
        else
            n[v] = 0, n[v + 1] = 1, n[v + 2] = 0; // a lone or degenerate vertex: any unit vector will do
    }
    return n;
}

// The host positions in one plain array (a body part reads them through an index table), or
// empty when one is not a finite number.
std::vector<float> hostPositions(const OvPolyMesh &mesh) {
    std::vector<float> at(3 * size_t(mesh.getNumVertices()));
    for (int v = 0; v < mesh.getNumVertices(); ++v) {
        const float *p = mesh.getVertex(v);
        if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2]))
            return std::vector<float>();
        std::copy_n(p, 3, &at[3 * size_t(v)]);
    }
    return at;
}

// One part per material the faces use, in material order, with room for its triangles.
void makeParts(const OvPolyMesh &mesh, std::vector<BuiltMesh::Part> &parts) {
    std::vector<std::pair<int, size_t>> triangles; // per material
    auto run = triangles.end();
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        const int m = mesh.getFaceMaterial(f);
        if (run == triangles.end() || run->first != m) { // faces come in runs of one material
            run = std::lower_bound(triangles.begin(), triangles.end(), std::make_pair(m, size_t(0)));
            if (run == triangles.end() || run->first != m)
                run = triangles.insert(run, {m, 0});
        }
        run->second += size_t(std::max(mesh.getFaceSize(f) - 2, 0));
    }
    for (const auto &[m, count] : triangles) {
        parts.push_back({m, {}});
        parts.back().indices.reserve(3 * count);
    }
}

} // namespace

BuiltMesh buildMesh(const OvPolyMesh &mesh) {
    BuiltMesh out;
    const std::vector<float> at = hostPositions(mesh);
    if (at.size() != 3 * size_t(mesh.getNumVertices())) {
        out.finite = false;
        return out;
    }
    VertexTable table(mesh, out);
    makeParts(mesh, out.parts);
    std::vector<uint32_t> *indices = nullptr;
    int lastMaterial = -1;
    for (int f = 0; f < mesh.getNumFaces(); ++f) {
        const int size = mesh.getFaceSize(f);
        if (size < 3)
            continue; // points and lines draw nothing
        if (const int material = mesh.getFaceMaterial(f); material != lastMaterial || !indices) {
            lastMaterial = material;
            const auto part =
                std::lower_bound(out.parts.begin(), out.parts.end(), material,
                                 [](const BuiltMesh::Part &p, int m) { return p.material < m; });
            indices = &part->indices;
        }
        const uint32_t first = table.vertex(mesh.getFaceVertex(f, 0), mesh.getFaceUV(f, 0));
        uint32_t previous = table.vertex(mesh.getFaceVertex(f, 1), mesh.getFaceUV(f, 1));
        for (int c = 2; c < size; ++c) { // a fan: host polygons are convex
            const uint32_t next = table.vertex(mesh.getFaceVertex(f, c), mesh.getFaceUV(f, c));
            if (first != previous && previous != next && next != first)
                indices->insert(indices->end(), {first, previous, next});
            previous = next;
        }
    }
    out.parts.erase(std::remove_if(out.parts.begin(), out.parts.end(),
                                   [](const BuiltMesh::Part &p) { return p.indices.empty(); }),
                    out.parts.end());
    const std::vector<float> normals = vertexNormals(mesh, at);
    const size_t n = out.sourceVertex.size();
    out.positions.resize(3 * n);
    out.normals.resize(3 * n);
    for (size_t v = 0; v < n; ++v) {
        const size_t from = 3 * size_t(out.sourceVertex[v]);
        for (size_t k = 0; k < 3; ++k) {
            const float m = at[from + k] * kMetresPerHostUnit;
            out.positions[3 * v + k] = m;
            out.normals[3 * v + k] = normals[from + k];
            out.min[k] = v == 0 ? m : std::min(out.min[k], m);
            out.max[k] = v == 0 ? m : std::max(out.max[k], m);
        }
    }
    return out;
}

namespace {

// A unit vector at right angles to n.
void perpendicular(const float *n, float *out) {
    const float a[3] = {std::fabs(n[0]) < 0.9f ? 1.0f : 0.0f, std::fabs(n[0]) < 0.9f ? 0.0f : 1.0f, 0.0f};
    out[0] = a[1] * n[2] - a[2] * n[1];
    out[1] = a[2] * n[0] - a[0] * n[2];
    out[2] = a[0] * n[1] - a[1] * n[0];
    const float len = std::sqrt(out[0] * out[0] + out[1] * out[1] + out[2] * out[2]);
    for (int k = 0; k < 3; ++k)
        out[k] /= len;
}

} // namespace

std::vector<float> vertexTangents(const BuiltMesh &mesh) {
    const size_t n = mesh.sourceVertex.size();
    std::vector<double> tan(3 * n, 0.0), bitan(3 * n, 0.0);
    for (const BuiltMesh::Part &part : mesh.parts)
        for (size_t i = 0; i + 2 < part.indices.size(); i += 3) {
            const uint32_t v[3] = {part.indices[i], part.indices[i + 1], part.indices[i + 2]};
            double e1[3], e2[3];
            for (int k = 0; k < 3; ++k) {
                e1[k] = double(mesh.positions[3 * v[1] + k]) - mesh.positions[3 * v[0] + k];
                e2[k] = double(mesh.positions[3 * v[2] + k]) - mesh.positions[3 * v[0] + k];
            }
            const double du1 = double(mesh.uvs[2 * v[1]]) - mesh.uvs[2 * v[0]];
            const double dv1 = double(mesh.uvs[2 * v[1] + 1]) - mesh.uvs[2 * v[0] + 1];
            const double du2 = double(mesh.uvs[2 * v[2]]) - mesh.uvs[2 * v[0]];
            const double dv2 = double(mesh.uvs[2 * v[2] + 1]) - mesh.uvs[2 * v[0] + 1];
            const double det = du1 * dv2 - du2 * dv1;
            if (std::fabs(det) < 1e-20)
                continue;
            for (int c = 0; c < 3; ++c)
                for (int k = 0; k < 3; ++k) {
                    tan[3 * v[c] + size_t(k)] += (e1[k] * dv2 - e2[k] * dv1) / det;
                    bitan[3 * v[c] + size_t(k)] += (e2[k] * du1 - e1[k] * du2) / det;
                }
        }
    std::vector<float> out(4 * n);
    for (size_t v = 0; v < n; ++v) {
        const float *nrm = &mesh.normals[3 * v];
        double t[3];
        const double along = tan[3 * v] * nrm[0] + tan[3 * v + 1] * nrm[1] + tan[3 * v + 2] * nrm[2];
        for (int k = 0; k < 3; ++k) // Gram-Schmidt: at right angles to the normal
            t[k] = tan[3 * v + size_t(k)] - along * nrm[k];
        const double len = std::sqrt(t[0] * t[0] + t[1] * t[1] + t[2] * t[2]);
        float *o = &out[4 * v];
        if (len > 1e-12 && std::isfinite(len)) {
            for (int k = 0; k < 3; ++k)
                o[k] = float(t[k] / len);
        } else {
            perpendicular(nrm, o);
        }
        const double cross[3] = {nrm[1] * t[2] - nrm[2] * t[1], nrm[2] * t[0] - nrm[0] * t[2],
                                 nrm[0] * t[1] - nrm[1] * t[0]};
        const double hand =
            cross[0] * bitan[3 * v] + cross[1] * bitan[3 * v + 1] + cross[2] * bitan[3 * v + 2];
        o[3] = hand < 0 ? -1.0f : 1.0f;
    }
    return out;
}
