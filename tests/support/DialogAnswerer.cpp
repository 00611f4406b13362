#include "DialogAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>

namespace {

QString plainText(QString text) {
    // Mnemonic markers are not part of what the user reads.
    return text.remove(QLatin1Char('&'));
}

QAbstractButton *findButton(QWidget *dialog, const QString &text) {
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
        for (QAbstractButton *button : box->buttons())
            if (plainText(button->text()) == text)
                return button;
    }
    for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>())
        if (button->isVisible() && button->isEnabled() && plainText(button->text()) == text)
            return button;
    return nullptr;
}

} // namespace

DialogAnswerer::DialogAnswerer(int timeoutMs, QObject *parent) : QObject(parent), m_timeoutMs(timeoutMs) {
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
    m_timer.start();
}

DialogAnswerer::~DialogAnswerer() {
    m_timer.stop();
}

DialogAnswerer &DialogAnswerer::pressButton(const QString &text) {
    m_answers.append({Kind::Button, text});
    return *this;
}

DialogAnswerer &DialogAnswerer::pressEscape() {
    m_answers.append({Kind::Escape, QString()});
    return *this;
}

DialogAnswerer &DialogAnswerer::chooseFile(const QString &path) {
    m_answers.append({Kind::File, path});
    return *this;
}

DialogAnswerer &DialogAnswerer::reject() {
    m_answers.append({Kind::Reject, QString()});
    return *this;
}

void DialogAnswerer::poll() {
    QWidget *dialog = QApplication::activeModalWidget();
    if (!dialog)
        return;
    if (dialog != m_current) {
        m_current = dialog;
        m_answered = false;
        m_gaveUp = false;
        m_since.start();
        record(dialog);
        // Answer on a later tick, once the dialog has settled, as a user would.
        return;
    }
    if (!m_answered) {
        m_answered = true;
        answer(dialog);
        return;
    }
    if (!m_gaveUp && m_since.elapsed() > m_timeoutMs) {
        giveUp(dialog, QStringLiteral("still open after %1 ms").arg(m_timeoutMs));
    } else if (m_gaveUp && m_since.elapsed() > m_timeoutMs + 1000) {
        dialog->close(); // ignored reject(): not an ordinary dialog
    }
}

void DialogAnswerer::record(QWidget *dialog) {
    Seen seen;
    seen.className = QString::fromLatin1(dialog->metaObject()->className());
    seen.title = dialog->windowTitle();
    seen.parent = dialog->parentWidget();
    seen.answer = QStringLiteral("none");
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
        seen.text = box->text();
        for (QAbstractButton *button : box->buttons())
            seen.buttons.append(plainText(button->text()));
    } else if (auto *files = qobject_cast<QFileDialog *>(dialog)) {
        seen.filters = files->nameFilters();
        seen.directory = files->directory().absolutePath();
        seen.selection = files->selectedFiles();
        seen.saving = files->acceptMode() == QFileDialog::AcceptSave;
    }
    m_seen.append(seen);
    m_currentSeen = int(m_seen.size()) - 1;
}

void DialogAnswerer::answer(QWidget *dialog) {
    Seen &seen = m_seen[m_currentSeen];
    if (m_answers.isEmpty()) {
        giveUp(dialog, QStringLiteral("no answer queued"));
        return;
    }
    const Answer next = m_answers.takeFirst();
    switch (next.kind) {
    case Kind::Button:
        if (QAbstractButton *button = findButton(dialog, next.value)) {
            seen.answer = QStringLiteral("button ") + next.value;
            QPointer<QAbstractButton> target(button);
            later([target] {
                if (target)
                    target->click();
            });
        } else {
            giveUp(dialog, QStringLiteral("no button \"%1\"").arg(next.value));
        }
        break;
    case Kind::Escape: {
        seen.answer = QStringLiteral("escape");
        QPointer<QWidget> target(dialog);
        later([target] {
            if (!target)
                return;
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QCoreApplication::sendEvent(target, &press);
        });
        break;
    }
    case Kind::File:
        if (auto *files = qobject_cast<QFileDialog *>(dialog)) {
            seen.answer = QStringLiteral("file ") + next.value;
            QPointer<QFileDialog> target(files);
            const QString path = next.value;
            later([target, path] {
                if (!target)
                    return;
                // Typed into the name box as a user would; selectFile() leaves the box alone while
                // it has the focus, keeping the preselected name.
                if (auto *edit = target->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
                    edit->setText(path);
                else
                    target->selectFile(path);
                // Like pressing Open/Save: the chooser's own checks run (accept() is protected there).
                static_cast<QDialog *>(target.data())->accept();
            });
        } else {
            giveUp(dialog, QStringLiteral("a file was to be chosen, but the dialog is a ") + seen.className);
        }
        break;
    case Kind::Reject:
        seen.answer = QStringLiteral("reject");
        closeLater(dialog);
        break;
    }
}

void DialogAnswerer::giveUp(QWidget *dialog, const QString &why) {
    Seen &seen = m_seen[m_currentSeen];
    m_failures.append(QStringLiteral("%1 \"%2\": %3").arg(seen.className, seen.title, why));
    seen.answer += QStringLiteral(" (gave up)");
    m_gaveUp = true;
    closeLater(dialog);
}

void DialogAnswerer::closeLater(QWidget *dialog) {
    QPointer<QWidget> target(dialog);
    later([target] {
        if (!target)
            return;
        if (auto *d = qobject_cast<QDialog *>(target.data()))
            d->reject();
        else
            target->close();
    });
}

void DialogAnswerer::later(std::function<void()> action) {
    // An answer may bring up a nested dialog (a file chooser warning about a missing file) that
    // runs its own event loop. The poll timer does not fire while its own slot is running, so the
    // answer runs from a posted call instead, leaving the timer free to answer the nested one.
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}
