#include "data/demosong/TextSong.h"

#include "data/demosong/SongPoints.h"
#include "data/presets/Kits.h"
#include "data/presets/PartText.h"
#include "engine/CQV.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <string_view>

namespace {

int ticksAt(int step) {
    return step * presets::stepTicks;
}

} // namespace

TextSong::TextSong(CQV* root) : TextSong(addSequencer(root)) {
}

TextSong::TextSong(CSeq* into) : host(into->host), seq(into) {
}

CTrack* TextSong::track(int kind, const CStr& name) {
    CTrack* made = seq->addTrack(kind, seq->getProg(), nullptr)->track;
    made->setId(name);
    return made;
}

CTrack* TextSong::kitTrack(const CStr& name, const char* kit) {
    CTrack* made = track(trackDrum, name);
    for (const presets::Kit& k : presets::kits())
        if (std::string_view(k.name) == kit) presets::takeKit(seq, made, k);
    return made;
}

CPart* TextSong::add(CTrack* track, CPart* part, int step, int steps) {
    part->id = track->id;
    part->pos = ticksAt(step);
    part->length = ticksAt(steps);
    return seq->getProg()->songTrackOf(track)->addPart(part, nullptr);
}

CPart* TextSong::line(CTrack* track, int step, const char* text) {
    return add(track, presets::notePart(text).release(), step, presets::lengthOf(text));
}

CPart* TextSong::beat(CTrack* track, int step, std::span<const presets::DrumRow> rows) {
    return add(track, presets::drumPart(rows).release(), step,
               int(std::string_view(rows[0].steps).size()));
}

void TextSong::tempo(int step, float bpm, bool ramp) {
    addTempoPoint(seq, ticksAt(step), bpm, ramp);
}

void TextSong::signature(int step, int beats, int unit) {
    addSignature(seq, ticksAt(step), beats, unit);
}

void TextSong::marker(int from, int to, const CStr& name) {
    addSongMarker(seq, ticksAt(from), ticksAt(to), name);
}

CSeq* TextSong::finish(int steps, float bpm) {
    finishSong(seq, ticksAt(steps), bpm);
    return seq;
}
