#pragma once
// Figures as glTF skins: the bones are the joints, the skeleton node their root. Each body part is
// cut from the figure's geometry by its own face group, so every vertex of a part is bound to its
// part's bone with weight 1. Poser's bending (joint zones blending neighbouring bones) is not
// reproduced: parts turn rigidly and seams may open at strongly bent joints.

#include "ExportScene.h"
#include "GltfBuffer.h"
#include <cstdint>
#include <vector>

// The inverse bind matrix of a joint: the figure's geometry is drawn with every transform at
// rest, where a bone sits at its origin, so the matrix moves the origin back to 0 (column-major).
std::vector<float> inverseBindMatrix(const OvVec3 &origin);

// One skin per figure (same index as ExportScene::figures); joints name glTF nodes, which are the
// export nodes in the same order.
std::vector<int> writeSkins(GltfBuffer &buffer, const ExportScene &scene);

// JOINTS_0 and WEIGHTS_0 of `vertices` vertices all bound to `joint`.
void bindAll(GltfBuffer &buffer, int joint, size_t vertices, int *jointsAccessor, int *weightsAccessor);
