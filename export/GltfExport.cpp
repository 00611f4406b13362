#include "GltfExport.h"

#include "GltfFile.h"
#include "GltfModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

// Why `path` cannot be written, or empty.
QString unwritable(const QString &path) {
    const QFileInfo file(path);
    const QFileInfo dir(file.absolutePath());
    if (!dir.isDir())
        return QStringLiteral("cannot write %1: no folder %2").arg(path, dir.filePath());
    if (file.isDir())
        return QStringLiteral("cannot write %1: it is a folder").arg(path);
    if (file.exists() ? !file.isWritable() : !dir.isWritable())
        return QStringLiteral("cannot write %1: permission denied").arg(path);
    return QString();
}

} // namespace

GltfExportResult exportGltf(const OvScene &scene, const QString &path, int time) {
    GltfExportResult result;
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool binary = suffix == QLatin1String("glb");
    if (!binary && suffix != QLatin1String("gltf")) {
        result.errors << QStringLiteral("%1: the file name must end in .glb or .gltf").arg(path);
        return result;
    }
    if (const QString why = unwritable(path); !why.isEmpty()) {
        result.errors << why;
        return result;
    }
    tinygltf::Model model;
    const ModelBuild build = buildModel(model, scene, time, path, binary);
    result.notes = build.notes;
    result.errors = build.errors;
    auto removeSideFiles = [&] {
        for (const QString &f : build.sideFiles)
            QFile::remove(f);
    };
    if (!build.errors.isEmpty()) {
        removeSideFiles();
        return result;
    }
    const QFileInfo out(path);
    const QString binFile =
        out.absolutePath() + QLatin1Char('/') + out.completeBaseName() + QStringLiteral(".bin");
    if (!binary) {
        if (const QString why = unwritable(binFile); !why.isEmpty()) {
            removeSideFiles();
            result.errors << why;
            return result;
        }
    }
    const bool written =
        binary ? writeGlbFile(model, path)
               : writeGltfFiles(model, path, binFile,
                                (out.completeBaseName() + QStringLiteral(".bin")).toStdString());
    if (!written) {
        QFile::remove(path);
        if (!binary)
            QFile::remove(binFile);
        removeSideFiles();
        result.errors << QStringLiteral("cannot write %1").arg(path);
        return result;
    }
    result.ok = true;
    return result;
}
