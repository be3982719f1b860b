#include "project/ProjectFixture.h"

#include <filesystem>

/// Files that are away are no reason for a question: their samples keep place and path through
/// every save, also into another folder, and sound again when the files are back.
TEST(MissingSamples, KeepTheirPathsThroughSaves) {
    ProjectFixture f;
    const TempFolder from, to, apart;
    const auto sample = [&](int i) { return static_cast<CSample*>(f.host->samples.items(i)); };
    writeWav(apart.file("loop.wav"), 64);
    writeWav(apart.file("other.wav"), 64);
    ASSERT_TRUE(f.host->addSample(apart.file("loop.wav"), 1));
    ASSERT_TRUE(saveProjectAs(f.project, from.file("song.qv"))); // takes it along
    ASSERT_TRUE(f.host->addSample(apart.file("other.wav"), 1));
    ASSERT_TRUE(saveProject(f.project, from.file("song.qv")));
    const CStr paths[] = {from.file("song_audio/loop.wav"), apart.file("other.wav")};
    for (const CStr& path : paths)
        std::filesystem::rename(path.asChar(), (path + ".away").asChar());

    const CStr projects[] = {from.file("song.qv"), from.file("song.qv"), to.file("new.qv")};
    for (const CStr& project : projects) {
        ASSERT_EQ(openProject(f.project, project, false), LoadResult::good);
        for (int i = 0; i < 2; ++i) {
            EXPECT_FALSE(sample(i)->valid);
            EXPECT_EQ(sample(i)->filename, paths[i]) << project.asChar();
        }
        ASSERT_TRUE(saveProject(f.project, project));
        ASSERT_TRUE(saveProjectAs(f.project, to.file("new.qv")));
    }
    EXPECT_EQ(shown, std::vector<std::string>{});
    for (const CStr& path : paths)
        std::filesystem::rename((path + ".away").asChar(), path.asChar());
    ASSERT_EQ(openProject(f.project, to.file("new.qv"), false), LoadResult::good);
    EXPECT_TRUE(sample(0)->valid && sample(1)->valid);
}
