#include "arrange/GridHints.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "arrange/SongRange.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "ui/Options.h"
#include "ui/Workspace.h"

namespace {

/// With the second key that is in force.
CStr altName(const ArrangeState& state) {
    switch (SecondAlt(state.workspace.options().altKey.get())) {
    case SecondAlt::super:
        return "Alt or Super";
    case SecondAlt::altGr:
        return "Alt or AltGr";
    default:
        return "Alt";
    }
}

CStr laneHint(const ArrangeState& state, const ArrangeRow& row, CPoint at) {
    CPart* part = partAtPos(state, row, at.x).part;
    if (!part) return "Automation goes into parts: double click above for a new one";
    const FoundEvent found = PartMouse::under(laneOf(state, row, part), state.axis(), at);
    if (found.event && found.zone == zoneCurve)
        return "Drag: bend the line   Ctrl + drag: draw a line, with Shift freely   Right click: "
               "straight";
    if (found.event)
        return "Drag: move   Ctrl + drag: copy   Double click: type the value   Right click: "
               "delete";
    return "Drag: select points   Double click or " + altName(state) +
           " + drag: new point   Ctrl + drag: draw a line, with Shift freely";
}

} // namespace

CStr gridHint(const ArrangeState& state, const ArrangeRow* row, const PartHit& hit,
              PartHandle handle, CPoint at) {
    const CStr alt = altName(state);
    if (state.range.tool())
        return "Drag: choose time and tracks   Drag the range: move, Ctrl: copy   its ends: more "
               "or "
               "less, " +
               alt + ": stretch";
    if (row && row->take >= 0)
        return "Drag: play this take there   Click: between the cuts   Ctrl, once it moves: off "
               "the "
               "grid";
    if (row && row->notes)
        return "Double click or " + alt +
               " + drag: new note   Drag: move, Ctrl: copy   its ends: size   Right click: delete";
    if (row && row->lane) return laneHint(state, *row, at);
    switch (handle) {
    case PartHandle::fadeIn:
        return "Drag: fade in";
    case PartHandle::gain:
        return "Drag up or down: louder or softer";
    case PartHandle::fadeOut:
        return "Drag: fade out";
    case PartHandle::loop:
        return "Drag: linked copies behind the part   Further down: where the part ends";
    case PartHandle::none:
        break;
    }
    if (hit.part && hit.zone == zoneStart)
        return "Drag: where the part starts   Ctrl, once it moves: off the grid";
    if (hit.part && hit.zone == zoneEnd)
        return "Drag: where the part ends   Ctrl, once it moves: off the grid";
    if (hit.part)
        return "Drag: move   Ctrl + drag: copy   Ctrl + Shift + drag: linked copy   Ctrl + " + alt +
               " + drag: slip   " + alt + " + right click: split";
    if (!row) return "Drop audio, MIDI files, clips and sounds here for new tracks";
    if (row->songTrack->track->kind == trackFolder) return "Drag: select parts";
    return "Drag: select parts   Double click or " + alt + " + drag: new part   Ctrl + wheel: zoom";
}
