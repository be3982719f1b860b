#include "StripFixture.h"
#include "engine/ForgetHooks.h"
#include "engine/StripMeters.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"

/// A cable between two signals and the output, which go on beside each other.
class CableMuteTest : public testing::Test, protected StripFixture {
protected:
    static constexpr int fade = 440; ///< frames of 10 ms, as the host counts its milliseconds

    CableMuteTest() : StripFixture(1024), a(addSignal()), b(addSignal()) {
        a->left = a->right = [](long) { return 0.25f; };
        b->left = b->right = [](long at) { return at % 2 ? 0.5f : -0.5f; };
        host->listenVolume = 1.0f;
        cable = getAudioCable(out, a->output(), nullptr);
        run();
    }
    void mute(CObject* what, bool on) { host->values->set(muteOfCable(what), on ? 1.0 : 0.0); }
    /// What is left of the sound of `a` in the latest block: that of `b` is known exactly.
    float restAt(int frame) const {
        const float other = (b->at - 1024 + frame) % 2 ? 0.5f : -0.5f;
        return left[size_t(frame)] - other;
    }
    void next() {
        forget();
        run();
    }

    SignalComp *a, *b;
    CAudioCable* cable;
};

/// Its sound goes in a straight line of 10 ms and comes back so, what goes beside it keeps every
/// bit, and a step of the history brings it back.
TEST_F(CableMuteTest, FadesAndLeavesTheRestAlone) {
    const int steps = host->undoIndex;
    mute(cable, true);
    next();
    for (const int frame : {0, 110, 220, 330})
        EXPECT_NEAR(restAt(frame), 0.25f * float(fade - frame) / fade, 0.001f) << frame;
    for (int frame = fade + 1; frame < 1024; frame++) ASSERT_EQ(restAt(frame), 0.0f) << frame;
    next();
    EXPECT_EQ(restAt(0), 0.0f);
    EXPECT_EQ(host->undoIndex, steps + 1);
    host->undoClicked();
    run(); // at the end of which the step is carried out
    next();
    EXPECT_NEAR(restAt(220), 0.125f, 0.001f);
    EXPECT_EQ(restAt(1000), 0.25f);
}

/// Another cable elsewhere makes a new plan: what is muted stays silent, and comes back on time
/// with what is later.
TEST_F(CableMuteTest, OutlastsChangesOfTheGraph) {
    mute(cable, true);
    run(2);
    SignalComp* late = addSignal();
    late->left = late->right = [](long) { return 0.0f; };
    late->latency = 300;
    host->hostNotices.raise(HostNotice::delays);
    next();
    EXPECT_EQ(left[500] + left[501], 0.0f);
    mute(cable, false);
    next();
    EXPECT_NEAR(left[1000] + left[1001], 0.5f, 1e-6f);
}

/// Notes do not pass, and those that sound are ended.
TEST_F(CableMuteTest, OfNotesEndsThem) {
    connectMIDI(midiIn, midiOut);
    run();
    auto* notes = static_cast<CObject*>(midiOut->midiCables.first());
    mute(notes, true);
    next();
    EXPECT_FALSE(sent.empty()) << "all notes off";
    forget();
    midiIn->playNote(60, true);
    run();
    EXPECT_TRUE(sent.empty());
    mute(notes, false);
    midiIn->playNote(62, true);
    run();
    EXPECT_FALSE(sent.empty());
}

/// What is listened to is all that is heard, at full strength after 10 ms, until it is let go of or
/// freed.
TEST_F(CableMuteTest, ListeningPlaysOneThingAlone) {
    host->values->set(muteOf(b->output()), 1.0);
    run(4);
    out->listened.storeRelease(a->output());
    next();
    EXPECT_NEAR(left[1000], 0.25f, 1e-6f);
    host->values->set(faderOf(out->output()), {0.0, 1.0});
    run(4);
    next();
    EXPECT_EQ(left[500], 0.25f) << "whatever the strip of the output does";
    out->listened.storeRelease(b->output());
    run(2);
    next();
    EXPECT_EQ(left[500], 0.0f);
    out->listened.storeRelease(a->output());
    run(2);
    forgetObject(host, a);
    EXPECT_EQ(out->listened.load(), nullptr);
    next();
    EXPECT_EQ(left[500], 0.0f);
}

/// A strip measures what leaves it, for those who asked.
TEST_F(CableMuteTest, StripsMeasureOnRequest) {
    EXPECT_EQ(a->output()->measured(), nullptr);
    StripMeters& meters = a->output()->meters();
    float sample = 0;
    run();
    EXPECT_FALSE(meters.equalised.pop(sample));
    meters.samples = 1;
    meters.loudness.measure(true);
    host->values->set(faderOf(a->output()), {0.5, 1.0});
    run(20);
    ASSERT_TRUE(meters.equalised.pop(sample));
    EXPECT_EQ(sample, 0.25f) << "before the fader";
    EXPECT_TRUE(meters.loudness.follow());
    EXPECT_NEAR(meters.loudness.levels().truePeak, -12.0, 1.1) << "0.25, and what its step adds";
}
