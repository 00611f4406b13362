// Morph targets: a figure of many text morphs imported against reading its bytes, the memory its
// deltas take against their own size, one block of a large binary morph file loaded against reading
// the block's bytes, and the bytes an import reads from that file when it uses five of its morphs.
// Every figure is measured in the same run as its floor.
//
//   morph_bench CONTENT_DIR [RUNS]      (CONTENT_DIR as bench/gen_morphs.py writes it)
#include "BenchSupport.h"

#include <OvApp.h>
#include <OvMorph.h>
#include <OvNode.h>
#include <OvScene.h>
#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>
#include <poser/OvPZ3Importer.h>
#include <poser/channels/BinaryMorph.h>
#include <string>

namespace {

std::string g_content;

std::string at(const char *relative) {
    return g_content + "/Runtime/" + relative;
}

const char *const kText = "libraries/character/text.cr2";
const char *const kBinary = "libraries/character/binary.cr2";
const char *const kObj = "Geometries/morphs/body.obj";
const char *const kPzmd = "libraries/character/big.pmd";

double fileBytes(const char *relative) {
    return double(QFileInfo(QString::fromStdString(at(relative))).size());
}

// Reads [offset, offset + bytes) of a file with plain reads: the floor of any reader of it.
bool readBytes(const std::string &path, long long offset, long long bytes) {
    static std::vector<char> buffer(size_t(4) << 20);
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    for (long long done = 0; done < bytes;) {
        ssize_t n = ::pread(fd, buffer.data(), size_t(std::min<long long>(bytes - done, buffer.size())),
                            offset + done);
        if (n <= 0)
            break;
        done += n;
    }
    ::close(fd);
    return true;
}

// Bytes this process has read through read calls so far (/proc/self/io "rchar").
long long bytesReadSoFar() {
    FILE *f = std::fopen("/proc/self/io", "r");
    long long v = -1;
    char line[128];
    while (f && std::fgets(line, sizeof line, f))
        if (std::strncmp(line, "rchar:", 6) == 0)
            v = std::atoll(line + 6);
    if (f)
        std::fclose(f);
    return v;
}

struct DeltaTotals {
    long long deltas = 0, held = 0;
};

DeltaTotals totals(const OvNode *n) {
    DeltaTotals t;
    forEachNode(const_cast<OvNode *>(n), [&](OvNode *node) {
        for (int i = 0; node->getObject() && i < node->getObject()->getNumModifiers(); ++i)
            if (auto *m = dynamic_cast<OvMorph *>(node->getObject()->getModifier(i))) {
                t.deltas += m->getDeltas()->getNumDeltas();
                t.held += (long long)m->getDeltas()->bytesHeld();
            }
        return true;
    });
    return t;
}

// Imports a figure of the content folder; with `t`, counts its deltas before the scene goes.
bool import(const char *relative, DeltaTotals *t = nullptr) {
    OvApp::reset();
    OvApp::getContentMgr()->addPoserDirectory(QString::fromStdString(g_content));
    OvPZ3Importer importer;
    const bool ok = importer.read(QString::fromStdString(at(relative)), OvFileIOSettings()) == 0;
    for (int i = 0; t && i < OvApp::getScene()->getNumNodes(); ++i) {
        const DeltaTotals n = totals(OvApp::getScene()->getNode(i));
        t->deltas += n.deltas;
        t->held += n.held;
    }
    OvApp::reset();
    return ok && OvApp::log().isEmpty();
}

// Child mode: prints "before_kib peak_kib" around the import of the text figure, or of the binary
// one (the same body with five small morphs: what the import costs without the text morphs).
int peakMode(char **argv) {
    g_content = argv[3];
    long long before = bench::statusKiB("VmRSS");
    bench::resetPeak();
    bool ok =
        std::string(argv[2]) == "text" ? import(kText) : readBytes(at(kObj), 0, (long long)fileBytes(kObj));
    std::printf("%lld %lld\n", before, bench::statusKiB("VmHWM"));
    return ok ? 0 : 1;
}

double peakMB(const char *what) {
    long long before = 0, peak = 0;
    std::string out = bench::runSelf({"--peak", what, g_content});
    if (std::sscanf(out.c_str(), "%lld %lld", &before, &peak) != 2)
        return -1;
    return double(peak - before) * 1024.0 / 1e6;
}

void row(const char *what, double value, const char *unit, double floor) {
    std::printf("%-44s %10.1f %-5s floor %10.1f  ratio %5.2f\n", what, value, unit, floor, value / floor);
}

} // namespace

using bench::best;

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    qputenv("QT_LOGGING_RULES", "*.debug=false");
    if (argc >= 4 && std::string(argv[1]) == "--peak")
        return peakMode(argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: morph_bench CONTENT_DIR [RUNS]\n");
        return 2;
    }
    g_content = argv[1];
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 3;

    // Text morphs: the whole import against reading the figure's and the geometry's bytes.
    DeltaTotals t;
    if (!import(kText, &t)) {
        std::fprintf(stderr, "the text figure did not import cleanly\n");
        return 1;
    }
    const double textBytes = fileBytes(kText) + fileBytes(kObj);
    const double tRead = best(runs, [&] {
        readBytes(at(kText), 0, (long long)fileBytes(kText));
        readBytes(at(kObj), 0, (long long)fileBytes(kObj));
    });
    const double tImport = best(runs, [&] { import(kText); });
    std::printf("text figure: %.1f MB with geometry, %lld deltas; best of %d runs\n", textBytes / 1e6,
                t.deltas, runs);
    row("import speed (MB/s) vs reading the bytes", textBytes / tImport / 1e6, "MB/s",
        textBytes / tRead / 1e6);
    const double own = double(t.deltas) * 16 / 1e6;
    row("deltas held (MB) vs 12 bytes + index each", double(t.held) / 1e6, "MB", own);
    const double peakImport = peakMB("text"), peakBody = peakMB("binary");
    row("import peak RSS less the body's (MB) vs own", peakImport - peakBody, "MB", own);
    std::printf("%-44s %10.1f MB, the body alone %.1f MB\n", "  (peaks:", peakImport, peakBody);

    // One block of the binary morph file against reading the block's bytes.
    const std::string pzmd = at(kPzmd);
    OvPz3BinMorphFile reader(QString::fromStdString(pzmd));
    if (reader.index().isEmpty()) {
        std::fprintf(stderr, "%s has no index\n", pzmd.c_str());
        return 1;
    }
    const OvPz3BinMorphFileItem first = reader.index()[0];
    OvNode body;
    body.setName(first.nodeName);
    long long blockBytes = 0;
    const double tBlock = best(runs, [&] {
        OvMorph morph(first.morphName);
        reader.loadMorph(&morph, &body);
        blockBytes = 4 + 16LL * morph.getDeltas()->getNumDeltas();
    });
    const double tBlockRead = best(runs, [&] { readBytes(pzmd, first.offset, blockBytes); });
    std::printf("binary morph file: %.1f MB, %d morphs\n", fileBytes(kPzmd) / 1e6, reader.index().size());
    row("one block loaded (MB/s) vs reading it", blockBytes / tBlock / 1e6, "MB/s",
        blockBytes / tBlockRead / 1e6);

    // An import that uses five morphs of it: bytes read against the bytes of its text files.
    const long long before = bytesReadSoFar();
    if (!import(kBinary)) {
        std::fprintf(stderr, "the binary figure did not import cleanly\n");
        return 1;
    }
    const double readByImport = double(bytesReadSoFar() - before);
    const double textFiles = fileBytes(kBinary) + fileBytes(kObj);
    row("import using 5 morphs: bytes read (MB)", readByImport / 1e6, "MB", textFiles / 1e6);
    std::printf("%-44s %10.2f %% of the binary morph file\n", "  read beyond its text files",
                100.0 * (readByImport - textFiles) / fileBytes(kPzmd));
    return 0;
}
