// Finding the files a Poser file names (written on another machine) among the content folders,
// the folders the user pointed to, and as a last resort by asking; and readScript includes.
#include "OvPZ3Importer.h"
#include "Pz3InputFile.h"
#include "Questions.h"

#include <OvApp.h>
#include <OvMainWindow.h>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <new>
#include <text/Paths.h>

namespace {

// The part of a path from its last '/' on, or the whole path when it has none after the start.
QString tailFromLastSlash(const QString &p) {
    int slash = p.lastIndexOf(QLatin1Char('/'));
    return slash > 0 ? p.mid(slash) : p;
}

// An absolute path from another machine ("/Users/a/Poser/Runtime/...", "Macintosh HD:...:Runtime:...",
// "C:\Program Files\...\Runtime\...") is content from its runtime folder on, in any letter case.
QString runtimeTail(const QString &p) {
    const qsizetype at = p.lastIndexOf(QLatin1String("/runtime/"), -1, Qt::CaseInsensitive);
    return at > 0 ? p.mid(at) : QString();
}

// Every path the import records is absolute and clean, however the content folder was written.
QString cleanAbsolute(const QString &path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

bool OvPZ3Importer::findContentFile(const QString &name, QString &foundPath, bool askUser) {
    QString p = name;
    if (p.contains(QLatin1String(":\\"))) {
        // A Windows path: try it as it is, then from its runtime folder (or without the drive).
        p = text::withSlashes(p, text::Backslashes);
        if (QFile::exists(p)) {
            foundPath = cleanAbsolute(p);
            return true;
        }
        int runtime = qMax(p.indexOf(QLatin1String("/runtime/")), p.indexOf(QLatin1String(":runtime/")));
        p = runtime >= 0 ? p.mid(runtime) : p.mid(2);
    } else {
        p = text::withSlashes(p, text::Backslashes | text::Colons);
        if (!p.startsWith(QLatin1Char('/')))
            p.prepend(QLatin1Char('/'));
    }
    // Exact names anywhere win over names that match only without regard to letter case.
    QString found = searchContent(p, false);
    if (found.isEmpty())
        found = searchContent(p, true);
    if (!found.isEmpty()) {
        foundPath = cleanAbsolute(found);
        return true;
    }
    if (askUser)
        return locateFile(p, foundPath, false);
    return false;
}

// `p` (a '/' path with a leading '/') under the content folders in order, then under the folders the
// user located; `folded` matches every name without regard to case or Unicode composition.
QString OvPZ3Importer::searchContent(const QString &p, bool folded) {
    auto exists = [&](const QString &root, const QString &relative) {
        if (folded)
            return m_folderIndex.resolve(root, relative);
        return QFile::exists(root + relative) ? root + relative : QString();
    };
    QStringList relatives{p};
    if (const QString tail = runtimeTail(p); !tail.isEmpty())
        relatives.append(tail);
    OvContentMgr *content = OvApp::getContentMgr();
    for (const QString &relative : relatives)
        for (int i = 0; i < content->getNumPoserDirectories(); ++i)
            if (QString found = exists(content->getPoserDirectoryPath(i), relative); !found.isEmpty())
                return found;

    const QString tail = tailFromLastSlash(p);
    for (int k = 0; k < m_locatedDirs.dirs.size(); ++k)
        if (QString found = exists(m_locatedDirs.dirs[k], m_locatedDirs.isContentRoot[k] ? p : tail);
            !found.isEmpty())
            return found;
    return QString();
}

// Without a main window (or after "Stop Asking") nothing is asked, but the log tells what was
// missing, where it was looked for and what the import does instead; once per name and import.
void OvPZ3Importer::logMissing(const QString &name) {
    if (m_missingLogged.contains(name))
        return;
    m_missingLogged.insert(name);
    QStringList folders;
    OvContentMgr *content = OvApp::getContentMgr();
    for (int i = 0; i < content->getNumPoserDirectories(); ++i)
        folders.append(cleanAbsolute(content->getPoserDirectoryPath(i)));
    for (int k = 0; k < m_locatedDirs.dirs.size(); ++k)
        folders.append(m_locatedDirs.dirs[k]);
    OvFileIO::info(
        tr("Could not find \"%1\" (looked in: %2); continuing without it")
            .arg(name, folders.isEmpty() ? tr("no content folder") : folders.join(QLatin1String(", "))));
}

bool OvPZ3Importer::locateFile(const QString &name, QString &foundPath, bool isImage) {
    OvMainWindow *window = OvApp::getInterface();
    if (!m_askForFiles || !window) {
        logMissing(name);
        return false;
    }
    const QString text =
        tr("Cannot find a file for \"%1\".\n\nTo avoid seeing this message, make sure that the "
           "Poser content directories are set up correctly")
            .arg(name);
    OvApp::pauseProgress();
    const int answer = poser::askUser(
        QMessageBox::Warning, window, QStringLiteral("Unable to locate file"), text,
        {QStringLiteral("Locate"), QStringLiteral("Skip"), QStringLiteral("Stop Asking")}, 0, 1);
    bool found = false;
    if (answer == 2) {
        m_askForFiles = false;
    } else if (answer == 0) {
        const int slash = name.lastIndexOf(QLatin1Char('/'));
        const QString fileName = slash > 0 ? name.mid(slash + 1) : name;
        const QString ext = fileName.right(3);
        OvFileFilter filter;
        filter.newFilter(ext.toUpper() + QStringLiteral("File"));
        filter.addExtension(ext);
        const QString startPath = m_filePath + QLatin1Char('/') + fileName;
        QString selected;
        bool accepted =
            isImage ? window->doImageDialog(true, selected, nullptr, startPath)
                    : window->doFileDialog(true, QStringLiteral("Please locate the file: ") + fileName,
                                           startPath, filter, selected, nullptr, nullptr);
        if (accepted && !selected.isEmpty()) {
            int slash = selected.lastIndexOf(QLatin1Char('/'));
            if (slash > 0)
                m_filePath = selected.left(slash);
            learnLocation(name, selected);
            foundPath = cleanAbsolute(selected);
            found = true;
        }
    }
    OvApp::resumeProgress();
    QApplication::processEvents();
    return found;
}

// Remembers where the user found a file so the rest of the import finds its neighbours: the
// content root when the requested relative path is part of the chosen one, else the folder.
void OvPZ3Importer::learnLocation(const QString &name, const QString &selected) {
    int at = selected.toLower().indexOf(name.toLower());
    if (at > 0) {
        m_locatedDirs.append(selected.left(at), true);
        return;
    }
    int slash = selected.lastIndexOf(QLatin1Char('/'));
    m_locatedDirs.append(slash > 0 ? selected.left(slash) : QString(), false);
}

bool OvPZ3Importer::readScript(const QString &name) {
    QString found;
    bool ok = findContentFile(name, found, false);
    if (!ok && !name.isEmpty()) {
        QString twin = name;
        twin[twin.size() - 1] = QLatin1Char('z');
        ok = findContentFile(twin, found, false);
    }
    if (!ok) {
        // A Windows path is offered as written, backslashes and all.
        ok = locateFile(text::withSlashes(name, text::ColonsUnlessBackslash), found, false);
    }
    if (!ok) {
        reportError(tr("Could not find file %1").arg(name));
        return true;
    }
    // An include that is still being read would never end.
    const QString canonical = QFileInfo(found).canonicalFilePath();
    if (isOpenFile(canonical)) {
        reportError(tr("%1 includes itself through readScript; it is not read again").arg(found));
        return true;
    }
    // Each file is read once per import: fan-out (every level including the next twice) would
    // otherwise grow exponentially; repeated reads would only add the same objects again.
    if (m_includesRead.contains(canonical)) {
        reportInfo(tr("%1 was already read in this import; it is not read again").arg(found));
        return true;
    }
    if (m_includesRead.size() >= MaxIncludes || m_includeBytes > MaxIncludeBytes) {
        reportError(tr("Too many included files in this import (more than %1 files or %2 MB); %3 is not read")
                        .arg(MaxIncludes)
                        .arg(MaxIncludeBytes >> 20)
                        .arg(found));
        return true;
    }
    if (m_fileStack.count() >= MaxIncludeDepth) {
        reportError(tr("Too many nested readScript files (more than %1); %2 is not read")
                        .arg(MaxIncludeDepth)
                        .arg(found));
        return true;
    }
    const QString ext = OvFileIO::getFileExtension(found);
    auto *file = new (std::nothrow) Pz3InputFile(found, isCompressedExtension(ext));
    if (!file)
        throw QString("Out of Memory");
    if (!file->open()) {
        reportError(tr("Failed to open file %1").arg(found));
        delete file;
        return true;
    }
    file->m_canonicalPath = canonical;
    m_includesRead.insert(canonical);
    m_includeBytes += QFileInfo(found).size();
    m_fileStack.push(m_file);
    m_file = file;
    return true;
}
