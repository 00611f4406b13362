// ovimport: a headless host. It loads the importer plug-in the way the desktop host does, runs one
// import into its scene and prints the log and the resulting scene.
#include "GltfExport.h"
#include "PluginHost.h"
#include "SceneDump.h"

#include <OvApp.h>
#include <OvNode.h>
#include <OvScene.h>
#include <OvTextInputFile.h>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <cstdio>

namespace {

const char *const kUsage =
    "usage: ovimport [options] FILE [[--select NAME] [--at-frame N] FILE]...\n"
    "\n"
    "Imports each FILE (a Poser file or a Wavefront OBJ) in turn through the importer plug-in into one\n"
    "scene, which starts empty, prints the import log to stderr and the resulting scene as a tree to\n"
    "stdout.\n"
    "\n"
    "options:\n"
    "  --plugin PATH        importer plug-in to load (default: PoserImporters.so next to ovimport)\n"
    "  --content DIR        add a Poser content folder (repeatable; searched in the order given)\n"
    "  --option KEY=VALUE   override one of the importer's default options, e.g. Scale=100,\n"
    "                       SwapYZ=true, IncludeG=false, IncludeVT, IncludeUsemtl, IncludeMtllib, Preset\n"
    "  --select NAME        select the node the following files (poses, hand poses...) apply to: the\n"
    "                       first node labelled NAME, else the first one named NAME; a figure is\n"
    "                       selected by its label or its name\n"
    "  --at-frame N         set the scene's current frame to N before the next import\n"
    "  --undo               undo the last import (a pose, a light or camera set) before printing\n"
    "  --json OUT           write the whole scene and the log as JSON to OUT ('-' for stdout,\n"
    "                       which replaces the tree); format: docs/scene-json.md\n"
    "  --gltf OUT           write the scene as glTF 2.0 to OUT (.glb, or .gltf with a .bin beside it);\n"
    "                       docs/gltf-export.md says what is written\n"
    "  --no-mesh-data       leave vertex, UV, face and group lists out of the JSON (counts stay)\n"
    "  --no-tree            do not print the tree\n"
    "  --frame N            show property values at frame N (tree and JSON) instead of at the\n"
    "                       scene's current time\n"
    "  --answer ANSWER      answer the questions the import asks with yes, no or cancel (default:\n"
    "                       the host's default, as a host without a window cannot ask); the log\n"
    "                       says what was asked and answered. The hand question takes yes for the\n"
    "                       right hand, no for the left\n"
    "  --drop-at X,Y,Z      import as if dropped at that point of the scene (host units): what the\n"
    "                       files create moves there, and at height 0 comes to rest on the floor\n"
    "  --list-importers     list the plug-in's importers and exit\n"
    "  --debug              also print the importers' debug traces\n"
    "  --max-expansion N    stop a compressed file whose text grows past N times its compressed\n"
    "                       size (default 250; checked from 64 MB of text on)\n"
    "  --max-text-mb N      stop a compressed file whose text grows past N MB (default 4096)\n"
    "  --help               show this text\n"
    "\n"
    "exit status: 0 when every import succeeded, 1 when one failed, 2 on a usage or plug-in error,\n"
    "3 when an import was refused: it reported success (as a cancelled node dialog does) but logged\n"
    "an error and changed nothing while nothing was selected, as a pose without --select does.\n";

bool g_debug = false;

void messageHandler(QtMsgType type, const QMessageLogContext &, const QString &text) {
    if (type == QtDebugMsg && !g_debug)
        return;
    const char *prefix = type == QtDebugMsg ? "debug" : type == QtInfoMsg ? "note" : "warning";
    std::fprintf(stderr, "%s: %s\n", prefix, qPrintable(text));
}

int usageError(const QString &message) {
    std::fprintf(stderr, "ovimport: %s\n(try ovimport --help)\n", qPrintable(message));
    return 2;
}

// Exports the scene; false (after saying why) when nothing could be written.
bool writeGltf(const OvScene &scene, const QString &path, int time) {
    const GltfExportResult r = exportGltf(scene, path, time);
    for (const QString &note : r.notes)
        std::fprintf(stderr, "note: glTF: %s\n", qPrintable(note));
    for (const QString &error : r.errors)
        std::fprintf(stderr, "ovimport: glTF export failed: %s\n", qPrintable(error));
    return r.ok;
}

// One file to import, with the selection and frame to set up before it.
struct FileStep {
    QString file;
    QString select;
    int atFrame = -1;
};

struct RunOptions {
    HostOptions host;
    QString jsonOut, gltfOut;
    OvContentDropOptions drop; // lives as long as the content manager points at it
    bool tree = true, listOnly = false, meshData = true, undo = false;
    int frame = -1;
    QList<FileStep> files;
};

bool setAnswer(const QString &v) {
    static const char *const answers[] = {"yes", "no", "cancel"};
    static const OvApp::Answer codes[] = {OvApp::AnswerYes, OvApp::AnswerNo, OvApp::AnswerCancel};
    for (int k = 0; k < 3; ++k)
        if (v == QLatin1String(answers[k])) {
            OvApp::setHeadlessAnswer(codes[k]);
            return true;
        }
    return false;
}

bool setLimit(const QString &a, const QString &v) {
    bool ok = false;
    const double n = v.toDouble(&ok);
    if (!ok || n < 1)
        return false;
    OvTextInputFile::Limits limits = OvTextInputFile::limits();
    if (a == QLatin1String("--max-expansion"))
        limits.maxExpansion = n;
    else
        limits.maxTextBytes = qint64(n * 1048576.0);
    OvTextInputFile::setLimits(limits);
    return true;
}

// Options that take a value; false with `error` set when the value is missing or wrong.
bool valueOption(const QString &a, const QString &v, bool present, RunOptions &o, FileStep &pending,
                 QString &error) {
    bool ok = true;
    int n = -1;
    if (a == QLatin1String("--plugin")) {
        o.host.pluginPath = v;
    } else if (a == QLatin1String("--content")) {
        o.host.contentDirs.append(v);
    } else if (a == QLatin1String("--option")) {
        ok = v.contains(QLatin1Char('='));
        o.host.options.append(v);
    } else if (a == QLatin1String("--json")) {
        o.jsonOut = v;
    } else if (a == QLatin1String("--gltf")) {
        o.gltfOut = v;
    } else if (a == QLatin1String("--drop-at")) {
        const QStringList xyz = v.split(QLatin1Char(','));
        ok = xyz.size() == 3;
        OvVec3 point;
        for (int k = 0; ok && k < 3; ++k)
            point[k] = xyz[k].toFloat(&ok);
        if (ok) {
            o.drop = OvContentDropOptions(nullptr, OvContentDropOptions::PlaceAtPoint, point);
            OvApp::getContentMgr()->setContentDropOptions(&o.drop);
        }
    } else if (a == QLatin1String("--select")) {
        ok = !v.isEmpty();
        pending.select = v;
    } else if (a == QLatin1String("--frame") || a == QLatin1String("--at-frame")) {
        n = v.toInt(&ok);
        ok = ok && n >= 0;
        (a == QLatin1String("--frame") ? o.frame : pending.atFrame) = n;
    } else if (a == QLatin1String("--answer")) {
        ok = setAnswer(v);
    } else {
        ok = setLimit(a, v);
    }
    static const QHash<QString, QString> needs = {{"--plugin", "a path"},
                                                  {"--content", "a folder"},
                                                  {"--option", "KEY=VALUE"},
                                                  {"--json", "a file name or -"},
                                                  {"--gltf", "a file name"},
                                                  {"--drop-at", "a point X,Y,Z"},
                                                  {"--select", "a node name"},
                                                  {"--frame", "a frame number of 0 or more"},
                                                  {"--at-frame", "a frame number of 0 or more"},
                                                  {"--answer", "yes, no or cancel"},
                                                  {"--max-expansion", "a number of at least 1"},
                                                  {"--max-text-mb", "a number of at least 1"}};
    if (!ok || !present)
        error = QStringLiteral("%1 needs %2").arg(a, needs.value(a));
    return ok && present;
}

// -1 when the arguments are fine, else the exit status.
int parseArgs(const QStringList &args, RunOptions &o) {
    static const QStringList withValue = {"--plugin",   "--content", "--option",        "--json",
                                          "--gltf",     "--drop-at", "--select",        "--frame",
                                          "--at-frame", "--answer",  "--max-expansion", "--max-text-mb"};
    FileStep pending;
    for (int i = 1; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (withValue.contains(a)) {
            const bool present = i + 1 < args.size();
            QString error;
            if (!valueOption(a, present ? args[++i] : QString(), present, o, pending, error))
                return usageError(error);
        } else if (a == QLatin1String("--no-tree")) {
            o.tree = false;
        } else if (a == QLatin1String("--no-mesh-data")) {
            o.meshData = false;
        } else if (a == QLatin1String("--list-importers")) {
            o.listOnly = true;
        } else if (a == QLatin1String("--debug")) {
            g_debug = true;
        } else if (a == QLatin1String("--undo")) {
            o.undo = true;
        } else if (a.startsWith(QLatin1String("--"))) {
            return usageError(QStringLiteral("unknown option %1").arg(a));
        } else {
            pending.file = a;
            o.files.append(pending);
            pending = FileStep();
        }
    }
    if (!pending.select.isEmpty() || pending.atFrame >= 0)
        return usageError(QStringLiteral("--select and --at-frame apply to a file that follows them"));
    return -1;
}

// The first node labelled `name` (depth first), else the first one whose object name it is.
OvNode *findNode(const OvScene &scene, const QString &name) {
    if (OvNode *labelled = scene.findNodeByLabel(name))
        return labelled;
    OvNode *found = nullptr;
    for (int i = 0; i < scene.getNumNodes() && !found; ++i)
        forEachNode(scene.getNode(i), [&](OvNode *n) {
            if (!found && n->getName() == name)
                found = n;
            return !found;
        });
    return found;
}

void printLog(const QList<OvApp::LogEntry> &log) {
    for (const OvApp::LogEntry &e : log)
        std::fprintf(stderr, "%s: %s\n", e.level == OvApp::LogError ? "error" : "info", qPrintable(e.text));
}

// The importer has no result code for "no target": headless, a pose with nothing selected returns
// success, as a cancelled node dialog does, and only its log says so. The host tells it by what it
// left: an error in the log, still nothing selected, and no undo step or top-level node added.
bool refusedForWantOfTarget(const OvScene &scene, int stepsBefore, int nodesBefore) {
    if (scene.getPrimarySelection() || int(scene.undoSteps().size()) != stepsBefore ||
        scene.getNumNodes() != nodesBefore)
        return false;
    for (const OvApp::LogEntry &e : OvApp::log())
        if (e.level == OvApp::LogError)
            return true;
    return false;
}

// Imports the files in order; -1 when every import ran, else the exit status.
// `stepsBeforeLast` counts the undo steps before the last import, so --undo can tell whether it made
// one; `refused` counts the imports refused for want of a target.
int importAll(PluginHost &host, const RunOptions &o, ImportReport &report, int *stepsBeforeLast,
              int *refused) {
    OvScene *scene = OvApp::getScene();
    for (const FileStep &step : o.files) {
        if (!step.select.isEmpty()) {
            OvNode *node = findNode(*scene, step.select);
            if (!node)
                return usageError(QStringLiteral("--select %1: no node of the scene is labelled or named so")
                                      .arg(step.select));
            scene->setPrimarySelection(node);
        }
        if (step.atFrame >= 0)
            scene->setTime(step.atFrame * scene->getTimeStep());
        OvApp::clearLog();
        *stepsBeforeLast = int(scene->undoSteps().size());
        const bool selected = scene->getPrimarySelection() != nullptr;
        const int nodesBefore = scene->getNumNodes();
        const ImportOutcome outcome = host.import(step.file, o.host);
        printLog(OvApp::log());
        if (!outcome.ran) {
            std::fprintf(stderr, "ovimport: %s\n", qPrintable(outcome.message));
            return outcome.usageProblem ? 2 : 1;
        }
        report.imports.append({step.file, outcome.result, OvApp::log()});
        if (outcome.result != 0) {
            std::fprintf(stderr, "ovimport: importing %s failed: %s\n", qPrintable(step.file),
                         qPrintable(describeResult(outcome.result)));
            if (report.result == 0)
                report.result = outcome.result;
        } else if (!selected && refusedForWantOfTarget(*scene, *stepsBeforeLast, nodesBefore)) {
            std::fprintf(stderr, "ovimport: %s was refused: nothing is selected to apply it to\n",
                         qPrintable(step.file));
            ++*refused;
        }
    }
    return -1;
}

// Undoes the last import when it made an undo step.
void undoLastImport(int stepsBefore, ImportReport &report) {
    OvScene *scene = OvApp::getScene();
    report.undoAsked = true;
    const QString caption = scene->undoSteps().value(scene->undoSteps().size() - 1);
    if (scene->undoSteps().size() > stepsBefore && scene->undo()) {
        report.undoneStep = caption;
        std::fprintf(stderr, "ovimport: undid %s\n", qPrintable(caption));
    } else {
        std::fprintf(stderr, "ovimport: --undo: the last import made no undo step; nothing was undone\n");
    }
}

int writeJson(const QString &jsonOut, const ImportReport &report) {
    const OvScene &scene = *OvApp::getScene();
    if (jsonOut == QLatin1String("-")) {
        QFile out;
        out.open(stdout, QIODevice::WriteOnly);
        writeSceneJson(out, scene, report);
        return -1;
    }
    QFile f(jsonOut);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        std::fprintf(stderr, "ovimport: cannot write %s: %s\n", qPrintable(jsonOut),
                     qPrintable(f.errorString()));
        return 2;
    }
    writeSceneJson(f, scene, report);
    return -1;
}

} // namespace

int main(int argc, char **argv) {
    // A headless host: no main window, so the importers never ask anything.
    QCoreApplication app(argc, argv);
    qInstallMessageHandler(messageHandler);

    RunOptions o;
    o.host.pluginPath = QCoreApplication::applicationDirPath() + QStringLiteral("/PoserImporters.so");
    if (const int status = parseArgs(app.arguments(), o); status >= 0)
        return status;

    PluginHost host;
    QString error;
    if (!host.load(o.host.pluginPath, &error)) {
        std::fprintf(stderr, "ovimport: %s\n", qPrintable(error));
        return 2;
    }
    if (o.listOnly) {
        QTextStream out(stdout);
        host.listImporters(out);
        return 0;
    }
    if (o.files.isEmpty())
        return usageError(QStringLiteral("no file to import"));

    ImportReport report;
    report.includeMeshData = o.meshData;
    report.frame = o.frame;
    OvScene *scene = OvApp::getScene();
    int stepsBeforeLast = 0, refused = 0;
    if (const int status = importAll(host, o, report, &stepsBeforeLast, &refused); status >= 0)
        return status;
    if (o.undo)
        undoLastImport(stepsBeforeLast, report);
    if (!o.jsonOut.isEmpty())
        if (const int status = writeJson(o.jsonOut, report); status >= 0)
            return status;
    if (!o.gltfOut.isEmpty() &&
        !writeGltf(*scene, o.gltfOut, o.frame >= 0 ? o.frame * scene->getTimeStep() : scene->getTime()))
        return 1;
    if (o.tree && o.jsonOut != QLatin1String("-")) {
        QTextStream out(stdout);
        writeSceneTree(out, *scene, o.frame);
    }
    return report.result != 0 ? 1 : refused > 0 ? 3 : 0;
}
