#include "audiofiles/AudioImport.h"
#include "SampleFixture.h"
#include "base/Numbers.h"

#include <cmath>
#include <random>

namespace {

/// Sources made here, files made from them by other programs, and a folder for what is imported.
class AudioImportTest : public SampleFiles {
protected:
    AudioImportTest() {
        std::filesystem::create_directory(path("in"));
        std::vector<float> left, right;
        for (int i = 0; i < 30000; i++) {
            left.push_back(0.4f * float(std::sin(i * 0.05) + std::sin(i * i * 1e-6)));
            right.push_back(0.8f * float(std::sin(i * 0.031)));
        }
        for (int bits : {16, 24, 32})
            write(path("s" + std::to_string(bits)), 48000, bits, 2, left, right);
    }

    void convert(const std::string& options, const std::string& source, const std::string& name) {
        const std::string files = options + " " + path(source) + " " + path(name);
        const std::string tool = name.ends_with("mp3") ? "lame --silent " : "sndfile-convert ";
        ASSERT_EQ(std::system((tool + files).c_str()), 0) << files;
    }

    ImportResult import(const std::string& name) {
        ImportProgress progress;
        return importAudio(path(name).c_str(), path("in").c_str(), out, progress);
    }

    static std::vector<float> valuesOf(const CStr& file) {
        CSample sample;
        EXPECT_TRUE(sample.open(file)) << file.asChar();
        EXPECT_EQ(sample.rate, 48000.0f);
        return allFrames(sample);
    }

    bool nothingLeft() { return std::filesystem::is_empty(path("in")); }

    CStr out;
};

/// How alike two sounds are whatever their levels, which other programs set: 1 if they are equal.
double likeness(const std::vector<float>& a, const std::vector<float>& b) {
    double ab = 0, aa = 0, bb = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); i++) {
        ab += double(a[i] * b[i]);
        aa += double(a[i] * a[i]);
        bb += double(b[i] * b[i]);
    }
    return a.size() == b.size() ? ab / std::sqrt(aa * bb) : 0.0;
}

} // namespace

/// What loses nothing on the way comes in value by value; coarse codings as another program decodes
/// them; compressed sound keeps its shape and length.
TEST_F(AudioImportTest, OtherFormatsComeIn) {
    struct Case {
        const char *source, *options, *name;
    };
    for (const Case& c : {Case{"s16", "", "a.flac"},
                          {"s24", "-pcm24", "b.flac"},
                          {"s16", "", "c.w64"},
                          {"s24", "-pcm24", "d.rf64"},
                          {"s16", "", "e.caf"},
                          {"s32", "-float32", "f.au"},
                          {"s32", "-float64", "g.wav"},
                          {"s24", "-pcm32", "h.wav"},
                          {"s16", "-pcmu8", "i.wav"},
                          {"s16", "-alaw", "j.wav"},
                          {"s16", "", "k.mp3"},
                          {"s16", "", "l.ogg"},
                          {"s16", "", "m.opus"}}) {
        convert(c.options, c.source, c.name);
        ASSERT_EQ(import(c.name), ImportResult::good) << c.name;
        const bool coarse = c.name[0] == 'i' || c.name[0] == 'j', lossy = c.name[0] >= 'k';
        if (coarse) sox(path(c.name) + " -t wavpcm -b 16 -e signed " + path("ref.wav"));
        const auto got = valuesOf(out),
                   want = valuesOf(path(coarse ? "ref.wav" : c.source).c_str());
        EXPECT_GT(likeness(got, want), 0.999) << c.name;
        EXPECT_TRUE(lossy || got == want) << c.name;
    }
}

/// Six speakers at levels of 0.1 to 0.6: the bass effects are left out.
TEST_F(AudioImportTest, ManyChannelsBecomeTwo) {
    std::string merge = "-M";
    for (int i = 1; i <= 6; i++) {
        const std::string name = path("m" + std::to_string(i) + ".wav");
        const std::vector<float> level(100, 0.1f * float(i));
        write(name, 48000, 32, 1, level, level);
        merge += " " + name;
    }
    sox(merge + " " + path("six.wav"));
    EXPECT_FALSE(playsAsIs(path("six.wav").c_str()));
    ASSERT_EQ(import("six.wav"), ImportResult::good);
    const std::vector<float> got = valuesOf(out);
    ASSERT_EQ(got.size(), 200u);
    EXPECT_NEAR(double(got[0]), 0.1 + (0.3 + 0.5) * std::sqrt(0.5), 1e-5);
    EXPECT_NEAR(double(got[1]), 0.2 + (0.3 + 0.6) * std::sqrt(0.5), 1e-5);
}

/// A file that plays needs no import; another gets a name of its own.
TEST_F(AudioImportTest, NamesAreFree) {
    EXPECT_EQ(import("s16"), ImportResult::good);
    EXPECT_TRUE(out == path("s16").c_str());
    EXPECT_TRUE(nothingLeft());
    convert("", "s16", "x.flac");
    for (const char* name : {"in/x.wav", "in/x1.wav", "in/x2.wav"}) {
        CAudioImport worker(path("x.flac").c_str(), path("in").c_str());
        worker.start();
        for (int i = 0; i < 5000 && !worker.finished(); i++) asSleep(1);
        ASSERT_EQ(worker.result(), ImportResult::good);
        EXPECT_TRUE(worker.target() == path(name).c_str());
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
    save(path("d"), Bytes(100, 'x'), 100);
    for (const char* none : {"d", "in", "missing"})
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
        CAudioImport worker(path("long.au").c_str(), path("in").c_str());
        worker.start();
        for (int i = 0; i < 5000 && worker.progress.done == 0.0f; i++) asSleep(1);
        CSample part;
        part.streamed = 1;
        ASSERT_TRUE(part.open(path("in/long.wav").c_str()));
        EXPECT_EQ(part.bits, bits);
        worker.progress.cancelled = true;
        worker.finish();
        EXPECT_EQ(worker.result(), ImportResult::cancelled);
        EXPECT_TRUE(nothingLeft());
    }
    makeAu(12ll * 3600 * 48000);
    EXPECT_EQ(import("long.au"), ImportResult::tooLong);
    EXPECT_TRUE(nothingLeft());
}
