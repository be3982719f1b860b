#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "base/Numbers.h"
#include "support/TestHost.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

/// Counts who reads.
class CountingReader : public CSampleReader {
public:
    using CSampleReader::CSampleReader;
    std::atomic<int> own{0}, others{0};

protected:
    std::int64_t readFile(std::int64_t offset, unsigned char* out, std::int64_t bytes) override {
        ++(std::this_thread::get_id() == player ? own : others);
        return CSampleReader::readFile(offset, out, bytes);
    }

private:
    const std::thread::id player = std::this_thread::get_id();
};

} // namespace

/// After the first buffer the playing side finds all that follows; while the workers stand still it
/// helps itself.
TEST(CDiskThread, ReadsAheadOfThePlayingSide) {
    constexpr int piece = 4096, frames = 16 * piece; // four buffers of 16384 frames of 4 bytes
    TestHost t;
    CSample* sample = CSample::createSample("/tmp/disk_thread_test.wav", 0);
    ASSERT_NE(sample, nullptr);
    std::vector<float> ramp(frames);
    for (int i = 0; i < frames; ++i) ramp[std::size_t(i)] = float(i) / frames;
    sample->writeFrames(frames, ramp.data(), ramp.data());
    sample->finalize();
    auto* reader = new CountingReader(*sample);
    sample->reader.reset(reader);
    t.host->samples.add(sample);
    std::vector<float> out(std::size_t(piece) * 2);
    for (int at = 0; at < frames; at += piece) {
        const int late = reader->others;
        reader->getData(at, piece, out.data(), false, true);
        for (int i = 0; i < piece; ++i)
            ASSERT_NEAR(out[std::size_t(i) * 2], ramp[std::size_t(at + i)], 2.0f / 32768) << at;
        const bool entered = at % (4 * piece) == 0 && at + 4 * piece < frames;
        for (int i = 0; i < 5000 && entered && reader->others == late; ++i) asSleep(1);
    }
    EXPECT_EQ(reader->own, 1);
    EXPECT_EQ(reader->others, 3);
    t.host->parkWorkers();
    reader->getData(0, piece, out.data(), false, true);
    asSleep(30);
    EXPECT_EQ(reader->own, 2);
    EXPECT_EQ(reader->others, 3) << "it stands still";
    t.host->unparkWorkers();
}
