#pragma once
// A host polygon mesh as glTF wants it: triangles, one vertex per distinct position and UV pair
// (a position with several UVs is split), smooth normals, positions in metres.

#include <cstdint>
#include <vector>

class OvPolyMesh;

struct BuiltMesh {
    std::vector<float> positions;  // x y z per vertex, metres
    std::vector<float> normals;    // unit length
    std::vector<float> uvs;        // u v per vertex (v from the top); empty when the mesh has none
    std::vector<int> sourceVertex; // the host vertex each vertex came from
    struct Part {
        int material = 0; // index into the shape's materials
        std::vector<uint32_t> indices;
    };
    std::vector<Part> parts; // one per material used, in material order
    float min[3] = {0, 0, 0};
    float max[3] = {0, 0, 0};
    bool finite = true; // false when a position is not a finite number (nothing else is then built)
};

BuiltMesh buildMesh(const OvPolyMesh &mesh);

// Unit tangents along u with the handedness of the UV map in w (x y z w per vertex), for normal
// maps; a vertex whose UVs give no direction takes any tangent at right angles to its normal.
std::vector<float> vertexTangents(const BuiltMesh &mesh);
