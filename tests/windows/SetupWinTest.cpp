#include "MainFixture.h"
#include "support/Places.h"

#include "base/Paths.h"
#include "engine/CAAM.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "engine/DeviceMidi.h"
#include "engine/plan/GraphWorkers.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDocker.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CTree.h"
#include "gui/controls/CValue.h"
#include "setup/CSetupWin.h"
#include "shell/Pages.h"
#include "ui/DeviceSettings.h"
#include "ui/IniFolders.h"
#include "ui/Options.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <set>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum SetupTab : int { tabProject, tabGlobal, tabAudio, tabMidi, tabBrowser };

/// A JACK server without hardware at 44100 Hz with blocks of 256 frames, the default of this
/// process.
class Jack {
public:
    Jack() {
        const std::string name = "sondrava-setup-" + std::to_string(getpid());
        setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
        pid = fork();
        if (pid != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        const int nowhere = ::open("/dev/null", O_RDWR);
        for (int stream = 0; stream < 3; ++stream) dup2(nowhere, stream);
        execlp("jackd", "jackd", "-r", "-n", name.c_str(), "-d", "dummy", "-r", "44100", "-p",
               "256", "-C", "4", "-P", "4", nullptr);
        _exit(127);
    }
    ~Jack() {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
    Jack(const Jack&) = delete;
    Jack& operator=(const Jack&) = delete;

private:
    pid_t pid;
};

class SetupWinTest : public MainWinTest {
protected:
    void TearDown() override {
        bridge.reset();
        MainWinTest::TearDown();
    }
    /// Starts with the devices of the settings; true when the named one is among them.
    bool startWithDevices(const std::string& name) {
        start();
        bridge = std::make_unique<CAAM>(libio, builtFile("bin/libaam.so").c_str());
        host->aam = aam = bridge.get();
        bridge->onChange = new _COnChange<CQV>(host.get(), &CQV::aamChanged);
        const bool listed =
            pumpUntil([&] { return bridge->getAudioDeviceNames(), deviceRow(name) >= 0; });
        CIniFile ini(inifile);
        openAudio(ini, bridge.get());
        enableMidi(ini, bridge.get());
        host->aamChanged(nullptr);
        return listed;
    }
    void restart() {
        win->hide();
        bridge.reset();
        closeProgram();
    }
    int deviceRow(const std::string& name) const {
        for (int i = 0; i < bridge->numAudioDevs(); i++)
            if (std::string(bridge->audioName(i).asChar()).starts_with(name)) return i;
        return -1;
    }
    /// Opens the window by its key, and a page by a click on its tab.
    void openPage(const std::string& name) {
        key("F6");
        ASSERT_TRUE(pumpUntil([&] { return (setup = shown()) != nullptr; }));
        ASSERT_TRUE(pumpUntil([&] { return setup->hasFocus(); }));
        int tab = 0;
        while (tab < CSetupWin::tabCount() && name != CSetupWin::tabName(tab)) tab++;
        click(find<CCtrl>("tabs"), 8, tab * 34 + 8);
        ASSERT_EQ(setup->tab, tab);
    }
    CSetupWin* shown() {
        for (CWin* w : app->windows)
            if (w->id == "Setup") return static_cast<CSetupWin*>(w);
        return nullptr;
    }
    static CCtrl* findIn(CGroup* group, const std::string& id) {
        for (CCtrl* c : group->controls) {
            if (id == c->id.asChar()) return c;
            CCtrl* found = c->category == catCtrl ? nullptr : findIn(static_cast<CGroup*>(c), id);
            if (found) return found;
        }
        return nullptr;
    }
    template <class C>
    C* find(const std::string& id) {
        return static_cast<C*>(findIn(setup->clientGroup, id));
    }
    void click(const CCtrl* ctrl, int x = 8, int y = 8) {
        const CPoint corner = setup->getPos(true), at = setup->controlPos(ctrl);
        act({"mousemove", std::to_string(corner.x + at.x + x), std::to_string(corner.y + at.y + y),
             "click", "1"});
        settle();
    }
    void choose(const std::string& id, int row) { find<CDropdown>(id)->setIndex(row, true); }
    /// Replaces the text of a field by real keys.
    void typeInto(const std::string& id, const std::string& text) {
        setup->setKeyCtrl(find<CCtrl>(id));
        act({"key", "ctrl+a", "BackSpace"});
        if (!text.empty()) act({"type", "--delay", "2", text});
        settle();
    }
    void testDevice(const std::string& name, int grantedRate);
    /// The loudest sample of each channel that the device gets in the next half second.
    std::vector<float> heard() {
        void* module = dlopen(builtFile("bin/libaam.so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
        const auto driver = reinterpret_cast<AamEntry>(dlsym(module, "libaam"));
        const std::string path = at("heard.wav");
        driver(aamTestCapture, intptr_t(path.c_str()), 0);
        const unsigned before = host->blocks;
        pumpUntil([&] { return host->blocks > before + 22050u / unsigned(host->frames); });
        driver(aamTestCapture, 0, 0);
        dlclose(module);
        const std::string wav = folder.read("heard.wav");
        std::vector<float> loudest(size_t(wav.at(22)), 0.0f); // the channels, from its header
        const size_t frameBytes = loudest.size() * sizeof(float), frames = wav.size() / frameBytes;
        const char* data = wav.data() + wav.size() - std::min<size_t>(frames, 16384) * frameBytes;
        for (size_t i = 0; data + sizeof(float) <= wav.data() + wav.size(); i++) {
            float v = 0.0f;
            std::memcpy(&v, data, sizeof(v));
            data += sizeof(v);
            float& most = loudest[i % loudest.size()];
            most = std::max(most, std::fabs(v));
        }
        return loudest;
    }
    void clickRow(const char* list, int row) { click(find<CListbox>(list), 6, 6 + 20 * row); }

    std::unique_ptr<CAAM> bridge;
    CSetupWin* setup = nullptr;
};

/// `grantedRate` is what comes when 48000 Hz are asked for.
void SetupWinTest::testDevice(const std::string& name, int grantedRate) {
    ASSERT_TRUE(startWithDevices(name));
    openPage("Audio");
    EXPECT_EQ(find<CCtrl>("driver"), nullptr);
    click(find<CCheckbox>("advanced"));
    EXPECT_TRUE(pumpUntil([&] { return find<CCtrl>("driver") && find<CCtrl>("deviceRec"); }));
    EXPECT_EQ(setting("options", "advanced-audio"), "1");
    click(find<CCheckbox>("advanced"));
    EXPECT_TRUE(pumpUntil([&] { return !find<CCtrl>("driver"); }));
    choose("device", bridge->numAudioDevs());
    EXPECT_FALSE(bridge->opened);
    EXPECT_EQ(setting("audio", "device"), "-1");
    choose("device", deviceRow(name));
    ASSERT_TRUE(bridge->opened);
    EXPECT_EQ(setting("audio", "buffersize"), "") << "nobody has chosen one";
    const struct {
        const char* typed;
        int frames;
    } cases[] = {{"512", 512}, {"0", 512}, {"16385", 512}, {"", 512}, {"128", 128}};
    for (const auto& c : cases) {
        ASSERT_TRUE(pumpUntil([&] { return !host->hostNotices.raised(HostNotice::devices); }));
        const int before = bridge->frames;
        const std::string kept = setting("audio", "buffersize");
        typeInto("buffersize", c.typed);
        EXPECT_EQ(bridge->frames, before) << "before the button";
        EXPECT_EQ(setting("audio", "buffersize"), kept);
        click(find<CButton>("Apply changes"));
        const std::string wanted = std::to_string(c.frames);
        EXPECT_TRUE(pumpUntil([&] {
            return bridge->opened && host->frames == c.frames &&
                   find<CDropdown>("buffersize")->text == wanted.c_str();
        })) << c.typed;
        EXPECT_EQ(setting("audio", "buffersize"), wanted);
    }
    typeInto("samplerate", "7999");
    click(find<CButton>("Apply changes"));
    EXPECT_TRUE(pumpUntil([&] { return find<CDropdown>("samplerate")->text == "44100"; }));
    ASSERT_TRUE(pumpUntil(
        [&] { return !bridge->needReopen && !host->hostNotices.raised(HostNotice::devices); }));
    choose("samplerate", 2);
    EXPECT_EQ(host->rate, 44100);
    EXPECT_TRUE(find<CButton>("Apply changes")->lit);
    click(find<CButton>("Apply changes"));
    EXPECT_TRUE(pumpUntil([&] { return host->rate == grantedRate; }));
    EXPECT_EQ(host->rate, grantedRate);
    clickRow("audio-inputs", 1);
    EXPECT_FALSE(bridge->audioInEnabled(1));
    const auto* in = static_cast<CDeviceAudio*>(host->getAudioIn());
    EXPECT_TRUE(pumpUntil([&] { return in->chs == 1; })) << "at once";
    restart();

    ASSERT_TRUE(startWithDevices(name));
    EXPECT_TRUE(bridge->opened);
    EXPECT_EQ(bridge->device, deviceRow(name));
    EXPECT_EQ(bridge->frames, 128);
    EXPECT_EQ(bridge->rate, float(grantedRate));
    const struct {
        const char *section, *key, *value;
        bool enabled;
    } channels[] = {{"Audio inputs", "channel0", "1", bridge->audioInEnabled(0)},
                    {"Audio inputs", "channel1", "0", bridge->audioInEnabled(1)},
                    {"Audio outputs", "channel0", "1", bridge->audioOutEnabled(0)},
                    {"Audio outputs", "channel1", "1", bridge->audioOutEnabled(1)}};
    for (const auto& c : channels) {
        EXPECT_EQ(setting(c.section, c.key), c.value) << c.section << c.key;
        EXPECT_EQ(c.enabled, c.value[0] == '1') << c.section << c.key;
    }
}

} // namespace

TEST_F(SetupWinTest, DeviceOfTheClockIsSetUpAndKept) {
    testDevice("Silent clock", 48000);
}

TEST_F(SetupWinTest, DeviceOfTheServerIsSetUpAndKept) {
    const Jack jack;
    testDevice("JACK", 44100);
    bridge.reset(); // while the server is there to say good-bye to
}

/// While the song plays, channels join the graph, leave it without costing it a cable, and come
/// back.
TEST_F(SetupWinTest, ChannelsJoinTheGraphAtOnce) {
    const Jack jack;
    ASSERT_TRUE(startWithDevices("JACK"));
    openPage("Audio");
    choose("device", deviceRow("JACK"));
    ASSERT_TRUE(load(kindDemo));
    host->start();
    EXPECT_EQ(heard().size(), 2u);
    const auto clickThirdAndFourth = [&] {
        for (const int row : {2, 3}) clickRow("audio-outputs", row);
    };
    clickThirdAndFourth();
    std::vector<CComp*> outs;
    for (CComp* c : host->comps)
        if (c->type == compAudioOut) outs.push_back(c);
    ASSERT_EQ(outs.size(), 2u);
    EXPECT_EQ(outs[0]->id, "[1+2] Audio Out");
    EXPECT_EQ(outs[1]->id, "[3+4] Audio Out");
    for (const CAudioCable* cable : outs[0]->audioCables) {
        const GraphHold hold(host.get());
        outs[1]->addAudioCable(cable->fromChannel, nullptr);
    }
    const size_t channels[] = {4, 2, 4};
    for (const size_t count : channels) {
        const std::vector<float> loudest = heard();
        EXPECT_EQ(loudest.size(), count);
        for (const float peak : loudest) EXPECT_GT(peak, 0.001f) << count << " channels";
        clickThirdAndFourth();
    }
    clickRow("audio-outputs", 3);
    EXPECT_EQ(heard().size(), 3u);
    EXPECT_EQ(static_cast<CDeviceAudio*>(outs[1])->chs, 1);
    host->stop();
    restart();
}

/// The name tells which device was chosen, wherever it stands in the list now; one that is not
/// there is replaced by none, and stays the chosen one.
TEST_F(SetupWinTest, DevicesAreFoundByTheirNames) {
    set("audio", "device", "77");
    set("audio", "devicename", "Silent clock");
    ASSERT_TRUE(startWithDevices("Silent clock"));
    EXPECT_EQ(bridge->device, deviceRow("Silent clock"));
    restart();
    set("audio", "device", "0");
    set("audio", "devicename", "Gone");
    ASSERT_TRUE(startWithDevices("Silent clock"));
    EXPECT_FALSE(bridge->opened);
    openPage("Audio");
    EXPECT_NE(find<CLabel>("note"), nullptr);
    click(find<CButton>("Apply changes"));
    EXPECT_EQ(setting("audio", "devicename"), "Gone");
    choose("device", deviceRow("Silent clock"));
    EXPECT_TRUE(bridge->opened);
    EXPECT_EQ(setting("audio", "devicename"), "Silent clock");
    choose("device", bridge->numAudioDevs());
    EXPECT_EQ(setting("audio", "device") + setting("audio", "devicename"), "-1");
}

TEST_F(SetupWinTest, PortsAreFoundByTheirNames) {
    const Jack jack;
    ASSERT_TRUE(startWithDevices("JACK")); // so that the server stands at the next start
    restart();
    const struct {
        const char *key, *value;
    } before[] = {
        {"device0", "1"}, {"name0", "Keyboard"}, {"device3", "1"}, {"name3", "JACK MIDI in"}};
    for (const auto& b : before) set("MIDI inputs", b.key, b.value);
    ASSERT_TRUE(startWithDevices("JACK"));
    ASSERT_EQ(bridge->midiInName(0), "JACK MIDI in");
    EXPECT_TRUE(bridge->midiInEnabled(0));
    openPage("MIDI");
    choose("clock-in", 2); // behind nobody and all
    choose("clock-out", 1);
    EXPECT_EQ(setting("MIDI clock", "from") + setting("MIDI clock", "to"), "JACK MIDI in*");
    EXPECT_TRUE(qv->deviceMidi->clockIn.device == 0 && qv->sync == 1);
    EXPECT_EQ(qv->deviceMidi->clockOut.device, anyClockDevice);
    choose("code-in", 2);
    choose("code-rate", 3);
    EXPECT_EQ(setting("MIDI clock", "from") + setting("MIDI clock", "code from"), "JACK MIDI in");
    EXPECT_TRUE(qv->sync == 1 && qv->deviceMidi->clockIn.device == noClockDevice);
    EXPECT_TRUE(qv->deviceMidi->codeIn.device == 0 && qv->deviceMidi->codeOut.rate == 3);
    EXPECT_EQ(setting("MIDI clock", "code rate"), "3");
    choose("clock-in", 1);
    EXPECT_EQ(qv->deviceMidi->codeIn.device, noClockDevice) << "one machine leads";
    choose("clock-in", 0);
    EXPECT_EQ(qv->sync, 0);
    clickRow("midi-inputs", 0);
    EXPECT_FALSE(bridge->midiInEnabled(0));
    const int ports = bridge->numMidiIns;
    const std::string behind = std::to_string(ports);
    EXPECT_EQ(setting("MIDI inputs", "device0"), "0");
    EXPECT_EQ(setting("MIDI inputs", "name0"), "JACK MIDI in");
    EXPECT_EQ(setting("MIDI inputs", ("name" + behind).c_str()), "Keyboard") << "is not lost";
    EXPECT_EQ(setting("MIDI inputs", ("device" + behind).c_str()), "1");
    EXPECT_EQ(setting("MIDI inputs", "device3"), "0");
    restart();
}

TEST_F(SetupWinTest, ChoicesAreWrittenAtOnce) {
    start();
    openPage("Global");
    EXPECT_EQ(find<CCtrl>("check-updates"), nullptr) << "where nobody can be asked";
    setup->hide();
    win->options().hasUpdates = true;
    const struct {
        const char *page, *id;
        int row; ///< of a list; -1 is a click on a box
        const char *section, *key, *value;
    } cases[] = {
        {"Global", "startup", 0, "options", "startwith", "-1"},
        {"Global", "startup", 2, "options", "startwith", "1"},
        {"Global", "startup", 3, "options", "startwith", "2"},
        {"Global", "savePosAndSize", -1, "options", "savePosAndSize", "1"},
        {"Global", "savePrompt", -1, "options", "savePrompt", "0"},
        {"Global", "check-updates", -1, "options", "check-updates", "1"},
        {"Global", "rndTrackCol", -1, "options", "rndTrackCol", "1"},
        {"Global", "dft", -1, "options", "dft", "0"},
        {"Global", "modular-tab-always-show", -1, "options", "modular-tab-always-show", "1"},
        {"Global", "showHint", -1, "options", "showHint", "0"},
        {"Global", "smooth-text", -1, "options", "smooth-text", "0"},
        {"Global", "font-size", 4, "options", "font-size", "11"},
        {"Global", "scale", 3, "options", "scale", "150"},
        {"Global", "scale", 0, "options", "scale", "0"},
        {"Audio", "workers", 1, "audio", "workers", "0"},
        {"Audio", "recbits", 1, "audio", "recbits", "24"}};
    for (const auto& c : cases) {
        openPage(c.page);
        if (c.row < 0)
            click(find<CCtrl>(c.id));
        else
            choose(c.id, c.row);
        EXPECT_EQ(setting(c.section, c.key), c.value) << c.id;
    }
    EXPECT_EQ(host->settings.getInt("rndTrackCol", 0), 1);
    EXPECT_EQ(host->recBits, 24);
    EXPECT_EQ(host->workers->count(), 0);
    win->pages->closeDocked();
    EXPECT_EQ(win->pages->docker->tabCount(), 1);
    EXPECT_FALSE(win->options().hints.on());
    typeInto("rec-latency", "321");
    click(find<CCtrl>("recbits"), 300, 300); // elsewhere
    EXPECT_EQ(host->recLatency, 321);
    EXPECT_EQ(setting("options", "rec-latency"), "321");
    openPage("Global");
    typeInto("font", "Mono");
    key("Escape");
    EXPECT_TRUE(setup->visible) << "the first one gives the text back";
    typeInto("font", "Serif");
    key("Escape");
    typeInto("font", "Sans");
    setup->hide();
    EXPECT_EQ(setting("options", "font"), "Sans");
}

TEST_F(SetupWinTest, ShortcutsAreInForceAtOnceAndKept) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    openPage("Shortcuts");
    auto* tree = find<CTree>("actions");
    const struct {
        const char *action, *label, *typed, *box, *kept, *press;
    } cases[] = {{"play", "Play", "k", "", "0,75", "k"},
                 {"play", "Play", "space", "Shift", "16,32", "shift+space"},
                 {"play", "Play", "misspelt", "", "16,32", ""},
                 {"play", "Play", "", "", "16,0", ""},
                 {"play", "Play", "end", "Ctrl", "48,-6", "ctrl+shift+End"}};
    for (const auto& c : cases) {
        for (CTreeNode* group : tree->root.children)
            for (CTreeNode* node : group->children)
                if (node->text == c.label) tree->select(node);
        (*tree->onChange)(tree);
        typeInto("key", c.typed);
        key("Return");
        if (*c.box) click(find<CCtrl>(c.box));
        EXPECT_EQ(setting("shortcuts", c.action), c.kept);
        if (!*c.press) continue;
        const int before = host->playing;
        win->raise(true);
        settle();
        key(c.press);
        EXPECT_TRUE(pumpUntil([&] { return host->playing != before; })) << c.press;
        setup->raise(true);
        settle();
    }
    host->stop();
    host->markSaved(host->saveMark());
    win->hide();
    closeProgram();
    start();
    EXPECT_EQ(win->getAction("play")->key, keyEnd);
    EXPECT_EQ(win->getAction("play")->mods, 48);
}

TEST_F(SetupWinTest, FunctionKeysArePressedIntoTheField) {
    start();
    openPage("Shortcuts");
    auto* tree = find<CTree>("actions");
    auto* first = tree->root.children.first()->children.first();
    tree->select(first);
    (*tree->onChange)(tree);
    setup->setKeyCtrl(find<CCtrl>("key"));
    key("Page_Up");
    EXPECT_EQ(setting("shortcuts", static_cast<CAction*>(first->data)->name.asChar()), "0,-12");
    for (auto* group : tree->root.children)
        for (auto* node : group->children)
            EXPECT_TRUE(static_cast<CAction*>(node->data)->bound()) << node->text.asChar();
}

TEST_F(SetupWinTest, FoldersAreAddedAndTakenOut) {
    start();
    const struct {
        const char *title, *section;
        int mode;
    } lists[] = {{"Projects", "ProjectFolders", 11},
                 {"Plugins", "VSTFolders", 13},
                 {"Presets", "PresetFolders", 20},
                 {"Clips", "ClipFolders", 21},
                 {"Samples", "SampleFolders", 12}};
    const std::string path = std::string(folder.file("").asChar());
    for (const auto& l : lists) {
        set(l.section, "old", "/a=b"); // of a form that is read, but written no more
        openPage("Browser");
        EXPECT_EQ(modeToSection(l.mode), l.section);
        for (int twice = 0; twice < 2; twice++) {
            keysInDialog("Add folder", {"ctrl+a"});
            typeInDialog("Add folder", path);
            keysInDialog("Add folder", {"Return"});
            click(find<CCtrl>(std::string(l.title) + " Add"));
        }
        auto* list = find<CListbox>(l.section);
        ASSERT_EQ(list->items.getCount(), 2) << l.title;
        EXPECT_EQ(setting(l.section, "0"), "/a=b");
        EXPECT_EQ(setting(l.section, "1"), path);
        EXPECT_EQ(setting(l.section, "2"), "");
        EXPECT_EQ(host->changedFolders, l.mode);
        auto* del = find<CCtrl>(std::string(l.title) + " Del");
        EXPECT_FALSE(del->enabled) << "nothing is chosen";
        click(list, 8, 8);
        click(del);
        EXPECT_EQ(list->items.getCount(), 1);
        EXPECT_EQ(setting(l.section, "0"), path);
        EXPECT_EQ(setting(l.section, "1"), "");
    }
    const std::string first[] = {host->presetFolder.asChar(), host->clipFolder.asChar(),
                                 host->sampleFolder.asChar()};
    for (const std::string& f : first) EXPECT_EQ(f, path);
}

TEST_F(SetupWinTest, AudioFolderNeedsASavedProject) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    openPage("Project");
    EXPECT_NE(find<CLabel>("Project not saved"), nullptr);
    keysInDialog("Audio folder", {"Return"});
    click(find<CCtrl>("Create"));
    EXPECT_EQ(titles, std::vector<std::string>{"Audio folder"});
    host->projectFile = at("my.song.qv").c_str();
    win->projectChanged();
    click(find<CCtrl>("Create"));
    EXPECT_TRUE(folderExists(at("my.song_audio").c_str()));
    EXPECT_TRUE(host->modified());
    EXPECT_FALSE(find<CCtrl>("Create")->enabled);
    host->markSaved(host->saveMark());
}

/// Tab walks through all fields of each page and back to the tabs; keys alone choose a page.
TEST_F(SetupWinTest, KeysReachEverything) {
    ASSERT_TRUE(startWithDevices("Silent clock"));
    openPage("Project");
    click(find<CCtrl>("tabs"), 8, 48 * CSetupWin::tabCount() + 8);
    EXPECT_EQ(setup->tab, tabProject) << "beyond the last";
    for (int tab = 0; tab < CSetupWin::tabCount(); tab++) {
        EXPECT_EQ(setup->tab, tab);
        std::set<CCtrl*> fields, reached;
        const std::function<void(CGroup*)> collect = [&](CGroup* group) {
            for (CCtrl* c : group->controls) {
                EXPECT_FALSE(c->id.empty()) << CSetupWin::tabName(tab);
                if (c->tabStop && c->enabled) fields.insert(c);
                if (c->category != catCtrl) collect(static_cast<CGroup*>(c));
            }
        };
        collect(setup->clientGroup);
        for (size_t i = 0; i < fields.size(); i++) {
            reached.insert(setup->keyCtrl);
            key("Tab");
        }
        EXPECT_EQ(reached, fields) << CSetupWin::tabName(tab);
        key("Down");
    }
    key("Escape");
    EXPECT_FALSE(setup->visible);
    const int last = CSetupWin::tabCount() - 1;
    restart();
    EXPECT_EQ(setting("options", "page"), std::to_string(last));
}
