#include "audiofiles/CAudioProcessor.h"
#include "SampleFixture.h"

#include <algorithm>
#include <cmath>
#include <memory>

using CAudioProcessorTest = SampleFiles;

namespace {

using Values = std::vector<float>;

/// What a value that an edit has touched is read back as.
float stored(float value, int bits) {
    const double v = std::fmin(1.0, std::fmax(-1.0, double(value)));
    if (bits == 32) return float(v);
    const double full = std::ldexp(1.0, bits - 1);
    return float(std::trunc(v * (full - 1)) / full);
}

/// The edit on an array: frames of `chs` values.
Values edited(const Values& in, int chs, int bits, int mode, int from, int to) {
    Values out;
    float peak = 0.0f;
    for (int i = from * chs; i < to * chs; i++)
        peak = std::max(peak, std::fabs(in[std::size_t(i)]));
    for (int f = 0; f < int(in.size()) / chs; f++) {
        const bool inside = f >= from && f < to;
        const float part = float(double(f - from) / (to - from));
        const int source = inside && mode == processReverse ? from + to - 1 - f : f;
        const float* v = &in[std::size_t(source * chs)];
        if (mode == processCut && inside) continue;
        if (mode == processMono && chs == 2) {
            out.push_back(stored((v[0] + v[1]) * 0.5f, bits));
            continue;
        }
        for (int c = 0; c < chs; c++) {
            float now = v[c];
            if (mode == processNormalize && inside) now = stored(now * (1.0f / peak), bits);
            if (inside ? mode == processDelete : mode == processTrim) now = 0.0f;
            if (mode == processFadeIn && inside) now = stored(now * part, bits);
            if (mode == processFadeOut && inside) now = stored(now * (1.0f - part), bits);
            out.push_back(now);
        }
    }
    return out;
}

} // namespace

/// Every mode in every width, mono and stereo, streamed or loaded, whatever the range.
TEST_F(CAudioProcessorTest, EditsEqualArrayArithmetic) {
    struct Format {
        const char* name;
        int bits, chs, streamed;
    };
    struct Range {
        int from, to;
    };
    int number = 0;
    CAudioProcessor processor([&](const CStr& like, bool& inTemp) {
        inTemp = true;
        const std::string ending = like.upperCase().pos(".AIF") >= 0 ? ".aif" : ".wav";
        return CStr(path(std::to_string(number++) + ending).c_str());
    });
    Values left = noise(5000, 1), right = noise(5000, 2);
    for (Values* side : {&left, &right})
        for (float& v : *side) v *= 0.7f;
    for (const Format& f : {Format{"a.wav", 16, 2, 1},
                            {"b.wav", 24, 1, 0},
                            {"c.wav", 32, 2, 1},
                            {"d.aif", 16, 1, 1},
                            {"e.aif", 24, 2, 0}}) {
        write(path(f.name), 48000, f.bits, f.chs, left, right);
        CSample source;
        source.streamed = f.streamed;
        ASSERT_TRUE(source.open(path(f.name).c_str()));
        const Values in = allFrames(source);
        for (const Range& r : {Range{0, 5000}, {1000, 4100}, {777, 777}, {4999, 5000}, {3, 1300}})
            for (int mode = 0; mode <= processFlatten; mode++) {
                const std::unique_ptr<CSample> made(processor.process(mode, &source, r.to, r.from));
                const bool menuOnly =
                    mode == processBeatslice || mode == processAutoslice || mode == processFlatten;
                ASSERT_EQ(made == nullptr, menuOnly) << mode;
                if (menuOnly) continue;
                EXPECT_FALSE(made->keep);
                EXPECT_TRUE(made->cached);
                CSample back;
                ASSERT_TRUE(back.open(made->filename));
                EXPECT_EQ(back.rate, 48000.0f);
                EXPECT_EQ(back.chs, mode == processMono ? 1 : f.chs);
                ASSERT_EQ(allFrames(back), edited(in, f.chs, f.bits, mode, r.from, r.to))
                    << f.name << " mode " << mode << " " << r.from << " to " << r.to;
            }
        for (const Range& r : {Range{-500, 100}, {4000, 9000}}) {
            const std::unique_ptr<CSample> made(
                processor.process(processCut, &source, r.from, r.to));
            EXPECT_EQ(made->getFrames(), r.from < 0 ? 4900 : 4000) << "clamped";
        }
    }
}

/// Silence has no peak; without a name, or on a full disk, nothing is left behind.
TEST_F(CAudioProcessorTest, NothingIsLeftBehind) {
    const Values silence(3000, 0.0f);
    write(path("s.wav"), 44100, 16, 1, silence, silence);
    CSample source;
    ASSERT_TRUE(source.open(path("s.wav").c_str()));
    CStr name;
    CAudioProcessor processor([&](const CStr&, bool&) { return name; });
    EXPECT_EQ(processor.process(processNormalize, &source, 0, 3000), nullptr);
    name = path("n.wav").c_str();
    const std::unique_ptr<CSample> made(processor.process(processNormalize, &source, 0, 3000));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(bytesOf(path("n.wav")), bytesOf(path("s.wav")));
    name = path("full.wav").c_str();
    std::filesystem::create_symlink("/dev/full", path("full.wav"));
    EXPECT_EQ(processor.process(processDelete, &source, 0, 3000), nullptr);
    EXPECT_FALSE(std::filesystem::is_symlink(path("full.wav")));
    EXPECT_TRUE(diskWriteFailed.exchange(false));
    EXPECT_TRUE(CAudioProcessor::getText(processMono) == "Convert to mono");
    EXPECT_TRUE(CAudioProcessor::getText(processFlatten + 1).empty());
}
