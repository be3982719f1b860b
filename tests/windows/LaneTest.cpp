#include "ArrangeFixture.h"

#include "arrange/LaneHead.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSubTrack.h"

/// Points of automation by mouse and keys, in the lane of a track's volume under it.
class LaneTest : public ArrangeFixture {
protected:
    static constexpr int laneTop = CTrack::usualRow + 4, laneHeight = 40 - 4 - 4 - 1 - 1;

    /// An audio track with a part and its lane open, and another track.
    void startWithLane() {
        startWith({trackAudio, trackMIDI});
        addPart(0, 960, 3840);
        row(0)->track->setOpen(true);
        seq()->songNotices.raise(SeqNotice::tracks);
        ASSERT_TRUE(loaded());
    }
    CPoint at(int tick, double value) {
        return asPoint(xOf(tick), laneTop + int((1 - value) * laneHeight + 0.5));
    }
    /// Their ticks and tenths of the value, "+" and "-" behind what is bent, "*" behind the
    /// selected.
    std::string points(int slot = 0) {
        std::string told;
        int tick = 0;
        for (const CEnvEvent* e = part(0, 0)->getParam(slot); e;
             e = static_cast<CEnvEvent*>(e->next)) {
            tick += e->delta;
            told += std::to_string(tick) + ":" + std::to_string(int(e->value * 10 + 0.5f)) +
                    (e->curve > 0.05f    ? "+"
                     : e->curve < -0.05f ? "-"
                                         : "") +
                    (e->flags & eventSelected ? "* " : " ");
        }
        return told;
    }
    bool becomes(const std::string& told) {
        const auto plain = [&] {
            std::string now = points();
            if (told.find('*') == std::string::npos) std::erase(now, char(42));
            return now;
        };
        return pumpUntil([&] { return plain() == told; });
    }
    void addPoint(int tick, double value) {
        mouseTo(at(tick, value));
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        EXPECT_TRUE(loaded());
    }
    std::string status() {
        Description line;
        find<CCtrl>("status", win->clientGroup)->describe(line, CCtrl::wholeCtrl);
        return line.name;
    }
};

/// Points of a lane are put in, moved, copied, bent, chosen and deleted.
TEST_F(LaneTest, AutomationIsDrawnInItsLane) {
    startWithLane();
    addPoint(1200, 0.2);
    addPoint(2400, 0.8);
    EXPECT_TRUE(becomes("240:2 1440:8 ")) << points();
    drag(at(2400, 0.8), at(2880, 0.5));
    EXPECT_TRUE(becomes("240:2 1920:5 ")) << points();
    drag(at(2880, 0.5), at(3840, 0.9), "ctrl");
    EXPECT_TRUE(becomes("240:2 1920:5 2880:9 ")) << points();
    drag(at(2040, 0.35), asPoint(at(2040, 0.35).x, at(0, 0.35).y - 8));
    EXPECT_TRUE(becomes("240:2 1920:5+ 2880:9 ")) << points();
    clickAt(at(3840, 0.9), "3");
    EXPECT_TRUE(becomes("240:2 1920:5+ ")) << points();
    drag(at(2880, 0.5), at(2880, 0.9), "", true);
    EXPECT_TRUE(becomes("240:2 1920:5+ ")) << "Escape";
    part(0, 0)->setSelected(true);
    drag(asPoint(xOf(1100), laneTop), asPoint(xOf(1300), laneTop + laneHeight));
    key("Delete");
    EXPECT_TRUE(becomes("1920:5+ ")) << points();
    EXPECT_EQ(parts(0), 1);
    for (int i = 0; i < 7; i++) key("ctrl+z");
    EXPECT_TRUE(becomes("")) << points();
}

/// A straight line, and what the pointer follows: both replace what is under them, on the grid.
TEST_F(LaneTest, LinesAreDrawn) {
    startWithLane();
    for (const int tick : {1200, 2400, 3360}) addPoint(tick, 0.2);
    drag(at(1680, 0.9), at(2640, 0.1), "ctrl");
    EXPECT_TRUE(becomes("240:2 720:9 1680:1 2400:2 ")) << points();
    EXPECT_EQ(host->undoText(), "Draw");
    key("ctrl+z");
    EXPECT_TRUE(becomes("240:2 1440:2 2400:2 ")) << points();
    drag(at(2640, 0.1), at(1680, 0.9), "ctrl", true);
    EXPECT_TRUE(becomes("240:2 1440:2 2400:2 ")) << "Escape";
    // Down and up again.
    mouseTo(at(1200, 0.9));
    for (const char* held : {"ctrl", "shift"}) act({"keydown", held});
    act({"mousedown", "1"});
    for (const auto& [tick, value] : {std::pair{1200, 0.9}, {2160, 0.1}, {3120, 0.9}, {9000, 0.9}})
        mouseTo(at(tick, value));
    act({"mouseup", "1"});
    for (const char* held : {"ctrl", "shift"}) act({"keyup", held});
    EXPECT_TRUE(becomes("240:9 1200:1 2160:9 3840:9 ")) << points(); // to the end of the part
    mouseTo(at(2160, 0.1));
    act({"click", "--repeat", "2", "--delay", "50", "1"});
    EXPECT_TRUE(loaded());
    act({"type", "--", "-6 dB"});
    key("Return");
    EXPECT_TRUE(becomes("240:9 1200:7 2160:9 3840:9 ")) << points();
}

/// Points are copied, cut and pasted at the song's position, where they replace what was there.
TEST_F(LaneTest, PointsAreCopied) {
    startWithLane();
    for (const auto& [tick, value] : {std::pair{1200, 0.2}, {1680, 0.8}, {3120, 0.5}, {4320, 0.5}})
        addPoint(tick, value);
    drag(asPoint(xOf(1100), laneTop - 3), asPoint(xOf(1800), laneTop + laneHeight + 3));
    EXPECT_TRUE(becomes("240:2* 720:8* 2160:5 3360:5 ")) << points();
    key("ctrl+c");
    host->setPos(2880);
    EXPECT_TRUE(pumpUntil([&] { return int(seq()->getPos()) == 2880; }));
    key("ctrl+v");
    EXPECT_TRUE(becomes("240:2 720:8 1920:2 2400:8 3360:5 ")) << points();
    EXPECT_EQ(host->undoText(), "Paste");
    key("ctrl+z");
    EXPECT_TRUE(becomes("240:2 720:8 2160:5 3360:5 ")) << points();
    key("ctrl+x");
    EXPECT_TRUE(becomes("2160:5 3360:5 ")) << points();
    EXPECT_EQ(parts(0), 1);
    clickAt(point(2000, 0));
    key("ctrl+c");
    host->setPos(4800);
    EXPECT_TRUE(pumpUntil([&] { return int(seq()->getPos()) == 4800; }));
    key("ctrl+v");
    EXPECT_TRUE(pumpUntil([&] { return parts(0) == 2; })) << "parts were copied last";
}

/// By the keys alone: put in at the song's position, walked, moved, bent, typed, and told in the
/// unit of the lane.
TEST_F(LaneTest, PointsGoByKeys) {
    startWithLane();
    clickAt(point(2000, 0));
    host->values->set(faderOf(row(0)->track->output()), {0.75, 1.0});
    focus(grid());
    for (const int tick : {960, 1920, 2880}) {
        host->setPos(tick);
        EXPECT_TRUE(pumpUntil([&] { return int(seq()->getPos()) == tick; }));
        key("shift+a");
        EXPECT_TRUE(loaded());
    }
    EXPECT_TRUE(becomes("0:8 960:8 1920:8* ")) << points(); // where the fader is
    key("Left");
    EXPECT_TRUE(becomes("0:8 960:8* 1920:8 ")) << points();
    for (int i = 0; i < 5; i++) key("ctrl+Up");
    EXPECT_TRUE(becomes("0:8 960:8* 1920:8 ")) << points();
    EXPECT_TRUE(pumpUntil([&] { return status() == "Volume, bar 1.3, -3.88 dB"; })); // 40 lg 0.8
    key("ctrl+Right");
    EXPECT_TRUE(becomes("0:8 1200:8* 1920:8 ")) << points();
    key("alt+Down");
    EXPECT_TRUE(becomes("0:8 1200:7* 1920:8 ")) << points();
    key("alt+Right"); // the line goes down
    EXPECT_TRUE(becomes("0:8 1200:7-* 1920:8 ")) << points();
    key("shift+Right");
    EXPECT_TRUE(becomes("0:8 1200:7-* 1920:8* ")) << points();
    key("Return");
    settle();
    key("ctrl+a");
    act({"type", "--", "-24"});
    key("Return");
    EXPECT_TRUE(becomes("0:8 1200:3-* 1920:3* ")) << points(); // 10 to the power of -24/40: 0.251
    key("Up");
    EXPECT_TRUE(pumpUntil([&] { return part(0, 0)->selected() != 0; }));
    EXPECT_TRUE(becomes("0:8 1200:3- 1920:3 ")) << points();
    key("Down");
    EXPECT_TRUE(pumpUntil([&] { return points().find('*') != std::string::npos; })) << points();
    key("Delete");
    EXPECT_EQ(parts(0), 1);
}

/// Points stand in the accessible tree under the part they are in, by name, place and value.
TEST_F(LaneTest, PointsAreTold) {
    startWithLane();
    addPoint(1920, 0.5);
    ASSERT_EQ(grid()->accessParts(), 2);
    Description told;
    grid()->describe(told, 1);
    EXPECT_EQ(told.name, "Volume, bar 1.3, -12.04 dB");
    EXPECT_TRUE(told.bounds.contains(at(1920, 0.5).x, at(1920, 0.5).y));
    seq()->unselectParts();
    EXPECT_TRUE(grid()->pressPart(0));
    EXPECT_TRUE(becomes("960:5 ")) << points();
    EXPECT_TRUE(grid()->pressPart(1));
    EXPECT_TRUE(becomes("960:5* ")) << points();
    EXPECT_FALSE(part(0, 0)->selected());
    EXPECT_EQ(grid()->focusedPart(), 1);
    // The head tells what the fader is.
    COutputChannel* strip = row(0)->track->output();
    host->values->set(faderOf(strip), {std::pow(10.0, -0.15), 1.0});
    auto* head = find<LaneHead>("lane");
    ASSERT_TRUE(head);
    EXPECT_TRUE(pumpUntil([&] {
        Description lane;
        head->describe(lane, CCtrl::wholeCtrl);
        return lane.text == "-6.00 dB";
    }));
}

/// The lane of the control that was moved last comes into view, a new one if there was none.
TEST_F(LaneTest, WhatWasTouchedIsShown) {
    startWith({trackAudio, trackMIDI});
    CAction* show = win->getAction("showtouched");
    EXPECT_FALSE(win->canRun(show));
    COutputChannel* strip = row(0)->track->output();
    host->values->set(panOf(strip), 0.5);
    ASSERT_TRUE(win->canRun(show));
    key("a");
    ASSERT_TRUE(pumpUntil([&] { return row(0)->track->findLane(strip, 1) != nullptr; }));
    EXPECT_TRUE(row(0)->track->open());
    EXPECT_EQ(host->undoText(), "Add lane");
    EXPECT_EQ(row(0)->track->findLane(strip, 1)->id, "Pan");
    const int lanes = row(0)->track->subTracks.getCount();
    row(0)->track->setOpen(false);
    key("a");
    EXPECT_TRUE(pumpUntil([&] { return row(0)->track->open() != 0; }));
    EXPECT_EQ(row(0)->track->subTracks.getCount(), lanes) << "it had one";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return row(0)->track->findLane(strip, 1) == nullptr; }));
}
