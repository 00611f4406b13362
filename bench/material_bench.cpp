// Materials and texture maps at scale, on inputs it makes in WORKDIR (kept for the next run):
//  1. a prop whose 200 materials name 50 distinct 2048x2048 images: import time and how many
//     images were decoded;
//  2. 100 maps looked for by file name alone among 20 content folders of FILES files each (in
//     10 subfolders), for FILES = 1,000 and 10,000: folders listed per content folder and time.
//
//   material_bench WORKDIR
#include "BenchSupport.h"

#include <OvApp.h>
#include <OvImageMgr.h>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <cstdio>
#include <poser/OvPZ3Importer.h>

namespace {

constexpr int kImages = 50, kMaterials = 200, kFolders = 20, kSubfolders = 10;

bool writeText(const QString &path, const QByteArray &text) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(text) == text.size();
}

// Gradients compress well, so the files are quick to make; decoding still inflates every pixel.
void makeImages(const QString &folder) {
    QDir().mkpath(folder);
    for (int i = 0; i < kImages; ++i) {
        const QString path = folder + QStringLiteral("/img%1.png").arg(i);
        if (QFile::exists(path))
            continue;
        QImage image(2048, 2048, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x)
                row[x] = qRgb(x / 8, y / 8, i * 5);
        }
        image.save(path, "PNG", 10);
    }
}

void benchDecoding(const QString &work) {
    const QString content = work + QStringLiteral("/decode");
    makeImages(content + QStringLiteral("/Runtime/Textures/bench"));
    QByteArray obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\n",
               prop = "prop board\n{\nobjFileGeom 0 0 :Runtime:Geometries:board.obj\n";
    for (int m = 0; m < kMaterials; ++m) {
        obj += "usemtl m" + QByteArray::number(m) + "\nf 1 2 3\n";
        prop += "material m" + QByteArray::number(m) +
                "\n{\nKdColor 1 1 1 1\ntextureMap :Runtime:Textures:bench:img" +
                QByteArray::number(m % kImages) + ".png\n}\n";
    }
    QDir().mkpath(content + QStringLiteral("/Runtime/Geometries"));
    if (!writeText(content + QStringLiteral("/Runtime/Geometries/board.obj"), obj) ||
        !writeText(work + QStringLiteral("/board.pp2"), prop + "}\n"))
        return;
    OvApp::reset();
    OvApp::getContentMgr()->addPoserDirectory(content);
    OvPZ3Importer importer;
    const auto start = bench::Clock::now();
    const unsigned result = importer.read(work + QStringLiteral("/board.pp2"), OvFileIOSettings());
    std::printf("%d materials, %d images of 2048x2048: result %u, %.2f s, %d decoded, %d textures\n",
                kMaterials, kImages, result, bench::secondsSince(start), OvApp::getImageMgr()->numDecodes(),
                importer.textures().size());
}

void benchSearch(const QString &work, int files) {
    const QString root = work + QStringLiteral("/search%1").arg(files);
    QStringList folders;
    for (int f = 0; f < kFolders; ++f) {
        folders << root + QStringLiteral("/content%1").arg(f);
        for (int s = 0; s < kSubfolders; ++s) {
            const QString sub = folders.last() + QStringLiteral("/sub%1").arg(s);
            if (QDir(sub).exists())
                continue;
            QDir().mkpath(sub);
            for (int i = 0; i < files / kSubfolders; ++i)
                writeText(sub + QStringLiteral("/f%1_%2.png").arg(f).arg(i), QByteArray());
        }
    }
    OvApp::reset();
    OvApp::getContentMgr()->setPoserDirectories(folders);
    OvPZ3Importer importer;
    const auto start = bench::Clock::now();
    int found = 0;
    for (int k = 0; k < 100; ++k) {
        // Half of them are in the last folder, half nowhere: both walk every folder.
        QString path;
        found += importer.findTextureFile(QStringLiteral("D:\\old\\f%1_%2.%3")
                                              .arg(kFolders - 1)
                                              .arg(k * 7 % (files / kSubfolders))
                                              .arg(k % 2 ? "png" : "jpg"),
                                          path, false);
    }
    std::printf("%d folders x %d files: 100 lookups (%d found) in %.3f s, %.1f listings per content folder\n",
                kFolders, files, found, bench::secondsSince(start),
                double(importer.foldersListedForNames()) / kFolders);
}

} // namespace

int main(int argc, char **argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: material_bench WORKDIR\n");
        return 2;
    }
    const QString work = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    benchDecoding(work);
    for (int files : {1000, 10000})
        benchSearch(work, files);
    return 0;
}
