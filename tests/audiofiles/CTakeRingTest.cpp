#include "SampleFixture.h"
#include "audiofiles/CSampleReader.h"
#include "base/FullDisk.h"
#include "support/RtTrap.h"

#include <atomic>
#include <climits>
#include <optional>
#include <thread>

extern bool onAudioThread;

namespace {

using Stretches = std::vector<std::pair<int, float>>; // lengths and values
constexpr float quarter = 8191.0f / 32768, half = 16383.0f / 32768;

/// A take of 8000 frames a second, 16 bits, mono: the ring holds 32000.
class CTakeRingTest : public SampleFiles {
protected:
    CTakeRingTest() { prepare(8000, 16, 1); }
    ~CTakeRingTest() override { diskWriteFailed = false; }

    void prepare(int rate, int bits, int chs) {
        take.setFormat(rate, bits, chs);
        take.prepareTake();
    }
    void createFile() {
        take.create(path("take.wav").c_str());
        take.writeHeader();
    }
    /// Frames of this value, in blocks of the audio thread.
    void record(int frames, float value) {
        const Values in(500, value);
        onAudioThread = true;
        for (int at = 0; at < frames; at += 500)
            take.writeFrames(std::min(500, frames - at), in.data(), in.data(), true);
        onAudioThread = false;
    }
    Stretches inFile() const {
        Stretches out;
        for (float v : allFrames(*opened(path("take.wav")))) {
            if (out.empty() || out.back().second != v) out.emplace_back(0, v);
            out.back().first++;
        }
        return out;
    }

    CSample take;
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
    EXPECT_EQ(inFile(), (Stretches{{2500, quarter}}));
    record(700, 0.5f);
    EXPECT_TRUE(take.flushBuffers(true));
    EXPECT_EQ(inFile(), (Stretches{{2500, quarter}, {700, half}}));
    EXPECT_EQ(take.peaks.count(), 3200 / 128);
    EXPECT_EQ(rtViolations(), 0);
}

/// All widths, while another thread writes: the bytes are those of frames that are written at once.
TEST_F(CTakeRingTest, TakeEqualsWhatIsWrittenAtOnce) {
    const Values left = noise(60000, 1), right = noise(60000, 2);
    for (int bits : {16, 24, 32})
        for (int chs : {1, 2}) {
            write(path("once.wav"), 96000, bits, chs, left, right);
            prepare(96000, bits, chs);
            createFile();
            std::atomic<bool> done{false};
            std::thread writer([&] {
                while (!done) take.flushBuffers(false);
            });
            for (std::size_t at = 0; at < 60000; at += 480)
                take.writeFrames(480, &left[at], &right[at], true);
            done = true;
            writer.join();
            take.flushBuffers(true);
            EXPECT_EQ(bytesOf(path("take.wav")), bytesOf(path("once.wav"))) << bits << " " << chs;
        }
}

/// What the ring has no room for is silence in its place, at the end of the take too. A full disk
/// keeps what was written, also of a frame that fits by half, and the take goes on afterwards.
TEST_F(CTakeRingTest, LostFramesKeepTheirTime) {
    createFile();
    std::optional<FullDisk> disk(44 + 5000 * 2 + 1);
    record(6000, 0.25f);
    EXPECT_TRUE(take.flushBuffers(false));
    EXPECT_TRUE(diskWriteFailed.exchange(false));
    EXPECT_EQ(inFile(), (Stretches{{5000, quarter}}));
    record(40000, 0.25f);
    EXPECT_FALSE(take.flushBuffers(false));
    EXPECT_TRUE(diskWriteFailed);
    disk.reset();
    EXPECT_TRUE(take.flushBuffers(false));
    record(41000, 0.5f);
    EXPECT_TRUE(take.flushBuffers(true));
    EXPECT_EQ(inFile(), (Stretches{{37000, quarter}, {9000, 0.0f}, {23000, half}, {18000, 0.0f}}));
}

/// Thirteen hours of mono up to the longest file there can be, with holes in place of the silence.
TEST_F(CTakeRingTest, FilesGrowUpToTwoGigabytes) {
    constexpr int most = (INT_MAX - 44) / 2;
    createFile();
    take.frames = most - 600;
    const Values values(1000, 0.5f);
    take.writeFrames(1000, values.data(), values.data());
    EXPECT_TRUE(diskWriteFailed);
    take.writeHeader();

    const auto in = opened(path("take.wav"), 1);
    ASSERT_EQ(in->getFrames(), most);
    Values want(1, 0.0f), streamed(602), read(602);
    want.resize(601, half);
    want.push_back(0.0f);
    in->reader->getData(most - 601, 602, streamed.data(), true, true);
    in->readFrames(most - 601, 602, read.data());
    EXPECT_TRUE(streamed == want && read == want);
}
