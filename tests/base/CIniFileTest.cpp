#include "base/CIniFile.h"

#include "TempFolder.h"
#include "base/CSettings.h"
#include "base/CStringList.h"

namespace {

const char* const sample = "; remark\r\nkey=outside\r\n[One]\r\nKey = a=b \r\nother=2x\r\n\r\n"
                           "[two]\r\nkey=5\r\nempty=\r\n[One]\r\nlate=1";

} // namespace

TEST(CIniFile, FindsEntriesWhateverTheirCase) {
    const TempFolder folder;
    CIniFile ini(folder.write("ini", sample));
    struct Case {
        const char *section, *key, *wanted;
    };
    const Case cases[] = {{"ONE", "kEY", "a=b"},  {"one", "other", "2x"},  {"Two", "KEY", "5"},
                          {"two", "empty", ""},   {"two", "other", "def"}, {"one", "late", "def"},
                          {"none", "key", "def"}, {"", "key", "def"}};
    for (const Case& c : cases)
        EXPECT_EQ(ini.readString(c.section, c.key, "def"), c.wanted) << c.section << " " << c.key;
    EXPECT_EQ(ini.readInteger("two", "key", 9), 5);
    EXPECT_EQ(ini.readInteger("one", "other", 9), 9);
    EXPECT_EQ(ini.readInteger("two", "empty", 9), 9);

    CStringList lines;
    ini.readSection("one", &lines);
    ASSERT_EQ(lines.count(), 2);
    EXPECT_EQ(lines.get(0), "Key = a=b");
    inifile = ini.path;
    EXPECT_EQ(iniReadInt("TWO", "key", 0), 5);
    EXPECT_EQ(iniReadString("two", "absent", "x"), "x");
    inifile = CStr();
}

TEST(CIniFile, ChangesOneLineAndKeepsTheRest) {
    const TempFolder folder;
    const CStr path = folder.write("ini", "[a]\r\nOld Key = 1\r\n\r\n\r\n[b]\r\nx=1");
    CIniFile ini(path);
    ini.writeString("A", "old key", "2=3");
    EXPECT_EQ(folder.read("ini"), "[a]\r\nOld Key =2=3\r\n\r\n\r\n[b]\r\nx=1");
    ini.writeInteger("a", "new", -4);
    EXPECT_EQ(folder.read("ini"), "[a]\r\nOld Key =2=3\r\nnew=-4\r\n\r\n\r\n[b]\r\nx=1");
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

    CIniFile nowhere(folder.file("no/such"));
    nowhere.writeString("s", "k", "v");
    EXPECT_EQ(nowhere.readString("s", "k", "def"), "def");
}

TEST(CIniFile, TakesLinesApart) {
    const std::pair<const char*, const char*> heads[] = {
        {" [ab] ", "ab"}, {"[]", ""}, {"[a", ""}, {"a]", ""}, {"[ x ]", " x "}, {"", ""}};
    for (auto [line, wanted] : heads) EXPECT_EQ(strToSection(CStr(line)), wanted) << line;
    CStr padded = "  no head \r";
    EXPECT_EQ(strToSection(padded), "");
    EXPECT_EQ(padded, "no head");
    EXPECT_EQ(strToIdent(" a = b = c "), "a");
    EXPECT_EQ(strToValue(" a = b = c "), "b = c");
    EXPECT_EQ(strToIdent("none"), "");
    EXPECT_EQ(strToValue("none"), "");
}

TEST(CSettings, AddsOnceAndUpdates) {
    CSettings settings;
    EXPECT_EQ(settings.getInt("a", 7), 7);
    settings.setInt("a", 1)->stored = true;
    settings.setInt("A", 2);
    settings.setInt("a", 3);
    ASSERT_EQ(settings.numItems(), 2);
    EXPECT_EQ(settings.getInt("a", 7), 3);
    EXPECT_TRUE(settings.getItem("a")->stored);
    EXPECT_FALSE(settings.getItem(1)->stored);
    EXPECT_EQ(settings.getItem(2), nullptr);
    EXPECT_EQ(settings.getItem("b"), nullptr);
}
