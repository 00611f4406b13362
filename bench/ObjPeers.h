#pragma once
// Open OBJ readers that Debian packages, read in the same process and run as ours so that the
// benchmark reports ratios rather than absolute speeds. Each peer is built in only when its
// development package was found when the build was configured.

#include <vector>

namespace bench {

struct PeerResult {
    bool ok = false;
    double seconds = 0;
    // What the peer read, to show that every reader saw the same mesh (-1: the peer does not say).
    long long vertices = -1, uvs = -1, faces = -1;
};

struct ObjPeer {
    const char *name;
    PeerResult (*read)(const char *path);
};

const std::vector<ObjPeer> &objPeers();

} // namespace bench
