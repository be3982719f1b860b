#include "EditsFixture.h"
#include "base/Numbers.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/edit/PinEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/render/ClipRender.h"
#include "sequencer/song/ClipTimes.h"
#include "support/Rows.h"

#include <cmath>

namespace {

constexpr int rate = 48000, played = 44100; ///< of the sample, and of the device
constexpr double low = 440, high = 880;     ///< Hz, of the first and the second half

/// A clip of two seconds in as many, whose pitch changes in its middle: there a marker stands, a
/// quarter of the clip's time behind its start, and what follows is tuned by `pitch`.
struct Pinned : Edits {
    CPart* part;

    explicit Pinned(bool reverse = false, float pitch = 0.0f) {
        deleteAll<CPart>(prog()->tempos);
        auto* data = static_cast<short*>(std::calloc(clipFrames, 2));
        for (int i = 0; i < clipFrames; i++)
            data[i] =
                short(16000 * std::sin(2 * M_PI * (i < clipFrames / 2 ? low : high) * i / rate));
        auto* tones = new CSample;
        tones->setFormat(rate, 16, 1);
        tones->takeData(reinterpret_cast<unsigned char*>(data), clipFrames);
        tones->filename = "tones.wav";
        host.samples.add(tones);
        CAudioEvent* event = clip(tones);
        event->mode = playStretch;
        event->reverse = reverse;
        event->ticks = 3840;
        event->pins.count = 1;
        event->pins.list[0] = {clipFrames / 2, pitch, 0.25};
        part = addAudio(0, {{0, event}});
        part->length = 3840;
        select(audio, "a");
    }
    const CAudioEvent* now(int number = 0) {
        host.settle();
        return static_cast<const CAudioEvent*>(audio->parts.items(number)->getEvents());
    }
    ClipPlace place() const { return {part, 0}; }
};

/// Hz by the rising zero crossings of a stretch.
double pitchOf(const std::vector<float>& x, double from, double to) {
    int count = 0;
    double first = 0, last = 0;
    for (int i = int(from); i + 1 < int(to); i++) {
        const double a = double(x[size_t(i)]), b = double(x[size_t(i) + 1]);
        if (!(a < 0 && b >= 0)) continue;
        last = i + a / (a - b);
        if (count++ == 0) first = last;
    }
    return count > 1 ? (count - 1) * played / (last - first) : 0.0;
}

/// The ticks of the song at which some frames of the sample are heard, part by part.
std::vector<double> ticksOf(Pinned& p, const std::vector<int>& frames) {
    std::vector<double> ticks;
    for (int i = 0; i < p.audio->parts.getCount(); i++) {
        const CAudioEvent* e = p.now(i);
        for (const int frame : frames)
            if (frame >= e->start && frame <= e->end)
                ticks.push_back(p.audio->parts.items(i)->pos +
                                shareAt(e, e->reverse ? e->end + 1.0 - frame : frame - e->start) *
                                    e->ticks);
    }
    std::ranges::sort(ticks);
    return ticks;
}

} // namespace

/// Frames and shares by hand: 0.25 of the time for the first half of the frames. Backward the other
/// way round. What leads nowhere does not count.
TEST(ClipPins, DivideTheTime) {
    for (const auto& [reverse, framesIn, share] : Rows<int, double, double>{{0, 24000, 0.125},
                                                                            {0, 48000, 0.25},
                                                                            {0, 72000, 0.625},
                                                                            {0, 96000, 1.0},
                                                                            {0, -9600, -0.05},
                                                                            {1, 24000, 0.375},
                                                                            {1, 48000, 0.75},
                                                                            {1, 72000, 0.875}}) {
        Pinned p(reverse);
        CAudioEvent e = *p.now();
        EXPECT_NEAR(shareAt(&e, framesIn), share, 1e-9) << framesIn;
        EXPECT_NEAR(framesAtShare(&e, share), framesIn, 1e-6) << share;
        EXPECT_EQ(posAsFrames2(&e, asRound(share * 3840), 3840), saturate(int64_t(framesIn)));
        e.pins.count = 4;
        e.pins.list[1] = {60000, 0, 0.2}; // back in time
        e.pins.list[2] = {40000, 0, 0.5}; // back in the sample
        e.pins.list[3] = {96000, 0, 0.9}; // behind its end
        EXPECT_NEAR(shareAt(&e, framesIn), share, 1e-9) << framesIn;
    }
}

/// Each half is heard for its time, at its pitch: played from the start, joined in its middle, and
/// rendered past playback.
TEST(ClipPins, AreHeard) {
    for (const auto& [reverse, pitch] :
         Rows<bool, float>{{false, 0.0f}, {false, 7.0f}, {true, 0.0f}}) {
        SCOPED_TRACE(testing::Message() << reverse << ' ' << pitch);
        Pinned p(reverse, pitch);
        while (p.host.makeStretcher()) {
        }
        const double tuned = high * std::exp2(double(pitch) / 12);
        const double first = reverse ? high : low, second = reverse ? low : tuned;
        const double border = played * 2 * (reverse ? 0.75 : 0.25);
        const auto check = [&](const std::vector<float>& x, int skipped) {
            if (skipped == 0) {
                EXPECT_NEAR(pitchOf(x, 0.3 * border, 0.8 * border), first, 0.01 * first);
            }
            EXPECT_NEAR(pitchOf(x, 1.15 * border - skipped, 0.95 * 2 * played - skipped), second,
                        0.01 * second);
        };
        const auto play = [&](int tick) {
            p.host.setPos(tick);
            p.host.start();
            p.device.forget();
            while (int(p.device.left.size()) < 2 * played) p.device.run(1, 512);
            check(p.device.left, asRound(tick / 1920.0 * played));
            p.host.stop();
            p.device.run(20, 512);
        };
        play(0);
        play(1000 - 960 * reverse); // within the first piece
        ClipRender render(p.seq, p.now(), 0, 0, played);
        std::vector<float> left(2 * played), right(2 * played);
        render.add(left.data(), right.data(), 0, 2 * played);
        check(left, 0);
    }
}

/// Cut, sliced or slipped, what is heard of it stays where it was.
TEST(ClipPins, StayWithTheirFramesWhenAClipIsCut) {
    const std::vector<int> frames = {1000, 30000, 50000, 61000, 90000};
    for (const bool reverse : {false, true}) {
        Pinned p(reverse, 3.0f);
        const std::vector<double> before = ticksOf(p, frames);
        p.host.setPos(2400);
        const std::string start = p.bytes();
        p.seq->splitAtCursorClicked();
        p.host.settle();
        ASSERT_EQ(p.audio->parts.getCount(), 2);
        const std::vector<double> after = ticksOf(p, frames);
        ASSERT_EQ(after.size(), before.size());
        for (size_t i = 0; i < before.size(); i++) EXPECT_NEAR(after[i], before[i], 0.5);
        const CAudioEvent* second = p.now(1);
        EXPECT_EQ(pieceAt(second, 10).pitch, reverse ? 3.0f * (second->end >= 48000) : 3.0f);
        p.undo();
        EXPECT_TRUE(p.bytes() == start);
    }
}

/// Markers come where the sound is heard already, move between their neighbours, go to the grid,
/// and go; each is a step, and is stored.
TEST(ClipPins, AreEditedInSteps) {
    Pinned p;
    const auto pins = [&] { return p.now()->pins; };
    const auto step = [&](bool done) {
        EXPECT_TRUE(done);
        p.host.settle();
        const std::string edited = p.bytes();
        p.undo();
        EXPECT_FALSE(p.bytes() == edited);
        p.redo();
        EXPECT_TRUE(p.bytes() == edited);
    };
    step(addPins(p.seq, p.place(), {72000, 24000, 48000, 0, 96000}));
    ASSERT_EQ(pins().count, 3) << "not twice, and not at the ends";
    EXPECT_EQ(pins().list[0], (ClipPin{24000, 0.0f, 0.125}));
    EXPECT_EQ(pins().list[2], (ClipPin{72000, 0.0f, 0.625}));
    step(movePin(p.seq, p.place(), 1, 0.9));
    EXPECT_NEAR(pins().list[1].share, 0.625 - 1.0 / 3840, 1e-9) << "before its neighbour";
    step(tunePin(p.seq, p.place(), 1, 99.0f));
    EXPECT_EQ(pins().list[1].pitch, ClipPins::mostPitch);
    step(movePin(p.seq, p.place(), 1, 0.26));
    step(quantizePins(p.seq, p.place(), 960));
    const double lines[] = {960 - 1, 960, 2880}; // the first has to leave room
    for (int i = 0; i < 3; i++) EXPECT_NEAR(pins().list[i].share * 3840, lines[i], 1.01);
    step(deletePin(p.seq, p.place(), 1));
    EXPECT_EQ(pins().count, 2);
    step(deletePins(p.seq, p.place()));
    EXPECT_FALSE(deletePins(p.seq, p.place()));
    p.audio->track->locked = 1;
    EXPECT_FALSE(addPins(p.seq, p.place(), {100}));
    p.audio->track->locked = 0;
    // A clip at its own speed comes to be stretched, and nothing moves.
    EXPECT_TRUE(setClips(p.seq, ClipSetting::mode, playRepitch));
    step(addPins(p.seq, p.place(), {24000}));
    EXPECT_EQ(p.now()->mode, playStretch);
    EXPECT_NEAR(pins().list[0].share, 0.25, 0.001);
}

/// Frames that go take their time along, and what stays keeps its speed.
TEST(ClipPins, OutliveEditsOfTheFrames) {
    Pinned p;
    CAudioEvent before = *p.now(), after = before;
    after.end -= 24000;
    const double lasts = movePins(&after, &before, [](int frame) { // 60000 to 84000 go
        return int64_t(frame) - std::clamp(frame - 60000, 0, 24000);
    });
    EXPECT_NEAR(lasts, 0.25 + 0.375, 1e-9);
    EXPECT_EQ(after.pins.count, 1);
    EXPECT_EQ(after.pins.list[0].frame, 48000);
    EXPECT_NEAR(after.pins.list[0].share * lasts, 0.25, 1e-9);
}
