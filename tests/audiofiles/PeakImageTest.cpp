#include "SampleFixture.h"

#include <algorithm>
#include <cmath>
#include <thread>

using PeakImageTest = SampleFiles;

namespace {

int code(float v) {
    return int(std::floor(double(v) * 127 + 0.5)) + 127;
}

/// The least, the greatest and the power of each so many frames, as `told` tells them.
template <class F>
void expectWindows(const std::vector<float>& values, int chs, int frames, int count,
                   double tolerance, const std::string& name, F&& told) {
    for (int e = 0; e < count; e++)
        for (int c = 0; c < chs; c++) {
            float low = 0.0f, high = 0.0f;
            double squares = 0.0;
            for (int i = e * frames; i < e * frames + frames; i++) {
                low = std::min(low, values[std::size_t(i * chs + c)]);
                high = std::max(high, values[std::size_t(i * chs + c)]);
                squares += std::pow(double(values[std::size_t(i * chs + c)]), 2);
            }
            ASSERT_EQ(told(e)[c * 2], code(low)) << name << e;
            ASSERT_EQ(told(e)[c * 2 + 1], code(high)) << name << e;
            ASSERT_NEAR(told(e)[chs * 2 + c], std::sqrt(squares / frames) * 255, tolerance)
                << name << e;
        }
}

/// A run's power is that of its entries, each of which is rounded.
void expectImage(const PeakImage& peaks, const std::vector<float>& values, int chs,
                 const std::string& name) {
    constexpr int run = PeakImage::entriesPerRun;
    ASSERT_EQ(peaks.count(), int(values.size()) / chs / 128) << name;
    expectWindows(values, chs, 128, peaks.count(), 0.51, name + " entry ",
                  [&](int e) { return peaks.entry(e); });
    expectWindows(values, chs, 128 * run, peaks.count() / run, 1.02, name + " run ",
                  [&](int e) { return peaks.run(e); });
}

} // namespace

/// The image holds the extremes and the mean power of each window, whatever the width, however it
/// came about: from memory, from the file, or as the frames were written.
TEST_F(PeakImageTest, HoldsExtremesAndPowerOfEachWindow) {
    Values left = noise(20000, 3), right = noise(20000, 4), both;
    for (std::size_t i = 0; i < left.size(); i++) {
        left[i] *= float(i) / 20000;
        right[i] = std::fabs(right[i]);
        both.insert(both.end(), {left[i], right[i]});
    }
    for (const char* name : {"p.wav", "p.aif"})
        for (int bits : {16, 24, 32})
            for (int chs : {1, 2}) {
                if (bits == 32 && chs == 1 && name[2] == 'a') continue; // floats are kept there
                write(path(name), 44100, bits, chs, left, right);
                for (int streamed : {0, 1}) {
                    const auto in = opened(path(name), streamed);
                    in->peakfile();
                    EXPECT_FALSE(in->needsPeaks);
                    expectImage(in->peaks, allFrames(*in), chs, name);
                }
            }
    CSample out;
    out.setFormat(44100, 32, 2);
    out.create(path("w.wav").c_str());
    for (int at = 0, n = 1; at < 20000; at += n, n = std::min(n * 2, 20000 - at))
        out.writeFrames(n, &left[std::size_t(at)], &right[std::size_t(at)]);
    expectImage(out.peaks, both, 2, "while written");
}

/// A worker that shall pause stops soon; what was begun is finished later.
TEST_F(PeakImageTest, ScansStopAndGoOn) {
    struct Worker : CThread {
        void execute() override {}
    } worker;
    write(path("s.wav"), 44100, 16, 1, noise(9000, 1), noise(9000, 2));
    const auto sample = opened(path("s.wav"));
    worker.terminated = true;
    for (int last = 0; sample->needsPeaks; last = sample->peaks.count()) {
        sample->peakfile(&worker);
        ASSERT_LE(sample->peaks.count(), last + 8);
        ASSERT_GT(sample->peaks.count() + !sample->needsPeaks, last);
    }
    expectImage(sample->peaks, allFrames(*sample), 1, "in pieces");
}

TEST_F(PeakImageTest, GrowsUnderAReader) {
    constexpr int windows = 20000;
    PeakImage peaks;
    peaks.reset(1);
    std::thread writer([&] {
        for (int w = 0; w < windows; w++) peaks.add(Values(128, float(w % 100) / 127).data(), 128);
    });
    int last = 0, wrong = 0;
    while (last < windows) {
        const int count = peaks.count();
        for (int e = std::max(0, last - 3); e < count; e++)
            wrong += peaks.entry(e)[1] != e % 100 + 127;
        last = count;
    }
    writer.join();
    EXPECT_EQ(wrong, 0);
}
