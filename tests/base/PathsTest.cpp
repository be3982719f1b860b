#include "base/Paths.h"

#include "TempFolder.h"
#include "base/CFileManager.h"
#include "base/CStringList.h"

#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

TEST(Paths, AreTakenApart) {
    struct Case {
        const char *path, *folder, *name, *ext, *changed;
    };
    const Case cases[] = {
        {"/a/b.c.wav", "/a/", "b.c.wav", ".wav", "/a/b.c.mp3"},
        {"/b", "", "b", "", "/b.mp3"},
        {"c:\\x\\y.z", "c:\\x\\", "y.z", ".z", "c:\\x\\y.mp3"},
        {".hidden", "", ".hidden", ".hidden", ".hidden.mp3"},
        {"/a.b/song", "/a.b/", "song", "", "/a.b/song.mp3"},
        {"/a/b/", "/a/b/", "", "", "/a/b/.mp3"},
        {"", "", "", "", ".mp3"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(extractFilePath(c.path), c.folder) << c.path;
        EXPECT_EQ(extractFileName(c.path), c.name) << c.path;
        EXPECT_EQ(extractFileExt(c.path), c.ext) << c.path;
        EXPECT_EQ(changeFileExt(c.path, ".mp3"), c.changed) << c.path;
    }
    for (auto [folder, wanted] :
         {std::pair("/a/b/", "/a/"), {"/a/b", "/a/"}, {"/a", "/"}, {"/", "/"}, {"a", ""}})
        EXPECT_EQ(uplevel(folder), wanted) << folder;
    EXPECT_EQ(extractRootPath("c:\\x\\y") + extractRootPath("/x"), "c:\\");
    EXPECT_EQ(addSep(CStr("/a")) + addSep(CStr("b/")) + addSep(CStr()), "/a/b/");
}

TEST(Paths, TellWhatIsThere) {
    const TempFolder folder;
    const CStr file = folder.write("file", "abc");
    EXPECT_TRUE(fileExists(file) && fileExists("/dev/null") && fileExists(asAppname()));
    EXPECT_FALSE(fileExists(folder.path) || fileExists(""));
    EXPECT_TRUE(folderExists(folder.path + "/"));
    EXPECT_FALSE(folderExists(file) || folderExists(""));
    EXPECT_FALSE(isReadOnly(file) || isReadOnly(folder.file("missing")));
    EXPECT_TRUE(isReadOnly(folder.path)) << "it exists and cannot be appended to";
    EXPECT_FALSE(fileExists(folder.file("missing"))) << "asking made it";
    EXPECT_EQ(getFileSize(file) + getFileSize(folder.file("missing")), 3);
    EXPECT_TRUE(createDir(folder.file("a/b/c")) && createDir(folder.file("a/b/c")));
    EXPECT_FALSE(createDir(file + "/x"));
    EXPECT_TRUE(isFolderEmpty(folder.file("a/b/c")) && isFolderEmpty(folder.file("missing")));
    EXPECT_FALSE(isFolderEmpty(folder.path));
    EXPECT_TRUE(isRemovable("/media/stick/song.qv") && isRemovable("/run/media/me/x"));
    EXPECT_FALSE(isRemovable("/mediaplayer/x") || isRemovable("/proc/self"));
}

/// Beside the program as long as that can be written, by a user who is not root, else at home.
TEST(Paths, OwnFilesStandWhereTheyCanBeWritten) {
    const TempFolder folder;
    const auto choose = [&](const char* programs, fs::perms perms) {
        const CStr place = folder.file(programs);
        fs::permissions(place.asChar(), perms);
        const pid_t pid = fork();
        if (pid == 0) {
            setenv("HOME", folder.file("home").asChar(), 1);
            if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
            _exit(ownFile(place, "own.ini") == addSep(place) + "own.ini");
        }
        int status = 0;
        waitpid(pid, &status, 0);
        return WEXITSTATUS(status);
    };
    fs::permissions(folder.path.asChar(), fs::perms::all);
    createDir(folder.file("bin"));
    createDir(folder.file("home"));
    fs::permissions(folder.file("home").asChar(), fs::perms::all);
    EXPECT_EQ(choose("bin", fs::perms::all), 1);
    EXPECT_FALSE(folderExists(folder.file("home/.Sondrava"))) << "it was not needed";
    EXPECT_EQ(choose("bin", fs::perms(0555)), 0);
    EXPECT_TRUE(folderExists(folder.file("home/.Sondrava")));
    fs::permissions(folder.file("bin").asChar(), fs::perms::all);
    fs::permissions(folder.write("bin/own.ini", "").asChar(), fs::perms(0444));
    EXPECT_EQ(choose("bin", fs::perms::all), 0);
}

TEST(Paths, TellAFolderByWhatItIs) {
    const TempFolder folder;
    for (const char* name : {"songs", "Songs"}) createDir(folder.file(name));
    fs::create_symlink("songs", folder.file("link").asChar());
    EXPECT_TRUE(samePlace(folder.file("songs"), folder.file("songs/")));
    EXPECT_TRUE(samePlace(folder.file("songs"), folder.file("link/")));
    EXPECT_FALSE(samePlace(folder.file("songs"), folder.file("Songs")));
    EXPECT_TRUE(samePlace(folder.file("none/"), folder.file("none")));
    const CStr here = fs::current_path().c_str();
    EXPECT_EQ(absolutePath("a/../b.qv"), addSep(here) + "b.qv");
    EXPECT_EQ(absolutePath("/x/./y"), "/x/y");
    EXPECT_EQ(absolutePath(""), "");
}

TEST(Paths, FoldersAreReadInOrder) {
    const TempFolder folder;
    for (const char* name : {"b.WAV", "A.aif", "c.mid", ".hidden.wav", "wav"})
        folder.write(name, "");
    createDir(folder.file("Zoo"));
    createDir(folder.file("apes.wav"));
    ASSERT_EQ(symlink("/missing", folder.file("broken.wav").asChar()), 0);
    const std::pair<const char*, std::vector<CStr>> cases[] = {
        {".wav|.aif", {"A.aif", "b.WAV"}},
        {".*", {"A.aif", "b.WAV", "c.mid", "wav"}},
        {"", {"A.aif", "b.WAV", "c.mid", "wav"}},
        {".wa|v", {}},
    };
    for (const auto& [filter, wanted] : cases) {
        CStringList folders, files;
        EXPECT_TRUE(readDir(folder.path, filter, &folders, &files, true));
        std::vector<CStr> got;
        for (const CStringItem* item : files.list) got.push_back(item->text);
        EXPECT_EQ(got, wanted) << filter;
        EXPECT_EQ(folders.get(0) + "|" + folders.get(1) + "|", "apes.wav|Zoo|");
    }
    CStringList none;
    EXPECT_FALSE(readDir(folder.file("missing"), "", &none, &none, true));
}

/// Every way to copy overwrites, takes all bytes, and leaves a file alone that is its own source.
TEST(Paths, CopiesAreWhole) {
    const TempFolder folder;
    std::string content(200001, 'x');
    for (size_t i = 0; i < content.size(); ++i) content[i] = char(i * 7);
    const CStr from = folder.write("from", content);
    const auto byManager = [](const CStr& a, const CStr& b) {
        return CFileManager().copyFile(a, b);
    };
    for (auto* copy : {copyFile, static_cast<bool (*)(const CStr&, const CStr&)>(byManager)}) {
        const CStr to = folder.write("to", std::string(300000, 'y'));
        EXPECT_TRUE(copy(from, to));
        EXPECT_EQ(folder.read("to"), content);
        EXPECT_FALSE(copy(folder.file("missing"), to));
        EXPECT_EQ(folder.read("to"), content);
        EXPECT_FALSE(copy(from, folder.file("no/such")));
        copy(from, from);
        EXPECT_EQ(folder.read("from"), content);
    }
}

TEST(CFileManager, CopiesInSteps) {
    const TempFolder folder;
    struct Case {
        int size, block;
        std::vector<int> progress;
    };
    for (const Case& c : {Case{10, 4, {4, 8, 10}}, {8, 4, {4, 8, 8}}, {0, -1, {0}}}) {
        CFileManager files;
        const CStr from = folder.write("from", std::string(size_t(c.size), 'x'));
        ASSERT_TRUE(files.startCopy(from, folder.file("to"), c.block));
        std::vector<int> progress;
        int done = 0, total = 0;
        for (bool more = true; more; progress.push_back(done)) more = files.copyBlock(done, total);
        EXPECT_EQ(progress, c.progress) << c.size;
        EXPECT_EQ(total, c.size);
        EXPECT_FALSE(files.failed() || files.copyBlock(done, total));
        EXPECT_EQ(folder.read("to"), folder.read("from"));
    }
    CFileManager files;
    EXPECT_FALSE(files.copyFile(folder.write("big", std::string(100000, 'x')), "/dev/full"));
}

TEST(CFileManager, DeletesWithoutFollowingLinks) {
    const TempFolder folder;
    folder.write("kept", "x");
    createDir(folder.file("tree/sub"));
    folder.write("tree/sub/leaf", "x");
    createDir(folder.file("outside"));
    folder.write("outside/safe", "x");
    ASSERT_EQ(symlink(folder.file("outside").asChar(), folder.file("tree/link").asChar()), 0);
    CFileManager files;
    EXPECT_FALSE(files.deleteFile(folder.file("tree")));
    EXPECT_FALSE(files.deleteFolder(folder.file("kept")));
    EXPECT_FALSE(files.deleteFolder(""));
    EXPECT_TRUE(files.deleteFolder(folder.file("tree")));
    EXPECT_FALSE(folderExists(folder.file("tree")));
    EXPECT_TRUE(fileExists(folder.file("outside/safe")));
    EXPECT_TRUE(files.deleteFile(folder.file("kept")));
    EXPECT_FALSE(files.deleteFile(folder.file("kept")));
}
