#pragma once
// Folder listings kept for one import, to find files whose names were written on a file system that
// ignores letter case: content is shipped with "Runtime" or "runtime", ":runtime:geometries:x.obj"
// for Runtime/Geometries/x.obj, and on Linux every such reference would be a file not found.

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

class FolderIndex {
public:
    // The file or folder `relative` ('/'-separated, a leading '/' allowed) below `root`: the exact
    // path when it exists, else the path whose every name matches without regard to letter case or
    // Unicode composition: at each level an exact name is tried first, then folded ones in sorted
    // order, and a dead end goes back to the next choice. Empty when nothing matches.
    QString resolve(const QString &root, const QString &relative);
    static constexpr int MaxSteps = 512;
    // Folder listings read so far: each folder is read once however many references go through it.
    int foldersListed() const { return m_reads; }

    // The key names are compared by.
    static QString folded(const QString &name);

private:
    struct Listing {
        QSet<QString> exact;
        QHash<QString, QStringList> byFold; // folded name -> the names, sorted
    };
    const Listing &listing(const QString &folder);

    QHash<QString, Listing> m_listings;
    int m_reads = 0;
};
