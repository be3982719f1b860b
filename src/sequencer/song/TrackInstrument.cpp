#include "sequencer/song/TrackInstrument.h"

#include "base/Geometry.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/GraphHold.h"
#include "engine/ObjectKinds.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Scales.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

// Of the canvas of the graph, in pixels: boxes with the gaps that a tidy graph has.
constexpr int graphLeft = 32, graphTop = 32, acrossBoxes = 168, downBoxes = 104, boxesInRow = 10;

} // namespace

void placeInstrument(CComp* instrument, const CComp* song, const CUndo* undo) {
    std::vector<CPoint> taken;
    eachWithPending(undo, &instrument->host->comps, [&](const CComp* c) {
        if (c != instrument) taken.push_back({c->posX, c->posY});
    });
    const auto isFree = [&](CPoint at) {
        return std::ranges::none_of(taken, [at](CPoint t) {
            return std::abs(t.x - at.x) < acrossBoxes && std::abs(t.y - at.y) < downBoxes;
        });
    };
    CPoint at;
    for (int i = 0; i == 0 || !isFree(at); i++)
        at = {graphLeft + i % boxesInRow * acrossBoxes,
              (song ? song->posY : graphTop) + downBoxes + i / boxesInRow * downBoxes};
    instrument->posX = at.x;
    instrument->posY = at.y;
}

void linkInstrument(CComp* instrument, CTrack* track, CUndo* undo) {
    CQV* host = track->host;
    CComp* out = host->getAudioOut();
    CMIDICable* midi = createMIDICable(instrument, track->outPort(), nullptr);
    CAudioCable* audio = out ? createAudioCable(out, instrument->output(), nullptr) : nullptr;
    placeInstrument(instrument, track->seq, undo);
    if (undo) {
        undo->asAdd(instrument, &host->comps);
        if (midi) undo->asAdd(midi, &instrument->midiCables);
        if (audio) undo->asAdd(audio, &out->audioCables);
        return;
    }
    const GraphHold hold(host);
    host->comps.add(instrument);
    if (midi) instrument->midiCables.add(midi);
    if (audio) out->audioCables.add(audio);
    host->hostNotices.raise(HostNotice::delays);
}

std::unique_ptr<CComp> newSynthesizer(CQV* host) {
    std::unique_ptr<CComp> synth(createComp(host, categoryComp, compSampler));
    synth->init();
    synth->createBuffers(host->frames);
    synth->setRate(double(host->rate));
    synth->id = host->autoNameComp(synth->id);
    return synth;
}

CComp* addTrackInstrument(CSeq* seq, CTrack* track, CUndo* undo) {
    CComp* synth = newSynthesizer(seq->host).release();
    linkInstrument(synth, track, undo);
    return synth;
}

void addDrums(CSeq* seq, CTrack* track, CUndo* undo) {
    DrumKit kit(seq->host, track->drumLayer(), seq);
    kit.addStandard();
    seq->takeKit(kit, track, undo);
}

bool feedsAnything(CTrack* track) {
    return !cablesFrom(track->host, track->outPort()).empty();
}

std::map<int, CStr> drumKeys(CTrack* track) {
    std::map<int, CStr> names;
    for (const auto* cable : cablesFrom(track->host, track->outPort())) {
        auto* to = compAs<CSampler>(cable->toComp);
        auto* program = to ? to->getProg() : nullptr;
        if (!program) continue;
        bool drums = true;
        program->eachSound([&](CSound* sound) {
            drums = drums && sound->hiKey - sound->lowKey < octaveKeys;
            for (int key = sound->lowKey; drums && key <= sound->hiKey; key++)
                names.try_emplace(key, sound->id);
        });
        if (!drums) names.clear();
    }
    return names;
}
