#include "interchange/ZipFile.h"
#include "base/TempFolder.h"

#include <minizip/zip.h>

namespace {

/// An archive whose entries may bear any name.
void writeAnyhow(const CStr& path,
                 const std::vector<std::pair<std::string, std::string>>& entries) {
    zipFile file = zipOpen64(path.asChar(), APPEND_STATUS_CREATE);
    for (const auto& [name, content] : entries) {
        const zip_fileinfo info{};
        zipOpenNewFileInZip(file, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            9);
        zipWriteInFileInZip(file, content.data(), unsigned(content.size()));
        zipCloseFileInZip(file);
    }
    zipClose(file, nullptr);
}

} // namespace

/// What a name may be is decided before anything is written.
TEST(ZipFile, LetsNoEntryLeadOut) {
    const TempFolder folder;
    const std::string evil[] = {"../a", "a/../../b", "/etc/x", "a//b", "./a", "a\\b", "..", ""};
    for (const std::string& name : evil) EXPECT_FALSE(isPlainEntry(name)) << name;
    EXPECT_TRUE(isPlainEntry("audio/a b ü.wav") && isPlainEntry("..a") && isPlainEntry("a..b"));
    writeAnyhow(folder.file("evil.zip"), {{"../a", "x"}, {"/b", "x"}, {"c/", ""}, {"c/d", "good"}});
    const ZipReader zip(folder.file("evil.zip").asChar());
    EXPECT_TRUE(zip.hadEvil());
    ASSERT_EQ(zip.entries().size(), 1u);
    EXPECT_EQ(zip.entries().front().name, "c/d");
    EXPECT_FALSE(zip.extract("../a", 10, folder.file("out").asChar()));
    ZipWriter own(folder.file("own.zip").asChar());
    EXPECT_FALSE(own.add("../a", "x"));
}

TEST(ZipFile, GivesBackWhatWasPackedAndNothingOfWhatIsDamagedOrTooLong) {
    const TempFolder folder;
    std::string content;
    for (int i = 0; i < 200000; i++) content += char(i * 7 + i / 251);
    folder.write("source", content);
    {
        ZipWriter zip(folder.file("a.zip").asChar());
        EXPECT_TRUE(zip.add("bomb", std::string(5'000'000, 'a')));
        EXPECT_TRUE(zip.addFile("plain", folder.file("source").asChar(), false));
        EXPECT_TRUE(zip.addFile("packed", folder.file("source").asChar(), true));
        EXPECT_TRUE(zip.close());
    }
    const auto size = int64_t(content.size());
    std::string got;
    {
        const ZipReader zip(folder.file("a.zip").asChar());
        for (const char* name : {"plain", "packed"}) {
            EXPECT_TRUE(zip.read(name, size, got) && got == content) << name;
            EXPECT_FALSE(zip.read(name, size - 1, got)) << name;
            EXPECT_EQ(got, "");
        }
        EXPECT_FALSE(zip.extract("bomb", 1'000'000, folder.file("bomb").asChar()));
        EXPECT_FALSE(zip.extract("packed", size, folder.file("out").asChar(),
                                 [](double done) { return done < 0.5; }));
        for (const char* name : {"bomb", "out"})
            EXPECT_FALSE(std::filesystem::exists(folder.file(name).asChar())) << name;
    }
    std::string bytes = folder.read("a.zip");
    bytes[bytes.find(content.substr(1000, 40)) + 5] ^= 1;
    folder.write("b.zip", bytes);
    const ZipReader damaged(folder.file("b.zip").asChar());
    EXPECT_FALSE(damaged.read("plain", size, got));
    for (const size_t cut : {size_t(0), size_t(10), bytes.size() / 2, bytes.size() - 10}) {
        folder.write("c.zip", bytes.substr(0, cut));
        const ZipReader zip(folder.file("c.zip").asChar());
        EXPECT_FALSE(zip.read("packed", size, got)) << cut;
    }
}
