#include "OvApp.h"
#include "OvAudio.h"
#include "OvImageMgr.h"
#include "OvScene.h"
#include "OvViewport.h"

#include <QHash>
#include <QLocale>
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
    // Messages of one kind (same text but for its numbers) seen so far, and where their count line is.
    struct Repeat {
        int seen = 0;
        qsizetype countLine = -1;
    };
    QHash<QString, Repeat> repeats;
    qsizetype overflowLine = -1; // the count line of messages past MaxLogEntries
    int overflow = 0;
    OvContentMgr contentMgr;
    OvImageMgr imageMgr;
    OvMultiMediaMgr multiMediaMgr;
    OvHelpMgr helpMgr;
    std::unique_ptr<OvScene> scene;
    OvMainWindow *mainWindow = nullptr;
    std::unique_ptr<OvViewportMgr> viewportMgr;
    OvApp::Answer headlessAnswer = OvApp::AnswerDefault;
};

AppState &state() {
    static AppState s;
    return s;
}

} // namespace

void OvApp::statusLine(const QString &text, bool) {
    state().status = text;
}
QString OvApp::currentStatus() {
    return state().status;
}

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

QString OvApp::progressText() {
    return state().progressText;
}
int OvApp::progressDepth() {
    return state().progressDepth;
}
int OvApp::progressStarts() {
    return state().progressStarts;
}

void OvApp::pauseProgress() {
    ++state().progressPauses;
}
void OvApp::resumeProgress() {
    if (state().progressPauses > 0)
        --state().progressPauses;
}
bool OvApp::isProgressPaused() {
    return state().progressPauses > 0;
}

namespace {

// The kind of a message: its text with every run of digits as one '#', so that the same complaint
// about line 12 and line 13 counts as a repeat.
QString messageKind(const QString &text) {
    QString kind;
    kind.reserve(text.size());
    bool inDigits = false;
    for (QChar c : text) {
        const bool digit = c.isDigit();
        if (!digit)
            kind.append(c);
        else if (!inDigits)
            kind.append(QLatin1Char('#'));
        inDigits = digit;
    }
    return kind;
}

QString countText(int n, const char *what) {
    return QStringLiteral("\u2026 and %1 more %2")
        .arg(QLocale(QLocale::English).toString(n), QLatin1String(what));
}

} // namespace

// A damaged or hostile file can produce a message per line: after the first few of a kind, one line
// counts the rest, and past MaxLogEntries one last line counts everything else, so the log stays small.
void OvApp::addLog(LogLevel level, const QString &text) {
    AppState &s = state();
    if (s.overflowLine >= 0) {
        s.log[s.overflowLine].text = countText(++s.overflow, "messages");
        return;
    }
    AppState::Repeat &r = s.repeats[messageKind(text)];
    if (++r.seen <= RepeatsShown) {
        if (s.log.size() >= MaxLogEntries) {
            s.overflowLine = s.log.size();
            s.overflow = 1;
            s.log.append({level, countText(1, "messages")});
            return;
        }
        s.log.append({level, text});
        return;
    }
    if (r.countLine < 0) {
        r.countLine = s.log.size();
        s.log.append({level, QString()});
    }
    s.log[r.countLine].text = countText(r.seen - RepeatsShown, "like this");
}

const QList<OvApp::LogEntry> &OvApp::log() {
    return state().log;
}

void OvApp::clearLog() {
    AppState &s = state();
    s.log.clear();
    s.repeats.clear();
    s.overflowLine = -1;
    s.overflow = 0;
}

OvContentMgr *OvApp::getContentMgr() {
    return &state().contentMgr;
}
OvImageMgr *OvApp::getImageMgr() {
    return &state().imageMgr;
}
OvMultiMediaMgr *OvApp::getMultiMediaMgr() {
    return &state().multiMediaMgr;
}
OvHelpMgr *OvApp::getHelpMgr() {
    return &state().helpMgr;
}

OvScene *OvApp::getScene() {
    AppState &s = state();
    if (!s.scene)
        s.scene.reset(new OvScene);
    return s.scene.get();
}

OvMainWindow *OvApp::getInterface() {
    return state().mainWindow;
}
void OvApp::setInterface(OvMainWindow *window) {
    state().mainWindow = window;
}

OvViewportMgr *OvApp::getViewportMgr() {
    AppState &s = state();
    if (!s.viewportMgr)
        s.viewportMgr.reset(new OvViewportMgr);
    return s.viewportMgr.get();
}

OvApp::Answer OvApp::headlessAnswer() {
    return state().headlessAnswer;
}
void OvApp::setHeadlessAnswer(Answer answer) {
    state().headlessAnswer = answer;
}

void OvApp::reset() {
    AppState &s = state();
    s.status.clear();
    s.progressPauses = 0;
    s.progressText.clear();
    s.progressDepth = 0;
    s.progressStarts = 0;
    clearLog();
    s.contentMgr = OvContentMgr();
    s.imageMgr.clear();
    s.multiMediaMgr = OvMultiMediaMgr();
    s.helpMgr.clear();
    s.scene.reset();
    s.viewportMgr.reset();
    s.mainWindow = nullptr;
    s.headlessAnswer = AnswerDefault;
}

void OvHelpMgr::setOnlineHelp(QWidget *widget) {
    if (widget)
        m_names.append(widget->objectName());
}
