#include "ArrangeFixture.h"

#include "arrange/Hit.h"
#include "arrange/Overview.h"
#include "arrange/RowLayout.h"
#include "audiofiles/CSample.h"
#include "engine/CSnap.h"
#include "shell/Rooms.h"
#include "ui/DragSnap.h"
#include "ui/Options.h"
#include "ui/TimeAxis.h"
#include "ui/WaveColumns.h"

/// Work on parts by mouse and keys: what is left in the song.
class ArrangeTest : public ArrangeFixture {};

TEST(TimeAxis, KeepsThePlaceUnderThePointer) {
    TimeAxis axis;
    EXPECT_EQ(axis.xOf(960), 64);
    axis.scrollTo(1000);
    for (const double zoom : {20.0, 65565.0, 16.0}) {
        const double before = axis.ticksAt(300);
        axis.zoomAt(300, zoom);
        EXPECT_NEAR(axis.ticksAt(300), before, axis.ticksIn(0.5)) << zoom;
    }
    axis.setZoom(1e9);
    EXPECT_EQ(axis.zoom(), TimeAxis::mostZoom);
    EXPECT_EQ(axis.xOf(1 << 30), TimeAxis::farX);
    axis.scrollTo(axis.wideX(1 << 30));
    EXPECT_EQ(axis.xOf(1 << 30), 0);
    EXPECT_EQ(axis.xOf(0), -TimeAxis::farX);
    axis.setZoom(0);
    EXPECT_EQ(axis.zoom(), TimeAxis::leastZoom);
}

TEST(DragSnap, BringsThePlaceToTheGrid) {
    const struct {
        int grid, anchor, delta, moved;
    } cases[] = {
        {480, 960, 1, 0},      {480, 960, 239, 0},  {480, 960, 240, 480}, {480, 960, -241, -480},
        {480, 1000, 200, 440}, {480, 1000, 1, 440}, {480, 1000, -1, -40}, {1, 1000, 7, 7},
    };
    for (const auto& c : cases)
        EXPECT_EQ(snappedDelta(c.grid, c.anchor, c.delta), c.moved)
            << c.grid << " " << c.anchor << " " << c.delta;
}

/// Columns hold the extremes of their frames and the power: from the image, or, where they are
/// narrower than its entries, from the frames, and between frames a line.
TEST(WaveColumns, ShowWhatTheirFramesAre) {
    constexpr int count = 4096;
    auto* frames = static_cast<int16_t*>(std::malloc(count * sizeof(int16_t)));
    for (int i = 0; i < count; i++)
        frames[i] = int16_t(i % 64 == 40 ? 16384 : i % 2 ? 4096 : -4096);
    CSample sample;
    sample.setFormat(44100, 16, 1);
    sample.takeData(reinterpret_cast<unsigned char*>(frames), count);
    sample.peakfile();
    const float low = -4096 / 32768.0f, high = 0.5f;
    const double power = (62.0 * 0.125 * 0.125 + 0.125 * 0.125 + 0.25) / 64;
    for (const double width : {256.0, 128.0, 64.0}) {
        const WaveColumn w = WaveColumns(&sample, 512, 1024, width).at(512);
        EXPECT_NEAR(w.low, low, 0.01) << width;
        EXPECT_NEAR(w.high, high, 0.01) << width;
        EXPECT_NEAR(w.rms, std::sqrt(power), 0.01) << width;
    }
    const WaveColumns few(&sample, 512, 1024, 2);
    EXPECT_NEAR(few.at(552).high, high, 1e-4);
    EXPECT_NEAR(few.at(560).high, -low, 1e-4) << "the frames of this column alone";
    EXPECT_EQ(few.at(560).rms, 0.0f);
    const WaveColumns line(&sample, 512, 520, 0.25);
    EXPECT_NEAR(line.at(512.25).low, low - low * 0.5f, 1e-4) << "between two frames";
    EXPECT_EQ(line.at(512.25).high, line.at(512.5).low) << "columns meet";
}

TEST(PartEdges, LeaveNarrowPartsAMiddle) {
    EXPECT_EQ(edgeWidth(10), 2);
    EXPECT_EQ(edgeWidth(40), 8);
    EXPECT_EQ(edgeWidth(4000), 8);
    EXPECT_EQ(edgeWidth(4), 0);
}

/// Alt or a double click on an empty place makes a part of the track's kind, which can be dragged
/// at once.
TEST_F(ArrangeTest, PartsAreInsertedWhereTheTrackIsEmpty) {
    startWith({trackMIDI, trackAudio, trackDrum});
    const int types[] = {partMIDI, partAudio, partDrum};
    for (int t = 0; t < 3; t++) {
        mouseTo(point(970, t));
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        ASSERT_TRUE(pumpUntil([&] { return parts(t) == 1; })) << t;
        EXPECT_EQ(part(t, 0)->type, types[t]);
        EXPECT_EQ(part(t, 0)->pos, 960) << "the line before";
        EXPECT_EQ(part(t, 0)->content()->id, row(t)->track->id);
        EXPECT_TRUE(part(t, 0)->selected());
    }
    drag(point(5780, 0), point(6740, 0), "alt");
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 2; }));
    EXPECT_EQ(part(0, 1)->pos, 6720) << "inserted and dragged on";
    clickAt(point(300, 3));
    EXPECT_FALSE(part(0, 1)->selected()) << "a press on nothing";
}

TEST_F(ArrangeTest, PartsMoveCopyAndResizeByTheMouse) {
    startWith({trackMIDI, trackMIDI, trackAudio});
    addPart(0, 960, 1920);
    // Move, and to another track; not to one that does not take it.
    drag(point(1900, 0), point(2860, 1));
    ASSERT_TRUE(pumpUntil([&] { return parts(1) == 1; }));
    EXPECT_EQ(part(1, 0)->pos, 1920);
    drag(point(2800, 1), point(2800, 2));
    EXPECT_EQ(parts(1), 1);
    // As far as the song goes.
    drag(point(2800, 1), point(200, 1));
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 0; }));
    // Its ends.
    drag(asPoint(xOf(1920) - 3, yOf(1)), asPoint(xOf(3840) - 3, yOf(1)));
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->length == 3840; }));
    drag(asPoint(3, yOf(1)), asPoint(xOf(960) + 3, yOf(1)));
    ASSERT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 960; }));
    EXPECT_EQ(part(1, 0)->length, 2880);
    // A copy, which is selected.
    drag(point(2000, 1), point(2000 + 3840, 0), "ctrl");
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1; }));
    EXPECT_EQ(part(0, 0)->pos, 4800);
    EXPECT_TRUE(part(0, 0)->selected());
    EXPECT_FALSE(part(1, 0)->selected());
    // Escape leaves all as it is.
    drag(point(2000, 1), point(9000, 1), "", true);
    EXPECT_EQ(part(1, 0)->pos, 960);
    EXPECT_EQ(parts(1), 1);
    for (int i = 0; i < 5; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] {
        return parts(1) == 0 && parts(0) == 1 && part(0, 0)->pos == 960 &&
               part(0, 0)->length == 1920;
    }));
}

/// The band, Shift and Control, the right button, and the keys.
TEST_F(ArrangeTest, PartsAreChosenSplitAndWalked) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 0, 1920);
    addPart(0, 3840, 1920);
    addPart(1, 1920, 1920);
    const auto chosen = [&] {
        return std::string() + (part(0, 0)->selected() ? "a" : "") +
               (part(0, 1)->selected() ? "b" : "") + (part(1, 0)->selected() ? "c" : "");
    };
    drag(asPoint(xOf(2400), 2), asPoint(xOf(4000), yOf(1)));
    EXPECT_EQ(chosen(), "bc");
    clickAt(point(600, 0));
    EXPECT_EQ(chosen(), "a");
    drag(asPoint(xOf(2400), 2), asPoint(xOf(4000), 30), "shift");
    EXPECT_EQ(chosen(), "ab");
    clickAt(point(600, 0));
    EXPECT_EQ(chosen(), "a") << "one of several";
    // Walked and moved by keys.
    focus(grid());
    for (const auto& [press, after] :
         {std::pair{"Right", "b"}, {"Down", "c"}, {"Up", "a"}, {"shift+Right", "ab"}}) {
        key(press);
        EXPECT_TRUE(pumpUntil([&] { return chosen() == after; })) << press << " " << chosen();
    }
    clickAt(point(2000, 1));
    key("ctrl+Right");
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 2160; }));
    key("alt+Left");
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->length == 1680; }));
    key("ctrl+Up");
    EXPECT_TRUE(pumpUntil([&] { return parts(0) == 3 && parts(1) == 0; }));
    // Split by Alt and the right button.
    mouseTo(point(4800, 0));
    act({"keydown", "alt"});
    act({"click", "3"});
    act({"keyup", "alt"});
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 4; }));
    EXPECT_EQ(part(0, 2)->length, 960);
    EXPECT_EQ(part(0, 3)->pos, 4800);
}

/// The wheel, the middle button, the bar below and the actions bring every place of the song into
/// view, and the place under the pointer stays.
TEST_F(ArrangeTest, ScrollsAndZooms) {
    startWith({trackMIDI});
    addPart(0, 40 * barTicks, barTicks);
    const auto tickAt = [&](int x) { return song()->tickAt(TrackHead::headWidth + 1 + x); };
    mouseTo(asPoint(300, 20));
    const int before = tickAt(300);
    act({"keydown", "ctrl"});
    act({"click", "5"});
    act({"keyup", "ctrl"});
    ASSERT_TRUE(pumpUntil([&] { return song()->zoomNow() == 80.0; }));
    EXPECT_NEAR(tickAt(300), before, 12);
    key("minus");
    EXPECT_TRUE(pumpUntil([&] { return song()->zoomNow() == 64.0; }));
    drag(asPoint(400, 20), asPoint(200, 20), "", false, "2");
    EXPECT_NEAR(tickAt(200), 6000 - 0, 900);
    part(0, 0)->setSelected(true);
    key("ctrl+shift+plus");
    EXPECT_TRUE(pumpUntil([&] { return tickAt(0) < 40 * barTicks && tickAt(0) > 38 * barTicks; }));
    EXPECT_GT(tickAt(grid()->width), 41 * barTicks);
    // A press of the middle button that goes nowhere takes the position there.
    clickAt(asPoint(grid()->width / 2, 20), "2");
    EXPECT_TRUE(pumpUntil([&] { return host->pos > 40 * barTicks && host->pos < 41 * barTicks; }));
}

/// The wheel zooms at the pointer wherever in the view that is, and across with Shift.
TEST_F(ArrangeTest, TheWheelZoomsEverywhere) {
    startWith({trackMIDI, trackMIDI, trackMIDI});
    addPart(0, 0, 64 * barTicks);
    auto* strip = find<Overview>("overview");
    const auto tickAt = [&](int x) { return song()->tickAt(TrackHead::headWidth + 1 + x); };
    const auto turn = [&](CCtrl* over, int x, int y, const char* held, const char* button) {
        mouseTo(over, x, y);
        for (const char* k : {"ctrl", held}) act({"keydown", k});
        act({"click", button});
        for (const char* k : {held, "ctrl"}) act({"keyup", k});
    };
    const int inStrip = int(30 * barTicks / strip->total() * strip->width);
    struct Case {
        CCtrl* over;
        int x, stays; ///< what is pointed at, and the place in the grid that keeps its time
    };
    for (const Case& c : {Case{find<RulerBars>("bars"), 200, 200},
                          Case{find<HeadList>("heads"), 30, 0}, Case{strip, inStrip, -1}}) {
        song()->zoom(64);
        if (c.stays < 0) // the strip is of the whole song: the view is to hold that time
            drag(asPoint(grid()->width - 20, 100), asPoint(20, 100), "", false, "2");
        const int stays = c.stays < 0 ? grid()->width - 1 : c.stays, before = tickAt(stays);
        turn(c.over, c.x, 12, "ctrl", "5");
        ASSERT_TRUE(pumpUntil([&] { return song()->zoomNow() == 80.0; })) << c.over->id.asChar();
        EXPECT_NEAR(tickAt(stays), before, 30) << c.over->id.asChar();
    }
    // The row under the pointer stays there; the rows come back to what they were.
    const auto heights = [&] {
        std::string all;
        for (int i = 0; i < tracks(); i++)
            all += std::to_string(row(i)->track->getRowHeight()) + " ";
        return all;
    };
    turn(grid(), 300, yOf(2), "shift", "5");
    EXPECT_TRUE(pumpUntil([&] { return heights() == "55 55 55 "; })) << heights();
    turn(find<HeadList>("heads"), 40, 80, "shift", "4");
    EXPECT_TRUE(pumpUntil([&] { return heights() == "44 44 44 "; })) << heights();
    for (const auto& [press, after] :
         {std::pair{"alt+plus", "55 55 55 "}, {"alt+minus", "44 44 44 "}}) {
        key(press);
        EXPECT_TRUE(pumpUntil([&] { return heights() == after; })) << press;
    }
}

/// Each zoom to what is selected can be taken back.
TEST_F(ArrangeTest, ZoomsAreGoneBackFrom) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 8 * barTicks, 4 * barTicks);
    addPart(1, 9 * barTicks, barTicks);
    const auto fits = [&](CPart* p) {
        return pumpUntil([&] {
            const int from = song()->tickAt(TrackHead::headWidth + 1);
            const int to = song()->tickAt(TrackHead::headWidth + 1 + grid()->width);
            return from <= p->pos && to >= p->pos + p->length && to - from < p->length * 1.2;
        });
    };
    EXPECT_FALSE(win->getAction("zoomback")->isReady());
    for (const int track : {0, 1}) {
        seq()->unselectParts();
        part(track, 0)->setSelected(true);
        key("ctrl+shift+plus");
        EXPECT_TRUE(fits(part(track, 0))) << track;
    }
    key("ctrl+shift+minus");
    EXPECT_TRUE(fits(part(0, 0)));
    key("ctrl+shift+minus");
    EXPECT_TRUE(pumpUntil([&] { return song()->zoomNow() == 64.0; }));
    EXPECT_FALSE(win->getAction("zoomback")->isReady());
}

/// The position pages or glides, and neither against a user who looks elsewhere.
TEST_F(ArrangeTest, TheViewFollowsWhatPlays) {
    startWith({trackMIDI});
    addPart(0, 0, 64 * barTicks);
    const auto atX = [&] { return int(host->pos * song()->zoomNow() / 960) - scrolled(); };
    const int middle = grid()->width / 2;
    const auto playFrom = [&](int bar) {
        host->setPos(double(bar * barTicks));
        host->start();
    };
    playFrom(20);
    EXPECT_TRUE(pumpUntil([&] { return std::abs(atX() - 16) <= 1; })) << atX();
    drag(asPoint(600, 100), asPoint(100, 100), "", false, "2");
    host->setPos(40.0 * barTicks);
    EXPECT_TRUE(loaded());
    EXPECT_GT(atX(), grid()->width) << "the user looks elsewhere";
    host->stop();
    host->renderMode = 1;
    playFrom(60);
    EXPECT_TRUE(loaded() && host->playing);
    EXPECT_GT(atX(), grid()->width) << "of a render there is nothing to follow";
    host->stop();
    host->renderMode = 0;
    EXPECT_TRUE(loaded());
    key("shift+j");
    for (const int bar : {40, 41, 20}) {
        playFrom(bar);
        EXPECT_TRUE(pumpUntil([&] { return std::abs(atX() - middle) <= 1; }))
            << bar << " " << atX();
    }
    EXPECT_EQ(setting("options", "glide"), "1");
    key("j");
    playFrom(50);
    EXPECT_TRUE(loaded());
    EXPECT_GT(atX(), grid()->width) << "does not follow";
}

/// The tool for ranges chooses time across tracks, which is moved, copied, stretched and deleted
/// whatever the parts.
TEST_F(ArrangeTest, RangesAreCutByTime) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 0, 3840);
    addPart(1, 960, 1920);
    win->onAction(win->getAction("rangetool"));
    const auto told = [&] {
        std::string text;
        for (int t = 0; t < 2; t++)
            for (int i = 0; i < parts(t); i++)
                text += std::to_string(t) + ":" + std::to_string(part(t, i)->pos / 240) + "+" +
                        std::to_string(part(t, i)->length / 240) + " ";
        return text;
    };
    const auto becomes = [&](const std::string& text) {
        return pumpUntil([&] { return told() == text; });
    };
    drag(point(960, 0), point(1920, 1));
    EXPECT_EQ(told(), "0:0+16 1:4+8 ") << "choosing changes nothing";
    drag(point(1400, 0), point(1400 + 3840, 0));
    EXPECT_TRUE(becomes("0:0+4 0:8+8 0:20+4 1:8+4 1:20+4 ")) << told();
    drag(asPoint(xOf(5760) - 2, yOf(0)), asPoint(xOf(6720) - 2, yOf(0)), "alt");
    EXPECT_TRUE(becomes("0:0+4 0:8+8 0:20+8 1:8+4 1:20+8 ")) << told();
    key("Delete");
    EXPECT_TRUE(becomes("0:0+4 0:8+8 1:8+4 ")) << told();
    for (int i = 0; i < 3; i++) key("ctrl+z");
    EXPECT_TRUE(becomes("0:0+16 1:4+8 ")) << told();
    // A part under the tool is neither chosen nor moved.
    drag(point(200, 0), point(700, 0));
    EXPECT_EQ(told(), "0:0+16 1:4+8 ");
    key("ctrl+d");
    EXPECT_TRUE(becomes("0:0+16 0:3+2 1:4+8 ")) << told();
    key("ctrl+p");
    EXPECT_TRUE(pumpUntil([&] { return host->loop != 0; }));
    EXPECT_EQ(seq()->getProg()->leftLocator, 720) << "the copy is the range now";
}

/// Handles of an audio part, which are there once it is selected.
TEST_F(ArrangeTest, HandlesSetFadesGainAndCopies) {
    startWith({trackAudio});
    host->projectFile = at("song.qv").c_str();
    drop(tone("a.wav"), grid(), xOf(1920), yOf(0));
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 1 && part(0, 0)->pos == 1920; }));
    const auto clip = [&] { return static_cast<const CAudioEvent*>(part(0, 0)->getEvents()); };
    const int left = xOf(1920), right = xOf(3840), top = 1;
    EXPECT_EQ(seq()->getTicks(part(0, 0)), 1920);
    seq()->unselectParts();
    drag(asPoint(left + 4, top + 4), asPoint(left + 4, top + 30), "", true);
    EXPECT_EQ(clip()->fadeInMs, 0.0f) << "not selected yet: the edge";
    clickAt(point(2880, 0));
    drag(asPoint(left + 4, top + 4), asPoint(left + 36, top + 4));
    EXPECT_TRUE(pumpUntil([&] { return clip()->fadeInMs > 0; }));
    EXPECT_NEAR(clip()->fadeInMs, 250, 4); // a quarter of a second that is 128 pixels wide
    drag(asPoint(right - 4, top + 4), asPoint(right - 4 - 64, top + 4));
    EXPECT_TRUE(pumpUntil([&] { return clip()->fadeOutMs > 0; }));
    EXPECT_NEAR(clip()->fadeOutMs, 500, 4);
    drag(asPoint((left + right) / 2, top + 4), asPoint((left + right) / 2, top + 24));
    EXPECT_TRUE(pumpUntil([&] { return clip()->gain < 1; }));
    EXPECT_NEAR(clip()->gain, 0.64, 0.001); // from the middle of the way a tenth down: (2 * 0.4)^2
    EXPECT_EQ(part(0, 0)->pos, 1920);
    drag(asPoint(right - 2, top + 15), asPoint(right - 2 + 250, top + 15));
    ASSERT_TRUE(pumpUntil([&] { return parts(0) == 3; }));
    EXPECT_TRUE(part(0, 2)->ghostOf.load());
    EXPECT_EQ(part(0, 2)->pos, 5760);
    for (int i = 0; i < 4; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil(
        [&] { return parts(0) == 1 && clip()->fadeInMs == 0 && clip()->fadeOutMs == 0; }));
    EXPECT_EQ(clip()->gain, 1.0f);
}

/// A drag comes to the ends of other parts too, unless Control is pressed once it has begun.
TEST_F(ArrangeTest, DragsComeToTheEndsOfOthers) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 0, 1990); // off the grid
    addPart(1, 3840, 960);
    drag(asPoint(290, yOf(1)), asPoint(290 - 124, yOf(1))); // to 1980
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 1990; })) << part(1, 0)->pos;
    mouseTo(asPoint(166, yOf(1)));
    act({"mousedown", "1"});
    mouseTo(asPoint(200, yOf(1)));
    act({"keydown", "ctrl"});
    mouseTo(asPoint(166 + 41, yOf(1)));
    act({"mouseup", "1"});
    act({"keyup", "ctrl"});
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 1990 + 615; })) << part(1, 0)->pos;
}

/// The grid that follows the zoom is the finest whose steps are 12 pixels apart, and drags and keys
/// go by it; relative ones by its steps from where the part stood.
TEST_F(ArrangeTest, TheGridFollowsTheZoom) {
    startWith({trackMIDI});
    addPart(0, 970, 960);
    const auto moved = [&](int to) {
        EXPECT_TRUE(pumpUntil([&] { return part(0, 0)->pos == to; }))
            << part(0, 0)->pos << " " << to;
    };
    CSnap& snap = *seq()->snap;
    struct Grid {
        double zoom;
        bool triplet;
        int step; ///< ticks
    };
    for (const Grid& s : {Grid{64, false, 240},
                          {47, false, 480},
                          {512, false, 30},
                          {4, false, 3840},
                          {2, false, 7680},
                          {64, true, 320}}) {
        TimeAxis axis;
        axis.setZoom(s.zoom);
        snap.triplet = s.triplet;
        win->options().adaptiveGrid.set(1);
        EXPECT_EQ(gridStep(snap, axis, win->options()), s.step) << s.zoom;
        win->options().adaptiveGrid.set(0);
        EXPECT_EQ(gridStep(snap, axis, win->options()), s.triplet ? 160 : 240);
    }
    snap.triplet = false;
    for (const char* on : {"snapadaptive", "snaprelative"}) win->onAction(win->getAction(on));
    song()->zoom(16); // a quarter has 16 pixels
    const int y = yOf(0);
    drag(asPoint(xOf(1400), y), asPoint(xOf(1400) + 14, y));
    moved(970 + 960);
    key("ctrl+Right");
    moved(970 + 2 * 960);
    win->onAction(win->getAction("snaprelative"));
    drag(asPoint(xOf(3200), y), asPoint(xOf(3200) + 14, y));
    moved(3 * 960 + 960);
    EXPECT_EQ(setting("options", "adaptive-grid"), "1");
}

/// With a ripple what is later goes along, and only on the tracks that it is for.
TEST_F(ArrangeTest, RippleTakesLaterPartsAlong) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 0, 960);
    addPart(0, 1920, 960);
    addPart(1, 1920, 960);
    win->onAction(win->getAction("rippletrack"));
    drag(point(480, 0), point(480 + 960, 0));
    EXPECT_TRUE(pumpUntil([&] { return part(0, 1)->pos == 2880; }));
    EXPECT_EQ(part(1, 0)->pos, 1920);
    win->onAction(win->getAction("rippleall"));
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return parts(0) == 1 && part(0, 0)->pos == 1920; }));
    EXPECT_EQ(part(1, 0)->pos, 960);
    win->onAction(win->getAction("rippleall"));
    drag(point(1200, 1), point(1200 + 3840, 1));
    EXPECT_TRUE(pumpUntil([&] { return part(1, 0)->pos == 4800; }));
    EXPECT_EQ(part(0, 0)->pos, 1920) << "off again";
}

/// Parts in view are told by name and place, and can be chosen so.
TEST_F(ArrangeTest, PartsAreTold) {
    startWith({trackMIDI, trackMIDI});
    addPart(0, 0, 960);
    addPart(1, 2 * barTicks, 2 * barTicks);
    addPart(1, 400 * barTicks, barTicks);
    row(1)->track->id = part(1, 0)->content()->id = "Bass";
    settle();
    ASSERT_EQ(grid()->accessParts(), 2) << "one is out of sight";
    Description told;
    grid()->describe(told, 1);
    EXPECT_EQ(told.role, Role::item);
    EXPECT_EQ(told.name, "Bass, Bass, bar 3, 2 bars");
    EXPECT_FALSE(told.has(stateSelected));
    EXPECT_EQ(told.bounds.left, xOf(2 * barTicks));
    EXPECT_TRUE(grid()->pressPart(1));
    grid()->describe(told, 1);
    EXPECT_TRUE(told.has(stateSelected) && part(1, 0)->selected());
    EXPECT_EQ(grid()->focusedPart(), 1);
    EXPECT_EQ(selectedRow(), 1);
}

/// A song without tracks says how to begin, and does it.
TEST_F(ArrangeTest, AnEmptySongOffersToBegin) {
    startWith({});
    auto* empty = find<CGroup>("empty");
    ASSERT_TRUE(empty && empty->visible);
    CCtrl* add = find<CCtrl>("addaudio", empty);
    ASSERT_TRUE(add);
    mouseTo(add, 10, 10);
    act({"click", "1"});
    ASSERT_TRUE(pumpUntil([&] { return tracks() == 1; }));
    EXPECT_EQ(row(0)->track->kind, trackAudio);
    EXPECT_TRUE(pumpUntil([&] { return !find<CGroup>("empty")->visible && grid()->visible; }));
}

/// The menu of a part has what can be done to its content.
TEST_F(ArrangeTest, TheMenuOfAPartProcessesIt) {
    startWith({trackMIDI});
    CPart* made = addPart(0, 0, 3840);
    for (const int tick : {480, 960}) {
        CMIDIEvent* note = createMIDIEvent();
        note->data = 0x644090;
        note->length = 240;
        GraphHold hold(host.get());
        made->addEvent(tick, note);
    }
    inMenu({"h", "Return"});
    clickAt(point(600, 0), "3");
    EXPECT_TRUE(pumpUntil([&] {
        const auto* first = static_cast<const CMIDIEvent*>(part(0, 0)->getEvents());
        return first->delta == 960 && first->length == 480 && first->next->delta == 960;
    }));
    EXPECT_EQ(host->undoText(), "Half tempo");
}
