#pragma once
// What every Poser fuzz target checks after an import: the scene invariants, and that both scene
// dumps can be written (they walk everything the import made).

#include "support/SceneInvariants.h"

#include <OvApp.h>
#include <OvScene.h>
#include <QBuffer>
#include <QTextStream>
#include <SceneDump.h>
#include <cstdio>
#include <cstdlib>

inline void checkImportedScene(const char *target, unsigned result) {
    const OvScene &scene = *OvApp::getScene();
    const QStringList problems = checkSceneInvariants(scene);
    if (!problems.isEmpty()) {
        std::fprintf(stderr, "%s: scene invariants broken:\n%s\n", target, qPrintable(problems.join('\n')));
        std::abort();
    }
    QBuffer sink;
    sink.open(QIODevice::WriteOnly);
    QTextStream out(&sink);
    ImportReport report;
    report.result = result;
    writeSceneJson(out, scene, report);
    writeSceneTree(out, scene);
    out.flush();
    if (sink.size() == 0) {
        std::fprintf(stderr, "%s: the scene dump wrote nothing\n", target);
        std::abort();
    }
}
