#include "OvPolyMesh.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>
#include <utility>
#if defined(__linux__)
#include <sys/mman.h>
#endif

void OvPolyMesh::beginEdit(bool) {
    m_editing = true;
}

void OvPolyMesh::finishEdit() {
    m_editing = false;
    m_vertices.shrinkToFit();
    m_uvs.shrinkToFit();
    m_faceStart.shrinkToFit();
    m_cornerVerts.shrinkToFit();
    m_cornerUVs.shrinkToFit();
    m_faceMaterial.shrinkToFit();
    for (Group &g : m_groups)
        g.faces.shrinkToFit();
}

bool OvPolyMesh::finishFace() {
    size_t end = m_cornerVerts.size();
    if (!m_faceOk || end == m_faceFirst) {
        m_cornerVerts.truncate(m_faceFirst);
        m_cornerUVs.truncate(m_faceFirst);
        m_faceOk = true;
        return false;
    }
    if (m_hasAllFacesGroup)
        listAllFacesGroups();
    int face = int(m_faceMaterial.size());
    m_faceStart.push_back(int(end));
    m_faceMaterial.push_back(m_activeMaterial);
    for (int g : m_activeGroups)
        m_groups[size_t(g)].faces.push_back(face);
    m_faceFirst = end;
    return true;
}

// A face whose corners are in range, through the corner-by-corner builder.
int OvPolyMesh::addCheckedFace(const int *vertices, const int *uvs, int n) {
    startFace();
    m_cornerVerts.append(vertices, size_t(n));
    m_cornerUVs.append(uvs, size_t(n));
    finishFace();
    return -1;
}

void OvPolyMesh::listAllFacesGroups() {
    for (Group &g : m_groups)
        if (g.allFaces) {
            g.faces.resize(size_t(getNumFaces()));
            for (size_t i = 0; i < g.faces.size(); ++i)
                g.faces[i] = int(i);
            g.allFaces = false;
        }
    m_hasAllFacesGroup = false;
}

int OvPolyMesh::findFaceGroup(const QString &name) const {
    if (m_groups.size() > kHashedGroups)
        return m_groupIndex.value(name, -1);
    for (size_t g = 0; g < m_groups.size(); ++g)
        if (m_groups[g].name == name)
            return int(g);
    return -1;
}

int OvPolyMesh::activateFaceGroup(const QString &name) {
    int g = findFaceGroup(name);
    if (g < 0) {
        g = int(m_groups.size());
        m_groups.push_back(Group{name, {}});
        if (m_groups.size() == kHashedGroups + 1)
            for (size_t i = 0; i < m_groups.size(); ++i)
                m_groupIndex.insert(m_groups[i].name, int(i));
        else if (m_groups.size() > kHashedGroups + 1)
            m_groupIndex.insert(name, g);
    }
    if (std::find(m_activeGroups.begin(), m_activeGroups.end(), g) == m_activeGroups.end())
        m_activeGroups.push_back(g);
    return g;
}

namespace {

// Zero-filled table of ints for one cut: old index to new index + 1. A large one is a fresh mapping,
// so only the pages the group's indices touch become resident, and all of it is returned after the
// cut instead of staying with the mesh for the next one.
class ZeroedInts {
public:
    explicit ZeroedInts(size_t n) : m_bytes(n * sizeof(int)) {
#if defined(__linux__)
        if (m_bytes >= kMapped) {
            void *p = mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (p == MAP_FAILED)
                throw std::bad_alloc();
            m_data = static_cast<int *>(p);
            m_mapped = true;
            return;
        }
#endif
        m_data = static_cast<int *>(std::calloc(n ? n : 1, sizeof(int)));
        if (!m_data)
            throw std::bad_alloc();
    }
    ~ZeroedInts() {
#if defined(__linux__)
        if (m_mapped) {
            munmap(m_data, m_bytes);
            return;
        }
#endif
        std::free(m_data);
    }
    ZeroedInts(const ZeroedInts &) = delete;
    ZeroedInts &operator=(const ZeroedInts &) = delete;
    int *data() {
        return m_data;
    }

private:
    static constexpr size_t kMapped = size_t(64) << 10;
    int *m_data = nullptr;
    size_t m_bytes;
    bool m_mapped = false;
};

// Old index to new index + 1 for vertices and UVs during one cut, and the old indices in new order.
struct CutTables {
    int *newVertex; // from vertex `vertexBase` on
    int *newUV;     // from UV `uvBase` on
    int vertexBase;
    int uvBase;
    size_t nuv;
    OvPodArray<int> &vertexSource;
    OvPodArray<int> &uvSource;
};

// Renumbers the corners of a cut's faces into `cv`/`cuv` and writes its face starts. One loop per
// source and output width, so the branches on them are not taken per corner.
template <class FaceOf, class Start, class Corner, class Out>
void cutCorners(size_t nf, const FaceOf &faceOf, const Start &start, const Corner &corner, CutTables &t,
                Out *cv, Out *cuv, OvIndexArray &faceStart) {
    size_t k = 0;
    for (size_t i = 0; i < nf; ++i) {
        const size_t f = faceOf(i);
        const size_t end = start(f + 1);
        for (size_t c = start(f); c < end; ++c, ++k) {
            const auto [sv, suv] = corner(c);
            int &v = t.newVertex[sv - t.vertexBase];
            if (v == 0) {
                t.vertexSource.push_back(sv);
                v = int(t.vertexSource.size());
            }
            // A UV index past the map only occurs in a UV-less mesh (index 0 with an empty map).
            int uv = 1;
            if (size_t(suv) < t.nuv) {
                int &nt = t.newUV[suv - t.uvBase];
                if (nt == 0) {
                    t.uvSource.push_back(suv);
                    nt = int(t.uvSource.size());
                }
                uv = nt;
            }
            cv[k] = Out(v - 1);
            cuv[k] = Out(uv - 1);
        }
        faceStart.set(i + 1, int(k));
    }
}

// Where a cut's renumbered corners go, and the source vertices and UVs it uses in new order.
struct CutOutput {
    OvIndexArray &cornerVerts;
    OvIndexArray &cornerUVs;
    OvIndexArray &faceStart;
    OvPodArray<int> &vertexSource;
    OvPodArray<int> &uvSource;
};

// Renumbers the `corners` corners of a group's `nf` faces (of a mesh with `nv` vertices and `nuv`
// UVs) into `out`. The renumbering tables span only the indices the group uses: a body part's are a
// small run of the whole mesh's, so a cut does not touch a table as large as the whole mesh.
template <class FaceOf, class Start, class Corner>
void renumberCorners(size_t nf, size_t corners, size_t nv, size_t nuv, const FaceOf &faceOf,
                     const Start &start, const Corner &corner, CutOutput &out) {
    int vLow = INT_MAX, vHigh = -1, uvLow = INT_MAX, uvHigh = -1;
    for (size_t i = 0; i < nf; ++i) {
        const size_t f = faceOf(i);
        for (size_t c = start(f), end = start(f + 1); c < end; ++c) {
            const auto [sv, suv] = corner(c);
            vLow = std::min(vLow, sv);
            vHigh = std::max(vHigh, sv);
            if (size_t(suv) < nuv) {
                uvLow = std::min(uvLow, suv);
                uvHigh = std::max(uvHigh, suv);
            }
        }
    }
    const size_t vSpan = size_t(std::max(vHigh - vLow + 1, 0));
    ZeroedInts scratch(vSpan + size_t(std::max(uvHigh - uvLow + 1, 0)));
    out.vertexSource.reserve(std::min(corners, nv));
    out.uvSource.reserve(std::min(corners, nuv));
    CutTables t{scratch.data(), scratch.data() + vSpan, vLow, uvLow, nuv, out.vertexSource, out.uvSource};
    // New indices count up from 0, so the cut's corner arrays can be narrow when it has fewer than
    // 65536 corners or the source has fewer vertices and UVs.
    const size_t limit = size_t(OvIndexArray::kMaxShort) + 1;
    if (std::min(corners, nv) <= limit && std::min(corners, nuv) <= limit)
        cutCorners(nf, faceOf, start, corner, t, out.cornerVerts.resizeNarrow(corners),
                   out.cornerUVs.resizeNarrow(corners), out.faceStart);
    else
        cutCorners(nf, faceOf, start, corner, t, out.cornerVerts.resizeWide(corners),
                   out.cornerUVs.resizeWide(corners), out.faceStart);
}

} // namespace

OvPolyMesh *OvPolyMesh::createMeshFromGroup(const QString &name, std::vector<int> *materialIndices) const {
    int g = findFaceGroup(name);
    if (g < 0)
        return nullptr;
    const size_t nf = size_t(getNumFaceGroupFaces(g));
    size_t corners = 0;
    int largestMaterial = 0;
    if (materialIndices)
        materialIndices->clear();
    for (size_t i = 0; i < nf; ++i) {
        const int f = getFaceGroupFace(g, int(i));
        corners += size_t(getFaceSize(f));
        largestMaterial = std::max(largestMaterial, getFaceMaterial(f));
        // Faces come in runs of one material: only a change is worth remembering before the sort.
        if (materialIndices && (materialIndices->empty() || materialIndices->back() != getFaceMaterial(f)))
            materialIndices->push_back(getFaceMaterial(f));
    }
    if (materialIndices) {
        std::sort(materialIndices->begin(), materialIndices->end());
        materialIndices->erase(std::unique(materialIndices->begin(), materialIndices->end()),
                               materialIndices->end());
        largestMaterial = int(materialIndices->size()) - 1;
    }

    auto *mesh = new OvPolyMesh;
    mesh->setName(name);
    // Face starts run up to the corner count, materials up to the largest one used: a body part's
    // tables fit in 16 bits.
    mesh->m_faceStart.resizeFor(nf + 1, corners > size_t(OvIndexArray::kMaxShort) ? -1 : int(corners));
    mesh->m_faceStart.set(0, 0);
    mesh->m_faceMaterial.resizeFor(nf, largestMaterial);

    const size_t nv = size_t(getNumVertices()), nuv = size_t(m_uvs.getNumValues());
    OvPodArray<int> vertexSource, uvSource;
    CutOutput out{mesh->m_cornerVerts, mesh->m_cornerUVs, mesh->m_faceStart, vertexSource, uvSource};
    const auto faceOf = [this, g](size_t i) { return size_t(getFaceGroupFace(g, int(i))); };
    const int *starts = m_faceStart.wideData(), *verts = m_cornerVerts.wideData(),
              *uvs = m_cornerUVs.wideData();
    if (starts && verts && uvs) { // a mesh read from a file: its 32-bit tables are read straight
        const auto corner = [verts, uvs](size_t c) { return std::pair<int, int>(verts[c], uvs[c]); };
        const auto start = [starts](size_t f) { return size_t(starts[f]); };
        renumberCorners(nf, corners, nv, nuv, faceOf, start, corner, out);
    } else {
        const auto corner = [this](size_t c) {
            return std::pair<int, int>(m_cornerVerts[c], m_cornerUVs[c]);
        };
        const auto start = [this](size_t f) { return size_t(m_faceStart[f]); };
        renumberCorners(nf, corners, nv, nuv, faceOf, start, corner, out);
    }
    int lastMaterial = -1, lastPosition = 0;
    for (size_t i = 0; i < nf; ++i) {
        int m = getFaceMaterial(int(faceOf(i)));
        if (materialIndices) {
            if (m != lastMaterial) {
                lastMaterial = m;
                lastPosition = int(std::lower_bound(materialIndices->begin(), materialIndices->end(), m) -
                                   materialIndices->begin());
            }
            m = lastPosition;
        }
        mesh->m_faceMaterial.set(i, m);
    }

    mesh->m_vertices.shareFrom(m_vertices, std::move(vertexSource));
    mesh->m_uvs.m_values.shareFrom(m_uvs.m_values, std::move(uvSource));
    mesh->m_groups.push_back(Group{name, {}, true});
    mesh->m_hasAllFacesGroup = true;
    return mesh;
}

size_t OvPolyMesh::dataBytes() const {
    size_t n = m_vertices.bytes() + m_uvs.bytes() + m_faceStart.bytes() + m_cornerVerts.bytes() +
               m_cornerUVs.bytes() + m_faceMaterial.bytes();
    for (const Group &g : m_groups)
        n += g.faces.bytes();
    return n;
}
