#pragma once

#include "SongFixture.h"
#include "engine/CClick.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>

/// Silent, and late.
class Late : public TestInstrument {
public:
    Late(CQV* root, int delay) : TestInstrument(root), frames(delay) {}
    const int frames;
    int getDelay() override { return frames; }
    void play(int) override {}
};

/// What is played in which block: "24+60 48-60 50c7", a key goes down or up, a controller comes; so
/// many blocks later.
inline std::multimap<int, int> script(const std::string& text, int late = 0) {
    std::multimap<int, int> made;
    std::istringstream in(text);
    int at = 0, number = 0;
    for (char what = 0; in >> at >> what >> number;) {
        const int status = what == '+' ? midiNoteOn : what == '-' ? midiNoteOff : midiController;
        made.emplace(at + late, asData(status, number, 100));
    }
    return made;
}

/// "tick:key+length" per note, "tick:c number" for controllers, "tick:sound*velocity" for drums.
inline std::string text(CPart* part) {
    std::ostringstream out;
    out << part->pos << "-" << part->length;
    int tick = 0;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        const auto* drum = static_cast<CDrumEvent*>(e);
        const auto* midi = static_cast<CMIDIEvent*>(e);
        out << " " << (tick += e->delta) << ":";
        if (part->type == partDrum)
            out << drum->sound << "*" << std::lround(drum->velocity * 127);
        else if (noteOn(midi->data))
            out << asByte1(midi->data) << "+" << midi->length;
        else
            out << "c" << asByte1(midi->data);
    }
    return out.str();
}

/// A song that records; at 120 beats a minute and this rate a block lasts ten ticks to the frame,
/// and a stride of the song four blocks.
struct TakeFixture : SongFixture {
    static constexpr int rate = 49152, block = 256, blockTicks = 10;
    std::string folder = "/tmp/takesXXXXXX";

    TakeFixture() {
        host.tempAudioFolder = mkdtemp(folder.data());
        host.setFrames(block);
        host.setRate(rate);
        host.loop = prog()->loop = 0;
        host.click->enabled = 0;
    }
    ~TakeFixture() { std::filesystem::remove_all(folder); }

    /// A selected track that is ready to record.
    CSongTrack* ready(int kind) {
        CSongTrack* made = track(kind);
        seq->selectTrack(made, true);
        idle();
        return made;
    }
    /// An idle pass that finds no block running, and what the edits of it leave.
    void idle() {
        host.tasks->audioStopped();
        host.idle();
        host.settle();
        seq->recorder.edits.settle();
    }
    /// Runs blocks with an idle pass after each; `script` tells what is played in which.
    void play(int blocks, const std::multimap<int, int>& script = {}) {
        for (int i = 0; i < blocks; i++) {
            for (auto [it, end] = script.equal_range(i); it != end; ++it) device.send(it->second);
            device.run();
            idle();
        }
    }
    void begin(double tick) {
        host.setPos(tick);
        host.rec();
    }
    void end() {
        host.stop();
        play(1);
    }
    CPart* partOf(CSongTrack* on, int index = 0) { return on->parts.items(index); }
    void loop(int left, int right) {
        prog()->leftLocator = left;
        prog()->rightLocator = right;
        host.loop = prog()->loop = 1;
    }
    /// All that happened since is one step, which leads back and forth exactly.
    void expectOneStep(const std::string& before) {
        const std::string after = dump(seq);
        const int steps = host.undoIndex;
        EXPECT_EQ(host.undoText(), CStr("Record"));
        undo();
        EXPECT_EQ(dump(seq), before);
        redo();
        EXPECT_EQ(dump(seq), after);
        EXPECT_EQ(host.undoIndex, steps);
    }
};
