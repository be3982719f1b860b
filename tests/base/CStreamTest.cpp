#include "base/CStream.h"

#include "TempFolder.h"
#include "base/CStringList.h"
#include "base/Numbers.h"

#include <functional>
#include <malloc.h>
#include <string>
#include <vector>

namespace {

/// Runs a test on both kinds of stream, each empty and open for reading and writing.
void onBoth(const std::function<void(CStream&)>& test) {
    {
        SCOPED_TRACE("memory");
        CMemoryStream memory;
        test(memory);
    }
    SCOPED_TRACE("file");
    const TempFolder folder;
    CFileStream file(folder.file("stream"), 1);
    ASSERT_TRUE(file.isOpen());
    test(file);
}

/// The whole stream, two digits to the byte.
std::string hex(CStream& s) {
    std::string all;
    s.setPos(0);
    for (int64_t n = s.left(); n > 0; --n) all += asStrFormat(s.readByte(), "%02x").asChar();
    return all;
}

} // namespace

TEST(CStream, StoresEachTypeInItsByteOrder) {
    onBoth([](CStream& s) {
        s.writeByte(200);
        s.writeShort(-2);
        s.writeShortSwap(0x0102);
        s.writeInt(0x01020304);
        s.writeIntSwap(0x01020304);
        s.writeFloat(1.0f);
        s.writeFloatSwap(1.0f);
        s.writeDouble(-2.0);
        s.writeId("ab", -1);
        EXPECT_EQ(hex(s), "c8feff0102"       // byte, shorts
                          "0403020101020304" // ints
                          "0000803f3f800000" // floats
                          "00000000000000c0" // double
                          "020000006162ffffffff");
        s.setPos(0);
        EXPECT_EQ(s.readByte(), 200);
        EXPECT_EQ(s.readShort(), -2);
        EXPECT_EQ(s.readShortSwap(), 0x0102);
        EXPECT_EQ(s.readInt(), 0x01020304);
        EXPECT_EQ(s.readIntSwap(), 0x01020304);
        EXPECT_EQ(s.readFloat(), 1.0f);
        EXPECT_EQ(s.readFloatSwap(), 1.0f);
        EXPECT_EQ(s.readDouble(), -2.0);
        EXPECT_EQ(s.readStr(), "ab");
        EXPECT_EQ(s.readShort(), -1);
        EXPECT_EQ(s.readInt(), 0) << "half of it is missing";
        EXPECT_EQ(s.left(), 0);
        EXPECT_EQ(s.readByte(), 0);
    });
}

/// A length from a damaged file neither allocates nor reads more than there is.
TEST(CStream, ReadsStringsOfAnyStoredLength) {
    struct Case {
        int stored;
        const char* wanted;
        int positionAfter;
    };
    const Case cases[] = {{0, "", 4},  {3, "abc", 7},          {4, "abcd", 8},    {5, "abcd", 8},
                          {-1, "", 4}, {INT32_MAX, "abcd", 8}, {INT32_MIN, "", 4}};
    for (const Case& c : cases) {
        onBoth([&](CStream& s) {
            s.writeInt(c.stored);
            s.write("abcd", 4);
            s.setPos(0);
            CStr text = s.readStr();
            EXPECT_EQ(text, c.wanted) << c.stored;
            if (!text.empty()) {
                EXPECT_LT(malloc_usable_size(text.buffer()), 100u) << c.stored;
            }
            EXPECT_EQ(s.getPos(), c.positionAfter) << c.stored;
        });
    }
}

TEST(CStream, StaysInFrontOfNothing) {
    onBoth([](CStream& s) {
        s.write("abcdef", 6);
        EXPECT_EQ(s.seek(-2, seekEnd), 4);
        EXPECT_EQ(s.seek(-3, seekCurrent), 1);
        EXPECT_EQ(s.readByte(), 'b');
        EXPECT_EQ(s.seek(-100, seekCurrent), 0);
        EXPECT_EQ(s.seek(INT32_MIN, seekStart), 0);
        char c = 'x';
        EXPECT_EQ(s.read(&c, -1), 0);
        EXPECT_EQ(s.write(&c, -1), 0);
        EXPECT_EQ(s.pos(), 0);
        EXPECT_EQ(s.seek(8, seekStart), 8);
        EXPECT_EQ(s.left(), -2);
        s.writeByte('i');
        EXPECT_EQ(hex(s), "616263646566000069");
    });
}

TEST(CStream, CopiesUpToTheEndOfItsSource) {
    struct Case {
        int there, asked, copied;
    };
    const Case cases[] = {{3000, 2500, 2500}, {1024, 1024, 1024}, {100, 5000, 100},
                          {9, 0, 0},          {9, -5, 0},         {100, INT32_MAX, 100}};
    for (const Case& c : cases) {
        onBoth([&](CStream& s) {
            CMemoryStream source;
            for (int i = 0; i < c.there; ++i) source.writeByte(static_cast<unsigned char>(i % 251));
            source.setPos(0);
            s.writeByte(1);
            s.copy(&source, c.asked);
            EXPECT_EQ(s.getPos(), 1) << c.asked;
            EXPECT_EQ(source.getPos(), c.copied) << c.asked;
            EXPECT_EQ(s.getSize(), c.copied + 1) << c.asked;
            for (int i = 0; i < c.copied; ++i) ASSERT_EQ(s.readByte(), i % 251) << i;
        });
    }
}

TEST(CFileStream, CountsThePayloadOnceAndTellsThatADiskIsFull) {
    const TempFolder folder;
    CFileStream file(folder.file("payload"), 1);
    file.writeByte(9);
    file.writeInt(0);
    file.writeStr("0123456789");
    file.writeBlockSize(1);
    EXPECT_EQ(file.written, file.getPos());
    EXPECT_TRUE(file.flush());
    CFileStream again(folder.file("payload"), 0);
    EXPECT_EQ(again.size, 19);
    EXPECT_EQ(again.readByte(), 9);
    EXPECT_EQ(again.readInt(), 14);
    EXPECT_FALSE(again.eof());
    again.setPos(19);
    EXPECT_TRUE(again.eof());
    CFileStream full("/dev/full", 1);
    full.writeInt(1);
    EXPECT_FALSE(full.flush());
}

TEST(CFileStream, IsEmptyWithoutAFile) {
    const TempFolder folder;
    const CStr there = folder.write("there", "abc"), missing = folder.file("missing");
    const std::pair<CStr, int> cases[] = {
        {missing, 0}, {folder.path, 0}, {missing + "/sub", 1}, {there, 2}, {"", 0}};
    for (const auto& [path, mode] : cases) {
        CFileStream file(path, mode);
        char c = 0;
        EXPECT_FALSE(file.isOpen()) << path.asChar();
        EXPECT_EQ(file.size, 0);
        EXPECT_EQ(file.read(&c, 1), 0);
        EXPECT_EQ(file.write(&c, 1), 0);
        EXPECT_EQ(file.seek(5, seekStart), 0);
        EXPECT_EQ(file.readStr(), "");
    }
}

TEST(CMemoryStream, GoesThroughAFile) {
    const TempFolder folder;
    CMemoryStream s, t;
    for (int i = 0; i < 100000; ++i) s.writeInt(i);
    ASSERT_TRUE(s.saveToFile(folder.file("block")));
    t.writeByte(1);
    ASSERT_TRUE(t.loadFromFile(folder.file("block")));
    EXPECT_EQ(t.getPos(), 0);
    EXPECT_EQ(hex(t), hex(s));
    t.setSize(2);
    t.setSize(6);
    EXPECT_EQ(hex(t), "000000000000") << "cut off, and silent when it grows again";
    EXPECT_FALSE(t.loadFromFile(folder.file("missing")));
    EXPECT_EQ(t.getSize(), 0);
    EXPECT_FALSE(s.saveToFile(folder.file("no/such/folder")));
}

TEST(CStream, CutsTextIntoLines) {
    const std::string longLine(5000, 'x');
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"a\r\nb", {"a", "b"}},
        {"a\nb\n", {"a", "b"}},
        {"a\r\rb", {"a", "", "b"}},
        {"\n\r\n a ", {"", "", "a"}},
        {longLine + "\r\n" + longLine, {longLine, longLine}},
        {std::string(4095, 'y') + "\r\nz", {std::string(4095, 'y'), "z"}},
    };
    for (const auto& [text, wanted] : cases) {
        CMemoryStream s;
        s.write(text.data(), int(text.size()));
        CStringList lines;
        streamToStrs(&s, &lines);
        std::vector<std::string> got;
        for (const CStringItem* line : each<CStringItem>(lines.list))
            got.emplace_back(line->text.asChar());
        EXPECT_EQ(got, wanted);
    }
}
