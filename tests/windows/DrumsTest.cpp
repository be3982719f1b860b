#include "NotesFixture.h"

#include "engine/CSamplePreview.h"
#include "engine/CSnap.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CEdit.h"
#include "gui/dialogs/CFileList.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "notes/DrumStrip.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/song/EventLanes.h"
#include "sequencer/song/RowLoops.h"

#include <cmath>
#include <filesystem>

/// Drum parts and kits in the editor, and what notes do besides sounding.
class DrumsTest : public NotesFixture {
protected:
    static constexpr int rowHeight = CDrumSound::closedHeight;

    CTrack* kit() { return row(0)->track; }
    CDrumSound* sound(int i) { return kit()->drumSound(i); }
    DrumStrip* strip() { return child<DrumStrip>("drums"); }
    CPoint onName(int row) { return asPoint(60, row * rowHeight + 10); }
    void strike(CPoint p, int times = 1, const char* button = "1") {
        at(strip(), p);
        act({"click", "--repeat", std::to_string(times), "--delay", "50", button});
        EXPECT_TRUE(loaded());
    }
    void hit(int tick, int of) {
        CDrumEvent* made = createDrumEvent();
        made->sound = of;
        insertEvent(seq(), edited, tick, made);
        EXPECT_TRUE(loaded());
    }
    std::string names() {
        std::string text;
        for (int i = 0; sound(i); i++) text += sound(i)->getId().asChar() + std::string(" ");
        return text;
    }
    testing::AssertionResult kitIs(const std::string& wanted) {
        if (pumpUntil([&] { return names() == wanted; })) return testing::AssertionSuccess();
        return testing::AssertionFailure() << names() << "instead of " << wanted;
    }
    /// A second that a kit takes as it is.
    std::string sample(const std::string& name) {
        const std::string path = at(name);
        EXPECT_EQ(runCommand({"sox", "-n", "-r", "44100", "-c", "1", "-b", "16", path, "synth", "1",
                              "sine", "440"}),
                  0);
        return path;
    }
    HitStyle firstStyle() { return edited->getEvents()->style; }
    /// A point of the screen over a control of the editor.
    CPoint screenOf(CCtrl* ctrl, CPoint p) {
        return addPos(addPos(editor()->getPos(true), editor()->controlPos(ctrl)), p);
    }
    void chooseLane(int index) {
        auto* chooser = child<CDropdown>("lane");
        chooser->setIndex(index);
        (*chooser->onChange)(chooser);
    }
};

/// Names, places, mute and solo of the sounds by mouse and keys; hits go with their sounds, and all
/// of it is undone step by step.
TEST_F(DrumsTest, TheStripEditsTheKit) {
    open(trackDrum);
    const std::string standard = "kick snare clap hat-close hat-open ";
    ASSERT_TRUE(kitIs(standard));
    for (const int of : {0, 1, 2}) hit(of * 960, of);
    setRowLoop(seq(), edited, 0, 480);
    ASSERT_TRUE(loaded());
    const int right = strip()->width;
    strike(asPoint(right - 25, rowHeight + 10));
    EXPECT_TRUE(pumpUntil([&] { return sound(1)->mute == 1; }));
    EXPECT_STREQ(host->undoText().asChar(), "Mute drum");
    strike(asPoint(right - 8, 2 * rowHeight + 10));
    EXPECT_TRUE(pumpUntil([&] { return sound(2)->solo == 1; }));
    strike(asPoint(8, rowHeight + 10));
    EXPECT_TRUE(sound(1)->opened());
    strike(asPoint(8, rowHeight + 10));
    EXPECT_FALSE(sound(1)->opened());

    press(asPoint(100, 10), asPoint(100, 2 * rowHeight + 17), "", strip());
    EXPECT_TRUE(kitIs("snare clap kick hat-close hat-open "));
    EXPECT_TRUE(holds("0:2:240:127 960:0:240:127 1920:1:240:127 "));
    ASSERT_NE(rowLoops(edited), nullptr);
    EXPECT_EQ(rowLoops(edited)->of(2), 480) << "the row's length goes along";
    strike(onName(0), 2);
    ASSERT_TRUE(pumpUntil([&] { return editor()->keyCtrl && editor()->keyCtrl->id == "name"; }));
    act({"type", "--delay", "2", "Boom"});
    key("Return");
    EXPECT_TRUE(kitIs("Boom clap kick hat-close hat-open "));
    for (const char* k : {"Down", "ctrl+Down", "Down", "m", "Delete"}) key(k);
    EXPECT_TRUE(kitIs("Boom kick clap hat-open ")) << "down to the closed hat";
    EXPECT_TRUE(holds("0:1:240:127 960:0:240:127 1920:2:240:127 "));

    EXPECT_EQ(strip()->accessParts(), 4 * 4);
    Description told;
    strip()->describe(told, 4);
    EXPECT_EQ(told.name, "kick");
    EXPECT_EQ(told.text, "repeats after 480 ticks");
    told = {};
    strip()->describe(told, 4 * 0 + 2);
    EXPECT_EQ(told.name, "Mute, Boom");
    EXPECT_TRUE(told.has(statePressed));
    EXPECT_TRUE(strip()->pressPart(2));
    EXPECT_TRUE(pumpUntil([&] { return sound(0)->mute == 0; }));
    for (int i = 0; i < 8; i++) key("ctrl+z");
    EXPECT_TRUE(kitIs(standard));
    EXPECT_TRUE(holds("0:0:240:127 960:1:240:127 1920:2:240:127* "));
    EXPECT_TRUE(pumpUntil([&] { return sound(1)->mute + sound(2)->solo == 0; }));
}

/// The menu of a row gives it a sample, a length, a parameter lane, and saves the kit.
TEST_F(DrumsTest, TheMenuOfARow) {
    open(trackDrum);
    hit(0, 1);
    const std::string wave = sample("blip.wav");
    inMenu({"c", "Return"});
    bool heard = false;
    inDialog("Choose sample", [&] {
        auto* name = childOf<CEdit>(app->modalWin->clientGroup, "name");
        name->enterText((wave.substr(0, wave.rfind('/') + 1)).c_str());
        app->modalWin->setKeyCtrl(name);
    });
    keysInDialog("Choose sample", {"Return"}); // into the folder
    inDialog("Choose sample", [&] {
        auto* list = childOf<CFileList>(app->modalWin->clientGroup, "files");
        ASSERT_TRUE(list->choose("blip.wav"));
        (*list->onChange)(list);
        heard = CSamplePreview::of(host.get())->isOn();
    });
    keysInDialog("Choose sample", {"Return"});
    strike(onName(1), 1, "3");
    EXPECT_TRUE(kitIs("kick blip clap hat-close hat-open "));
    EXPECT_TRUE(heard) << "before it was chosen";
    EXPECT_FALSE(CSamplePreview::of(host.get())->isOn()) << "and not any more";
    EXPECT_STREQ(host->undoText().asChar(), "Replace drum");
    EXPECT_EQ(sound(1)->clips[0]->frames, 44100);
    key("ctrl+z");
    EXPECT_TRUE(kitIs("kick snare clap hat-close hat-open "));
    key("ctrl+y");
    EXPECT_TRUE(kitIs("kick blip clap hat-close hat-open "));

    const int step = notes() ? seq()->snap->val() : 0;
    inMenu({"r", "r", "Right", "Down", "Down", "Down", "Return"});
    strike(onName(1), 1, "3");
    ASSERT_TRUE(pumpUntil([&] { return rowLoops(edited) != nullptr; }));
    EXPECT_EQ(rowLoops(edited)->of(1), 3 * step);
    EXPECT_STREQ(host->undoText().asChar(), "Row length");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return rowLoops(edited) == nullptr; }));
}

/// A kit goes into a file, and comes from it in place of what there is.
TEST_F(DrumsTest, KitsGoToFilesAndComeBack) {
    open(trackDrum);
    const std::string standard = "kick snare clap hat-close hat-open ", path = at("mine.qvs");
    const auto choose = [&](const char* title, const std::vector<std::string>& keys) {
        inMenu(keys);
        inDialog(title, [&] {
            auto* name = childOf<CEdit>(app->modalWin->clientGroup, "name");
            app->modalWin->setKeyCtrl(name);
            name->enterText(path.c_str());
        });
        keysInDialog(title, {"Return"});
        strike(onName(1), 1, "3");
    };
    choose("Save kit", {"s", "s", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return std::filesystem::exists(path); }));
    const int frames = sound(1)->clips[0]->frames;
    removeDrum(seq(), sound(1));
    ASSERT_TRUE(kitIs("kick clap hat-close hat-open "));
    choose("Load kit", {"l", "l", "Return"});
    ASSERT_TRUE(kitIs(standard));
    EXPECT_EQ(sound(1)->clips[0]->frames, frames);
    key("ctrl+z");
    EXPECT_TRUE(kitIs("kick clap hat-close hat-open "));
}

/// The end of a row is dragged to the grid, from the end of the part and back to it.
TEST_F(DrumsTest, RowsEndWhereTheyAreDragged) {
    open(trackDrum);
    hit(1200, 1);
    edited->length = 1920; // its end lies on the screen
    seq()->songNotices.raise(SeqNotice::parts);
    ASSERT_TRUE(loaded());
    const struct {
        int from, to, length;
        const char* last;
    } drags[] = {{1920, 1000, 960, ""},
                 {960, 500, 480, ""},
                 {480, 1500, 480, "Escape"},
                 {480, -300, 30, ""},
                 {30, 2300, 0, ""}};
    for (const auto& d : drags) {
        press(place(d.from, 1), place(d.to, 1), "", nullptr, "1", d.last);
        const auto length = [&] { return rowLoops(edited) ? rowLoops(edited)->of(1) : 0; };
        EXPECT_TRUE(pumpUntil([&] { return length() == d.length; })) << d.to << ": " << length();
        EXPECT_STREQ(host->undoText().asChar(), "Row length");
    }
    EXPECT_TRUE(holds("1200:1:240:127* "));
}

/// A drag over opened rows paints a value for each hit, by its height in the lane of 44 pixels, of
/// the row of the press alone.
TEST_F(DrumsTest, ParametersArePaintedByHeight) {
    open(trackDrum);
    for (const auto& [tick, of] : {std::pair{0, 0}, {960, 0}, {1920, 0}, {1920, 1}}) hit(tick, of);
    const struct {
        int param, high;
        float (*value)(const CDrumEvent*);
        double scale, shift;
    } lanes[] = {{0, 30, [](const CDrumEvent* e) { return e->velocity; }, 1, 0},
                 {1, 50, [](const CDrumEvent* e) { return e->pan; }, 2, -1},
                 {2, 40, [](const CDrumEvent* e) { return e->tune; }, 1, 0}};
    sound(0)->toggleLane();
    ASSERT_TRUE(loaded());
    for (const auto& lane : lanes) {
        sound(0)->shownParam = lane.param;
        press(asPoint(place(40, 0).x, 60), asPoint(place(2000, 0).x, lane.high));
        ASSERT_TRUE(loaded());
        EXPECT_STREQ(host->undoText().asChar(), "Drum param");
        std::vector<float> values;
        for (const CBaseEvent* e = edited->getEvents(); e; e = e->next)
            values.push_back(lane.value(static_cast<const CDrumEvent*>(e)));
        ASSERT_EQ(values.size(), 4u);
        const double first = (44 + 0 - 60 + 20) / 44.0, last = (44 + 0 - lane.high + 20) / 44.0;
        EXPECT_NEAR(values[0], first * lane.scale + lane.shift, 0.001);
        EXPECT_NEAR(values[1], (first + last) / 2 * lane.scale + lane.shift, 0.02);
        EXPECT_NEAR(values[2], last * lane.scale + lane.shift, 0.001);
        EXPECT_EQ(values[3], lane.param == 1 ? 0.0f : 1.0f) << "another row";
    }
}

/// Alt and the right button cut a hit where it is pressed; the right button alone scrolls once it
/// has moved, and deletes what it does not move on.
TEST_F(DrumsTest, TheRightButtonSplitsAndScrolls) {
    open(trackDrum);
    click(place(960, 1), "1", 2);
    press(place(1150, 1), place(1620, 1), "alt");
    ASSERT_TRUE(holds("960:1:720:100* "));
    act({"keydown", "alt"});
    click(place(1430, 1), "3");
    act({"keyup", "alt"});
    EXPECT_TRUE(holds("960:1:480:100 1440:1:240:100 "));
    EXPECT_STREQ(host->undoText().asChar(), "Split");
    // The hand goes 120 pixels to the left: what is pressed then lies so much further on.
    const CPoint free = place(2400, 3);
    press(free, asPoint(free.x - 120, free.y), "", nullptr, "3");
    click(asPoint(place(2410, 3).x - 120, free.y), "1", 2);
    EXPECT_TRUE(holds("960:1:480:100 1440:1:240:100 2400:3:240:100* "));
    click(asPoint(place(1000, 1).x - 120, place(0, 1).y), "3");
    EXPECT_TRUE(holds("1440:1:240:100 2400:3:240:100 "));
}

/// What lanes draw for notes and hits, told in their units and with the note.
TEST_F(DrumsTest, LanesDrawChanceRepeatsAndFlam) {
    open(trackDrum);
    hit(0, 1);
    const struct {
        int index;
        double share;
        HitStyle style;
        const char* title;
    } lanes[] = {{1, 0.25, {25, 1, 0}, "Edit Chance"},
                 {2, 2.0 / 7, {25, 3, 0}, "Edit Repeats"},
                 {3, 0.5, {25, 3, 30}, "Edit Flam"}};
    for (const auto& l : lanes) {
        chooseLane(l.index);
        const CPoint p = asPoint(place(0, 0).x, 3 + asRound((1 - l.share) * (lane()->height - 4)));
        press(p, p, "", lane());
        ASSERT_TRUE(loaded());
        EXPECT_NEAR(firstStyle().chance, l.style.chance, 1) << l.title;
        EXPECT_EQ(firstStyle().repeats, l.style.repeats) << l.title;
        EXPECT_NEAR(firstStyle().flamMs, l.style.flamMs, 1) << l.title;
        EXPECT_STREQ(host->undoText().asChar(), l.title);
    }
    Description told;
    notes()->describe(told, 0);
    EXPECT_NE(told.name.find("snare, bar 2"), std::string::npos) << told.name;
    EXPECT_NE(told.name.find(", 3 times, flam "), std::string::npos) << told.name;
    for (int i = 0; i < 3; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return firstStyle() == HitStyle(); }));
}

/// Aftertouch comes for the keys of what is selected, and not at all without.
TEST_F(DrumsTest, AftertouchIsDrawnForSelectedNotes) {
    open(trackMIDI);
    put(0, 60, 960);
    put(0, 64, 960);
    lane()->lane = {laneAftertouch, 0};
    const CPoint p = asPoint(place(490, 0).x, 3 + asRound(0.5 * (lane()->height - 4)));
    press(p, p, "", lane());
    const auto pressures = [&] {
        std::string text;
        for (const CBaseEvent* e = edited->getEvents(); e; e = e->next)
            if (const int data = static_cast<const CMIDIEvent*>(e)->data;
                statusByte(data) == midiAftertouch)
                text += std::to_string(asByte1(data)) + " ";
        return text;
    };
    EXPECT_TRUE(pumpUntil([&] { return pressures() == "64 "; })) << "the one put in last";
    press(place(2800, 70), place(2900, 69)); // nothing is selected
    const CPoint later = asPoint(place(1450, 0).x, p.y);
    press(later, later, "", lane());
    EXPECT_EQ(pressures(), "64 ");
}

/// Files that are dropped: notes where they fall, samples on sounds and below all, all at once as
/// one step; what can't come is told.
TEST_F(DrumsTest, FilesComeIntoThePart) {
    open(trackDrum);
    // The last has 32 bits, which no sample plays as they are.
    const std::string a = sample("a.wav"), b = sample("b.wav"), c = tone("c.wav");
    dragTo({a, b, c}, screenOf(notes(), place(960, 2)));
    EXPECT_TRUE(kitIs("kick snare a hat-close hat-open b c "));
    EXPECT_STREQ(host->undoText().asChar(), "Drop a.wav, b.wav, c.wav");
    EXPECT_EQ(sound(6)->clips[0]->frames, 44100);
    key("ctrl+z");
    EXPECT_TRUE(kitIs("kick snare clap hat-close hat-open "));
    // Key 40 is the fifth sound; it lasts for two bars.
    const char bytes[] = "MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0\15"
                         "\0\x90\x28\x64\xbc\0\x80\x28\0\0\xff\x2f\0";
    folder.write("m.mid", std::string(bytes, sizeof bytes - 1));
    dragTo({at("m.mid"), b}, screenOf(strip(), onName(0)));
    EXPECT_TRUE(kitIs("b snare clap hat-close hat-open "));
    EXPECT_TRUE(holds("0:4:7680:100* ")) << "beside the grid it is the start of the part";
    EXPECT_STREQ(host->undoText().asChar(), "Drop m.mid, b.wav");
    key("ctrl+z");
    EXPECT_TRUE(holds(""));
    dragTo({at("m.mid")}, screenOf(notes(), place(500, 0)));
    EXPECT_TRUE(holds("480:4:7680:100* "));
    folder.write("bad.wav", "no sound");
    keysInDialog("Error", {"Return"});
    dragTo({at("bad.wav")}, screenOf(strip(), onName(0)));
    EXPECT_TRUE(pumpUntil([&] { return !titles.empty() && titles.back() == "Error"; }));
    EXPECT_EQ(names(), "kick snare clap hat-close hat-open ");
}
