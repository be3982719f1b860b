#include "base/CStringList.h"

#include "TempFolder.h"

namespace {

std::string joined(const CStringList& list) {
    std::string all;
    for (const CStringItem* item : list.list) all += std::string(item->text.asChar()) + "|";
    return all;
}

} // namespace

TEST(CStringList, SortsWithoutCaseAndKeepsEqualOnesInOrder) {
    CStringList list;
    list.sorted = true;
    for (const char* s : {"b", "C", "a", "B", "_", "A", ""}) list.add(s);
    EXPECT_EQ(joined(list), "|a|A|b|B|C|_|");
}

TEST(CStringList, SavesWithSeparatorsBetweenItsLines) {
    const TempFolder folder;
    CStringList list;
    for (const char* s : {"b", "", "a"}) list.add(s);
    EXPECT_TRUE(list.save(folder.file("lines")));
    EXPECT_EQ(folder.read("lines"), "b\r\n\r\na");
    EXPECT_FALSE(list.save(folder.file("no/such")));

    CStringList again;
    again.add("z");
    again.sorted = true;
    again.open(folder.file("missing"));
    again.open(folder.file("lines"));
    EXPECT_EQ(joined(again), "z|b||a|") << "lines are appended, sorted or not";
}
