#pragma once
// Application services of the host: status line, progress, log, content folders, images, help,
// the main window (null in a headless host) and the scene.

#include "OvMath.h"
#include <QList>
#include <QString>
#include <QStringList>

class OvContentMgr;
class OvHelpMgr;
class OvImageMgr;
class OvMainWindow;
class OvScene;
class OvViewportMgr;
class QWidget;

class OvApp {
public:
    enum LogLevel { LogError, LogInfo };
    struct LogEntry {
        LogLevel level;
        QString text;
    };

    static void statusLine(const QString &text, bool update = true);
    static QString currentStatus();

    // Progress display of a long step; calls nest, the outermost text is the one shown.
    static void startProgress(const QString &text, int steps = 0, bool cancellable = false,
                              bool showNow = false);
    static void finishProgress();
    // Text of the current (or else the last) outermost display; open displays.
    static QString progressText();
    static int progressDepth();
    // How many progress displays were started since the last reset.
    static int progressStarts();

    static void pauseProgress();
    static void resumeProgress();
    static bool isProgressPaused();

    // The log keeps the first RepeatsShown messages of a kind (the same text but for its numbers) and
    // counts the rest on one line ("… and 99,000 more like this"); past MaxLogEntries lines, one line
    // counts every further message.
    static constexpr int RepeatsShown = 10;
    static constexpr int MaxLogEntries = 10000;
    static void addLog(LogLevel level, const QString &text);
    static const QList<LogEntry> &log();
    static void clearLog();

    static OvContentMgr *getContentMgr();
    static OvImageMgr *getImageMgr();
    static OvHelpMgr *getHelpMgr();
    static OvScene *getScene();

    // The main window; questions to the user are only asked when there is one.
    static OvMainWindow *getInterface();
    static void setInterface(OvMainWindow *window);
    // The viewports; plug-ins reach them through the main window.
    static OvViewportMgr *getViewportMgr();

    // How a host without a main window answers the questions an import would ask: the host's
    // default (what a host that cannot ask does), or always yes, no or cancel.
    enum Answer { AnswerDefault, AnswerYes, AnswerNo, AnswerCancel };
    static Answer headlessAnswer();
    static void setHeadlessAnswer(Answer answer);

    // Back to a fresh application state: empty log, scene, content folders and image cache.
    static void reset();
};

class OvNode;

// How a drag-and-drop import places what it brings: the node it was dropped on, what to do with it
// there, and the point it was dropped at.
class OvContentDropOptions {
public:
    enum DropMode {
        Automatic = 0,
        FollowTargetFigure = 1,
        ParentToTarget = 2,
        Conform = 3,
        PlaceAtPoint = 4
    };

    OvNode *getTargetNode() const { return m_target; }
    void setTargetNode(OvNode *node) { m_target = node; }
    DropMode getDropMode() const { return m_mode; }
    void setDropMode(DropMode mode) { m_mode = mode; }
    const OvVec3 &getPoint() const { return m_point; }
    void setPoint(const OvVec3 &point) { m_point = point; }

private:
    OvNode *m_target = nullptr;
    DropMode m_mode = Automatic;
    OvVec3 m_point;
};

// The host's list of Poser content folders, in search order.
class OvContentMgr {
public:
    int getNumPoserDirectories() const { return int(m_poserDirs.size()); }
    QString getPoserDirectoryPath(int i) const { return m_poserDirs.value(i); }
    void addPoserDirectory(const QString &path) { m_poserDirs.append(path); }
    void setPoserDirectories(const QStringList &dirs) { m_poserDirs = dirs; }
    QStringList poserDirectories() const { return m_poserDirs; }
    // Drop options of a drag-and-drop import; null for an ordinary import.
    OvContentDropOptions *getContentDropOptions() const { return m_dropOptions; }
    void setContentDropOptions(OvContentDropOptions *options) { m_dropOptions = options; }

private:
    QStringList m_poserDirs;
    OvContentDropOptions *m_dropOptions = nullptr;
};

// Finds online help for a widget by its object name; keeps the names it was given.
class OvHelpMgr {
public:
    void setOnlineHelp(QWidget *widget);
    const QStringList &registeredNames() const { return m_names; }
    void clear() { m_names.clear(); }

private:
    QStringList m_names;
};
