#pragma once
#include <QString>

// Groups every scene change made while it lives into one undo step of the application's scene,
// named when it is accepted. Nested holds join the outermost one. A hold destroyed without
// accept() leaves no step: its changes stay in the scene and cannot be undone (OvUndoStack).
class OvUndoStackHold {
public:
    OvUndoStackHold();
    ~OvUndoStackHold();
    OvUndoStackHold(const OvUndoStackHold &) = delete;
    OvUndoStackHold &operator=(const OvUndoStackHold &) = delete;

    void accept(const QString &caption);
    bool isAccepted() const { return m_accepted; }

    // Holds open right now.
    static int openHolds();

private:
    bool m_accepted = false;
};
