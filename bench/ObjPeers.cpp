#include "ObjPeers.h"

#include <chrono>
#include <string>

#ifdef OV_HAVE_TINYOBJLOADER
#include <tiny_obj_loader.h>
#endif
#ifdef OV_HAVE_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

double since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

#ifdef OV_HAVE_TINYOBJLOADER
// Polygons kept as they are (no triangulation) and the MTL library read, as our reader does.
PeerResult readTinyObj(const char *path) {
    PeerResult r;
    const auto start = Clock::now();
    tinyobj::ObjReader reader;
    tinyobj::ObjReaderConfig config;
    config.triangulate = false;
    r.ok = reader.ParseFromFile(path, config);
    r.seconds = since(start);
    if (r.ok) {
        const tinyobj::attrib_t &attrib = reader.GetAttrib();
        r.vertices = (long long)attrib.vertices.size() / 3;
        r.uvs = (long long)attrib.texcoords.size() / 2;
        r.faces = 0;
        for (const tinyobj::shape_t &shape : reader.GetShapes())
            r.faces += (long long)shape.mesh.num_face_vertices.size();
    }
    return r;
}
#endif

#ifdef OV_HAVE_ASSIMP
// Assimp splits vertices per corner and meshes per material, so only the face count compares.
PeerResult readAssimp(const char *path) {
    PeerResult r;
    const auto start = Clock::now();
    Assimp::Importer importer;
    const aiScene *scene = importer.ReadFile(path, 0);
    r.seconds = since(start);
    r.ok = scene != nullptr;
    if (r.ok) {
        r.faces = 0;
        for (unsigned i = 0; i < scene->mNumMeshes; ++i)
            r.faces += scene->mMeshes[i]->mNumFaces;
    }
    return r;
}
#endif

} // namespace

const std::vector<ObjPeer> &objPeers() {
    static const std::vector<ObjPeer> peers = {
#ifdef OV_HAVE_TINYOBJLOADER
        {"tinyobjloader", &readTinyObj},
#endif
#ifdef OV_HAVE_ASSIMP
        {"assimp", &readAssimp},
#endif
    };
    return peers;
}

} // namespace bench
