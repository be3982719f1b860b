#include "TestServer.h"

#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/FrameClock.h"
#include "gui/PendingPaint.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"
#include "gui/controls/CListbox.h"

#include <X11/Xlib.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int red = 0xff0000;

/// A plain whose pixels tell where in its content they lie.
class PlainView : public CCtrl {
public:
    CPoint scroll;
    int blocks = 0; ///< painted so far, each of 10 x 10 pixels

    using CCtrl::CCtrl;
    void paint(CGraphic* g, CRect) override {
        constexpr int step = 10;
        const int overX = scroll.x % step, overY = scroll.y % step;
        for (int y = -overY; y < height; y += step)
            for (int x = -overX; x < width; x += step) {
                const CRect block = asRect(x, y, x + step, y + step);
                if (!g->wants(block)) continue;
                blocks++;
                g->fillRect(colourAt(x + scroll.x, y + scroll.y), block);
            }
    }
    static int colourAt(int x, int y) { return (x / 10 & 255) << 16 | (y / 10 & 255) << 8 | 0x55; }
    void scrollTo(int x, int y) {
        const CPoint by = asPoint(scroll.x - x, scroll.y - y);
        scroll = asPoint(x, y);
        scrollArea(clientRect(), by.x, by.y);
    }
};

class CanvasTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (usable()) build();
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    void build() {
        win = bareWindow(300, 200);
        view = new PlainView(win.get(), "view", 20, 30, 200, 120);
        view->scroll = asPoint(1000, 1000);
        win->addControl(view);
        win->redraw();
        settle();
    }
    /// The first pixel, in logical ones, that does not show the content, or (-1, -1).
    CPoint wrongPixel() {
        const Shot shot(win->handle, toDevice(300), toDevice(200));
        for (int y = 0; y < view->height; y++)
            for (int x = 0; x < view->width; x++) {
                const CPoint at = addPos(view->scroll, asPoint(x, y));
                const int seen = shot.at(toDevice(20 + x), toDevice(30 + y));
                if (seen != PlainView::colourAt(at.x, at.y)) return asPoint(x, y);
            }
        return asPoint(-1, -1);
    }

    std::unique_ptr<CWin> win;
    PlainView* view = nullptr;
};

/// A window by its content: each pixel shows the number that was put there, 0 what has to be
/// painted. Copies are done a while after they were sent.
class PaintModel {
public:
    static constexpr int side = 40;
    using Picture = std::vector<int>;
    Picture wanted = Picture(side * side, 1), shown = wanted;
    PendingPaint pending;
    std::vector<PendingPaint::Move> sent;

    static void fill(Picture& p, const CRect& r, int value) {
        for (int y = r.top; y < r.bottom; y++)
            for (int x = r.left; x < r.right; x++) p[size_t(y * side + x)] = value;
    }
    /// Moves a part; what is laid bare becomes `bare`.
    static void shift(Picture& p, const PendingPaint::Move& m, int bare) {
        const Picture before = p;
        for (int y = m.area.top; y < m.area.bottom; y++)
            for (int x = m.area.left; x < m.area.right; x++) {
                const bool from = m.area.contains(x - m.dx, y - m.dy);
                p[size_t(y * side + x)] =
                    from ? before[size_t((y - m.dy) * side + x - m.dx)] : bare;
            }
    }
    void copyOldest() {
        shift(shown, sent.front(), 0);
        sent.erase(sent.begin());
        pending.copied();
    }
    void send() {
        const auto now = pending.takeMoves();
        sent.insert(sent.end(), now.begin(), now.end());
    }
    /// The paints come after all copies, as the server keeps their order.
    void frame() {
        send();
        while (!sent.empty()) copyOldest();
        const DirtyAreas areas = pending.takeAreas();
        for (const CRect& r : areas.all())
            for (int y = std::max(r.top, 0); y < std::min(r.bottom, side); y++)
                for (int x = std::max(r.left, 0); x < std::min(r.right, side); x++)
                    shown[size_t(y * side + x)] = wanted[size_t(y * side + x)];
    }
};

} // namespace

/// Whatever changes, is moved and is laid bare by the server before it has carried out the copies:
/// a frame shows what is wanted.
TEST(PendingPaint, FramesShowWhatIsWanted) {
    std::mt19937 random{7};
    const auto upTo = [&](int n) { return int(random() % unsigned(n + 1)); };
    const auto anyRect = [&] {
        const int x = upTo(PaintModel::side - 2), y = upTo(PaintModel::side - 2);
        return asRect(x, y, x + 1 + upTo(PaintModel::side - x - 1),
                      y + 1 + upTo(PaintModel::side - y - 1));
    };
    for (int round = 0; round < 2000; round++) {
        PaintModel model;
        const CRect area = anyRect(), other = anyRect();
        for (int step = 0; step < 8; step++) {
            const CRect r = anyRect();
            switch (upTo(4)) {
            case 0:
                PaintModel::fill(model.wanted, r, upTo(1000));
                model.pending.add(r);
                break;
            case 1:
            case 2: {
                const PendingPaint::Move m{upTo(3) ? area : other, upTo(16) - 8, upTo(16) - 8};
                PaintModel::shift(model.wanted, m, upTo(1000));
                model.pending.move(m.area, m.dx, m.dy);
                break;
            }
            case 3: // another window lay there, as far as the server has come
                if (!model.sent.empty() && upTo(1)) model.copyOldest();
                PaintModel::fill(model.shown, r, 0);
                model.pending.exposed(r);
                break;
            default:
                if (upTo(2) == 0) model.frame();
                break;
            }
        }
        model.frame();
        ASSERT_EQ(model.shown, model.wanted) << "round " << round;
    }
}

/// A view that scrolls shows its content in the right place, beside other changes of the same frame
/// and at every scale, and paints the strips that come in and no more.
TEST_F(CanvasTest, ScrollsByCopying) {
    for (const int percent : {100, 150, 200}) {
        win.reset();
        reopen(percent);
        build();
        for (const CPoint by : {asPoint(20, 0), asPoint(0, -20), asPoint(-40, 20)}) {
            view->blocks = 0;
            view->scrollTo(view->scroll.x + by.x, view->scroll.y + by.y);
            settle();
            EXPECT_EQ(wrongPixel(), asPoint(-1, -1)) << percent << ", " << by.x << " " << by.y;
            EXPECT_LE(view->blocks, 150) << "of 240";
        }
        view->scrollTo(view->scroll.x + 10, view->scroll.y);
        view->redraw(asRect(30, 30, 60, 60));
        view->scrollTo(view->scroll.x + 16, view->scroll.y + 8);
        view->scrollTo(view->scroll.x - 500, view->scroll.y);
        view->scrollTo(view->scroll.x + 6, view->scroll.y);
        settle();
        EXPECT_EQ(wrongPixel(), asPoint(-1, -1));
    }
}

/// What another window covers cannot be copied, and what it lays bare lies where the content was.
TEST_F(CanvasTest, ScrollsBelowOtherWindows) {
    CWin cover(app.get(), nullptr, "cover", 160, 150, 60, 60, winPopup);
    cover.show(false);
    settle();
    for (int turn = 0; turn < 4; turn++) {
        view->scrollTo(view->scroll.x + 10, view->scroll.y + 10);
        app->paintFrame();
        if (turn == 2) cover.hide();
        view->scrollTo(view->scroll.x + 10, view->scroll.y);
        app->paintFrame();
    }
    settle();
    EXPECT_EQ(wrongPixel(), asPoint(-1, -1));
}

/// A control that lies on the view is not carried along.
TEST_F(CanvasTest, WhatLiesOnTopStays) {
    auto* top = new ProbeCtrl(win.get(), "top", 60, 60, 30, 30);
    top->fill = red;
    win->addControl(top);
    win->redraw();
    settle();
    view->scrollTo(view->scroll.x + 20, view->scroll.y + 10);
    settle();
    const Shot shot(win->handle, 300, 200);
    EXPECT_EQ(shot.boundsOf(red), asRect(60, 60, 90, 90));
    EXPECT_EQ(shot.count(red), 900);
}

/// The children of a panel go along, and are found and painted where they have gone.
TEST_F(CanvasTest, APanelScrollsItsChildren) {
    auto* panel = new CScrollPanel(win.get(), "panel", 10, 10, 150, 100);
    std::vector<ProbeCtrl*> rows;
    for (int i = 0; i < 20; i++) {
        rows.push_back(new ProbeCtrl(win.get(), "row", 5, i * 20, 100, 18));
        rows.back()->fill = 0x100000 + i;
        panel->inner->addControl(rows.back());
    }
    win->clear();
    win->addControl(panel);
    win->resized();
    win->redraw();
    settle();
    const int paints = rows[3]->paints;
    panel->mouseWheel(20, 20, 0, -32, 0);
    settle();
    EXPECT_EQ(rows[3]->paints, paints) << "it was only moved";
    rows[3]->fill = red;
    rows[3]->redraw();
    settle();
    const Shot shot(win->handle, 300, 200);
    for (const int i : {2, 4, 5})
        EXPECT_EQ(shot.boundsOf(0x100000 + i), asRect(15, i * 20 - 22, 115, i * 20 - 4)) << i;
    EXPECT_EQ(shot.boundsOf(red), asRect(15, 38, 115, 56));
    EXPECT_EQ(shot.boundsOf(0x100001), asRect(15, 10, 115, 16)) << "cut by the panel";
}

/// Lines, polygons and bitmaps stay inside all groups around their control, whoever asks for paint.
TEST_F(CanvasTest, EveryShapeStaysInsideAllGroups) {
    struct Sprawl : CCtrl {
        using CCtrl::CCtrl;
        void paint(CGraphic* g, CRect) override {
            const CPoint corners[] = {asPoint(-90, 5), asPoint(90, -90), asPoint(90, 90)};
            g->setLineCol(red);
            g->setFillCol(red);
            g->drawLine(-50, -50, 80, 90);
            g->drawLine(-50, 5, 200, 5);
            g->drawPoly(corners, 3);
            g->render(&picture, -50, -50, 0, 0, 300, 300);
            g->drawTiled(&picture, asRect(-50, -50, 90, 90));
        }
        CBitmap picture{300, 300};
    };
    auto* outer = new CGroup(win.get(), "outer", 20, 20, 60, 60);
    auto* inner = new CGroup(win.get(), "inner", 30, 30, 60, 60);
    auto* sprawl = new Sprawl(win.get(), "sprawl", 10, 10, 60, 60);
    sprawl->picture.graphic->fillRect(red, sprawl->picture.getRect());
    inner->addControl(sprawl);
    outer->addControl(inner);
    win->clear();
    win->addControl(outer);
    win->redraw();
    settle();
    EXPECT_EQ(Shot(win->handle, 300, 200).boundsOf(red), asRect(60, 60, 80, 80));
    app->drawNow(win.get(), sprawl);
    EXPECT_EQ(Shot(win->handle, 300, 200).boundsOf(red), asRect(60, 60, 80, 80));
}

/// Sixty frames a second however often one is wanted, none before it is due, and after a pause the
/// next one at once.
TEST(FrameClock, SixtyFramesASecond) {
    using namespace std::chrono_literals;
    const FrameClock::Time start = FrameClock::Time() + 100s;
    for (const auto step : {100us, 1000us, 7000us, 16000us, 25000us}) {
        FrameClock clock;
        int frames = 0;
        for (auto at = start; at < start + 1s; at += step)
            if (clock.due(at)) {
                frames++;
                clock.made(at);
                EXPECT_FALSE(clock.due(at));
            }
        const auto apart = std::max<std::chrono::microseconds>(FrameClock::period, step);
        const int most = int(std::chrono::microseconds(1s) / apart);
        EXPECT_NEAR(frames, most, 2) << step.count();
        EXPECT_TRUE(clock.due(start + 2s));
    }
}

/// What the user does is shown at once behind a frame that moved by itself, and there are sixty a
/// second all the same.
TEST(FrameClock, AnswersBeforeItMoves) {
    using namespace std::chrono_literals;
    const FrameClock::Time start = FrameClock::Time() + 100s;
    for (const auto between : {3000us, 17000us, 26000us, 41000us}) {
        FrameClock clock;
        int frames = 0;
        auto event = start, since = start;
        bool asked = false;
        std::chrono::microseconds longest{0};
        for (auto at = start; at < start + 10s; at += 100us) {
            if (at >= event) {
                clock.ask();
                if (!asked) since = at;
                asked = true;
                event += between;
            }
            if (!clock.due(at)) continue;
            if (asked && between > FrameClock::period)
                longest = std::max(
                    longest, std::chrono::duration_cast<std::chrono::microseconds>(at - since));
            asked = false;
            clock.made(at);
            frames++;
        }
        EXPECT_LE(frames, 602) << between.count();
        EXPECT_LT(longest, FrameClock::period / 2) << between.count();
    }
}

/// Between frames only the last motion counts, and what the user did before a press comes before
/// it.
TEST_F(CanvasTest, MotionsComeOncePerFrame) {
    auto* probe = new ProbeCtrl(win.get(), "probe", 0, 0, 300, 200);
    win->clear();
    win->addControl(probe);
    settle();
    probe->log.clear();
    const auto send = [&](int type, int x, unsigned state) {
        XEvent event{};
        event.type = type;
        event.xbutton.window = win->handle;
        event.xbutton.x = x;
        event.xbutton.y = 5;
        event.xbutton.state = state;
        event.xbutton.button = type == MotionNotify ? 0 : Button1;
        app->handleEvent(event);
    };
    for (int x = 1; x <= 9; x++) send(MotionNotify, x, 0);
    EXPECT_TRUE(probe->log.empty());
    app->paintFrame();
    EXPECT_EQ(probe->log.size(), 1U);
    const size_t before = probe->log.size();
    for (int x = 10; x <= 19; x++) send(MotionNotify, x, 0);
    send(ButtonPress, 20, 0);
    for (int x = 21; x <= 29; x++) send(MotionNotify, x, Button1Mask);
    send(ButtonRelease, 30, Button1Mask);
    ASSERT_EQ(probe->log.size(), before + 4);
    const char* kinds[] = {"move 19", "down 20", "move 29", "up 30"};
    for (size_t i = 0; i < 4; i++)
        EXPECT_EQ(probe->log[before + i].substr(0, std::strlen(kinds[i])), kinds[i]);
    app->paintFrame();
    EXPECT_EQ(probe->log.size(), before + 4);
}

/// Who follows is asked once before each frame, as long as it is seen, and its change is in it.
TEST_F(CanvasTest, FollowersAreInTheFrame) {
    struct Live : ProbeCtrl {
        using ProbeCtrl::ProbeCtrl;
        int asked = 0;
        bool changes = false;
        bool onFrame() override {
            asked++;
            if (changes) redraw();
            return changes;
        }
    };
    auto* live = new Live(win.get(), "live", 0, 0, 50, 50);
    win->addControl(live);
    app->follow(live);
    settle();
    const int asked = live->asked, paints = live->paints;
    app->paintFrame();
    EXPECT_EQ(live->asked, asked + 1);
    EXPECT_EQ(live->paints, paints) << "nothing has changed";
    live->changes = true;
    app->paintFrame();
    EXPECT_EQ(live->paints, paints + 1);
    EXPECT_TRUE(pumpUntil([&] { return live->paints > paints + 3; })) << "frames go on";
    live->visible = false;
    const int then = live->asked;
    app->paintFrame();
    EXPECT_EQ(live->asked, then);
    win->clear();
    app->paintFrame();
}
