#include "ControlFixture.h"

#include "gui/XConnection.h"
#include "gui/controls/CDocker.h"
#include "gui/controls/CEdit.h"

namespace {

constexpr int dockable = winCaption | winSizable | winMaxButton | winDockable;

/// A window of 400 x 300 at (100, 100) with a docker from (0, 40) on, and two windows beside it.
class DockerTest : public LoopTest {
protected:
    void SetUp() override {
        LoopTest::SetUp();
        if (!usable()) return;
        win = bareWindow(400, 300);
        clock = new ProbeCtrl(win.get(), "clock", 0, 0, 1, 1);
        win->addControl(clock);
        clock->onTick = [this] { nextStep(); };
        docker = std::make_unique<CDocker>(app.get(), win.get(), "docker", 0, 40, 400, 260);
        docker->onChange = counter.change();
        a = window("a", 120);
        b = window("b", 300);
    }
    void TearDown() override {
        docker.reset();
        a.reset();
        b.reset();
        LoopTest::TearDown();
    }
    std::unique_ptr<CWin> window(const char* name, int y) {
        auto w = std::make_unique<CWin>(app.get(), win.get(), name, 560, y, 160, 120, dockable);
        w->show(true);
        settle();
        return w;
    }
    /// Page in front / tabs, then each window: its page, m maximized, ! in front, x closed.
    std::string state() {
        std::string text =
            std::to_string(docker->activeIndex) + "/" + std::to_string(docker->tabCount());
        for (CWin* w : {a.get(), b.get()}) {
            if (!w) continue;
            const CDock* dock = docker->dockOf(w);
            text += std::string(" ") + w->id.asChar();
            text += dock ? std::to_string(docker->docks.indexed(dock)) : "-";
            if (w->hasStyle(winMaximized)) text += "m";
            if (docker->current == w) text += "!";
            if (!w->visible) text += "x";
            EXPECT_EQ(w->isViewable(), w->visible && (!dock || docker->getDock(-1) == dock))
                << text;
        }
        return text;
    }
    /// A point of a window on the screen, then more words of xdotool.
    void on(CWin* w, int x, int y, const std::string& then) {
        const CPoint at = w->getPos(true);
        xdo("mousemove " + std::to_string(at.x + x) + " " + std::to_string(at.y + y) + " " + then);
    }
    /// Opens the menu of a caption, and presses keys in it.
    void menu(CWin* w, const char* keys) {
        for (const std::string& key : split(keys))
            whenever([this] { return !app->menus.empty(); }, [key] { xdotool("key " + key); });
        on(w, 60, 12, "click 3");
        settle();
    }

    std::unique_ptr<CDocker> docker;
    std::unique_ptr<CWin> a, b;
    int changes = 0;
    Target counter{[this] { changes++; }};
};

} // namespace

TEST_F(DockerTest, WindowsBecomePagesAndComeBack) {
    struct Step {
        const char* name;
        std::function<void()> act;
        const char* expected;
        CPoint at = asPoint(-1, -1); ///< of a, where it is told
    };
    const Step table[] = {
        {"at first", [] {}, "0/0 a- b-"},
        {"dock", [&] { menu(a.get(), "Down Down Right Return"); }, "1/2 a1! b-", asPoint(240, 120)},
        {"drag",
         [&] {
             on(a.get(), 60, 12, "mousedown 1");
             xdo("mousemove_relative -- -90 -50");
             xdo("mouseup 1");
         },
         "1/2 a1! b-", asPoint(150, 70)},
        {"join", [&] { menu(b.get(), "Down Down Right Down Return"); }, "1/2 a1 b1!"},
        {"press", [&] { on(a.get(), 20, 60, "click 1"); }, "1/2 a1! b1"},
        {"Ctrl+F6", [&] { xdo("key ctrl+F6"); }, "1/2 a1 b1!"},
        {"undock", [&] { menu(b.get(), "Down Down Right Return"); }, "1/2 a1! b-"},
        {"enlarge", [&] { on(a.get(), 60, 12, "click --repeat 2 1"); }, "1/2 a1m! b-"},
        {"first", [&] { docker->setActive(0); }, "0/2 a1m b-"},
        {"next", [&] { docker->nextDock(1); }, "1/2 a1m! b-"},
        {"restore",
         [&] {
             win->setFocus(true);
             settle();
             xdo("key F11");
         },
         "1/2 a1! b-", asPoint(150, 70)},
        {"close", [&] { on(a.get(), 148, 12, "click 1"); }, "0/0 a1x b-"},
        {"no page", [&] { docker->setActive(1); }, "0/0 a1x b-"},
        {"open", [&] { a->show(true); }, "1/2 a1! b-"},
        {"second", [&] { menu(b.get(), "Down Down Right Return"); }, "2/3 a1 b2!"},
        {"hide", [&] { a->hide(); }, "2/2 a1x b2!"},
        {"pass by", [&] { docker->setActive(0), docker->nextDock(1); }, "2/2 a1x b2!"},
        {"show", [&] { a->show(true); }, "1/3 a1! b2"},
        {"delete", [&] { b.reset(); }, "1/2 a1!"},
    };
    for (const Step& step : table) {
        const int before = changes;
        const std::string was = state();
        step.act();
        settle();
        EXPECT_EQ(state(), step.expected) << step.name;
        if (was != step.expected) {
            EXPECT_GT(changes, before) << step.name;
        }
        if (step.at.x >= 0) {
            EXPECT_EQ(a->getPos(false), step.at) << step.name;
        }
        if (step.name == std::string("enlarge")) {
            EXPECT_EQ(a->getSize(), asPoint(400, 260));
            EXPECT_EQ(a->clientGroup->height, 260) << "a maximized page has no caption";
        }
    }
}

/// Keys go to the page in front, and what is focused there is alone in that.
TEST_F(DockerTest, KeysReachThePageInFront) {
    auto* outside = new CEdit(win.get(), "outside", 10, 10, 100, 20);
    auto* inside = new CEdit(a.get(), "inside", 10, 10, 100, 20);
    win->addControl(outside);
    a->addControl(inside);
    docker->dockWin(a.get(), -1);
    win->setFocus(true);
    settle();
    on(a.get(), 40, 45, "click 1 type x");
    EXPECT_EQ(win->keyTarget(), inside);
    EXPECT_STREQ(inside->text.asChar(), "x");
    on(win.get(), 40, 20, "click 1 type y");
    EXPECT_EQ(a->keyCtrl, nullptr);
    EXPECT_STREQ(outside->text.asChar(), "y");
    on(a.get(), 40, 45, "click 1");
    docker->setActive(0);
    EXPECT_EQ(win->keyTarget(), nullptr) << "a page behind keeps no keys";
}

/// Tabs stand side by side, as wide as their names, and are hit where they are drawn.
TEST_F(DockerTest, TabsAreHitWhereTheyAre) {
    EXPECT_EQ(docker->dockAtPos(5), nullptr);
    docker->tabAlwaysShow = true;
    EXPECT_EQ(docker->dockAtPos(5), docker->getDock(0));
    docker->getDock(0)->name = "first";
    docker->dockWin(a.get(), -1);
    docker->dockWin(b.get(), -1);
    docker->getDock(1)->name = "twelve chars"; // 12 x 6 + 24 = 96 pixels
    docker->getDock(2)->name = CStr(std::string(99, 'w').c_str());
    const int edges[] = {0, 64, 64 + 96, 64 + 96 + CDocker::mostTabWidth};
    for (int i = 0; i < 3; i++) {
        CDock* dock = docker->getDock(i);
        EXPECT_EQ(docker->tabRect(dock, 18), asRect(edges[i], 0, edges[i + 1], 18)) << i;
        EXPECT_EQ(docker->dockAtPos(edges[i]), dock);
        EXPECT_EQ(docker->dockAtPos(edges[i + 1] - 1), dock);
    }
    EXPECT_EQ(docker->dockAtPos(edges[3]), nullptr);
    EXPECT_EQ(docker->dockAtPos(-1), nullptr);
    a->hide();
    EXPECT_EQ(docker->dockAtPos(64), docker->getDock(2)) << "a page without windows has no tab";
}
