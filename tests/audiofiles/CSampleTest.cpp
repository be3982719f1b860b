#include "SampleFixture.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

using CSampleTest = SampleFiles;

namespace {

struct Format {
    const char* name;
    int rate, bits, chs;
};

const Format formats[] = {
    {"a16.wav", 44100, 16, 2}, {"m16.wav", 22050, 16, 1},   {"a24.wav", 48000, 24, 2},
    {"m24.wav", 96000, 24, 1}, {"a32.wav", 44100, 32, 2},   {"m32.wav", 8000, 32, 1},
    {"a16.AIF", 44100, 16, 2}, {"m16.aiff", 192000, 16, 1}, {"a24.aif", 32000, 24, 2},
    {"m24.aif", 11025, 24, 1}, {"a32.aif", 22050, 32, 2}};

/// What a value becomes by the packing of a width, in double.
double packed(double value, int bits, bool integers) {
    const double v = std::fmin(1.0, std::fmax(-1.0, value));
    if (bits == 16) return std::trunc(v * 32767) / 32768;
    if (bits == 24) return std::trunc(v * 8388607) / 8388608;
    return integers ? std::trunc(v * 2147483647.0) / 2147483648.0 : v;
}

bool isAiff(const Format& f) {
    return std::string(f.name).find("wav") == std::string::npos;
}

std::vector<unsigned char> asBytes(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string little(unsigned value, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; i++, value >>= 8) out += char(value);
    return out;
}

std::string big(unsigned value, int bytes) {
    const std::string out = little(value, bytes);
    return {out.rbegin(), out.rend()};
}

std::string chunk(const char* id, const std::string& body) {
    return id + little(unsigned(body.size()), 4) + body;
}

std::string fmt(unsigned tag, unsigned chs, unsigned rate, unsigned bits) {
    return chunk("fmt ", little(tag, 2) + little(chs, 2) + little(rate, 4) + little(0, 4) +
                             little(0, 2) + little(bits, 2));
}

std::string smpl(unsigned loops, std::initializer_list<unsigned> starts) {
    std::string body = std::string(28, '\0') + little(loops, 4) + little(0, 4);
    for (unsigned start : starts)
        body += std::string(8, '\0') + little(start, 4) + std::string(12, '\0');
    return chunk("smpl", body);
}

std::string wav(const std::string& chunks) {
    return "RIFF" + little(0, 4) + "WAVE" + chunks;
}

std::string bigChunk(const char* id, const std::string& body) {
    return id + big(unsigned(body.size()), 4) + body;
}

std::string comm(unsigned chs, unsigned frames, unsigned bits, unsigned exponent,
                 unsigned mantissa) {
    return bigChunk("COMM", big(chs, 2) + big(frames, 4) + big(bits, 2) + '\x40' + char(exponent) +
                                big(mantissa, 4) + std::string(4, '\0'));
}

std::string aiff(const std::string& chunks) {
    return "FORM" + big(0, 4) + "AIFF" + chunks;
}

const std::string ssnd = bigChunk("SSND", std::string(8, '\0') + "\x40\x01\x80\x02");

} // namespace

/// What is written comes back as the packing of its width, streamed or loaded, and independent
/// programs read the same values; what one of them makes of it is read here.
TEST_F(CSampleTest, WrittenFilesReadBackHereAndElsewhere) {
    const std::vector<float> left = noise(5000, 1), right = noise(5000, 2);
    for (const Format& f : formats) {
        write(path(f.name), f.rate, f.bits, f.chs, left, right);
        for (int streamed : {0, 1}) {
            CSample in;
            in.streamed = streamed;
            ASSERT_TRUE(in.open(path(f.name).c_str())) << f.name;
            EXPECT_EQ(in.rate, float(f.rate)) << f.name;
            EXPECT_EQ(in.bits, f.bits) << f.name;
            EXPECT_EQ(in.chs, f.chs) << f.name;
            ASSERT_EQ(in.getFrames(), 5000) << f.name;
            EXPECT_EQ(in.bigEndian, isAiff(f) && (streamed || f.bits == 32)) << f.name;
            const std::vector<float> got = allFrames(in);
            for (std::size_t i = 0; i < got.size(); i++) {
                const float l = left[i / std::size_t(f.chs)], r = right[i / std::size_t(f.chs)];
                const float value = f.chs == 1 ? (l + r) * 0.5f : i % 2 ? r : l;
                const double want = packed(double(value), f.bits, isAiff(f));
                ASSERT_NEAR(double(got[i]), want, 6e-8) << f.name << " value " << i;
            }
        }
        sox(path(f.name) + " -t f32 " + path("raw"));
        CSample in;
        in.open(path(f.name).c_str());
        const std::vector<float> got = allFrames(in);
        const Bytes raw = bytesOf(path("raw"));
        ASSERT_EQ(raw.size(), got.size() * 4) << f.name;
        for (std::size_t i = 0; i < got.size(); i++) {
            float theirs;
            std::memcpy(&theirs, &raw[i * 4], 4);
            ASSERT_NEAR(theirs, got[i], 6e-8f) << f.name << " value " << i;
        }
        const std::string other = path(isAiff(f) ? "theirs.aif" : "theirs.wav");
        const std::string coding = f.bits < 32 ? "-pcm24 " : isAiff(f) ? "-pcm32 " : "-float32 ";
        const std::string convert = "sndfile-convert " + coding + path(f.name) + " " + other;
        ASSERT_EQ(std::system(convert.c_str()), 0) << f.name;
        CSample theirs;
        ASSERT_TRUE(theirs.open(other.c_str())) << f.name;
        EXPECT_EQ(allFrames(theirs), got) << f.name;
    }
}

TEST_F(CSampleTest, FilesOfAnotherProgramReadExactly) {
    for (const Format& f : formats) {
        const bool isFloat = f.bits == 32 && !isAiff(f);
        const std::string file = path(f.name), type = isAiff(f) ? "aiff" : "wavpcm";
        const std::string coding = isFloat ? "-t wav -e floating-point" : "-t " + type;
        sox("-R -n -r " + std::to_string(f.rate) + " -c " + std::to_string(f.chs) + " -b " +
            std::to_string(f.bits) + " " + coding + " " + file + " synth 0.1 whitenoise vol 0.9");
        sox(file + " -t s32 " + path("raw"));
        CSample in;
        ASSERT_TRUE(in.open(file.c_str())) << f.name;
        EXPECT_EQ(in.rate, float(f.rate)) << f.name;
        const std::vector<float> got = allFrames(in);
        const Bytes raw = bytesOf(path("raw"));
        ASSERT_EQ(raw.size(), got.size() * 4) << f.name;
        ASSERT_GT(got.size(), 700u) << f.name;
        for (std::size_t i = 0; i < got.size(); i++) {
            std::int32_t theirs;
            std::memcpy(&theirs, &raw[i * 4], 4);
            ASSERT_NEAR(double(got[i]), theirs / 2147483648.0, f.bits == 32 ? 6e-8 : 0.0)
                << f.name << " value " << i;
        }
    }
}

/// Limits and what is no number, in each width, and the floats of mono big-endian files.
TEST_F(CSampleTest, ValuesArePackedWithinTheirLimits) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        SampleCoding coding;
        int chs;
        unsigned high, low;
    };
    for (const Case& c : {Case{{16, true}, 2, 0x7fff, 0x8001},
                          {{24, true}, 1, 0x7fffff, 0x800001},
                          {{32, true}, 2, 0x7fffffff, 0x80000001},
                          {{32, true}, 1, 0x3f800000, 0xbf800000}}) {
        for (float value : {1.0f, 9.0f, -1.0f, -9.0f, nan}) {
            unsigned char b[8];
            encodeFrames(c.coding, c.chs, 1, &value, &value, b);
            unsigned word = 0;
            for (int i = 0; i < c.coding.bits / 8; i++) word = word << 8 | b[i];
            EXPECT_EQ(word, value > 0 ? c.high : value < 0 ? c.low : 0u) << value;
        }
    }
}

TEST_F(CSampleTest, HeadersAreLaidOutAsPublished) {
    const std::vector<float> silence(3, 0.0f);
    write(path("h.wav"), 44100, 24, 2, silence, silence);
    const std::string wavHead = "RIFF" + little(18 + 36, 4) + "WAVEfmt " + little(16, 4) +
                                little(1, 2) + little(2, 2) + little(44100, 4) +
                                little(44100 * 6, 4) + little(6, 2) + little(24, 2) + "data" +
                                little(18, 4);
    EXPECT_EQ(bytesOf(path("h.wav")), asBytes(wavHead + std::string(18, '\0')));
    write(path("h.aif"), 44100, 16, 1, silence, silence);
    const std::string rate = {'\x40', '\x0e', '\xac', '\x44', 0, 0, 0, 0, 0, 0};
    const std::string aiffHead = "FORM" + big(6 + 46, 4) + "AIFFCOMM" + big(18, 4) + big(1, 2) +
                                 big(3, 4) + big(16, 2) + rate + "SSND" + big(14, 4) + big(0, 4) +
                                 big(0, 4);
    EXPECT_EQ(bytesOf(path("h.aif")), asBytes(aiffHead + std::string(6, '\0')));
}

/// Chunks in odd orders, sizes and numbers: what opens, with how many frames, and which loop.
TEST_F(CSampleTest, ChunksDecideWhatOpens) {
    struct Case {
        const char* name;
        std::string bytes;
        bool valid;
        int frames, loop, loopStart;
    };
    const std::string pcm = fmt(1, 1, 44100, 16), data = chunk("data", std::string(20, 'x'));
    const std::string tooLong = "data" + little(1000, 4) + std::string(21, 'x');
    const std::string negative = "data" + little(0x80000000u, 4) + std::string(20, 'x');
    const std::string rate = comm(1, 2, 16, 14, 0xac440000u);
    const Case cases[] = {
        {"plain", wav(pcm + data), true, 10, 0, 0},
        {"one loop", wav(pcm + data + smpl(1, {7})), true, 10, 1, 7},
        {"loop past the end", wav(pcm + data + smpl(1, {0xffffffffu})), true, 10, 1, 9},
        {"two loops, the last counts", wav(pcm + data + smpl(2, {3, 5})), true, 10, 0, 5},
        {"more loops told than held", wav(pcm + data + smpl(0xffffffffu, {4})), true, 10, 0, 4},
        {"loop in front of the data", wav(pcm + smpl(1, {7}) + data), true, 10, 0, 7},
        {"unknown chunk", wav(chunk("LIST", "abcd") + pcm + data), true, 10, 0, 0},
        {"odd chunk, no padding", wav(chunk("note", "abc") + pcm + data), true, 10, 0, 0},
        {"odd chunk with padding", wav(chunk("note", "abc") + '\0' + pcm + data), false, 0, 0, 0},
        {"data longer than the file", wav(pcm + tooLong), true, 10, 0, 0},
        {"negative size", wav(pcm + negative), false, 0, 0, 0},
        {"data first", wav(data + pcm), false, 0, 0, 0},
        {"format changed behind the data", wav(pcm + data + fmt(1, 4, 44100, 24)), false, 0, 0, 0},
        {"no data", wav(pcm), false, 0, 0, 0},
        {"8 bits", wav(fmt(1, 1, 44100, 8) + data), false, 0, 0, 0},
        {"integers of 32 bits", wav(fmt(1, 1, 44100, 32) + data), false, 0, 0, 0},
        {"floats of 16 bits", wav(fmt(3, 1, 44100, 16) + data), false, 0, 0, 0},
        {"floats of 32 bits", wav(fmt(3, 1, 44100, 32) + data), true, 5, 0, 0},
        {"no channels", wav(fmt(1, 0, 44100, 16) + data), false, 0, 0, 0},
        {"five channels", wav(fmt(1, 5, 44100, 16) + data), true, 2, 0, 0},
        {"frame too wide", wav(fmt(1, 40000, 44100, 16) + data), false, 0, 0, 0},
        {"rate 0", wav(fmt(1, 1, 0, 16) + data), false, 0, 0, 0},
        {"negative rate", wav(fmt(1, 1, 0xffffffffu, 16) + data), false, 0, 0, 0},
        {"other form", "RIFF" + little(0, 4) + "AVI " + pcm + data, false, 0, 0, 0},
        {"AIFF", aiff(rate + ssnd), true, 2, 0, 0},
        {"AIFF of fewer frames than told", aiff(comm(1, 9, 16, 14, 0xac440000u) + ssnd), true, 2, 0,
         0},
        {"AIFF of more than told", aiff(comm(1, 1, 16, 14, 0xac440000u) + ssnd), true, 1, 0, 0},
        {"AIFF frames first", aiff(ssnd + rate), false, 0, 0, 0},
        {"AIFF of 8 bits", aiff(comm(1, 2, 8, 14, 0xac440000u) + ssnd), false, 0, 0, 0},
        {"AIFF exponent too high", aiff(comm(1, 2, 16, 31, 0xac440000u) + ssnd), false, 0, 0, 0},
        {"AIFF rate 0", aiff(comm(1, 2, 16, 14, 0) + ssnd), false, 0, 0, 0},
        {"compressed AIFF", "FORM" + big(0, 4) + "AIFC" + rate + ssnd, false, 0, 0, 0},
        {"empty", "", false, 0, 0, 0}};
    for (const Case& c : cases) {
        const std::string file = path("c");
        save(file, asBytes(c.bytes), c.bytes.size());
        for (int streamed : {0, 1}) {
            CSample in;
            in.streamed = streamed;
            EXPECT_EQ(in.open(file.c_str()), c.valid) << c.name;
            EXPECT_EQ(in.getFrames(), c.frames) << c.name;
            EXPECT_EQ(int(in.loop), c.loop) << c.name;
            EXPECT_EQ(int(in.loopStart), c.loopStart) << c.name;
        }
    }
    CSample in;
    EXPECT_FALSE(in.open(path("missing").c_str()));
    EXPECT_FALSE(in.open(folder.c_str())) << "a folder";
}

/// Every cut of a small file and thousands of files with flipped bits: nothing is read that the
/// file does not hold.
TEST_F(CSampleTest, DamagedFilesStayWithinTheirBytes) {
    const std::string loops = smpl(1, {2});
    const std::string sound = fmt(1, 2, 44100, 24) + chunk("data", std::string(30, '\x55'));
    const std::string whole[] = {wav(sound + loops), aiff(comm(1, 2, 16, 14, 0xac440000u) + ssnd)};
    std::mt19937 random(7);
    const auto check = [&](const Bytes& bytes, std::size_t count) {
        save(path("d"), bytes, count);
        CSample in;
        if (!in.open(path("d").c_str())) return;
        ASSERT_LE(std::size_t(in.getFrames()) * std::size_t(in.frameBytes), count);
        ASSERT_LE(int(in.loopStart), std::max(0, in.getFrames() - 1));
        in.peakfile();
    };
    for (const std::string& text : whole) {
        const Bytes bytes = asBytes(text);
        for (std::size_t cut = 0; cut < bytes.size(); cut++) check(bytes, cut);
        for (int i = 0; i < 2500; i++) {
            Bytes flipped = bytes;
            for (unsigned n = random() % 4 + 1; n > 0; n--)
                flipped[random() % flipped.size()] ^=
                    static_cast<unsigned char>(1u << random() % 8);
            check(flipped, flipped.size());
        }
    }
}

/// A temporary recording goes with its sample unless it is kept or somebody else's.
TEST_F(CSampleTest, TemporaryFilesGoWithTheirSample) {
    struct Case {
        bool keep, ownsFile, stays;
    };
    for (const Case& c : {Case{false, true, false}, {true, true, true}, {false, false, true}}) {
        CSample* sample = CSample::createSample(path("t.wav").c_str(), 0);
        ASSERT_NE(sample, nullptr);
        EXPECT_FALSE(sample->keep);
        EXPECT_FALSE(sample->needsPeaks);
        sample->keep = c.keep;
        sample->ownsFile = c.ownsFile;
        delete sample;
        EXPECT_EQ(std::filesystem::exists(path("t.wav")), c.stays);
    }
    EXPECT_EQ(CSample::createSample(path("no/such/folder.wav").c_str(), 0), nullptr);
}

TEST_F(CSampleTest, FullDiskIsReported) {
    CSample out;
    out.create("/dev/full");
    ASSERT_TRUE(out.validHandle());
    const std::vector<float> frames(1000, 0.5f);
    out.writeFrames(1000, frames.data(), frames.data());
    out.finalize();
    EXPECT_TRUE(diskWriteFailed.exchange(false));
}
