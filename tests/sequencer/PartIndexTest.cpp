#include "SongFixture.h"

#include "sequencer/edit/PartEdits.h"
#include "sequencer/take/LiveEdits.h"

#include <functional>

namespace {

/// What one block brought.
struct Heard {
    std::vector<std::pair<double, int>> notes; ///< frame and message of those that begin
    float value = -1.0f;                       ///< the last one of the lane until then
    std::vector<float> audio;
};

class Ear : public TestInstrument {
public:
    explicit Ear(CQV* root) : TestInstrument(root) { now.notes.reserve(1000); }
    void play(int) override {
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next) {
            if (e->kind == eventParam) now.value = e->value;
            if (e->kind == eventMidi && noteOn(e->data)) now.notes.emplace_back(e->time, e->data);
        }
    }
    Heard now;
};

/// A block lasts 8 ticks, exactly, and half of that where the tempo is doubled; so whoever comes to
/// a position in one way or another stands on the same frame of everything.
constexpr double bpm = 93.75;
constexpr int rate = 48000, block = 256;
constexpr int left = 1920, right = 5760, here = 2720;
constexpr int runOut = 4096 / block; ///< blocks, of a voice that was cut

struct Song : SongFixture {
    CSongTrack* notes = track(trackMIDI);
    CSongTrack* clips = track(trackAudio);
    Ear* ear = connect(notes, device.add(new Ear(&host)));
    CSubTrack* lane = new CSubTrack("Volume", laneAutomation);
    CSample* sample = nullptr;
    CPart *early, *running, *near, *far, *ghost, *clip, *farClip;
    CTempoPart* tempo = tempoPoint(4000, 2 * bpm);

    Song() {
        host.setFrames(block);
        host.setRate(rate);
        host.setTempo(float(bpm));
        sample = addSample(
            100000, [](int i) { return 0.3 * std::sin(i * 0.01); }, rate);
        lane->object = ear->output();
        notes->track->addLane(lane, nullptr);
        early = notes->addPart(melody(0, 2400, 40, true), nullptr);
        running = notes->addPart(melody(2160, 1440, 50, false), nullptr);
        near = notes->addPart(melody(4000, 960, 60, true), nullptr);
        far = notes->addPart(melody(40000, 1920, 70, true), nullptr);
        step([this](CUndo* u) {
            ghost = seq->makeGhost(far, u);
            ghost->pos = 50000;
            notes->addPart(ghost, u);
        });
        clip = clips->addPart(single(480, 42000), nullptr); // ends before the loop
        clips->addPart(single(1500, 90000), nullptr);
        farClip = clips->addPart(single(60000, 20000), nullptr);
        prog()->addTempo(tempoPoint(1440, bpm), nullptr);
        prog()->addTempo(tempo, nullptr);
        prog()->addTempo(tempoPoint(4800, bpm), nullptr);
        for (int i = 0; i < 6; i++) clips->addPart(single(61000 + 8000 * i, 20000), nullptr);
    }
    CPart* melody(int pos, int length, int key, bool points) {
        CPart* made = midiPart(pos, length);
        made->offset = -120;
        for (int i = 0; i < 20; i++) made->addEvent(i * 190, note(key + i % 7, 40));
        for (int i = 0; points && i < 4; i++)
            made->addEventParam(i * 200, createEnvEvent(nullptr, float(key + 9 * i) / 128.0f), 0);
        return made;
    }
    static CTempoPart* tempoPoint(int pos, double tempo) {
        auto* point = new CTempoPart;
        point->pos = pos;
        point->setTempo(float(tempo));
        return point;
    }
    CPart* single(int pos, int frames) {
        auto* made = new CAudioPart;
        made->pos = pos;
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        event->end = frames - 1;
        made->addEvent(0, event);
        return made;
    }
    void swapEvents(CUndo* u, CPart* part, const std::function<void(CPart*)>& change) {
        CPart* edited = part->copy(0);
        change(edited);
        swapUndoPart(u, part, edited);
    }

    using Edit = void (*)(Song&, CUndo*);
    /// Blocks and steps are those of this host from here on, and it expects no further block.
    void use() {
        qv = &host;
        host.tasks->audioStopped();
    }
    void apply(Edit edit) {
        use();
        step([&](CUndo* u) { edit(*this, u); });
    }
    void takeBack() {
        use();
        undo();
    }
    void doAgain() {
        use();
        redo();
    }
    void start(double from) {
        use();
        host.loop = prog()->loop = 1;
        prog()->leftLocator = left;
        prog()->rightLocator = right;
        host.setPos(from);
        host.start();
    }
    /// Plays on until it comes to a position, within two passes.
    std::vector<Heard> playTo(double position) {
        use();
        std::vector<Heard> heard;
        do {
            ear->now.notes.clear();
            device.forget();
            device.run();
            heard.push_back(ear->now);
            heard.back().audio = device.left;
        } while (prog()->pos != position && heard.size() < 900);
        return heard;
    }
    void stop() {
        use();
        host.stop();
        device.run(2 * runOut);
    }
    /// Whatever was found out about the parts is forgotten.
    void refresh() {
        ear->now.value = -1.0f;
        seq->eachSongTrack([](CSongTrack* t) {
            t->index.expire();
            for (auto* part : t->parts) part->clipTempo = 0.0f;
        });
    }
};

/// For a pass, a song that plays sounds as `fresh`, which holds the same, does from a start here.
void expectAsFresh(Song& song, Song& fresh) {
    const std::vector<Heard> heard = song.playTo(here);
    fresh.refresh();
    fresh.start(here);
    const std::vector<Heard> expected = fresh.playTo(here);
    fresh.stop();
    ASSERT_EQ(heard.size(), expected.size());
    for (size_t i = 0; i < expected.size(); i++) {
        ASSERT_EQ(heard[i].notes, expected[i].notes) << "block " << i;
        if (expected[i].value >= 0.0f) {
            ASSERT_EQ(heard[i].value, expected[i].value) << "block " << i;
        }
        for (size_t n = 0; i >= runOut && n < expected[i].audio.size(); n++)
            ASSERT_EQ(heard[i].audio[n], expected[i].audio[n]) << "block " << i << ", frame " << n;
    }
}

} // namespace

/// Whatever is edited while a song plays, and taken back, and done again, it goes on as if it had
/// been started where it stands.
TEST(PartIndex, NeverTellsOfAFormerSong) {
    struct Case {
        const char* name;
        Song::Edit edit;
    };
    const Case cases[] = {
        {"a far part comes near", [](Song& s, CUndo* u) { recordMove(u, s.far, -36000); }},
        {"a near part goes", [](Song& s, CUndo* u) { recordMove(u, s.near, 36000); }},
        {"a clip comes near", [](Song& s, CUndo* u) { recordMove(u, s.farClip, -56800); }},
        {"a part moves before others", [](Song& s, CUndo* u) { recordMove(u, s.near, -3000); }},
        {"a part that is over grows", [](Song& s, CUndo* u) { recordGrow(u, s.early, 1500); }},
        {"a running part is cut", [](Song& s, CUndo* u) { recordGrow(u, s.running, -1000); }},
        {"a part is split",
         [](Song& s, CUndo* u) { s.seq->splitPart(s.notes, s.near, 400, 300, splitApart, u); }},
        {"a part is muted", [](Song& s, CUndo* u) { recordMuteToggle(u, s.near); }},
        {"a part comes here",
         [](Song& s, CUndo* u) { s.notes->addPart(s.melody(2600, 1200, 20, true), u); }},
        {"a part comes far away",
         [](Song& s, CUndo* u) { s.notes->addPart(s.melody(90000, 960, 20, true), u); }},
        {"a clip comes here",
         [](Song& s, CUndo* u) { s.clips->addPart(s.single(2400, 40000), u); }},
        {"many parts come",
         [](Song& s, CUndo* u) {
             for (int i = 0; i < 60; i++)
                 s.notes->addPart(s.melody(2000 + 64 * i, 64, 10, i % 9 == 0), u);
         }},
        {"a part leaves", [](Song& s, CUndo* u) { u->asRemove(s.running, &s.notes->parts); }},
        {"a part comes to another place of the list",
         [](Song& s, CUndo* u) {
             u->asRemove(s.near, &s.notes->parts);
             s.notes->addPart(s.melody(1000, 3000, 30, true), u);
         }},
        {"content that has points first",
         [](Song& s, CUndo* u) {
             s.swapEvents(u, s.running, [](CPart* p) {
                 p->addEventParam(120, createEnvEvent(nullptr, 0.125f), 0);
                 p->addEvent(55, note(99));
             });
         }},
        {"content of a ghost",
         [](Song& s, CUndo* u) {
             s.swapEvents(u, s.far->content(), [](CPart* p) { p->addEvent(55, note(99)); });
             recordMove(u, s.ghost, -47000);
         }},
        {"a clip becomes longer",
         [](Song& s, CUndo* u) {
             s.swapEvents(u, s.clip,
                          [](CPart* p) { static_cast<CAudioEvent*>(p->getEvents())->end = 99999; });
         }},
        {"a tempo point comes",
         [](Song& s, CUndo* u) { s.prog()->addTempo(Song::tempoPoint(960, 2 * bpm), u); }},
        {"a tempo point moves", [](Song& s, CUndo* u) { recordMove(u, s.tempo, 960 - 4000); }},
        {"a track comes with its parts",
         [](Song& s, CUndo* u) {
             CSongTrack* more = s.seq->addTrack(trackAudio, s.prog(), u);
             for (int i = 0; i < 20; i++) more->addPart(s.single(2400 + 480 * i, 7000), u);
         }},
        {"a track leaves", [](Song& s, CUndo* u) { s.seq->removeTrack(s.clips->track, u); }},
    };
    Song song, fresh;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        song.refresh();
        song.start(left);
        song.playTo(here);
        song.apply(c.edit);
        fresh.apply(c.edit);
        expectAsFresh(song, fresh);
        song.takeBack();
        fresh.takeBack();
        expectAsFresh(song, fresh);
        song.doAgain();
        fresh.doAgain();
        expectAsFresh(song, fresh);
        song.takeBack();
        fresh.takeBack();
        song.stop();
        if (HasFatalFailure()) return;
    }
    song.start(left);
    song.playTo(here);
    for (Song* s : {&song, &fresh}) { // at once, without a step
        s->use();
        s->notes->addPart(s->melody(2600, 1200, 20, true), nullptr);
        s->notes->addPart(s->melody(4600, 900, 20, true), nullptr);
    }
    expectAsFresh(song, fresh);
}

/// What a take adds is found in the next pass: notes for which a part has grown into the loop, and
/// the first point of a part.
TEST(PartIndex, FollowsWhatATakeAdds) {
    Song song;
    CPart* over = song.notes->addPart(song.melody(0, 960, 90, false), nullptr);
    song.start(left);
    song.playTo(here);
    song.use();
    {
        const GraphHold hold(&song.host);
        addLiveEvent(song.notes, over, 2200, note(1));
    }
    int times = 0;
    for (const Heard& block : song.playTo(here))
        for (const auto& [frame, message] : block.notes) times += asByte1(message) == 1;
    EXPECT_EQ(times, 1);

    LivePoint write;
    write.part = song.running;
    write.lane = song.lane;
    write.tick = -song.running->offset;
    write.pass = -1;
    write.point = createEnvEvent(nullptr, 0.125f);
    {
        const GraphHold hold(&song.host);
        addLivePoint(song.notes, write);
    }
    song.host.setPos(here);
    song.device.run();
    EXPECT_EQ(song.ear->now.value, 0.125f);
}
