#include "audiofiles/CSample.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "instruments/CSampler.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <memory>

// Projects with a song of tracks with 25 parts each, and 100 events in a part: the argument is the
// number of tracks, so 200 stands for 5,000 parts and 500,000 events. Time must grow as they do.

namespace {

constexpr int buses = 2, partsOfTrack = 25, eventsOfPart = 100, partTicks = 3840;
constexpr int midiMessage = 0x643C90;

std::unique_ptr<CQV> makeHost() {
    enterCompTypes();
    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->init();
    host->samples.add(new CSample);
    return host;
}

void addEvents(CPart* part, CSample* sample) {
    for (int n = 0; n < eventsOfPart; n++) {
        const int tick = (eventsOfPart - n) * 30; // from the end, so that each goes to the front
        if (part->type == partMIDI) {
            CMIDIEvent* event = createMIDIEvent();
            event->data = midiMessage;
            part->addEvent(tick, event);
        } else if (part->type == partDrum) {
            part->addEvent(tick, createDrumEvent());
        } else {
            CAudioEvent* event = createAudioEvent();
            event->sample = sample;
            part->addEvent(tick, event);
        }
    }
}

CPart* newPart(int kind) {
    if (kind == trackMIDI) return new CMIDIPart;
    if (kind == trackDrum) return new CDrumPart;
    return new CAudioPart;
}

/// Lanes for the fader and a send of a track, or of the instrument that it plays.
void addLanes(CTrack* track, COutputChannel* strip) {
    for (CObject* target :
         {static_cast<CObject*>(strip), static_cast<CObject*>(strip->sendLevels[0])}) {
        auto* lane = new CSubTrack("Lane", laneAutomation);
        lane->object = target;
        track->addLane(lane, nullptr);
    }
}

/// Two thirds of the tracks have notes, with an instrument each, the others audio or a kit of
/// drums; or all have audio. Each tenth part is a ghost.
CSeq* makeSong(CQV* host, int tracks, bool audioAlone) {
    for (int i = 0; i < buses; i++) host->addSendClicked();
    host->settle();
    CSeq* seq = addSequencer(host);
    auto* sample = host->samples.getFirst();
    const int kinds[] = {trackMIDI, trackAudio, trackMIDI, trackMIDI, trackDrum, trackMIDI};
    for (int i = 0; i < tracks; i++) {
        const int kind = audioAlone ? trackAudio : kinds[i % 6];
        CSongTrack* t = seq->addTrack(kind, seq->getProg(), nullptr);
        if (kind == trackDrum) seq->addStandardKit(t->track);
        CComp* player = kind == trackMIDI ? addSynthesizer(seq, t->track, i) : nullptr;
        addLanes(t->track, player ? player->output() : t->track->output());
        CPart* master = newPart(kind);
        addEvents(master, sample);
        seq->masterParts.add(master);
        for (int n = 0; n < partsOfTrack; n++) {
            CPart* part = newPart(kind);
            part->pos = n * partTicks;
            if (n % 10 == 9)
                part->ghostOf = master;
            else
                addEvents(part, sample);
            t->linkPart(part);
        }
    }
    seq->orderParts(nullptr, nullptr, true);
    seq->updateGhostCount();
    return seq;
}

/// A host with a song that is saved and opened as a project.
struct Session {
    explicit Session(const benchmark::State& state) {
        std::filesystem::create_directory(folder.asChar());
        mixer.init();
        saveProject(project, folder + "empty.qv");
        makeSong(host.get(), int(state.range(0)), state.range(1) != 0);
        saveProject(project, path);
    }
    ~Session() { std::filesystem::remove_all(folder.asChar()); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const CStr folder = "song-bench.tmp/", path = folder + "song.qv";
    const std::unique_ptr<CQV> host = makeHost();
    CMixer mixer{host.get()};
    ProjectUi ui;
    const Project project{host.get(), &mixer, &ui};
};

void report(benchmark::State& state, const Session& session) {
    const double tracks = double(state.range(0));
    state.counters["events/s"] = benchmark::Counter(tracks * partsOfTrack * eventsOfPart,
                                                    benchmark::Counter::kIsIterationInvariantRate);
    state.counters["MB"] = double(std::filesystem::file_size(session.path.asChar())) / 1e6;
}

/// With all that makes it safe: a second file, flushed to the disk and renamed.
void save(benchmark::State& state) {
    const Session session(state);
    for (auto _ : state) saveProject(session.project, session.path);
    report(state, session);
}

void load(benchmark::State& state) {
    const Session session(state);
    for (auto _ : state) {
        state.PauseTiming();
        openProject(session.project, session.folder + "empty.qv", false);
        state.ResumeTiming();
        openProject(session.project, session.path, false);
    }
    report(state, session);
}

BENCHMARK(save)->ArgNames({"tracks", "audio"})->ArgsProduct({{100, 200, 400, 800}, {0, 1}});
BENCHMARK(load)->ArgNames({"tracks", "audio"})->ArgsProduct({{100, 200, 400, 800}, {0, 1}});

} // namespace

BENCHMARK_MAIN();
