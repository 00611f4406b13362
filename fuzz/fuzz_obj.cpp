// libFuzzer target for the OBJ reader and its MTL library reader.
//
// Input: one flag byte, then the OBJ text, then optionally kSeparator and the MTL text. Flag bit 0
// gzips the OBJ and names it .obz; bits 1 to 3 switch off IncludeG, IncludeVT and IncludeUsemtl. The
// OBJ is given a first line "mtllib m.mtl" naming the MTL part (a later mtllib line may name another
// file). A small image in the same folder lets map_* lines load a texture. Every shape read must
// pass the shape invariants.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvShape.h>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <obj/OvObjImporter.h>
#include <text/ObjOptions.h>

namespace {

const char kSeparator[] = "\n@@MTL@@\n";

QTemporaryDir *g_dir = nullptr;

void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

void put(const QString &name, const QByteArray &data) {
    QFile f(g_dir->filePath(name));
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(data) != data.size()) {
        std::fprintf(stderr, "fuzz_obj: cannot write %s\n", qPrintable(f.fileName()));
        std::abort();
    }
}

void fail(const char *what, const QStringList &details = {}) {
    std::fprintf(stderr, "fuzz_obj: %s\n", what);
    for (const QString &line : details)
        std::fprintf(stderr, "  %s\n", qPrintable(line));
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    static QCoreApplication app(*argc, *argv);
    qInstallMessageHandler(quiet);
    g_dir = new QTemporaryDir;
    if (!g_dir->isValid())
        fail("cannot create a temporary folder");
    put(QStringLiteral("tex.ppm"), QByteArray("P6\n2 1\n255\n\xff\x00\x00\x00\xff\x00", 17));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1)
        return 0;
    const unsigned flags = data[0];
    const QByteArray rest(reinterpret_cast<const char *>(data + 1), int(size - 1));
    const int sep = rest.indexOf(kSeparator);
    QByteArray obj = sep < 0 ? rest : rest.left(sep);
    const QByteArray mtl = sep < 0 ? QByteArray() : rest.mid(sep + int(std::strlen(kSeparator)));
    obj.prepend("mtllib m.mtl\n");

    const bool compressed = flags & 1;
    const QString name = compressed ? QStringLiteral("o.obz") : QStringLiteral("o.obj");
    put(name, compressed ? gzipBytes(obj) : obj);
    put(QStringLiteral("m.mtl"), mtl);

    OvApp::reset();
    OvObjImporter importer;
    OvFileIOSettings settings;
    importer.getDefaultOptions(&settings);
    settings.setBoolValue(ObjOption::IncludeG, !(flags & 2));
    settings.setBoolValue(ObjOption::IncludeVT, !(flags & 4));
    settings.setBoolValue(ObjOption::IncludeUsemtl, !(flags & 8));

    OvShape *shape = nullptr;
    const unsigned result = importer.readShape(g_dir->filePath(name), &shape, settings);
    if (result != OvImporter::ResultOk && result != OvImporter::ResultCannotOpen &&
        result != OvImporter::ResultMaterialLibraryFailed)
        fail(qPrintable(QStringLiteral("unexpected result 0x%1").arg(result, 0, 16)));
    // Text the reader refuses whole (UTF-16, say) gives no shape, and says so with 0x200.
    if (!shape && result != OvImporter::ResultCannotOpen)
        fail("the file was written but no shape was read");
    if (!shape)
        return 0;
    const QStringList problems = checkShapeInvariants(*shape);
    if (!problems.isEmpty())
        fail("the shape breaks its invariants:", problems);
    delete shape;
    return 0;
}
