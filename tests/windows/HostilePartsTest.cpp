#include "ArrangeFixture.h"
#include "ProjectMask.h"
#include "SentEvents.h"

#include "engine/MidiBytes.h"
#include "notes/LaneView.h"
#include "notes/NoteGrid.h"
#include "project/ProjectFile.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "shell/Pages.h"
#include "ui/CCompEditor.h"
#include "ui/Workspace.h"

#include <limits>

/// Parts of a file that no program of ours wrote, opened in the editor.
class HostilePartsTest : public ArrangeFixture {
protected:
    static constexpr int most = std::numeric_limits<int>::max();
    struct Event {
        int delta, data, length; ///< `data`: a message, or the sound of a hit
    };
    struct Case {
        const char* name;
        TrackKind kind;
        std::vector<Event> events;
    };
    static int note(int key, int velocity = 100) { return asData(midiNoteOn, key, velocity); }

    /// Through a file, as it would come.
    void load(const Case& c) {
        refusesDialogs = true; // what the case before left is not to be recovered
        startWith({c.kind});
        if (c.kind == trackDrum) seq()->addStandardKit(row(0)->track);
        CPart* made = addPart(0, 0, barTicks);
        CBaseEvent* head = nullptr;
        CBaseEvent** link = &head;
        for (const Event& e : c.events) {
            *link = made->type == partDrum ? static_cast<CBaseEvent*>(hit(e)) : message(e);
            (*link)->delta = e.delta;
            link = &(*link)->next;
        }
        made->setEvents(head);
        ProjectUi ui;
        ASSERT_TRUE(saveProject({host.get(), &win->flows->mixer, &ui}, at("song.qv").c_str()));
        ASSERT_TRUE(MainWinTest::load(kindFile, at("song.qv").c_str()));
        win->openPart(part(0, 0));
        ASSERT_TRUE(pumpUntil([&] { return editor() && below<NoteGrid>()->accessParts() >= 0; }));
        settle();
    }
    static CMIDIEvent* message(const Event& e) {
        CMIDIEvent* made = createMIDIEvent();
        made->data = e.data;
        made->length = e.length;
        return made;
    }
    static CDrumEvent* hit(const Event& e) {
        CDrumEvent* made = createDrumEvent();
        made->sound = e.data;
        made->length = e.length;
        made->velocity = made->pan = made->tune = std::numeric_limits<float>::quiet_NaN();
        return made;
    }
    CCompEditor* editor() { return win->pages->editorOf(seq()->editorComp.get()); }
    template <class T>
    T* below(CGroup* group = nullptr) {
        for (auto* c : (group ? group : editor()->clientGroup)->controls) {
            if (auto* found = dynamic_cast<T*>(c)) return found;
            T* inner = c->category == catGroup ? below<T>(static_cast<CGroup*>(c)) : nullptr;
            if (inner) return inner;
        }
        return nullptr;
    }
    std::string content() { return projectContent(host.get(), &win->flows->mixer); }
    void follow() {
        host->settle();
        win->onTimer();
        settle();
    }
    void run(const char* name) {
        win->runAction(win->getAction(name));
        follow();
    }

    /// Looks at all of it from near and far, and drags all of it about.
    void use() {
        SentEvents hand(app.get());
        NoteGrid* grid = below<NoteGrid>();
        LaneView* lane = below<LaneView>();
        const CPoint middle = editor()->controlPos(grid);
        const auto at = [&](int x, int y) { return asPoint(middle.x + x, middle.y + y); };
        for (const EventLane& shown : {EventLane{laneVelocity, 0},
                                       {laneController, 7},
                                       {laneController, 127},
                                       {lanePitchBend, 0},
                                       {lanePressure, 0},
                                       {laneProgram, 0}}) {
            lane->lane = shown;
            for (const unsigned wheel : {Button4, Button5})
                for (int i = 0; i < 60; i++) {
                    hand.held = i % 3 ? ControlMask : i % 2 ? ShiftMask : 0;
                    hand.wheel(editor(), at(i * 7 % grid->width, i * 11 % grid->height), wheel);
                    if (i % 20 == 0) app->paintFrame();
                }
        }
        hand.held = 0;
        run("zoomselection");
        settle();
        for (int i = 0; i < grid->accessParts(); i++) {
            Description d;
            grid->describe(d, i);
            EXPECT_FALSE(d.name.empty());
        }
        for (const unsigned mods : {0u, unsigned(ControlMask), unsigned(Mod1Mask)})
            for (int i = 0; i < asMin(3, grid->accessParts()); i++) {
                run("selectAll");
                Description d;
                grid->describe(d, i);
                const CPoint from = at(asMax(0, d.bounds.left) + i * 2, d.bounds.top + 2);
                hand.held = mods;
                hand.press(editor(), from, Button1);
                for (const CPoint by : {asPoint(40, 30), asPoint(-4000, -900), asPoint(9000, 900)})
                    hand.move(editor(), asPoint(from.x + by.x, from.y + by.y));
                app->paintFrame();
                hand.release(editor(), from, Button1);
                hand.held = 0;
                follow();
            }
        for (const char* action : {"quantize", "duplicate", "copy", "paste", "insertnote",
                                   "selectAll", "cut", "undo", "delete"})
            run(action);
    }
};

TEST_F(HostilePartsTest, OpenAndAreEditedWithoutHarm) {
    const Case cases[] = {
        {"ticks out of order",
         trackMIDI,
         {{960, note(60), 240}, {-2000, note(62), 240}, {480, note(64), 240}, {-1, note(65), 9}}},
        {"before the part", trackMIDI, {{-3000, note(60), 240}, {100, note(61), 5000}}},
        {"lengths",
         trackMIDI,
         {{0, note(60), 0}, {10, note(61), 1 << 30}, {10, note(62), -5}, {10, note(63), most}}},
        {"far ticks",
         trackMIDI,
         {{most, note(60), most}, {most, note(61), most}, {most, note(62), 1 << 30}}},
        {"keys", trackMIDI, {{0, note(128), 240}, {10, note(200), 240}, {10, note(255, 255), 240}}},
        {"controllers",
         trackMIDI,
         {{0, asData(midiController, 128, 200), 0},
          {9, asData(midiController, 255, 255), 0},
          {9, asData(midiPitchBend, 255, 255), 0},
          {9, asData(midiProgram, 255, 255), 0},
          {9, asData(midiPressure, 200, 0), 0},
          {9, asData(midiAftertouch, 255, 255), 0}}},
        {"no messages", trackMIDI, {{0, -1, -1}, {0, 0, 0}, {5, 0x7F7FFF, 3}, {5, 0xF0, 3}}},
        {"sounds", trackDrum, {{0, -1, 240}, {10, 99, 240}, {10, most, most}, {10, 2, 0}}},
        {"nothing", trackMIDI, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        load(c);
        if (HasFatalFailure()) return;
        int tick = 0;
        for (CBaseEvent* e = part(0, 0)->getEvents(); e; e = e->next) {
            EXPECT_TRUE(e == part(0, 0)->getEvents() || e->delta >= 0);
            EXPECT_LE(std::abs(int64_t(tick) + e->delta), maxTicks);
            tick += e->delta;
        }
        const std::string start = content();
        use();
        EXPECT_GE(host->undoIndex, 0) << "something was done";
        while (host->undoIndex >= 0 && !HasFailure()) run("undo");
        EXPECT_EQ(content(), start);
        stop();
    }
}
