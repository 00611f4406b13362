// Texture maps: the key a map is cached under, the search for its image among the content folders
// (runtime paths first, then by file name below every folder, then the Locate question), and the
// by-name index of the content folders.
#include "Textures.h"
#include "../FolderIndex.h"
#include "../OvPZ3Importer.h"

#include <OvApp.h>
#include <OvImageMgr.h>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStringList>
#include <dirent.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

bool isSeparator(QChar c) {
    return c == QLatin1Char('\\') || c == QLatin1Char('/') || c == QLatin1Char(':');
}

// `..` names climb at most to the start of the path, so a map path never reaches outside the
// content folder it is looked for in. The separators are kept as written.
QString withoutClimbing(const QString &path) {
    if (!path.contains(QLatin1String("..")))
        return path;
    std::vector<std::pair<QChar, QString>> parts; // the separator before each name, then the name
    QChar separator;
    for (int i = 0, start = 0; i <= path.size(); ++i) {
        if (i < path.size() && !isSeparator(path[i]))
            continue;
        parts.emplace_back(separator, path.mid(start, i - start));
        if (i < path.size())
            separator = path[i];
        start = i + 1;
    }
    // A drive letter ("C:") is where the path starts; it is never climbed over.
    const size_t floor =
        parts.size() > 1 && parts[0].second.size() == 1 && parts[1].first == QLatin1Char(':') ? 1 : 0;
    std::vector<std::pair<QChar, QString>> kept;
    for (const auto &part : parts) {
        if (part.second != QLatin1String(".."))
            kept.push_back(part);
        else if (kept.size() > floor)
            kept.pop_back();
    }
    QString out;
    for (const auto &[sep, name] : kept)
        out += (sep.isNull() ? QString() : QString(sep)) + name;
    return out;
}

bool isRegularFile(const QString &path) {
    return QFileInfo(path).isFile();
}

} // namespace

QString OvPZ3Importer::textureKey(const QString &path) {
    QString key = path;
    int sep = key.lastIndexOf(QLatin1Char('\\'));
    if (sep < 0)
        sep = key.lastIndexOf(QLatin1Char(':'));
    if (sep > 0)
        key = key.mid(sep + 1);
    const int dot = key.indexOf(QLatin1Char('.'));
    return dot > 0 ? key.left(dot) : key;
}

OvTexture *OvPZ3Importer::getPoserTexture(const QString &value) {
    const QString key = textureKey(value);
    if (OvTexture *known = m_textureNamed.value(key))
        return known;
    // Poser writes bump maps of its own format and Mac pictures that other programs turned into
    // JPEG or TIFF files under the same name.
    QStringList quiet;
    if (value.endsWith(QLatin1String("bum"), Qt::CaseInsensitive)) {
        quiet << value.left(value.size() - 3) + QLatin1String("jpg");
    } else if (value.endsWith(QLatin1String("pict"), Qt::CaseInsensitive)) {
        quiet << value.left(value.size() - 4) + QLatin1String("tif")
              << value.left(value.size() - 4) + QLatin1String("jpg");
    }
    QString found;
    bool ok = false;
    for (const QString &candidate : quiet)
        if ((ok = findTextureFile(candidate, found, false)))
            break;
    if (!ok && !findTextureFile(value, found, true))
        return nullptr;
    OvImageMgr *images = OvApp::getImageMgr();
    OvTexture *texture = images->getImage(found);
    if (!texture) {
        reportInfo(tr("Could not load the image %1 (%2); the map is left out")
                       .arg(found, images->errorString(found)));
        return nullptr;
    }
    // Two keys may name one image file (through a link): the texture keeps the first key. Every
    // texture listed is named, so only a named one can be listed already.
    bool listed = false;
    if (texture->getName().isEmpty())
        texture->setName(key);
    else
        for (int i = 0; i < m_textures.size() && !listed; ++i)
            listed = m_textures[i].get() == texture;
    if (!listed)
        m_textures.append(OvTSharedPointer<OvTexture>(texture));
    m_textureNamed.insert(key, texture);
    return texture;
}

bool OvPZ3Importer::findTextureFile(const QString &name, QString &foundPath, bool askUser) {
    const QString p = withoutClimbing(name);
    QString found;
    // Only regular files count: a folder named like an image is passed over.
    auto tryContent = [&](const QString &candidate) {
        QString path;
        if (findContentFile(candidate, path, false) && isRegularFile(path)) {
            found = path;
            return true;
        }
        return false;
    };
    bool ok = tryContent(p);
    if (p.contains(QLatin1Char('\\'))) {
        // A Windows path: from its runtime textures folder on, under the content folders.
        const int at = p.toLower().indexOf(QLatin1String("\\runtime\\textures"));
        if (!ok && at >= 0)
            ok = tryContent(QString(p.mid(at)).replace(QLatin1Char('\\'), QLatin1Char(':')));
    } else {
        // A Mac or relative path: below the runtime folder, its textures or its reflection maps.
        const QString tail = p.startsWith(QLatin1Char(':')) ? p : QLatin1Char(':') + p;
        for (const char *folder : {":Runtime", ":Runtime:Textures", ":Runtime:Reflection Maps"})
            ok = ok || tryContent(QLatin1String(folder) + tail);
    }
    // Last the file name alone, anywhere below a content folder, and then the question.
    QString slashed = p;
    slashed.replace(QLatin1Char(':'), QLatin1Char('/')).replace(QLatin1Char('\\'), QLatin1Char('/'));
    const QString fileName = OvFileIO::getShortFileName(slashed);
    if (!ok)
        ok = findInContentDirs(fileName, found);
    if (!ok && askUser)
        ok = locateFile(fileName, found, true);
    if (ok)
        foundPath = found;
    return ok;
}

bool OvPZ3Importer::findInContentDirs(const QString &fileName, QString &foundPath) {
    OvContentMgr *content = OvApp::getContentMgr();
    for (int i = 0; i < content->getNumPoserDirectories(); ++i)
        if (findFileBelow(content->getPoserDirectoryPath(i), fileName, foundPath))
            return true;
    return false;
}

bool OvPZ3Importer::findFileBelow(const QString &folder, const QString &fileName, QString &foundPath) {
    if (fileName.isEmpty() || fileName == QLatin1String(".") || fileName == QLatin1String(".."))
        return false;
    const QString found = m_nameIndex.find(folder, fileName);
    if (found.isEmpty())
        return false;
    foundPath = found;
    return true;
}

// ---- the by-name index ----

QString FileNameIndex::find(const QString &root, const QString &fileName) {
    auto it = m_trees.find(root);
    if (it == m_trees.end()) {
        it = m_trees.insert(root, Tree());
        walk(root, *it);
    }
    const QString exact = it->exact.value(fileName);
    return exact.isEmpty() ? it->folded.value(FolderIndex::folded(fileName)) : exact;
}

void FileNameIndex::walk(const QString &root, Tree &tree) {
    QString base = root;
    while (base.size() > 1 && base.endsWith(QLatin1Char('/')))
        base.chop(1);
    // Folders by device and inode: a link back up the tree leads to a folder already entered.
    QSet<std::pair<quint64, quint64>> entered;
    std::vector<std::pair<QString, int>> pending{{base, 0}};
    while (!pending.empty()) {
        const auto [folder, depth] = pending.back();
        pending.pop_back();
        const QByteArray encoded = QFile::encodeName(folder);
        struct stat st;
        if (::stat(encoded.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
            continue;
        const std::pair<quint64, quint64> id{quint64(st.st_dev), quint64(st.st_ino)};
        if (entered.contains(id))
            continue;
        entered.insert(id);
        DIR *d = ::opendir(encoded.constData());
        if (!d)
            continue;
        ++m_listed;
        QStringList files, subfolders;
        while (const dirent *e = ::readdir(d)) {
            const QString name = QFile::decodeName(e->d_name);
            if (name == QLatin1String(".") || name == QLatin1String(".."))
                continue;
            bool isDir = e->d_type == DT_DIR, isFile = e->d_type == DT_REG;
            if (e->d_type == DT_LNK || e->d_type == DT_UNKNOWN) {
                struct stat target;
                const QByteArray path = QFile::encodeName(folder + QLatin1Char('/') + name);
                if (::stat(path.constData(), &target) == 0) {
                    isDir = S_ISDIR(target.st_mode);
                    isFile = S_ISREG(target.st_mode);
                }
            }
            (isDir ? subfolders : files).append(name);
            if (!isDir && !isFile)
                files.removeLast();
        }
        ::closedir(d);
        // The first file of a name wins; among names that differ only in case, the first in order.
        files.sort();
        for (const QString &name : files) {
            const QString path = folder + QLatin1Char('/') + name;
            if (!tree.exact.contains(name))
                tree.exact.insert(name, path);
            const QString key = FolderIndex::folded(name);
            if (!tree.folded.contains(key))
                tree.folded.insert(key, path);
        }
        if (depth >= MaxDepth)
            continue;
        subfolders.sort(Qt::CaseInsensitive);
        for (qsizetype i = subfolders.size(); i-- > 0;)
            pending.emplace_back(folder + QLatin1Char('/') + subfolders[i], depth + 1);
    }
}
