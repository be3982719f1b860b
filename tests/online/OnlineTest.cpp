#include "online/Online.h"

#include "base/TempFolder.h"
#include "interchange/ZipFile.h"
#include "support/LoopbackServer.h"

#include <minizip/zip.h>

namespace fs = std::filesystem;

namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

std::string archive(const TempFolder& folder, const Files& files) {
    const CStr path = folder.file("made.zip");
    zipFile file = zipOpen64(path.asChar(), APPEND_STATUS_CREATE);
    for (const auto& [name, content] : files) {
        const zip_fileinfo info{};
        zipOpenNewFileInZip(file, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            9);
        zipWriteInFileInZip(file, content.data(), unsigned(content.size()));
        zipCloseFileInZip(file);
    }
    zipClose(file, nullptr);
    return folder.read("made.zip");
}

/// A place with an add-on, to be replaced by what the server has.
struct Place {
    Place() {
        fs::create_directories((folder.path + "/place/echo").asChar());
        folder.write("place/echo/old", "old");
    }
    CatalogueEntry entry(const std::string& bytes) const {
        folder.write("given", bytes);
        return {"echo", "1.0", int64_t(bytes.size()), sha256OfFile(folder.file("given").asChar()),
                "echo.zip"};
    }
    OnlineResult bring(const CatalogueEntry& what, const OnlineWatch& watch = {},
                       const BringLimits& limits = {}) const {
        return bringEntry({server.address, {}}, what, folder.file("place").asChar(), "echo", watch,
                          limits);
    }
    /// All names below the place, which are whole with what was there before.
    std::set<std::string> names() const {
        std::set<std::string> all;
        for (const auto& e : fs::recursive_directory_iterator(folder.path.asChar()))
            if (e.is_regular_file())
                all.insert(fs::relative(e.path(), folder.path.asChar()).string());
        all.erase("given");
        all.erase("made.zip");
        return all;
    }
    const TempFolder folder;
    mutable LoopbackServer server;
};

} // namespace

/// Only the owner of the key can have made the list; one sign that is another makes it nobody's.
TEST(Catalogue, IsItsOwners) {
    const Signer owner, other;
    LoopbackServer server;
    const TempFolder folder;
    const std::string sum(64, 'a');
    const std::string text = "sondrava-catalogue 1\nserial 7\nlater word\nprogram 2.1 100 " + sum +
                             " p.zip\naddon echo 1.0.3 5 " + sum + " a/e.zip\n";
    const auto get = [&](const std::string& list, const std::string& signature, Catalogue& to) {
        server.set("catalogue", list);
        server.set("catalogue.sig", signature);
        return getCatalogue({server.address, owner.key}, folder.path.asChar(), to);
    };
    Catalogue list;
    ASSERT_EQ(get(text, owner.sign(text), list), OnlineResult::good);
    ASSERT_EQ(list.entries.size(), 2u);
    EXPECT_TRUE(list.serial == 7 && list.entries[0].name.empty() && list.entries[0].bytes == 100);
    EXPECT_TRUE(list.entries[1].name == "echo" && list.entries[1].path == "a/e.zip");
    EXPECT_EQ(get(text, other.sign(text), list), OnlineResult::damaged);
    EXPECT_EQ(get(text + " ", owner.sign(text), list), OnlineResult::damaged);
    EXPECT_EQ(get(text, "", list), OnlineResult::damaged);
    const std::string huge(2 << 20, 'x');
    EXPECT_EQ(get(huge, owner.sign(huge), list), OnlineResult::damaged);
    for (const std::string& line :
         {"addon ../echo 1 5 " + sum + " e.zip", "addon echo 1 5 " + sum + " ../e.zip",
          "addon echo 1 -5 " + sum + " e.zip", "addon echo 1 5 " + sum + "a e.zip",
          "addon echo 1 5 " + sum, "addon .echo 1 5 " + sum + " e.zip",
          "program 1 9999999999999999999 " + sum + " e.zip"})
        EXPECT_FALSE(readCatalogue("sondrava-catalogue 1\n" + line)) << line;
    EXPECT_FALSE(readCatalogue("") || readCatalogue("sondrava-catalogue 2\n"));
    EXPECT_TRUE(fs::is_empty(folder.path.asChar()));
    EXPECT_EQ(getCatalogue({}, folder.path.asChar(), list), OnlineResult::unreachable);
    EXPECT_TRUE(isNewer("2.10", "2.9") && !isNewer("2.0", "2") && !isNewer("1.9.9", "2"));
}

TEST(Online, PutsAnEntryInPlaceWhole) {
    const Place place;
    const std::string zip = archive(place.folder, {{"a/b", "one"}, {"c", std::string(99999, 'x')}});
    place.server.set("moved", zip);
    place.server.set("echo.zip", LoopbackServer::Answer{"302 Found\r\nLocation: /moved", ""});
    double most = 0.0;
    EXPECT_EQ(place.bring(place.entry(zip),
                          [&](double done) {
                              most = std::max(most, done);
                              return true;
                          }),
              OnlineResult::good);
    EXPECT_EQ(place.names(), (std::set<std::string>{"place/echo/a/b", "place/echo/c"}));
    EXPECT_EQ(place.folder.read("place/echo/a/b"), "one");
    EXPECT_EQ(most, 1.0);
}

/// Whatever the server does, what was there stays, and nothing else comes to lie anywhere.
TEST(Online, LeavesWhatIsThereWhenItFails) {
    const Place place;
    const std::string good = archive(place.folder, {{"a", std::string(50000, 'y') + "z"}});
    const std::string evil = archive(place.folder, {{"a", "b"}, {"../../out", "evil"}});
    const std::string bomb = archive(place.folder, {{"a", std::string(20'000'000, 'a')}});
    const std::string many = archive(place.folder, {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    const auto told = [](const std::string& body, size_t length) {
        return LoopbackServer::Answer{"200 OK\r\nContent-Length: " + std::to_string(length), body};
    };
    LoopbackServer::Answer stalled = told(good.substr(0, 10), good.size());
    stalled.stalls = true;
    std::string other = good;
    other[other.size() / 2] ^= 1;
    const struct {
        const char* name;
        std::string given; ///< that the list tells
        LoopbackServer::Answer answer;
        OnlineResult result;
    } cases[] = {
        {"cut short", good, told(good.substr(0, good.size() / 2), good.size()),
         OnlineResult::damaged},
        {"says less", good, told(good.substr(0, 20), 20), OnlineResult::damaged},
        {"says more", good, told(good + good, 2 * good.size()), OnlineResult::damaged},
        {"sends more", good, LoopbackServer::Answer{"200 OK", good + good}, OnlineResult::damaged},
        {"other bytes", good, told(other, other.size()), OnlineResult::damaged},
        {"stalls", good, stalled, OnlineResult::stalled},
        {"redirects for ever", good, LoopbackServer::Answer{"302 Found\r\nLocation: /echo.zip", ""},
         OnlineResult::unreachable},
        {"leads to a file", good,
         LoopbackServer::Answer{"302 Found\r\nLocation: file:///etc/passwd", ""},
         OnlineResult::unreachable},
        {"none", good, LoopbackServer::Answer{"404 None", ""}, OnlineResult::unreachable},
        {"leads out", evil, told(evil, evil.size()), OnlineResult::damaged},
        {"bomb", bomb, told(bomb, bomb.size()), OnlineResult::damaged},
        {"many", many, told(many, many.size()), OnlineResult::damaged},
        {"no archive", "text", told("text", 4), OnlineResult::damaged},
    };
    const BringLimits limits{.unpackedBytes = 1'000'000, .files = 2, .stallSeconds = 1};
    for (const auto& c : cases) {
        place.server.set("echo.zip", c.answer);
        EXPECT_EQ(place.bring(place.entry(c.given), {}, limits), c.result) << c.name;
        EXPECT_EQ(place.names(), std::set<std::string>{"place/echo/old"}) << c.name;
    }
    place.server.set("echo.zip", good);
    EXPECT_EQ(place.bring(place.entry(good), [](double) { return false; }),
              OnlineResult::cancelled);
    EXPECT_EQ(place.names(), std::set<std::string>{"place/echo/old"});
}
