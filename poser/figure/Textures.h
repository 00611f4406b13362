#pragma once
// Image files looked up by file name alone, below every content folder: a texture reference from
// another machine often keeps nothing usable but its file name. Each content folder is walked once
// per import and its files indexed by name, so a thousand maps cost one listing per folder, and a
// reference to a file that is nowhere costs a hash lookup instead of a walk.

#include <QHash>
#include <QString>

class FileNameIndex {
public:
    // The first file named `fileName` below `root` (the root itself included), in depth-first order:
    // the files of a folder before those of its subfolders, subfolders sorted by name ignoring case.
    // A name that matches exactly anywhere wins over one that matches only without regard to letter
    // case. Empty when there is none. Folders reached again through links are not entered twice.
    QString find(const QString &root, const QString &fileName);

    // Folders read so far, over every root.
    int foldersListed() const { return m_listed; }
    // Deeper folders are not entered: no real content tree comes near.
    static constexpr int MaxDepth = 128;

private:
    struct Tree {
        QHash<QString, QString> exact;  // file name -> first path
        QHash<QString, QString> folded; // folded file name -> first path
    };
    void walk(const QString &root, Tree &tree);

    QHash<QString, Tree> m_trees;
    int m_listed = 0;
};
