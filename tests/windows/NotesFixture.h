#pragma once

#include "ArrangeFixture.h"

#include "engine/MidiBytes.h"
#include "gui/controls/CDocker.h"
#include "notes/CEditorWin.h"
#include "notes/LaneView.h"
#include "notes/NoteGrid.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "shell/Pages.h"
#include "ui/NotePlace.h"

/// The note editor under the mouse and the keys of a user: what is left in the song.
class NotesFixture : public ArrangeFixture {
protected:
    /// A part of one bar at bar 2, open in the editor. The rows of keys are 8 pixels high, the grid
    /// has steps of 240 ticks.
    void open(TrackKind kind) {
        startWith({kind});
        if (kind == trackDrum) seq()->addStandardKit(row(0)->track);
        edited = addPart(0, barTicks, barTicks);
        mouseTo(point(barTicks + 960, 0));
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        ASSERT_TRUE(pumpUntil([&] { return editor() != nullptr; }));
        ASSERT_TRUE(loaded());
        settle();
        ASSERT_EQ(win->pages->current(), editor());
        ASSERT_EQ(editor()->getSize(), win->pages->docker->getSize()) << "it fills its page";
    }
    CCompEditor* editor() { return win->pages->editorOf(seq()->editorComp.get()); }
    template <class T>
    T* child(const char* id) {
        return childOf<T>(editor()->clientGroup, id);
    }
    template <class T>
    static T* childOf(CGroup* in, const char* id) {
        for (auto* c : in->controls) {
            if (auto* found = c->id == id ? dynamic_cast<T*>(c) : nullptr) return found;
            auto* inner = dynamic_cast<CGroup*>(c);
            if (T* found = inner ? childOf<T>(inner, id) : nullptr) return found;
        }
        return nullptr;
    }
    NoteGrid* notes() { return child<NoteGrid>("notes"); }
    LaneView* lane() { return child<LaneView>("lane"); }

    /// A tick of the part and a key or sound, as the editor shows them first.
    CPoint place(double tick, int key) {
        const int w = notes()->width, h = notes()->height;
        constexpr int margin = 24, high = 8, middle = 60;
        const int x = margin + asRound(tick * (w - 2 * margin) / barTicks);
        if (edited->type == partDrum) return asPoint(x, key * 20 + 10);
        const int top = asMinMax((127 - middle) * high - h / 2, 0, 128 * high - h);
        return asPoint(x, (127 - key) * high - top + high / 2);
    }
    using MainWinTest::at;
    void at(CCtrl* ctrl, CPoint p) {
        const CPoint screen = editor()->getPos(true), in = editor()->controlPos(ctrl);
        act({"mousemove", std::to_string(screen.x + in.x + p.x),
             std::to_string(screen.y + in.y + p.y)});
    }
    void press(CPoint from, CPoint to, const std::string& held = "", CCtrl* ctrl = nullptr,
               const char* button = "1", const std::string& last = "") {
        CCtrl* on = ctrl ? ctrl : notes();
        at(on, from);
        if (!held.empty()) act({"keydown", held});
        act({"mousedown", button});
        at(on, asPoint((from.x + to.x) / 2, (from.y + to.y) / 2));
        at(on, to);
        if (!last.empty()) key(last);
        act({"mouseup", button});
        if (!held.empty()) act({"keyup", held});
        EXPECT_TRUE(loaded());
    }
    void click(CPoint p, const char* button = "1", int times = 1) {
        at(notes(), p);
        act({"click", "--repeat", std::to_string(times), "--delay", "50", button});
        EXPECT_TRUE(loaded());
    }
    void put(int tick, int note, int length, int velocity = 100) {
        CMIDIEvent* made = createMIDIEvent();
        made->data = asData(midiNoteOn, note, velocity);
        made->length = length;
        insertEvent(seq(), edited, tick, made);
        EXPECT_TRUE(loaded());
    }
    /// Tick, row, length and velocity of each, in order.
    std::string content() {
        std::string text;
        eachEvent(edited->getEvents(), [&](CBaseEvent* e, int tick) {
            const NoteFacts f = factsOf(edited, e, tick);
            const bool message =
                edited->type == partMIDI && !noteOn(static_cast<CMIDIEvent*>(e)->data);
            if (message)
                text += std::to_string(tick) + "=" +
                        std::to_string(static_cast<CMIDIEvent*>(e)->data) + " ";
            else
                text += std::to_string(tick) + ":" + std::to_string(f.row) + ":" +
                        std::to_string(f.length) + ":" + std::to_string(f.velocity) +
                        (isSelected(e) ? "* " : " ");
        });
        return text;
    }
    testing::AssertionResult holds(const std::string& wanted) {
        if (pumpUntil([&] { return content() == wanted; })) return testing::AssertionSuccess();
        return testing::AssertionFailure() << content() << "instead of " << wanted;
    }

    CPart* edited = nullptr;
};
