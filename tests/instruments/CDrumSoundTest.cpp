#include "SoundFixture.h"

#include "base/CStream.h"
#include "common/fx/CPhaser.h"
#include "engine/COutputChannel.h"
#include "instruments/CDrumSound.h"
#include "instruments/DrumKit.h"
#include "support/Rows.h"

namespace {

/// A drum layer with the standard kit, and no sampler around it.
struct DrumBench : SoundBench {
    CSynthProg drums{host.host, nullptr};
    CLayer* target = drums.addLayer();
    ListOf<CSampleClip> drumClips;

    DrumBench() {
        DrumKit k = kit();
        k.addStandard();
        EXPECT_EQ(k.height(), 5 * 20);
        k.take(drumClips, nullptr);
    }
    ~DrumBench() { deleteAll(drumClips); }
    DrumKit kit() { return {host.host, target, &sampler}; }
    CDrumSound* sound(int i) { return static_cast<CDrumSound*>(target->sounds.items(i)); }
};

/// The root of the mean square of the frequency, in hertz, weighted by power.
double brightness(const std::vector<float>& v) {
    double slope = 0, power = 0;
    for (size_t i = 1; i < v.size(); i++) {
        slope += std::pow(double(v[i]) - double(v[i - 1]), 2);
        power += double(v[i]) * double(v[i]);
    }
    return std::asin(std::sqrt(slope / power) / 2) * 44100 / M_PI;
}

} // namespace

/// Levels that sit together, the colour of each drum, and sounds that begin and end in silence,
/// have died away by then, and hold no offset.
TEST(DrumKit, BuiltInSoundsAreSoundDrums) {
    struct Case {
        void (*get)(CSample*);
        double darkest, brightest; ///< hertz
        size_t dying;              ///< frame that is 20 dB below the loudest 5 ms
    };
    const Case cases[] = {{getKick, 50, 500, 17600},
                          {getSnare, 2500, 6500, 8800},
                          {getClap, 1500, 5000, 8800},
                          {getHatOpen, 7000, 11000, 66000},
                          {getHatClosed, 7000, 11000, 4400}};
    constexpr size_t step = 220; // 5 ms
    for (const Case& c : cases) {
        CSample s;
        c.get(&s);
        const char* name = s.filename.asChar();
        std::vector<float> v(size_t(s.frames));
        s.readFrames(0, s.frames, v.data());
        double sum = 0, loudest = 0;
        float peak = 0;
        for (float x : v) {
            sum += double(x);
            peak = std::max(peak, std::abs(x));
        }
        for (size_t i = 0; i + step < v.size(); i += step)
            loudest = std::max(loudest, rms(v, i, i + step));
        const size_t dying = c.dying;
        EXPECT_NEAR(sum / s.frames, 0, 1e-4) << name;
        EXPECT_TRUE(peak > 0.5f && peak < 0.95f) << name << ' ' << peak;
        EXPECT_NEAR(double(v.front()), 0, 1e-3) << name;
        EXPECT_EQ(v.back(), 0.0f) << name;
        EXPECT_LT(rms(v, dying, dying + 4 * step), loudest * 0.1) << name;
        EXPECT_LT(rms(v, v.size() - 4 * step, v.size()), loudest * 1e-3) << name;
        EXPECT_GT(brightness(v), c.darkest) << name;
        EXPECT_LT(brightness(v), c.brightest) << name;
    }
}

/// The hats choke each other. What was saved comes back; what a sampler saved is no kit, and damage
/// stays outside.
TEST(DrumKit, StandardKitTravelsThroughAStream) {
    DrumBench b;
    ASSERT_EQ(b.target->sounds.getCount(), 5);
    for (int i = 0; i < 5; i++) EXPECT_EQ(b.sound(i)->group, i >= 3 ? 1 : 0);
    b.sound(1)->toggleLane();
    EXPECT_EQ(getDrumTop(*b.target, b.sound(3)), 20 + 64 + 20);
    EXPECT_EQ(b.sound(1)->toggleLane(), -44);

    b.sound(2)->volume = 0.25f;
    b.sound(4)->envelope[0]->decay = 0.375f;
    b.sound(1)->clips[0] = b.sound(0)->clips[0];
    CMemoryStream saved, other;
    writeDrumKit(&saved, "My kit", *b.target);
    const auto load = [](DrumKit& k, CStream& s, int64_t end) {
        s.seek(0, seekStart);
        k.read(&s, end);
        return k.sounds.getCount();
    };
    DrumKit k = b.kit();
    EXPECT_EQ(load(k, saved, saved.getSize()), 5);
    EXPECT_EQ(k.name, "My kit");
    EXPECT_EQ(k.clips.getCount(), 4);
    k.take(b.drumClips, nullptr);
    EXPECT_EQ(b.sound(7)->volume, 0.25f);
    EXPECT_EQ(b.sound(9)->envelope[0]->decay, 0.375f);
    EXPECT_EQ(b.sound(6)->clips[0], b.sound(5)->clips[0]);

    b.addWav({0.5f, 0.5f});
    b.sampler.writeToStream(&other, b.prog);
    DrumKit none = b.kit();
    EXPECT_EQ(load(none, other, other.getSize()), 0);
    for (int64_t n = 0; n < saved.getSize(); n += 997) {
        DrumKit part = b.kit();
        load(part, saved, n);
        for (const CDrumSound* s : each<CDrumSound>(part.sounds)) EXPECT_GE(s->clipCount, 1);
    }
}

/// A hit is the clip at its own speed, scaled by the square of velocity, panned, and tuned by a
/// factor, whatever its voice has been before; it ends with its clip.
TEST(CDrumSound, HitsPlayTheClipThroughTheStrip) {
    constexpr int frames = 441;
    DrumBench b;
    CDrumSound* s = b.sound(0);
    s->clips[0]->setOrgKey(36);
    s->group = 7;
    CVoice v;
    b.sound(4)->startHit(&v, b.host.host, NAN, NAN, NAN);
    for (const auto& [velocity, pan, tune, left, right, speed] :
         Rows<float, float, float, double, double, double>{{1, 0, 1, 1, 1, 1},
                                                           {0.5f, 0, 2, 0.25, 0.25, 2},
                                                           {1, -1, 0.5f, 1.5, 0, 0.5},
                                                           {9, 0.5f, 1, 0.5, 1.25, 1}}) {
        COutputChannel track(&b.sampler);
        track.createBuffers(1024);
        v.tail = v.glideLeft = 50;
        s->clearStrip(frames);
        s->startHit(&v, b.host.host, velocity, pan, tune);
        s->process(s->output->bufL, s->output->bufR, &v, frames);
        s->addStrip(&track, frames);
        s->addStrip(&track, frames);
        EXPECT_EQ(v.group, 7);
        EXPECT_NEAR(v.pos, speed * frames, 1e-3);
        std::vector<float> data(1000);
        s->clips[0]->readFrames(0, int(data.size()), data.data());
        for (int i : {101, 201, 439}) { // the filter passes on all of it, one frame later
            const double value = double(data[size_t((i - 1) * speed)]);
            EXPECT_NEAR(double(track.bufL[i]), 2 * left * value, 1e-3) << i;
            EXPECT_NEAR(double(track.bufR[i]), 2 * right * value, 1e-3) << i;
        }
    }
    EXPECT_EQ(b.render(&v, 28672).back(), 0.0f);
    EXPECT_EQ(v.state, CVoice::free);
    s->setFrames(4096);
    s->setRate(48000);
    EXPECT_EQ(s->output->bufR[4095], 0.0f);
    EXPECT_EQ(s->fx[0]->rate, 48000.0f);
}
