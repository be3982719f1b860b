#include "project/ProjectFixture.h"
#include "support/Places.h"

#include "base/CIniFile.h"
#include "base/FullDisk.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "engine/CFreezeItem.h"
#include "project/AutoSave.h"
#include "project/ProjectWriter.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <random>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::mutex flushing;
std::vector<std::string> flushed; ///< the files that were brought to the disk, in order

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

/// Takes note of each call.
extern "C" int fsync(int fd) {
    std::error_code failed;
    const std::scoped_lock guard(flushing);
    flushed.push_back(fs::read_symlink("/proc/self/fd/" + std::to_string(fd), failed));
    return int(syscall(SYS_fsync, fd));
}

TEST(Saving, ReplacesTheFileAndKeepsTheOneBefore) {
    ProjectFixture f;
    TempFolder folder;
    const CStr path = folder.write("song.qv", "old");
    for (const char* version : {"first", "second"}) {
        f.host->id = version;
        f.host->setModified();
        EXPECT_TRUE(saveProject(f.project, path));
        EXPECT_FALSE(f.host->modified());
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
        EXPECT_TRUE(f.host->modified());
    }
    inifile = "";
}

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
    const auto* found = f.host->samples.first();
    EXPECT_EQ(found->filename, moved + "song_audio/loop.wav");
    EXPECT_TRUE(found->valid);
    fs::rename(moved.asChar(), to.path.asChar());
}

/// Frozen tracks come along too, and what has no room stays where it was, after one message.
TEST(Saving, WhatCannotBeCopiedIsToldOnce) {
    ProjectFixture f;
    TempFolder from, to;
    CSeq* seq = f.device.add(new CSeq(f.host));
    CSongTrack* track = seq->addTrack(trackAudio, seq->getProg(), nullptr);
    for (const char* name : {"a.wav", "b.wav", "c.wav"}) {
        writeWav(from.file(name), 40000);
        ASSERT_TRUE(f.host->addSample(from.file(name), 1));
    }
    ASSERT_TRUE(saveProjectAs(f.project, from.file("song.qv")));
    writeWav(from.file("song_audio/freeze.wav"), 64);
    auto* item = new CFreezeItem;
    auto* frozen = new CSample;
    frozen->streamed = 1;
    ASSERT_TRUE(frozen->open(from.file("song_audio/freeze.wav")));
    item->setSample(frozen);
    track->freezeItems.add(item);
    {
        const FullDisk full(100000); // enough for the project
        ASSERT_TRUE(saveProjectAs(f.project, to.file("new.qv")));
    }
    EXPECT_EQ(frozen->filename, to.file("new_audio/freeze.wav"));
    EXPECT_EQ(filesIn(to.file("new_audio")), 1);
    ASSERT_EQ(shown.size(), 1u);
    for (const char* name : {"a.wav", "b.wav", "c.wav"})
        EXPECT_NE(shown[0].find(from.file("song_audio/").asChar() + std::string(name)),
                  std::string::npos);
    ASSERT_EQ(openProject(f.project, to.file("new.qv"), false), LoadResult::good);
    for (const auto* sample : f.host->samples) EXPECT_TRUE(sample->valid);
    seq = static_cast<CSeq*>(f.host->comps.last());
    track = seq->getProg()->tracks.first();
    EXPECT_EQ(track->freezeItems.getCount(), 1);
}

/// Folders that only their case tells apart are two, and a name without a folder is one in the
/// folder of the program.
TEST(Saving, FoldersAreWhatTheDiskSays) {
    ProjectFixture f;
    TempFolder folder;
    for (const char* name : {"Songs", "songs"}) createDir(folder.file(name));
    writeWav(folder.file("loop.wav"), 64);
    ASSERT_TRUE(f.host->addSample(folder.file("loop.wav"), 1));
    ASSERT_TRUE(saveProjectAs(f.project, folder.file("Songs/song.qv")));
    ASSERT_TRUE(saveProjectAs(f.project, folder.file("songs/song.qv")));
    EXPECT_TRUE(fileExists(folder.file("songs/song_audio/loop.wav")));

    const fs::path before = fs::current_path();
    fs::current_path(folder.file("songs").asChar());
    EXPECT_EQ(openProject(f.project, "song.qv", false), LoadResult::good);
    EXPECT_TRUE(saveProject(f.project, "../other.qv"));
    fs::current_path(before);
    ASSERT_EQ(openProject(f.project, folder.file("other.qv"), false), LoadResult::good);
    const auto* sample = f.host->samples.first();
    EXPECT_EQ(sample->filename, folder.file("songs/song_audio/loop.wav"));
}

/// The only file that still has all of a project, and one that somebody has protected, are replaced
/// after a question alone; the former stays in any case.
TEST(Saving, AsksBeforeItReplacesWhatCannotComeBack) {
    for (const bool damaged : {true, false}) {
        ProjectFixture f;
        TempFolder folder;
        const CStr path = folder.file("song.qv");
        ASSERT_TRUE(saveProject(f.project, path));
        std::string bytes = folder.read("song.qv");
        if (damaged) bytes[bytes.find("modsb")] ^= 1;
        folder.write("song.qv", bytes);
        if (!damaged) fs::permissions(path.asChar(), fs::perms(0444));
        ASSERT_EQ(openProject(f.project, path, false), LoadResult::good);
        EXPECT_EQ(f.host->damaged, damaged);
        CMemoryStream copy;
        writeProject(f.project, &copy);
        RecoveryFile::writeMark(&copy, path, f.host->damaged);
        if (damaged) { // a copy against a crash knows it as well
            ASSERT_TRUE(copy.saveToFile(folder.file("copy")));
            ASSERT_EQ(openRecovery(f.project, folder.file("copy"), path), LoadResult::good);
            EXPECT_TRUE(f.host->damaged);
        }
        f.host->setModified();
        shown.clear();
        EXPECT_FALSE(saveProject(f.project, path));
        EXPECT_EQ(shown.size(), 1u);
        EXPECT_EQ(folder.read("song.qv"), bytes);
        EXPECT_TRUE(f.host->modified());
        saysYes = true;
        for (int round = 0; round < 2; ++round) EXPECT_TRUE(saveProject(f.project, path));
        EXPECT_EQ(folder.read("song.qv") == bytes, !damaged);
        EXPECT_EQ(folder.read("song.damaged.qv"), damaged ? bytes : "");
        EXPECT_EQ(shown.size(), damaged ? 2u : 3u) << "what was lost is lost once";
    }
}

TEST(Saving, AudioIsOnTheDiskFirst) {
    ProjectFixture f;
    TempFolder folder;
    ASSERT_TRUE(saveProject(f.project, folder.file("song.qv")));
    const CStr take = f.host->getAudioFolder(true, false, false) + "/take.wav";
    writeWav(take, 64);
    ASSERT_TRUE(f.host->addSample(take, 1));
    flushed.clear();
    ASSERT_TRUE(saveProject(f.project, folder.file("song.qv")));
    const auto audio = std::ranges::find(flushed, take.asChar());
    const auto project = std::ranges::find_if(
        flushed, [](const std::string& name) { return name.find("temp_file_name") < name.size(); });
    EXPECT_TRUE(audio < project && project != flushed.end());
}

/// The default project keeps nothing of the one that it was made from but what is in it.
TEST(Saving, ACopyLeavesTheProjectAlone) {
    ProjectFixture f;
    TempFolder folder;
    ASSERT_TRUE(saveProject(f.project, folder.file("song.qv")));
    f.host->setModified();
    EXPECT_TRUE(saveCopy(f.project, folder.file("default.qv")));
    EXPECT_TRUE(f.host->modified());
    EXPECT_EQ(f.host->projectFile, folder.file("song.qv"));
    EXPECT_EQ(folder.read("default.qv"), folder.read("song.qv"));
    EXPECT_FALSE(saveCopy(f.project, folder.file("none/default.qv")));
    EXPECT_EQ(f.host->projectFile, folder.file("song.qv"));
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

/// Files that are away are no reason for a question: their samples keep place and path through
/// every save, also into another folder, and sound again when the files are back.
TEST(MissingSamples, KeepTheirPathsThroughSaves) {
    ProjectFixture f;
    const TempFolder from, to, apart;
    const auto sample = [&](int i) { return f.host->samples.items(i); };
    writeWav(apart.file("loop.wav"), 64);
    writeWav(apart.file("other.wav"), 64);
    ASSERT_TRUE(f.host->addSample(apart.file("loop.wav"), 1));
    ASSERT_TRUE(saveProjectAs(f.project, from.file("song.qv"))); // takes it along
    ASSERT_TRUE(f.host->addSample(apart.file("other.wav"), 1));
    ASSERT_TRUE(saveProject(f.project, from.file("song.qv")));
    const CStr paths[] = {from.file("song_audio/loop.wav"), apart.file("other.wav")};
    for (const CStr& path : paths) fs::rename(path.asChar(), (path + ".away").asChar());

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
    for (const CStr& path : paths) fs::rename((path + ".away").asChar(), path.asChar());
    ASSERT_EQ(openProject(f.project, to.file("new.qv"), false), LoadResult::good);
    EXPECT_TRUE(sample(0)->valid && sample(1)->valid);
}

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
    const std::string renderer = builtFile("bin/sondrava-render");
    for (const char* word :
         {"env", "-C", here.path.asChar(), renderer.c_str(), "--save", copy.asChar(), "song.qv"})
        words.append(word);
    ASSERT_EQ(runProcess(words), 0);
    ASSERT_EQ(openProject(f.project, copy, false), LoadResult::good);
    const auto* sample = f.host->samples.first();
    ASSERT_NE(sample, nullptr);
    EXPECT_EQ(sample->filename, here.file("song_audio/take.wav"));
    EXPECT_EQ(sample->frames, 1000);
}
