#include "Peer.h"
#include "TestServer.h"

#include "base/CStringList.h"
#include "base/Process.h"
#include "gui/SelectionFetch.h"
#include "gui/Selections.h"
#include "gui/UriList.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>
#include <unistd.h>

TEST(Utf8, TakesWhatIsNoneForLatin1) {
    struct Case {
        std::string text, utf8, latin1;
    };
    const Case cases[] = {{"plain", "plain", "plain"},
                          {"Gr\xc3\xbc\xc3\x9f", "Gr\xc3\xbc\xc3\x9f", "Gr\xfc\xdf"},
                          {"Gr\xfc\xdf", "Gr\xc3\xbc\xc3\x9f", "Gr\xfc\xdf"},
                          {"\xe2\x82\xac 5", "\xe2\x82\xac 5", "? 5"},
                          {"\xf0\x9d\x84\x9e", "\xf0\x9d\x84\x9e", "?"},
                          {"\xc3", "\xc3\x83", "\xc3"},                                 // cut off
                          {"\xc0\xaf", "\xc3\x80\xc2\xaf", "\xc0\xaf"},                 // overlong
                          {"\xed\xa0\x80", "\xc3\xad\xc2\xa0\xc2\x80", "\xed\xa0\x80"}, // surrogate
                          {"\xf4\x90\x80\x80", "\xc3\xb4\xc2\x90\xc2\x80\xc2\x80",
                           "\xf4\x90\x80\x80"}}; // beyond the last
    for (const Case& c : cases) {
        EXPECT_EQ(asUtf8(c.text), c.utf8);
        EXPECT_EQ(asLatin1(c.text), c.latin1);
    }
}

TEST(UriList, GivesTheFilesOfThisMachine) {
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    struct Case {
        std::string uri, path;
    };
    const Case cases[] = {{"file:///a/b.wav", "/a/b.wav"},
                          {"file:/a", "/a"},
                          {"file://localhost/a", "/a"},
                          {"file://" + std::string(host) + "/a", "/a"},
                          {"file:///with%20blank%2Fand%c3%BC", "/with blank/and\xc3\xbc"},
                          {"file:///100%", "/100%"},
                          {"file:///50%zz%4", "/50%zz%4"},
                          {"file:///nul%00", ""},
                          {"file://elsewhere.example/a", ""},
                          {"file://", ""},
                          {"file:", ""},
                          {"file:relative", ""},
                          {"http://localhost/a", ""},
                          {"", ""}};
    std::string list = "# a remark\r\n", all;
    for (const Case& c : cases) {
        EXPECT_EQ(pathOfUri(c.uri), c.path) << c.uri;
        list += c.uri + "\r\n";
        if (!c.path.empty()) all += c.path + "|";
    }
    std::string found;
    for (const CStr& path : pathsOfUriList(list)) found += std::string(path.asChar()) + "|";
    EXPECT_EQ(found, all);
    std::mt19937 random(7);
    for (int round = 0; round < 2000; round++) { // damaged and cut, none may fault
        std::string damaged = list.substr(0, random() % list.size());
        for (int i = 0; i < 4 && !damaged.empty(); i++)
            damaged[random() % damaged.size()] = char(random());
        for (const CStr& path : pathsOfUriList(damaged)) EXPECT_EQ(path[0], '/');
    }
}

namespace {

class SelectionsTest : public GuiTest {
protected:
    /// Runs a line of the shell while our loop goes on. What it printed.
    std::string shell(const std::string& line) {
        const std::string file = std::filesystem::temp_directory_path() /
                                 ("sondrava_selection_" + std::to_string(getpid()));
        CStringList words;
        for (const std::string& w : {std::string("sh"), std::string("-c"), line + " >" + file})
            words.add(w.c_str());
        EXPECT_EQ(runProcess(words,
                             [&] {
                                 app->dispatchEvents();
                                 return true;
                             }),
                  0)
            << line;
        std::ostringstream out;
        out << std::ifstream(file).rdbuf();
        std::remove(file.c_str());
        return out.str();
    }
    /// Runs what another program does while our loop goes on.
    void beside(const std::function<void()>& work) {
        std::atomic<bool> done{false};
        std::thread thread([&] {
            work();
            done = true;
        });
        EXPECT_TRUE(pumpUntil([&] { return done.load(); }));
        thread.join();
    }
};

} // namespace

TEST_F(SelectionsTest, TextComesFromOtherPrograms) {
    const std::string large = "printf 'x%0199999d\\303\\274' 7"; // 200,000 characters and one more
    const std::string largeText = "x" + std::string(199998, '0') + "7\xc3\xbc";
    const struct {
        std::string command, text;
    } cases[] = {
        {large + " | xclip -i -selection clipboard", largeText},
        {"printf 'by xsel \\303\\274' | xsel -l /dev/null -i --clipboard", "by xsel \xc3\xbc"},
        {"xsel -c --clipboard; printf chosen | xclip -i -selection primary", "chosen"}};
    for (const auto& c : cases) {
        shell(c.command + " 2>/dev/null");
        EXPECT_TRUE(pumpUntil([&] { return pasteText() == c.text.c_str(); })) << c.command;
    }
}

TEST_F(SelectionsTest, TextGoesToOtherPrograms) {
    std::string large;
    for (int i = 0; i < 40000; i++) large += "line " + std::to_string(i) + " \xc3\xbc\n";
    for (const std::string& text : {std::string("tempo 120 \xc3\xbc"), large}) {
        copyText(text.c_str());
        for (const char* command :
             {"xclip -o -selection clipboard -t UTF8_STRING",
              "xclip -o -selection primary -t UTF8_STRING", "xsel -o --clipboard"})
            EXPECT_EQ(shell(command), text) << command;
        EXPECT_EQ(shell("xclip -o -selection clipboard -t STRING"), asLatin1(text));
        EXPECT_TRUE(pasteText() == text.c_str());
    }
    const std::string forms = shell("xclip -o -selection clipboard -t TARGETS");
    for (const char* form : {"UTF8_STRING", "STRING", "TARGETS", "TIMESTAMP", "MULTIPLE"})
        EXPECT_NE(forms.find(form), std::string::npos) << form;
    copyText("");
    EXPECT_TRUE(pasteText().empty());
    shell("printf theirs | xclip -i -selection clipboard 2>/dev/null");
    EXPECT_TRUE(pumpUntil([] { return pasteText() == "theirs"; })); // ours no longer
    shell("xsel -c --clipboard; xsel -c --primary");
    copyText("old way");
    EXPECT_EQ(shell("xclip -o -selection buffer-cut"), "old way");
}

/// Owners that break the rules: the user gets nothing, and the program goes on.
TEST_F(SelectionsTest, OwnersMayHangOrLie) {
    struct Case {
        const char* name;
        std::function<void(Peer&, const XSelectionRequestEvent&)> answer;
        Fetched state;
    };
    const Case cases[] = {
        {"silent", [](Peer&, const XSelectionRequestEvent&) {}, Fetched::late},
        {"refuses", [](Peer& p, const XSelectionRequestEvent& e) { p.notify(e, None); },
         Fetched::refused},
        {"names an empty place",
         [](Peer& p, const XSelectionRequestEvent& e) { p.notify(e, e.property); },
         Fetched::refused},
        {"stops after the first piece",
         [](Peer& p, const XSelectionRequestEvent& e) {
             const long size = 100000;
             XChangeProperty(p.display, e.requestor, e.property, p.atom("INCR"), 32,
                             PropModeReplace, reinterpret_cast<const unsigned char*>(&size), 1);
             p.notify(e, e.property);
             usleep(50000);
             p.put(e, "piece");
         },
         Fetched::late},
        {"answers", [](Peer& p, const XSelectionRequestEvent& e) { p.put(e, "text"); },
         Fetched::given}};
    for (const Case& c : cases) {
        Peer peer;
        peer.answer = c.answer;
        peer.own("CLIPBOARD");
        std::vector<long> none;
        std::thread thread([&] { peer.await(nullptr, none); });
        const XConnection::Atoms& atoms = xConnection().atoms;
        const SelectionData data = fetchSelection(atoms.clipboard, atoms.utf8String, 0);
        EXPECT_EQ(int(data.state), int(c.state)) << c.name;
        EXPECT_EQ(data.bytes, c.state == Fetched::given ? "text" : "") << c.name;
        peer.ended = true;
        thread.join();
    }
    XEvent left;
    EXPECT_FALSE(XCheckTypedEvent(liveDisplay(), SelectionNotify, &left));
}

/// A program that asks for a large text and then hangs, or ends, keeps nobody else from it.
TEST_F(SelectionsTest, AskersMayHang) {
    copyText(std::string(300000, 'y').c_str());
    std::vector<std::unique_ptr<Peer>> peers;
    for (int i = 0; i < 20; i++) {
        peers.push_back(std::make_unique<Peer>());
        Peer& peer = *peers.back();
        XConvertSelection(peer.display, peer.atom("CLIPBOARD"), peer.atom("UTF8_STRING"),
                          peer.atom("HERE"), peer.window, CurrentTime);
        XSync(peer.display, False);
        settle();
    }
    peers.erase(peers.begin() + 10, peers.end());
    settle();
    EXPECT_EQ(shell("xclip -o -selection clipboard | wc -c"), "300000\n");
}

namespace {

enum class Ending { drop, leave, death };

/// What a program does that drags files to a point of our window.
struct Drag {
    const char* name;
    long version;
    bool manyForms;
    const char* form;
    const char* list; ///< null: it never gives it
    int x, y;
    Ending ending;
    int status, finished; ///< answers: 1 taken, 0 refused, -1 none
    const char* dropped;  ///< paths that arrive
};

struct Outcome {
    int status = -1, finished = -1;
};

Outcome dragFiles(const Drag& drag, Window target) {
    Outcome outcome;
    Peer peer;
    peer.answer = [&](Peer& p, const XSelectionRequestEvent& e) {
        if (drag.list) p.put(e, drag.list);
    };
    peer.own("XdndSelection");
    const long self = long(peer.window);
    std::vector<long> forms = {long(peer.atom("text/plain")), long(peer.atom("UTF8_STRING")),
                               long(peer.atom("text/html")), long(peer.atom(drag.form))};
    if (drag.manyForms) {
        XChangeProperty(peer.display, peer.window, peer.atom("XdndTypeList"), XA_ATOM, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(forms.data()),
                        int(forms.size()));
        peer.send(target, "XdndEnter", {self, drag.version << 24 | 1, 0, 0, 0});
    } else {
        peer.send(target, "XdndEnter", {self, drag.version << 24, forms[3], 0, 0});
    }
    std::vector<long> data;
    const long place = long(drag.x) << 16 | drag.y;
    peer.send(target, "XdndPosition", {self, 0, place, 0, long(peer.atom("XdndActionCopy"))});
    if (drag.status >= 0 && peer.await("XdndStatus", data)) {
        outcome.status = int(data[1] & 1);
        EXPECT_EQ(data[0], long(target)) << drag.name;
        EXPECT_EQ(data[4] != 0, outcome.status == 1) << drag.name;
    }
    if (drag.ending == Ending::death) return outcome;
    peer.send(target, drag.ending == Ending::drop ? "XdndDrop" : "XdndLeave", {self, 0, 0, 0, 0});
    if (drag.finished >= 0 && peer.await("XdndFinished", data)) outcome.finished = int(data[1] & 1);
    return outcome;
}

} // namespace

/// The window has a control at (20, 20) of 100 x 80 that takes files, and one beside it that does
/// not.
TEST_F(SelectionsTest, FilesAreDroppedByOtherPrograms) {
    const char* two = "file:///songs/a%20b.wav\r\nfile:///c.mid\r\n";
    const char *files = "text/uri-list", *both = "/songs/a b.wav|/c.mid|";
    const Drag drags[] = {
        {"dropped", 5, false, files, two, 150, 150, Ending::drop, 1, 1, both},
        {"many forms", 3, true, files, two, 150, 150, Ending::drop, 1, 1, both},
        {"nobody there", 5, false, files, two, 250, 150, Ending::drop, 0, 0, ""},
        {"left", 5, false, files, two, 150, 150, Ending::leave, 1, -1, ""},
        {"died", 5, false, files, two, 150, 150, Ending::death, 1, -1, ""},
        {"hangs", 5, false, files, nullptr, 150, 150, Ending::drop, 0, 0, ""},
        {"no files of ours", 5, false, files, "http://x/y\r\n", 150, 150, Ending::drop, 0, 0, ""},
        {"too old", 2, false, files, two, 150, 150, Ending::drop, -1, -1, ""},
        {"no files", 5, true, "text/rtf", two, 150, 150, Ending::drop, -1, -1, ""},
        {"and again", 5, false, files, two, 150, 150, Ending::drop, 1, 1, both}};
    const auto win = bareWindow();
    auto* taker = new ProbeCtrl(win.get(), "taker", 20, 20, 100, 80);
    win->addControl(taker);
    win->addControl(new ProbeCtrl(win.get(), "other", 130, 20, 60, 80));
    std::string dropped;
    int over = 0;
    Target stepper([&] { over++; }), dropper([&] {
        EXPECT_EQ(dropper.at, asPoint(30, 30));
        EXPECT_TRUE(app->hasDragType(dropFile));
        for (const CDropItem* item : *app->getDropItems())
            dropped += std::string(item->path.asChar()) + "|";
    });
    taker->onDrop = dropper.mouse();
    taker->onDragOver = stepper.mouse();
    int ends = 0, expectedEnds = 0;
    Target ender([&] { ends++; });
    app->onEndDrag = ender.change();
    xerror = 0;
    for (const Drag& drag : drags) {
        dropped.clear();
        over = 0;
        Outcome outcome;
        beside([&] { outcome = dragFiles(drag, win->handle); });
        EXPECT_TRUE(pumpUntil([&] { return !app->dragList; })) << drag.name;
        EXPECT_EQ(outcome.status, drag.status) << drag.name;
        EXPECT_EQ(outcome.finished, drag.finished) << drag.name;
        EXPECT_EQ(dropped, drag.dropped) << drag.name;
        EXPECT_EQ(over > 0, drag.status == 1) << drag.name;
        expectedEnds += drag.list == two && drag.status >= 0;
        EXPECT_EQ(ends, expectedEnds) << drag.name;
    }
    int strays = 0;
    Target stray([&] { strays += app->dragList->getCount(); });
    app->onStrayDrop = stray.change();
    const Drag beyond = {"taken by the program", 5, false, files, two, 250, 150,
                         Ending::drop,           1, 1,     both};
    Outcome taken;
    beside([&] { taken = dragFiles(beyond, win->handle); });
    EXPECT_TRUE(pumpUntil([&] { return !app->dragList; }));
    EXPECT_EQ(taken.status + taken.finished, 2);
    EXPECT_EQ(strays, 2);
    wire(app->onStrayDrop, nullptr);
    CWin dialog(app.get(), win.get(), "dialog", 400, 300, 100, 100, winNoBorder);
    app->modalWin = &dialog;
    Drag refused = drags[0];
    refused.status = refused.finished = 0;
    Outcome outcome;
    beside([&] { outcome = dragFiles(refused, win->handle); });
    EXPECT_EQ(outcome.status, 0) << "under a modal window";
    // Messages out of order, and in the name of one of our own windows.
    Peer peer;
    for (const char* message : {"XdndPosition", "XdndDrop", "XdndLeave", "XdndEnter", "XdndDrop"})
        peer.send(win->handle, message,
                  {long(win->handle), 5L << 24, long(peer.atom(files)), 0, 0});
    settle();
    EXPECT_EQ(app->dragList, nullptr);
    xdo("mousemove 130 130");
    EXPECT_TRUE(taker->saw("move 10 10 0")); // its events still come
}
