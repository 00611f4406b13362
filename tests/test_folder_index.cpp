// Folder listings kept for one import: every folder is listed once however many references go
// through it. What the listings find is tested through whole imports (test_content_location.cpp).
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <poser/FolderIndex.h>

namespace {

TEST(FolderIndex, ListsEachFolderOnce) {
    QTemporaryDir dir;
    writeFile(dir, QStringLiteral("Runtime/Geometries/doll/Doll.OBJ"), "v 0 0 0\n");
    FolderIndex index;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(index.resolve(dir.path(), QStringLiteral("RUNTIME/GEOMETRIES/DOLL/DOLL.OBJ")),
                  dir.filePath(QStringLiteral("Runtime/Geometries/doll/Doll.OBJ")));
    EXPECT_EQ(index.foldersListed(), 4) << "the root and the three folders below it";
    EXPECT_EQ(index.resolve(dir.path(), QStringLiteral("runtime/geometries/missing.obj")), QString());
}

} // namespace
