#pragma once
// Structural checks every imported scene must pass, whatever the input: used by the test suites and
// the fuzz targets. Each problem found is one line of text; an empty list means the scene is sound.
//
// The scene check also requires every reference between scene objects to stay inside the scene:
// skeleton properties (follow targets), welds, a magnet's base and zones, deformer modifiers and the
// sources of ERC links and the properties linked ones follow; no property may be computed from
// itself through ERC links and property links. A mesh shared by several shapes is checked once.

#include <QStringList>

class OvScene;
class OvNode;
class OvShape;
class OvPolyMesh;

QStringList checkSceneInvariants(const OvScene &scene);
// The same checks on one subtree, except the references between nodes (there is no scene to hold
// their targets).
QStringList checkNodeInvariants(const OvNode &node);
QStringList checkShapeInvariants(const OvShape &shape);
QStringList checkMeshInvariants(const OvPolyMesh &mesh, int materialCount = -1);
