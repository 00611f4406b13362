// Dependent parameters: a generated figure with 2,000 valueOp blocks, 500 of which name a channel
// of an actor read later (deferred to the end of the import), and 50 linkParms pairs, at 1x, 4x and
// 16x that size. Prints the whole import and the link resolution at its end, each also per block;
// both should grow linearly (bones are found by name in constant time while reading and after).
//
//   erc_bench [RUNS] [SCALE...]   (the scales 1, 4 and 16 by default; one alone suits callgrind)
#include "BenchSupport.h"

#include <OvApp.h>
#include <OvScene.h>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <poser/OvPZ3Importer.h>
#include <vector>

namespace {

constexpr int kMasters = 15; // dials of BODY that drive the immediate links
constexpr int kDials = 20;   // dials per actor, each with one valueOp
constexpr int kDeferred = 5; // of which this many name the next actor's dial

QByteArray valueOp(const QByteArray &node, const QByteArray &channel) {
    return "valueOpDeltaAdd\nFigure 1\n" + node + "\n" + channel + "\ndeltaAddDelta 0.5\n";
}

// 100 x scale actors: 2,000 x scale valueOps, 500 x scale of them deferred (the last actor's five
// name BODY instead, so that the chains do not close); each pair of actors links its dials "l".
QByteArray figure(int scale) {
    const int actors = 100 * scale;
    QByteArray text = "{\nactor BODY:1\n{\nchannels\n{\n";
    for (int m = 0; m < kMasters; ++m)
        text += "valueParm m" + QByteArray::number(m) + "\n{\ninitValue 1\n}\n";
    text += "}\n}\n";
    for (int a = 0; a < actors; ++a) {
        text += "actor a" + QByteArray::number(a) + ":1\n{\nparent BODY:1\nchannels\n{\n";
        for (int d = 0; d < kDials; ++d) {
            const QByteArray dial = "d" + QByteArray::number(d);
            text += "valueParm " + dial + "\n{\n";
            if (d < kDeferred && a + 1 < actors)
                text += valueOp("a" + QByteArray::number(a + 1) + ":1", dial);
            else
                text += valueOp("BODY:1", "m" + QByteArray::number(d % kMasters));
            text += "}\n";
        }
        text += "valueParm l\n{\n}\n}\n}\n";
    }
    text += "figure\n{\nroot BODY:1\n";
    for (int a = 0; a + 1 < actors; a += 2)
        text += "linkParms a" + QByteArray::number(a) + ":1\nl\na" + QByteArray::number(a + 1) + ":1\nl\n";
    return text + "}\n}\n";
}

struct Result {
    double import = 1e30, resolve = 1e30; // seconds, best of the runs
    bool clean = true;
};

Result measure(const QString &path, int runs) {
    Result r;
    for (int i = 0; i < runs; ++i) {
        OvApp::reset();
        OvPZ3Importer importer;
        const auto start = bench::Clock::now();
        r.clean = importer.read(path, OvFileIOSettings()) == 0 && OvApp::log().isEmpty() && r.clean;
        r.import = std::min(r.import, bench::secondsSince(start));
        r.resolve = std::min(r.resolve, double(importer.linkResolutionNanos()) * 1e-9);
        OvApp::reset();
    }
    return r;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    qputenv("QT_LOGGING_RULES", "*.debug=false");
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 3;
    QTemporaryDir dir;
    std::printf("%6s %8s %9s %9s %10s %13s %14s %16s\n", "size", "valueOps", "deferred", "linkParms",
                "import s", "per valueOp us", "resolution s", "per link us");
    double first = 0;
    std::vector<int> scales;
    for (int i = 2; i < argc; ++i)
        scales.push_back(std::max(1, atoi(argv[i])));
    if (scales.empty())
        scales = {1, 4, 16};
    for (int scale : scales) {
        const QString path = dir.filePath(QStringLiteral("erc%1.cr2").arg(scale));
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly) || f.write(figure(scale)) < 0)
            return 1;
        f.close();
        const Result r = measure(path, runs);
        const int ops = 2000 * scale, deferred = 500 * scale - kDeferred, pairs = 50 * scale;
        if (first == 0)
            first = r.resolve;
        std::printf("%5dx %8d %9d %9d %10.4f %13.3f %14.6f %16.3f   (%.1fx the 1x time)%s\n", scale, ops,
                    deferred, pairs, r.import, r.import * 1e6 / ops, r.resolve,
                    r.resolve * 1e6 / (deferred + pairs), r.resolve / first, r.clean ? "" : "  NOT CLEAN");
    }
    return 0;
}
