#pragma once
// The host's main window and the file choosers it offers to plug-ins.

#include <QList>
#include <QMainWindow>
#include <QString>
#include <QStringList>

class OvViewportMgr;

// Named groups of file extensions for the file chooser: newFilter() starts a group, addExtension()
// adds to the group started last.
class OvFileFilter {
public:
    struct Entry {
        QString name;
        QStringList extensions; // without dot or wildcard: "obj", "jpg"
    };

    void newFilter(const QString &name);
    // Accepts "obj", ".obj" and "*.obj" alike. Without a group started, starts an unnamed one.
    void addExtension(const QString &ext);

    int count() const { return int(m_entries.size()); }
    bool isEmpty() const { return m_entries.isEmpty(); }
    const QList<Entry> &entries() const { return m_entries; }
    QString name(int i) const { return m_entries.value(i).name; }
    QStringList extensions(int i) const { return m_entries.value(i).extensions; }

    // The group as the file chooser shows it: "OBJFile (*.obj)", "Images (*.png *.jpg)"; an
    // unnamed group is only its patterns, a group without extensions matches everything.
    QString qtFilter(int i) const;
    QStringList qtFilters() const;

private:
    QList<Entry> m_entries;
};

class OvMainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit OvMainWindow(QWidget *parent = nullptr);
    ~OvMainWindow() override;

    // Modal file chooser. `open` picks an existing file, otherwise a file name to save to.
    // `startPath` is a folder, or a file whose folder is opened with its name preselected.
    // The filter's groups come first, then "All Files (*)". `filterIndex`, when given, is the
    // group to preselect on the way in and the group in use on the way out. The dialog is
    // parented to `parent`, or to this window. Returns false when cancelled; `selected` is
    // written only on success.
    bool doFileDialog(bool open, const QString &caption, const QString &startPath, const OvFileFilter &filter,
                      QString &selected, int *filterIndex = nullptr, QWidget *parent = nullptr);

    // The same for an image, filtered by the formats the image reader knows.
    bool doImageDialog(bool open, QString &selected, QWidget *parent = nullptr,
                       const QString &startPath = QString());

    OvViewportMgr *getViewportMgr() const;

    // Asks whether to switch off the limits that keys lie beyond; true for yes.
    bool askTurnOffLimits(QWidget *parent = nullptr);

    // One "Images" group with every readable image format.
    static OvFileFilter imageFilter();
    static QString allFilesFilter() { return QStringLiteral("All Files (*)"); }
};
