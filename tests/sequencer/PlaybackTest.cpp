#include "SongFixture.h"

#include "engine/MidiBytes.h"
#include "sequencer/SongPlayback.h"
#include "support/RtTrap.h"

#include <cmath>

namespace {

/// What reached the listener, with its frame since the start.
struct Heard {
    double frame;
    int data;
    unsigned char kind;
    float value;
};

/// Stands where an instrument would, and keeps what it is played.
class Ear : public CComp {
public:
    explicit Ear(CQV* root) : CComp(root) { events.reserve(100000); }
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        for (CMIDIBytes* e = inPort()->first(); e && events.size() < events.capacity(); e = e->next)
            events.push_back({double(past) + e->time, e->data, e->kind, e->value});
        past += frames;
    }
    std::vector<Heard> events;
    long past = 0;

    /// Rounded frames of note-ons (or note-offs) of a key.
    std::vector<long> framesOf(int key, bool on) const {
        std::vector<long> list;
        for (const Heard& e : events)
            if (e.kind == eventMidi && asByte1(e.data) == key &&
                (on ? noteOn(e.data) : noteOff(e.data)))
                list.push_back(std::lround(e.frame));
        return list;
    }
};

struct PlayFixture : SongFixture {
    CSongTrack* songTrack = track(trackMIDI);
    Ear* ear = listen(songTrack);

    Ear* listen(CSongTrack* t) {
        Ear* made = device.add(new Ear(&host));
        device.connect(made);
        const GraphHold hold(&host);
        made->addMIDICable(t->track->outPort(), nullptr);
        return made;
    }
    /// A part with one note per tick given.
    CPart* part(CSongTrack* t, int pos, int length, const std::vector<int>& ticks,
                int noteTicks = 240, int key = 60) {
        CPart* made = midiPart(pos, length);
        for (int tick : ticks) {
            CMIDIEvent* e = note(key);
            e->length = noteTicks;
            made->addEvent(tick, e);
        }
        return t->addPart(made, nullptr);
    }
    void tempoAt(int tick, float bpm) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        prog()->addTempo(point, nullptr);
    }
    void play(int blocks, double from = 0.0, bool looping = false) {
        host.loop = looping;
        prog()->loop = looping;
        host.setPos(from);
        device.run();
        ear->events.clear();
        ear->past = 0;
        host.start();
        // The call takes effect at the start of the next block.
        device.run(blocks);
    }
    double framesPerTick(float bpm = 120.0f) const {
        return double(host.rate) / (double(bpm) * 16.0);
    }
};

using Frames = std::vector<long>;

} // namespace

/// Each note starts and ends at the frame of its tick, whatever the block size and rate.
TEST(SongPlayback, NotesFallOnTheFrameOfTheirTick) {
    for (int block : {64, 100, 333, 1024}) {
        for (double rate : {44100.0, 96000.0}) {
            PlayFixture f;
            f.host.setFrames(block);
            f.host.setRate(rate);
            f.part(f.songTrack, 480, 3840, {0, 7, 240, 1000, 1001}, 100);
            f.play(int(3840 * f.framesPerTick()) / block + 1);
            const Frames on = f.ear->framesOf(60, true), off = f.ear->framesOf(60, false);
            ASSERT_EQ(on.size(), 5u);
            ASSERT_EQ(off.size(), 5u);
            const int ticks[] = {0, 7, 240, 1000, 1001};
            for (size_t i = 0; i < 5; i++) {
                const double start = (480 + ticks[i]) * f.framesPerTick();
                EXPECT_NEAR(double(on[i]), start, 0.5001) << block << " at " << rate;
                EXPECT_NEAR(double(off[i]), start + 99 * f.framesPerTick(), 0.5001) << block;
            }
        }
    }
}

/// Notes end with their part, content behind the end stays silent, and the part's offset moves it.
TEST(SongPlayback, PartsCutTheirContent) {
    PlayFixture f;
    CPart* part = f.part(f.songTrack, 960, 960, {-1 + 1, 500, 900, 960, 2000}, 4000);
    part->offset = -100;
    f.play(120);
    // Ticks on the timeline: 860 lies before the part, 1360, 1760 and 1820 inside, 2860 behind.
    const double fpt = f.framesPerTick();
    EXPECT_EQ(f.ear->framesOf(60, true),
              (Frames{std::lround(1360 * fpt), std::lround(1760 * fpt), std::lround(1820 * fpt)}));
    for (long end : f.ear->framesOf(60, false)) EXPECT_NEAR(double(end), 1919 * fpt, 1.0);
}

/// A point that lies in the coming block holds for that whole block, so a change is never late.
TEST(SongPlayback, TempoStepsAtTheBlockOfItsPoint) {
    constexpr int block = 256;
    PlayFixture f;
    f.host.setFrames(block);
    f.tempoAt(0, 100.0f);
    f.tempoAt(1920, 200.0f);
    f.part(f.songTrack, 0, 7680, {0, 960, 1920, 3840});
    f.play(600);
    // The clock of the song, block by block.
    std::vector<long> expected;
    const double targets[] = {0, 960, 1920, 3840};
    double pos = 0.0;
    size_t next = 0;
    for (long blockIndex = 0; next < 4; blockIndex++) {
        const double bpm = pos + block * 100.0 * 16.0 / 44100.0 > 1920.0 ? 200.0 : 100.0;
        const double tpf = bpm * 16.0 / 44100.0;
        while (next < 4 && std::lround((targets[next] - pos) / tpf) < block)
            expected.push_back(blockIndex * block + std::lround((targets[next++] - pos) / tpf));
        pos += block * tpf;
    }
    EXPECT_EQ(f.ear->framesOf(60, true), expected);
}

/// A loop repeats to the frame, however it lies against the blocks; nothing sounds on its end.
TEST(SongPlayback, LoopsWrapInsideBlocks) {
    struct Case {
        int block, left, right;
    };
    for (const Case& c : {Case{1024, 0, 960}, Case{333, 240, 1680}, Case{4096, 0, 120},
                          Case{441, 0, 960}, Case{64, 0, 3}}) {
        PlayFixture f;
        f.host.setFrames(c.block);
        f.prog()->leftLocator = c.left;
        f.prog()->rightLocator = c.right;
        f.part(f.songTrack, 0, 3840, {c.left, c.right});
        const double fpt = f.framesPerTick();
        const double pass = (c.right - c.left) * fpt;
        const int frames = int(pass * 6.5);
        f.play(frames / c.block + 1, c.left, true);
        const Frames on = f.ear->framesOf(60, true);
        ASSERT_GE(on.size(), 6u) << c.block;
        for (size_t i = 0; i < 6; i++)
            EXPECT_NEAR(double(on[i]), double(i) * pass, 1.0) << c.block << ", pass " << i;
        // A note over the end of the loop is ended by the wrap, once per pass.
        EXPECT_GE(f.ear->framesOf(60, false).size(), 5u);
    }
}

/// A transport that starts beyond the right locator, or an empty loop, never wraps.
TEST(SongPlayback, NoLoopWithoutALoopAhead) {
    for (int from : {960, 1200}) {
        PlayFixture f;
        f.prog()->leftLocator = from == 960 ? 960 : 0;
        f.prog()->rightLocator = 960;
        f.play(100, from, true);
        EXPECT_NEAR(f.prog()->pos, from + 100 * 1024 / f.framesPerTick(), 0.01);
    }
}

/// Mute silences a track; solo silences all others; both act while it plays.
TEST(SongPlayback, MuteAndSolo) {
    PlayFixture f;
    CSongTrack* other = f.track(trackMIDI);
    Ear* otherEar = f.listen(other);
    std::vector<int> eighths;
    for (int i = 0; i < 64; i++) eighths.push_back(i * 480);
    f.part(f.songTrack, 0, 64 * 480, eighths);
    f.part(other, 0, 64 * 480, eighths);
    const auto passes = [&](bool first, bool second) {
        const size_t a = f.ear->framesOf(60, true).size(), b = otherEar->framesOf(60, true).size();
        f.device.run(60);
        EXPECT_EQ(f.ear->framesOf(60, true).size() > a, first);
        EXPECT_EQ(otherEar->framesOf(60, true).size() > b, second);
    };
    f.play(1);
    passes(true, true);
    f.songTrack->setMuted(true);
    passes(false, true);
    f.songTrack->setMuted(false);
    other->setSoloed(true);
    passes(false, true);
    other->setSoloed(false);
    passes(true, true);
}

/// A ghost plays its master's events at its own place, and follows a change of the content.
TEST(SongPlayback, GhostsPlayTheirMaster) {
    PlayFixture f;
    CPart* original = f.part(f.songTrack, 0, 960, {120});
    f.step([&](CUndo* undo) {
        CPart* ghost = f.seq->makeGhost(original, undo);
        ghost->pos = 1920;
        f.songTrack->addPart(ghost, undo);
    });
    f.play(200);
    const double fpt = f.framesPerTick();
    EXPECT_EQ(f.ear->framesOf(60, true), (Frames{std::lround(120 * fpt), std::lround(2040 * fpt)}));
}

/// The default table, at full amount, moves every second sixteenth by a third of its length.
TEST(SongPlayback, GrooveMovesEvents) {
    PlayFixture f;
    f.songTrack->track->groove.amount = 1.0f;
    f.part(f.songTrack, 0, 3840, {0, 480});
    CPart* late = f.part(f.songTrack, 960, 3840, {240});
    f.play(150);
    const double fpt = f.framesPerTick();
    EXPECT_EQ(f.ear->framesOf(60, true),
              (Frames{0, std::lround(480 * fpt), std::lround((960 + 240 + 79) * fpt)}))
        << late->pos;

    CGroove table;
    table.initGroove();
    table.amount = 0.5f;
    EXPECT_EQ(groove(&table, 240), 40); // half of round(0.33 * 240) = 79, halves up
    EXPECT_EQ(groove(&table, -240), 40);
    table.on = 0;
    EXPECT_EQ(groove(&table, 240), 0);
}

/// Automation follows the curve between its points, in steps of at most 32 frames, and a jump sends
/// the value in force.
TEST(SongPlayback, AutomationFollowsItsCurve) {
    for (double bend : {0.0, 0.5, -0.5}) {
        PlayFixture f;
        f.host.setFrames(333);
        auto* lane = new CSubTrack("Volume", laneAutomation);
        lane->object = f.ear->output();
        f.songTrack->track->addLane(lane, nullptr);
        CPart* part = f.part(f.songTrack, 0, 3840, {});
        part->addEventParam(480, createEnvEvent(nullptr, 0.2f), lane->slot);
        CEnvEvent* end = createEnvEvent(nullptr, 0.9f);
        end->curve = float(bend);
        part->addEventParam(1440, end, lane->slot);
        f.play(200);

        const double fpt = f.framesPerTick();
        double last = -32.0;
        int inRamp = 0;
        for (const Heard& e : f.ear->events) {
            if (e.kind != eventParam || e.frame < 480 * fpt - 1 || e.frame > 1440 * fpt) continue;
            const double t = (e.frame / fpt - 480.0) / 960.0;
            const double k = bend > 0 ? 1 + 63 * bend * bend : 1 / (1 + 63 * bend * bend);
            const double way = t / ((1 - k) * t + k);
            EXPECT_NEAR(double(e.value), 0.2 + 0.7 * way, 2e-3) << "frame " << e.frame;
            EXPECT_LE(e.frame - last, inRamp++ ? 33.0 : 1e9);
            last = e.frame;
        }
        EXPECT_GT(inRamp, 600);
        EXPECT_NEAR(double(f.ear->events.back().value), 0.9, 1e-6);

        f.ear->events.clear();
        f.host.setPos(2000.0);
        f.device.run(2);
        ASSERT_FALSE(f.ear->events.empty());
        EXPECT_NEAR(double(f.ear->events.front().value), 0.9, 1e-6);
    }
}

/// Lanes that act by MIDI send whole values, and each only once.
TEST(SongPlayback, ControllerLanesSendWholeValuesOnce) {
    struct Case {
        LaneTarget target;
        float value;
        int message;
    };
    const Case cases[] = {{targetController, 0.5f, asData(0xB3, 74, 64)},
                          {targetController, 7.0f, asData(0xB3, 74, 127)},
                          {targetPitchBend, 0.5f, asData(0xE3, 0, 64)},
                          {targetPitchBend, 0.0f, asData(0xE3, 0, 0)}};
    for (const Case& c : cases) {
        CMIDIQ queue(nullptr);
        CSubTrack lane("lane", laneAutomation);
        lane.target = c.target;
        lane.param = 74;
        CPlayStruct pointer;
        for (int i = 0; i < 3; i++) insertEvent(&lane, &queue, 5.0, c.value, &pointer, 3);
        ASSERT_EQ(queue.count, 1);
        EXPECT_EQ(queue.first()->data, c.message);
        insertEvent(&lane, &queue, 5.0, c.value, nullptr, -1);
        EXPECT_EQ(chByte(queue.events[1].data), 0);
    }
}

/// A jump and a stop end what sounds at the first frame of the block; nothing hangs.
TEST(SongPlayback, JumpsAndStopsEndNotes) {
    PlayFixture f;
    f.part(f.songTrack, 0, 38400, {0}, 30000);
    f.play(3);
    EXPECT_EQ(f.ear->framesOf(60, false).size(), 0u);
    f.host.setPos(20000.0);
    f.device.run();
    EXPECT_EQ(f.ear->framesOf(60, false), (Frames{3 * 1024}));
    f.host.setPos(0.0);
    f.device.run(2);
    f.host.stop();
    f.device.run();
    EXPECT_EQ(f.ear->framesOf(60, true).size(), f.ear->framesOf(60, false).size());
}

/// The arranger plays the sounding section to its end and goes on with the chosen one.
TEST(SongPlayback, MarkersChain) {
    PlayFixture f;
    f.seq->options.bytes[SongOptions::arranger] = 1;
    CMarkerPart* sections[2];
    for (int i = 0; i < 2; i++) {
        sections[i] = new CMarkerPart;
        sections[i]->pos = i * 3840;
        sections[i]->length = 960;
        f.prog()->addMarker(sections[i], nullptr);
        f.part(f.songTrack, i * 3840, 960, {0}, 240, 60 + i);
    }
    f.prog()->setMarker(sections[0]);
    f.play(30);
    f.prog()->setMarker(sections[1]);
    f.device.run(60);
    const double pass = 960 * f.framesPerTick();
    const Frames second = f.ear->framesOf(61, true);
    ASSERT_FALSE(second.empty());
    EXPECT_NEAR(double(second[0]), 2 * pass, 2.0);
    EXPECT_EQ(f.prog()->playingMarker, sections[1]);
    EXPECT_GE(f.prog()->session.count(), 2);
}

TEST(SongPlayback, LeavesTheSystemAlone) {
    if (!rtTrapActive()) return;
    PlayFixture f;
    auto* lane = new CSubTrack("Volume", laneAutomation);
    lane->object = f.ear->output();
    f.songTrack->track->addLane(lane, nullptr);
    CPart* part = f.part(f.songTrack, 0, 3840, {0, 100, 200, 960, 1000});
    part->addEventParam(0, createEnvEvent(nullptr, 0.1f), lane->slot);
    part->addEventParam(2000, createEnvEvent(nullptr, 0.8f), lane->slot);
    f.tempoAt(960, 150.0f);
    rtReset();
    f.play(100, 0.0, true);
    f.host.setPos(100.0);
    f.device.run(20);
    f.host.stop();
    f.device.run(3);
    EXPECT_EQ(rtViolations(), 0);
}
