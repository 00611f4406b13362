#pragma once
// What every Poser fuzz target checks after an import: the scene invariants, and that both scene
// dumps can be written (they walk everything the import made).

#include "support/SceneInvariants.h"

#include <OvApp.h>
#include <OvScene.h>
#include <QBuffer>
#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>
#include <SceneDump.h>
#include <cstdio>
#include <cstdlib>
#include <poser/OvPZ3Importer.h>

inline void checkImportedScene(const char *target, unsigned result) {
    const OvScene &scene = *OvApp::getScene();
    const QStringList problems = checkSceneInvariants(scene);
    if (!problems.isEmpty()) {
        std::fprintf(stderr, "%s: scene invariants broken:\n%s\n", target, qPrintable(problems.join('\n')));
        std::abort();
    }
    QBuffer sink;
    sink.open(QIODevice::WriteOnly);
    ImportReport report;
    report.result = result;
    writeSceneJson(sink, scene, report);
    QTextStream out(&sink);
    writeSceneTree(out, scene);
    out.flush();
    if (sink.size() == 0) {
        std::fprintf(stderr, "%s: the scene dump wrote nothing\n", target);
        std::abort();
    }
}

// The application, no Qt messages on the console, and the folder a Poser target writes its files to.
inline QTemporaryDir *startPoserFuzzing(int *argc, char ***argv) {
    static QCoreApplication app(*argc, *argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    auto *dir = new QTemporaryDir;
    if (!dir->isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        std::abort();
    }
    return dir;
}

// Imports `path` into a fresh scene with `contentDir` as the content folder, then checks the scene.
inline void importAndCheck(const char *target, const QString &path, const QString &contentDir) {
    OvApp::reset();
    OvApp::getContentMgr()->addPoserDirectory(contentDir);
    {
        OvPZ3Importer importer;
        unsigned result = 0;
        try {
            result = importer.read(path, OvFileIOSettings());
        } catch (const QString &) {
            // Out of memory is the only thing read may throw; the fuzzer's memory limit is lower.
        }
        checkImportedScene(target, result);
    }
    OvApp::reset();
}
