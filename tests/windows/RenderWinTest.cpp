#include "MainFixture.h"

#include "base/Paths.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "render/CRenderWin.h"
#include "sequencer/render/CSoundCloudAddOn.h"

#include <X11/Xlib.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <set>
#include <thread>

namespace {

constexpr const char* dialogTitle = "Export Project (wav, aif, mp3)";

CCtrl* findCtrl(CGroup* group, const CStr& id) {
    for (CCtrl* c : group->controls) {
        if (c->id == id) return c;
        if (c->category != catGroup && c->category != catGroupLike) continue;
        if (CCtrl* found = findCtrl(static_cast<CGroup*>(c), id)) return found;
    }
    return nullptr;
}

/// Does the same again and again, as long as it stands, from beside the program.
class Impatience {
public:
    explicit Impatience(const std::function<void()>& act = pressEscape)
        : doer([this, act] {
              while (!ended) act();
          }) {}
    ~Impatience() {
        ended = true;
        doer.join();
    }
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;

private:
    static void pressEscape() { runCommand({"xdotool", "key", "Escape"}); }
    std::atomic<bool> ended{false};
    std::thread doer;
};

/// Asks a window to close, as a window manager does; 0 asks the one with the focus.
void askToClose(Window window) {
    Display* display = XOpenDisplay(nullptr);
    int revert = 0;
    if (!window) XGetInputFocus(display, &window, &revert);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(XInternAtom(display, "WM_DELETE_WINDOW", False));
    XSendEvent(display, window, False, NoEventMask, &event);
    XCloseDisplay(display);
}

struct Service : CSoundCloudAddOn {
    std::string sent;
    Connection connect() override { return Connection::connected; }
    void setCode(const CStr&) override {}
    bool sendFile(const CStr& file, const CStr& name) override {
        sent = std::string(name.asChar()) + (fileExists(file) ? "" : " without a file");
        return true;
    }
    CStr param(const CStr&) override { return "there"; }
};

} // namespace

/// A saved song of three seconds: a synthesizer that plays a bar, and for a second one more note in
/// a part that is selected. The locators enclose half a second. No export has a tail.
class RenderWinTest : public MainWinTest {
protected:
    void startSong() {
        start();
        ASSERT_TRUE(load(kindDefault));
        CIniFile(inifile).writeInteger("render", "tail", 0);
        host->projectFile = at("song.qv").c_str();
        win->projectFolder = at("").c_str();
        CSeqProg* prog = seq()->getProg();
        prog->leftLocator = 960;
        prog->rightLocator = 1920;
        songTrack = prog->tracks.first();
        addNote(songTrack->parts.first());
        auto* part = new CMIDIPart;
        part->pos = 3840;
        part->length = 1920;
        addNote(part);
        songTrack->addPart(part, nullptr);
        for (auto* p : songTrack->parts) p->setSelected(p == part);
    }
    static void addNote(CPart* part) {
        CMIDIEvent* event = createMIDIEvent();
        event->data = 0x644090;
        event->length = 900;
        part->addEvent(0, event);
    }
    /// Over an hour, which takes some seconds to render.
    void lengthen() { songTrack->parts.last()->length = 1 << 23; }
    /// What another program reads in a file's header.
    std::string header(const std::string& name) const {
        std::string told;
        for (const char* what : {"-t", "-r", "-b", "-c", "-s"}) {
            const std::string out = at("told");
            const std::string command =
                std::string("soxi ") + what + " '" + at(name) + "' >" + out + " 2>/dev/null";
            if (std::system(command.c_str()) != 0) return "unreadable";
            std::string line = folder.read("told");
            told += (told.empty() ? "" : " ") + line.substr(0, line.find('\n'));
        }
        std::filesystem::remove(at("told"));
        return told;
    }
    std::set<std::string> filesIn(const std::string& path) const {
        std::set<std::string> names;
        std::error_code none;
        for (const auto& f : std::filesystem::directory_iterator(path, none))
            if (f.is_regular_file()) names.insert(f.path().filename().string());
        return names;
    }
    /// The choice at `index` of the field `id`, as by the mouse.
    void choose(const char* id, int index) {
        CCtrl* ctrl = findCtrl(app->modalWin->clientGroup, id);
        ASSERT_NE(ctrl, nullptr) << id;
        if (auto* list = dynamic_cast<CDropdown*>(ctrl)) return list->setIndex(index, true);
        if (auto* list = dynamic_cast<CListbox*>(ctrl)) {
            list->setIndex(index);
            return (*list->onChange)(list);
        }
        auto* box = static_cast<CCheckbox*>(ctrl);
        if (box->checked != (index != 0)) box->click();
    }
    void saveTo(const char* dialog, const std::string& path) {
        keysInDialog(dialogTitle, {"Return"});
        if (dialog == std::string("Save as")) keysInDialog(dialog, {"ctrl+a"});
        typeInDialog(dialog, path);
        keysInDialog(dialog, {"Return"});
    }
    bool run(const char* name) { return win->onAction(win->getAction(name)); }
    int frozen() const { return songTrack->freezeItems.getCount(); }

    CSongTrack* songTrack = nullptr;
};

TEST_F(RenderWinTest, WritesTheFileThatIsChosen) {
    struct Case {
        std::vector<std::pair<const char*, int>> choices;
        const char *file, *header; ///< kind, frames per second, bits, channels, frames
    };
    const Case cases[] = {
        {{}, "a.wav", "wav 44100 16 2 132300"},
        {{{"range", 1}, {"bits", 1}}, "b.wav", "wav 44100 24 2 22050"},
        {{{"format", 1}, {"rate", 2}, {"range", 2}}, "c.aif", "aiff 48000 24 2 48000"},
        {{{"format", 0}, {"channels", 1}, {"rate", 0}}, "d.wav", "wav 22050 24 1 22050"},
        {{{"range", 0}, {"bits", 2}, {"rate", 3}}, "e.wav", "wav 96000 32 1 288000"},
        {{{"tail", 2}}, "f.wav", "wav 96000 32 1 384000"},
    };
    startSong();
    for (const Case& c : cases) { // each begins with the choices of the one before
        inDialog(dialogTitle, [&] {
            for (const auto& [id, index] : c.choices) choose(id, index);
        });
        saveTo("Save as", at(c.file));
        key("F5");
        EXPECT_EQ(header(c.file), c.header) << c.file;
        CPart* last = songTrack->parts.last();
        last->setSelected(true); // a render of selected parts ends that
    }
    const struct {
        const char *key, *value;
    } kept[] = {{"source", "0"},   {"bits", "32"}, {"channels", "1"},
                {"rate", "96000"}, {"ext", "0"},   {"tail", "1000"}};
    for (const auto& k : kept) EXPECT_EQ(setting("render", k.key), k.value) << k.key;
}

TEST_F(RenderWinTest, WritesMp3AtItsBitrate) {
    startSong();
    inDialog(dialogTitle, [&] {
        choose("format", 2);
        choose("bitrate", 4);
        EXPECT_FALSE(findCtrl(app->modalWin->clientGroup, "bits")->enabled);
    });
    saveTo("Save as", at("song.mp3"));
    key("F5");
    EXPECT_NEAR(double(getFileSize(at("song.mp3").c_str())), 3 * 192000 / 8, 3000);
    EXPECT_EQ(filesIn(at("")).count("song.wav"), 0u);
}

/// A file for the track and each send bus, all at the running rate, which stays no choice.
TEST_F(RenderWinTest, WritesTracksToAFolder) {
    startSong();
    std::filesystem::create_directory(at("stems"));
    ASSERT_TRUE(songTrack->track->selected());
    const size_t sends = size_t(host->sends.getCount());
    inDialog(dialogTitle, [&] {
        choose("rate", 3);
        choose("multitrack", 1);
        EXPECT_FALSE(findCtrl(app->modalWin->clientGroup, "rate")->enabled);
    });
    inDialog(dialogTitle, [&] { win->projectFolder = at("stems/").c_str(); });
    keysInDialog(dialogTitle, {"Return"});
    keysInDialog("Select folder", {"Return"});
    key("F5");
    const std::set<std::string> files = filesIn(at("stems"));
    ASSERT_EQ(files.size(), 1 + sends);
    EXPECT_EQ(files.begin()->rfind("01_track_", 0), 0u) << *files.begin();
    EXPECT_EQ(header("stems/" + *files.begin()), "wav 44100 16 2 132300");
    EXPECT_EQ(setting("render", "rate"), "96000");
}

TEST_F(RenderWinTest, TellsWhatCannotBeExported) {
    startSong();
    songTrack->track->setSelected(false);
    for (auto* p : songTrack->parts) p->setSelected(false);
    inDialog(dialogTitle, [&] { choose("range", 2); });
    keysInDialog(dialogTitle, {"Return"});
    keysInDialog("Render", {"Return"});
    keysInDialog(dialogTitle, {"Escape"});
    key("F5");
    EXPECT_EQ(titles, (std::vector<std::string>{dialogTitle, "Render", dialogTitle}));
}

/// Whatever runs stays open until it is cancelled, and then has left nothing behind; a wave stays
/// as far as it got, with a right header.
TEST_F(RenderWinTest, EscapeCancels) {
    startSong();
    lengthen();
    std::set<std::string> before = filesIn(at(""));
    before.insert({"part.wav", "settings.ini"});
    for (const char* action : {"freeze", "bounce"}) {
        std::filesystem::create_directory(at("song_audio"));
        const Impatience impatience;
        EXPECT_TRUE(run(action));
        EXPECT_EQ(filesIn(at("song_audio")), std::set<std::string>{}) << action;
        EXPECT_EQ(frozen(), 0);
        EXPECT_EQ(tracks(), 1);
        EXPECT_TRUE(titles.empty()) << action << " failed: " << titles.front();
    }
    for (const auto& [format, name] : {std::pair(0, "part.wav"), std::pair(2, "part.mp3")}) {
        std::unique_ptr<Impatience> impatience;
        inDialog(dialogTitle, [&, f = format] { choose("format", f); });
        keysInDialog(dialogTitle, {"Return"});
        keysInDialog("Save as", {"ctrl+a"});
        typeInDialog("Save as", at(name));
        inDialog("Save as", [&] {
            runCommand({"xdotool", "key", "Return"});
            impatience = std::make_unique<Impatience>();
        });
        key("F5");
        impatience.reset();
        settle();
    }
    EXPECT_EQ(header("part.wav").rfind("wav 44100 16 2 ", 0), 0u) << header("part.wav");
    EXPECT_EQ(filesIn(at("")), before);
}

/// A window manager that wants the window of the work closed cancels it; of the main one, nothing.
TEST_F(RenderWinTest, ClosingCancelsAndTheProgramStays) {
    startSong();
    lengthen();
    std::filesystem::create_directory(at("song_audio"));
    const Impatience impatience([main = win->handle] {
        askToClose(main);
        askToClose(0);
    });
    EXPECT_TRUE(run("freeze"));
    EXPECT_EQ(filesIn(at("song_audio")), std::set<std::string>{});
    EXPECT_EQ(frozen(), 0);
    EXPECT_TRUE(win->visible);
}

/// The export would end the take.
TEST_F(RenderWinTest, TakesRunOn) {
    startSong();
    host->recording = 1;
    keysInDialog("Export", {"Return"});
    key("F5");
    EXPECT_EQ(titles, std::vector<std::string>{"Export"});
    host->recording = 0;
    settle();
    inDialog(dialogTitle, [&] { host->recording = 1; }); // by a controller
    saveTo("Save as", at("take.wav"));
    keysInDialog("Export", {"Return"});
    keysInDialog(dialogTitle, {"Escape"});
    key("F5");
    EXPECT_TRUE(host->recording);
    EXPECT_EQ(filesIn(at("")).count("take.wav"), 0u);
    host->recording = 0;
}

TEST_F(RenderWinTest, FreezesAndBouncesAsStepsOfTheHistory) {
    startSong();
    std::filesystem::create_directory(at("song_audio"));
    const auto stepsBack = [&](const std::function<bool()>& done, const std::function<bool()>& was,
                               const char* what) {
        EXPECT_TRUE(pumpUntil(done)) << what;
        key("ctrl+z");
        EXPECT_TRUE(pumpUntil(was)) << what << ", undone";
        key("ctrl+y");
        EXPECT_TRUE(pumpUntil(done)) << what << ", redone";
    };
    const auto isFrozen = [&] { return frozen() == 1; };
    const auto isFree = [&] { return frozen() == 0; };
    EXPECT_TRUE(run("freeze"));
    stepsBack(isFrozen, isFree, "freeze");
    EXPECT_TRUE(run("freeze"));
    stepsBack(isFree, isFrozen, "unfreeze");
    EXPECT_TRUE(run("bounce"));
    stepsBack([&] { return tracks() == 2; }, [&] { return tracks() == 1; }, "bounce");
    auto* bounced = seq()->getProg()->tracks.last();
    const auto* part = bounced->parts.first();
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part->pos, 3840) << "where the selected part was";
    EXPECT_EQ(part->length, 1920);
}

TEST_F(RenderWinTest, SharesWhereAnAddOnIsLoaded) {
    startSong();
    Service service;
    CRender render(host.get(), seq());
    render.chooseUsual();
    render.addOn = &service;
    render.multiTrack = 1;
    inDialog(dialogTitle, [&] {
        static_cast<CButton*>(findCtrl(app->modalWin->clientGroup, "Share"))->click();
    });
    typeInDialog("Share", "tune");
    keysInDialog("Share", {"Return", "Return"});
    CRenderWin dialog(*win, render, seq());
    dialog.showModal();
    EXPECT_TRUE(dialog.result);
    EXPECT_EQ(service.sent, "tune");
    EXPECT_EQ(render.multiTrack, 1);
    EXPECT_EQ(render.filename, changeFileExt(host->projectFile, ""));
}
