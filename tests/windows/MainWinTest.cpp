#include "MainFixture.h"

#include "engine/CClick.h"
#include "engine/CSnap.h"
#include "engine/plan/GraphWorkers.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/Points.h"
#include "setup/CSetupWin.h"
#include "shell/LoadDisplay.h"
#include "shell/Rooms.h"

namespace {

/// The entries of a menu, one after the other, with their shortcuts.
std::string entries(CPopup* popup) {
    std::string text;
    for (auto* item : popup->items) {
        if (item->kind == menuSeparator) continue;
        text += std::string(item->text.asChar()) + (item->enabled ? "\n" : " (off)\n");
        if (item->subMenu) text += "{" + entries(item->subMenu) + "}\n";
    }
    return text;
}

/// What the menu of an entry of the bar would show.
std::string menu(CWin* win, const char* name) {
    for (auto* entry : win->menu->controls) {
        if (entry->id != name) continue;
        CPopup popup(win->app, win);
        popup.tag = entry->tag;
        (*entry->onChange)(&popup);
        return entries(&popup);
    }
    return "no such menu";
}

bool has(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

} // namespace

/// Each key by a real press, and what the host then is.
TEST_F(MainWinTest, KeysDoWhatTheirActionsTell) {
    start();
    ASSERT_TRUE(load(kindSequencer));
    CSeqProg* prog = seq()->getProg();
    CTrack* first = prog->tracks.first()->track;
    const auto posIs = [&](double tick) {
        return [this, tick] { return seq()->getPos() == tick; };
    };
    const auto& parts = prog->songTrackOf(first)->parts;
    const auto part = [&](int i) { return parts.items(i); };
    const auto partsAre = [&](int count) { return parts.getCount() == count; };
    struct Case {
        const char* key;
        std::function<bool()> effect;
    };
    const Case cases[] = {
        {"Return", [&] { return host->playing == 1; }},
        {"Return", [&] { return host->playing == 0; }},
        {"space", [&] { return host->playing == 1; }},
        {"0", [&] { return host->playing == 0; }},
        {"6", posIs(960)},
        {"6", posIs(1920)},
        {"4", posIs(960)},
        {"2", posIs(3840)},
        {"space", [&] { return host->playing == 1; }},
        {"0", [&] { return host->playing == 0; }},
        {"3", posIs(0)},
        {"5", posIs(3840)},
        {"1", posIs(0)},
        {"2", posIs(3840)},
        {"Home", posIs(0)},
        {"l", [&] { return host->loop == 1 && prog->loop == 1; }},
        {"L", [&] { return host->loop == 1; }}, // Shift is another key
        {"l", [&] { return host->loop == 0 && prog->loop == 0; }},
        {"c", [&] { return (host->click->mode & clickPlay) != 0; }},
        {"c", [&] { return (host->click->mode & clickPlay) == 0; }},
        {"m", [&] { return prog->songTrackOf(first)->muted(); }},
        {"m", [&] { return !prog->songTrackOf(first)->muted(); }},
        {"s", [&] { return prog->songTrackOf(first)->soloed(); }},
        {"s", [&] { return !prog->songTrackOf(first)->soloed(); }},
        {"2", posIs(3840)},
        {"ctrl+t", [&] { return prog->markers.getCount() == 1; }},
        {"3", posIs(0)},
        {"ctrl+t", [&] { return prog->markers.getCount() == 2; }},
        {"z", posIs(3840)},
        {"less", posIs(0)}, // made with Shift
        {"ctrl+shift+t", [&] { return prog->markers.getCount() == 1; }},
        {"ctrl+z", [&] { return prog->markers.getCount() == 2; }},
        {"ctrl+y", [&] { return prog->markers.getCount() == 1; }},
        {"ctrl+i", [&] { return tracks() == 9; }},
        {"ctrl+z", [&] { return tracks() == 8; }},
        {"ctrl+h", [&] { return prog->timesigs.getCount() == 1; }},
        {"ctrl+z", [&] { return prog->timesigs.empty(); }},
        {"x", [&] { return !seq()->snap->active; }},
        {"x", [&] { return seq()->snap->active; }},
        {"shift+x", [&] { return seq()->snap->getTicks() == 480; }},
        {"ctrl+shift+x", [&] { return seq()->snap->getTicks() == 240; }},
        {"ctrl+a", [&] { return partsAre(1) && part(0)->selected(); }},
        {"ctrl+m", [&] { return part(0)->muted(); }},
        {"ctrl+m", [&] { return !part(0)->muted(); }},
        {"ctrl+d", [&] { return partsAre(2) && part(1)->pos == 3840; }},
        {"ctrl+a", [&] { return part(0)->selected(); }},
        {"ctrl+g", [&] { return partsAre(1) && part(0)->length == 7680; }},
        {"shift+i", [&] { return part(0)->pos == 3840; }},
        {"shift+r", [&] { return part(0)->pos == 0; }},
        {"ctrl+x", [&] { return partsAre(0); }},
        {"2", posIs(3840)},
        {"ctrl+v", [&] { return partsAre(1) && part(0)->pos == 3840; }},
        {"6", posIs(4800)},
        {"ctrl+a", [&] { return part(0)->selected(); }},
        {"Delete", [&] { return partsAre(0); }},
        {"ctrl+z", [&] { return partsAre(1); }},
        {"r", [&] { return host->recording == 1; }},
        {"ctrl+x", [&] { return partsAre(1); }}, // not while a take runs
        {"0", [&] { return host->recording == 0 && host->playing == 0; }},
    };
    host->click->enabled = 0; // no count-in
    int index = 0;
    for (const Case& c : cases) {
        key(c.key);
        EXPECT_TRUE(pumpUntil(c.effect)) << "step " << index << ": " << c.key;
        index++;
    }
}

/// What a text field leaves alone must not reach the song.
TEST_F(MainWinTest, PartsAreSafeFromWhoWrites) {
    start();
    ASSERT_TRUE(load(kindSequencer));
    const auto& parts = seq()->getProg()->tracks.first()->parts;
    auto* field = new CEdit(win.get(), "field", 0, 0, 80, 20);
    win->addControl(field);
    seq()->selectAll();
    win->setKeyCtrl(field);
    for (const char* k : {"x", "Delete", "ctrl+d", "ctrl+q", "ctrl+x", "F1", "F2"}) key(k);
    EXPECT_TRUE(host->undoText().empty());
    win->setKeyCtrl(nullptr);
    key("ctrl+d");
    EXPECT_TRUE(pumpUntil([&] { return parts.getCount() == 2; }));
}

TEST_F(MainWinTest, NewShortcutsAreInForceAtOnce) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    Commands::setShortcut(win->getAction("play"), 'k', modControl);
    key("Return");
    EXPECT_EQ(host->playing, 0);
    key("ctrl+k");
    EXPECT_TRUE(pumpUntil([&] { return host->playing == 1; }));
    EXPECT_TRUE(has(menu(win.get(), "Song"), "Play\tCTRL + K"));
    // A key of another action, and one that every window takes itself, are not printed.
    Commands::setShortcut(win->getAction("loop"), 'k', modControl);
    EXPECT_TRUE(has(menu(win.get(), "Song"), "Loop")) << menu(win.get(), "Song");
    Commands::setShortcut(win->getAction("loop"), ' ', 0);
    EXPECT_TRUE(has(menu(win.get(), "Song"), "Loop"));
    key("XF86AudioPlay");
    EXPECT_TRUE(pumpUntil([&] { return host->playing == 0; }));
}

TEST_F(MainWinTest, MenusOfferWhatCanBeDone) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    const std::string file = menu(win.get(), "File");
    for (const char* line : {"Open...\tCTRL + O", "Save\tCTRL + S", "Save as...\tCTRL + SHIFT + S",
                             "Set as Default Project", "Import MIDI file...", "Exit",
                             "{Welcome...\tCTRL + N", "Drum & bass"})
        EXPECT_TRUE(has(file, line)) << line << " in\n" << file;
    EXPECT_TRUE(has(menu(win.get(), "Edit"), "Undo\tCTRL + Z (off)")) << menu(win.get(), "Edit");
    key("ctrl+i");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_EQ(menu(win.get(), "Edit"), "Undo Add MIDI track\tCTRL + Z\nRedo\tCTRL + Y (off)\n"
                                       "Cut\tCTRL + X (off)\nCopy\tCTRL + C (off)\n"
                                       "Paste\tCTRL + V (off)\nDuplicate\tCTRL + D (off)\n"
                                       "Delete\tDEL (off)\nSelect All\tCTRL + A (off)\n");
    EXPECT_TRUE(has(menu(win.get(), "Part"), "Glue\tCTRL + G (off)"));
    EXPECT_TRUE(has(menu(win.get(), "Song"), "Insert bars\tSHIFT + I"));
    host->markSaved(host->saveMark());
    ASSERT_TRUE(load(kindModular));
    EXPECT_EQ(menu(win.get(), "Track"), "no such menu");
    EXPECT_FALSE(has(menu(win.get(), "File"), "Import MIDI file..."));
}

/// The bar by keys alone: to the fifth menu, its sub-menu, and the third kind of track.
TEST_F(MainWinTest, MenusAreReachedByKeys) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    for (const char* k : {"F10", "Right", "Right", "Right", "Right"}) key(k);
    ASSERT_EQ(static_cast<CMenu*>(win->menu)->current()->id, "Track");
    inMenu({"Right", "Down", "Down", "Return"});
    key("Down");
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_EQ(seq()->tracks.first()->kind, trackDrum);

    // A letter goes to the entry that begins with it.
    EXPECT_EQ(win->toolbar, nullptr);
    for (const char* k : {"F10", "Right", "Right"}) key(k);
    inMenu({"r", "Return"});
    key("Down");
    ASSERT_TRUE(pumpUntil([this] { return win->toolbar && win->toolbar->visible; }));
    EXPECT_EQ(host->settings.getInt("ribbon", 0), 1);
}

/// Changes reach the settings when the window is closed, and the next start takes them on.
TEST_F(MainWinTest, KeepsItsSettings) {
    set("options", "time", "1");
    set("options", "monitor-volume", "50");
    set("options", "ribbon", "1");
    start();
    EXPECT_TRUE(win->toolbar && win->toolbar->visible);
    EXPECT_EQ(host->listenVolume, 0.5f);
    host->listenVolume = 0.25f;
    win->options().hints.set(0);
    win->move(20, 30, 910, 520);
    settle();
    win->hide();
    EXPECT_FALSE(win->visible);
    closeProgram();
    const struct {
        const char *section, *key, *value;
    } expected[] = {{"editor", "left", "20"},
                    {"editor", "top", "30"},
                    {"editor", "width", "910"},
                    {"editor", "height", "520"},
                    {"editor", "maximized", "0"},
                    {"options", "time", "1"},
                    {"options", "monitor-volume", "25"},
                    {"options", "showHint", "0"}};
    for (const auto& e : expected)
        EXPECT_EQ(setting(e.section, e.key), e.value) << e.section << " " << e.key;
}

/// What the line at the bottom tells of the device leads to where it is set up.
TEST_F(MainWinTest, TheDeviceLeadsToSetup) {
    start();
    ASSERT_TRUE(load(kindEmpty));
    win->move(0, 0, 700, 500);
    settle();
    const CPoint corner = win->getPos(true);
    act({"mousemove", std::to_string(corner.x + win->width - 40),
         std::to_string(corner.y + win->height - 14)});
    act({"click", "1"});
    EXPECT_TRUE(pumpUntil([&] { return win->rooms->setup && win->rooms->setup->visible; }));
}

/// Half a block of work, once a whole one.
TEST_F(MainWinTest, TheLoadIsToldAndItsWorstForgotten) {
    start();
    const double blockNs = host->frames / double(host->rate) * 1e9;
    host->workers->calls.note(unsigned(blockNs));
    for (int i = 0; i < 2000; i++) host->workers->calls.note(unsigned(blockNs / 2));
    auto* load = new LoadDisplay(win.get(), host.get());
    win->addControl(load);
    load->click();
    const auto told = [load] { return std::string(load->text.asChar()).substr(0, 18); };
    EXPECT_EQ(told(), "CPU 50 %, peak 0 %");
    host->workers->calls.note(unsigned(blockNs * 0.75));
    for (int i = 0; i < 100; i++) load->refresh();
    EXPECT_EQ(told(), "CPU 50 %, peak 75 ");
}
