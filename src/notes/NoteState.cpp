#include "notes/NoteState.h"

#include "sequencer/CSeq.h"

EventRows NoteState::rows() const {
    return EventRows(track, part, noteHeight);
}

NotePlace NoteState::place() const {
    CSeq* song = seq();
    partEvents.refresh(song, part);
    return {song,       track, part, rows(), viewGrid(*song->snap, edit.axis, workspace.options()),
            &partEvents};
}

const EventIndex& NoteState::eventsOf(const NotePlace& place, CPart* shown) const {
    if (shown == place.part) return *place.events;
    if (shown != draftShown) draftEvents.make(place.seq, shown);
    draftShown = shown;
    return draftEvents;
}

NotePlace NoteState::placeOf(CPart* other) const {
    CTrack* on = seq()->partToTrack(other);
    NotePlace found = place();
    found.part = other;
    found.track = on;
    found.rows = EventRows(on, other, noteHeight);
    found.events = &otherEvents.of(seq(), other);
    return found;
}
