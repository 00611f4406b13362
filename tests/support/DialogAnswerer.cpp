#include "DialogAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>

namespace {

QAbstractButton *findButton(QWidget *dialog, const QString &text) {
    for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>())
        if (button->isVisible() && button->isEnabled() && button->text().remove('&') == text) // no mnemonics
            return button;
    return nullptr;
}

void close(QWidget *dialog) {
    if (auto *d = qobject_cast<QDialog *>(dialog))
        d->reject();
    else
        dialog->close();
}

} // namespace

DialogAnswerer::DialogAnswerer(int timeoutMs) : m_timeoutMs(timeoutMs) {
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
    m_timer.start();
}

void DialogAnswerer::poll() {
    QWidget *dialog = QApplication::activeModalWidget();
    if (!dialog)
        return;
    if (dialog != m_current) {
        // Answered on a later tick, once the dialog has settled, as a user would.
        m_current = dialog;
        m_answered = m_gaveUp = false;
        m_since.start();
        record(dialog);
    } else if (!m_answered) {
        m_answered = true;
        answer(dialog);
    } else if (!m_gaveUp && m_since.elapsed() > m_timeoutMs) {
        giveUp(dialog, QStringLiteral("still open after %1 ms").arg(m_timeoutMs));
    } else if (m_gaveUp && m_since.elapsed() > m_timeoutMs + 1000) {
        dialog->close(); // it ignored reject(): not an ordinary dialog
    }
}

void DialogAnswerer::record(QWidget *dialog) {
    Seen seen;
    seen.className = QString::fromLatin1(dialog->metaObject()->className());
    seen.title = dialog->windowTitle();
    seen.parent = dialog->parentWidget();
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
        seen.text = box->text();
        for (QAbstractButton *button : box->buttons())
            seen.buttons.append(button->text().remove('&'));
    } else if (auto *files = qobject_cast<QFileDialog *>(dialog)) {
        seen.filters = files->nameFilters();
        seen.directory = files->directory().absolutePath();
        seen.selection = files->selectedFiles();
        seen.saving = files->acceptMode() == QFileDialog::AcceptSave;
    }
    m_seen.append(seen);
}

void DialogAnswerer::answer(QWidget *dialog) {
    if (m_answers.isEmpty())
        return giveUp(dialog, QStringLiteral("no answer queued"));
    const Answer next = m_answers.takeFirst();
    if (next.first == Kind::Button) {
        if (!findButton(dialog, next.second))
            return giveUp(dialog, QStringLiteral("no button \"%1\"").arg(next.second));
        later(dialog, [text = next.second](QWidget *d) {
            if (QAbstractButton *button = findButton(d, text))
                button->click();
        });
    } else if (next.first == Kind::Escape) {
        later(dialog, [](QWidget *d) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QCoreApplication::sendEvent(d, &press);
        });
    } else if (next.first == Kind::File) {
        if (!qobject_cast<QFileDialog *>(dialog))
            return giveUp(dialog, QStringLiteral("a file was to be chosen, but the dialog is a ") +
                                      m_seen.last().className);
        later(dialog, [path = next.second](QWidget *d) {
            // Typed into the name box as a user would (selectFile() leaves the box alone while it has
            // the focus), then accepted like pressing Open or Save, so the chooser's own checks run.
            if (auto *edit = d->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
                edit->setText(path);
            else
                static_cast<QFileDialog *>(d)->selectFile(path);
            static_cast<QDialog *>(d)->accept();
        });
    } else {
        later(dialog, close);
    }
}

void DialogAnswerer::giveUp(QWidget *dialog, const QString &why) {
    m_failures.append(QStringLiteral("%1 \"%2\": %3").arg(m_seen.last().className, m_seen.last().title, why));
    m_gaveUp = true;
    later(dialog, close);
}

void DialogAnswerer::later(QWidget *dialog, std::function<void(QWidget *)> action) {
    // An answer may bring up a nested dialog (a file chooser warning about a missing file) that runs
    // its own event loop. The poll timer does not fire while its own slot is running, so the answer
    // runs from a posted call instead, leaving the timer free to answer the nested one. A dialog
    // gone by then is left alone.
    QPointer<QWidget> target(dialog);
    QMetaObject::invokeMethod(
        this,
        [target, action = std::move(action)] {
            if (target)
                action(target);
        },
        Qt::QueuedConnection);
}
