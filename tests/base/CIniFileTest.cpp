#include "base/CIniFile.h"

#include "FullDisk.h"
#include "TempFolder.h"
#include "base/CSettings.h"
#include "base/CStringList.h"

TEST(CIniFile, FindsEntriesWhateverTheirCase) {
    const TempFolder folder;
    CIniFile ini(folder.write("ini", "; remark\r\nkey=outside\r\n[One]\r\nKey = a=b \r\nother=2x"
                                     "\r\n\r\n[two]\r\nkey=5\r\nempty=\r\n[One]\r\nlate=1"));
    const struct {
        const char *section, *key, *wanted;
    } cases[] = {{"ONE", "kEY", "a=b"},  {"one", "other", "2x"},  {"Two", "KEY", "5"},
                 {"two", "empty", ""},   {"two", "other", "def"}, {"one", "late", "def"},
                 {"none", "key", "def"}, {"", "key", "def"}};
    for (const auto& c : cases)
        EXPECT_EQ(ini.readString(c.section, c.key, "def"), c.wanted) << c.section << " " << c.key;
    EXPECT_EQ(ini.readInteger("one", "other", 9), 9);
    CStringList lines;
    ini.readSection("one", &lines);
    ASSERT_EQ(lines.count(), 2);
    EXPECT_EQ(lines.get(0), "Key = a=b");
    inifile = ini.path;
    EXPECT_EQ(iniReadInt("TWO", "key", 0), 5);
    inifile = CStr();
}

TEST(CIniFile, ChangesOneLineAndKeepsTheRest) {
    const TempFolder folder;
    const CStr path = folder.write("ini", "[a]\r\nOld Key = 1\r\n\r\n\r\n[b]\r\nx=1");
    CIniFile ini(path);
    ini.writeString("A", "old key", "2=3");
    ini.writeInteger("a", "new", -4);
    ini.writeString("c", "y", "first\nsecond=line");
    ini.writeString("b\r[x]", "z\n[y]", "");
    EXPECT_EQ(folder.read("ini"), "[a]\r\nOld Key =2=3\r\nnew=-4\r\n\r\n\r\n[b]\r\nx=1\r\nz=\r\n"
                                  "\r\n[c]\r\ny=first");
    ini.eraseValue("a", "OLD KEY");
    ini.eraseSection("B");
    ini.eraseSection("absent");
    ini.eraseValue("a", "absent");
    EXPECT_EQ(folder.read("ini"), "[a]\r\nnew=-4\r\n\r\n\r\n[c]\r\ny=first");
}

TEST(CIniFile, StartsFromNothingAndKeepsLongValues) {
    const TempFolder folder;
    CIniFile ini(folder.file("new"));
    EXPECT_EQ(ini.readInteger("s", "k", 3), 3);
    const std::string value(100000, 'v');
    ini.writeString("s", "k", value.c_str());
    EXPECT_EQ(folder.read("new"), "\r\n[s]\r\nk=" + value);
    EXPECT_EQ(ini.readString("s", "k", ""), value.c_str());
}

/// What cannot be written leaves what was there, and many changes are one write, or none.
TEST(CIniFile, IsReplacedWholeAndOnce) {
    const TempFolder folder;
    const std::string old = "[a]\r\nx=1";
    CIniFile ini(folder.write("ini", old));
    const auto written = [&] { return std::filesystem::last_write_time(ini.path.asChar()); };
    std::filesystem::last_write_time(ini.path.asChar(), {});
    {
        const FullDisk full(4);
        ini.writeString("a", "x", "a longer value");
    }
    EXPECT_EQ(folder.read("ini"), old);
    ini.writeString("a", "x", "1");
    {
        const CIniBatch batch(ini.path), inner(ini.path);
        EXPECT_EQ(ini.readInteger("a", "x", 0), 1);
    }
    EXPECT_EQ(written(), decltype(written()){}) << "nothing has changed";
    {
        const CIniBatch batch(ini.path);
        {
            const CIniBatch inner(ini.path);
            ini.writeString("a", "x", "2");
            ini.eraseSection("none");
        }
        ini.writeString("b", "y", "3");
        CIniFile(folder.file("other")).writeString("a", "x", "4");
        EXPECT_EQ(ini.readString("a", "x", "") + ini.readString("b", "y", ""), "23");
        EXPECT_EQ(folder.read("ini"), old);
        EXPECT_EQ(folder.read("other"), "\r\n[a]\r\nx=4");
    }
    EXPECT_EQ(folder.read("ini"), "[a]\r\nx=2\r\n\r\n[b]\r\ny=3");
}
