#pragma once
// The host scene as JSON (SceneJson.cpp) and as a readable tree (SceneTree.cpp), both written
// along the same walk of the scene (SceneWalk.h).

#include <QString>
#include <QTextStream>

class OvScene;
class QIODevice;

#include <OvApp.h>
#include <QList>

// One file of an ovimport run: its result and its own part of the log.
struct ImportRecord {
    QString file;
    unsigned result = 0;
    QList<OvApp::LogEntry> log;
};

struct ImportReport {
    unsigned result = 0;
    bool includeMeshData = true; // full vertex, UV, face and group lists in the JSON
    int frame = -1;              // property values at this frame; -1: at the scene's time
    // Several files (or --undo): each file's record, written as "imports"; the log is theirs, joined.
    QList<ImportRecord> imports;
    bool undoAsked = false; // --undo: "undo" tells what was undone
    QString undoneStep;     // caption of the step undone; empty when none was
};

// The JSON goes to `out` as bytes; the text-stream form writes to the stream's device (or string).
void writeSceneJson(QIODevice &out, const OvScene &scene, const ImportReport &report);
void writeSceneJson(QTextStream &out, const OvScene &scene, const ImportReport &report);
void writeSceneTree(QTextStream &out, const OvScene &scene, int frame = -1);
