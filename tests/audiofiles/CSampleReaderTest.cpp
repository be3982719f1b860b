#include "audiofiles/CSampleReader.h"
#include "SampleFixture.h"
#include "audiofiles/SampleRender.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

bool onAudioThread = false;

namespace {

constexpr int frames = 200000; // of 6 bytes: 18 buffers

/// A disk that can be slow: a read of the disk thread waits for leave.
class SlowReader : public CSampleReader {
public:
    using CSampleReader::CSampleReader;
    std::atomic<bool> slow{false}, waiting{false};

protected:
    std::int64_t readFile(std::int64_t offset, unsigned char* out, std::int64_t bytes) override {
        for (; slow && std::this_thread::get_id() != player; waiting = true)
            std::this_thread::yield();
        return CSampleReader::readFile(offset, out, bytes);
    }

private:
    const std::thread::id player = std::this_thread::get_id();
};

/// A streamed file of 24 bits, with its values.
class CSampleReaderTest : public SampleFiles {
protected:
    CSampleReaderTest() {
        write(path("s.wav"), 44100, 24, 2, noise(frames, 1), noise(frames, 2));
        sample = opened(path("s.wav"), 1);
        values = allFrames(*sample);
    }

    /// Reads and compares; returns how many frames at the end are silence instead.
    int silentFrom(CSampleReader& reader, std::int64_t first, int count, bool backward, bool live) {
        Values out(std::size_t(count) * 2, 9.0f), want(out.size());
        for (std::int64_t i = 0; i < count * 2; i++) {
            const std::int64_t at = first * 2 + i;
            if (at >= 0 && at < frames * 2) want[std::size_t(i)] = values[std::size_t(at)];
        }
        reader.getData(first, count, out.data(), backward, live);
        const auto bad = std::mismatch(out.begin(), out.end(), want.begin()).first;
        EXPECT_TRUE(std::all_of(bad, out.end(), [](float v) { return v == 0.0f; }));
        return int(out.end() - bad) / 2;
    }

    std::unique_ptr<CSample> sample;
    Values values;
};

} // namespace

bool insideCallback() {
    return onAudioThread;
}

/// Jumps, both ways, runs across the ends, blocks longer than a buffer, a disk thread that is there
/// or not: the frames are those of the file.
TEST_F(CSampleReaderTest, FramesAreThoseOfTheFile) {
    std::mt19937 random(3);
    for (bool served : {false, true}) {
        std::atomic<bool> done{false};
        std::thread disk([&] {
            while (!done && served) sample->reader->serve() ? void() : std::this_thread::yield();
        });
        for (int run = 0; run < 300; run++) {
            const int count = int(random() % (run % 10 == 0 ? 30000 : 900)) + 1;
            const bool backward = random() % 2;
            std::int64_t at = std::int64_t(random() % (frames + 2000)) - 1000;
            for (int block = 0; block < 20; block++, at += backward ? -count : count)
                ASSERT_EQ(silentFrom(*sample->reader, at, count, backward, false), 0)
                    << "at " << at << " count " << count << " backward " << backward;
        }
        done = true;
        disk.join();
    }
}

/// Silence where the disk is late, and then the right frames at the right place; an offline render
/// does not depend on it.
TEST_F(CSampleReaderTest, LateFramesAreSilenceWithoutShift) {
    constexpr int buffer = 65536 / 6, block = 1000;
    for (bool live : {true, false}) {
        SlowReader reader(*sample);
        EXPECT_EQ(silentFrom(reader, 0, block, false, live), 0);
        reader.slow = true;
        std::thread disk([&] { reader.serve(); });
        while (!reader.waiting) std::this_thread::yield();
        EXPECT_EQ(silentFrom(reader, buffer - 300, block, false, live), live ? block - 300 : 0);
        EXPECT_EQ(silentFrom(reader, buffer + 700, block, false, live), live ? block : 0);
        reader.slow = false;
        disk.join();
        EXPECT_EQ(silentFrom(reader, buffer + 1700, block, false, live), 0);
    }
}

TEST_F(CSampleReaderTest, PlayingOnDoesNotTouchTheSystem) {
    alignas(float) static unsigned char scratch[sampleScratchBytes];
    float left[256], right[256];
    for (int reverse : {0, 1}) {
        SampleSpan span{0.0, 1.3, reverse, 0, frames};
        primeReader(*sample, span, 256);
        rtReset();
        for (; span.pos < frames; span.pos += 256 * span.speed) {
            onAudioThread = true;
            render(*sample, span, 256, left, right, scratch, ReadMode::live);
            onAudioThread = false;
            sample->reader->serve();
        }
        EXPECT_EQ(rtViolations(), 0) << "reverse " << reverse;
    }
}

TEST_F(CSampleReaderTest, MissingFramesAreSilence) {
    std::filesystem::resize_file(path("s.wav"), 44 + 15000 * 6 + 2);
    EXPECT_EQ(silentFrom(*sample->reader, 14000, 5000, false, true), 4000);
    EXPECT_EQ(silentFrom(*sample->reader, 100000, 500, false, true), 500);
}
