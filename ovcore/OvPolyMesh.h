#pragma once
// Polygon meshes: vertices, one UV map, faces with a vertex and a UV index per corner, a material
// index per face, and named face groups (a face may belong to several).
//
// Faces are built corner by corner between startFace and finishFace. The builder refuses corners
// whose indices are out of range; a face with a refused corner (or no corner) is dropped whole, so
// the mesh never stores an index it cannot resolve.

#include "OvTypes.h"
#include <QHash>
#include <QString>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

class OvGeometry : public OvRefCountedItem {
public:
    virtual ~OvGeometry() = default;
    virtual const char *className() const = 0;
    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

private:
    QString m_name;
};

// Float values of one mesh array. A mesh cut from another keeps reading the vertices and UVs it
// uses from the other's storage through an index table instead of copying them; the storage is
// shared by reference count, so it outlives the mesh it came from. Writing makes it one's own.
struct OvFloatStore : OvRefCountedItem {
    OvPodArray<float> values;
};

template <int N> class OvFloatTuples {
public:
    OvFloatTuples() : m_store(new OvFloatStore) {}
    OvFloatTuples(const OvFloatTuples &) = default; // shares the storage until one side writes
    OvFloatTuples &operator=(const OvFloatTuples &) = default;

    int count() const { return m_count; }
    const float *at(int i) const { return m_store->values.data() + N * storageIndex(i); }
    float *resize(int n) {
        makeOwn();
        m_store->values.resize(N * size_t(n));
        m_count = n;
        return m_store->values.data();
    }
    void append(const float *v) {
        if (m_indexed || m_store->refCount() > 1)
            makeOwn();
        m_store->values.append(v, N);
        ++m_count;
    }
    void reserve(int n) {
        makeOwn();
        m_store->values.reserve(N * size_t(n));
    }
    void clear() {
        m_store = new OvFloatStore; // nothing to copy on the way out of a shared storage
        m_index = OvPodArray<int>();
        m_index16 = OvPodArray<uint16_t>();
        m_indexed = false;
        m_count = 0;
    }
    void shrinkToFit() {
        if (!m_indexed && m_store->refCount() == 1)
            m_store->values.shrinkToFit();
    }
    // Reads tuple i as `source`'s tuple index[i] from now on. A table whose entries lie within 65536
    // of each other (a body part's vertices usually do) is kept in 16 bits above its smallest entry.
    void shareFrom(const OvFloatTuples &source, OvPodArray<int> index) {
        const size_t n = index.size();
        int lowest = index.empty() ? 0 : INT32_MAX, highest = 0;
        for (size_t i = 0; i < index.size(); ++i) {
            if (source.m_indexed)
                index[i] = int(source.storageIndex(index[i]));
            lowest = std::min(lowest, index[i]);
            highest = std::max(highest, index[i]);
        }
        m_store = source.m_store;
        m_index = OvPodArray<int>();
        m_index16 = OvPodArray<uint16_t>();
        if (highest - lowest <= 0xFFFF) {
            m_index16.resize(index.size());
            for (size_t i = 0; i < index.size(); ++i)
                m_index16[i] = uint16_t(index[i] - lowest);
            m_base = size_t(lowest);
        } else {
            m_index = std::move(index);
            m_index.shrinkToFit();
        }
        m_indexed = true;
        m_count = int(n);
    }
    bool sharesStorageWith(const OvFloatTuples &o) const { return m_store == o.m_store; }
    // The storage read through the index table of a shared array (null for an array of its own) and
    // its bytes: arrays that share it count it once between them.
    const void *sharedStorage() const {
        return m_indexed ? static_cast<const void *>(m_store.get()) : nullptr;
    }
    size_t storageBytes() const { return m_store->values.bytes(); }
    // Bytes this array holds alone: the index table of a shared one, the storage otherwise.
    size_t bytes() const { return m_indexed ? m_index.bytes() + m_index16.bytes() : m_store->values.bytes(); }
    // True when the index table of a shared array is kept in 16 bits.
    bool hasNarrowIndex() const { return m_indexed && !m_index16.empty(); }

private:
    void makeOwn() {
        if (m_indexed) {
            OvTSharedPointer<OvFloatStore> own(new OvFloatStore);
            own->values.resize(N * size_t(m_count));
            for (int i = 0; i < m_count; ++i)
                std::memcpy(own->values.data() + N * size_t(i), at(i), N * sizeof(float));
            m_store = own;
            m_index = OvPodArray<int>();
            m_index16 = OvPodArray<uint16_t>();
            m_indexed = false;
        } else if (m_store->refCount() > 1) {
            OvTSharedPointer<OvFloatStore> own(new OvFloatStore);
            own->values = m_store->values;
            m_store = own;
        }
    }

    size_t storageIndex(int i) const {
        if (!m_indexed)
            return size_t(i);
        return m_index16.empty() ? size_t(m_index[size_t(i)]) : m_base + m_index16[size_t(i)];
    }

    OvTSharedPointer<OvFloatStore> m_store;
    OvPodArray<int> m_index;
    OvPodArray<uint16_t> m_index16; // used instead of m_index when not empty
    size_t m_base = 0;
    int m_count = 0;
    bool m_indexed = false;
};

// Per-corner indices, face starts and face materials. A mesh cut from another, whose values all fit
// in 16 bits (body parts' do), keeps them in half the memory; a value that does not fit widens the
// array first.
class OvIndexArray {
public:
    size_t size() const { return m_narrow ? m_short.size() : m_wide.size(); }
    bool isNarrow() const { return m_narrow; }
    // The entries of a 32-bit array, for loops over many of them; null for a narrow one.
    const int *wideData() const { return m_narrow ? nullptr : m_wide.data(); }
    int operator[](size_t k) const { return m_narrow ? int(m_short[k]) : m_wide[k]; }
    void push_back(int v) {
        if (!m_narrow)
            m_wide.push_back(v);
        else if (v >= 0 && v <= kMaxShort)
            m_short.push_back(uint16_t(v));
        else
            widenThenPush(v);
    }
    void append(const int *v, size_t n) {
        if (!m_narrow)
            m_wide.append(v, n);
        else
            for (size_t i = 0; i < n; ++i)
                push_back(v[i]);
    }
    // Room for n more indices at the end, filled by the caller; null for a narrow array.
    int *extendWide(size_t n) {
        if (m_narrow)
            return nullptr;
        const size_t old = m_wide.size();
        m_wide.resize(old + n);
        return m_wide.data() + old;
    }
    void truncate(size_t n) { m_narrow ? m_short.truncate(n) : m_wide.truncate(n); }
    void shrinkToFit() { m_narrow ? m_short.shrinkToFit() : m_wide.shrinkToFit(); }
    size_t bytes() const { return m_short.bytes() + m_wide.bytes(); }
    // Storage for n indices below 65536 (narrow) or of any size, filled by the caller.
    uint16_t *resizeNarrow(size_t n) {
        m_wide = OvPodArray<int>();
        m_narrow = true;
        m_short.resize(n);
        return m_short.data();
    }
    int *resizeWide(size_t n) {
        m_short = OvPodArray<uint16_t>();
        m_narrow = false;
        m_wide.resize(n);
        return m_wide.data();
    }
    // n entries, narrow when `largest` fits in 16 bits; filled with set().
    void resizeFor(size_t n, int largest) {
        if (largest >= 0 && largest <= kMaxShort)
            resizeNarrow(n);
        else
            resizeWide(n);
    }
    // Entry k of an array sized by resizeFor, with a value no larger than it was sized for.
    void set(size_t k, int v) {
        if (m_narrow)
            m_short[k] = uint16_t(v);
        else
            m_wide[k] = v;
    }
    static constexpr int kMaxShort = 0xFFFF;

private:
    void widenThenPush(int v) {
        m_wide.resize(m_short.size());
        for (size_t i = 0; i < m_short.size(); ++i)
            m_wide[i] = m_short[i];
        m_short = OvPodArray<uint16_t>();
        m_narrow = false;
        m_wide.push_back(v);
    }

    OvPodArray<int> m_wide;
    OvPodArray<uint16_t> m_short;
    bool m_narrow = false;
};

// A map of 2-float values (texture coordinates).
class OvMap {
public:
    int getNumValues() const { return m_values.count(); }
    void appendPnt2Value(const float *uv) { m_values.append(uv); }
    const float *getPnt2Value(int i) const { return m_values.at(i); }
    void reserve(int n) { m_values.reserve(n); }
    void clear() { m_values.clear(); }
    void shrinkToFit() { m_values.shrinkToFit(); }
    size_t bytes() const { return m_values.bytes(); }
    bool sharesStorageWith(const OvMap &o) const { return m_values.sharesStorageWith(o.m_values); }

private:
    friend class OvPolyMesh;
    OvFloatTuples<2> m_values;
};

class OvPolyMesh : public OvGeometry {
public:
    const char *className() const override { return "OvPolyMesh"; }

    // Editing brackets; finishEdit trims the arrays to their contents.
    void beginEdit(bool keepTopology = false);
    void finishEdit();
    bool isEditing() const { return m_editing; }

    int getNumVertices() const { return m_vertices.count(); }
    // Grows (or shrinks) the vertex array to n vertices and returns it as float triples.
    float *setVertexArray(int n) { return m_vertices.resize(n < 0 ? 0 : n); }
    const float *getVertex(int i) const { return m_vertices.at(i); }
    // True when this mesh reads its vertices from `o`'s storage (a mesh cut from `o`).
    bool sharesVerticesWith(const OvPolyMesh &o) const { return m_vertices.sharesStorageWith(o.m_vertices); }
    // Storages of other meshes this one reads through index tables (vertices, UVs; null when own),
    // with their bytes, so that a scene's data can count each once.
    std::array<std::pair<const void *, size_t>, 2> sharedStorages() const {
        return {{{m_vertices.sharedStorage(), m_vertices.storageBytes()},
                 {m_uvs.m_values.sharedStorage(), m_uvs.m_values.storageBytes()}}};
    }

    OvMap *getUVs() { return &m_uvs; }
    const OvMap *getUVs() const { return &m_uvs; }

    void startFace() {
        m_faceOk = true;
        m_faceFirst = m_cornerVerts.size();
    }
    // Adds a corner; false (and the face will be dropped) when an index is out of range. A UV
    // index of 0 is accepted while the UV map is still empty: readers add a default UV at the end.
    bool addFaceEdge(int vertex, int uv) {
        if (!cornerInRange(vertex, uv, m_vertices.count(), m_uvs.getNumValues())) {
            m_faceOk = false;
            return false;
        }
        m_cornerVerts.push_back(vertex);
        m_cornerUVs.push_back(uv);
        return true;
    }
    // Ends the face; false when it was dropped.
    bool finishFace();
    // A whole face from the indices of its n corners, as startFace, addFaceEdge for each corner and
    // finishFace add it: -1 when no corner was refused, else the first refused one (the face is
    // then dropped). A face without corners is not added.
    int addFace(const int *vertices, const int *uvs, int n) {
        const int nv = m_vertices.count(), nuv = m_uvs.getNumValues();
        for (int i = 0; i < n; ++i)
            if (!cornerInRange(vertices[i], uvs[i], nv, nuv))
                return i;
        // Readers add millions of faces: into wide arrays, the corners are copied in place.
        if (n == 0 || m_hasAllFacesGroup || m_cornerVerts.isNarrow() || m_cornerUVs.isNarrow())
            return addCheckedFace(vertices, uvs, n);
        int *cv = m_cornerVerts.extendWide(size_t(n)), *cuv = m_cornerUVs.extendWide(size_t(n));
        for (int i = 0; i < n; ++i) {
            cv[i] = vertices[i];
            cuv[i] = uvs[i];
        }
        const int face = int(m_faceMaterial.size());
        m_faceFirst = m_cornerVerts.size();
        m_faceStart.push_back(int(m_faceFirst));
        m_faceMaterial.push_back(m_activeMaterial);
        for (int g : m_activeGroups)
            m_groups[size_t(g)].faces.push_back(face);
        return -1;
    }

    // Face groups: following faces join every active group.
    int activateFaceGroup(const QString &name);
    void deactivateAllFaceGroups() { m_activeGroups.clear(); }
    // Material index (into the owning shape's material list) of the following faces.
    void activateMaterial(int index) { m_activeMaterial = index; }

    int getNumFaces() const { return int(m_faceMaterial.size()); }
    int getFaceSize(int f) const { return m_faceStart[size_t(f) + 1] - m_faceStart[size_t(f)]; }
    // True when the mesh keeps its corner, face-start and face-material tables, and the index tables
    // through which it reads another mesh's vertices and UVs, in 16 bits each.
    bool hasNarrowTables() const {
        return m_cornerVerts.isNarrow() && m_cornerUVs.isNarrow() && m_faceStart.isNarrow() &&
               m_faceMaterial.isNarrow() && m_vertices.hasNarrowIndex() && m_uvs.m_values.hasNarrowIndex();
    }
    // Vertex and UV index of corner c of face f.
    int getFaceVertex(int f, int c) const {
        return m_cornerVerts[size_t(m_faceStart[size_t(f)]) + size_t(c)];
    }
    int getFaceUV(int f, int c) const { return m_cornerUVs[size_t(m_faceStart[size_t(f)]) + size_t(c)]; }
    int getFaceMaterial(int f) const { return m_faceMaterial[size_t(f)]; }
    int getNumCorners() const { return int(m_cornerVerts.size()); }

    int getNumFaceGroups() const { return int(m_groups.size()); }
    const QString &getFaceGroupName(int g) const { return m_groups[size_t(g)].name; }
    // The faces of group g, ascending.
    int getNumFaceGroupFaces(int g) const {
        const Group &gr = m_groups[size_t(g)];
        return gr.allFaces ? getNumFaces() : int(gr.faces.size());
    }
    int getFaceGroupFace(int g, int i) const {
        const Group &gr = m_groups[size_t(g)];
        return gr.allFaces ? i : gr.faces[size_t(i)];
    }
    int findFaceGroup(const QString &name) const;

    // A new mesh with the faces of one group, its vertices and UVs renumbered in first-use order;
    // null when there is no such group. With `materialIndices`, that list receives the material
    // indices the group's faces use (ascending) and the new faces refer to positions in it. The new
    // mesh copies its faces but reads its vertices and UVs from this mesh's storage.
    OvPolyMesh *createMeshFromGroup(const QString &name, std::vector<int> *materialIndices = nullptr) const;

    // Memory held by the mesh arrays, for benchmarks.
    size_t dataBytes() const;

private:
    struct Group {
        QString name;
        OvPodArray<int> faces;
        bool allFaces = false; // a cut mesh's own group holds every face without listing them
    };
    static bool cornerInRange(int vertex, int uv, int nv, int nuv) {
        return vertex >= 0 && vertex < nv && uv >= 0 && (uv < nuv || uv == 0);
    }
    int addCheckedFace(const int *vertices, const int *uvs, int n);
    // Lists the faces of every all-faces group, before faces are added.
    void listAllFacesGroups();
    // Groups are found by name through a hash once there are more than a few.
    static constexpr size_t kHashedGroups = 8;

    OvFloatTuples<3> m_vertices;
    OvMap m_uvs;
    OvIndexArray m_faceStart{initialFaceStart()};
    OvIndexArray m_cornerVerts;
    OvIndexArray m_cornerUVs;
    OvIndexArray m_faceMaterial;
    std::vector<Group> m_groups;
    QHash<QString, int> m_groupIndex;
    std::vector<int> m_activeGroups;
    int m_activeMaterial = 0;
    size_t m_faceFirst = 0;
    bool m_faceOk = true;
    bool m_editing = false;
    bool m_hasAllFacesGroup = false;

    static OvIndexArray initialFaceStart() {
        OvIndexArray a;
        a.push_back(0);
        return a;
    }
};
