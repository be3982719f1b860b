#include "project/AutoSave.h"

#include "base/CIniFile.h"
#include "base/Deadline.h"
#include "base/FullDisk.h"
#include "base/Paths.h"
#include "project/ProjectFixture.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Lets the writer come to its end; false after ten seconds.
bool finish(AutoSave& autoSave) {
    return comes([&] { return !autoSave.writing(); });
}

} // namespace

/// A copy is made after a change, not without one, not before the pause is over, and it goes when
/// the project is saved.
TEST(AutoSave, CopiesWhatIsUnsaved) {
    ProjectFixture f;
    TempFolder folder;
    const CStr path = folder.file("song.qv"), copy = folder.file("song.recovery.qv");
    ASSERT_TRUE(saveProject(f.project, path));
    AutoSave autoSave(f.project);
    const auto change = [&f](const char* id) {
        f.host->id = id;
        f.host->setModified();
    };
    const auto copied = [&](const char* id, int now) {
        autoSave.idle(now);
        EXPECT_TRUE(finish(autoSave));
        autoSave.idle(now);
        return folder.read("song.recovery.qv").find(id) != std::string::npos;
    };
    EXPECT_FALSE(copied("one", 1000) || fileExists(copy)) << "nothing has changed";
    change("one");
    EXPECT_TRUE(copied("one", 2000));
    EXPECT_TRUE(f.host->modified()) << "a copy is no save";
    change("two");
    EXPECT_FALSE(copied("two", 3900)) << "too early";
    EXPECT_TRUE(copied("two", 1000000));
    std::remove(copy.asChar());
    EXPECT_FALSE(copied("two", 1500000)) << "it was copied already";
    change("lost");
    autoSave.idle(2000000); // the save comes before the copy is done
    f.host->markSaved(f.host->saveMark());
    autoSave.discard();
    EXPECT_TRUE(finish(autoSave));
    autoSave.idle(2000000);
    EXPECT_FALSE(fileExists(copy));
    {
        AutoSave last(f.project); // the program ends before the copy is done
        f.host->setModified();
        last.idle(0);
        f.host->markSaved(f.host->saveMark());
        last.discard();
    }
    EXPECT_FALSE(fileExists(copy));
    EXPECT_FALSE(fileExists(copy + "~"));
}

/// What a crash has left is listed, opened as unsaved changes of its project, and goes when these
/// are saved.
TEST(AutoSave, RecoversAndGoesOn) {
    ProjectFixture f;
    TempFolder folder;
    const CStr path = folder.file("song.qv"), copy = folder.file("song.recovery.qv");
    CStringList recent;
    recent.append(path);
    ASSERT_TRUE(saveProject(f.project, path));
    f.host->id = "two";
    f.host->setModified();
    AutoSave(f.project).idle(0); // ends without a word, as in a crash
    const std::vector<LeftCopy> left = leftCopies(recent);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].path, copy);
    EXPECT_EQ(left[0].projectFile, path);
    EXPECT_FALSE(left[0].outdated);
    f.host->id = "lost";

    AutoSave autoSave(f.project), other(f.project);
    EXPECT_EQ(autoSave.recover(left[0]), LoadResult::good);
    EXPECT_EQ(other.recover(left[0]), LoadResult::notProject) << "it is taken";
    EXPECT_EQ(f.host->id, "two");
    EXPECT_EQ(f.host->projectFile, path);
    EXPECT_TRUE(f.host->modified());
    ASSERT_TRUE(saveProject(f.project, path));
    autoSave.discard();
    EXPECT_FALSE(fileExists(copy));
}

/// No session writes to the copy of another, or to one that a crash has left, and none offers what
/// is in use.
TEST(RecoveryFile, BelongsToOneSession) {
    TempFolder folder;
    const CStr path = folder.write("song.qv", "project");
    const CStr first = folder.file("song.recovery.qv"), second = folder.file("song.recovery1.qv");
    CStringList recent;
    recent.append(path);
    CMemoryStream content;
    content.writeStr("copy");
    const pid_t self = getpid(), pid = fork(); // another session, until it is killed
    if (pid == 0) {
        RecoveryFile theirs(path);
        while (getppid() == self) theirs.write(content);
        _exit(0);
    }
    ASSERT_TRUE(comes([&] { return getFileSize(first) > 0; }));
    {
        RecoveryFile mine(path);
        for (int i = 0; i < 200; ++i) {
            ASSERT_TRUE(mine.write(content));
            ASSERT_EQ(leftCopies(recent).size(), 0u) << i;
        }
        EXPECT_EQ(mine.path(), second);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        ASSERT_EQ(leftCopies(recent).size(), 1u);
        EXPECT_EQ(leftCopies(recent)[0].path, first);
        mine.remove();
        EXPECT_TRUE(mine.write(content)) << "removed, it begins anew";
        EXPECT_EQ(mine.path(), second) << "what was left is not lost";
        EXPECT_FALSE(RecoveryFile(path).takeOver(second));
    }
    const std::vector<LeftCopy> left = leftCopies(recent);
    ASSERT_EQ(left.size(), 2u);
    for (const LeftCopy& one : left) EXPECT_TRUE(setAside(one));
    EXPECT_FALSE(setAside(left[0]));
    EXPECT_EQ(leftCopies(recent).size(), 0u);
    EXPECT_TRUE(fileExists(first + "~") && fileExists(second + "~"));
    folder.write("song.recovery.qv", "a later one");
    EXPECT_TRUE(setAside(leftCopies(recent)[0]));
    EXPECT_NE(folder.read("song.recovery.qv~"), "a later one");
    EXPECT_EQ(folder.read("song.recovery2.qv~"), "a later one");
}

/// Saved elsewhere without success, the project still has its copy, until there is one under its
/// new name, or beside the settings if there is no room; that one knows whose it is.
TEST(AutoSave, ACopyGoesNoSoonerThanTheNextIsThere) {
    ProjectFixture f;
    TempFolder folder, settings;
    const CStr path = folder.file("song.qv"), copy = folder.file("song.recovery.qv");
    ASSERT_TRUE(saveProject(f.project, path));
    AutoSave autoSave(f.project);
    int now = 0;
    const auto change = [&] {
        f.host->setModified();
        autoSave.idle(now += 100000000);
        EXPECT_TRUE(finish(autoSave));
        autoSave.idle(now);
    };
    inifile = settings.file("none/Sondrava.ini");
    change();
    EXPECT_TRUE(fileExists(copy));
    EXPECT_FALSE(saveProject(f.project, folder.file("none/new.qv")));
    change();
    EXPECT_TRUE(fileExists(copy)) << "there is room nowhere";
    inifile = settings.file("Sondrava.ini");
    change();
    EXPECT_FALSE(fileExists(copy));
    {
        AutoSave crashed(f.project); // what holds it ends without a word
        crashed.idle(now);
    }
    CStringList none;
    const std::vector<LeftCopy> left = leftCopies(none);
    ASSERT_EQ(left.size(), 1u) << "the other one is in use";
    EXPECT_EQ(left[0].projectFile, folder.file("none/new.qv"));
    f.host->projectFile = path;
    change();
    EXPECT_TRUE(fileExists(copy));
    autoSave.discard();
    EXPECT_FALSE(fileExists(copy));
    EXPECT_EQ(leftCopies(none).size(), 1u);
    inifile = "";
}

/// With the disk full a copy that stands beside the project is made anew beside the settings.
TEST(RecoveryFile, MovesWhereThereIsRoom) {
    TempFolder folder, settings;
    inifile = settings.file("Sondrava.ini");
    CMemoryStream content;
    content.writeStr("copy");
    RecoveryFile file(folder.file("song.qv"));
    ASSERT_TRUE(file.write(content));
    {
        const FullDisk full(1000);
        CMemoryStream larger;
        larger.setSize(2000);
        EXPECT_FALSE(file.write(larger));
        EXPECT_FALSE(folder.read("song.recovery.qv").empty()) << "there is room nowhere";
    }
    const CStr away = folder.path + "-away";
    ASSERT_EQ(std::rename(folder.path.asChar(), away.asChar()), 0);
    EXPECT_TRUE(file.write(content));
    EXPECT_EQ(file.path(), settings.file("unsaved.recovery.qv"));
    ASSERT_EQ(std::rename(away.asChar(), folder.path.asChar()), 0);
    file.remove();
    inifile = "";
}
