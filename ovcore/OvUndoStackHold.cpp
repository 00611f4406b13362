#include "OvUndoStackHold.h"
#include "OvApp.h"
#include "OvScene.h"
#include "OvUndoStack.h"

namespace {
int g_openHolds = 0;
}

OvUndoStackHold::OvUndoStackHold() {
    ++g_openHolds;
    OvApp::getScene()->getUndoStack()->open();
}

OvUndoStackHold::~OvUndoStackHold() {
    --g_openHolds;
    if (!m_accepted)
        OvApp::getScene()->getUndoStack()->discard();
}

void OvUndoStackHold::accept(const QString &caption) {
    if (m_accepted)
        return;
    m_accepted = true;
    OvApp::getScene()->getUndoStack()->accept(caption);
}

int OvUndoStackHold::openHolds() {
    return g_openHolds;
}
