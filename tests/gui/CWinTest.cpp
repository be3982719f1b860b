#include "ControlFixture.h"

#include "base/Messages.h"
#include "gui/CGraphic.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/dialogs/MessageBox.h"

#include <algorithm>

namespace {

constexpr int framed = winCaption | winSizable | winMinButton | winMaxButton;

class CWinTest : public LoopTest {
protected:
    std::unique_ptr<CWin> framedWindow(int style = framed) {
        auto made = std::make_unique<CWin>(app.get(), nullptr, "framed", 100, 100, 300, 200, style);
        made->show(true);
        settle();
        return made;
    }
    /// Puts a window with a caption in place of the bare one.
    void frame() {
        win.reset();
        win = framedWindow();
    }
};

} // namespace

/// Group of 200 x 100, child at (10, 20) of 40 x 30.
TEST_F(CWinTest, ChildrenFollowTheirGroup) {
    struct Case {
        int align, x, y;
        CRect bounds; // left, top, width, height
    };
    const Case cases[] = {{0, 5, 5, {10, 20, 40, 30}},
                          {alignRight, 5, 0, {155, 20, 40, 30}},
                          {alignWidth, 5, 0, {10, 20, 185, 30}},
                          {alignMiddleX, 25, 0, {30, 20, 40, 30}},
                          {alignBottom, 0, 5, {10, 65, 40, 30}},
                          {alignHeight, 0, 5, {10, 20, 40, 75}},
                          {alignPercentY, 0, 50, {10, 35, 40, 30}},
                          {alignRight | alignWidth | alignMiddleX, 5, 0, {155, 20, 40, 30}},
                          {alignBottom | alignHeight, 0, 5, {10, 65, 40, 30}},
                          {alignWidth | alignHeight, 3, 4, {10, 20, 187, 76}}};
    for (const Case& c : cases) {
        CGroup group(win.get(), "group", 0, 0, 200, 100);
        auto* inner = new CGroup(win.get(), "inner", 10, 20, 40, 30);
        auto* leaf = new CCtrl(win.get(), "leaf", 0, 0, 10, 10);
        leaf->setAlign(alignWidth, 1, 0);
        inner->addControl(leaf);
        inner->setAlign(c.align, c.x, c.y);
        group.addControl(inner);
        group.resized();
        EXPECT_EQ(asRect(inner->left, inner->top, inner->width, inner->height), c.bounds)
            << c.align;
        EXPECT_EQ(leaf->width, inner->width - 1) << c.align;
    }
}

TEST_F(CWinTest, TheFirstChildIsHitAndInsideItTheLast) {
    CGroup root(win.get(), "root", 0, 0, 200, 100);
    auto* first = new CGroup(win.get(), "first", 10, 10, 50, 50);
    auto* second = new CCtrl(win.get(), "second", 10, 10, 90, 50);
    auto* under = new CCtrl(win.get(), "under", 0, 0, 30, 30);
    auto* over = new CCtrl(win.get(), "over", 10, 10, 30, 30);
    root.addControl(first);
    root.addControl(second);
    first->addControl(under);
    first->addControl(over);
    EXPECT_EQ(root.controlAtPos(25, 25), over);
    EXPECT_EQ(root.controlAtPos(12, 12), under);
    EXPECT_EQ(root.controlAtPos(55, 55), first);
    EXPECT_EQ(root.controlAtPos(70, 20), second);
    EXPECT_EQ(root.controlAtPos(5, 5), nullptr);
    over->enabled = false;
    EXPECT_EQ(root.controlAtPos(25, 25), under);
    first->visible = false;
    EXPECT_EQ(root.controlAtPos(25, 25), second);
    first->visible = over->enabled = true;
    first->scrollY = 30; // what is drawn at 12 is the content's 32
    EXPECT_EQ(root.controlAtPos(25, 12), over);
    root.scrollX = 100;
    EXPECT_EQ(root.controlAtPos(-75, 12), over);
}

/// Painting must put a scrolled control where hit testing finds it, and cut it to its parents.
TEST_F(CWinTest, ScrolledContentIsPaintedWhereItIsHit) {
    auto* panel = new CGroup(win.get(), "panel", 20, 20, 60, 60);
    auto* probe = new ProbeCtrl(win.get(), "probe", 10, 70, 30, 30);
    probe->fill = 0x00ff00;
    panel->addControl(probe);
    panel->scrollY = 50;
    win->addControl(panel);
    win->redraw();
    settle();
    EXPECT_EQ(Shot(win->handle, 200, 150).boundsOf(0x00ff00), asRect(30, 40, 60, 70));
    EXPECT_EQ(win->controlPos(probe), asPoint(30, 40));
    EXPECT_EQ(win->controlAtPos(30, 40), probe);
    panel->scrollY = 20;
    win->redraw();
    settle();
    EXPECT_EQ(Shot(win->handle, 200, 150).boundsOf(0x00ff00), asRect(30, 70, 60, 80));
}

/// What stands half in a panel, or not at all, paints nothing beside it: neither by itself nor when
/// its lines leave it while the whole window is painted.
TEST_F(CWinTest, NothingIsPaintedBesideThePanel) {
    struct Scribble : CCtrl {
        using CCtrl::CCtrl;
        void paint(CGraphic* g, CRect rect) override {
            g->fillRect(0x00ff00, rect);
            g->setLineCol(0x00ff00);
            g->drawLine(rect.left, -20, rect.left, rect.bottom + 20);
        }
    };
    auto* panel = new CGroup(win.get(), "panel", 20, 20, 60, 60);
    auto* probe = new Scribble(win.get(), "probe", 10, 40, 30, 30);
    panel->addControl(probe);
    win->addControl(panel);
    for (const int scroll : {0, 45, -200}) {
        panel->scrollY = scroll;
        win->redraw();
        settle();
        const CRect whole = Shot(win->handle, 200, 150).boundsOf(0x00ff00);
        const CRect seen =
            intersect(asRect(30, 60 - scroll, 60, 90 - scroll), asRect(20, 20, 80, 80));
        EXPECT_EQ(whole, seen.empty() ? CRect() : seen);
        app->drawNow(win.get(), probe);
        EXPECT_EQ(Shot(win->handle, 200, 150).boundsOf(0x00ff00), whole);
    }
}

TEST_F(CWinTest, FrameCaptionAndContentHaveTheirPlaces) {
    frame();
    auto* content = new ProbeCtrl(win.get(), "content", 0, 0, 300, 200);
    content->setAlign(alignWidth | alignHeight, 0, 0);
    content->fill = 0x00ff00;
    win->addControl(content);
    win->setSize(320, 240);
    settle();
    settle();
    const Shot shot(win->handle, 320, 240);
    EXPECT_EQ(shot.boundsOf(0x00ff00), asRect(3, 23, 317, 237));
    EXPECT_EQ(shot.at(0, 0), clWinBkgnd.frameCol);
    EXPECT_EQ(shot.at(319, 239), clWinBkgnd.frameCol);
    EXPECT_EQ(shot.at(1, 1), clWinBkgnd.fillCol);
    EXPECT_EQ(shot.at(200, 5), clCaption.fillCol); // it has the focus
}

TEST_F(CWinTest, EdgesAndCaptionAreZones) {
    struct Case {
        int x, y, zone;
    };
    const Case cases[] = {
        {8, 2, zoneTopLeft},  {2, 8, zoneTopLeft},         {9, 2, zoneTop},
        {2, 9, zoneLeft},     {291, 0, zoneTopRight},      {299, 8, zoneTopRight},
        {290, 1, zoneTop},    {297, 9, zoneRight},         {8, 197, zoneBottomLeft},
        {9, 197, zoneBottom}, {291, 197, zoneBottomRight}, {297, 190, zoneRight},
        {150, 22, zoneMove},  {150, 23, zoneNone},         {3, 3, zoneMove}};
    frame();
    for (const Case& c : cases) EXPECT_EQ(win->getHitPos(c.x, c.y), c.zone) << c.x << "," << c.y;
    win->style |= winMaximized;
    EXPECT_EQ(win->getHitPos(0, 0), zoneMove);
    win->style = 0;
    EXPECT_EQ(win->getHitPos(0, 0), zoneNone);
}

TEST_F(CWinTest, TheServerNeverGetsLessThanTheMinimum) {
    frame();
    win->minWidth = 150;
    win->minHeight = 120;
    win->move(100, 100, 40, 30);
    EXPECT_EQ(asPoint(win->width, win->height), asPoint(40, 30));
    settle();
    EXPECT_EQ(asPoint(win->width, win->height), asPoint(150, 120));
}

TEST_F(CWinTest, ControlTabMovesBetweenWindows) {
    xdo("key ctrl+Tab"); // with one window only
    EXPECT_TRUE(win->hasFocus());
    CWin other(app.get(), nullptr, "other", 400, 300, 100, 100, winEscape);
    other.show(true);
    settle();
    xdo("key ctrl+Tab");
    EXPECT_TRUE(other.hasFocus());
    xdo("key Escape");
    EXPECT_FALSE(other.visible);
    EXPECT_EQ(app->windows.getCount(), 1);
}

/// The answer of a message is the bit of the button, by mouse, key and closing.
TEST_F(CWinTest, MessagesAnswerWithTheirButton) {
    struct Case {
        int buttons;
        const char* keys;
        int answer;
    };
    const Case cases[] = {{0, "Return", mbOk},
                          {mbOk, "Escape", mbOk},
                          {14, "Return", mbYes},
                          {14, "Right Return", mbNo},
                          {14, "Left space", mbCancel},
                          {14, "Tab Tab Return", mbCancel},
                          {14, "n", mbNo},
                          {14, "Escape", mbCancel},
                          {mbYes | mbNo, "alt+F4", mbNo}};
    installMessageBox(app.get());
    for (const Case& c : cases) {
        for (const std::string& key : split(c.keys)) later("key " + key);
        EXPECT_EQ(showMsg(win.get(), "Title", "A question?", c.buttons), c.answer) << c.keys;
        settle();
    }
    messageHooks().showMsg = nullptr;
}

/// A long text, a word without end and line feeds all lie inside the window.
TEST_F(CWinTest, AMessageFitsItsText) {
    installMessageBox(app.get());
    std::string text = "First line\n\n";
    for (int i = 0; i < 30; i++) text += "several words ";
    text += std::string(300, 'x');
    CRect ink;
    CPoint size;
    whenever([&] { return app->modalWin && app->modalWin->hasFocus(); },
             [&] {
                 settle();
                 size = app->modalWin->getSize();
                 ink = Shot(app->modalWin->handle, size.x, size.y).boundsOf(clWinBkgnd.textCol);
                 app->modalWin->hide();
             });
    EXPECT_EQ(showMsg(win.get(), "Title", text.c_str(), mbOk), mbOk);
    EXPECT_LE(size.x, 800);
    EXPECT_GE(ink.left, 3);
    EXPECT_LE(ink.right, size.x - 3);
    EXPECT_GT(size.y, 10 * 16); // 420 + 300 characters at up to 80 a line, and two more
    EXPECT_LT(ink.bottom, size.y - 16);
    messageHooks().showMsg = nullptr;
}

TEST_F(CWinTest, MenusRunUntilAPressOutsideAndSwallowIt) {
    auto* outside = new ProbeCtrl(win.get(), "outside", 0, 0, 200, 150);
    win->addControl(outside);
    CWin menu(app.get(), win.get(), "menu", 400, 300, 100, 100, winPopup | winNoBorder);
    auto* item = new ProbeCtrl(&menu, "item", 0, 0, 100, 100);
    menu.addControl(item);
    CWin sub(app.get(), &menu, "sub", 500, 300, 100, 100, winPopup | winNoBorder);
    auto* subItem = new ProbeCtrl(&sub, "item", 0, 0, 100, 100);
    sub.addControl(subItem);
    item->onUp = [&] {
        sub.showMenu(); // inside another menu: comes back at once
        sub.setKeyCtrl(subItem);
        EXPECT_EQ(app->topMenu, &sub);
    };
    for (const char* line : {"mousemove 450 350 click 1", "key Down", "mousemove 150 140 click 1"})
        later(line);
    menu.showMenu();
    settle();
    EXPECT_TRUE(subItem->saw("key -5 0"));
    EXPECT_TRUE(item->saw("down 50 50 1"));
    EXPECT_FALSE(outside->saw("down 50 40 1"));
    EXPECT_FALSE(menu.visible || sub.visible);
    EXPECT_TRUE(app->menus.empty());
}

/// Where it has no content yet, nothing of what lay over a main window stays.
TEST_F(CWinTest, AMainWindowIsFilledWithoutContent) {
    const auto main = framedWindow(winCaption | winMain);
    auto over = bareWindow(400, 300);
    auto* probe = new ProbeCtrl(over.get(), "probe", 0, 0, 400, 300);
    probe->fill = 0x00ff00;
    over->addControl(probe);
    over->redraw();
    settle();
    over.reset();
    settle();
    EXPECT_EQ(Shot(main->handle, 300, 200).count(0x00ff00), 0);
}
