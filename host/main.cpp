// ovimport: a headless host. It loads the importer plug-in the way the desktop host does, runs one
// import into its scene and prints the log and the resulting scene.
#include "GltfExport.h"
#include "PluginHost.h"
#include "SceneDump.h"

#include <OvApp.h>
#include <OvScene.h>
#include <OvTextInputFile.h>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <cstdio>

namespace {

const char *const kUsage =
    "usage: ovimport [options] FILE\n"
    "\n"
    "Imports FILE (a Poser file or a Wavefront OBJ) through the importer plug-in into an empty scene,\n"
    "prints the import log to stderr and the resulting scene as a tree to stdout.\n"
    "\n"
    "options:\n"
    "  --plugin PATH        importer plug-in to load (default: PoserImporters.so next to ovimport)\n"
    "  --content DIR        add a Poser content folder (repeatable; searched in the order given)\n"
    "  --option KEY=VALUE   override one of the importer's default options, e.g. Scale=100,\n"
    "                       SwapYZ=true, IncludeG=false, IncludeVT, IncludeUsemtl, IncludeMtllib, Preset\n"
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
    "                       says what was asked and answered\n"
    "  --drop-at X,Y,Z      import as if dropped at that point of the scene (host units): what the\n"
    "                       file creates moves there, and at height 0 comes to rest on the floor\n"
    "  --list-importers     list the plug-in's importers and exit\n"
    "  --debug              also print the importers' debug traces\n"
    "  --max-expansion N    stop a compressed file whose text grows past N times its compressed\n"
    "                       size (default 250; checked from 64 MB of text on)\n"
    "  --max-text-mb N      stop a compressed file whose text grows past N MB (default 4096)\n"
    "  --help               show this text\n"
    "\n"
    "exit status: 0 when the import succeeded, 1 when it failed, 2 on a usage or plug-in error.\n";

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

} // namespace

int main(int argc, char **argv) {
    // A headless host: no main window, so the importers never ask anything.
    QCoreApplication app(argc, argv);
    qInstallMessageHandler(messageHandler);

    HostOptions opts;
    opts.pluginPath = QCoreApplication::applicationDirPath() + QStringLiteral("/PoserImporters.so");
    QString jsonOut, gltfOut, file;
    bool tree = true, listOnly = false, meshData = true;
    int frame = -1;
    OvContentDropOptions drop; // lives as long as the content manager points at it
    QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        const QString &a = args[i];
        auto next = [&](QString &into) {
            if (i + 1 >= args.size())
                return false;
            into = args[++i];
            return true;
        };
        QString v;
        if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (a == QLatin1String("--plugin")) {
            if (!next(opts.pluginPath))
                return usageError(QStringLiteral("--plugin needs a path"));
        } else if (a == QLatin1String("--content")) {
            if (!next(v))
                return usageError(QStringLiteral("--content needs a folder"));
            opts.contentDirs.append(v);
        } else if (a == QLatin1String("--option")) {
            if (!next(v) || !v.contains(QLatin1Char('=')))
                return usageError(QStringLiteral("--option needs KEY=VALUE"));
            opts.options.append(v);
        } else if (a == QLatin1String("--json")) {
            if (!next(jsonOut))
                return usageError(QStringLiteral("--json needs a file name or -"));
        } else if (a == QLatin1String("--gltf")) {
            if (!next(gltfOut))
                return usageError(QStringLiteral("--gltf needs a file name"));
        } else if (a == QLatin1String("--frame")) {
            bool ok = false;
            frame = next(v) ? v.toInt(&ok) : -1;
            if (!ok || frame < 0)
                return usageError(QStringLiteral("--frame needs a frame number of 0 or more"));
        } else if (a == QLatin1String("--answer")) {
            static const char *const answers[] = {"yes", "no", "cancel"};
            static const OvApp::Answer codes[] = {OvApp::AnswerYes, OvApp::AnswerNo, OvApp::AnswerCancel};
            int which = -1;
            if (next(v))
                for (int k = 0; k < 3; ++k)
                    if (v == QLatin1String(answers[k]))
                        which = k;
            if (which < 0)
                return usageError(QStringLiteral("--answer needs yes, no or cancel"));
            OvApp::setHeadlessAnswer(codes[which]);
        } else if (a == QLatin1String("--drop-at")) {
            const QStringList xyz = next(v) ? v.split(QLatin1Char(',')) : QStringList();
            bool ok = xyz.size() == 3;
            OvVec3 point;
            for (int k = 0; ok && k < 3; ++k)
                point[k] = xyz[k].toFloat(&ok);
            if (!ok)
                return usageError(QStringLiteral("--drop-at needs a point X,Y,Z"));
            drop = OvContentDropOptions(nullptr, OvContentDropOptions::PlaceAtPoint, point);
            OvApp::getContentMgr()->setContentDropOptions(&drop);
        } else if (a == QLatin1String("--no-tree")) {
            tree = false;
        } else if (a == QLatin1String("--no-mesh-data")) {
            meshData = false;
        } else if (a == QLatin1String("--list-importers")) {
            listOnly = true;
        } else if (a == QLatin1String("--debug")) {
            g_debug = true;
        } else if (a == QLatin1String("--max-expansion") || a == QLatin1String("--max-text-mb")) {
            bool ok = false;
            const double n = next(v) ? v.toDouble(&ok) : 0.0;
            if (!ok || n < 1)
                return usageError(QStringLiteral("%1 needs a number of at least 1").arg(a));
            OvTextInputFile::Limits limits = OvTextInputFile::limits();
            if (a == QLatin1String("--max-expansion"))
                limits.maxExpansion = n;
            else
                limits.maxTextBytes = qint64(n * 1048576.0);
            OvTextInputFile::setLimits(limits);
        } else if (a.startsWith(QLatin1String("--"))) {
            return usageError(QStringLiteral("unknown option %1").arg(a));
        } else if (file.isEmpty()) {
            file = a;
        } else {
            return usageError(QStringLiteral("only one file can be imported at a time"));
        }
    }

    PluginHost host;
    QString error;
    if (!host.load(opts.pluginPath, &error)) {
        std::fprintf(stderr, "ovimport: %s\n", qPrintable(error));
        return 2;
    }
    if (listOnly) {
        QTextStream out(stdout);
        host.listImporters(out);
        return 0;
    }
    if (file.isEmpty())
        return usageError(QStringLiteral("no file to import"));

    ImportOutcome outcome = host.import(file, opts);
    for (const OvApp::LogEntry &e : OvApp::log())
        std::fprintf(stderr, "%s: %s\n", e.level == OvApp::LogError ? "error" : "info", qPrintable(e.text));
    if (!outcome.ran) {
        std::fprintf(stderr, "ovimport: %s\n", qPrintable(outcome.message));
        return outcome.usageProblem ? 2 : 1;
    }

    OvScene *scene = OvApp::getScene();
    if (!jsonOut.isEmpty()) {
        ImportReport report;
        report.result = outcome.result;
        report.includeMeshData = meshData;
        report.frame = frame;
        if (jsonOut == QLatin1String("-")) {
            QFile out;
            out.open(stdout, QIODevice::WriteOnly);
            writeSceneJson(out, *scene, report);
            tree = false;
        } else {
            QFile f(jsonOut);
            if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
                std::fprintf(stderr, "ovimport: cannot write %s: %s\n", qPrintable(jsonOut),
                             qPrintable(f.errorString()));
                return 2;
            }
            writeSceneJson(f, *scene, report);
        }
    }
    if (!gltfOut.isEmpty() &&
        !writeGltf(*scene, gltfOut, frame >= 0 ? frame * scene->getTimeStep() : scene->getTime()))
        return 1;
    if (tree) {
        QTextStream out(stdout);
        writeSceneTree(out, *scene, frame);
    }
    if (outcome.result != 0) {
        std::fprintf(stderr, "ovimport: importing %s failed: %s\n", qPrintable(file),
                     qPrintable(describeResult(outcome.result)));
        return 1;
    }
    return 0;
}
