#pragma once

#include "SongFixture.h"

/// What reached the listener, with its frame since the start.
struct Heard {
    double frame;
    int data;
    unsigned char kind;
    float value;
};

using Frames = std::vector<long>;

/// Keeps what it is played.
class Ear : public TestInstrument {
public:
    explicit Ear(CQV* root) : TestInstrument(root) { events.reserve(100000); }
    void play(int frames) override {
        for (CMIDIBytes* e = inPort()->first(); e && events.size() < events.capacity(); e = e->next)
            events.push_back({double(past) + e->time, e->data, e->kind, e->value});
        past += frames;
    }
    std::vector<Heard> events;
    long past = 0;

    Frames ons(int key = 60) const { return framesOf(key, noteOn); }
    Frames offs(int key = 60) const { return framesOf(key, noteOff); }

private:
    Frames framesOf(int key, bool (*wanted)(int)) const {
        Frames list;
        for (const Heard& e : events)
            if (e.kind == eventMidi && asByte1(e.data) == key && wanted(e.data))
                list.push_back(std::lround(e.frame));
        return list;
    }
};

struct PlayFixture : SongFixture {
    CSongTrack* songTrack = track(trackMIDI);
    Ear* ear = connect(songTrack, device.add(new Ear(&host)));

    /// A part with one note per tick given.
    CPart* part(CSongTrack* t, int pos, int length, const std::vector<int>& ticks,
                int noteTicks = 240, int key = 60) {
        CPart* made = midiPart(pos, length);
        for (int tick : ticks) made->addEvent(tick, note(key, noteTicks));
        return t->addPart(made, nullptr);
    }
    /// A lane that moves the listener's fader.
    CSubTrack* faderLane() {
        auto* lane = new CSubTrack("Volume", laneAutomation);
        lane->object = ear->output();
        return songTrack->track->addLane(lane, nullptr);
    }
    void play(int blocks, double from = 0.0, bool looping = false) {
        host.loop = prog()->loop = looping;
        host.setPos(from);
        device.run();
        ear->events.clear();
        ear->past = 0;
        host.start(); // with the next block
        device.run(blocks);
    }
    double framesPerTick() const { return double(host.rate) / (120 * 16.0); }
    long frame(double tick) const { return std::lround(tick * framesPerTick()); }
};
