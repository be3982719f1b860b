#include "notes/NoteKeys.h"

#include "base/Numbers.h"
#include "gui/Keys.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"

namespace {

/// While the part is recorded in steps.
bool stepKey(NoteState& state, int key, int mods) {
    CSeq* seq = state.seq();
    CStepRec& steps = seq->recorder.stepRec;
    const int along = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if (along > 0 && mods == modControl) return steps.tie(seq), true;
    if (along != 0 && mods == 0) return steps.rest(seq, along), true;
    if (up != 0 && !(mods & ~modShift)) {
        const int by = (mods & modShift ? EventRows::octave : 1) * up;
        const bool drums = state.part->type == partDrum;
        steps.setNote(drums ? asMinMax(steps.note - by, 0, asMax(0, state.rows().count() - 1))
                            : steps.note + by);
        state.shownChanged();
        return true;
    }
    if (key == keyBackspace) return steps.takeBack(seq), true;
    if (key == keyEscape) return seq->recorder.recordSteps(nullptr), true;
    return false;
}

/// Back to the pointer.
bool leavesTool(NoteState& state) {
    int& tool = state.seq()->editorComp->tool;
    const bool other = tool != toolPointer && !state.seq()->recorder.stepRec.getPart();
    if (other) tool = toolPointer;
    return other;
}

} // namespace

bool noteKey(NoteState& state, int key, int mods) {
    if (state.seq() && key == keyEscape && !mods && leavesTool(state)) return true;
    if (state.part && state.seq() && state.seq()->recorder.stepRec.getPart() == state.part &&
        stepKey(state, key, mods))
        return true;
    return state.part && state.seq() &&
           noteArrow(state.hand(), key, mods,
                     [&state](const NoteEvent& shown) { showEvent(state, shown); });
}
