#include "audiofiles/CTakeRing.h"
#include "SampleFixture.h"
#include "audiofiles/SampleRender.h"
#include "support/RtTrap.h"

#include <atomic>
#include <climits>
#include <csignal>
#include <sys/resource.h>
#include <thread>

extern bool onAudioThread;

namespace {

constexpr int block = 441;

/// A take of 8000 frames a second, 16 bits, mono: the ring holds 32000.
class CTakeRingTest : public SampleFiles {
protected:
    CTakeRingTest() {
        take.setFormat(8000, 16, 1);
        take.prepareTake();
        diskWriteFailed = false;
    }
    ~CTakeRingTest() override { diskWriteFailed = false; }

    void createFile() {
        take.create(path("take.wav").c_str());
        take.writeHeader();
    }

    /// Frames of this value each, as a block of the audio thread.
    void record(int frames, float value) {
        const std::vector<float> in(std::size_t(frames), value);
        onAudioThread = true;
        for (int at = 0; at < frames; at += block)
            take.writeFrames(std::min(block, frames - at), &in[std::size_t(at)],
                             &in[std::size_t(at)], true);
        onAudioThread = false;
    }

    /// Stretches of equal frames of the file, as lengths and values.
    std::vector<std::pair<int, float>> stretches() const {
        CSample in;
        EXPECT_TRUE(in.open(path("take.wav").c_str()));
        std::vector<std::pair<int, float>> out;
        for (float v : allFrames(in)) {
            if (out.empty() || out.back().second != v) out.emplace_back(0, v);
            out.back().first++;
        }
        return out;
    }

    using Stretches = std::vector<std::pair<int, float>>;
    CSample take;
    static constexpr float quarter = 8191.0f / 32768, half = 16383.0f / 32768;
};

} // namespace

/// Frames from before the file was made count; at each flush the file on disk is whole.
TEST_F(CTakeRingTest, FileFollowsTheTake) {
    rtReset();
    record(1000, 0.25f);
    EXPECT_FALSE(take.flushBuffers(false)) << "no file yet";
    createFile();
    EXPECT_FALSE(take.flushBuffers(false)) << "less than a quarter of a second";
    record(1500, 0.25f);
    EXPECT_TRUE(take.flushBuffers(false));
    EXPECT_EQ(stretches(), (Stretches{{2500, quarter}}));
    record(700, 0.5f);
    EXPECT_TRUE(take.flushBuffers(true));
    EXPECT_EQ(stretches(), (Stretches{{2500, quarter}, {700, half}}));
    EXPECT_EQ(take.peaks.count(), 3200 / 128);
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_FALSE(diskWriteFailed);
}

/// All widths, while another thread writes: the bytes are those of frames that are written at once.
TEST_F(CTakeRingTest, TakeEqualsWhatIsWrittenAtOnce) {
    const std::vector<float> left = noise(60000, 1), right = noise(60000, 2);
    for (int bits : {16, 24, 32})
        for (int chs : {1, 2}) {
            write(path("once.wav"), 96000, bits, chs, left, right);
            CSample sample;
            sample.setFormat(96000, bits, chs);
            sample.prepareTake();
            sample.create(path("take.wav").c_str());
            sample.writeHeader();
            std::atomic<bool> done{false};
            std::thread writer([&] {
                while (!done) sample.flushBuffers(false);
            });
            for (int at = 0; at < 60000; at += 480)
                sample.writeFrames(480, &left[std::size_t(at)], &right[std::size_t(at)], true);
            done = true;
            writer.join();
            sample.flushBuffers(true);
            EXPECT_EQ(bytesOf(path("take.wav")), bytesOf(path("once.wav"))) << bits << " " << chs;
        }
}

/// What the ring has no room for is silence in its place, at the end of the take too.
TEST_F(CTakeRingTest, LostFramesKeepTheirTime) {
    createFile();
    record(40000, 0.25f);
    EXPECT_TRUE(diskWriteFailed);
    EXPECT_TRUE(take.flushBuffers(false));
    record(20000, 0.5f);
    EXPECT_TRUE(take.flushBuffers(false));
    EXPECT_EQ(stretches(), (Stretches{{32000, quarter}, {8000, 0.0f}, {20000, half}}));
    record(33000, 0.25f);
    EXPECT_TRUE(take.flushBuffers(true));
    EXPECT_EQ(
        stretches(),
        (Stretches{{32000, quarter}, {8000, 0.0f}, {20000, half}, {32000, quarter}, {1000, 0.0f}}));
}

/// A full disk keeps what was written, also of a frame that fits by half; when there is room again
/// the take goes on at its time.
TEST_F(CTakeRingTest, FullDiskKeepsWhatWasWritten) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    createFile();
    rlimit small = before;
    small.rlim_cur = 44 + 5000 * 2 + 1;
    setrlimit(RLIMIT_FSIZE, &small);
    record(6000, 0.25f);
    EXPECT_TRUE(take.flushBuffers(false));
    EXPECT_TRUE(diskWriteFailed.exchange(false));
    EXPECT_EQ(stretches(), (Stretches{{5000, quarter}}));
    record(40000, 0.25f);
    EXPECT_FALSE(take.flushBuffers(false));
    EXPECT_TRUE(diskWriteFailed);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, old);
    EXPECT_TRUE(take.flushBuffers(false));
    record(9000, 0.5f);
    EXPECT_TRUE(take.flushBuffers(true));
    EXPECT_EQ(stretches(), (Stretches{{37000, quarter}, {9000, 0.0f}, {9000, half}}));
}

/// Thirteen hours of mono up to the longest file there can be, with holes in place of the silence.
TEST_F(CTakeRingTest, FilesGrowUpToTwoGigabytes) {
    constexpr int most = (INT_MAX - 44) / 2;
    CSample out;
    out.setFormat(22050, 16, 1);
    out.create(path("long.wav").c_str());
    out.frames = most - 600;
    const std::vector<float> values = noise(1000, 3);
    out.writeFrames(1000, values.data(), values.data());
    EXPECT_EQ(out.getFrames(), most);
    EXPECT_TRUE(diskWriteFailed);
    out.writeHeader();
    EXPECT_GT(double(out.getFrames()) / 22050, 12 * 3600.0);

    CSample in;
    in.streamed = 1;
    ASSERT_TRUE(in.open(path("long.wav").c_str()));
    ASSERT_EQ(in.getFrames(), most);
    alignas(float) static unsigned char scratch[sampleScratchBytes];
    float left[700], right[700];
    for (ReadMode mode : {ReadMode::direct, ReadMode::live})
        for (int reverse : {0, 1}) {
            const SampleSpan span{reverse ? 0.0 : most - 650.0, 1.0, reverse, 0, most + 50};
            ASSERT_TRUE(render(in, span, 700, left, right, scratch, mode));
            for (int i = 0; i < 700; i++) {
                const int at = (reverse ? 699 - i : i) - 50;
                const float want = at < 0 || at >= 600 ? 0.0f : values[std::size_t(at)];
                ASSERT_NEAR(left[i], want, 2.0f / 32768) << i << " reverse " << reverse;
            }
        }
}
