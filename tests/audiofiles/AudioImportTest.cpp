#include "audiofiles/AudioImport.h"
#include "SampleFixture.h"
#include "base/Numbers.h"
#include "support/Rows.h"

#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

namespace {

/// Sources made here, files made from them by other programs, and a folder for what is imported.
class AudioImportTest : public SampleFiles {
protected:
    AudioImportTest() {
        std::filesystem::create_directory(path("in"));
        const Values left = made(30000, [](int i) { return 0.4 * std::sin(i * 0.05); });
        const Values right = made(30000, [](int i) { return 0.8 * std::sin(i * 0.031); });
        for (int bits : {16, 24, 32})
            write(path("s" + std::to_string(bits)), 48000, bits, 2, left, right);
    }

    void convert(const std::string& options, const std::string& source, const std::string& name) {
        const bool mp3 = name.ends_with("mp3");
        run((mp3 ? "lame --silent " : "sndfile-convert ") + options + " " + path(source) + " " +
            path(name));
    }

    ImportResult import(const std::string& name) {
        return importAs({.path = path(name).c_str(), .folder = path("in").c_str()});
    }
    ImportResult importAs(const ImportWish& wish) {
        ImportProgress progress;
        const ImportResult result = importAudio(wish, files, progress);
        out = files.empty() ? CStr() : files[0];
        return result;
    }

    bool nothingLeft() { return std::filesystem::is_empty(path("in")); }

    std::vector<CStr> files;
    CStr out; ///< the first of them
};

} // namespace

/// What loses nothing on the way comes in value by value; compressed sound keeps its shape, at
/// whatever level other programs give it.
TEST_F(AudioImportTest, OtherFormatsComeIn) {
    for (const auto& [source, options, name, exact] :
         Rows<const char*, const char*, const char*, bool>{{"s16", "", "a.flac", true},
                                                           {"s24", "-pcm24", "b.flac", true},
                                                           {"s32", "-float32", "c.au", true},
                                                           {"s32", "-float64", "d.wav", true},
                                                           {"s24", "-pcm32", "e.wav", true},
                                                           {"s16", "-pcmu8", "f.wav", false},
                                                           {"s16", "-alaw", "g.wav", false},
                                                           {"s16", "", "h.mp3", false},
                                                           {"s16", "", "i.ogg", false},
                                                           {"s16", "", "j.opus", false}}) {
        convert(options, source, name);
        ASSERT_EQ(import(name), ImportResult::good) << name;
        const auto in = opened(out.asChar());
        EXPECT_EQ(in->rate, 48000.0f) << name;
        const Values got = allFrames(*in), want = allFrames(*opened(path(source)));
        ASSERT_EQ(got.size(), want.size()) << name;
        const auto product = [](const Values& a, const Values& b) {
            return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
        };
        EXPECT_GT(product(got, want) / std::sqrt(product(got, got) * product(want, want)), 0.999)
            << name;
        EXPECT_TRUE(!exact || got == want) << name;
    }
}

/// Six speakers at levels of 0.1 to 0.6: in two channels the bass effects are left out, else each
/// has a file.
TEST_F(AudioImportTest, ManyChannelsBecomeTwoOrAFileEach) {
    std::string merge = "sox -D -M";
    for (int i = 1; i <= 6; i++) {
        const std::string name = path("m" + std::to_string(i) + ".wav");
        const Values level(100, 0.1f * float(i));
        write(name, 48000, 32, 1, level, level);
        merge += " " + name;
    }
    run(merge + " " + path("six.wav"));
    ASSERT_EQ(import("six.wav"), ImportResult::good);
    const Values got = allFrames(*opened(out.asChar()));
    ASSERT_EQ(got.size(), 200u);
    EXPECT_NEAR(double(got[0]), 0.1 + (0.3 + 0.5) * std::sqrt(0.5), 1e-5);
    EXPECT_NEAR(double(got[1]), 0.2 + (0.3 + 0.6) * std::sqrt(0.5), 1e-5);
    for (const int rate : {0, 96000}) {
        ASSERT_EQ(importAs({.path = path("six.wav").c_str(),
                            .folder = path("in").c_str(),
                            .rate = rate,
                            .splits = true}),
                  ImportResult::good);
        ASSERT_EQ(files.size(), 6u);
        for (size_t i = 0; i < 6; i++) {
            const Values one = allFrames(*opened(files[i].asChar()));
            ASSERT_EQ(one.size(), rate ? 200u : 100u);
            EXPECT_NEAR(double(one[50]), 0.1 * double(i + 1), rate ? 1e-3 : 1e-6) << i;
        }
    }
}

/// A tone stays the tone it is at any rate, and what lies above the new one's reach is gone.
TEST_F(AudioImportTest, RatesAreConverted) {
    constexpr int from = 48000;
    constexpr double low = 997.0, high = 20000.0;
    const auto sine = [](double hz, double rate) {
        return [=](int i) { return 0.5 * std::sin(2 * std::numbers::pi * hz * i / rate); };
    };
    const Values tone = made(from, sine(low, from)), whistle = made(from, sine(high, from));
    write(path("tones.wav"), from, 24, 2, tone, whistle);
    for (const int rate : {32000, 44100, 96000}) {
        ASSERT_EQ(
            importAs(
                {.path = path("tones.wav").c_str(), .folder = path("in").c_str(), .rate = rate}),
            ImportResult::good);
        const auto in = opened(out.asChar());
        EXPECT_EQ(in->rate, float(rate));
        const Values got = allFrames(*in);
        ASSERT_EQ(got.size(), size_t(2 * rate)) << "as long as it was";
        const auto want = sine(low, rate), above = sine(high, rate);
        double off = 0.0, offAbove = 0.0;
        for (int i = 1000; i < rate - 1000; i++) {
            off = std::max(off, std::abs(double(got[size_t(2 * i)]) - want(i)));
            const double rest = double(got[size_t(2 * i + 1)]) - (rate > 2 * high ? above(i) : 0.0);
            offAbove = std::max(offAbove, std::abs(rest));
        }
        EXPECT_LT(off, 1e-3) << rate;
        if (rate == 44100) offAbove = 0.0; // there the filter begins
        EXPECT_LT(offAbove, 2e-3) << rate;
    }
    for (const int rate : {48000 / 17, 48000 * 65}) {
        ASSERT_EQ(importAs({.path = path("tones.wav").c_str(), .folder = "", .rate = rate}),
                  ImportResult::good);
        EXPECT_TRUE(out == path("tones.wav").c_str()) << "too far away";
    }
}

/// A copy is the same byte by byte, and not made of what is in the folder.
TEST_F(AudioImportTest, PlainFilesAreCopied) {
    ImportWish wish{.path = path("s16").c_str(), .folder = path("in").c_str(), .copies = true};
    ASSERT_EQ(importAs(wish), ImportResult::good);
    EXPECT_TRUE(out == path("in/s16").c_str());
    EXPECT_EQ(bytesOf(path("in/s16")), bytesOf(path("s16")));
    wish.path = out;
    ASSERT_EQ(importAs(wish), ImportResult::good);
    EXPECT_TRUE(out == wish.path);
}

/// A file that plays needs no import; another gets a name of its own.
TEST_F(AudioImportTest, NamesAreFree) {
    EXPECT_EQ(import("s16"), ImportResult::good);
    EXPECT_TRUE(out == path("s16").c_str() && nothingLeft());
    convert("", "s16", "x.flac");
    for (const char* name : {"in/x.wav", "in/x1.wav", "in/x2.wav"}) {
        EXPECT_EQ(import("x.flac"), ImportResult::good);
        EXPECT_TRUE(out == path(name).c_str());
    }
}

/// Junk, cut files and files with flipped bits are refused or come in; nothing else is left.
TEST_F(AudioImportTest, DamagedFilesAreRefused) {
    std::mt19937 random(5);
    for (const char* name : {"a.mp3", "b.flac", "c.ogg", "d.caf", "e.rf64"}) {
        convert("", "s16", name);
        const Bytes whole = bytesOf(path(name));
        for (int i = 0; i < 60; i++) {
            Bytes bytes = whole;
            for (unsigned n = random() % 8 + 1; n > 0; n--)
                bytes[random() % (i % 2 ? bytes.size() : 200)] ^=
                    static_cast<unsigned char>(1u << random() % 8);
            save(path("d"), bytes, i % 3 ? bytes.size() : random() % bytes.size());
            const bool good = import("d") == ImportResult::good;
            EXPECT_EQ(good, !out.empty());
            std::filesystem::remove(out.asChar());
            ASSERT_TRUE(nothingLeft()) << name;
        }
        save(path("d"), whole, whole.size() / 2);
        EXPECT_TRUE(import("d") == ImportResult::unreadable || name[0] > 'b') << name;
        std::filesystem::remove(out.asChar());
    }
    for (const char* none : {"in", "missing"})
        EXPECT_EQ(import(none), ImportResult::unreadable) << none;
}

/// Hours of sound, with holes for silence: as many bits as 2 GB hold, or none. Cancelled in the
/// middle, nothing stays.
TEST_F(AudioImportTest, LongFilesAreNarrowed) {
    const auto makeAu = [&](std::int64_t frames) { // stereo floats of unknown length
        const Bytes head = {'.', 's', 'n', 'd', 0, 0, 0,   24,  255, 255, 255, 255,
                            0,   0,   0,   6,   0, 0, 187, 128, 0,   0,   0,   2};
        save(path("long.au"), head, head.size());
        std::filesystem::resize_file(path("long.au"), std::uintmax_t(24 + frames * 8));
    };
    for (int bits : {32, 24, 16}) {
        makeAu(2147483647ll / (bits / 4) - 100);
        CAudioImport worker({.path = path("long.au").c_str(), .folder = path("in").c_str()});
        worker.start();
        for (int i = 0; i < 5000 && worker.progress.done == 0.0f; i++) asSleep(1);
        EXPECT_EQ(opened(path("in/long.wav"), 1)->bits, bits);
        worker.progress.cancelled = true;
        worker.finish();
        EXPECT_EQ(worker.result(), ImportResult::cancelled);
        EXPECT_TRUE(nothingLeft());
    }
    makeAu(12ll * 3600 * 48000);
    EXPECT_EQ(import("long.au"), ImportResult::tooLong);
    EXPECT_TRUE(nothingLeft());
}
