#include "FolderIndex.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <dirent.h>
#include <utility>
#include <vector>

QString FolderIndex::folded(const QString &name) {
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

const FolderIndex::Listing &FolderIndex::listing(const QString &folder) {
    auto it = m_listings.constFind(folder);
    if (it != m_listings.constEnd())
        return *it;
    Listing l;
    QStringList names;
    ++m_reads;
    if (DIR *d = ::opendir(QFile::encodeName(folder).constData())) {
        while (const dirent *e = ::readdir(d)) {
            const QString name = QFile::decodeName(e->d_name);
            if (name != QLatin1String(".") && name != QLatin1String(".."))
                names.append(name);
        }
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    for (const QString &name : names) {
        l.exact.insert(name);
        l.byFold[folded(name)].append(name);
    }
    return *m_listings.insert(folder, l);
}

// Names are tried depth first, exact names before folded ones, so that "runtime/geometries/x.obj"
// still finds Runtime/Geometries/x.obj when an unrelated "runtime" folder exists as well.
QString FolderIndex::resolve(const QString &root, const QString &relative) {
    QString base = root;
    if (base.endsWith(QLatin1Char('/')) && base.size() > 1)
        base.chop(1);
    const QString exact =
        base + (relative.startsWith(QLatin1Char('/')) ? relative : QLatin1Char('/') + relative);
    if (QFileInfo::exists(exact))
        return exact;
    QStringList names;
    for (const QString &name : relative.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (name == QLatin1String(".."))
            names.isEmpty() ? void() : names.removeLast();
        else if (name != QLatin1String("."))
            names.append(name);
    }
    if (names.isEmpty())
        return QString();
    std::vector<std::pair<int, QString>> pending{{0, base}};
    // Folders that differ only in case at every level could make the search exponential.
    for (int budget = MaxSteps; !pending.empty() && budget > 0; --budget) {
        auto [level, path] = pending.back();
        pending.pop_back();
        if (level == names.size())
            return path;
        const Listing &l = listing(path);
        const QString &name = names[level];
        const QStringList folded = l.byFold.value(FolderIndex::folded(name));
        for (qsizetype i = folded.size(); i-- > 0;)
            if (folded[i] != name)
                pending.emplace_back(level + 1, path + QLatin1Char('/') + folded[i]);
        if (l.exact.contains(name))
            pending.emplace_back(level + 1, path + QLatin1Char('/') + name);
    }
    return QString();
}
