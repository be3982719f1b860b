#include "SongFixture.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "engine/CGroupCh.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSynthProg.h"
#include "sequencer/AudioVoices.h"
#include "sequencer/ClipTimes.h"
#include "support/RtTrap.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>

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
    /// A sample in the pool, 16 bits, of `value(frame)`.
    CSample* sample(int frames, const std::function<double(int)>& value, int sampleRate = rate) {
        auto* s = new CSample;
        s->setFormat(sampleRate, 16, 1);
        auto* bytes = static_cast<short*>(std::malloc(size_t(frames) * 2));
        for (int i = 0; i < frames; i++) bytes[i] = short(std::lround(value(i) * 32767));
        s->takeData(reinterpret_cast<unsigned char*>(bytes), frames);
        const GraphHold hold(&host);
        host.samples.add(s);
        return s;
    }
    CSample* sine(int frames, double hz, int sampleRate = rate) {
        return sample(
            frames, [=](int i) { return 0.5 * std::sin(2 * M_PI * hz * i / sampleRate); },
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
    CPart* place(CSongTrack* to, int tick, CBaseEvent* e, int length = 40 * quarterTicks) {
        CPart* part =
            to->track->kind == trackDrum ? static_cast<CPart*>(new CDrumPart) : new CAudioPart;
        if (part->type == partAudio) static_cast<CAudioPart*>(part)->multiclip = 1;
        part->pos = tick;
        part->length = length;
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
    int voices() {
        int sounding = 0;
        for (const AudioVoice& v : songTrack->voices->voices) sounding += v.active;
        return sounding;
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
    for (int block : {1024, 64, 333}) {
        for (int tick : {0, 100, 961}) {
            AudioFixture f;
            const auto value = [](int i) { return 0.3 + 0.0001 * (i % 1000); };
            CSample* s = f.sample(3000, value);
            f.place(f.songTrack, tick, f.clip(s));
            const std::vector<float>& x = f.play(40000, block);
            const int begin = int(std::lround(tick * framesPerTick));
            for (int i = 0; i < begin; i++) ASSERT_EQ(x[size_t(i)], 0.0f) << i;
            for (int i = 0; i < 2999; i++)
                ASSERT_NEAR(x[size_t(begin + i)], value(i), 2e-4)
                    << block << " " << tick << " " << i;
            const float last = x[size_t(begin + 2998)];
            for (int i : {1, 100, 4000})
                ASSERT_NEAR(x[size_t(begin + 2999 + i)], double(last) * std::pow(0.999, i), 1e-4);
            EXPECT_EQ(x[size_t(begin + 2999 + 4096)], 0.0f);
            EXPECT_EQ(f.voices(), 0);
        }
    }
}

/// Pitch and length of 440 Hz in 44100 frames, by mode. Half a second are 960 ticks. The last
/// source frame ends a voice; where it falls between two frames, either does.
TEST(AudioPlayback, TheModesKeepWhatTheyPromise) {
    struct Case {
        int mode, ticks, semitones, sampleRate, reverse;
        double hz, frames;
    };
    const Case cases[] = {
        {playRepitch, 0, 0, 44100, 0, 440, 44100},
        {playRepitch, 0, 12, 44100, 0, 880, 22050},
        {playRepitch, 0, -5, 44100, 1, 440 * std::exp2(-5 / 12.0), 44100 * std::exp2(5 / 12.0)},
        {playRepitch, 0, 0, 22050, 0, 440, 88200},
        {playResample, 960, 7, 44100, 0, 880, 22050}, // transposition has no part in it
        {playResample, 3840, 0, 44100, 1, 220, 88200},
        {playStretch, 3840, 0, 44100, 0, 440, 88200},
        {playStretch, 1280, 0, 44100, 1, 440, 29400},
        {playStretch, 1920, 7, 44100, 1, 440 * std::exp2(7 / 12.0), 44100},
        {playStretch, 2880, -12, 48000, 0, 220, 66150}};
    constexpr int block = 1024;
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.mode) + " " + std::to_string(c.ticks));
        AudioFixture f;
        CAudioEvent* e = f.clip(f.sine(44100, 440, c.sampleRate), c.mode, c.ticks);
        e->semitones = c.semitones;
        e->reverse = static_cast<unsigned char>(c.reverse);
        f.place(f.songTrack, 0, e);
        f.play(block);
        int played = block; // until the voice runs out
        for (; f.songTrack->voices->voices[0].tail == 0 && f.voices() && played < 200000; played++)
            f.device.run(1, 1);
        // Ticks last as long as it takes from the first source frame to the last.
        const double speed = (c.mode == playRepitch ? 44100 : 44099) / c.frames;
        const int slack = c.mode == playStretch ? block : 0;
        EXPECT_GE(played, std::floor(44099 / speed) - slack);
        EXPECT_LE(played, std::ceil(44100 / speed - 1e-6) + slack);
        const int middle = int(c.frames / 2), reach = int(c.frames / 4);
        EXPECT_LT(cents(pitchOf(f.device.left, middle - reach, middle + reach), c.hz),
                  c.mode == playStretch ? 3 : 1);
    }
}

/// A running voice follows the tempo, in pitch when it is resampled, in speed when stretched.
TEST(AudioPlayback, ARunningVoiceFollowsTheTempo) {
    for (int mode : {playResample, playStretch}) {
        AudioFixture f;
        f.place(f.songTrack, 0, f.clip(f.sine(2 * rate, 440), mode, 2 * 1920));
        f.play(20480);
        f.host.setTempo(240);
        f.device.run(1);
        f.device.forget();
        f.device.run(12);
        EXPECT_LT(cents(pitchOf(f.device.left, 2048, 12288), mode == playResample ? 880 : 440), 5)
            << mode;
        const AudioVoice& v = f.songTrack->voices->voices[0];
        EXPECT_NEAR(v.pos, 20480 + 13 * 1024 * 2, 2) << mode;
    }
}

/// Both fades go by the square of a straight line, in steps of 32 frames.
TEST(AudioPlayback, FadesFollowTheSquareLaw) {
    AudioFixture f;
    CAudioEvent* e = f.clip(f.sample(20000, [](int) { return 0.5; }));
    e->fadeInMs = 100; // 4410 frames
    e->fadeOutMs = 200;
    f.place(f.songTrack, 0, e);
    const std::vector<float>& x = f.play(20000);
    for (int i : {31, 500, 2205, 4400}) {
        const double low = std::pow((i - 32) / 4410.0, 2) / 2, high = std::pow(i / 4410.0, 2) / 2;
        EXPECT_TRUE(double(x[size_t(i)]) >= (i < 32 ? 0 : low) - 1e-4 &&
                    double(x[size_t(i)]) <= high + 1e-4)
            << i;
    }
    EXPECT_NEAR(x[8000], 0.5, 1e-4);
    const int begin = 19999 - 8820;
    for (int i : {100, 4410, 8000})
        EXPECT_NEAR(x[size_t(begin + i)], 0.5 * std::pow(1 - i / 8820.0, 2), 0.005) << i;
}

TEST(AudioPlayback, VoicesRunOutAndStretchersToo) {
    AudioFixture f;
    CSample* s = f.sine(rate, 440);
    auto* part = new CAudioPart;
    part->multiclip = 1;
    part->length = 1 << 20;
    for (int i = 0; i < 70; i++)
        part->addEvent(0, f.clip(s, i < 9 ? playStretch : playRepitch, 9600));
    f.songTrack->addPart(part, nullptr);
    f.play(2048);
    EXPECT_EQ(f.voices(), AudioVoices::count);
    const auto& voices = f.songTrack->voices->voices;
    for (int i = 0; i < 9; i++) EXPECT_EQ(voices[i].stretcher != nullptr, i < 8) << i;
    f.host.stop();
    f.device.run(8);
    EXPECT_EQ(f.voices(), 0);
    for (int i = 0; i < 9; i++) EXPECT_EQ(voices[i].stretcher, nullptr);
}

/// A stretched voice that finds no stretcher is silent, and ends when it would have.
TEST(AudioPlayback, AVoiceWithoutStretcherIsSilent) {
    AudioFixture f;
    for (auto* stretcher : each<CElastiqueRender>(f.host.stretchers)) stretcher->start();
    f.place(f.songTrack, 0, f.clip(f.sine(rate, 440), playStretch, 960));
    const std::vector<float>& x = f.play(20480);
    EXPECT_EQ(f.voices(), 1);
    EXPECT_EQ(std::ranges::count(x, 0.0f), long(x.size()));
    f.play(8192);
    EXPECT_EQ(f.voices(), 0);
}

/// A clip is joined in its middle by a jump, by a loop's wrap, at the frame of it, and by unmuting.
TEST(AudioPlayback, AClipIsJoinedInItsMiddle) {
    AudioFixture f;
    // 960 ticks are 22050 frames: frame 22050 holds what plays at the second quarter
    const auto value = [](int i) { return i / 100000.0; };
    f.place(f.songTrack, 0, f.clip(f.sample(100000, value)));
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
    f.songTrack->setMuted(true);
    f.device.run(6);
    EXPECT_EQ(f.voices(), 0);
    f.songTrack->setMuted(false);
    f.device.run(1);
    EXPECT_EQ(f.voices(), 1);
}

/// From disk a clip sounds as from memory, when its part is edited while it plays too; nothing of
/// that takes memory or a lock on the audio thread.
TEST(AudioPlayback, StreamsAsFromMemory) {
    std::vector<float> heard[2];
    std::string name = "/tmp/streamXXXXXX";
    const std::filesystem::path folder = mkdtemp(name.data());
    const CStr file((folder / "s.wav").c_str());
    for (int streamed : {0, 1}) {
        AudioFixture f;
        CSample* s = f.sine(200000, 440);
        if (streamed) {
            CSample out;
            out.setFormat(rate, 16, 1);
            out.create(file);
            out.writeHeader();
            out.writeBytes(s->frames, s->data);
            out.writeHeader();
            out.finalize();
            s = new CSample;
            s->streamed = 1;
            ASSERT_TRUE(s->open(file));
            const GraphHold hold(&f.host);
            f.host.samples.add(s);
        }
        CAudioEvent* e = f.clip(s);
        e->semitones = 3;
        CPart* part = f.place(f.songTrack, 0, e);
        f.host.start();
        f.device.forget();
        f.device.run(40);
        CPart* edited = part->copy(0);
        static_cast<CAudioEvent*>(edited->getEvents())->semitones = 9;
        f.step([&](CUndo* undo) { swapUndoPart(undo, part, edited); });
        f.host.undoClear();
        f.device.run(40);
        heard[streamed] = f.device.left;
    }
    for (size_t i = 0; i < heard[0].size(); i++) ASSERT_NEAR(heard[0][i], heard[1][i], 1e-4) << i;
    std::filesystem::remove_all(folder);
}

TEST(AudioPlayback, StartsVoicesWithoutMemoryOrLocks) {
    AudioFixture f;
    CSample* s = f.sine(rate, 440);
    for (int i = 0; i < 12; i++) f.place(f.songTrack, i * 40, f.clip(s, i % 3, 960));
    CSongTrack* drums = f.track(trackDrum);
    f.seq->addStandardKit(drums->track);
    CDrumEvent* hit = createDrumEvent();
    f.place(drums, 20, hit);
    f.play(1024);
    rtReset();
    f.device.run(60);
    EXPECT_EQ(rtViolations(), 0);
}

namespace {

struct DrumFixture : AudioFixture {
    CSongTrack* drums = track(trackDrum);

    DrumFixture() { seq->addStandardKit(drums->track); }
    CDrumEvent* hit(int sound, float velocity = 1.0f) {
        CDrumEvent* e = createDrumEvent();
        e->sound = sound;
        e->velocity = velocity;
        return e;
    }
    int sounding(int sound) {
        int count = 0;
        for (const AudioVoice& v : drums->voices->voices)
            count += v.active && v.sound == drums->track->drumSound(sound);
        return count;
    }
};

} // namespace

/// Sounds of the kit: kick, snare, clap, closed hat, open hat, the hats in one choke group.
TEST(AudioPlayback, DrumsPlayChokeMuteAndStandAlone) {
    DrumFixture f;
    ASSERT_EQ(f.drums->track->drumLayer()->sounds.getCount(), 5);
    EXPECT_EQ(f.drums->track->openHeight, drumOpenHeight + 5 * 20);
    CPart* part = f.place(f.drums, 480, f.hit(4));
    part->addEvent(480, f.hit(3));
    part->addEvent(480, f.hit(0));
    part->addEvent(960, f.hit(99)); // none of the kit
    const std::vector<float> x = f.play(11025 + 2048);
    EXPECT_NEAR(
        double(std::find_if(x.begin(), x.end(), [](float v) { return v != 0.0f; }) - x.begin()),
        11025, 3)
        << "at its frame, but for the zeros it begins with";
    EXPECT_EQ(f.sounding(4), 1);
    f.device.run(12);
    EXPECT_EQ(f.sounding(4), 0) << "choked";
    EXPECT_EQ(f.sounding(3) + f.sounding(0), 2);
    f.host.stop();
    f.device.run(2);
    EXPECT_EQ(f.sounding(0), 0) << "a stop ends drums too";
    for (bool alone : {false, true}) {
        CDrumSound* kick = f.drums->track->drumSound(0);
        (alone ? f.drums->track->drumSound(3)->solo : kick->mute) = 1;
        f.host.setPos(0);
        f.play(40000);
        EXPECT_EQ(f.sounding(0), 0);
        kick->mute = 0;
        f.host.stop();
        f.device.run(4);
    }
}

/// What a drum sends to a bus goes by the square of the send and by the track's fader.
TEST(AudioPlayback, DrumsFeedTheBuses) {
    DrumFixture f;
    auto* bus = new CGroupCh(&f.host);
    bus->init();
    bus->createBuffers(f.host.frames);
    {
        const GraphHold hold(&f.host);
        f.host.sends.add(bus);
    }
    f.device.connect(bus);
    f.drums->track->output()->mute = 1; // the bus alone is heard
    f.device.run(1);                    // its ramp
    f.place(f.drums, 0, f.hit(0));
    float peaks[3];
    for (int k = 0; k < 3; k++) {
        f.drums->track->drumSound(0)->output->sendLevels[0]->level = k == 0 ? 0.5f : 0.25f;
        f.drums->track->output()->vol = k == 2 ? 0.5f : 1.0f;
        f.host.setPos(0);
        const std::vector<float>& x = f.play(8192);
        peaks[k] = *std::max_element(x.begin(), x.end());
        f.host.stop();
        f.device.run(10);
    }
    EXPECT_GT(peaks[0], 0.1f);
    EXPECT_NEAR(peaks[1], peaks[0] / 4, 1e-4);
    EXPECT_NEAR(peaks[2], peaks[0] / 8, 1e-4);
}

/// Keys from 36 on play the kit of a selected track.
TEST(AudioPlayback, KeysPlayDrums) {
    DrumFixture f;
    f.seq->selectTrack(f.drums, true);
    f.device.send(0x7f2590); // key 37
    f.device.run(1);
    EXPECT_EQ(f.sounding(1), 1);
    f.device.send(0x7f6090); // beyond the kit
    f.device.run(1);
    EXPECT_EQ(f.sounding(1), 1);
}

/// A drum that is deleted takes its events along; those of later sounds follow them.
TEST(AudioPlayback, ADeletedDrumTakesItsEventsAlong) {
    DrumFixture f;
    CPart* part = f.place(f.drums, 0, f.hit(1));
    for (int i = 0; i < 5; i++) part->addEvent(100 * (i + 1), f.hit(i));
    const std::string before = dump(f.seq);
    CDrumSound* snare = f.drums->track->drumSound(1);
    f.host.start();
    f.device.run(1);
    CUndo* undo = f.host.undoStart("Delete", f.seq, undoSongChanged);
    f.seq->deleteDrum(snare, undo);
    f.host.undoEnd(undo, true);
    f.host.settle();
    std::vector<int> sounds;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next)
        sounds.push_back(static_cast<CDrumEvent*>(e)->sound);
    EXPECT_EQ(sounds, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(f.drums->track->openHeight, drumOpenHeight + 4 * 20);
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
    CAudioEvent* own = f.clip(f.sine(50000, 440));
    own->start = 1000;
    own->end = 45099;
    CPart* part = f.place(f.songTrack, 0, own);
    EXPECT_EQ(sampleAsTicks(&f.host, own), 1920);
    EXPECT_EQ(sampleAsTicks2(f.seq, own, 0), 1920);
    EXPECT_EQ(posAsFrames3(own, 960, 1920, 120), 1000 + 22050);
    EXPECT_EQ(posAsFrames3(own, 960, 1920, 60), 1000 + 44100);
    int from = 0, to = 0;
    ASSERT_TRUE(getAudioSelection(f.seq, part, 960, 480, from, to));
    EXPECT_EQ(std::make_pair(from, to), std::make_pair(1000 + 11025, 1000 + 22050));
    own->reverse = 1;
    ASSERT_TRUE(getAudioSelection(f.seq, part, 480, 960, from, to));
    EXPECT_EQ(std::make_pair(from, to), std::make_pair(46099 - 23050, 46099 - 12025));
    own->semitones = 12;
    EXPECT_EQ(sampleAsTicks(&f.host, own), 960);
    own->mode = playStretch;
    own->ticks = 3840;
    EXPECT_EQ(sampleAsTicks2(f.seq, own, 0), 3840);
    EXPECT_EQ(posAsFrames3(own, 960, 3840, 120), 1000 + 11025);
}

/// Of a part with several clips only those that are selected change, of others all; one step.
TEST(AudioPlayback, SettingsReachTheChosenClips) {
    AudioFixture f;
    CSample* s = f.sine(1000, 440);
    CPart* several = f.place(f.songTrack, 0, f.clip(s));
    CAudioEvent* chosen = f.clip(s);
    chosen->flags = eventSelected;
    several->addEvent(100, chosen);
    CPart* single = f.place(f.songTrack, 9600, f.clip(s));
    static_cast<CAudioPart*>(single)->multiclip = 0;
    const auto change = [&] {
        f.step([&](CUndo* undo) {
            EXPECT_EQ(setClips(f.seq, ClipSetting::semitones, 500, undo), single->selected());
        });
    };
    const auto tuning = [](CPart* part) {
        std::vector<int> list;
        for (CBaseEvent* e = part->getEvents(); e; e = e->next)
            list.push_back(static_cast<CAudioEvent*>(e)->semitones);
        return list;
    };
    f.seq->selectTrack(f.songTrack, true);
    change();
    EXPECT_EQ(tuning(several), (std::vector<int>{0, 0}));
    several->setSelected(true);
    single->setSelected(true);
    change();
    EXPECT_EQ(tuning(several), (std::vector<int>{0, 120}));
    EXPECT_EQ(tuning(single), (std::vector<int>{120}));
    f.undo();
    EXPECT_EQ(tuning(several), (std::vector<int>{0, 0}));
}
