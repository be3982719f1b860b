#include "base/UserFolders.h"

#include "base/Paths.h"
#include "base/TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

/// Lines as desktops write them; a folder counts only while it is there.
TEST(UserFolders, AreThoseOfTheList) {
    const TempFolder folder;
    const std::string home = folder.file("home").asChar(), before = std::getenv("HOME");
    for (const char* name : {"home", "home/.config", "home/Music", "home/Desktop", "home/Musik"})
        ASSERT_TRUE(createDir(folder.file(name)));
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(userFolder("MUSIC", "Music"), (home + "/Music/").c_str());
    EXPECT_TRUE(userFolder("DOCUMENTS", "Documents").empty());
    std::ofstream(home + "/.config/user-dirs.dirs")
        << "# a remark\nXDG_MUSIC_DIR=\"$HOME/Musik\"\nXDG_DESKTOP_DIR=\"$HOME/\"\n"
        << "XDG_DOCUMENTS_DIR=\"" << home << "/Music\"\n";
    EXPECT_EQ(userFolder("MUSIC", "Music"), (home + "/Musik/").c_str());
    EXPECT_TRUE(userFolder("DESKTOP", "Desktop").empty()) << "the home folder stands for none";
    EXPECT_EQ(userFolder("DOCUMENTS", "Documents"), (home + "/Music/").c_str());
    setenv("HOME", before.c_str(), 1);
}
