#include "sequencer/edit/ClipEdits.h"
#include "EditsFixture.h"
#include "base/Numbers.h"
#include "sequencer/play/AudioVoices.h"

namespace {

/// From 960 on half of the sample, 1920 ticks: its second and third quarter.
struct Clips : Edits {
    CPart* part;

    explicit Clips(int mode = playRepitch, bool reverse = false) {
        deleteAll<CPart>(prog()->tempos);
        CAudioEvent* event = clip(sample, 24000, 71999);
        event->mode = (unsigned char)mode;
        event->reverse = reverse;
        event->ticks = 1920;
        part = addAudio(960, {{0, event}});
        part->length = 1920;
        select(audio, "a");
    }
    CAudioEvent* now() {
        host.settle();
        return static_cast<CAudioEvent*>(part->getEvents());
    }
};

struct Setting {
    const char* title;
    ClipSetting setting;
    float value, found;
    bool relative;
};

const Setting settings[] = {
    {"Pitch", ClipSetting::semitones, 500.0f, 120.0f, false},
    {"Pitch", ClipSetting::semitones, -12.0f, -12.0f, true},
    {"Pitch", ClipSetting::fine, 0.25f, 0.25f, false},
    {"Fade In", ClipSetting::fadeIn, 30.0f, 30.0f, true},
    {"Fade Out", ClipSetting::fadeOut, -30.0f, 0.0f, true},
    {"Fade Out", ClipSetting::fadeOut, 20.0f, 20.0f, false},
    {"Gain", ClipSetting::gain, 0.5f, 0.5f, false},
    {"Gain", ClipSetting::gain, 9.0f, 4.0f, false},
    {"Pan", ClipSetting::pan, -1.0f, -1.0f, false},
    {"Play mode", ClipSetting::mode, 2.0f, 2.0f, false},
};

float valueOf(const CAudioEvent* e, ClipSetting setting) {
    const float values[] = {
        float(e->semitones), e->fine, e->fadeInMs, e->fadeOutMs, e->gain, e->pan, float(e->mode)};
    return values[int(setting)];
}

} // namespace

/// Each is a step that leads back and forth, or none where nothing changes.
TEST(ClipEdits, Set) {
    for (const Setting& s : settings) {
        SCOPED_TRACE(testing::Message() << s.title << ' ' << s.value);
        Clips e;
        const std::string start = e.bytes();
        const float before = valueOf(e.now(), s.setting);
        const auto run = s.relative ? changeClips : setClips;
        EXPECT_TRUE(run(e.seq, s.setting, s.value));
        EXPECT_EQ(valueOf(e.now(), s.setting), s.found);
        EXPECT_EQ(e.host.undoList.empty(), before == s.found);
        if (before == s.found) continue;
        EXPECT_STREQ(e.host.undoText().asChar(), s.title);
        const std::string edited = e.bytes();
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
        e.redo();
        EXPECT_TRUE(e.bytes() == edited);
    }
}

/// Of a part with several clips only those that are selected change, of others all, on no locked
/// track any.
TEST(ClipEdits, ReachTheChosenClips) {
    Clips e;
    CAudioEvent* chosen = clip(e.sample);
    chosen->flags = eventSelected;
    CPart* several = e.addAudio(9600, {{0, clip(e.sample)}, {960, chosen}});
    e.seq->unselectParts();
    EXPECT_FALSE(setClips(e.seq, ClipSetting::semitones, 5)) << "no part is selected";
    e.select(e.audio, "ab");
    e.audio->track->locked = 1;
    EXPECT_FALSE(setClips(e.seq, ClipSetting::semitones, 5));
    e.audio->track->locked = 0;
    EXPECT_TRUE(setClips(e.seq, ClipSetting::semitones, 5));
    EXPECT_EQ(e.now()->semitones, 5);
    const auto tuningOf = [](CBaseEvent* event) {
        return static_cast<CAudioEvent*>(event)->semitones;
    };
    EXPECT_EQ(tuningOf(several->getEvents()), 0);
    EXPECT_EQ(tuningOf(several->getEvents()->next), 5);
    reverseClips(e.seq);
    EXPECT_TRUE(e.now()->reverse);
    reverseClips(e.seq);
    EXPECT_FALSE(e.now()->reverse);
}

/// A clip that comes to follow the tempo lasts as long as before.
TEST(ClipEdits, KeepTheLengthInAnotherMode) {
    Clips e;
    EXPECT_TRUE(setClips(e.seq, ClipSetting::semitones, 12));
    EXPECT_EQ((e.now(), e.seq->getTicks(e.part)), 960);
    EXPECT_TRUE(setClips(e.seq, ClipSetting::mode, playStretch));
    EXPECT_EQ(e.now()->ticks, 960);
    EXPECT_EQ(e.seq->getTicks(e.part), 960);
}

/// The part stays, and other frames are under it, as far as there are any.
TEST(ClipEdits, Slip) {
    struct Case {
        int mode;
        bool reverse;
        int ticks, start;
    };
    for (const Case& c : {Case{playRepitch, false, 480, 12000},
                          {playRepitch, false, 5000, 0},
                          {playRepitch, false, -5000, 48000},
                          {playRepitch, true, 480, 36000},
                          {playRepitch, true, -5000, 0},
                          {playStretch, false, 480, 12000}}) {
        SCOPED_TRACE(c.ticks);
        Clips e(c.mode, c.reverse);
        const std::string start = e.bytes();
        slipParts(e.seq, c.ticks);
        EXPECT_EQ(e.now()->start, c.start);
        EXPECT_EQ(e.now()->end - e.now()->start, 47999);
        EXPECT_EQ(std::tuple(int(e.part->pos), e.seq->getTicks(e.part)), std::tuple(960, 1920));
        e.undo();
        EXPECT_TRUE(e.bytes() == start);
    }
    Edits e;
    e.select(e.midi, "ac");
    slipParts(e.seq, -100);
    e.host.settle();
    EXPECT_EQ(e.show(e.midi), "| 0:3840 -100=60/240 1810=62/960 ~-100 ~1820 " + ghost(3840) +
                                  "| 7680:1920 ghost 0=64/240 ");
}

/// Ghosts follow in a row; too many are refused whole.
TEST(ClipEdits, Loop) {
    Edits e;
    const std::string start = e.bytes(), shown = "60/240 1910=62/960 ~0 ~1920 ";
    EXPECT_EQ(loopPart(e.seq, e.part(e.midi, 0), 1 << 20), "The song would become too long");
    EXPECT_EQ(loopPart(e.seq, e.part(e.midi, 0), 0), "");
    EXPECT_TRUE(e.host.undoList.empty());
    EXPECT_EQ(loopPart(e.seq, e.part(e.midi, 0), 2), "");
    e.host.settle();
    EXPECT_EQ(e.show(e.midi), "| 0:3840 ghost 0=" + shown + "| 3840:3840 ghost 0=" + shown +
                                  ghost(3840) + "| 7680:3840 ghost 0=" + shown + ghost(7680));
    const std::string edited = e.bytes();
    e.undo();
    EXPECT_TRUE(e.bytes() == start);
    e.redo();
    EXPECT_TRUE(e.bytes() == edited);
}
