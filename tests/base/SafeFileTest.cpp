#include "base/SafeFile.h"

#include "base/CStream.h"
#include "base/TempFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> namesIn(const CStr& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.asChar()))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

void write(SafeFile& file, bool asStream) {
    if (asStream) {
        ASSERT_TRUE(file.stream());
        file.stream()->write("new", 3);
    } else {
        ASSERT_TRUE(CMemoryStream().saveToFile(file.path()));
        CFileStream(file.path(), 1).write("new", 3);
    }
}

} // namespace

/// By either way of writing: what was there stays until all is written, then goes for good or to
/// its second name, and permissions and links outlive it.
TEST(SafeFile, TakesThePlaceInOneStep) {
    struct Case {
        bool asStream, keepOld;
        mode_t mode;
        const char* link; ///< what it leads to, null for the file itself
    };
    for (const Case& c : {Case{true, true, 0640, nullptr},
                          {false, true, 0444, "again.qv"},
                          {true, false, 0444, "real.qv"}}) {
        TempFolder folder;
        const CStr real = folder.write("real.qv", "old");
        chmod(real.asChar(), c.mode);
        fs::create_symlink("real.qv", folder.file("again.qv").asChar());
        if (c.link) fs::create_symlink(c.link, folder.file("link.qv").asChar());
        std::vector<std::string> wanted = namesIn(folder.path);
        {
            SafeFile file(c.link ? folder.file("link.qv") : real);
            write(file, c.asStream);
            EXPECT_EQ(folder.read("real.qv"), "old");
            struct stat half {};
            EXPECT_EQ(stat(file.path().asChar(), &half), 0);
            EXPECT_EQ(half.st_mode & 0077, c.mode & 0077) << "not even meanwhile for others";
            ASSERT_TRUE(file.commit(c.keepOld));
            EXPECT_FALSE(file.commit(c.keepOld)) << "there is nothing more to put in place";
        }
        EXPECT_EQ(folder.read("real.qv"), "new");
        if (c.keepOld) {
            EXPECT_EQ(folder.read("real.qv~"), "old");
            wanted.insert(std::find(wanted.begin(), wanted.end(), "real.qv") + 1, "real.qv~");
        }
        EXPECT_EQ(namesIn(folder.path), wanted);
        struct stat info {};
        EXPECT_EQ(stat(real.asChar(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, c.mode);
    }
}

/// What is not put in place, or has no place, leaves nothing. Two at once do not meet, and a pipe
/// or device takes what comes.
TEST(SafeFile, LeavesNothingBehind) {
    TempFolder folder;
    fs::create_directory(folder.file("folder").asChar());
    const std::vector<std::string> before = namesIn(folder.path);
    {
        SafeFile one(folder.file("a.wav")), two(folder.file("a.wav"));
        EXPECT_FALSE(one.path() == two.path());
        EXPECT_EQ(fs::path(one.path().asChar()).extension(), ".wav");
        write(one, true);
        write(two, false);
    }
    for (const char* name : {"folder", "none/a.wav", "folder/"}) {
        SafeFile file(folder.file(name));
        EXPECT_TRUE(!file.stream() && file.path().empty()) << name;
        EXPECT_FALSE(file.commit()) << name;
    }
    EXPECT_EQ(namesIn(folder.path), before);
    const CStr pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.asChar(), 0600), 0);
    SafeFile device(pipe);
    write(device, true);
    EXPECT_TRUE(device.commit(true));
    EXPECT_TRUE(fs::is_fifo(pipe.asChar()));
}
