#include "OvMainWindow.h"
#include "OvApp.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QMessageBox>

void OvFileFilter::newFilter(const QString &name) {
    m_entries.append(Entry{name, {}});
}

void OvFileFilter::addExtension(const QString &ext) {
    QString e = ext.trimmed();
    if (e.startsWith(QLatin1Char('*')))
        e.remove(0, 1);
    if (e.startsWith(QLatin1Char('.')))
        e.remove(0, 1);
    if (e.isEmpty())
        return;
    if (m_entries.isEmpty())
        m_entries.append(Entry{});
    QStringList &exts = m_entries.last().extensions;
    if (!exts.contains(e))
        exts.append(e);
}

QString OvFileFilter::qtFilter(int i) const {
    if (i < 0 || i >= count())
        return QString();
    const Entry &entry = m_entries.at(i);
    QStringList patterns;
    for (const QString &ext : entry.extensions)
        patterns.append(QStringLiteral("*.") + ext);
    if (patterns.isEmpty())
        patterns.append(QStringLiteral("*"));
    const QString joined = patterns.join(QLatin1Char(' '));
    if (entry.name.isEmpty())
        return joined;
    return QStringLiteral("%1 (%2)").arg(entry.name, joined);
}

QStringList OvFileFilter::qtFilters() const {
    QStringList filters;
    for (int i = 0; i < count(); ++i)
        filters.append(qtFilter(i));
    return filters;
}

OvMainWindow::OvMainWindow(QWidget *parent) : QMainWindow(parent) {}

OvMainWindow::~OvMainWindow() {
    // Plug-ins reach the window through the application; never leave them a dangling one.
    if (OvApp::getInterface() == this)
        OvApp::setInterface(nullptr);
}

bool OvMainWindow::doFileDialog(bool open, const QString &caption, const QString &startPath,
                                const OvFileFilter &filter, QString &selected, int *filterIndex,
                                QWidget *parent) {
    QFileDialog dialog(parent ? parent : this, caption);
    // The toolkit's own dialog behaves the same on every platform and can be driven by tests.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dialog.setFileMode(open ? QFileDialog::ExistingFile : QFileDialog::AnyFile);

    QStringList filters = filter.qtFilters();
    filters.append(allFilesFilter());
    dialog.setNameFilters(filters);
    if (filterIndex && *filterIndex >= 0 && *filterIndex < filters.size())
        dialog.selectNameFilter(filters.at(*filterIndex));

    if (!startPath.isEmpty()) {
        const QFileInfo info(startPath);
        if (info.isDir()) {
            dialog.setDirectory(info.absoluteFilePath());
        } else {
            // The file itself need not exist (a file being looked for); its folder might not either.
            if (info.absoluteDir().exists())
                dialog.setDirectory(info.absolutePath());
            if (!info.fileName().isEmpty())
                dialog.selectFile(info.fileName());
        }
    }

    if (dialog.exec() != QDialog::Accepted)
        return false;
    const QStringList files = dialog.selectedFiles();
    if (files.isEmpty() || files.first().isEmpty())
        return false;
    selected = files.first();
    if (filterIndex)
        *filterIndex = int(filters.indexOf(dialog.selectedNameFilter()));
    return true;
}

OvFileFilter OvMainWindow::imageFilter() {
    OvFileFilter filter;
    filter.newFilter(tr("Images"));
    for (const QByteArray &format : QImageReader::supportedImageFormats())
        filter.addExtension(QString::fromLatin1(format).toLower());
    return filter;
}

bool OvMainWindow::doImageDialog(bool open, QString &selected, QWidget *parent, const QString &startPath) {
    return doFileDialog(open, open ? tr("Open Image") : tr("Save Image"), startPath, imageFilter(), selected,
                        nullptr, parent);
}

OvViewportMgr *OvMainWindow::getViewportMgr() const {
    return OvApp::getViewportMgr();
}

bool OvMainWindow::askTurnOffLimits(QWidget *parent) {
    return QMessageBox::question(parent ? parent : this, tr("Turn Limits Off?"),
                                 tr("Some keys lie beyond the limits of their dials. Turn limits off?"),
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}
