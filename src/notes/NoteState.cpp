#include "notes/NoteState.h"

#include "sequencer/song/CSeq.h"

#include <algorithm>

const EventIndex& NoteState::indexOf(CPart* of) const {
    if (of != part) return otherEvents.of(seq(), of);
    partEvents.refresh(seq(), part);
    return partEvents;
}

PartList NoteState::parts() const {
    PartList all = together;
    if (part) all.insert(all.begin(), part);
    return all;
}

bool NoteState::editsAlong(const CPart* other) const {
    return std::ranges::find(together, other) != together.end();
}

EventRows NoteState::rows() const {
    const EventRows all(track, part, noteHeight);
    if (!folded || !seq()) return all;
    std::vector<bool> used;
    for (CPart* p : parts()) {
        const std::vector<bool>& own = indexOf(p).rows();
        if (own.size() > used.size()) used.resize(own.size());
        for (size_t i = 0; i < own.size(); i++) used[i] = used[i] || own[i];
    }
    return all.folded(used);
}

int NoteState::shownGrid() const {
    return viewGrid(*seq()->snap, edit.axis, workspace.options()).snap;
}

NotePlace NoteState::place() const {
    CSeq* song = seq();
    return {
        song,          track, part, rows(), viewGrid(*song->snap, edit.axis, workspace.options()),
        &indexOf(part)};
}

const EventIndex& NoteState::eventsOf(const NotePlace& place, CPart* shown) const {
    if (shown == place.part) return *place.events;
    const auto [made, fresh] = draftEvents.try_emplace(shown);
    if (fresh) made->second.make(place.seq, shown);
    return made->second;
}

NotePlace NoteState::placeOf(CPart* other) const {
    NotePlace found = place();
    found.part = other;
    found.track = seq()->partToTrack(other);
    found.events = &indexOf(other);
    return found;
}

std::vector<NotePlace> NoteState::placesAlong() const {
    std::vector<NotePlace> places;
    for (CPart* p : together) places.push_back(placeOf(p));
    return places;
}
