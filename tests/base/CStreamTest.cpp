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
        EXPECT_TRUE(s.readByte() == 200 && s.readShort() == -2 && s.readShortSwap() == 0x0102);
        EXPECT_TRUE(s.readInt() == 0x01020304 && s.readIntSwap() == 0x01020304);
        EXPECT_TRUE(s.readFloat() == 1.0f && s.readFloatSwap() == 1.0f);
        EXPECT_TRUE(s.readDouble() == -2.0 && s.readStr() == "ab" && s.readShort() == -1);
        EXPECT_EQ(s.readInt(), 0) << "half of it is missing";
        EXPECT_EQ(s.left(), 0);
    });
}

/// A length from a damaged file neither allocates nor reads more than there is.
TEST(CStream, ReadsStringsOfAnyStoredLength) {
    for (const auto& [stored, wanted] :
         {std::pair(0, ""), {3, "abc"}, {4, "abcd"}, {INT32_MAX, "abcd"}, {INT32_MIN, ""}}) {
        onBoth([&](CStream& s) {
            s.writeInt(stored);
            s.write("abcd", 4);
            s.setPos(0);
            CStr text = s.readStr();
            EXPECT_EQ(text, wanted) << stored;
            EXPECT_EQ(s.getPos(), 4 + text.length()) << stored;
            EXPECT_TRUE(text.empty() || malloc_usable_size(text.buffer()) < 100) << stored;
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
        char c = 'x';
        EXPECT_EQ(s.read(&c, -1) + s.write(&c, -1) + s.pos(), 0);
        EXPECT_EQ(s.seek(8, seekStart), 8);
        EXPECT_EQ(s.left(), -2);
        s.writeByte('i');
        EXPECT_EQ(hex(s), "616263646566000069");
    });
}

TEST(CStream, CopiesUpToTheEndOfItsSource) {
    const std::string content(3000, 'x');
    for (const auto& [asked, copied] :
         {std::pair(2500, 2500), {2048, 2048}, {-5, 0}, {INT32_MAX, 3000}}) {
        onBoth([&](CStream& s) {
            CMemoryStream source;
            source.write(content.data(), 3000);
            source.setPos(0);
            s.writeByte(1);
            s.copy(&source, asked);
            EXPECT_EQ(s.getPos(), 1) << asked;
            EXPECT_EQ(source.getPos(), copied) << asked;
            std::string got(5000, ' ');
            got.resize(size_t(s.read(got.data(), 5000)));
            EXPECT_EQ(got, content.substr(0, size_t(copied))) << asked;
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
    again.setPos(1);
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
    for (const auto& [path, mode] :
         {std::pair(missing, 0), {folder.path, 0}, {missing + "/sub", 1}, {there, 2}}) {
        CFileStream file(path, mode);
        EXPECT_FALSE(file.isOpen()) << path.asChar();
        EXPECT_EQ(file.readByte() + file.write("x", 1) + file.seek(5, seekStart) + file.size, 0);
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
    EXPECT_FALSE(s.saveToFile("/dev/full"));
}

TEST(CStream, CutsTextIntoLines) {
    const std::string longLine(4095, 'x');
    const std::pair<std::string, std::vector<CStr>> cases[] = {
        {"", {}},
        {"a\r\nb", {"a", "b"}},
        {"a\r\rb", {"a", "", "b"}},
        {"\n\r\n a \n", {"", "", "a"}},
        {longLine + "\r\n" + longLine, {longLine.c_str(), longLine.c_str()}}, // in two pieces
    };
    for (const auto& [text, wanted] : cases) {
        CMemoryStream s;
        s.write(text.data(), int(text.size()));
        CStringList lines;
        streamToStrs(&s, &lines);
        ASSERT_EQ(lines.count(), int(wanted.size())) << text;
        for (int i = 0; i < lines.count(); ++i) EXPECT_EQ(lines.get(i), wanted[size_t(i)]);
    }
}
