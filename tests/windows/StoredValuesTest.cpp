#include "MainFixture.h"

#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"

#include <cmath>

namespace {

CCtrl* named(CGroup* group, const char* name) {
    for (auto* ctrl : group->controls) {
        if (ctrl->id == name) return ctrl;
        CCtrl* inside =
            ctrl->category == catGroup ? named(static_cast<CGroup*>(ctrl), name) : nullptr;
        if (inside) return inside;
    }
    return nullptr;
}

} // namespace

/// What the window changes of a project, by keys, the wheel, drags and what is typed.
class StoredValuesTest : public MainWinTest {
protected:
    void SetUp() override {
        MainWinTest::SetUp();
        start();
        ASSERT_TRUE(load(kindSequencer));
        prog = seq()->getProg();
        track = prog->tracks.first();
        host->tasks->audioStopped();
    }
    double tempo() { return tempoHereOf(seq()).get()[0]; }
    void onTempo(const std::string& rest) { on("tempo", rest); }
    void on(const char* display, const std::string& rest) {
        const CCtrl* ctrl = named(win->clientGroup, display);
        const CPoint corner = win->getPos(true), at = win->controlPos(ctrl);
        xdo("mousemove " + std::to_string(corner.x + at.x + 40) + " " +
            std::to_string(corner.y + at.y + 30) + " " + rest);
    }
    bool undone() {
        host->values->end();
        key("ctrl+z");
        return pumpUntil([this] { return !host->undoBusy() && !host->modified(); });
    }

    CSeqProg* prog = nullptr;
    CSongTrack* track = nullptr;
};

/// Without this a closed window asked nothing, and all of it was gone.
TEST_F(StoredValuesTest, WhatIsStoredIsUnsavedAndOneStep) {
    seq()->progs.add(seq()->createProgram());
    prog->rightLocator = 1920;
    seq()->selectAll();
    const struct {
        const char* name;
        std::function<void()> act;
        std::function<bool()> changed;
    } cases[] = {
        {"mute", [&] { key("m"); }, [&] { return track->muted(); }},
        {"solo", [&] { key("s"); }, [&] { return track->soloed(); }},
        {"loop", [&] { key("l"); }, [&] { return host->loop && prog->loop; }},
        {"locators", [&] { key("ctrl+p"); }, [&] { return prog->rightLocator == 3840; }},
        {"program", [&] { key("9"); }, [&] { return seq()->curProg == 1; }},
        {"snap", [&] { key("x"); }, [&] { return !seq()->snap->active; }},
        {"grid", [&] { key("shift+x"), key("shift+x"); },
         [&] { return seq()->snap->asIndex() == 5; }},
        {"wheel", [&] { onTempo("click --repeat 3 --delay 5 4"); }, [&] { return tempo() == 123; }},
        {"drag",
         [&] { onTempo("mousedown 1 mousemove_relative 0 20 mousemove_relative 0 20 mouseup 1"); },
         [&] { return tempo() == 100; }},
        {"typed",
         [&] {
             onTempo("click --repeat 2 --delay 5 1");
             xdo("type --delay 5 98,65");
             xdo("key BackSpace Return");
         },
         [&] { return tempo() == double(98.6f); }},
    };
    for (const auto& c : cases) {
        ASSERT_FALSE(host->modified()) << c.name;
        c.act();
        EXPECT_TRUE(pumpUntil(c.changed)) << c.name << ", tempo " << tempo();
        EXPECT_TRUE(host->modified()) << c.name;
        EXPECT_TRUE(undone()) << c.name;
        EXPECT_FALSE(c.changed()) << c.name;
        EXPECT_EQ(host->undoIndex, -1) << c.name << " is not one step";
    }
}

/// The display was dead in songs with tempo points.
TEST_F(StoredValuesTest, TempoDisplayChangesThePointInForce) {
    auto* point = new CTempoPart;
    point->pos = 1920;
    point->setTempo(60.0f);
    prog->addTempo(point, nullptr);
    host->setPos(3840.0);
    onTempo("click 4");
    EXPECT_EQ(point->getTempo(), 61.0f);
    EXPECT_EQ(host->songTempo, 120.0f);
    EXPECT_EQ(host->tempo, 61.0f) << "heard at once";
    EXPECT_TRUE(undone());
    EXPECT_EQ(point->getTempo(), 60.0f);
    EXPECT_EQ(host->tempo, 60.0f);
}

TEST_F(StoredValuesTest, SignatureDisplayChangesThePointInForce) {
    auto* point = new CTimesigPart;
    point->pos = 3840;
    point->setTimesig(3, 4);
    prog->addTimesig(point, nullptr);
    const auto shown = [this] {
        const StoredValue::Numbers now = signatureHereOf(seq()).get();
        return std::to_string(asInt(now[0])) + "/" + std::to_string(asInt(now[1]));
    };
    for (const bool behind : {false, true}) {
        host->setPos(behind ? 3840.0 * 3 : 0.0);
        const std::string before = behind ? "3/4" : "4/4";
        EXPECT_EQ(shown(), before);
        inMenu({"Down", "Return"});
        on("signature", "click 1");
        EXPECT_TRUE(pumpUntil([&] { return shown() == "2/4"; }));
        EXPECT_EQ(point->getNum(), behind ? 2 : 3);
        EXPECT_TRUE(undone());
        EXPECT_EQ(shown(), before);
    }
}

TEST_F(StoredValuesTest, EscapeGivesADragBack) {
    onTempo("mousedown 1 mousemove_relative 0 20");
    EXPECT_TRUE(pumpUntil([&] { return tempo() == 110; }));
    xdo("key Escape mousemove_relative 0 20 mouseup 1");
    EXPECT_EQ(tempo(), 120);
    EXPECT_FALSE(host->modified());
    EXPECT_EQ(host->undoIndex, -1);
    onTempo("click --repeat 2 --delay 5 1");
    xdo("type --delay 5 77");
    xdo("key Escape");
    EXPECT_EQ(tempo(), 120);
}

/// Every figure of the toolbar can be typed, stepped part by part, and reset. Home and Delete are
/// keys of the song while nothing has the focus.
TEST_F(StoredValuesTest, FiguresTakeKeys) {
    const auto signature = [&](int num, int den) {
        return [=, this] {
            const StoredValue::Numbers now = signatureHereOf(seq()).get();
            return now[0] == num && now[1] == den;
        };
    };
    const auto pos = [&](double tick) {
        return [=, this] { return std::abs(seq()->getPos() - tick) < 1e-6; };
    };
    const auto bpm = [&](double to) { return [=, this] { return std::abs(tempo() - to) < 1e-4; }; };
    const auto percent = [&](int to) {
        return [=, this] { return asRound(double(host->listenVolume) * 100) == to; };
    };
    const struct {
        const char *display, *keys;
        std::function<bool()> then;
    } cases[] = {
        {"position", "3 period 2 Return", pos(2 * 3840 + 960)},
        {"position", "Up Right Up Right Page_Up", pos(3 * 3840 + 2 * 960 + 10)},
        {"position", "5 Escape Left Left Down", pos(2 * 3840 + 2 * 960 + 10)},
        {"position", "Delete", pos(0)},
        {"position", "Return 2 period 5 Return", pos(4800)}, // 2.5 s at 120
        {"position", "Right Up Return", pos(6720)},
        {"position", "Home", pos(0)},
        {"tempo", "9 0 Return", bpm(90)},
        {"tempo", "Up Page_Up Right Down", bpm(100.9)},
        {"tempo", "Home", bpm(10)},
        {"tempo", "End", bpm(250)},
        {"tempo", "Delete", bpm(120)},
        {"signature", "7 slash 8 Return", signature(7, 8)},
        {"signature", "5 slash 3 Return", signature(7, 8)}, // no such note
        {"signature", "Down Right Up", signature(6, 16)},
        {"signature", "Delete", signature(4, 4)},
        {"monitor", "4 0 Return Right", percent(45)},
        {"monitor", "Page_Down Home", percent(0)},
        {"monitor", "Delete Down", percent(95)},
    };
    for (const auto& c : cases) {
        win->setKeyCtrl(named(win->clientGroup, c.display));
        for (const std::string& k : split(c.keys)) key(k);
        host->tasks->audioStopped();
        EXPECT_TRUE(pumpUntil(c.then))
            << c.display << ": " << c.keys << ", at " << seq()->getPos() << ", tempo " << tempo();
    }
}
