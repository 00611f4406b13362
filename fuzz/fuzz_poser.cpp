// libFuzzer target for the Poser reader: the first byte picks the file kind (one of the 18
// extensions; compressed kinds are gzipped), the rest is the file. A fixed content folder holds a
// figure geometry, an include and a compressed include, and the input itself is also reachable as
// an include, so readScript cycles and geometry loading are exercised too. Every resulting scene
// must pass the scene invariants and dump.
#include "FuzzSupport.h"
#include "support/TestSupport.h"

namespace {

QTemporaryDir *g_dir = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    g_dir = startPoserFuzzing(argc, argv);
    writeFile(*g_dir, "Runtime/Geometries/fz/fig.obj",
              "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nvt 0 0\ng hip\nusemtl skin\n"
              "f 1/1 2/1 3/1\ng chest head\nusemtl shirt\nf 2 4 3\n");
    writeFile(*g_dir, "Runtime/libraries/inc.pz2",
              "{\nversion\n{\nnumber 5\n}\nactor hip:1\n{\nparent BODY:1\n");
    writeFile(*g_dir, "Runtime/libraries/twin.crz",
              gzipBytes("{\nprop ball\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nf 1 2\n}\n}\n}\n"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1)
        return 0;
    const QString ext =
        QString::fromLatin1(OvPZ3Importer::Extensions[data[0] % OvPZ3Importer::NumExtensions]);
    QByteArray body(reinterpret_cast<const char *>(data + 1), int(size - 1));
    if (OvPZ3Importer::isCompressedExtension(ext))
        body = gzipBytes(body);
    writeFile(*g_dir, "in." + ext, body);
    writeFile(*g_dir, "Runtime/libraries/self.pz2",
              QByteArray(reinterpret_cast<const char *>(data + 1), int(size - 1)));

    importAndCheck("fuzz_poser", g_dir->filePath("in." + ext), g_dir->path());
    return 0;
}
