#include "arrange/TrackCommands.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/TrackNotes.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/FolderSum.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackValues.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <vector>

namespace {

using Tracks = std::vector<CTrack*>;

/// In the order of the song.
Tracks chosen(CSeq* seq) {
    Tracks all;
    for (auto* t : seq->tracks)
        if (t->selected()) all.push_back(t);
    return all;
}

bool showsTakes(const CTrack* track) {
    return track->takesShown;
}

bool isFolder(const CTrack* track) {
    return track->kind == trackFolder;
}

bool isSummed(const CTrack* track) {
    return isFolder(track) && folderGroup(track->seq, track);
}

/// In the current program.
bool hasTakes(const CTrack* track) {
    for (const auto* t : track->seq->getProg()->tracks)
        if (t->track == track)
            for (auto* part : t->parts)
                if (takesOf(part)) return true;
    return false;
}

void toggleAll(CSeq* seq, StoredValue (*valueOf)(CSongTrack*), const char* step) {
    bool any = false;
    const auto& tracks = seq->getProg()->tracks;
    for (auto* t : tracks) any = any || valueOf(t).get()[0] != 0.0;
    ValueDoor& door = *seq->host->values;
    door.begin(step);
    for (auto* t : tracks) door.set(valueOf(t), any ? 0.0 : 1.0);
    door.end();
}

} // namespace

void toggleMutesOfAll(CSeq* seq) {
    toggleAll(seq, mutedOf, "(Un)mute all tracks");
}

void toggleSolosOfAll(CSeq* seq) {
    toggleAll(seq, soloedOf, "(Un)solo all tracks");
}

TrackCommands::TrackCommands(ArrangeState& shared, HeadList& list) : state(shared), heads(list) {
    const auto ready = [this] { return anyTrack(); };
    const auto idle = [this] { return anyTrack() && !state.qv->recording && !state.qv->recUndo; };
    state.actions.bind(
        "rename", [this] { heads.renameSelected(); }, ready);
    state.actions.bind(
        "trackcolour", [this] { heads.askColour(); }, ready);
    state.actions.bind(
        "foldtrack", [this] { fold(); }, ready);
    state.actions.bind(
        "sumfolder", [this] { sumFolders(); },
        [this, idle] { return idle() && std::ranges::any_of(chosen(state.seq()), isFolder); },
        [this] { return anyTrack() && std::ranges::any_of(chosen(state.seq()), isSummed); });
    state.actions.bind(
        "duplicatetrack", [this] { state.tell(duplicateTracks(state.seq(), chosen(state.seq()))); },
        idle);
    state.actions.bind(
        "deletetrack", [this] { deleteTracks(state.seq(), chosen(state.seq())); }, idle);
    state.actions.bind(
        "trackup", [this] { step(-1); }, [this, idle] { return idle() && canStep(-1); });
    state.actions.bind(
        "trackdown", [this] { step(1); }, [this, idle] { return idle() && canStep(1); });
    bindSwitches();
}

void TrackCommands::bindSwitches() {
    const auto ready = [this] { return anyTrack(); };
    const auto withSong = [this] { return state.seq() != nullptr; };
    using ValueOf = StoredValue (*)(CTrack*);
    for (const auto& [name, valueOf] : {std::pair<const char*, ValueOf>{"armtrack", armOf},
                                        {"locktrack", lockedOf},
                                        {"livetrack", liveOf}})
        state.actions.bind(
            name, [this, of = valueOf] { toggle(of); }, ready,
            [this, of = valueOf] { return anyTrack() && all(of); });
    state.actions.bind(
        "showtakes", [this] { showTakes(); },
        [this] { return anyTrack() && std::ranges::any_of(chosen(state.seq()), hasTakes); },
        [this] { return anyTrack() && std::ranges::all_of(chosen(state.seq()), showsTakes); });
    const auto ofSelected = [this](auto&& is) {
        bool any = false;
        if (state.seq())
            for (const auto* t : state.seq()->selection.tracks) any = any || is(t);
        return any;
    };
    state.actions.bind(
        "editinplace", [this] { showNotes(); }, [ofSelected] { return ofSelected(hasNotes); },
        [this, ofSelected] {
            return ofSelected([this](const auto* t) { return state.rows.showsNotes(t->track); });
        });
    state.actions.bind(
        "muteall", [this] { toggleMutesOfAll(state.seq()); }, withSong);
    state.actions.bind(
        "soloall", [this] { toggleSolosOfAll(state.seq()); }, withSong);
}

bool TrackCommands::anyTrack() const {
    return state.seq() && !state.seq()->selection.tracks.empty();
}

bool TrackCommands::all(StoredValue (*valueOf)(CTrack*)) const {
    const Tracks tracks = chosen(state.seq());
    return std::all_of(tracks.begin(), tracks.end(),
                       [&](CTrack* t) { return valueOf(t).get()[0] != 0.0; });
}

void TrackCommands::toggle(StoredValue (*valueOf)(CTrack*)) {
    const double to = all(valueOf) ? 0.0 : 1.0;
    heads.door()->begin();
    for (CTrack* t : chosen(state.seq())) heads.door()->set(valueOf(t), to);
    heads.door()->end();
}

void TrackCommands::showTakes() {
    const Tracks tracks = chosen(state.seq());
    const bool to = !std::ranges::all_of(tracks, showsTakes);
    for (CTrack* t : tracks) t->takesShown = to;
    state.rowsChanged();
}

/// Of the selected tracks that have some.
void TrackCommands::showNotes() {
    bool all = true;
    for (const auto* t : state.seq()->selection.tracks)
        all = all && (!hasNotes(t) || state.rows.showsNotes(t->track));
    for (const auto* t : state.seq()->selection.tracks)
        if (hasNotes(t)) state.rows.showNotes(t->track, !all);
    state.rowsChanged();
}

/// Those that are summed no longer are, where there are any; else all are.
void TrackCommands::sumFolders() {
    const Tracks tracks = chosen(state.seq());
    const bool anySummed = std::ranges::any_of(tracks, isSummed);
    bool done = false;
    for (CTrack* t : tracks)
        if (isFolder(t) && isSummed(t) == anySummed) done = sumFolder(state.seq(), t) || done;
    if (!done) state.tell("Nothing in the folder leads to the audio out");
}

void TrackCommands::fold() {
    for (CTrack* t : chosen(state.seq())) t->setOpen(!t->open());
    state.rowsChanged();
}

bool TrackCommands::canStep(int by) const {
    const auto& tracks = state.seq()->tracks;
    return !(by < 0 ? tracks.getFirst() : tracks.last())->selected();
}

/// Over the neighbour, whose folder they join.
void TrackCommands::step(int by) {
    CSeq* seq = state.seq();
    const Tracks tracks = chosen(seq);
    CTrack* edge = by < 0 ? tracks.front() : tracks.back();
    const int at = seq->tracks.indexed(edge);
    auto* over = seq->tracks.items(at + by);
    while (over && isInside(over, edge)) over = seq->tracks.next(over);
    if (!over) return;
    TrackTarget target{over, over->folder};
    if (by > 0) {
        const bool into = over->kind == trackFolder && over->open();
        target = {seq->tracks.next(over), into ? over : over->folder.load()};
    }
    moveTracksTo(seq, tracks, target);
}
