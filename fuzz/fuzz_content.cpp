// libFuzzer target for whole Poser imports whose files the input writes itself: a scene, includes
// (plain and compressed), figure and prop geometry (plain and a compressed twin) and a material
// library, all in one content folder. The input is split at '@' (no Poser or OBJ text needs one);
// the first byte of each part picks the file it becomes (compressed names are gzipped), the rest
// is its text. The scene
// is imported with the folder as content folder; the scene must keep its invariants and dump.
#include "FuzzSupport.h"
#include "support/TestSupport.h"

#include <QFile>

namespace {

const char *const kFiles[] = {
    "scene.pz3",
    "Runtime/libraries/props/a.pp2",
    "Runtime/libraries/props/b.ppz",
    "Runtime/libraries/pose/c.pz2",
    "Runtime/libraries/character/fig.cr2",
    "runtime/libraries/character/Fig2.crz",
    "Runtime/Geometries/fz/fig.obj",
    "Runtime/Geometries/fz/twin.obz",
    "Runtime/Geometries/fz/fig.mtl",
};
const int kNumFiles = int(sizeof kFiles / sizeof kFiles[0]);

QTemporaryDir *g_dir = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    g_dir = startPoserFuzzing(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    for (const char *name : kFiles)
        QFile::remove(g_dir->filePath(QLatin1String(name)));
    for (const QByteArray &part : input.split('@')) {
        if (part.isEmpty())
            continue;
        const QString name = QLatin1String(kFiles[static_cast<unsigned char>(part[0]) % kNumFiles]);
        const QByteArray text = part.mid(1);
        writeFile(*g_dir, name, name.endsWith(QLatin1Char('z')) ? gzipBytes(text) : text);
    }

    importAndCheck("fuzz_content", g_dir->filePath(QLatin1String(kFiles[0])), g_dir->path());
    return 0;
}
