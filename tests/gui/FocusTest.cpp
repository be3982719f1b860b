#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CMDI.h"
#include "gui/controls/CPopup.h"

namespace {

/// Takes no key, and offers a context menu if it is asked to.
class Stop : public ProbeCtrl {
public:
    bool offersMenu = false;
    CPoint menuAt;

    Stop(CGroup* around, const CStr& name, int l, int t)
        : ProbeCtrl(around->win, name, l, t, 16, 10) {
        tabStop = true;
        around->addControl(this);
    }
    bool keyDown(int, int) override { return false; }
    bool keyUp(int key, int) override {
        log.push_back("released " + std::to_string(key));
        return true;
    }
    bool contextMenu() override {
        menuAt = win->app->menuPoint();
        return offersMenu;
    }
};

class FocusTest : public ControlTest {
protected:
    struct Step {
        const char* key;
        const char* id; ///< of what has the focus then
    };
    void walk(std::initializer_list<Step> steps) {
        int n = 0;
        for (const Step& step : steps) {
            xdo(std::string("key ") + step.key);
            const CCtrl* now = win->keyTarget();
            EXPECT_STREQ(now ? now->id.asChar() : "none", step.id) << n << ": " << step.key;
            n++;
        }
    }
    CGroup* group(CGroup* around, const char* name, int t) {
        auto* made = new CGroup(win.get(), name, 0, t, 100, 40);
        around->addControl(made);
        return made;
    }
};

} // namespace

/// Through all groups in the order of the tree and around the end, past what is hidden or takes
/// nothing, from anywhere or nowhere.
TEST_F(FocusTest, TabWalksTheWholeTree) {
    CGroup* upper = group(win->clientGroup, "upper", 0);
    auto* a = new Stop(upper, "a", 0, 0);
    CGroup* inner = group(upper, "inner", 10);
    new Stop(inner, "b", 0, 0);
    auto* off = new Stop(inner, "off", 20, 0);
    off->enabled = false;
    auto* c = new Stop(group(win->clientGroup, "lower", 50), "c", 0, 0);
    CGroup* hidden = group(win->clientGroup, "hidden", 90);
    new Stop(hidden, "d", 0, 0);
    hidden->visible = false;
    walk({{"Tab", "a"}, {"Tab", "b"}, {"Tab", "c"}, {"Tab", "a"}, {"shift+Tab", "c"}});
    EXPECT_TRUE(a->saw("blur") && c->saw("focus"));
    // What loses its place while it has the focus is where the walk goes on from.
    off->enabled = true;
    win->setKeyCtrl(off);
    off->enabled = false;
    walk({{"Tab", "c"}});
    win->setKeyCtrl(nullptr);
    walk({{"shift+Tab", "c"}});
    a->tabStop = inner->visible = false;
    EXPECT_FALSE(win->nextCtrl()) << "nowhere else to go";
}

TEST_F(FocusTest, ArrowsWalkAGroupByPlaceAndItsOwnerTakesTheRest) {
    CGroup* rows = group(win->clientGroup, "rows", 0);
    rows->arrowsWalk = true;
    for (const char* name : {"a1", "a2", "b1", "b2"}) // not in the order of their places
        new Stop(rows, name, name[1] == '2' ? 20 : 0, name[0] == 'b' ? 12 : 0);
    new Stop(win->clientGroup, "below", 0, 50);
    walk({{"Tab", "a1"},
          {"Right", "a2"},
          {"Down", "b2"},
          {"Left", "b1"},
          {"Left", "b1"},
          {"Down", "b1"},
          {"Up", "a1"},
          {"shift+Right", "a1"}});
}

/// The focus of the server stays with the window around; Tab leads into the page and out again.
TEST_F(FocusTest, TabLeadsThroughThePageInFront) {
    new Stop(win->clientGroup, "own", 0, 0);
    CMDI area(app.get(), win.get(), "area", 0, 20, 200, 130);
    std::unique_ptr<CWin> pages[2];
    for (auto& page : pages) {
        const bool first = &page == pages;
        page = std::make_unique<CWin>(app.get(), &area, first ? "one" : "two", first ? 0 : 60, 0,
                                      50, 80, winChild);
        new Stop(page->clientGroup, first ? "one.a" : "two.a", 0, 0);
        new Stop(page->clientGroup, first ? "one.b" : "two.b", 0, 20);
        page->show(true);
    }
    area.show(false);
    settle();
    walk({{"Tab", "own"},
          {"Tab", "two.a"},
          {"Tab", "two.b"},
          {"Tab", "own"},
          {"shift+Tab", "two.b"},
          {"ctrl+F6", "none"},
          {"Tab", "own"},
          {"Tab", "one.a"}});
    EXPECT_EQ(win->keyCtrl, nullptr) << "one focus at a time";
    for (auto& page : pages) page.reset();
}

TEST_F(FocusTest, WhatGetsTheFocusIsScrolledIntoView) {
    auto* panel = add(new CScrollPanel(win.get(), "panel", 0, 0, 80, 60));
    for (int i = 0; i < 3; i++)
        new Stop(panel->inner, CStr(i == 0 ? "top" : i == 1 ? "mid" : "end"), 0, 100 * i);
    panel->resized();
    walk({{"Tab", "top"}, {"Tab", "mid"}});
    EXPECT_EQ(panel->inner->scrollY, 110 - panel->inner->height);
    walk({{"Tab", "end"}, {"Tab", "top"}});
    EXPECT_EQ(panel->inner->scrollY, 0);
}

TEST_F(FocusTest, AContextMenuOpensAtWhatHasTheFocus) {
    auto* stop = new Stop(win->clientGroup, "stop", 30, 40);
    settle();
    stop->offersMenu = true;
    win->setKeyCtrl(stop);
    const CPoint below = asPoint(100 + 30, 100 + 40 + stop->height);
    for (const char* k : {"Menu", "shift+F10"}) {
        stop->menuAt = {};
        xdo(std::string("key ") + k);
        EXPECT_EQ(stop->menuAt, below) << k;
    }
    EXPECT_EQ(app->menuPoint(), asPoint(700, 500)) << "by the mouse, at the pointer";
}

TEST_F(FocusTest, ReleasesReachWhatHasTheFocus) {
    auto* stop = new Stop(win->clientGroup, "stop", 0, 0);
    win->setKeyCtrl(stop);
    xdo("key a");
    EXPECT_TRUE(stop->saw("released 97"));
}
