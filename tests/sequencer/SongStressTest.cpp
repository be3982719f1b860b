#include "SongFixture.h"

#include <random>

namespace {

/// Counts what the song plays.
class Listener : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    void play(int) override { heard += inPort()->count; }
    std::atomic<long> heard{0};
};

struct StressedSong : SongFixture {
    Listener* listener = device.add(new Listener(&host));

    StressedSong() {
        host.setFrames(128);
        for (int i = 0; i < 3; i++) {
            CSongTrack* t = track(trackMIDI);
            connect(t, listener);
            t->addPart(busyPart(), nullptr);
            addMarker(nullptr);
        }
        prog()->rightLocator = 1920;
    }

    void act() {
        const int what = pick(14);
        if (what == 0) host.start();
        if (what == 1) host.stop();
        if (what == 2) host.setPos(pick(4000));
        if (what == 3) prog()->nextMarker();
        if (what == 4) prog()->priorMarker();
        if (what == 5) host.undoClicked();
        if (what == 6) host.redoClicked();
        if (what == 7) toggle();
        if (what == 8) host.setTempo(float(60 + pick(150)));
        if (what > 8) step([this](CUndo* u) { edit(u); });
    }
    /// Without the selection, which no step records.
    std::string text() {
        seq->unselectTracks();
        return dump(seq);
    }

private:
    std::mt19937 random{5};

    int pick(int n) { return int(random() % unsigned(n)); }
    CSongTrack* anyTrack() { return prog()->tracks.items(pick(prog()->tracks.getCount())); }
    CPart* busyPart() {
        CPart* part = midiPart(pick(4) * 480, 480 + pick(3) * 480);
        for (int i = 0; i < 40; i++) part->addEvent(pick(1900), note(pick(128)));
        for (int i = 0; i < 20; i++)
            part->addEventParam(pick(1900), createEnvEvent(nullptr, float(pick(100)) / 100.0f), 0);
        return part;
    }
    void toggle() {
        CSongTrack* on = anyTrack();
        if (pick(2)) on->setMuted(!on->muted());
        if (pick(2)) on->setSoloed(!on->soloed());
        if (pick(2)) seq->selectTrack(on, !on->track->selected());
        if (pick(4) == 0) seq->options.bytes[SongOptions::arranger] = (unsigned char)pick(2);
        on->track->preview.addNote(pick(128), 100);
    }
    void edit(CUndo* u) {
        CSongTrack* on = anyTrack();
        CPart* part = on->parts.items(pick(4));
        const int what = pick(8);
        if (what == 0 && prog()->tracks.getCount() > 4) seq->removeTrack(on->track, u);
        if (what == 1) seq->addTrack(1 + pick(5), prog(), u, pick(4) - 1);
        if (what == 2) on->addPart(busyPart(), u);
        if (what == 3 && part) u->asRemove(part, &on->parts);
        if (what == 4 && part) on->addPart(seq->makeGhost(part, u), u);
        if (what == 5 && part) editPart(part, u);
        if (what == 6) addLane(on->track, u);
        if (what == 7) addMarker(u);
    }
    void addLane(CTrack* track, CUndo* u) {
        auto* lane = new CSubTrack("lane", laneAutomation);
        lane->object = listener->output();
        track->addLane(lane, u);
    }
    void addMarker(CUndo* u) {
        auto* tempo = new CTempoPart;
        tempo->pos = pick(4000);
        tempo->setTempo(float(60 + pick(150)));
        prog()->addTempo(tempo, u);
        void* marker = prog()->markers.items(pick(6));
        if (u && marker) u->asRemove(static_cast<CMarkerPart*>(marker), &prog()->markers);
        auto* fresh = new CMarkerPart;
        fresh->pos = pick(8) * 480;
        prog()->addMarker(fresh, u);
    }
    void editPart(CPart* part, CUndo* u) {
        u->asInt(part->pos.address());
        part->pos = pick(8) * 240;
        CPart* edited = part->content()->copy(0);
        if (CBaseEvent* first = edited->getEvents()) first->flags = eventSelected;
        edited->deleteSelected();
        edited->addEvent(pick(1900), note(pick(128)));
        swapUndoPart(u, part->content(), edited);
    }
};

} // namespace

/// Whatever is edited while blocks run, the way back and the way forth lead to the same songs.
TEST(Song, IsEditedWhileItPlays) {
    StressedSong song;
    const std::string start = song.text();
    const BlockThread audio([&song] {
        song.device.run();
        song.device.forget();
    });
    for (int i = 0; i < 1500; i++) {
        song.act();
        song.host.idle();
        ASSERT_TRUE(audio.next());
    }
    song.host.settle();
    const auto redoAll = [&song] {
        while (song.host.undoIndex + 1 < song.host.undoList.getCount()) song.redo();
        return song.text();
    };
    const std::string end = redoAll();
    while (song.host.undoIndex >= 0) song.undo();
    EXPECT_EQ(song.text(), start);
    EXPECT_EQ(redoAll(), end);
    EXPECT_GT(song.listener->heard, 0);
}
