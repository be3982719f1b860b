#include "SoundFixture.h"

#include <filesystem>

/// Opening a file plays all of it, and lets go of what an earlier one was set to.
TEST(CSampleClip, OpensWithItsWholeRange) {
    const std::string path = "/tmp/clip" + std::to_string(getpid()) + ".wav";
    const float silence[500] = {};
    for (int frames : {500, 1, 0}) {
        CSample out;
        out.setFormat(44100, 16, 1);
        out.create(path.c_str());
        out.writeHeader();
        out.writeFrames(frames, silence, silence);
        out.writeHeader();
        out.finalize();
        CSampleClip clip;
        clip.start = clip.end = 777;
        EXPECT_TRUE(clip.open(path.c_str()));
        EXPECT_EQ(clip.start, 0);
        EXPECT_EQ(clip.end, std::max(0, frames - 1));
    }
    std::filesystem::remove(path);
}
