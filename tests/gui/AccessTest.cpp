#include "ControlFixture.h"

#include "gui/Scale.h"
#include "gui/access/LiveTree.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CTree.h"
#include "gui/controls/CValue.h"

#include <algorithm>
#include <poll.h>

namespace {

/// Notes what it is told.
class Listener final : public AccessOutlet {
public:
    explicit Listener(AccessTree* shown) : tree(shown) {}
    void changed(AccessId, const Description& before, const Description& now) override {
        if (before.text != now.text) note("text " + now.text);
        if (before.range != now.range) note("number " + std::to_string(int(now.range->now)));
        if (before.states != now.states) note("states of " + now.name);
    }
    void childrenChanged(AccessId id) override { note("inside " + tree->describe(id).name); }
    void focused(AccessId id) override { note("focus " + tree->describe(id).name); }
    void windowOpened(AccessId id) override { note("window " + tree->describe(id).name); }
    void gone(AccessId) override { note("gone"); }
    void await(std::vector<pollfd>&, int&) override {}
    void turn() override {}

    std::vector<std::string> news;

private:
    void note(const std::string& what) { news.push_back(what); }
    AccessTree* tree;
};

class AccessTest : public ControlTest {
protected:
    void SetUp() override {
        ControlTest::SetUp();
        if (usable()) app->access = std::make_unique<LiveTree>(app.get());
    }
    void TearDown() override {
        if (usable()) app->access.reset();
        ControlTest::TearDown();
    }
    LiveTree& tree() { return *app->access; }
    /// What lies in a thing, by name, each followed in brackets by what lies in that.
    std::string outline(AccessId id) {
        std::string text;
        for (const AccessId child : tree().children(id)) {
            EXPECT_EQ(tree().parent(child), id);
            const std::string inside = outline(child);
            text += (text.empty() ? "" : " ") + tree().describe(child).name +
                    (inside.empty() ? "" : "(" + inside + ")");
        }
        return text;
    }
    void told() {
        settle();
        tree().update();
    }
};

/// Groups that are no things of their own are left out; a label is heard with its field, a hint
/// where there is no text.
TEST_F(AccessTest, ThingsLieInTheirWindowByTheirNames) {
    if (!usable()) GTEST_SKIP();
    auto* group = new CGroup(win.get(), "group", 0, 0, 200, 60);
    auto* label = new CLabel(win.get(), "Length:", 0, 0, 40, 20);
    auto* value = new CValue(win.get(), "len", 40, 0, 40, 20);
    label->field = value;
    group->addControl(label);
    group->addControl(value);
    auto* button = new CButton(win.get(), "b", "", 0, 30, 20, 20);
    button->hint = "Play the song.";
    group->addControl(button);
    auto* hidden = new CButton(win.get(), "h", "Hidden", 0, 30, 20, 20);
    hidden->visible = false;
    group->addControl(hidden);
    add(group);
    auto* list = add(new CListbox(win.get(), "list", 100, 60, 80, 80));
    list->spokenName = "Presets";
    for (const char* name : {"Bass", "Lead"}) list->add(name);
    EXPECT_EQ(outline(tree().idOf(win.get())), "Length Play the song Presets(Bass Lead)");

    const Description field = tree().describe(tree().idOf(value));
    EXPECT_EQ(field.role, Role::number);
    EXPECT_TRUE(field.has(stateFocusable) && field.has(stateEnabled) && field.has(stateShowing));
    const CPoint corner = win->getPos(true);
    const CRect bounds = toDevice(asRect(corner.x + 40, corner.y, corner.x + 80, corner.y + 20));
    EXPECT_EQ(field.bounds, bounds);
    EXPECT_EQ(tree().at(0, CPoint{bounds.left + 2, bounds.top + 2}), tree().idOf(value));
}

/// Each act does what the user's own would do, reports included, and only when the loop is back.
TEST_F(AccessTest, ActsAsTheUserWould) {
    if (!usable()) GTEST_SKIP();
    auto* button = add(new CButton(win.get(), "b", "Go", 0, 0, 40, 20));
    auto* box = add(new CCheckbox(win.get(), "c", "Loop", 0, 20, 60, 20));
    auto* value = add(new CDecimalValue(win.get(), "v", 0, 40, 60, 20));
    auto* fader = add(new CFader(win.get(), "f", 150, 0, 20, 100));
    fader->setRange(101, 1);
    auto* tabs = add(new CTabs(win.get(), "t", 0, 60, 140, 20));
    for (const char* name : {"One", "Two"}) tabs->items.append(name);
    auto* list = add(new CListbox(win.get(), "l", 0, 80, 60, 60));
    auto* drop = add(new CDropdown(win.get(), "d", 70, 80, 60, 20));
    for (const char* name : {"Sine", "Saw"}) {
        list->add(name);
        drop->add(name);
    }
    auto* edit = add(new CEdit(win.get(), "e", 70, 110, 60, 20));
    const auto id = [this](const CCtrl* ctrl, int part = -1) { return tree().idOf(ctrl, part); };

    changes = 0;
    EXPECT_TRUE(tree().press(id(button)));
    EXPECT_EQ(changes, 0);
    told();
    EXPECT_EQ(changes, 1);
    tree().press(id(box));
    tree().setNumber(id(value), 2.5);
    tree().setNumber(id(fader), 30);
    tree().press(id(tabs, 1));
    tree().press(id(list, 1));
    tree().setText(id(drop), "Saw");
    tree().setText(id(edit), "name");
    tree().setFocus(id(edit));
    told();
    EXPECT_EQ(changes, 8);
    EXPECT_TRUE(box->checked);
    EXPECT_EQ(value->value, 25);
    EXPECT_EQ(fader->pos, 30);
    EXPECT_EQ(tabs->index, 1);
    EXPECT_EQ(list->index, 1);
    EXPECT_EQ(drop->index, 1);
    EXPECT_EQ(edit->text, "name");
    EXPECT_TRUE(edit->hasKeyFocus());

    button->setEnabled(false);
    tree().press(id(button));
    EXPECT_FALSE(tree().press(id(list, 2))) << "there is no third row";
    told();
    EXPECT_EQ(changes, 8);
}

TEST_F(AccessTest, NodesLieInNodes) {
    if (!usable()) GTEST_SKIP();
    auto* nodes = add(new CTree(win.get(), "tree", 0, 0, 200, 140));
    CTreeNode* drums = nodes->root.add("Drums");
    drums->add("Kick");
    drums->add("Snare");
    nodes->root.add("Bass");
    nodes->update();
    EXPECT_EQ(outline(tree().idOf(nodes)), "Drums Bass");
    tree().press(tree().idOf(nodes, 0));
    told();
    EXPECT_EQ(outline(tree().idOf(nodes)), "Drums(Kick Snare) Bass");
    EXPECT_TRUE(tree().describe(tree().idOf(nodes, 0)).has(stateExpanded));
    EXPECT_EQ(nodes->selectedNode(), drums);
}

/// What was read before is told when it changes, once; what nobody has read is not.
TEST_F(AccessTest, TellsWhatHasChanged) {
    if (!usable()) GTEST_SKIP();
    auto* value = add(new CValue(win.get(), "Gain", 0, 0, 60, 20));
    value->spokenName = "Gain";
    auto* unread = add(new CValue(win.get(), "x", 0, 30, 60, 20));
    auto* list = add(new CListbox(win.get(), "Files", 0, 60, 60, 60));
    list->spokenName = "Files";
    auto outlet = std::make_unique<Listener>(&tree());
    std::vector<std::string>& news = outlet->news;
    tree().outlet = std::move(outlet);
    told();
    EXPECT_EQ(news.front(), "inside " + tree().describe(0).name);
    tree().describe(tree().idOf(value));
    tree().children(tree().idOf(list));
    news.clear();

    value->setValue(7);
    unread->setValue(9);
    told();
    EXPECT_EQ(news, (std::vector<std::string>{"text 7", "number 7"}));
    news.clear();
    list->add("kick.wav");
    told();
    EXPECT_EQ(news, std::vector<std::string>{"inside Files"});
    news.clear();
    value->redraw();
    told();
    EXPECT_TRUE(news.empty());
    win->setKeyCtrl(value);
    told();
    EXPECT_EQ(std::count(news.begin(), news.end(), "focus Gain"), 1);
    const AccessId id = tree().idOf(value);
    news.clear();
    win->clientGroup->controls.remove(value);
    delete value;
    told();
    EXPECT_EQ(std::count(news.begin(), news.end(), "gone"), 1);
    EXPECT_EQ(tree().describe(id).role, Role::none);
    EXPECT_FALSE(tree().press(id));
}

} // namespace
