#include "audiofiles/AudioImport.h"
#include "SampleFixture.h"
#include "base/Numbers.h"

#include <cmath>
#include <cstring>
#include <numbers>
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
        write(path("s16.wav"), 48000, 16, 2, left, right);
        write(path("s24.wav"), 48000, 24, 2, left, right);
        write(path("s32.wav"), 48000, 32, 2, left, right);
    }

    static void run(const std::string& command) {
        ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
    }

    ImportResult import(const std::string& name, CStr& out) {
        ImportProgress progress;
        return importAudio(path(name).c_str(), path("in").c_str(), out, progress);
    }

    std::vector<float> valuesOf(const CStr& file, int& bits) {
        CSample sample;
        EXPECT_TRUE(sample.open(file)) << file.asChar();
        bits = sample.bits;
        EXPECT_EQ(sample.rate, 48000.0f);
        return allFrames(sample);
    }

    bool nothingLeft() { return std::filesystem::is_empty(path("in")); }
};

} // namespace

/// What loses nothing on the way comes in value by value; the rest as another program decodes it.
TEST_F(AudioImportTest, LosslessFilesComeInExactly) {
    struct Case {
        const char *source, *options, *name;
        int bits;
    };
    for (const Case& c : {Case{"s16.wav", "", "a.flac", 16},
                          {"s24.wav", "-pcm24", "b.flac", 24},
                          {"s16.wav", "", "c.w64", 16},
                          {"s24.wav", "-pcm24", "d.rf64", 24},
                          {"s16.wav", "", "e.caf", 16},
                          {"s32.wav", "-float32", "f.au", 32},
                          {"s32.wav", "-float64", "g.wav", 32},
                          {"s24.wav", "-pcm32", "h.wav", 32},
                          {"s16.wav", "-pcmu8", "i.wav", 16},
                          {"s16.wav", "-alaw", "j.wav", 16},
                          {"s16.wav", "-ulaw", "k.wav", 16}}) {
        run("sndfile-convert " + std::string(c.options) + " " + path(c.source) + " " +
            path(c.name));
        CStr out;
        ASSERT_EQ(import(c.name, out), ImportResult::good) << c.name;
        int bits = 0, sourceBits = 0;
        const std::vector<float> got = valuesOf(out, bits);
        EXPECT_EQ(bits, c.bits) << c.name;
        const bool coarse = c.name[0] >= 'i';
        if (coarse) sox(path(c.name) + " -t wavpcm -b 16 -e signed " + path("ref.wav"));
        EXPECT_EQ(got, valuesOf(path(coarse ? "ref.wav" : c.source).c_str(), sourceBits)) << c.name;
    }
}

TEST_F(AudioImportTest, LossyFilesKeepSoundAndLength) {
    run("lame -V0 " + path("s16.wav") + " " + path("a.mp3"));
    run("sndfile-convert " + path("s16.wav") + " " + path("b.ogg"));
    run("sndfile-convert " + path("s16.wav") + " " + path("c.opus"));
    int bits = 0;
    const std::vector<float> source = valuesOf(path("s16.wav").c_str(), bits);
    for (const char* name : {"a.mp3", "b.ogg", "c.opus"}) {
        CStr out;
        ASSERT_EQ(import(name, out), ImportResult::good) << name;
        const std::vector<float> got = valuesOf(out, bits);
        EXPECT_EQ(bits, 32);
        ASSERT_EQ(got.size(), source.size()) << name;
        double same = 0, before = 0, after = 0; // the other program sets the level
        for (std::size_t i = 0; i < got.size(); i++) {
            same += double(source[i]) * double(got[i]);
            before += double(source[i]) * double(source[i]);
            after += double(got[i]) * double(got[i]);
        }
        EXPECT_GT(same / std::sqrt(before * after), 0.999) << name;
    }
}

TEST_F(AudioImportTest, ManyChannelsBecomeTwo) {
    const double k = std::numbers::sqrt2 / 2;
    struct Case {
        int chs;
        std::vector<double> left, right;
    };
    for (const Case& c : {Case{3, {1, 0, k}, {0, 1, k}},
                          {4, {1, 0, k, 0}, {0, 1, 0, k}},
                          {6, {1, 0, k, 0, k, 0}, {0, 1, k, 0, 0, k}}}) {
        std::string merge = "-M";
        std::vector<float> in;
        for (int i = 0; i < c.chs; i++) {
            const std::string name = path("m" + std::to_string(i) + ".wav");
            const std::vector<float> level(100, 0.1f * float(i + 1));
            write(name, 48000, 32, 1, level, level);
            merge += " " + name;
        }
        sox(merge + " " + path("many.wav"));
        EXPECT_FALSE(playsAsIs(path("many.wav").c_str()));
        CStr out;
        ASSERT_EQ(import("many.wav", out), ImportResult::good);
        int bits = 0;
        const std::vector<float> got = valuesOf(out, bits);
        ASSERT_EQ(got.size(), 200u);
        for (int side : {0, 1}) {
            double want = 0;
            for (int i = 0; i < c.chs; i++)
                want += 0.1 * (i + 1) * (side ? c.right : c.left)[std::size_t(i)];
            EXPECT_NEAR(double(got[std::size_t(side)]), want, 1e-5) << c.chs;
        }
    }
}

/// A file that plays needs no import; another gets a name of its own.
TEST_F(AudioImportTest, NamesAreFree) {
    CStr out;
    EXPECT_EQ(import("s16.wav", out), ImportResult::good);
    EXPECT_TRUE(out == path("s16.wav").c_str());
    EXPECT_TRUE(nothingLeft());
    run("sndfile-convert " + path("s16.wav") + " " + path("x.flac"));
    for (const char* name : {"x.wav", "x1.wav", "x2.wav"}) {
        CAudioImport worker(path("x.flac").c_str(), path("in").c_str());
        worker.start();
        for (int i = 0; i < 5000 && !worker.finished(); i++) asSleep(1);
        ASSERT_EQ(worker.result(), ImportResult::good);
        EXPECT_TRUE(worker.target() == path(std::string("in/") + name).c_str());
        EXPECT_EQ(worker.progress.done, 1.0f);
    }
}

/// Junk, cut files and files with flipped bits are refused or come in; nothing else is left.
TEST_F(AudioImportTest, DamagedFilesAreRefused) {
    run("lame " + path("s16.wav") + " " + path("a.mp3"));
    std::mt19937 random(5);
    CStr out;
    for (const char* name : {"a.mp3", "b.flac", "c.ogg", "d.wav", "e.caf", "f.rf64"}) {
        if (name[0] != 'a')
            run("sndfile-convert " + std::string(name[0] == 'd' ? "-alaw " : "") + path("s16.wav") +
                " " + path(name));
        const Bytes whole = bytesOf(path(name));
        for (int i = 0; i < 60; i++) {
            Bytes bytes = whole;
            for (unsigned n = random() % 8 + 1; n > 0; n--)
                bytes[random() % (i % 2 ? bytes.size() : 200)] ^=
                    static_cast<unsigned char>(1u << random() % 8);
            save(path("d"), bytes, i % 3 ? bytes.size() : random() % bytes.size());
            if (import("d", out) == ImportResult::good)
                std::filesystem::remove(out.asChar());
            else
                EXPECT_TRUE(out.empty());
            ASSERT_TRUE(nothingLeft()) << name;
        }
        const bool compressed = name[0] <= 'b';
        save(path("d"), whole, whole.size() / 2);
        const ImportResult cut = import("d", out);
        EXPECT_TRUE(cut == ImportResult::unreadable || !compressed) << name;
        std::filesystem::remove(out.asChar());
    }
    for (const char* junk : {"", "RIFF", "no sound at all, but a longer text than any header is"}) {
        save(path("d"), Bytes(junk, junk + std::strlen(junk)), std::strlen(junk));
        EXPECT_EQ(import("d", out), ImportResult::unreadable) << junk;
    }
    EXPECT_EQ(import("in", out), ImportResult::unreadable) << "a folder";
    EXPECT_EQ(import("missing", out), ImportResult::unreadable);
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
        makeAu(std::int64_t(2147483647) / (bits / 4) - 100);
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
    makeAu(std::int64_t(12) * 3600 * 48000);
    CStr out;
    EXPECT_EQ(import("long.au", out), ImportResult::tooLong);
    EXPECT_TRUE(nothingLeft());
}
