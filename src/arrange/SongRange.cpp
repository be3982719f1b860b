#include "arrange/SongRange.h"

#include "sequencer/song/CSeq.h"

void SongRange::setTool(bool on) {
    toolOn = on;
    if (!on) chosen = {};
    if (onChange) onChange();
}

void SongRange::set(const TimeRange& range) {
    chosen = range;
    chosen.markers = markersToo;
    if (chosen.tracks.empty()) chosen = {};
    if (onChange) onChange();
}

void SongRange::setWithMarkers(bool on) {
    markersToo = chosen.markers = on;
}

void SongRange::keepTracksOf(CSeq* seq) {
    std::erase_if(chosen.tracks, [seq](const CSongTrack* track) {
        return !seq || !seq->getProg()->tracks.contains(track);
    });
    if (chosen.tracks.empty()) chosen = {};
}
