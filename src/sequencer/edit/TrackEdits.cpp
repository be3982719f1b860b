#include "sequencer/edit/TrackEdits.h"

#include "engine/CQV.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/edit/TrackCopy.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/FolderSum.h"

#include <algorithm>
#include <initializer_list>
#include <map>

namespace {

using Tracks = std::vector<CTrack*>;

bool among(const Tracks& tracks, const CTrack* track) {
    return std::find(tracks.begin(), tracks.end(), track) != tracks.end();
}

bool goesWith(const Tracks& tracks, const CTrack* track) {
    return std::any_of(tracks.begin(), tracks.end(),
                       [track](const CTrack* t) { return t == track || isInside(track, t); });
}

/// Those tracks and all inside, in the order of the song.
Tracks withContents(CSeq* seq, const Tracks& tracks) {
    Tracks all;
    for (auto* t : seq->tracks)
        if (goesWith(tracks, t)) all.push_back(t);
    return all;
}

/// All tracks in their new order.
Tracks orderAfter(CSeq* seq, const Tracks& moved, const TrackTarget& target) {
    Tracks rest;
    for (auto* t : seq->tracks)
        if (!among(moved, t)) rest.push_back(t);
    // What is dropped before a track that moves itself comes before what follows that.
    const CTrack* before = target.before;
    while (before && among(moved, before)) before = seq->tracks.next(before);
    auto at = std::find(rest.begin(), rest.end(), before);
    if (!target.before && target.folder) {
        at = std::find(rest.begin(), rest.end(), target.folder) + 1;
        while (at != rest.end() && isInside(*at, target.folder)) ++at;
    }
    rest.insert(at, moved.begin(), moved.end());
    return rest;
}

struct ListMove {
    CObject* object;
    int index; ///< as `CUndo::asMove`
};

/// What brings objects from one order into another, beginning at the front or at the end.
std::vector<ListMove> movesTo(std::vector<CObject*> now, const std::vector<CObject*>& wanted,
                              bool fromEnd) {
    std::vector<ListMove> moves;
    for (size_t step = 0; step < wanted.size(); step++) {
        const size_t i = fromEnd ? wanted.size() - 1 - step : step;
        if (now[i] == wanted[i]) continue;
        now.erase(std::find(now.begin(), now.end(), wanted[i]));
        now.insert(now.begin() + std::ptrdiff_t(i), wanted[i]);
        moves.push_back({wanted[i], int(i) + (fromEnd ? 1 : 0)});
    }
    return moves;
}

void recordOrder(CUndo* undo, CList& list, const std::vector<CObject*>& wanted) {
    const std::vector<CObject*> now = objectsIn(list);
    const auto forth = movesTo(now, wanted, false), back = movesTo(now, wanted, true);
    for (const ListMove& m : forth.size() <= back.size() ? forth : back)
        undo->asMove(m.object, &list, &list, m.index);
}

} // namespace

bool isInside(const CTrack* track, const CTrack* folder) {
    int depth = 0;
    for (const CTrack* f = track->folder; f && depth < mostFolderDepth; f = f->folder, depth++)
        if (f == folder) return true;
    return false;
}

bool canMoveTracksTo(const Tracks& tracks, const TrackTarget& target) {
    return !target.folder || !goesWith(tracks, target.folder);
}

void moveTracksTo(CSeq* seq, const Tracks& tracks, const TrackTarget& target) {
    if (!canMoveTracksTo(tracks, target)) return;
    const Tracks order = orderAfter(seq, withContents(seq, tracks), target);
    const auto inOther = [&](const CTrack* t) {
        const bool top = std::none_of(tracks.begin(), tracks.end(),
                                      [t](const CTrack* f) { return isInside(t, f); });
        return top && t->folder != target.folder;
    };
    size_t i = 0;
    bool same = std::none_of(tracks.begin(), tracks.end(), inOther);
    for (auto* t : seq->tracks) same = same && t == order[i++];
    if (same) return;
    CUndo* undo =
        seq->host->undoStart("Move track", seq, {.graph = true, .seq = SeqNotice::tracks});
    const std::vector<CObject*> objects(order.begin(), order.end());
    recordOrder(undo, seq->tracks, objects);
    for (auto* prog : seq->programs()) {
        std::vector<CObject*> songTracks;
        for (const CTrack* t : order) songTracks.push_back(prog->songTrackOf(t));
        recordOrder(undo, prog->tracks, songTracks);
    }
    Tracks others;
    std::ranges::copy_if(tracks, std::back_inserter(others), inOther);
    for (CTrack* t : others) followFolder(seq, t, t->folder, target.folder, undo);
    for (CTrack* t : others) {
        undo->asPtr(reinterpret_cast<void**>(t->folder.address()));
        t->folder = target.folder;
    }
    seq->host->undoEnd(undo, true);
}

CStr duplicateTracks(CSeq* seq, const Tracks& tracks) {
    const Tracks all = withContents(seq, tracks);
    if (all.empty()) return "";
    const auto count = [&](std::initializer_list<int> kinds) {
        return int(std::count_if(all.begin(), all.end(), [&](const CTrack* t) {
            return std::find(kinds.begin(), kinds.end(), t->kind) != kinds.end();
        }));
    };
    if (!seq->hasTrackRoom(trackMIDI, nullptr, count({trackMIDI, trackDrum})) ||
        !seq->hasTrackRoom(trackAudio, nullptr, count({trackAudio, trackDrum})))
        return "Too many tracks";
    CUndo* undo = seq->host->undoStart("Duplicate track", seq, {.graph = true, .song = true});
    std::map<const CTrack*, CTrack*> twins;
    int index = seq->tracks.indexed(all.back()) + 1;
    for (CTrack* t : all) twins[t] = copyTrack(seq, t, undo, index++);
    for (const auto& [from, made] : twins)
        if (const auto folder = twins.find(from->folder); folder != twins.end())
            made->folder = folder->second;
    seq->unselectTracks();
    const auto select = [&](CSongTrack* s) {
        for (const CTrack* t : tracks)
            if (s->track == twins[t]) seq->selectTrack(s, true);
    };
    eachPending(undo, &seq->getProg()->tracks, select);
    seq->host->undoEnd(undo, true);
    return "";
}

void deleteTracks(CSeq* seq, const Tracks& tracks) {
    const Tracks all = withContents(seq, tracks);
    if (all.empty()) return;
    CUndo* undo = seq->host->undoStart("Delete track", seq, {.graph = true, .song = true});
    for (CTrack* t : all) seq->removeTrack(t, undo);
    seq->host->undoEnd(undo, true);
}
