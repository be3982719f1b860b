#include "online/Online.h"

#include "base/TempFolder.h"
#include "interchange/ZipFile.h"

#include <arpa/inet.h>
#include <condition_variable>
#include <minizip/zip.h>
#include <mutex>
#include <sodium.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// A server on the loopback that answers as it is told, whatever that is.
class Server {
public:
    struct Answer {
        std::string head, body;
        bool stalls = false; ///< it says no more, and does not hang up
    };

    Server() {
        sockaddr_in at{};
        at.sin_family = AF_INET;
        at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof at;
        bind(listening, reinterpret_cast<sockaddr*>(&at), length);
        listen(listening, 16);
        getsockname(listening, reinterpret_cast<sockaddr*>(&at), &length);
        address = "http://127.0.0.1:" + std::to_string(ntohs(at.sin_port)) + "/";
        thread = std::thread([this] { serve(); });
    }
    ~Server() {
        shutdown(listening, SHUT_RDWR);
        thread.join();
        for (const int left : open) close(left);
        close(listening);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void set(const std::string& path, const Answer& answer) { answers["/" + path] = answer; }
    void set(const std::string& path, const std::string& body) {
        set(path, {"200 OK\r\nContent-Length: " + std::to_string(body.size()), body});
    }
    std::string address;
    std::atomic<int> asked{0};

private:
    void serve() {
        for (int peer; (peer = accept(listening, nullptr, nullptr)) >= 0;) {
            std::string request;
            for (char c; request.find("\r\n\r\n") == std::string::npos && read(peer, &c, 1) == 1;)
                request += c;
            const size_t from = request.find(' ') + 1;
            const auto found = answers.find(request.substr(from, request.find(' ', from) - from));
            const Answer answer = found == answers.end() ? Answer{"404 None", ""} : found->second;
            const std::string all =
                "HTTP/1.1 " + answer.head + "\r\nConnection: close\r\n\r\n" + answer.body;
            send(peer, all.data(), all.size(), MSG_NOSIGNAL);
            asked++;
            if (answer.stalls)
                open.push_back(peer);
            else
                close(peer);
        }
    }
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
    std::map<std::string, Answer> answers;
    std::vector<int> open;
    std::thread thread;
};

struct Signer {
    Signer() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(key.data(), secret.data());
    }
    std::string sign(const std::string& text) const {
        std::string signature(crypto_sign_BYTES, 0);
        crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                             secret.data());
        return signature;
    }
    OnlineKey key{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret{};
};

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
    mutable Server server;
};

} // namespace

/// Only the owner of the key can have made the list; one sign that is another makes it nobody's.
TEST(Catalogue, IsItsOwners) {
    const Signer owner, other;
    Server server;
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
    place.server.set("echo.zip", Server::Answer{"302 Found\r\nLocation: /moved", ""});
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
        return Server::Answer{"200 OK\r\nContent-Length: " + std::to_string(length), body};
    };
    Server::Answer stalled = told(good.substr(0, 10), good.size());
    stalled.stalls = true;
    std::string other = good;
    other[other.size() / 2] ^= 1;
    const struct {
        const char* name;
        std::string given; ///< that the list tells
        Server::Answer answer;
        OnlineResult result;
    } cases[] = {
        {"cut short", good, told(good.substr(0, good.size() / 2), good.size()),
         OnlineResult::damaged},
        {"says less", good, told(good.substr(0, 20), 20), OnlineResult::damaged},
        {"says more", good, told(good + good, 2 * good.size()), OnlineResult::damaged},
        {"sends more", good, Server::Answer{"200 OK", good + good}, OnlineResult::damaged},
        {"other bytes", good, told(other, other.size()), OnlineResult::damaged},
        {"stalls", good, stalled, OnlineResult::stalled},
        {"redirects for ever", good, Server::Answer{"302 Found\r\nLocation: /echo.zip", ""},
         OnlineResult::unreachable},
        {"leads to a file", good, Server::Answer{"302 Found\r\nLocation: file:///etc/passwd", ""},
         OnlineResult::unreachable},
        {"none", good, Server::Answer{"404 None", ""}, OnlineResult::unreachable},
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
