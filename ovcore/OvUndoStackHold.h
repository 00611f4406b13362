#pragma once
#include <QString>

// Groups every scene change made while it lives into one undo step, named when it is accepted. A
// hold destroyed without accept() leaves no step.
class OvUndoStackHold {
public:
    OvUndoStackHold();
    ~OvUndoStackHold();
    OvUndoStackHold(const OvUndoStackHold &) = delete;
    OvUndoStackHold &operator=(const OvUndoStackHold &) = delete;

    void accept(const QString &caption);
    bool isAccepted() const { return m_accepted; }

    // Holds open right now (nested holds join the outermost one).
    static int openHolds();

private:
    bool m_accepted = false;
};
