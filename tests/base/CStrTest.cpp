#include "base/CStr.h"

#include "TempFolder.h"

#include <utility>

TEST(CStr, CutsAndFinds) {
    const CStr s = "hello world";
    struct Case {
        CStr got;
        const char* wanted;
    };
    const Case cases[] = {
        {s.sub(6, 5), "world"},
        {s.sub(6, -1), "world"},
        {s.sub(6, 100), "world"},
        {s.sub(-1, 3), ""},
        {s.sub(12, -1), ""},
        {CStr(" \r\n a b \n").trim(), "a b"},
        {CStr("\ta ").trim(), "\ta"},
        {CStr(" \n\r ").trim(), ""},
        {s.upperCase(), "HELLO WORLD"},
        {CStr("\xe4Z").lowerCase(), "\xe4z"},
        {CStr("a") + 'b' + "c", "abc"},
        {CStr(nullptr) + nullptr, ""},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.wanted);

    EXPECT_EQ(s.pos("o"), 4);
    EXPECT_EQ(s.pos(""), -1);
    EXPECT_EQ(s.pos("worlds"), -1);
    EXPECT_EQ(CStr("\xff")[0], -1);
    for (int outside : {-1, 11, 1 << 30}) EXPECT_EQ(s[outside], 0) << outside;
    EXPECT_TRUE(CStr("Key") != CStr("key") && sameText("Key", "kEY"));
    EXPECT_LT(compareText("a", "B"), 0);
    EXPECT_GT(compareText("ab", "A"), 0);
}

TEST(CStr, EditsInPlaceWithinItsBounds) {
    struct Case {
        int start, n;
        const char* wanted;
    };
    const Case cases[] = {{1, 2, "ad"},    {0, 4, ""},      {0, 5, "abcd"},
                          {-1, 1, "abcd"}, {1, -1, "abcd"}, {1, 2147483647, "abcd"}};
    for (const Case& c : cases) {
        CStr s = "abcd";
        s.del(c.start, c.n);
        EXPECT_EQ(s, c.wanted) << c.start << ", " << c.n;
    }
    for (auto [pos, wanted] : {std::pair(-5, "XYab"), {0, "XYab"}, {1, "aXYb"}, {99, "abXY"}}) {
        CStr s = "ab";
        s.ins("XY", pos);
        EXPECT_EQ(s, wanted) << pos;
    }
}

TEST(CStr, MayBeItsOwnSource) {
    CStr s = "abc";
    CStr& same = s;
    s = same;
    EXPECT_EQ(s, "abc");
    s.append(s);
    EXPECT_EQ(s, "abcabc");
    s.ins(s, 3);
    EXPECT_EQ(s, "abcabcabcabc");
    s = s.asChar() + 9;
    EXPECT_EQ(s, "abc");
    s.append(s.asChar() + 1);
    EXPECT_EQ(s, "abcbc");
    const CStr to = std::move(s);
    EXPECT_EQ(to, "abcbc");
    EXPECT_TRUE(s.empty()); // NOLINT(bugprone-use-after-move): what is tested
    s.append("new");
    EXPECT_EQ(s, "new");
}
