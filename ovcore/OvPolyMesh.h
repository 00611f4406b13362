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

// A map of 2-float values (texture coordinates).
class OvMap {
public:
    int getNumValues() const { return int(m_values.size() / 2); }
    void appendPnt2Value(const float *uv) { m_values.append(uv, 2); }
    const float *getPnt2Value(int i) const { return m_values.data() + 2 * size_t(i); }
    void reserve(int n) { m_values.reserve(2 * size_t(n)); }
    void clear() { m_values.clear(); }
    size_t bytes() const { return m_values.bytes(); }

private:
    OvPodArray<float> m_values;
};

class OvPolyMesh : public OvGeometry {
public:
    const char *className() const override { return "OvPolyMesh"; }

    // Editing brackets; finishEdit trims the arrays to their contents.
    void beginEdit(bool keepTopology = false);
    void finishEdit();
    bool isEditing() const { return m_editing; }

    int getNumVertices() const { return int(m_vertices.size() / 3); }
    // Grows (or shrinks) the vertex array to n vertices and returns it as float triples.
    float *setVertexArray(int n);
    const float *getVertex(int i) const { return m_vertices.data() + 3 * size_t(i); }
    const float *getVertexArray() const { return m_vertices.data(); }

    OvMap *getUVs() { return &m_uvs; }
    const OvMap *getUVs() const { return &m_uvs; }

    void startFace() {
        m_faceOk = true;
        m_faceFirst = m_cornerVerts.size();
    }
    // Adds a corner; false (and the face will be dropped) when an index is out of range. A UV
    // index of 0 is accepted while the UV map is still empty: readers add a default UV at the end.
    bool addFaceEdge(int vertex, int uv) {
        int nv = int(m_vertices.size() / 3);
        int nuv = m_uvs.getNumValues();
        if (vertex < 0 || vertex >= nv || uv < 0 || (uv >= nuv && uv != 0)) {
            m_faceOk = false;
            return false;
        }
        m_cornerVerts.push_back(vertex);
        m_cornerUVs.push_back(uv);
        return true;
    }
    // Ends the face; false when it was dropped.
    bool finishFace();

    // Face groups: following faces join every active group.
    int activateFaceGroup(const QString &name);
    void deactivateAllFaceGroups() { m_activeGroups.clear(); }
    // Material index (into the owning shape's material list) of the following faces.
    void activateMaterial(int index) { m_activeMaterial = index; }

    int getNumFaces() const { return int(m_faceMaterial.size()); }
    int getFaceSize(int f) const { return m_faceStart[size_t(f) + 1] - m_faceStart[size_t(f)]; }
    const int *getFaceVertices(int f) const { return m_cornerVerts.data() + m_faceStart[size_t(f)]; }
    const int *getFaceUVs(int f) const { return m_cornerUVs.data() + m_faceStart[size_t(f)]; }
    int getFaceMaterial(int f) const { return m_faceMaterial[size_t(f)]; }
    int getNumCorners() const { return int(m_cornerVerts.size()); }

    int getNumFaceGroups() const { return int(m_groups.size()); }
    const QString &getFaceGroupName(int g) const { return m_groups[size_t(g)].name; }
    const OvPodArray<int> &getFaceGroupFaces(int g) const { return m_groups[size_t(g)].faces; }
    int findFaceGroup(const QString &name) const { return m_groupIndex.value(name, -1); }

    // A new mesh with the faces of one group, its vertices and UVs renumbered in first-use order;
    // null when there is no such group. With `materialIndices`, that list receives the material
    // indices the group's faces use (ascending) and the new faces refer to positions in it.
    OvPolyMesh *createMeshFromGroup(const QString &name, std::vector<int> *materialIndices = nullptr) const;

    // Memory held by the mesh arrays, for benchmarks.
    size_t dataBytes() const;

private:
    struct Group {
        QString name;
        OvPodArray<int> faces;
    };

    OvPodArray<float> m_vertices;
    OvMap m_uvs;
    OvPodArray<int> m_faceStart{initialFaceStart()};
    OvPodArray<int> m_cornerVerts;
    OvPodArray<int> m_cornerUVs;
    OvPodArray<int> m_faceMaterial;
    std::vector<Group> m_groups;
    QHash<QString, int> m_groupIndex;
    std::vector<int> m_activeGroups;
    int m_activeMaterial = 0;
    size_t m_faceFirst = 0;
    bool m_faceOk = true;
    bool m_editing = false;

    static OvPodArray<int> initialFaceStart() {
        OvPodArray<int> a;
        a.push_back(0);
        return a;
    }
};
