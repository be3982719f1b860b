#include "base/Process.h"
#include "project/ProjectFixture.h"

/// A project that is opened by a name of its folder and saved elsewhere finds its audio from any
/// other folder.
TEST(RenderTool, SavesWhereTheAudioIs) {
    ProjectFixture f;
    TempFolder apart, here, there;
    writeWav(apart.file("take.wav"), 1000);
    ASSERT_TRUE(f.host->addSample(apart.file("take.wav"), 1));
    ASSERT_TRUE(saveProjectAs(f.project, here.file("song.qv")));
    CStringList words;
    const CStr copy = there.file("copy.qv");
    for (const char* word : {"env", "-C", here.path.asChar(), SONDRAVA_BIN "/sondrava-render",
                             "--save", copy.asChar(), "song.qv"})
        words.append(word);
    ASSERT_EQ(runProcess(words), 0);
    ASSERT_EQ(openProject(f.project, copy, false), LoadResult::good);
    const auto* sample = static_cast<CSample*>(f.host->samples.first());
    ASSERT_NE(sample, nullptr);
    EXPECT_EQ(sample->filename, here.file("song_audio/take.wav"));
    EXPECT_EQ(sample->frames, 1000);
}
