#include "audiofiles/CAudioProcessor.h"
#include "SampleFixture.h"
#include "base/FullDisk.h"
#include "support/Rows.h"

#include <cmath>

using CAudioProcessorTest = SampleFiles;

namespace {

using Values = std::vector<float>;

/// What a value that an edit has touched is read back as.
float stored(float value, int bits) {
    const double v = std::fmin(1.0, std::fmax(-1.0, double(value))), full = std::ldexp(1, bits - 1);
    return bits == 32 ? float(v) : float(std::trunc(v * (full - 1)) / full);
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
        const float* v =
            &in[std::size_t((inside && mode == processReverse ? from + to - 1 - f : f) * chs)];
        if (mode == processMono && chs == 2)
            out.push_back(stored((v[0] + v[1]) * 0.5f, bits));
        else if (mode != processCut || !inside)
            for (int c = 0; c < chs; c++) {
                float now = v[c];
                if (inside ? mode == processDelete : mode == processTrim) now = 0.0f;
                if (inside && mode == processNormalize) now = stored(now * (1.0f / peak), bits);
                if (inside && mode == processFadeIn) now = stored(now * part, bits);
                if (inside && mode == processFadeOut) now = stored(now * (1.0f - part), bits);
                out.push_back(now);
            }
    }
    return out;
}

} // namespace

TEST_F(CAudioProcessorTest, EditsEqualArrayArithmetic) {
    int number = 0;
    CAudioProcessor processor([&](const CStr& like, bool& inTemp) {
        inTemp = true;
        return CStr((path(std::to_string(number++)) + (like.asChar() + like.length() - 4)).c_str());
    });
    Values left = noise(5000, 1), right = noise(5000, 2);
    for (Values* side : {&left, &right})
        for (float& v : *side) v *= 0.7f;
    for (const auto& [name, bits, chs, streamed] :
         Rows<const char*, int, int, int>{{"a.wav", 16, 2, 1},
                                          {"b.wav", 24, 1, 0},
                                          {"c.wav", 32, 2, 1},
                                          {"d.aif", 16, 1, 1},
                                          {"e.aif", 24, 2, 0}}) {
        write(path(name), 48000, bits, chs, left, right);
        const auto source = opened(path(name), streamed);
        const Values in = allFrames(*source);
        const std::pair<int, int> ranges[] = {{-9, 5000}, {1000, 4100}, {777, 777}, {4999, 9000}};
        for (const auto& [from, to] : ranges)
            for (int mode = 0; mode <= processFlatten; mode++) {
                const std::unique_ptr<CSample> done(
                    processor.process(mode, source.get(), to, from));
                const bool menuOnly =
                    mode == processBeatslice || mode == processAutoslice || mode == processFlatten;
                ASSERT_EQ(done == nullptr, menuOnly) << mode;
                if (menuOnly) continue;
                EXPECT_TRUE(!done->keep && done->cached);
                ASSERT_EQ(allFrames(*opened(done->filename.asChar())),
                          edited(in, chs, bits, mode, std::max(from, 0), std::min(to, 5000)))
                    << name << " mode " << mode << " " << from << " to " << to;
            }
    }
}

/// Silence has no peak; without a name, or on a full disk, nothing is left behind.
TEST_F(CAudioProcessorTest, NothingIsLeftBehind) {
    const Values silence(3000, 0.0f);
    write(path("s.wav"), 44100, 16, 1, silence, silence);
    const auto source = opened(path("s.wav"));
    CStr name;
    CAudioProcessor processor([&](const CStr&, bool&) { return name; });
    EXPECT_EQ(processor.process(processNormalize, source.get(), 0, 3000), nullptr);
    name = path("n.wav").c_str();
    const std::unique_ptr<CSample> done(processor.process(processNormalize, source.get(), 0, 3000));
    EXPECT_EQ(bytesOf(path("n.wav")), bytesOf(path("s.wav")));
    name = path("full.wav").c_str();
    {
        const FullDisk full(1000);
        EXPECT_EQ(processor.process(processReverse, source.get(), 0, 3000), nullptr);
    }
    EXPECT_FALSE(std::filesystem::exists(path("full.wav")));
    EXPECT_TRUE(diskWriteFailed.exchange(false));
}
