#include "OvApp.h"
#include "OvImageMgr.h"
#include "OvScene.h"

#include <QWidget>
#include <memory>

namespace {

struct AppState {
    QString status;
    int progressPauses = 0;
    QString progressText;
    int progressDepth = 0;
    int progressStarts = 0;
    QList<OvApp::LogEntry> log;
    OvContentMgr contentMgr;
    OvImageMgr imageMgr;
    OvHelpMgr helpMgr;
    std::unique_ptr<OvScene> scene;
    OvMainWindow *mainWindow = nullptr;
};

AppState &state() {
    static AppState s;
    return s;
}

} // namespace

void OvApp::statusLine(const QString &text, bool) { state().status = text; }
QString OvApp::currentStatus() { return state().status; }

void OvApp::startProgress(const QString &text, int, bool, bool) {
    AppState &s = state();
    if (s.progressDepth++ == 0)
        s.progressText = text;
    ++s.progressStarts;
}

void OvApp::finishProgress() {
    AppState &s = state();
    if (s.progressDepth > 0)
        --s.progressDepth;
}

QString OvApp::progressText() { return state().progressText; }
int OvApp::progressDepth() { return state().progressDepth; }
int OvApp::progressStarts() { return state().progressStarts; }

void OvApp::pauseProgress() { ++state().progressPauses; }
void OvApp::resumeProgress() {
    if (state().progressPauses > 0)
        --state().progressPauses;
}
bool OvApp::isProgressPaused() { return state().progressPauses > 0; }

void OvApp::addLog(LogLevel level, const QString &text) { state().log.append({level, text}); }
const QList<OvApp::LogEntry> &OvApp::log() { return state().log; }
void OvApp::clearLog() { state().log.clear(); }

OvContentMgr *OvApp::getContentMgr() { return &state().contentMgr; }
OvImageMgr *OvApp::getImageMgr() { return &state().imageMgr; }
OvHelpMgr *OvApp::getHelpMgr() { return &state().helpMgr; }

OvScene *OvApp::getScene() {
    AppState &s = state();
    if (!s.scene)
        s.scene.reset(new OvScene);
    return s.scene.get();
}

OvMainWindow *OvApp::getInterface() { return state().mainWindow; }
void OvApp::setInterface(OvMainWindow *window) { state().mainWindow = window; }

void OvApp::reset() {
    AppState &s = state();
    s.status.clear();
    s.progressPauses = 0;
    s.progressText.clear();
    s.progressDepth = 0;
    s.progressStarts = 0;
    s.log.clear();
    s.contentMgr = OvContentMgr();
    s.imageMgr.clear();
    s.helpMgr.clear();
    s.scene.reset();
    s.mainWindow = nullptr;
}

void OvHelpMgr::setOnlineHelp(QWidget *widget) {
    if (widget)
        m_names.append(widget->objectName());
}
