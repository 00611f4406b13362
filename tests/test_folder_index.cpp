// Finding content whose names disagree with the disk in letter case: exact names win, every folder
// is listed once.
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <poser/FolderIndex.h>

namespace {

TEST(FolderIndex, MatchesNamesWithoutRegardToCaseAndExactFirst) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString root = dir.path();
    writeFile(dir, QStringLiteral("Runtime/Geometries/doll/Doll.OBJ"), "v 0 0 0\n");
    writeFile(dir, QStringLiteral("runtime/geometries/doll/doll.obj"), "v 1 1 1\n");
    writeFile(dir, QStringLiteral("Runtime/Geometries/mapcase.obj"), "v 0 0 0\n");
    // A name written decomposed (as a Mac writes it) and composed in the reference.
    writeFile(dir, QString::fromUtf8("Runtime/Textures/Cafe\xCC\x81.png"), "x");

    FolderIndex index;
    struct Row {
        const char *reference, *found;
    } rows[] = {
        {"runtime/geometries/doll/doll.obj", "runtime/geometries/doll/doll.obj"}, // exact wins
        {"Runtime/Geometries/doll/Doll.OBJ", "Runtime/Geometries/doll/Doll.OBJ"},
        {"/RUNTIME/geometries/DOLL/doll.OBJ", "Runtime/Geometries/doll/Doll.OBJ"}, // first sorted
        // An exact "runtime" without the file: back to the folded "Runtime".
        {"runtime/geometries/MAPCASE.OBJ", "Runtime/Geometries/mapcase.obj"},
        {"Runtime/geometries/./mapcase.obj", "Runtime/Geometries/mapcase.obj"},
        {"runtime/textures/caf\xC3\xA9.PNG", "Runtime/Textures/Cafe\xCC\x81.png"},
        {"Runtime/Geometries/missing.obj", nullptr},
    };
    for (const Row &r : rows) {
        const QString found = index.resolve(root, QString::fromUtf8(r.reference));
        if (!r.found) {
            EXPECT_EQ(found, QString()) << r.reference;
            continue;
        }
        EXPECT_EQ(QFileInfo(found).canonicalFilePath(),
                  QFileInfo(root + QLatin1Char('/') + QString::fromUtf8(r.found)).canonicalFilePath())
            << r.reference << " -> " << found.toStdString();
        EXPECT_TRUE(QFileInfo::exists(found)) << found.toStdString();
    }
    const int listed = index.foldersListed();
    for (int i = 0; i < 100; ++i)
        index.resolve(root, QStringLiteral("RUNTIME/GEOMETRIES/DOLL/DOLL.OBJ"));
    EXPECT_EQ(index.foldersListed(), listed) << "listings are kept for the import";
}

} // namespace
