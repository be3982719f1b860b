#include "ControlFixture.h"

#include "gui/controls/CTree.h"

namespace {

/// A tree of 10 lines of 18 in height, from 1 on, with the boxes at 4, 20, ...:
/// a (a1, a2 (deep)), B, c, and "lazy", which gets "read" when it is opened first.
class TreeTest : public ControlTest {
protected:
    void SetUp() override {
        ControlTest::SetUp();
        if (!usable()) return;
        tree = add(new CTree(win.get(), "tree", 0, 0, 150, 182));
        CTreeNode* a = tree->root.add("a");
        a->add("a1");
        a->add("a2")->add("deep");
        for (const char* text : {"c", "B"}) tree->root.addSorted(new CTreeNode(text));
        tree->root.add("lazy")->hasChildren = true;
        wire(tree->onExpanding, new _COnChange<TreeTest>(this, &TreeTest::expanding));
        wire(tree->onExecute, new _COnChange<TreeTest>(this, &TreeTest::execute));
        tree->update();
        settle();
    }
    void expanding(CObject* sender) {
        auto* node = static_cast<CTreeNode*>(sender);
        if (fills && node->text == "lazy" && node->children.empty()) node->add("read");
        log += node->expanded ? "+" : "-";
    }
    void execute(CObject* sender) {
        log += std::string("!") + static_cast<CTreeNode*>(sender)->text.asChar();
    }
    /// All visible lines: selected ones with a star, the current one in brackets.
    std::string shown() {
        std::string all;
        for (int y = 1; CTreeNode* node = tree->nodeAt(y); y += CTree::rowHeight) {
            const std::string text = node->text.asChar();
            all +=
                (node == tree->current ? "[" + text + "]" : text) + (node->selected ? "* " : " ");
        }
        return all;
    }

    CTree* tree = nullptr;
    bool fills = true;
    std::string log;
};

} // namespace

TEST_F(TreeTest, IsWalkedByKeys) {
    struct Case {
        const char* keys;
        bool multi;
        const char* shown;
    };
    const Case cases[] = {{"Down", false, "[a]* B c lazy "},
                          {"End Down", false, "a B c [lazy]* "},
                          {"Home Right", false, "[a]* a1 a2 B c lazy "},
                          {"Home Right Right Down Right Down", false, "a a1 a2 [deep]* B c lazy "},
                          {"Home Right Down Left", false, "[a]* a1 a2 B c lazy "},
                          {"Home Right Down Left Left", false, "[a]* B c lazy "},
                          {"End Right", false, "a B c [lazy]* read "},
                          {"Home Next", false, "a B c [lazy]* "},
                          {"Home shift+Down", false, "a [B]* c lazy "},
                          {"Home shift+Down shift+Down", true, "a* B* [c]* lazy "},
                          {"End shift+Up shift+Up shift+Down", true, "a B [c]* lazy* "},
                          {"Home shift+End Up", true, "a B [c]* lazy "}};
    win->setKeyCtrl(tree);
    for (const Case& c : cases) {
        for (CTreeNode* node : tree->root.children) {
            node->expanded = false;
            for (CTreeNode* inner : node->children) inner->expanded = false;
            if (node->text == "lazy") node->clear();
        }
        tree->select(nullptr);
        tree->multiSelect = c.multi;
        xdo(std::string("key ") + c.keys);
        EXPECT_EQ(shown(), c.shown) << c.keys;
    }
    int menus = 0;
    Target menu([&] { menus++; });
    tree->onRightClick = menu.change();
    xdo("key Menu shift+F10");
    EXPECT_EQ(menus, 2);
    xdo("key Return");
    EXPECT_EQ(log.substr(log.size() - 2), "!c");
}

TEST_F(TreeTest, OpensAndSelectsByMouse) {
    struct Case {
        int x, line;
        const char *button, *shown;
    };
    const Case cases[] = {
        {60, 0, "1", "[a]* a1 a2 B c lazy "},      // a press on the text opens as well
        {30, 2, "1", "[a]* a1 a2 deep B c lazy "}, // the box alone leaves the selection
        {60, 3, "1", "a a1 a2 [deep]* B c lazy "},
        {10, 0, "1", "[a]* B c lazy "}, // what was selected inside moves out
        {60, 1, "3", "a [B]* c lazy "},
        {60, 1, "1", "a [B]* c lazy "}, // nothing below it, so it stays closed
        {10, 3, "1", "a [B]* c lazy read "},
        {60, 9, "1", "a [B]* c lazy read "}};
    for (const Case& c : cases) {
        at(c.x, 5 + c.line * CTree::rowHeight, std::string("click ") + c.button);
        EXPECT_EQ(shown(), c.shown) << c.line;
    }
    fills = false;
    at(60, 5 + 2 * CTree::rowHeight, "click --repeat 2 --delay 20 1");
    EXPECT_EQ(log.substr(log.size() - 2), "!c");
}

TEST_F(TreeTest, SelectsSeveralByMouse) {
    struct Case {
        const char* held;
        int line;
        const char* shown;
    };
    const Case cases[] = {{nullptr, 0, "[a]* B c lazy "}, {"ctrl", 2, "a* B [c]* lazy "},
                          {"ctrl", 0, "[a] B c* lazy "},  {"shift", 1, "a* [B]* c lazy "},
                          {nullptr, 0, "[a]* B c lazy "}, {"shift", 3, "a* B* c* [lazy]* "},
                          {nullptr, 1, "a [B]* c lazy "}};
    tree->multiSelect = true;
    for (const Case& c : cases) {
        const std::string held = c.held ? c.held : "";
        const std::string click = c.held ? "keydown " + held + " click 1 keyup " + held : "click 1";
        at(60, 5 + c.line * CTree::rowHeight, click);
        EXPECT_EQ(shown(), c.shown) << c.line;
    }
    int drags = 0;
    Target drag([&] { drags++; });
    tree->onDrag = drag.change();
    at(60, 5, "mousedown 1");
    at(60, 25, "mouseup 1");
    EXPECT_EQ(drags, 1);
}

/// 40 lines of 18 in a room of 180: the wheel moves by 32 pixels, and keys bring their node to
/// view.
TEST_F(TreeTest, ScrollsAndForgetsDeletedNodes) {
    for (int i = 0; i < 36; i++) tree->root.add("more");
    tree->update();
    at(60, 60, "click 5");
    EXPECT_EQ(tree->nodeAt(1)->text, "B"); // 32 is in the second line
    at(60, 60, "click 4");
    win->setKeyCtrl(tree);
    xdo("key End");
    EXPECT_EQ(tree->nodeRect(tree->current).bottom, 1 + 180);
    xdo("key Home");
    EXPECT_EQ(tree->nodeRect(tree->current).top, 1);
    tree->root.clear();
    win->redraw();
    settle();
    EXPECT_EQ(tree->current, nullptr);
    EXPECT_EQ(tree->nodeAt(5), nullptr);
    at(60, 60, "click 1 key Down");
}
