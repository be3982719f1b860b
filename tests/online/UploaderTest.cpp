#include "online/Uploader.h"

#include "base/TempFolder.h"
#include "support/LoopbackServer.h"
#include "support/Places.h"

#include <gtest/gtest.h>

namespace {

using Connection = CSoundCloudAddOn::Connection;

/// A library as the user has one, and its folder with the address of a server.
struct Loaded {
    Loaded() {
        std::filesystem::create_directory(keep.asChar());
        folder.write("keep/server", server.address);
    }
    const TempFolder folder;
    const CStr keep = folder.file("keep");
    LoopbackServer server;
    Uploader uploader{builtFile("tests/made_upload.so").c_str(), keep};
};

} // namespace

TEST(Uploader, SendsAFileOnceTheServiceKnowsTheUser) {
    Loaded f;
    const std::string song(3'000'000, 's');
    f.folder.write("song.wav", song);
    f.server.set("private/Hymn", std::string());
    std::vector<CStr> codes{"right", "wrong"};
    const auto next = [&] {
        const CStr code = codes.empty() ? CStr() : codes.back();
        if (!codes.empty()) codes.pop_back();
        return code;
    };
    EXPECT_EQ(f.uploader.connectBy([] { return CStr(); }), Connection::needsCode);
    EXPECT_EQ(f.uploader.connectBy(next), Connection::refused);
    EXPECT_EQ(f.uploader.param("error"), "Nobody has that code");
    EXPECT_EQ(f.uploader.connectBy(next), Connection::connected);
    EXPECT_EQ(f.uploader.param("account"), "Clara");
    EXPECT_EQ(Uploader(builtFile("tests/made_upload.so").c_str(), f.keep).param("account"), "Clara")
        << "kept for the next run";
    f.uploader.setParam("sharing", "private");
    float most = 0.0f;
    f.uploader.goOn = [&](float done) {
        most = std::max(most, done);
        return true;
    };
    EXPECT_TRUE(f.uploader.sendFile(f.folder.file("song.wav"), "Hymn"));
    EXPECT_EQ(f.server.received("private/Hymn"), song);
    EXPECT_EQ(f.uploader.param("url"), (f.server.address + "private/Hymn").c_str());
    EXPECT_GT(most, 0.0f);
    EXPECT_FALSE(f.uploader.sendFile(f.folder.file("song.wav"), "Refused"));
    EXPECT_EQ(f.uploader.param("error"), "The service takes no more songs");
    f.uploader.goOn = [](float) { return false; };
    EXPECT_FALSE(f.uploader.sendFile(f.folder.file("song.wav"), "Hymn")) << "cancelled";
    f.uploader.disconnect();
    EXPECT_EQ(f.uploader.param("account"), "");
}

/// What is no such library is never called.
TEST(Uploader, LoadsNothingElse) {
    const TempFolder folder;
    folder.write("text.so", "no library");
    for (const std::string& path : {std::string(folder.file("text.so").asChar()),
                                    builtFile("bin/libaam.so"), std::string("/none/upload.so")}) {
        Uploader other(path.c_str(), folder.file("keep"));
        EXPECT_FALSE(other.load()) << path;
        EXPECT_EQ(other.connect(), Connection::refused);
        EXPECT_FALSE(other.sendFile(folder.file("text.so"), "Hymn"));
        EXPECT_EQ(other.param("url"), "");
    }
}
