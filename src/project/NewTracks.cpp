#include "project/NewTracks.h"

#include "engine/CUndo.h"
#include "project/BringIn.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>

namespace {

bool isOpenFolder(const CTrack* track) {
    return track->kind == trackFolder && track->open();
}

} // namespace

bool isOfKind(const CSongTrack* songTrack, int kind) {
    return songTrack && songTrack->track->kind == kind;
}

NewTracks::NewTracks(CSeq* song, CUndo* open) : seq(song), step(open) {
    for (auto* songTrack : song->getProg()->tracks) order.push_back(songTrack);
}

CSongTrack* NewTracks::take(const BringPlace& place, int kind, int nth, const CStr& name) {
    if (nth == 0 && isOfKind(place.onto, kind)) return place.onto;
    CSongTrack*& track = shared[{place.onto, place.row, kind, nth}];
    if (!track) track = make(place.onto, kind, name);
    return track;
}

CSongTrack* NewTracks::make(CSongTrack* below, int kind, const CStr& name) {
    CSongTrack* made = seq->addTrack(kind, seq->getProg(), step, indexBelow(below));
    if (!made) return nullptr;
    made->track->id = name;
    follow(below);
    return made;
}

/// Below a closed folder is below all that is in it.
int NewTracks::indexBelow(CSongTrack* onto) const {
    if (!onto) return -1;
    const auto found = lowest.find(onto);
    const auto* above = found == lowest.end() ? onto : found->second;
    auto at = std::find(order.begin(), order.end(), above);
    if (at == order.end()) return -1;
    ++at;
    if (above == onto && onto->track->kind == trackFolder && !onto->track->open())
        while (at != order.end() && isInside((*at)->track, onto->track)) ++at;
    return int(at - order.begin());
}

void NewTracks::follow(CSongTrack* onto) {
    int index = indexBelow(onto);
    eachPending<CSongTrack>(step, &seq->getProg()->tracks, [&](CSongTrack* made) {
        if (std::find(order.begin(), order.end(), made) != order.end()) return;
        if (onto)
            made->track->folder =
                isOpenFolder(onto->track) ? onto->track : onto->track->folder.load();
        order.insert(index < 0 ? order.end() : order.begin() + index++, made);
        lowest[onto] = made;
    });
}
