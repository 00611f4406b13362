#pragma once
// Answers real modal dialogs the way a user would, so code that asks questions can run in tests.
//
// While it lives, a timer polls QApplication::activeModalWidget(). Each new modal dialog takes the
// next queued answer; what the dialog showed is recorded so a test can check the question asked.
// A dialog without a usable answer, or one still up after the timeout, is rejected and the
// failure recorded, so a test fails instead of hanging. A dialog that comes back on top after a
// nested one closed counts as a new question.
//
//     DialogAnswerer answerer;
//     answerer.pressButton("Locate").chooseFile(path);
//     ... code that shows a message box and then a file chooser ...
//     EXPECT_TRUE(answerer.failures().isEmpty());

#include <QElapsedTimer>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

class QWidget;

class DialogAnswerer : public QObject {
public:
    struct Seen {
        QString className;            // most derived Qt class, "QMessageBox", "QFileDialog"
        QString title;                // window title
        QString text;                 // message box text
        QStringList buttons;          // message box button texts, in the order they are laid out
        QStringList filters;          // file dialog name filters
        QString directory;            // file dialog folder when it came up
        QStringList selection;        // file dialog preselected files when it came up
        bool saving = false;          // file dialog in save mode
        const void *parent = nullptr; // identity of the parent widget, only for comparisons
    };

    explicit DialogAnswerer(int timeoutMs = 5000);

    // Answers for successive dialogs, used in the order queued.
    DialogAnswerer &pressButton(const QString &text) { return queue(Kind::Button, text); }
    DialogAnswerer &pressEscape() { return queue(Kind::Escape); }
    DialogAnswerer &chooseFile(const QString &path) { return queue(Kind::File, path); } // and accept
    DialogAnswerer &reject() { return queue(Kind::Reject); } // closes the dialog as cancelled

    const QList<Seen> &seen() const { return m_seen; }
    QStringList failures() const { return m_failures; }
    int pendingAnswers() const { return int(m_answers.size()); }

private:
    enum class Kind { Button, Escape, File, Reject };
    using Answer = std::pair<Kind, QString>;

    DialogAnswerer &queue(Kind kind, const QString &value = QString()) {
        m_answers.append({kind, value});
        return *this;
    }
    void poll();
    void record(QWidget *dialog);
    void answer(QWidget *dialog);
    void giveUp(QWidget *dialog, const QString &why);
    void later(QWidget *dialog, std::function<void(QWidget *)> action);

    int m_timeoutMs;
    QTimer m_timer;
    QList<Answer> m_answers;
    QList<Seen> m_seen;
    QStringList m_failures;
    QPointer<QWidget> m_current; // the dialog being answered
    bool m_answered = false;
    bool m_gaveUp = false;
    QElapsedTimer m_since;
};
