#include "SongFixture.h"

namespace {

/// A frame of 1 for each note.
class Beeper : public TestInstrument {
public:
    using TestInstrument::TestInstrument;
    void play(int) override {
        for (const CMIDIBytes* e = inPort()->first(); e; e = e->next)
            if (noteOn(e->data)) output()->bufL[CMIDIQ::frameOf(e, 0, host->frames - 1)] += 1.0f;
    }
};

} // namespace

/// An instrument that the song plays comes back into an audio track, which lets it through: each
/// note is heard there 64 frames later, once, in blocks of any size.
TEST(SongLoop, AnInstrumentMayBeTakenInByATrack) {
    for (const int frames : {32, 64, 480, 1024}) {
        SongFixture f;
        f.host.setFrames(frames);
        CSongTrack* notes = f.track(trackMIDI);
        CSongTrack* audio = f.track(trackAudio);
        f.seq->options.bytes[SongOptions::audioMonitor] =
            static_cast<unsigned char>(MonitorMode::manual);
        audio->track->monitor = 1;
        CPart* part = notes->addPart(midiPart(0), nullptr);
        for (const int tick : {0, 100, 333}) part->addEvent(tick, note(60, 20));
        auto* beeper = f.device.add(new Beeper(&f.host));
        {
            const GraphHold hold(&f.host);
            beeper->addMIDICable(notes->track->outPort(), nullptr);
            f.seq->addAudioCable(beeper->output(), audio->track->input());
        }
        f.host.start();
        while (f.device.left.size() < 20480) f.device.run();
        std::vector<size_t> heard;
        for (size_t i = 0; i < 20480; ++i)
            if (f.device.left[i] != 0.0f) heard.push_back(i);
        std::vector<size_t> due;
        for (const int tick : {0, 100, 333})
            due.push_back(size_t(std::lround(f.host.ticksToFrames(tick))) + 64);
        EXPECT_EQ(heard, due) << frames;
    }
}
