#pragma once
// The host scene as JSON (SceneJson.cpp) and as a readable tree (SceneTree.cpp), both written
// along the same walk of the scene (SceneWalk.h).

#include <QString>
#include <QTextStream>

class OvScene;
class QIODevice;

struct ImportReport {
    unsigned result = 0;
    bool includeMeshData = true; // full vertex, UV, face and group lists in the JSON
    int frame = -1;              // property values at this frame; -1: at the scene's time
};

// The JSON goes to `out` as bytes; the text-stream form writes to the stream's device (or string).
void writeSceneJson(QIODevice &out, const OvScene &scene, const ImportReport &report);
void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report);
void writeSceneTree(QTextStream &out, const OvScene &scene, int frame = -1);
