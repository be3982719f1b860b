#include "project/ProjectFixture.h"

#include "base/CIniFile.h"
#include "base/FullDisk.h"
#include "base/Paths.h"
#include "project/RecoveryFile.h"

#include <filesystem>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

int filesIn(const CStr& folder) {
    return int(std::distance(fs::directory_iterator(folder.asChar()), fs::directory_iterator()));
}

void addSamples(ProjectFixture& f, int count) {
    for (int i = 0; i < count; ++i) {
        auto* sample = new CSample;
        sample->filename = "noise";
        sample->takeData(static_cast<unsigned char*>(std::calloc(40000, 4)), 40000);
        f.host->samples.add(sample);
    }
}

} // namespace

/// A later version takes the place of an earlier one, which stays beside it.
TEST(Saving, ReplacesTheFileAndKeepsTheOneBefore) {
    ProjectFixture f;
    TempFolder folder;
    const CStr path = folder.write("song.qv", "old");
    for (const char* version : {"first", "second"}) {
        f.host->id = version;
        f.host->setModified();
        EXPECT_TRUE(saveProject(f.project, path));
        EXPECT_FALSE(f.host->modified);
        EXPECT_EQ(f.host->projectFile, path);
    }
    EXPECT_NE(folder.read("song.qv~").find("first"), std::string::npos);
    EXPECT_EQ(filesIn(folder.path), 2);
    f.host->id = "lost";
    EXPECT_EQ(openProject(f.project, path, false), LoadResult::good);
    EXPECT_EQ(f.host->id, "second");
    EXPECT_EQ(shown, std::vector<std::string>{});
}

/// A full disk and a folder that is not there: one message, the old file, nothing else, and no copy
/// against a crash either. The changes are unsaved as before.
TEST(Saving, FailureLeavesTheOldFileAlone) {
    ProjectFixture f;
    TempFolder folder;
    addSamples(f, 3);
    folder.write("song.qv", "old");
    inifile = folder.file("none/Sondrava.ini");
    CMemoryStream content;
    content.setSize(400000);
    const FullDisk full(300000);
    f.host->setModified();
    for (const char* name : {"song.qv", "none/song.qv"}) {
        shown.clear();
        EXPECT_FALSE(saveProject(f.project, folder.file(name)));
        EXPECT_EQ(shown, std::vector<std::string>{"Error: There was an error writing the project. "
                                                  "Free up some disk space then try again"});
        EXPECT_FALSE(RecoveryFile(folder.file(name)).write(content));
        EXPECT_EQ(folder.read("song.qv"), "old");
        EXPECT_EQ(filesIn(folder.path), 1);
        EXPECT_TRUE(f.host->modified);
    }
    inifile = "";
}

/// Killed at any moment while it saves, the program leaves one whole project under the name.
TEST(Saving, SurvivesBeingKilled) {
    constexpr int kills = 40, longestUs = 30000;
    TempFolder folder;
    const CStr path = folder.file("song.qv");
    ProjectFixture f;
    addSamples(f, 10);
    ASSERT_TRUE(saveProject(f.project, path));
    std::mt19937 chance(4711);
    for (int i = 0; i < kills; ++i) {
        const useconds_t us = chance() % longestUs;
        const pid_t pid = fork();
        while (pid == 0) saveProject(f.project, path);
        usleep(us);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        for (const CStr& version : {path, path + "~"}) {
            if (!fileExists(version)) continue; // saved once only
            ASSERT_EQ(openProject(f.project, version, false), LoadResult::good) << i << ", " << us;
            ASSERT_EQ(f.host->samples.getCount(), 10);
        }
        ASSERT_EQ(shown, std::vector<std::string>{});
    }
}

/// Saved elsewhere, a project takes its files along; moved as a whole, it finds them by name.
TEST(Saving, AudioGoesAlongIntoAnotherFolder) {
    ProjectFixture f;
    TempFolder from, to;
    writeWav(from.file("loop.wav"), 64);
    ASSERT_TRUE(f.host->addSample(from.file("loop.wav"), 1));
    ASSERT_TRUE(saveProjectAs(f.project, to.file("song.qv")));
    EXPECT_EQ(f.host->audioFolder, "song_audio");
    EXPECT_TRUE(fileExists(to.file("song_audio/loop.wav")));

    const CStr moved = to.path + "-moved/";
    fs::rename(to.path.asChar(), moved.asChar());
    ASSERT_EQ(openProject(f.project, moved + "song.qv", false), LoadResult::good);
    const auto* found = static_cast<CSample*>(f.host->samples.first());
    EXPECT_EQ(found->filename, moved + "song_audio/loop.wav");
    EXPECT_TRUE(found->valid);
    fs::rename(moved.asChar(), to.path.asChar());
}

/// What waits in a temporary place comes into the audio folder with the next save.
TEST(Saving, CachedAudioIsArchived) {
    ProjectFixture f;
    TempFolder temporary, folder;
    const CStr project = folder.file("song.qv");
    ASSERT_TRUE(saveProjectAs(f.project, project));
    writeWav(temporary.file("take.wav"), 64);
    CSample* take = f.host->addSample(temporary.file("take.wav"), 1);
    take->cached = true;
    EXPECT_TRUE(saveProject(f.project, project));
    EXPECT_FALSE(take->cached);
    EXPECT_EQ(take->filename, folder.file("song_audio/take.wav"));
    EXPECT_EQ(folder.read("song_audio/take.wav"), temporary.read("take.wav"));
    take->cached = true;
    take->filename = "/no/such.wav";
    saveProject(f.project, project);
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].rfind("Error: Could not copy file to ", 0), 0u);
}
