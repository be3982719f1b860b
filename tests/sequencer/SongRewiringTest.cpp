// Tracks, cables and buses come and go while a song plays and records.

#include "TakeFixture.h"
#include "base/Numbers.h"
#include "engine/CGroupCh.h"

#include <random>

namespace {

constexpr int blockFrames = 64, rate = 48000;
constexpr double quiet = 0.003; ///< all tracks fade in smaller steps than one makes that is cut

/// A song that plays. One track leads to a device channel of its own, another one records; the
/// edits are about others.
class Studio : public SongFixture {
public:
    Studio() {
        host.tempAudioFolder = mkdtemp(folder.data());
        host.setFrames(blockFrames);
        host.setRate(rate);
        host.recBits = 32;
        host.loop = prog()->loop = 0;
        host.click->enabled = 0;
        host.listenVolume = 1.0f;
        seq->options.bytes[SongOptions::audioMonitor] = 0;
        playClip(track(trackAudio), nullptr, [](int i) { return i % 1009 * 7919 % 1009 / 4096.0; });
        auto* out = device.add(new CAudioOut(&host));
        out->channelUsed[2] = out->channelUsed[3] = 1;
        {
            const GraphHold hold(&host);
            CAudioCable* cable = device.out->audioCables.pop();
            out->addAudioCable(cable->fromChannel, nullptr);
            delete cable;
        }
        taken = track(trackAudio);
        taken->track->recArm = 1;
        steady = addSample(20 * rate, [](int) { return quiet; });
        playing = this;
        play(20);
        host.idle();
        seq->recorder.edits.settle();
        messageHooks().pumpIdle = playOn;
        host.start();
        play(20);
        steepest = 0.0f;
    }
    ~Studio() {
        messageHooks().pumpIdle = nullptr;
        std::filesystem::remove_all(folder);
    }
    void playClip(CSongTrack* t, CUndo* undo, CSample* sample) {
        auto* part = new CAudioPart;
        part->length = maxTicks / 2;
        CAudioEvent* e = createAudioEvent();
        e->sample = sample;
        e->end = sample->frames - 1;
        part->addEvent(0, e);
        t->addPart(part, undo);
    }
    template <class F>
    void playClip(CSongTrack* t, CUndo* undo, F value) {
        playClip(t, undo, addSample(20 * rate, value));
    }
    void play(int blocks) {
        for (int i = 0; i < blocks; i++) playBlock();
    }
    /// While another thread runs the blocks.
    template <class F>
    void apart(F&& work) {
        messageHooks().pumpIdle = nullptr;
        {
            const BlockThread audio([this] {
                playBlock();
                asSleep(1);
            });
            work();
        }
        messageHooks().pumpIdle = playOn;
    }
    static float input(long frame) { return float(frame % 100003) / 131072; }

    CSongTrack* taken;
    CSample* steady;
    std::vector<float> heard; ///< of what no edit touches
    float steepest = 0.0f;    ///< of what the edits are about

private:
    static inline Studio* playing = nullptr;
    static void playOn() { playing->play(1); } ///< where an edit waits for the graph
    void playBlock() {
        float outputs[4][blockFrames], in[blockFrames];
        for (float& sample : in) sample = input(frames++);
        float* ins[] = {in, in};
        float* outs[4];
        std::copy(std::begin(outputs), std::end(outputs), outs);
        libio(ins, outs, 2, 4, blockFrames, nullptr, 0);
        heard.insert(heard.end(), outputs[2], outputs[3]);
        for (const float sample : outputs[0]) {
            steepest = std::max(steepest, std::fabs(sample - last));
            last = sample;
        }
    }
    std::string folder = "/tmp/rewireXXXXXX";
    long frames = 0;
    float last = 0.0f;
};

/// Random edits, each one step.
class Edits {
public:
    explicit Edits(Studio& of) : s(of) {}
    int below(int n) { return int(random() % unsigned(n)); }
    void edit() {
        CUndo* u = s.host.undoStart("Edit", &s.host, {.graph = true, .song = true});
        CTrack* t =
            s.seq->tracks.getCount() > ownTracks
                ? s.seq->tracks.items(ownTracks + below(s.seq->tracks.getCount() - ownTracks))
                : nullptr;
        const int kind = below(6);
        if (kind < 2 && s.seq->tracks.getCount() < 12)
            addTrack(u);
        else if (kind == 2 && t)
            s.seq->removeTrack(t, u);
        else if (kind == 3 && t)
            toggle(u, below(2) ? s.device.out : anyBus(), t);
        else
            changeBuses(u);
        s.host.undoEnd(u, false);
    }

private:
    static constexpr int ownTracks = 2;
    CComp* anyBus() {
        const int count = s.host.sends.getCount();
        return count ? static_cast<CComp*>(s.host.sends.items(below(count))) : s.device.out;
    }
    void addTrack(CUndo* u) {
        CSongTrack* t = s.seq->addTrack(trackAudio, s.prog(), u);
        t->track->output()->sendLevels[below(3)]->level = 0.3f;
        s.playClip(t, u, s.steady);
    }
    void toggle(CUndo* u, CComp* to, CTrack* from) {
        if (CAudioCable* known = getAudioCable(to, from->output(), nullptr))
            u->asRemove(known, &to->audioCables);
        else
            u->asAdd(createAudioCable(to, from->output(), nullptr), &to->audioCables);
    }
    void changeBuses(CUndo* u) {
        CComp* known = anyBus();
        if (known != s.device.out && (below(2) || s.host.sends.getCount() > 3)) {
            s.host.stripCables(known, u);
            u->asRemove(static_cast<CGroupCh*>(known), &s.host.sends);
            return;
        }
        auto* bus = new CGroupCh(&s.host);
        bus->init();
        bus->createBuffers(blockFrames);
        u->asAdd(bus, &s.host.sends, -1);
        u->asAdd(createAudioCable(s.device.out, bus->output(), nullptr),
                 &s.device.out->audioCables);
    }

    Studio& s;
    std::mt19937 random{1};
};

/// Ends the take: every frame that came in meanwhile is in its file, in order.
void endTake(Studio& s) {
    s.host.rec();
    s.play(40); // what fades comes to its end
    s.apart([&] { s.host.idle(); });
    EXPECT_TRUE(s.seq->recorder.recReady);
    ASSERT_FALSE(s.taken->parts.empty());
    CSample* sample = static_cast<CAudioEvent*>(s.taken->parts.last()->getEvents())->sample;
    std::vector<float> pairs(size_t(sample->frames) * 2);
    sample->readFrames(0, sample->frames, pairs.data());
    const long first = std::lround(pairs[0] * 131072);
    EXPECT_GT(sample->frames, 20 * blockFrames);
    for (int i = 0; i < sample->frames; i++)
        ASSERT_EQ(pairs[size_t(i) * 2], Studio::input(first + i)) << i;
}

} // namespace

/// A thousand random edits with undo and redo, at 48 kHz in blocks of 64 frames, while takes begin
/// and end: what they don't touch plays on bit for bit, what they touch makes no step, no take
/// lacks a frame.
TEST(SongRewiring, EditsWhilePlayingAndRecording) {
    constexpr int takeEdits = 40;
    std::vector<float> heard;
    {
        Studio s;
        s.readsDisk = true; // takes
        Edits edits(s);
        for (int i = 0; i < 1000; i++) {
            const int phase = i % takeEdits;
            if (phase == 0) s.host.rec();
            if (phase == takeEdits / 2) endTake(s);
            for (int n = phase < takeEdits / 2 ? 0 : edits.below(4); n > 0; n--) {
                edits.below(3) ? s.host.undoClicked() : s.host.redoClicked();
                s.play(edits.below(4));
            }
            edits.edit();
            s.play(1 + edits.below(12));
            s.host.idle();
        }
        EXPECT_LT(s.steepest, 0.001f);
        EXPECT_GT(s.steepest, 0.0f);
        heard = s.heard;
    }
    Studio alone;
    while (alone.heard.size() < heard.size()) alone.play(1);
    alone.heard.resize(heard.size());
    EXPECT_GT(*std::ranges::max_element(heard), 0.01f);
    EXPECT_TRUE(heard == alone.heard) << "an edit was heard elsewhere";
}
