#pragma once
// Structural checks every imported scene must pass, whatever the input: used by the test suites and
// the fuzz targets. Each problem found is one line of text; an empty list means the scene is sound.

#include <QStringList>

class OvScene;
class OvNode;
class OvShape;
class OvPolyMesh;

QStringList checkSceneInvariants(const OvScene &scene);
QStringList checkNodeInvariants(const OvNode &node);
QStringList checkShapeInvariants(const OvShape &shape);
QStringList checkMeshInvariants(const OvPolyMesh &mesh, int materialCount = -1);
