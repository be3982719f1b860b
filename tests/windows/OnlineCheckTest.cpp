#include "MainFixture.h"
#include "support/LoopbackServer.h"
#include "support/Places.h"

#include "gui/controls/CButton.h"
#include "online/Uploader.h"
#include "shell/OnlineCheck.h"
#include "ui/Options.h"

#include <minizip/zip.h>

namespace {

constexpr const char *checkTitle = "Check for updates", *shareTitle = "Share",
                     *exportTitle = "Export Project (wav, aif, mp3)";

} // namespace

/// A user whose folder is the test's, and a server that is the packager's.
class OnlineCheckTest : public MainWinTest {
protected:
    void SetUp() override {
        former = std::getenv("HOME");
        setenv("HOME", folder.path.asChar(), 1);
        MainWinTest::SetUp();
        start();
    }
    void TearDown() override {
        MainWinTest::TearDown();
        setenv("HOME", former.c_str(), 1);
    }
    std::string status() {
        Description line;
        for (CCtrl* c : win->clientGroup->controls)
            if (c->id == "status") c->describe(line, CCtrl::wholeCtrl);
        return line.name;
    }
    /// An archive at the server with the content of one file, and the end of its line in the list.
    std::string offer(const std::string& archive, const char* name, const std::string& content) {
        const zip_fileinfo info{};
        zipFile file = zipOpen64(at(archive).c_str(), APPEND_STATUS_CREATE);
        zipOpenNewFileInZip(file, name, &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 6);
        zipWriteInFileInZip(file, content.data(), unsigned(content.size()));
        zipCloseFileInZip(file);
        zipClose(file, nullptr);
        const std::string bytes = folder.read(archive.c_str());
        server.set(archive, bytes);
        return std::to_string(bytes.size()) + " " + sha256OfFile(at(archive)) + " " + archive +
               "\n";
    }
    void list(const std::string& lines) {
        const std::string text = "sondrava-catalogue 1\n" + lines;
        server.set("catalogue", text);
        server.set("catalogue.sig", signer.sign(text));
    }
    bool isRunning(OnlineCheck& check) {
        check.serve();
        return check.isAsking();
    }
    OnlineSource source() { return {server.address, signer.key}; }

    std::string former;
    const Signer signer;
    LoopbackServer server;
};

/// Nobody is asked unless the user wants it, and then once a day; nothing comes by itself.
TEST_F(OnlineCheckTest, AsksByItselfOnceADayWhereThatIsChosen) {
    list("program 99.0 " + offer("p.zip", "readme", "new") + "addon upload 1.0 " +
         offer("u.zip", "upload.so", "old"));
    OnlineCheck check(win.get(), source());
    EXPECT_FALSE(isRunning(check));
    win->options().checkUpdates.set(1);
    EXPECT_TRUE(pumpUntil([&] { return !isRunning(check); }));
    EXPECT_EQ(status(), "Sondrava 99.0 is there: Help, Check for updates...");
    EXPECT_EQ(server.asked, 2) << "the list and its signature";
    EXPECT_TRUE(titles.empty());
    OnlineCheck again(win.get(), source());
    EXPECT_FALSE(isRunning(again)) << "the same day";
    set("online", "day", "1");
    list("addon upload 1.0 " + offer("v.zip", "upload.so", "old"));
    win->setStatus("", true);
    OnlineCheck tomorrow(win.get(), source());
    EXPECT_TRUE(pumpUntil([&] { return !isRunning(tomorrow); }));
    EXPECT_EQ(server.asked, 4);
    EXPECT_EQ(status(), "Status") << "an add-on that nobody has is no update";
}

/// From the list to the folder, from there to the dialog, and the song to the service.
TEST_F(OnlineCheckTest, AnAddOnOfTheListSharesASong) {
    std::ifstream library(builtFile("tests/made_upload.so"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(library), {}};
    list("addon upload 1.0 " + offer("u.zip", "upload.so", bytes));
    server.set("public/Hymn", std::string());
    EXPECT_EQ(Uploader::ofUser(), nullptr);
    OnlineCheck check(win.get(), source());
    keysInDialog(checkTitle, {"Return", "Return"});
    check.run();
    ASSERT_NE(Uploader::ofUser(), nullptr);
    std::filesystem::create_directory(at(".Sondrava/upload"));
    folder.write(".Sondrava/upload/server", server.address);
    ASSERT_TRUE(load(kindDefault));
    auto* part = seq()->getProg()->tracks.first()->parts.first();
    CMIDIEvent* note = createMIDIEvent();
    note->data = 0x644090;
    note->length = 900;
    part->addEvent(0, note);
    set("render", "tail", "0");
    inDialog(exportTitle, [&] {
        for (CCtrl* c : app->modalWin->clientGroup->controls)
            if (c->category == catGroup)
                for (CCtrl* button : static_cast<CGroup*>(c)->controls)
                    if (button->id == shareTitle) static_cast<CButton*>(button)->click();
    });
    // The account by the first field, the name by the second.
    keysInDialog(shareTitle, {"shift+Tab", "Return"});
    typeInDialog("Connect", "right");
    keysInDialog("Connect", {"Return"});
    keysInDialog(shareTitle, {"Tab", "ctrl+a"});
    typeInDialog(shareTitle, "Hymn");
    keysInDialog(shareTitle, {"Return", "Return"}); // and the message
    EXPECT_TRUE(win->onAction(win->getAction("render")));
    EXPECT_EQ(server.received("public/Hymn").substr(0, 4), "RIFF");
    EXPECT_GT(server.received("public/Hymn").size(), 44100u);
    EXPECT_EQ(setting("add-ons", "upload"), "1.0");
    keysInDialog(checkTitle, {"Return"});
    check.run(); // and there is no more
    EXPECT_EQ(titles.back(), checkTitle);
}
