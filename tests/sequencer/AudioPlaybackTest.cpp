#include "SongFixture.h"

#include "audiofiles/CElastiqueRender.h"
#include "effects/CEffect.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/ClipTimes.h"
#include "support/Rows.h"

#include <cmath>

namespace {

constexpr int rate = 44100;
constexpr double framesPerTick = rate / (120.0 * 16); // at 120 beats a minute: 22.96875

struct AudioFixture : SongFixture {
    CSongTrack* songTrack = track(trackAudio);

    AudioFixture() {
        enterSequencer();
        while (host.makeStretcher()) {
        }
    }
    CSample* sine(int frames, int sampleRate = rate) {
        return addSample(
            frames, [=](int i) { return 0.5 * std::sin(2 * M_PI * 440 * i / sampleRate); },
            sampleRate);
    }
    CAudioEvent* clip(CSample* s, int mode = playRepitch, int ticks = 0) {
        CAudioEvent* e = createAudioEvent();
        e->sample = s;
        e->end = s->frames - 1;
        e->mode = static_cast<unsigned char>(mode);
        e->ticks = ticks;
        return e;
    }
    CPart* place(int tick, CBaseEvent* e) {
        auto* clips = new CAudioPart;
        clips->multiclip = 1;
        return place(songTrack, tick, e, clips);
    }
    CPart* place(CSongTrack* to, int tick, CBaseEvent* e, CPart* part) {
        part->pos = tick;
        part->length = 40 * quarterTicks;
        part->addEvent(0, e);
        return to->addPart(part, nullptr);
    }
    /// What sounds from the start of the song on.
    std::vector<float>& play(int frames, int block = 1024) {
        host.start();
        device.forget();
        while (int(device.left.size()) < frames) device.run(1, block);
        return device.left;
    }
    AudioVoice& voice() { return songTrack->voices->voices[0]; }
    int voices() {
        return int(std::ranges::count_if(songTrack->voices->voices, &AudioVoice::active));
    }
};

/// Hz of what sounds in a stretch, by its rising zero crossings.
double pitchOf(const std::vector<float>& x, int from, int to) {
    double first = -1, last = -1;
    int count = 0;
    for (int i = from; i + 1 < to; i++) {
        const double a = double(x[size_t(i)]), b = double(x[size_t(i) + 1]);
        if (!(a < 0 && b >= 0)) continue;
        last = i + a / (a - b);
        if (first < 0) first = last;
        count++;
    }
    return count > 1 ? (count - 1) * rate / (last - first) : 0.0;
}

double cents(double a, double b) {
    return std::fabs(1200 * std::log2(a / b));
}

} // namespace

/// At its own speed a clip is heard frame by frame, from the frame of its tick on, however the
/// blocks fall; its last frame runs out.
TEST(AudioPlayback, AClipIsHeardFrameByFrame) {
    for (const auto& [block, tick] : {std::pair{1024, 961}, {64, 100}, {333, 0}}) {
        AudioFixture f;
        const auto value = [](int i) { return 0.3 + 0.0001 * (i % 1000); };
        f.place(tick, f.clip(f.addSample(3000, value)));
        const std::vector<float>& x = f.play(40000, block);
        const int begin = int(std::lround(tick * framesPerTick)), end = begin + 2999;
        for (int i = 0; i < begin; i++) ASSERT_EQ(x[size_t(i)], 0.0f) << i;
        for (int i = begin; i < end; i++)
            ASSERT_NEAR(x[size_t(i)], value(i - begin), 1e-4) << i << " of " << block;
        const double last = double(x[size_t(end - 1)]);
        for (int i : {1, 100, 4000})
            ASSERT_NEAR(x[size_t(end + i)], last * std::pow(0.999, i), 1e-4);
        EXPECT_EQ(x[size_t(end + 4096)], 0.0f);
        EXPECT_EQ(f.voices(), 0);
    }
}

/// Pitch and length of 440 Hz in 44100 frames, by mode. Half a second are 960 ticks. The last
/// source frame ends a voice; where it falls between two frames, either does.
TEST(AudioPlayback, TheModesKeepWhatTheyPromise) {
    constexpr int block = 1024;
    for (const auto& [mode, ticks, semitones, sampleRate, reverse, hz, frames] :
         Rows<int, int, int, int, int, double, double>{
             {playRepitch, 0, -5, 44100, 1, 440 * std::exp2(-5 / 12.0),
              44100 * std::exp2(5 / 12.0)},
             {playRepitch, 0, 0, 22050, 0, 440, 88200},
             {playResample, 960, 7, 44100, 0, 880, 22050}, // transposition has no part in it
             {playResample, 3840, 0, 44100, 1, 220, 88200},
             {playStretch, 1280, 0, 44100, 1, 440, 29400},
             {playStretch, 2880, -12, 48000, 0, 220, 66150}}) {
        SCOPED_TRACE(std::to_string(mode) + " " + std::to_string(ticks));
        AudioFixture f;
        CAudioEvent* e = f.clip(f.sine(44100, sampleRate), mode, ticks);
        e->semitones = semitones;
        e->reverse = static_cast<unsigned char>(reverse);
        f.place(0, e);
        f.play(block);
        int played = block;
        for (; f.voice().tail == 0 && f.voices() && played < 200000; played++) f.device.run(1, 1);
        // Ticks last as long as it takes from the first source frame to the last.
        const double speed = (mode == playRepitch ? 44100 : 44099) / frames;
        const int slack = mode == playStretch ? block : 0;
        EXPECT_GE(played, std::floor(44099 / speed) - slack);
        EXPECT_LE(played, std::ceil(44100 / speed - 1e-6) + slack);
        const int middle = int(frames / 2), reach = int(frames / 4);
        EXPECT_LT(cents(pitchOf(f.device.left, middle - reach, middle + reach), hz),
                  mode == playStretch ? 3 : 1);
    }
}

/// A voice that starts in its middle follows the tempo, in pitch when it is resampled, in speed
/// when stretched.
TEST(AudioPlayback, ARunningVoiceFollowsTheTempo) {
    for (int mode : {playResample, playStretch}) {
        AudioFixture f;
        f.place(0, f.clip(f.sine(2 * rate), mode, 2 * 1920));
        f.host.setPos(960);
        f.play(20480);
        f.host.setTempo(240);
        f.device.run(1);
        f.device.forget();
        f.device.run(12);
        EXPECT_LT(cents(pitchOf(f.device.left, 2048, 12288), mode == playResample ? 880 : 440), 5)
            << mode;
        EXPECT_NEAR(f.voice().pos, 22050 + 20480 + 13 * 1024 * 2, 2) << mode;
    }
}

/// A voice whose event is edited plays on with what it holds now; when it is gone as well, freed
/// with the history, as it was last.
TEST(AudioPlayback, ARunningVoiceOutlivesItsEvent) {
    AudioFixture f;
    CAudioEvent* e = f.clip(f.sine(200000));
    e->semitones = 3;
    CPart* part = f.place(0, e);
    f.play(1024);
    CPart* edited = part->copy(0);
    static_cast<CAudioEvent*>(edited->getEvents())->semitones = 9;
    f.step([&](CUndo* undo) { swapUndoPart(undo, part, edited); });
    EXPECT_EQ(f.voice().event, nullptr);
    f.device.run(1);
    EXPECT_NEAR(f.voice().speed, std::exp2(9 / 12.0), 1e-9);
    f.host.undoClear();
    f.device.run(1);
    f.host.stop();
    f.step([&](CUndo* undo) { swapUndoPart(undo, part, part->copy(0)); });
    f.host.undoClear();
    f.device.run(1);
    EXPECT_NEAR(f.voice().speed, std::exp2(9 / 12.0), 1e-9);
}

/// Whatever happens to the parts of a track that plays, a clip sounds once: it goes on, takes over
/// what changed, or is crossed over to its new form.
TEST(AudioPlayback, EditsDoNotDoubleWhatSounds) {
    struct Case {
        const char* name;
        void (*edit)(CAudioEvent* e);
        double level; ///< behind the edit
    };
    const auto ramp = [](int i) { return i < 150000 ? 0.25 : 0.5; };
    const Case cases[] = {
        {"a part comes", nullptr, 0.25},
        {"content that is the same", [](CAudioEvent*) {}, 0.25},
        {"another end", [](CAudioEvent* e) { e->end = 200000; }, 0.25},
        {"another pitch", [](CAudioEvent* e) { e->fine = 0.1f; }, 0.25},
        {"a fade far away", [](CAudioEvent* e) { e->fadeOutMs = 100; }, 0.25},
        {"another range", [](CAudioEvent* e) { e->start = 150000; }, 0.5},
        {"none at all", [](CAudioEvent* e) { e->start = e->end = 0; }, 0.0},
    };
    constexpr int cross = 221; // 5 ms
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        AudioFixture f;
        CPart* part = f.place(0, f.clip(f.addSample(400000, ramp)));
        const std::vector<float>& x = f.play(8192);
        f.step([&](CUndo* undo) {
            CPart* edited = part->copy(0);
            if (c.edit) {
                c.edit(static_cast<CAudioEvent*>(edited->getEvents()));
                return swapUndoPart(undo, part, edited);
            }
            edited->pos = 38400;
            f.songTrack->addPart(edited, undo);
        });
        const size_t at = x.size();
        f.device.run(3);
        ASSERT_NEAR(x[at - 1], 0.25, 1e-4);
        for (size_t i = at; i < at + cross; i++) {
            ASSERT_GE(x[i], std::min(0.25, c.level) - 1e-3) << i - at;
            ASSERT_LE(x[i], std::max(0.25, c.level) + 1e-3) << i - at;
            ASSERT_LE(std::fabs(x[i] - x[i - 1]), 0.25 / 200) << "no step, " << i - at;
        }
        for (size_t i = at + cross; i < x.size(); i++) ASSERT_NEAR(x[i], c.level, 1e-3) << i - at;
        EXPECT_EQ(f.voices(), c.level > 0.0);
        f.undo();
        f.device.run(8); // what a part leaves behind runs out
        for (size_t i = x.size() - 1024; i < x.size(); i++) ASSERT_NEAR(x[i], 0.25, 1e-3);
        EXPECT_EQ(f.voices(), 1);
    }
}

/// A clip that a loop's wrap cuts plays until there as if it went on: backward from its own end,
/// and without the fade that waits there.
TEST(AudioPlayback, AWrapDoesNotMoveTheEndOfAClip) {
    const auto value = [](int i) { return i / 100000.0; };
    for (bool reverse : {true, false}) {
        AudioFixture f;
        CAudioEvent* e = f.clip(f.addSample(100000, value));
        e->reverse = reverse;
        e->fadeOutMs = reverse ? 0.0f : 1000.0f;
        f.place(0, e);
        f.prog()->rightLocator = 960; // 22050 frames
        f.host.loop = 1;
        const std::vector<float>& x = f.play(23000);
        for (int i = 2; i < 22049; i++)
            ASSERT_NEAR(x[size_t(i)], value(reverse ? 99999 - i : i), 1e-3) << i << reverse;
    }
}

/// Both fades go by the square of a straight line, in steps of 32 frames.
TEST(AudioPlayback, FadesFollowTheSquareLaw) {
    AudioFixture f;
    CAudioEvent* e = f.clip(f.addSample(20000, [](int) { return 0.5; }));
    e->fadeInMs = 100; // 4410 frames
    e->fadeOutMs = 200;
    f.place(0, e);
    const std::vector<float>& x = f.play(20000);
    for (int i : {31, 500, 2205, 4400}) {
        const double low = std::pow(std::max(0, i - 32) / 4410.0, 2) / 2;
        EXPECT_GE(x[size_t(i)], low - 1e-4) << i;
        EXPECT_LE(x[size_t(i)], std::pow(i / 4410.0, 2) / 2 + 1e-4) << i;
    }
    EXPECT_NEAR(x[8000], 0.5, 1e-4);
    const int begin = 19999 - 8820;
    for (int i : {100, 4410, 8000})
        EXPECT_NEAR(x[size_t(begin + i)], 0.5 * std::pow(1 - i / 8820.0, 2), 0.005) << i;
}

/// A stretched voice that finds no stretcher is silent, and ends when it would have.
TEST(AudioPlayback, VoicesRunOutAndStretchersToo) {
    AudioFixture f;
    CSample* s = f.sine(rate);
    CPart* part = f.place(0, f.clip(s, playStretch, 960));
    for (int i = 1; i < 70; i++)
        part->addEvent(0, f.clip(s, i < 9 ? playStretch : playRepitch, 9600));
    f.play(2048);
    EXPECT_EQ(f.voices(), AudioVoices::count);
    const auto& voices = f.songTrack->voices->voices;
    for (int i = 0; i < 9; i++) EXPECT_EQ(voices[i].stretcher != nullptr, i < 8) << i;
    f.host.stop();
    f.device.run(8);
    EXPECT_EQ(f.voices(), 0);
    for (int i = 0; i < 9; i++) EXPECT_EQ(voices[i].stretcher, nullptr);

    for (auto* stretcher : f.host.stretchers) EXPECT_TRUE(stretcher->start()) << "free again";
    part->setEvents(f.clip(s, playStretch, 960));
    f.host.setPos(0);
    EXPECT_EQ(std::ranges::count(f.play(20480), 0.0f), 20480);
    EXPECT_EQ(f.voices(), 1);
    f.play(8192);
    EXPECT_EQ(f.voices(), 0);
}

/// A clip is joined in its middle by a jump, by a loop's wrap, at the frame of it, and by unmuting.
TEST(AudioPlayback, AClipIsJoinedInItsMiddle) {
    AudioFixture f;
    // 960 ticks are 22050 frames: frame 22050 holds what plays at the second quarter
    const auto value = [](int i) { return i / 100000.0; };
    f.place(0, f.clip(f.addSample(100000, value)));
    f.host.setPos(960);
    const std::vector<float>& x = f.play(2048);
    EXPECT_NEAR(x[0], value(22050), 1e-3);
    f.prog()->leftLocator = 960;
    f.prog()->rightLocator = 960 + 240; // 5512.5 frames
    f.prog()->loop = 1;
    f.device.run(6);
    const int wrap = 5512; // the former voice runs out under the new one
    EXPECT_NEAR(x[size_t(wrap) - 2], value(22050 + wrap - 2), 1e-3);
    EXPECT_NEAR(x[size_t(wrap) + 2] - x[size_t(wrap) - 2], value(22050), 2e-3);
    for (bool muted : {true, false}) {
        f.songTrack->setMuted(muted);
        f.device.run(muted ? 6 : 1);
        EXPECT_EQ(f.voices(), !muted);
    }
}

namespace {

/// Sounds of the kit: kick, snare, clap, closed hat, open hat, the hats in one choke group.
struct DrumFixture : AudioFixture {
    CSongTrack* drums = track(trackDrum);

    DrumFixture() { seq->addStandardKit(drums->track); }
    CDrumEvent* hit(int sound) {
        CDrumEvent* e = createDrumEvent();
        e->sound = sound;
        return e;
    }
    CPart* beat(int tick, int sound) { return place(drums, tick, hit(sound), new CDrumPart); }
    int sounding(int sound) {
        return int(std::ranges::count_if(drums->voices->voices, [&](const AudioVoice& v) {
            return v.active && v.sound == drums->track->drumSound(sound);
        }));
    }
};

} // namespace

TEST(AudioPlayback, DrumsPlayChokeMuteAndStandAlone) {
    DrumFixture f;
    ASSERT_EQ(f.drums->track->drumLayer()->sounds.getCount(), 5);
    CPart* part = f.beat(480, 4);
    for (const auto& [tick, sound] : {std::pair{480, 3}, {480, 0}, {960, 99}}) // 99: none
        part->addEvent(tick, f.hit(sound));
    const std::vector<float> x = f.play(11025 + 2048);
    const auto first = std::ranges::find_if(x, [](float v) { return v != 0.0f; });
    EXPECT_NEAR(double(first - x.begin()), 11025, 3) << "its frame, but for zeros in front";
    EXPECT_EQ(f.sounding(4), 1);
    f.device.run(12);
    EXPECT_EQ(f.sounding(4), 0) << "choked";
    EXPECT_EQ(f.sounding(3) + f.sounding(0), 2);
    f.host.stop();
    f.device.run(2);
    EXPECT_EQ(f.sounding(0), 0) << "a stop ends drums too";
    f.seq->selectTrack(f.drums, true);
    for (int key : {37, 96}) { // the latter is beyond the kit
        f.device.send(asData(midiNoteOn, key, 127));
        f.device.run(1);
        EXPECT_EQ(f.sounding(1), 1) << "keys from 36 on play the kit";
    }
    CDrumSound* kick = f.drums->track->drumSound(0);
    for (bool alone : {false, true}) {
        kick->mute = !alone;
        f.drums->track->drumSound(3)->solo = alone;
        f.host.setPos(0);
        f.play(23000);
        EXPECT_EQ(f.sounding(0), 0);
        f.host.stop();
        f.device.run(4);
    }
}

/// A hit ends the one before it in its choke group where it begins, and not where its block does.
TEST(AudioPlayback, HitsChokeAtTheirFrame) {
    const auto played = [](int block) {
        DrumFixture f;
        CPart* part = f.beat(0, 4);
        for (const auto& [tick, sound] : {std::pair{301, 3}, {310, 4}, {760, 4}})
            part->addEvent(tick, f.hit(sound));
        return f.play(20 * 1024, block);
    };
    EXPECT_EQ(played(64), played(1024));
}

/// What a drum sends to a bus goes by the square of the send and by the track's fader.
TEST(AudioPlayback, DrumsFeedTheBuses) {
    DrumFixture f;
    f.host.addSendClicked();
    f.host.settle();
    f.drums->track->output()->mute = 1; // the bus alone is heard
    f.device.run(1);                    // its ramp
    f.beat(0, 0);
    const auto peak = [&](float send, float fader) {
        f.drums->track->drumSound(0)->output->sendLevels[0]->level = send;
        f.drums->track->output()->vol = fader;
        f.host.setPos(0);
        const float most = *std::ranges::max_element(f.play(8192));
        f.host.stop();
        f.device.run(10);
        return most;
    };
    const float whole = peak(0.5f, 1.0f);
    EXPECT_GT(whole, 0.1f);
    EXPECT_NEAR(peak(0.25f, 0.5f), whole / 8, 1e-4);
}

/// The strips of a track's drums run once a block, however many programs the song has.
TEST(AudioPlayback, DrumStripsRunOncePerBlock) {
    std::vector<float> heard[2];
    for (bool second : {false, true}) {
        DrumFixture f;
        if (second) {
            const GraphHold hold(&f.host);
            f.seq->progs.add(f.seq->createProgram());
        }
        auto* rack = new CEffect(&f.host);
        rack->init();
        rack->createBuffers(f.host.frames);
        rack->addProg(fxDelay);
        f.drums->track->drumSound(0)->output->inserts.add(rack);
        f.beat(0, 0);
        heard[second] = f.play(60000);
    }
    EXPECT_EQ(heard[0], heard[1]);
}

/// A drum that is deleted takes its events along; those of later sounds follow them.
TEST(AudioPlayback, ADeletedDrumTakesItsEventsAlong) {
    DrumFixture f;
    CPart* part = f.beat(0, 1);
    for (int i = 0; i < 5; i++) part->addEvent(100 * (i + 1), f.hit(i));
    const std::string before = dump(f.seq);
    CDrumSound* snare = f.drums->track->drumSound(1);
    f.host.start();
    f.device.run(1);
    f.step([&](CUndo* undo) { f.seq->deleteDrum(snare, undo); });
    f.host.settle();
    Ticks left;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next)
        left.emplace_back(e->delta, static_cast<CDrumEvent*>(e)->sound);
    EXPECT_EQ(left, (Ticks{{100, 0}, {200, 1}, {100, 2}, {100, 3}}));
    f.undo();
    EXPECT_EQ(dump(f.seq), before);
    EXPECT_EQ(f.drums->track->drumSound(1), snare);
    f.redo();
    f.device.run(4);
    f.host.undoClear(); // frees the sound, which may still play
    f.device.run(4);
    EXPECT_EQ(f.drums->track->drumLayer()->sounds.getCount(), 4);
}

/// At 120 beats a minute a second is 1920 ticks; the ranges hold 44100 frames.
TEST(AudioPlayback, TellsWhichFrameStandsWhere) {
    AudioFixture f;
    CAudioEvent* own = f.clip(f.sine(50000));
    own->start = 1000;
    own->end = 45099;
    CPart* part = f.place(0, own);
    for (bool reverse : {false, true}) {
        int from = 0, to = 0;
        own->reverse = reverse;
        ASSERT_TRUE(getAudioSelection(f.seq, part, 960, 480, from, to));
        EXPECT_EQ(from, reverse ? 46099 - 23050 : 1000 + 11025);
        EXPECT_EQ(to, reverse ? 46099 - 12025 : 1000 + 22050);
    }
    EXPECT_EQ(posAsFrames3(own, 960, 1920, 60), 1000 + 44100);
    own->semitones = 12;
    EXPECT_EQ(sampleAsTicks(&f.host, own), 960);
    own->mode = playStretch;
    EXPECT_EQ(posAsFrames3(own, 960, 3840, 120), 1000 + 11025);
}
