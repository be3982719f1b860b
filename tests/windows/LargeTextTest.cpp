#include "MainFixture.h"

#include "arrange/HeadList.h"
#include "gui/Fonts.h"
#include "gui/XConnection.h"
#include "gui/access/LiveTree.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "render/CRenderWin.h"
#include "sequencer/render/CRender.h"
#include "setup/CSetupWin.h"
#include "shell/CWelcomeWin.h"

#include <map>

/// The program at twice its size on a screen of 1366 x 768 pixels.
class LargeTextTest : public MainWinTest {
protected:
    static constexpr int screenWide = 1366, screenHigh = 768;

    static void SetUpTestSuite() {
        server =
            std::make_unique<TestServer>(std::vector<std::string>{"-screen", "0", "1366x768x24"});
    }
    void begin(int percent) {
        closeProgram();
        reopen(percent);
        start();
        ASSERT_TRUE(load(kindDemo));
        win->move(0, 0, screenWidth(), screenHeight());
        settle();
    }

    /// Controls lie whole in what they belong to, unless that can be scrolled, and words on buttons
    /// have room.
    void checkWhole(LiveTree& tree, const CGroup* group, CRect room, const std::string& path) {
        for (const auto* c : group->controls) {
            if (!c->visible) continue;
            const std::string name = path + "/" + c->id.asChar();
            const CRect box = tree.describe(tree.idOf(c)).bounds;
            if (box.empty()) continue;
            EXPECT_EQ(intersect(box, room), box) << name << ": " << box.left << ", " << box.top
                                                 << " to " << box.right << ", " << box.bottom;
            if (const auto* button = dynamic_cast<const CButton*>(c)) {
                EXPECT_LE(textFace({})->textWidth(button->text), button->width) << name;
            }
            if (c->category == catGroup && !scrolls(c))
                checkWhole(tree, static_cast<const CGroup*>(c), box, name);
        }
    }
    static bool scrolls(const CCtrl* c) {
        return dynamic_cast<const CScrollPanel*>(c) || dynamic_cast<const HeadList*>(c);
    }
    void check(CWin& window, const std::string& name) {
        settle();
        LiveTree tree(app.get());
        checkWhole(tree, &window, tree.describe(tree.idOf(&window)).bounds, name);
    }
    void checkShown(CWin& window, const std::string& name) {
        window.show(true);
        check(window, name);
        window.hide();
    }
    /// Rows of pixels that the word of a menu fills.
    int heightOfWord(const char* word) {
        LiveTree tree(app.get());
        const CCtrl* entry = nullptr;
        for (const auto* c : win->menu->controls)
            if (c->id == word) entry = c;
        if (!entry) return 0;
        const CRect box = tree.describe(tree.idOf(entry)).bounds;
        const Shot shot(win->handle, screenWide, screenHigh);
        int rows = 0;
        for (int y = box.top; y < box.bottom; y++) {
            bool ink = false;
            for (int x = box.left; x < box.right; x++)
                ink = ink || shot.at(x, y) != shot.at(box.left, box.top);
            rows += ink;
        }
        return rows;
    }
};

TEST_F(LargeTextTest, IsTwiceAsHighAndNothingIsCutOff) {
    std::map<int, int> height;
    for (const int percent : {100, 200}) {
        begin(percent);
        if (HasFatalFailure()) return;
        height[percent] = heightOfWord("File");
        check(*win, "main");
    }
    EXPECT_GT(height[100], 0);
    EXPECT_NEAR(height[200], 2 * height[100], 1);
    for (int tab = 0; tab < CSetupWin::tabCount(); tab++) {
        CSetupWin setup(*win);
        setup.setTab(tab);
        checkShown(setup, CSetupWin::tabName(tab));
    }
    CStringList recent;
    recent.add("/songs/one.qv");
    CWelcomeWin welcome(win.get(), recent, kindEmpty);
    checkShown(welcome, "welcome");
    CRender choices(host.get(), seq());
    CRenderWin render(*win, choices, seq());
    checkShown(render, "render");
}
