#include "SampleFixture.h"
#include "support/Rows.h"

#include <algorithm>
#include <cmath>
#include <random>

using CSampleTest = SampleFiles;

namespace {

const Rows<const char*, int, int, int> formats = {
    {"a16.wav", 44100, 16, 2}, {"m16.wav", 22050, 16, 1},   {"a24.wav", 48000, 24, 2},
    {"m24.wav", 96000, 24, 1}, {"a32.wav", 44100, 32, 2},   {"m32.wav", 8000, 32, 1},
    {"a16.AIF", 44100, 16, 2}, {"m16.aiff", 192000, 16, 1}, {"a24.aif", 32000, 24, 2},
    {"m24.aif", 11025, 24, 1}, {"a32.aif", 22050, 32, 2}};

/// What a value becomes by the packing of a width; what is no number becomes silence.
float packed(float value, int bits, bool integers) {
    if (std::isnan(value)) return 0.0f;
    const double v = std::clamp(double(value), -1.0, 1.0), full = std::ldexp(1, bits - 1);
    return float(bits < 32 || integers ? std::trunc(v * (full - 1)) / full : v);
}

void expectNear(const std::vector<float>& got, const std::vector<float>& want, const char* name) {
    ASSERT_EQ(got.size(), want.size()) << name;
    for (std::size_t i = 0; i < got.size(); i++)
        ASSERT_NEAR(got[i], want[i], 6e-8f) << name << " value " << i;
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

std::string chunk(const char* id, const std::string& body, bool isBig = false) {
    return id + (isBig ? big : little)(unsigned(body.size()), 4) + body;
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

/// Mono; a mantissa of 0xac440000 is a rate of 44100 with the exponent 14.
std::string comm(unsigned frames, unsigned bits, unsigned exponent, unsigned mantissa) {
    return chunk("COMM",
                 big(1, 2) + big(frames, 4) + big(bits, 2) + '\x40' + char(exponent) +
                     big(mantissa, 4) + std::string(4, '\0'),
                 true);
}

std::string aiff(const std::string& chunks) {
    return "FORM" + big(0, 4) + "AIFF" + chunks;
}

const std::string ssnd = chunk("SSND", std::string(8, '\0') + "\x40\x01\x80\x02", true);

} // namespace

/// What is written comes back as the packing of its width, streamed or loaded, and independent
/// programs read the same values; what one of them makes of it is read here.
TEST_F(CSampleTest, WrittenFilesReadBackHereAndElsewhere) {
    Values left = noise(5000, 1), right = noise(5000, 2);
    for (Values* side : {&left, &right})
        std::ranges::copy(Values{1.0f, 9.0f, -1.0f, -9.0f, std::nanf("")}, side->begin());
    for (const auto& [name, rate, bits, chs] : formats) {
        const std::string file = path(name);
        const bool isAiff = file.find("wav") == std::string::npos;
        write(file, rate, bits, chs, left, right);
        Values want;
        for (std::size_t i = 0; i < 5000; i++) {
            const float first = chs == 1 ? (left[i] + right[i]) * 0.5f : left[i];
            want.push_back(packed(first, bits, isAiff));
            if (chs == 2) want.push_back(packed(right[i], bits, isAiff));
        }
        for (int streamed : {0, 1}) {
            const auto in = opened(file, streamed);
            EXPECT_EQ(in->rate, float(rate)) << name;
            EXPECT_EQ(in->bits * 10 + in->chs, bits * 10 + chs) << name;
            EXPECT_EQ(in->bigEndian, isAiff && (streamed || bits == 32)) << name;
            expectNear(allFrames(*in), want, name);
        }
        run("sox -D -V1 " + file + " -t f32 " + path("raw"));
        const Bytes raw = bytesOf(path("raw"));
        const auto* theirs = reinterpret_cast<const float*>(raw.data());
        expectNear(Values(theirs, theirs + raw.size() / 4), want, name);
        const std::string other = path(isAiff ? "theirs.aif" : "theirs.wav");
        const std::string coding = bits < 32 ? "-pcm24 " : isAiff ? "-pcm32 " : "-float32 ";
        run("sndfile-convert " + coding + file + " " + other);
        EXPECT_EQ(allFrames(*opened(other)), allFrames(*opened(file))) << name;
    }
}

TEST_F(CSampleTest, HeadersAreLaidOutAsPublished) {
    const Values silence(3, 0.0f), full(1, 9.0f);
    write(path("h.wav"), 44100, 24, 2, silence, silence);
    const std::string wavHead = "RIFF" + little(18 + 36, 4) + "WAVEfmt " + little(16, 4) +
                                little(1, 2) + little(2, 2) + little(44100, 4) +
                                little(44100 * 6, 4) + little(6, 2) + little(24, 2) + "data" +
                                little(18, 4);
    EXPECT_EQ(bytesOf(path("h.wav")), asBytes(wavHead + std::string(18, '\0')));
    write(path("h.aif"), 44100, 16, 1, silence, silence);
    const std::string form = "FORM" + big(6 + 46, 4) + "AIFF" + comm(3, 16, 14, 0xac440000u);
    EXPECT_EQ(bytesOf(path("h.aif")),
              asBytes(form + chunk("SSND", std::string(8 + 6, '\0'), true)));
    write(path("f.aif"), 44100, 32, 1, full, full);
    EXPECT_EQ(bytesOf(path("f.aif")).at(54), 0x3f) << "mono keeps its floats";
}

TEST_F(CSampleTest, ChunksDecideWhatOpens) {
    constexpr int refused = -1;
    struct Case {
        const char* name;
        std::string bytes;
        int frames, loop = 0, loopStart = 0;
    };
    const std::string pcm = fmt(1, 1, 44100, 16), data = chunk("data", std::string(20, 'x'));
    const std::string tooLong = "data" + little(1000, 4) + std::string(21, 'x');
    const std::string negative = "data" + little(0x80000000u, 4) + std::string(20, 'x');
    const std::string rate = comm(2, 16, 14, 0xac440000u);
    const Case cases[] = {
        {"one loop", wav(pcm + data + smpl(1, {7})), 10, 1, 7},
        {"loop past the end", wav(pcm + data + smpl(1, {0xffffffffu})), 10, 1, 9},
        {"more loops told than held", wav(pcm + data + smpl(0xffffffffu, {3, 5})), 10, 0, 5},
        {"loop in front of the data", wav(pcm + smpl(1, {7}) + data), 10, 0, 7},
        {"odd chunk, no padding", wav(chunk("note", "abc") + pcm + data), 10},
        {"odd chunk with padding", wav(chunk("note", "abc") + '\0' + pcm + data), refused},
        {"data longer than the file", wav(pcm + tooLong), 10},
        {"negative size", wav(pcm + negative), refused},
        {"stopped before it told its size", wav(pcm + chunk("data", "") + std::string(21, 'x')),
         10},
        {"no frames, but chunks behind", wav(pcm + chunk("data", "") + smpl(1, {7})), 0, 1, 0},
        {"data first", wav(data + pcm), refused},
        {"format changed behind the data", wav(pcm + data + fmt(1, 4, 44100, 24)), refused},
        {"integers of 32 bits", wav(fmt(1, 1, 44100, 32) + data), refused},
        {"floats of 16 bits", wav(fmt(3, 1, 44100, 16) + data), refused},
        {"floats of 32 bits", wav(fmt(3, 1, 44100, 32) + data), 5},
        {"no channels", wav(fmt(1, 0, 44100, 16) + data), refused},
        {"five channels", wav(fmt(1, 5, 44100, 16) + data), 2},
        {"frame too wide", wav(fmt(1, 40000, 44100, 16) + data), refused},
        {"rate 0", wav(fmt(1, 1, 0, 16) + data), refused},
        {"negative rate", wav(fmt(1, 1, 0xffffffffu, 16) + data), refused},
        {"AIFF of fewer frames than told", aiff(comm(9, 16, 14, 0xac440000u) + ssnd), 2},
        {"AIFF frames first", aiff(ssnd + rate), refused},
        {"AIFF of 8 bits", aiff(comm(2, 8, 14, 0xac440000u) + ssnd), refused},
        {"AIFF exponent too high", aiff(comm(2, 16, 31, 0xac440000u) + ssnd), refused},
        {"AIFF rate 0", aiff(comm(2, 16, 14, 0) + ssnd), refused},
        {"AIFF rate to round up to 1", aiff(comm(2, 16, 0, 0x20000000u) + ssnd), 2},
        {"compressed AIFF", "FORM" + big(0, 4) + "AIFC" + rate + ssnd, refused},
        {"empty", "", refused}};
    for (const Case& c : cases) {
        save(path("c"), asBytes(c.bytes), c.bytes.size());
        for (int streamed : {0, 1}) {
            CSample in;
            in.streamed = streamed;
            EXPECT_EQ(in.open(path("c").c_str()), c.frames != refused) << c.name;
            EXPECT_EQ(in.getFrames(), std::max(c.frames, 0)) << c.name;
            EXPECT_TRUE(in.loop == c.loop && int(in.loopStart) == c.loopStart) << c.name;
        }
    }
    CSample in;
    EXPECT_FALSE(in.open(path("missing").c_str()));
    EXPECT_FALSE(in.open(folder.c_str())) << "a folder";
}

/// Every cut of a small file and thousands of files with flipped bits: nothing is read that the
/// file does not hold.
TEST_F(CSampleTest, DamagedFilesStayWithinTheirBytes) {
    const std::string sound = fmt(1, 2, 44100, 24) + chunk("data", std::string(30, '\x55'));
    const std::string whole[] = {wav(sound + smpl(1, {2})),
                                 aiff(comm(2, 16, 14, 0xac440000u) + ssnd)};
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
