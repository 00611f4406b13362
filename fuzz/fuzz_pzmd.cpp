// libFuzzer target for the binary morph file reader: the input is the file. Its index is read and
// every record's block loaded into a morph against a mesh of 1000 vertices; whatever the counts and
// offsets claim, nothing may be read or kept beyond the file's bytes and no delta may name a vertex
// outside the mesh. Seeds: doll and two_actors are written by bench/write_pzmd.py (the example's
// list, and --morph hip Bulge "0 1 0 0; 999 0 1 0; 1000 0 0 1" --morph chest Bulge ""), truncated is
// the first 60 bytes of doll.
#include "FuzzSupport.h"

#include <OvMorph.h>
#include <QFile>
#include <poser/channels/BinaryMorph.h>

namespace {

QTemporaryDir *g_dir = nullptr;
const int kVertices = 1000;
// Records beyond this many are not loaded: each load reads its block again.
const int kMaxLoads = 64;

void fail(const char *what) {
    std::fprintf(stderr, "fuzz_pzmd: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    g_dir = startPoserFuzzing(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString path = g_dir->filePath(QStringLiteral("input.pmd"));
    {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
            fail("cannot write the input file");
        f.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    OvPz3BinMorphFile reader(path);
    const qint64 bytes = qint64(size);
    if (reader.index().size() > bytes / 10 + 1)
        fail("more index records than the file has room for");
    OvNode node;
    for (int i = 0; i < reader.index().size() && i < kMaxLoads; ++i) {
        const OvPz3BinMorphFileItem &item = reader.index()[i];
        node.setName(item.nodeName);
        OvMorph morph(item.morphName);
        reader.loadMorph(&morph, &node, kVertices);
        const OvMorphDeltas &deltas = *morph.getDeltas();
        if (qint64(deltas.getNumDeltas()) * 16 > bytes)
            fail("more deltas than the file has bytes for");
        for (int d = 0; d < deltas.getNumDeltas(); ++d)
            if (deltas.getIndex(d) < 0 || deltas.getIndex(d) >= kVertices)
                fail("a delta outside the mesh was kept");
    }
    if (reader.bytesRead() > bytes * (1 + kMaxLoads))
        fail("read more than the file holds");
    reader.takeProblems();
    return 0;
}
