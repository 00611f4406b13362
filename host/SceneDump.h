#pragma once
// The host scene as a readable tree and as JSON; one function per host class, so both grow with
// the scene model.

#include <QString>
#include <QTextStream>

class OvScene;

struct ImportReport {
    unsigned result = 0;
    bool includeMeshData = true; // full vertex, UV, face and group lists in the JSON
};

void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report);
void writeSceneTree(QTextStream &out, const OvScene &scene);
