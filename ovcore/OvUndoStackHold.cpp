#include "OvUndoStackHold.h"
#include "OvApp.h"
#include "OvScene.h"

namespace {
int g_openHolds = 0;
}

OvUndoStackHold::OvUndoStackHold() {
    ++g_openHolds;
}

OvUndoStackHold::~OvUndoStackHold() {
    --g_openHolds;
}

void OvUndoStackHold::accept(const QString &caption) {
    if (m_accepted)
        return;
    m_accepted = true;
    // Only the outermost hold makes a step; inner ones are part of it.
    if (g_openHolds == 1)
        OvApp::getScene()->addUndoStep(caption);
}

int OvUndoStackHold::openHolds() {
    return g_openHolds;
}
