#include "project/AutoSave.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "project/ProjectFixture.h"

namespace {

/// Lets the writer come to its end; false after ten seconds.
bool finish(AutoSave& autoSave) {
    for (int i = 0; i < 10000 && autoSave.writing(); ++i) asSleep(1);
    return !autoSave.writing();
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
    const auto pass = [&](int now) {
        autoSave.idle(now);
        ASSERT_TRUE(finish(autoSave));
        autoSave.idle(now);
    };
    pass(1000);
    EXPECT_FALSE(fileExists(copy)) << "nothing has changed";
    f.host->id = "one";
    f.host->setModified();
    pass(2000);
    EXPECT_NE(folder.read("song.recovery.qv").find("one"), std::string::npos);
    EXPECT_TRUE(f.host->modified) << "a copy is no save";
    f.host->id = "two";
    f.host->setModified();
    pass(3900);
    EXPECT_EQ(folder.read("song.recovery.qv").find("two"), std::string::npos) << "too early";
    pass(1000000);
    EXPECT_NE(folder.read("song.recovery.qv").find("two"), std::string::npos);

    EXPECT_EQ(openRecovery(f.project, copy, path), LoadResult::good);
    EXPECT_EQ(f.host->id, "two");
    EXPECT_EQ(f.host->projectFile, path);
    EXPECT_TRUE(f.host->modified);
    ASSERT_TRUE(saveProject(f.project, path));
    autoSave.discard();
    EXPECT_FALSE(fileExists(copy));
    EXPECT_FALSE(fileExists(copy + "~"));
}

TEST(AutoSave, AnUnsavedProjectIsCopiedBesideTheSettings) {
    ProjectFixture f;
    TempFolder folder;
    inifile = folder.file("Sondrava.ini");
    AutoSave autoSave(f.project);
    f.host->setModified();
    autoSave.idle(5000);
    ASSERT_TRUE(finish(autoSave));
    const CStr copy = AutoSave::recoveryFile("");
    EXPECT_EQ(extractFilePath(copy), folder.path + "/");
    EXPECT_TRUE(fileExists(copy));
    autoSave.discard();
    EXPECT_FALSE(fileExists(copy));
    inifile = "";
}
