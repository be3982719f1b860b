#include "SongFixture.h"

#include "engine/CGroupCh.h"
#include "engine/plan/GraphWorkers.h"
#include "instruments/CSampler.h"

namespace {

constexpr int songBlocks = 30, blockFrames = 256;

/// A song with tracks of all kinds, sends to buses, and automation that cuts the blocks.
struct MixedSong : SongFixture {
    explicit MixedSong(int helpers) {
        host.setFrames(blockFrames);
        host.workers->setCount(helpers);
        host.workers->eager = true;
        for (int k = 0; k < 2; k++) addBus();
        for (int i = 0; i < 3; i++) {
            addSynth(i);
            addDrums();
            addClips(i);
        }
    }
    std::vector<float> played() {
        host.start();
        device.forget();
        device.run(songBlocks);
        return device.left;
    }

private:
    void addBus() {
        auto* bus = new CGroupCh(&host);
        bus->init();
        bus->createBuffers(blockFrames);
        const GraphHold hold(&host);
        host.sends.add(bus);
        device.connect(bus);
    }
    void sendFrom(COutputChannel* ch) {
        for (int k = 0; k < 2; k++) ch->sendLevels[k]->level = 0.3f + 0.2f * float(k);
    }
    void automate(CSongTrack* t, CPart* part, CObject* object) {
        auto* lane = new CSubTrack("Lane", laneAutomation);
        lane->object = object;
        lane = t->track->addLane(lane, nullptr);
        for (int tick = 0; tick < barTicks; tick += 50)
            part->addEventParam(tick, createEnvEvent(nullptr, float(tick % 300) / 300), 0);
    }
    void addSynth(int i) {
        CSongTrack* t = track(trackMIDI);
        auto* synth = device.add(new CSampler(&host));
        CStr name;
        synth->factoryProg(nullptr, i, name, true);
        synth->getProg()->eachSound([](CSound* s) {
            CLFO& lfo = *s->lfo[0];
            lfo.wave = lfoRandom;
            lfo.rate = 40.0f;
            lfo.params[0].index = targetPitch;
            lfo.params[0].amount = 0.5f;
        });
        connect(t, synth);
        sendFrom(synth->output());
        CPart* part = t->addPart(midiPart(0), nullptr);
        for (int tick = 0; tick < barTicks; tick += 120) part->addEvent(tick, note(40 + tick % 31));
        automate(t, part, synth->output()->sendLevels[1]);
    }
    void addDrums() {
        CSongTrack* t = track(trackDrum);
        seq->addStandardKit(t->track);
        sendFrom(t->track->output());
        auto* part = new CDrumPart;
        part->length = barTicks;
        t->addPart(part, nullptr);
        for (int tick = 0; tick < barTicks; tick += 90) {
            CDrumEvent* hit = createDrumEvent();
            hit->sound = tick / 90 % 5;
            part->addEvent(tick, hit);
        }
    }
    void addClips(int i) {
        CSongTrack* t = track(trackAudio);
        auto* part = new CAudioPart;
        part->multiclip = 1;
        part->length = barTicks;
        CAudioEvent* clip = createAudioEvent();
        clip->sample = addSample(20000, [=](int n) { return 0.3 * std::sin(0.01 * n * (i + 1)); });
        clip->end = 19999;
        part->addEvent(0, clip);
        t->addPart(part, nullptr);
        automate(t, part, t->track->output());
    }
};

} // namespace

/// Whoever works out a track, sends included, and however many there are.
TEST(SongThreads, ChangeNothing) {
    const std::vector<float> alone = MixedSong(0).played();
    EXPECT_GT(*std::ranges::max_element(alone), 0.1f);
    for (const int helpers : {1, 3})
        EXPECT_TRUE(MixedSong(helpers).played() == alone) << helpers << " threads";
}
