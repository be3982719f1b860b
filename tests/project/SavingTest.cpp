#include "project/ProjectFixture.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "project/RecoveryFile.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <random>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Names in a folder, in order.
std::vector<std::string> namesIn(const CStr& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.asChar()))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

/// Runs `work` in a process of its own and returns its exit status, -1 if it was killed.
int inChild(const std::function<int()>& work) {
    const pid_t pid = fork();
    if (pid == 0) _exit(work());
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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

/// A later version takes the place of an earlier one, which stays beside it, and leaves links,
/// permissions and everything else in the folder alone.
TEST(Saving, ReplacesTheFileAndKeepsTheOneBefore) {
    ProjectFixture f;
    TempFolder folder;
    const CStr real = folder.write("real.qv", "old"), link = folder.file("link.qv");
    fs::create_symlink("real.qv", link.asChar());
    chmod(real.asChar(), 0640);
    f.host->id = "first";
    f.host->setModified();
    EXPECT_TRUE(saveProject(f.project, link));
    EXPECT_FALSE(f.host->modified);
    EXPECT_EQ(f.host->projectFile, link);
    EXPECT_EQ(folder.read("real.qv~"), "old");
    f.host->id = "second";
    EXPECT_TRUE(saveProject(f.project, link));
    EXPECT_NE(folder.read("real.qv~").find("first"), std::string::npos);
    EXPECT_NE(folder.read("real.qv").find("second"), std::string::npos);
    EXPECT_TRUE(fs::is_symlink(link.asChar()));
    EXPECT_EQ(namesIn(folder.path), (std::vector<std::string>{"link.qv", "real.qv", "real.qv~"}));
    struct stat info {};
    EXPECT_EQ(stat(real.asChar(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    f.host->id = "lost";
    EXPECT_EQ(openProject(f.project, link, false), LoadResult::good);
    EXPECT_EQ(f.host->id, "second");
    EXPECT_EQ(shown, std::vector<std::string>{});
}

namespace {

/// A small file system of our own in place of a folder, for this process alone; where that is not
/// allowed, files that grow no further.
void fillDisk(const CStr& folder) {
    constexpr rlim_t bytes = 300000;
    const CStr size = CStr("size=") + asStr(int(bytes));
    if (unshare(CLONE_NEWNS) == 0 &&
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        mount("none", folder.asChar(), "tmpfs", 0, size.asChar()) == 0)
        return;
    signal(SIGXFSZ, SIG_IGN);
    const rlimit most{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &most);
}

void forbidWriting(const CStr& folder) {
    chmod(folder.asChar(), 0555);
    if (geteuid() == 0 && setuid(65534) != 0) _exit(9);
}

} // namespace

/// A full disk and a folder that takes nothing: one message, the old file, nothing else, and no
/// copy against a crash either.
TEST(Saving, FailureLeavesTheOldFileAlone) {
    const std::string message = "Error: There was an error writing the project. Free up some disk "
                                "space then try again";
    const struct {
        const char* what;
        void (*harm)(const CStr& folder);
        bool oldFirst; ///< the file is there before the harm is done
    } cases[] = {{"full disk", fillDisk, false}, {"read-only folder", forbidWriting, true}};
    for (const auto& c : cases) {
        TempFolder folder, settings;
        const CStr path = folder.file("song.qv");
        const int status = inChild([&] {
            ProjectFixture f;
            addSamples(f, 3);
            inifile = settings.file("none/Sondrava.ini");
            chmod(folder.path.asChar(), 0755);
            if (c.oldFirst) folder.write("song.qv", "old");
            c.harm(folder.path);
            if (!c.oldFirst) folder.write("song.qv", "old");
            if (saveProject(f.project, path)) return 1;
            if (shown != std::vector<std::string>{message}) return 2;
            CMemoryStream content;
            content.setSize(400000);
            if (RecoveryFile(path).write(content)) return 3;
            if (folder.read("song.qv") != "old") return 4;
            return namesIn(folder.path) == std::vector<std::string>{"song.qv"} ? 0 : 5;
        });
        EXPECT_EQ(status, 0) << c.what;
        chmod(folder.path.asChar(), 0755);
    }
}

/// Killed at any moment while it saves, the program leaves one whole project under the name.
TEST(Saving, SurvivesBeingKilled) {
    constexpr int kills = 40, buses = 3;
    TempFolder folder;
    const CStr path = folder.file("song.qv");
    ProjectFixture f;
    addSamples(f, 10);
    for (int i = 0; i < buses; ++i) f.host->addSendClicked();
    f.host->settle();
    ASSERT_TRUE(saveProject(f.project, path));
    std::mt19937 chance(4711);
    std::uniform_int_distribution<int> delay(0, 30000);
    for (int i = 0; i < kills; ++i) {
        const int us = delay(chance);
        const pid_t pid = fork();
        if (pid == 0) {
            for (int round = 0;; ++round) {
                f.host->id = asStr(round);
                saveProject(f.project, path);
            }
        }
        usleep(useconds_t(us));
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        ASSERT_EQ(openProject(f.project, path, false), LoadResult::good) << i << ", " << us;
        ASSERT_EQ(f.host->samples.getCount(), 10);
        ASSERT_EQ(f.host->sends.getCount(), buses);
        ASSERT_EQ(shown, std::vector<std::string>{});
    }
    ASSERT_EQ(openProject(f.project, path + "~", false), LoadResult::good);
    EXPECT_EQ(f.host->samples.getCount(), 10);
}

/// Saved elsewhere, a project takes its files along; moved as a whole, it finds them by name.
TEST(Saving, AudioGoesAlongIntoAnotherFolder) {
    ProjectFixture f;
    TempFolder from, to;
    const CStr outside = from.file("loop.wav");
    writeWav(outside, 64);
    ASSERT_TRUE(f.host->addSample(outside, 1));
    ASSERT_TRUE(saveProjectAs(f.project, to.file("song.qv")));
    EXPECT_EQ(f.host->audioFolder, "song_audio");
    EXPECT_TRUE(fileExists(to.file("song_audio/loop.wav")));
    EXPECT_EQ(f.host->modified, false);

    fs::rename(to.path.asChar(), (to.path + "-moved").asChar());
    const CStr moved = to.path + "-moved/";
    ASSERT_EQ(openProject(f.project, moved + "song.qv", false), LoadResult::good);
    const auto* found = static_cast<CSample*>(f.host->samples.first());
    EXPECT_EQ(found->filename, moved + "song_audio/loop.wav");
    EXPECT_TRUE(found->valid);
    fs::rename(moved.asChar(), to.path.asChar());
}
