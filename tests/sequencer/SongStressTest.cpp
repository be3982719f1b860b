#include "SongFixture.h"
#include "support/RtTrap.h"

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

namespace {

constexpr int actions = 1500;
constexpr int blockFrames = 128;

/// Pulls what the song plays.
class Listener : public CComp {
public:
    explicit Listener(CQV* root) : CComp(root) {}
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        for (CMIDIBytes* e = inPort()->first(); e; e = e->next) heard++;
    }
    std::atomic<long> heard{0};
};

/// Blocks one after the other on a thread of their own.
class AudioThread {
public:
    explicit AudioThread(TestHost& device)
        : thread([this, &device] {
              while (!ended) {
                  device.run();
                  device.forget();
                  blocks++;
              }
          }) {}
    ~AudioThread() {
        ended = true;
        thread.join();
    }

    /// Returns when another block has run, so that edits and blocks really meet.
    bool waitForBlock() const {
        const long before = blocks;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (blocks == before && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        return blocks != before;
    }

private:
    std::atomic<long> blocks{0};
    std::atomic<bool> ended{false};
    std::thread thread; // last: it uses the others
};

class StressedSong : public SongFixture {
public:
    StressedSong() {
        host.setFrames(blockFrames);
        listener = device.add(new Listener(&host));
        device.connect(listener);
        for (int i = 0; i < 3; i++) {
            CSongTrack* songTrack = track(trackMIDI);
            GraphHold hold(&host);
            listener->addMIDICable(songTrack->track->outPort(), nullptr);
            songTrack->linkPart(busyPart());
        }
        track(trackAudio);
        prog()->rightLocator = 1920;
        for (int pos : {0, 480, 960}) {
            auto* marker = new CMarkerPart;
            marker->pos = pos;
            marker->length = 480;
            prog()->addMarker(marker, nullptr);
        }
    }

    void act() {
        switch (pick(14)) {
        case 0:
            return host.start();
        case 1:
            return host.stop();
        case 2:
            return host.setPos(pick(4000));
        case 3:
            return prog()->nextMarker();
        case 4:
            return prog()->priorMarker();
        case 5:
            return host.undoClicked();
        case 6:
            return host.redoClicked();
        case 7:
            return toggle();
        case 8:
            return host.setTempo(float(60 + pick(150)));
        default:
            return edit();
        }
    }

    /// Without the selection, which no step records.
    std::string text() {
        seq->unselectTracks();
        return dump(seq);
    }

    Listener* listener;

private:
    int pick(int n) { return int(random() % unsigned(n)); }
    CSongTrack* anyTrack() {
        return static_cast<CSongTrack*>(prog()->tracks.items(pick(prog()->tracks.getCount())));
    }
    CPart* busyPart() {
        CPart* part = midiPart(pick(4) * 480, 480 + pick(3) * 480);
        for (int i = 0; i < 40; i++) part->addEvent(pick(1900), note(pick(128)));
        for (int i = 0; i < 20; i++)
            part->addEventParam(pick(1900), createEnvEvent(nullptr, float(pick(100)) / 100.0f), 0);
        return part;
    }
    void toggle() {
        CSongTrack* on = anyTrack();
        if (!on) return;
        if (pick(2)) on->setMuted(!on->muted());
        if (pick(2)) on->setSoloed(!on->soloed());
        if (pick(2)) seq->selectTrack(on, !on->track->selected());
        if (pick(4) == 0) seq->options.bytes[SongOptions::arranger] = (unsigned char)pick(2);
        on->track->preview.addNote(pick(128), 100);
    }
    void edit() {
        step([&](CUndo* u) {
            CSongTrack* on = anyTrack();
            if (!on || pick(12) == 0) {
                seq->addTrack(1 + pick(5), prog(), u, pick(4) - 1);
                return;
            }
            CPart* part = static_cast<CPart*>(on->parts.items(pick(4)));
            switch (pick(7)) {
            case 0:
                if (prog()->tracks.getCount() > 4) seq->removeTrack(on->track, u);
                return;
            case 1:
                return addLane(on->track, u);
            case 2:
                if (part) u->asRemove(part, &on->parts);
                return;
            case 3:
                if (part) on->addPart(seq->makeGhost(part, u), u);
                return;
            case 4:
                return addPoint(u);
            case 5:
                on->addPart(busyPart(), u);
                return;
            default:
                return editPart(part, u);
            }
        });
    }
    void addLane(CTrack* track, CUndo* u) {
        auto* lane = new CSubTrack("lane", laneAutomation);
        lane->object = listener->output();
        track->addLane(lane, u);
    }
    void addPoint(CUndo* u) {
        auto* tempo = new CTempoPart;
        tempo->pos = pick(4000);
        tempo->setTempo(float(60 + pick(150)));
        prog()->addTempo(tempo, u);
        if (void* marker = prog()->markers.items(pick(6)))
            u->asRemove(static_cast<CMarkerPart*>(marker), &prog()->markers);
        auto* fresh = new CMarkerPart;
        fresh->pos = pick(8) * 480;
        prog()->addMarker(fresh, u);
    }
    void editPart(CPart* part, CUndo* u) {
        if (!part) return;
        u->asInt(part->pos.address());
        part->pos = pick(8) * 240;
        CPart* edited = part->content()->copy(0);
        if (CBaseEvent* first = edited->getEvents()) first->flags = eventSelected;
        edited->deleteSelected();
        edited->addEvent(pick(1900), note(pick(128)));
        swapUndoPart(u, part->content(), edited);
    }

    std::mt19937 random{5};
};

} // namespace

/// Whatever is edited while blocks run, the way back and the way forth lead to the same songs, and
/// nothing forbidden happens on the audio thread.
TEST(Song, IsEditedWhileItPlays) {
    StressedSong song;
    const std::string start = song.text();
    rtReset();
    AudioThread audio(song.device);
    for (int i = 0; i < actions; i++) {
        song.act();
        song.host.idle();
        ASSERT_TRUE(audio.waitForBlock());
    }
    song.host.settle();
    while (song.host.undoIndex + 1 < song.host.undoList.getCount()) song.redo();
    const std::string end = song.text();
    while (song.host.undoIndex >= 0) song.undo();
    EXPECT_EQ(song.text(), start);
    while (song.host.undoIndex + 1 < song.host.undoList.getCount()) song.redo();
    EXPECT_EQ(song.text(), end);
    EXPECT_GT(song.listener->heard, 0);
    EXPECT_EQ(rtViolations(), 0);
}
