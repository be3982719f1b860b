#include "data/demosong/TextSong.h"

#include "audiofiles/CSample.h"
#include "data/presets/Kits.h"
#include "data/presets/PartText.h"
#include "engine/CQV.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

#include <string_view>

namespace {

/// Pixels that show the whole song, in the smallest window too.
constexpr int wholeWidth = 640;

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

CPart* TextSong::sound(CTrack* track, int step, const presets::SoundLoop& loop) {
    return add(track, presets::soundPart(presets::poolSample(host, loop), loop.bars).release(),
               step, loop.bars * barTicks / presets::stepTicks);
}

void TextSong::tempo(int step, float bpm, bool ramp) {
    auto* point = new CTempoPart;
    point->pos = ticksAt(step);
    point->setTempo(bpm);
    point->ramp = static_cast<unsigned char>(ramp);
    seq->getProg()->addTempo(point, nullptr);
}

void TextSong::signature(int step, int beats, int unit) {
    auto* point = new CTimesigPart(beats, unit);
    point->pos = ticksAt(step);
    seq->getProg()->addTimesig(point, nullptr);
}

void TextSong::marker(int from, int to, const CStr& name) {
    auto* made = new CMarkerPart;
    made->id = name;
    made->pos = ticksAt(from);
    made->length = ticksAt(to - from);
    seq->getProg()->addMarker(made, nullptr);
}

CSeq* TextSong::finish(int steps, float bpm) {
    const GraphHold hold(host);
    seq->orderParts(nullptr, nullptr, true);
    CSeqProg* prog = seq->getProg();
    prog->leftLocator = 0;
    prog->rightLocator = ticksAt(steps);
    prog->loop = 0;
    seq->options.setZoom(float(wholeWidth) * quarterTicks / float(ticksAt(steps)));
    host->loop = 0;
    host->setTempo(bpm);
    host->undoClear();
    host->markSaved(host->saveMark());
    return seq;
}
