// Import of a whole figure (one body part per face group of its geometry) against reading the same
// geometry alone with the OBJ reader, in time and peak memory, measured in the same run.
//
//   figure_bench FIGURE.cr2 CONTENT_DIR GEOMETRY.obj [RUNS]
#include "BenchSupport.h"

#include <OvApp.h>
#include <OvNode.h>
#include <OvScene.h>
#include <OvShape.h>
#include <QCoreApplication>
#include <algorithm>
#include <malloc.h>
#include <obj/OvObjImporter.h>
#include <poser/OvPZ3Importer.h>
#include <string>
#include <text/ObjOptions.h>

namespace {

OvFileIOSettings poserGeometrySettings() {
    OvFileIOSettings s;
    s.setFloatValue(ObjOption::Scale, 243.84f);
    s.setBoolValue(ObjOption::IncludeMtllib, false);
    return s;
}

bool readObj(const char *obj) {
    OvObjImporter importer;
    OvShape *shape = nullptr;
    unsigned r = importer.readShape(QString::fromLocal8Bit(obj), &shape, poserGeometrySettings());
    delete shape;
    return r == 0;
}

int countShapes(const OvNode *n) {
    int c = n->getObject() ? n->getObject()->getNumShapes() : 0;
    for (int i = 0; i < n->getNumNodeChildren(); ++i)
        c += countShapes(n->getNodeChild(i));
    return c;
}

bool importFigure(const char *figure, const char *content, int *shapes = nullptr) {
    OvApp::reset();
    OvApp::getContentMgr()->addPoserDirectory(QString::fromLocal8Bit(content));
    OvPZ3Importer importer;
    unsigned r = importer.read(QString::fromLocal8Bit(figure), OvFileIOSettings());
    if (shapes) {
        *shapes = 0;
        for (int i = 0; i < OvApp::getScene()->getNumNodes(); ++i)
            *shapes += countShapes(OvApp::getScene()->getNode(i));
    }
    bool ok = r == 0 && OvApp::log().isEmpty();
    OvApp::reset(); // the scene goes with the import: what stays is measured too
    return ok;
}

// Child mode: prints "before_kib peak_kib". A first run brings in the code both readers touch (the
// Poser importer touches more of it), and its freed memory goes back to the system: what the second
// run adds is the data of one import.
int peakMode(int argc, char **argv) {
    auto run = [&] {
        return std::string(argv[2]) == "obj" ? readObj(argv[3]) : importFigure(argv[3], argv[4]);
    };
    run();
    malloc_trim(0);
    long long before = bench::statusKiB("VmRSS");
    bench::resetPeak();
    bool ok = run();
    std::printf("%lld %lld\n", before, bench::statusKiB("VmHWM"));
    (void)argc;
    return ok ? 0 : 1;
}

double peakDeltaMB(const std::vector<std::string> &args) {
    long long before = 0, peak = 0;
    std::string out = bench::runSelf(args);
    if (std::sscanf(out.c_str(), "%lld %lld", &before, &peak) != 2)
        return -1;
    return double(peak - before) * 1024.0 / 1e6;
}

} // namespace

using bench::best;

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    qputenv("QT_LOGGING_RULES", "*.debug=false");
    if (argc >= 4 && std::string(argv[1]) == "--peak")
        return peakMode(argc, argv);
    if (argc < 4) {
        std::fprintf(stderr, "usage: figure_bench FIGURE.cr2 CONTENT_DIR GEOMETRY.obj [RUNS]\n");
        return 2;
    }
    const char *figure = argv[1], *content = argv[2], *obj = argv[3];
    const int runs = argc > 4 ? std::max(1, atoi(argv[4])) : 5;
    int shapes = 0;
    if (!readObj(obj) || !importFigure(figure, content, &shapes)) {
        std::fprintf(stderr, "the geometry or the figure did not import cleanly\n");
        return 1;
    }
    double tObj = best(runs, [&] { readObj(obj); });
    double tFigure = best(runs, [&] { importFigure(figure, content); });
    double mObj = peakDeltaMB({"--peak", "obj", obj});
    double mFigure = peakDeltaMB({"--peak", "figure", figure, content});
    std::printf("figure %s: %d shapes cut from %s; best of %d runs\n", figure, shapes, obj, runs);
    std::printf("%-22s %10s %8s %14s %8s\n", "stage", "seconds", "ratio", "peak MB (+)", "ratio");
    std::printf("%-22s %10.4f %8.2f %14.1f %8.2f\n", "OBJ read alone", tObj, 1.0, mObj, 1.0);
    std::printf("%-22s %10.4f %8.2f %14.1f %8.2f\n", "whole figure import", tFigure, tFigure / tObj, mFigure,
                mFigure / mObj);
    return 0;
}
