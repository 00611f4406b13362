#pragma once
#include <OvTypes.h>
#include <QString>

// Folders the user pointed to during one import, in the order they were learned.
struct LocatedDirList {
    OvTArray<QString> dirs{8};
    // Parallel to dirs: a content root takes the whole requested relative path, a plain folder
    // only the file name.
    OvTArray<bool> isContentRoot{8};

    void clear() {
        dirs.clear();
        isContentRoot.clear();
    }
    void append(const QString &dir, bool contentRoot) {
        dirs.append(dir);
        isContentRoot.append(contentRoot);
    }
};
