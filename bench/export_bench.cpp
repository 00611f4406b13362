// glTF export of an imported figure against its import, in the same run: export time over import
// time, and the export's peak memory over the bytes of the scene's meshes and morph deltas.
//
//   export_bench FIGURE.cr2 CONTENT_DIR OUT.glb [RUNS]
#include "BenchSupport.h"

#include <GltfExport.h>
#include <OvApp.h>
#include <OvMorph.h>
#include <OvNode.h>
#include <OvScene.h>
#include <OvShape.h>
#include <QCoreApplication>
#include <QSet>
#include <malloc.h>
#include <poser/OvPZ3Importer.h>
#include <string>

namespace {

bool import(const char *figure, const char *content) {
    OvApp::reset();
    OvApp::getContentMgr()->addPoserDirectory(QString::fromLocal8Bit(content));
    OvPZ3Importer importer;
    return importer.read(QString::fromLocal8Bit(figure), OvFileIOSettings()) == 0;
}

// Bytes of every mesh (once each, with the storage body parts share once) and of every morph's deltas
// in the scene; shapes and morphs counted.
size_t sceneDataBytes(int *meshes, int *morphs) {
    QSet<const OvPolyMesh *> seen;
    QSet<const void *> stores; // vertex and UV storage that body parts read from their figure's mesh
    size_t bytes = 0;
    *meshes = *morphs = 0;
    OvScene *scene = OvApp::getScene();
    for (int i = 0; i < scene->getNumNodes(); ++i)
        forEachNode(scene->getNode(i), [&](OvNode *n) {
            const OvObject *o = n->getObject();
            for (int s = 0; o && s < o->getNumShapes(); ++s)
                if (auto *mesh = dynamic_cast<const OvPolyMesh *>(o->getShape(s)->getGeometry()))
                    if (!seen.contains(mesh)) {
                        seen.insert(mesh);
                        bytes += mesh->dataBytes();
                        for (const auto &[store, storeBytes] : mesh->sharedStorages())
                            if (store && !stores.contains(store)) {
                                stores.insert(store);
                                bytes += storeBytes;
                            }
                        ++*meshes;
                    }
            for (int m = 0; o && m < o->getNumModifiers(); ++m)
                if (auto *morph = dynamic_cast<const OvMorph *>(o->getModifier(m))) {
                    bytes += morph->getDeltas()->bytesHeld();
                    ++*morphs;
                }
            return true;
        });
    return bytes;
}

bool exportScene(const char *out) {
    const GltfExportResult r = exportGltf(*OvApp::getScene(), QString::fromLocal8Bit(out), 0);
    for (const QString &e : r.errors)
        std::fprintf(stderr, "export: %s\n", qPrintable(e));
    return r.ok;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    qputenv("QT_LOGGING_RULES", "*.debug=false");
    if (argc < 4) {
        std::fprintf(stderr, "usage: export_bench FIGURE.cr2 CONTENT_DIR OUT.glb [RUNS]\n");
        return 2;
    }
    const char *figure = argv[1], *content = argv[2], *out = argv[3];
    const int runs = argc > 4 ? std::max(1, atoi(argv[4])) : 3;
    if (!import(figure, content) || !exportScene(out)) {
        std::fprintf(stderr, "the figure did not import or export\n");
        return 1;
    }
    const double tImport = bench::best(runs, [&] { import(figure, content); });
    const double tExport = bench::best(runs, [&] { exportScene(out); });
    int meshes = 0, morphs = 0;
    const size_t data = sceneDataBytes(&meshes, &morphs);
    malloc_trim(0);
    const long long before = bench::statusKiB("VmRSS");
    bench::resetPeak();
    exportScene(out);
    const double peakMB = double(bench::statusKiB("VmHWM") - before) * 1024.0 / 1e6;
    std::printf("figure %s: %d meshes, %d morphs, %.1f MB of mesh and delta data; best of %d runs\n", figure,
                meshes, morphs, double(data) / 1e6, runs);
    std::printf("import %.4f s, export %.4f s: export/import %.2f (target <= 0.5)\n", tImport, tExport,
                tExport / tImport);
    std::printf("export peak +%.1f MB: over the data %.2f (target <= 1.5)\n", peakMB,
                peakMB * 1e6 / double(data));
    return 0;
}
