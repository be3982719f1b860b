#include "ArrangeFixture.h"

#include "arrange/MarkerBar.h"
#include "arrange/Overview.h"
#include "arrange/SignatureLane.h"
#include "arrange/SnapBar.h"
#include "arrange/TempoLane.h"
#include "arrange/TimeRuler.h"
#include "engine/CSnap.h"
#include "engine/MidiBytes.h"
#include "gui/controls/CButton.h"
#include "instruments/CDrumSound.h"
#include "sequencer/song/Events.h"
#include "sequencer/song/Points.h"

/// The ruler with its lanes, and the overview, under the mouse and the keys: what is left in the
/// song.
class TimelineTest : public ArrangeFixture {
protected:
    CSeqProg* prog() { return seq()->getProg(); }
    template <class T>
    T* bar(const char* id) {
        return find<T>(id, find<CGroup>("bars"));
    }
    /// With so many ticks in view that the tests have room.
    void begin() {
        startWith({trackMIDI});
        song()->zoom(32);
        settle();
    }
    TimeRuler* ruler() { return bar<TimeRuler>("ruler"); }
    CMarkerPart* marker(int i) { return prog()->markers.items(i); }
    CTempoPart* tempo(int i) { return prog()->tempos.items(i); }
    void dragOn(CCtrl* ctrl, CPoint from, CPoint to, bool escape = false) {
        mouseTo(ctrl, from.x, from.y);
        act({"mousedown", "1"});
        mouseTo(ctrl, (from.x + to.x) / 2, (from.y + to.y) / 2);
        mouseTo(ctrl, to.x, to.y);
        if (escape) key("Escape");
        act({"mouseup", "1"});
        EXPECT_TRUE(loaded());
    }
    void altClick(CCtrl* ctrl, CPoint at) {
        mouseTo(ctrl, at.x, at.y);
        act({"keydown", "alt"});
        act({"click", "1"});
        act({"keyup", "alt"});
        EXPECT_TRUE(loaded());
    }
    void doubleClick(CCtrl* ctrl, CPoint at) {
        mouseTo(ctrl, at.x, at.y);
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        EXPECT_TRUE(loaded());
    }
    void typeOver(const char* text) {
        EXPECT_TRUE(pumpUntil([&] { return win->keyTarget() && win->keyTarget()->id == "name"; }));
        act({"type", "--delay", "2", text});
        key("Return");
    }
};

TEST_F(TimelineTest, TheLoopIsDraggedByItsBand) {
    begin();
    prog()->leftLocator = 3840;
    prog()->rightLocator = 7680;
    const auto is = [&](int from, int to) {
        return pumpUntil([&] { return prog()->leftLocator == from && prog()->rightLocator == to; });
    };
    const auto at = [&](int tick) { return asPoint(xOf(tick), 3); };
    settle();
    dragOn(ruler(), at(7680), at(11520));
    EXPECT_TRUE(is(3840, 11520));
    dragOn(ruler(), at(3840), at(1920));
    EXPECT_TRUE(is(1920, 11520));
    dragOn(ruler(), at(5760), at(7680));
    EXPECT_TRUE(is(3840, 13440)) << "as it is";
    dragOn(ruler(), at(5760), at(0), true);
    EXPECT_TRUE(is(3840, 13440)) << "Escape";
    dragOn(ruler(), at(960), at(1920));
    EXPECT_TRUE(is(960, 1920)) << "another one";
    // Beyond the other end, they change places.
    dragOn(ruler(), at(1920), at(0));
    EXPECT_TRUE(is(0, 960));
    for (const auto& [from, to] : {std::pair{960, 1920}, {3840, 13440}, {1920, 11520}}) {
        key("ctrl+z");
        EXPECT_TRUE(is(from, to)) << from;
    }
    const bool on = host->loop;
    mouseTo(ruler(), xOf(5000), 3);
    act({"click", "1"});
    EXPECT_TRUE(pumpUntil([&] { return host->loop != on && prog()->loop != on; }));
    mouseTo(ruler(), xOf(2000), 14);
    act({"click", "1"});
    EXPECT_TRUE(pumpUntil([&] { return std::abs(host->pos - 2000) < 20; }));
}

TEST_F(TimelineTest, MarkersAreFlags) {
    begin();
    auto* flags = bar<MarkerBar>("markers");
    doubleClick(flags, asPoint(xOf(3850), 10));
    ASSERT_EQ(prog()->markers.getCount(), 1);
    EXPECT_EQ(marker(0)->pos, 3840);
    EXPECT_EQ(marker(0)->length, 3840) << "a bar";
    altClick(ruler(), asPoint(xOf(15360), 14));
    ASSERT_EQ(prog()->markers.getCount(), 2);
    EXPECT_EQ(marker(1)->pos, 15360);
    const auto flag = [&](int tick) { return asPoint(xOf(tick) + 6, 8); };
    const auto beside = [&](int tick) { return asPoint(xOf(tick) + 16, 12); }; // no double click
    dragOn(flags, beside(3840), beside(7680), true);
    EXPECT_EQ(marker(0)->pos, 3840);
    dragOn(flags, flag(3840), flag(7680));
    EXPECT_EQ(marker(0)->pos, 7680);
    dragOn(flags, asPoint(xOf(11520), 10), asPoint(xOf(13440), 10));
    EXPECT_EQ(marker(0)->length, 5760);
    doubleClick(flags, flag(7680));
    typeOver("Verse");
    EXPECT_TRUE(pumpUntil([&] { return marker(0)->id == "Verse"; }));
    // The menu: a colour, the loop around it; the keys.
    const auto menu = [&](const std::vector<std::string>& keys) {
        inMenu(keys);
        mouseTo(flags, flag(7680).x, 8);
        act({"click", "3"});
    };
    menu({"l", "Return"});
    EXPECT_TRUE(
        pumpUntil([&] { return prog()->leftLocator == 7680 && prog()->rightLocator == 13440; }));
    menu({"c", "Right", "g", "Return"});
    EXPECT_TRUE(pumpUntil([&] { return marker(0)->colourIndex == 2; }));
    focus(flags);
    for (const char* k : {"Left", "Left", "ctrl+Right"}) key(k);
    EXPECT_TRUE(pumpUntil([&] { return marker(0)->pos == 7920; })) << marker(0)->pos;
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return prog()->markers.getCount() == 1; }));
    for (int i = 0; i < 8; i++) key("ctrl+z");
    EXPECT_TRUE(
        pumpUntil([&] { return prog()->markers.getCount() == 1 && marker(0)->id == "Marker 1"; }));
    EXPECT_EQ(marker(0)->pos, 3840);
    EXPECT_EQ(marker(0)->length, 3840);
}

TEST_F(TimelineTest, TemposAndSignaturesHaveLanes) {
    begin();
    auto* tempos = bar<TempoLane>("tempos");
    auto* timesigs = bar<SignatureLane>("timesigs");
    EXPECT_FALSE(tempos->visible || timesigs->visible);
    key("h");
    win->onAction(win->getAction("tempo-track"));
    ASSERT_TRUE(pumpUntil([&] { return tempos->visible && timesigs->visible; }));
    settle();
    EXPECT_EQ(grid()->top, SnapBar::barHeight + Overview::stripHeight + TimeRuler::barHeight +
                               MarkerBar::barHeight + TempoLane::laneHeight +
                               SignatureLane::laneHeight);
    // 120 stands in the middle of a scale of 50.
    const int middle = TempoLane::laneHeight / 2;
    altClick(tempos, asPoint(xOf(3840), middle));
    ASSERT_EQ(prog()->tempos.getCount(), 1);
    EXPECT_NEAR(tempo(0)->getTempo(), 120, 1);
    dragOn(tempos, asPoint(xOf(3840) + 14, middle), asPoint(xOf(7680), middle - 16), true);
    EXPECT_EQ(tempo(0)->pos, 3840);
    dragOn(tempos, asPoint(xOf(3840), middle), asPoint(xOf(7680), middle - 16));
    EXPECT_EQ(tempo(0)->pos, 7680);
    EXPECT_NEAR(tempo(0)->getTempo(), 120 + 16 * 50.0 / 32, 1.5);
    focus(tempos);
    for (const char* k : {"Left", "Return"}) key(k);
    typeOver("93.5");
    EXPECT_TRUE(pumpUntil([&] { return tempo(0)->getTempo() == 93.5f; }));
    inMenu({"i", "Return"});
    key("Menu");
    EXPECT_TRUE(pumpUntil([&] { return tempo(0)->ramp == 1; }));
    host->setPos(9600.0);
    focus(tempos);
    key("shift+a");
    ASSERT_TRUE(pumpUntil([&] { return prog()->tempos.getCount() == 2; }));
    EXPECT_EQ(tempo(1)->ramp, 1) << "a bend of the line";
    key("shift+a");
    EXPECT_EQ(prog()->tempos.getCount(), 2) << "one stands there";
    key("ctrl+z");
    ASSERT_TRUE(pumpUntil([&] { return prog()->tempos.getCount() == 1; }));
    key("ctrl+z");
    key("ctrl+z");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return tempo(0)->pos == 3840 && tempo(0)->ramp == 0; }));
    EXPECT_NEAR(tempo(0)->getTempo(), 120, 1);
    // Signatures.
    doubleClick(timesigs, asPoint(xOf(7680), 10));
    ASSERT_EQ(prog()->timesigs.getCount(), 1);
    auto* point = prog()->timesigs.first();
    EXPECT_EQ(point->pos, 7680);
    focus(timesigs);
    key("Return");
    typeOver("7/8");
    EXPECT_TRUE(pumpUntil([&] { return point->getNum() == 7 && point->getDen() == 8; }));
    key("Return");
    typeOver("seven");
    EXPECT_EQ(point->getNum(), 7);
    dragOn(timesigs, asPoint(xOf(7680) + 5, 10), asPoint(xOf(3840) + 5, 10));
    EXPECT_EQ(point->pos, 3840);
    focus(timesigs);
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return prog()->timesigs.empty(); }));
}

/// The frame in the overview is what the grid shows.
TEST_F(TimelineTest, TheOverviewScrollsAndZooms) {
    begin();
    addPart(0, 0, 64 * barTicks);
    auto* strip = find<Overview>("overview");
    settle();
    const auto toX = [&](double tick) { return int(tick / strip->total() * strip->width); };
    const double seen = strip->span();
    dragOn(strip, asPoint(toX(seen / 2), 8), asPoint(toX(seen / 2 + 20 * barTicks), 8));
    const auto first = [&] { return song()->tickAt(TrackHead::headWidth + 1); };
    EXPECT_NEAR(first(), 20 * barTicks, strip->total() / strip->width);
    EXPECT_NEAR(strip->span(), seen, 1);
    const double zoom = song()->zoomNow();
    dragOn(strip, asPoint(toX(20 * barTicks + seen) - 1, 8),
           asPoint(toX(20 * barTicks + 2 * seen) - 1, 8));
    EXPECT_NEAR(song()->zoomNow(), zoom / 2, zoom / 20);
    EXPECT_NEAR(first(), 20 * barTicks, 2 * strip->total() / strip->width);
}

TEST_F(TimelineTest, TheSnapBarSetsTheGrid) {
    begin();
    auto* bar = find<CGroup>("snapbar");
    const auto grid = [&] {
        const CSnap& s = *seq()->snap;
        return asStr(s.asIndex()) + (s.active ? "a" : "") + (s.triplet ? "t" : "") +
               (s.dotted ? "d" : "");
    };
    const auto click = [&](CCtrl* button) {
        mouseTo(button, 5, 5);
        act({"click", "1"});
    };
    const CStr before = grid();
    const struct {
        const char *hint, *after;
    } cases[] = {{"Snap to grid on/off", "3"},
                 {"Triplet on/off", "3t"},
                 {"Dotted on/off", "3td"},
                 {"Snap to grid on/off", "3atd"}};
    EXPECT_EQ(before, "3a");
    for (const auto& c : cases) {
        for (auto* button : bar->controls)
            if (button->hint == c.hint) click(button);
        EXPECT_TRUE(pumpUntil([&] { return grid() == c.after; })) << c.hint;
    }
    int index = 0;
    for (auto* button : bar->controls) {
        if (button->id != "resolution") continue;
        click(button);
        EXPECT_TRUE(pumpUntil([&] { return seq()->snap->asIndex() == index; })) << index;
        index++;
    }
    EXPECT_EQ(index, 7);
    // How the view goes by it is no step of the song.
    const auto lit = [&] {
        std::string all;
        for (auto* button : each<CButton>(bar->controls)) all += button->lit ? '1' : '0';
        return all;
    };
    for (const auto& [id, shown] :
         {std::pair{"relative", "111000000001"}, {"adaptive", "111010000010"}}) {
        seq()->snap->dotted = false;
        click(find<CCtrl>(id, bar));
        EXPECT_TRUE(pumpUntil([&] { return lit() == shown; })) << id << " " << lit();
    }
    for (int i = 0; i < index + 4; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return grid() == before; }));
}

TEST_F(TimelineTest, TheObjectBarTellsAndSetsClips) {
    startWith({trackAudio});
    win->move(0, 0, 1020, 560); // all of the bar has room
    host->projectFile = at("song.qv").c_str();
    drop(tone("a.wav"), grid(), 0, yOf(0));
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
    CPart* clip = part(0, 0);
    seq()->unselectParts();
    auto* bar = find<CGroup>("objectbar");
    const auto button = [&](const char* id) { return find<CCtrl>(id, bar); };
    EXPECT_TRUE(pumpUntil([&] { return !button("forward")->visible; }));
    clip->setSelected(true);
    ASSERT_TRUE(pumpUntil([&] { return button("forward")->visible; }));
    const auto now = [&] { return static_cast<CAudioEvent*>(part(0, 0)->getEvents()); };
    const auto click = [&](const char* id) {
        focus(button(id));
        key("Return");
        EXPECT_TRUE(loaded());
    };
    for (int i = 0; i < 2; i++) { // a second press changes nothing
        click("reversed");
        EXPECT_EQ(now()->reverse, 1);
    }
    for (const auto& [id, mode] : {std::pair{"repitch", 1}, {"stretch", 2}, {"normal", 0}}) {
        click(id);
        EXPECT_EQ(now()->mode, mode) << id;
    }
    click("forward");
    EXPECT_EQ(now()->reverse, 0);
    // In a narrow window a menu has what finds no room.
    EXPECT_FALSE(button("more")->visible);
    win->move(0, 0, 800, 560);
    ASSERT_TRUE(pumpUntil([&] { return button("more")->visible; }));
    EXPECT_FALSE(button("reversed")->visible);
    EXPECT_GE(button("more")->left, 60);
    inMenu({"Down", "Return"});
    click("more");
    EXPECT_EQ(now()->reverse, 1);
    inMenu({"Return"});
    click("more");
    EXPECT_EQ(now()->reverse, 0);
    win->move(0, 0, 1020, 560);
    ASSERT_TRUE(pumpUntil([&] { return button("forward")->visible; }));
    // The length is typed, and the clip is cut at the steps of the grid.
    click("stretch");
    const auto type = [&](const char* text) {
        click("length");
        typeOver(text);
        EXPECT_TRUE(pumpUntil([&] { return find<CCtrl>("name", bar) == nullptr; }));
    };
    for (const auto& [text, length] :
         {std::pair{"1.1", 4800}, {"0.2.120", 2040}, {"none", 2040}, {"0", 2040}, {"0.1", 960}}) {
        type(text);
        EXPECT_TRUE(pumpUntil([&] { return seq()->getTicks(part(0, 0)) == length; })) << text;
    }
    click("slice");
    EXPECT_TRUE(pumpUntil([&] { return parts(0) == 4; })) << "of sixteenths";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
    key("o");
    EXPECT_TRUE(pumpUntil([&] { return !bar->visible; }));
}

/// A single note or hit that is selected is told, and is what the length is of.
TEST_F(TimelineTest, TheObjectBarTellsSingleEvents) {
    startWith({trackMIDI, trackDrum});
    seq()->addStandardKit(row(1)->track);
    CPart* notes = addPart(0, 3840, 3840);
    CPart* hits = addPart(1, 0, 3840);
    const auto note = [&](int key, bool chosen) {
        CMIDIEvent* e = createMIDIEvent();
        e->data = asData(midiNoteOn, key, 100);
        e->length = 480;
        e->flags = chosen ? eventSelected : 0;
        return e;
    };
    CMIDIEvent* program = createMIDIEvent(); // selected as well, but no note
    program->data = asData(midiProgram, 5, 0);
    program->flags = eventSelected;
    notes->addEvent(0, program);
    notes->addEvent(960, note(61, true));
    notes->addEvent(1920, note(64, false));
    CDrumEvent* hit = createDrumEvent();
    hit->sound = 1;
    hit->flags = eventSelected;
    hits->addEvent(240, hit);
    auto* bar = find<CGroup>("objectbar");
    const auto told = [&] {
        Description d;
        bar->describe(d, -1);
        return std::string(d.text);
    };
    notes->setSelected(true);
    EXPECT_TRUE(pumpUntil([&] { return told().rfind("Note: C#4, bar 2.2", 0) == 0; })) << told();
    CCtrl* length = find<CCtrl>("length", bar);
    EXPECT_TRUE(pumpUntil([&] { return length->spokenName == "Length 0.0.480"; }));
    focus(length);
    key("Return");
    typeOver("0.1");
    EXPECT_TRUE(pumpUntil([&] {
        auto* first = static_cast<CMIDIEvent*>(part(0, 0)->getEvents()->next);
        return first->length == 960 && static_cast<CMIDIEvent*>(first->next)->length == 480;
    }));
    seq()->unselectParts();
    hits->setSelected(true);
    const std::string drum = row(1)->track->drumSound(1)->getId().asChar();
    EXPECT_TRUE(pumpUntil([&] { return told().rfind("Drum: " + drum + ", bar 1.1.240", 0) == 0; }))
        << told();
}
