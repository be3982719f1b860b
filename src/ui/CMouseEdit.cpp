#include "ui/CMouseEdit.h"

#include "base/Delegates.h"
#include "gui/Keys.h"

CMouseEdit::~CMouseEdit() {
    delete onModeChanged;
}

void CMouseEdit::setMode(int newMode, int x, int y, int btn) {
    mode = newMode;
    startBtn = btn;
    start = current = asPoint(x, y);
    if (onModeChanged) (*onModeChanged)(this);
}

void CSeqMouseEdit::setMode(int newMode, int x, int y, int btn) {
    deltaPos = deltaY = velocity = 0;
    eventPos = eventNote = 0;
    if (newMode != editMove && newMode != editPan && newMode != editPress) selStart = selEnd = 0;
    CMouseEdit::setMode(newMode, x, y, btn);
}

void CSeqMouseEdit::done() {
    mode = editIdle;
    deltaPos = deltaY = velocity = 0;
    editPart = nullptr;
    if (onModeChanged) (*onModeChanged)(this);
}

bool CSeqMouseEdit::stretches() const {
    return startBtn & modAlt;
}

int CSeqMouseEdit::getPos() const {
    if (kind == kindPoints) return deltaPos;
    return eventPos + (stretches() ? 0 : deltaPos);
}

int CSeqMouseEdit::getLength() const {
    return eventLength + (stretches() ? deltaPos : 0);
}

int CSeqMouseEdit::getTranspose() const {
    return eventNote + (stretches() ? 0 : deltaY);
}

int CSeqMouseEdit::getVelocity() const {
    return velocity + (stretches() ? deltaY : 0);
}
