#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "base/Deadline.h"
#include "base/TempFolder.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

/// Counts who reads.
class CountingReader : public CSampleReader {
public:
    using CSampleReader::CSampleReader;
    Shared<int> own{0}, others{0};

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
    constexpr int piece = 4096, perBuffer = 4; // of 4 bytes a frame
    const TempFolder folder;
    TestHost t;
    CSample* sample = CSample::createSample(folder.file("disk.wav"), 0);
    ASSERT_NE(sample, nullptr);
    const std::vector<float> silence(4 * perBuffer * piece);
    sample->writeFrames(int(silence.size()), silence.data(), silence.data());
    auto* reader = new CountingReader(*sample);
    sample->reader.reset(reader);
    t.host->samples.add(sample);
    std::vector<float> out(piece * 2);
    for (int i = 0; i < 4 * perBuffer; ++i) {
        reader->getData(i * piece, piece, out.data(), false, true);
        const int due = std::min(i / perBuffer + 1, 3);
        EXPECT_TRUE(comes([&] { return reader->others >= due; }));
    }
    EXPECT_TRUE(reader->own == 1 && reader->others == 3);
    t.host->parkWorkers();
    reader->getData(0, piece, out.data(), false, true);
    EXPECT_TRUE(reader->own == 2 && reader->others == 3) << "it stands still";
    t.host->unparkWorkers();
    EXPECT_TRUE(comes([&] { return reader->others == 4; }));
}
