#include "MainFixture.h"

#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "gui/XConnection.h"
#include "gui/access/LiveTree.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CMDI.h"
#include "gui/controls/CScrollbar.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CColourWin.h"
#include "gui/dialogs/CFileWin.h"
#include "gui/dialogs/CTextWin.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "mixer/CMixerPanel.h"
#include "mixer/CMixerStrip.h"
#include "mixer/CMixerWin.h"
#include "panels/PageRow.h"
#include "panels/arp/CArpWin.h"
#include "panels/drums/CDrumWin.h"
#include "panels/rack/CEffectWin.h"
#include "panels/sampler/CSamplerWin.h"
#include "render/CRenderWin.h"
#include "sequencer/render/CRender.h"
#include "sequencer/song/CSeq.h"
#include "setup/CImageListWin.h"
#include "setup/CSetupWin.h"
#include "shell/CWelcomeWin.h"
#include "shell/Pages.h"
#include "ui/CProgressWin.h"

#include <algorithm>
#include <set>

namespace {

using Controls = std::set<const CCtrl*>;

/// Controls under the mouse that take nothing from it: they only show, or tell by their hint.
bool onlyShows(const CCtrl* c) {
    for (const char* id :
         {"status", "midi", "spectrum", "logo", "preview", "progress", "sample", "clock"})
        if (c->id == id) return true;
    Description told;
    c->describe(told, CCtrl::wholeCtrl);
    if (told.role == Role::picture && !c->tabStop) return true;
    // Captions have keys of their own, and what scrolls is scrolled by the keys on its content.
    return dynamic_cast<const CWindowButton*>(c) || dynamic_cast<const CSeparator*>(c) ||
           (dynamic_cast<const CScrollbar*>(c) && !dynamic_cast<const CFader*>(c));
}

/// What takes the mouse, of a control and all inside; what lies inside a tab stop is part of it.
void collectTakers(const CCtrl* c, Controls& takers) {
    if (!c->visible || !c->enabled || c == c->win->captionGroup) return;
    const bool group = c->category == catGroup || c->category == catGroupLike;
    const bool listens = c->onMouseDown || c->onMouseUp || c->onWheel;
    if (c->tabStop || listens || (!group && !onlyShows(c))) takers.insert(c);
    if (!group) return;
    for (const CCtrl* inner : static_cast<const CGroup*>(c)->controls)
        if (!c->tabStop || inner->tabStop) collectTakers(inner, takers);
}

std::string pathOf(const CCtrl* c) {
    std::string path = c->id.asChar();
    for (c = c->parent; c && c->category != catWin; c = c->parent)
        path = std::string(c->id.asChar()) + "/" + path;
    return path;
}

} // namespace

class ReachTest : public MainWinTest {
protected:
    /// The pixels of a control, as they are now.
    std::vector<int> look(const CCtrl* c) {
        settle();
        const CPoint at = c->win->controlPos(c);
        const Shot all(c->win->handle, c->win->width, c->win->height);
        std::vector<int> pixels;
        for (int y = at.y; y < at.y + c->height; y++)
            for (int x = at.x; x < at.x + c->width; x++) pixels.push_back(all.at(x, y));
        return pixels;
    }
    /// Presses Tab until it has been around; each stop has to look otherwise than without focus.
    Controls walk(CWin* window, const std::string& name) {
        Controls reached;
        for (int i = 0; i < 100; i++) {
            key("Tab");
            CCtrl* now = window->keyTarget();
            if (!now || !reached.insert(now).second) break;
            const auto marked = look(now);
            now->win->setKeyCtrl(nullptr);
            EXPECT_NE(look(now), marked) << name << ": no focus to see on " << pathOf(now);
            now->win->setKeyCtrl(now);
        }
        return reached;
    }
    void check(CWin* window, const std::string& name, const Controls& byArrows = {}) {
        ASSERT_TRUE(pumpUntil([&] { return window->hasFocus(); })) << name;
        window->setKeyCtrl(nullptr);
        const Controls reached = walk(window, name);
        Controls takers;
        for (const CWin* w = window; w; w = w->mdi ? w->mdi->current : nullptr)
            for (const CCtrl* part : w->controls) collectTakers(part, takers);
        EXPECT_GT(takers.size(), 0U) << name;
        checkNames(window, name, reached);
        for (const CCtrl* c : takers)
            EXPECT_TRUE(reached.contains(c) || byArrows.contains(c))
                << name << ": " << pathOf(c) << " cannot be reached";
    }
    /// A screen reader finds a name and a place for everything in a window, and all that takes
    /// the keys.
    void checkNames(CWin* window, const std::string& name, const Controls& reached) {
        LiveTree tree(app.get());
        std::set<AccessId> found;
        collectNames(tree, tree.idOf(window), name, found);
        for (const CCtrl* c : reached)
            EXPECT_TRUE(found.contains(tree.idOf(c))) << name << ": " << pathOf(c) << " is silent";
    }
    static void collectNames(LiveTree& tree, AccessId id, const std::string& path,
                             std::set<AccessId>& found) {
        const Description d = tree.describe(id);
        found.insert(id);
        EXPECT_FALSE(d.name.empty()) << path;
        EXPECT_TRUE(!d.has(stateShowing) || !d.bounds.empty()) << path << "/" << d.name;
        for (const AccessId inner : tree.children(id)) {
            EXPECT_EQ(tree.parent(inner), id) << path << "/" << tree.describe(inner).name;
            collectNames(tree, inner, path + "/" + d.name, found);
        }
    }
    void checkShown(CWin& window, const std::string& name) {
        if (HasFatalFailure()) return;
        window.show(true);
        if (window.style & winSizable) window.move(0, 0, 780, 560);
        settle();
        window.setFocus(true);
        check(&window, name);
        window.hide();
    }
};

TEST_F(ReachTest, EverythingInTheMainWindow) {
    set("options", "modular-tab-always-show", "1");
    set("options", "ribbon", "1");
    start();
    ASSERT_TRUE(load(kindSequencer));
    win->options().spectrum.set(1);
    win->move(0, 0, 800, 600);
    settle();
    // From the head of the first track by arrows: to its buttons, and to those of the next ones.
    Controls byArrows;
    win->setKeyCtrl(nullptr);
    for (int i = 0; i < 40 && !(win->keyTarget() && win->keyTarget()->id == "track"); i++)
        key("Tab");
    ASSERT_TRUE(win->keyTarget() && win->keyTarget()->id == "track");
    for (int row = 0; row < tracks(); row++) {
        const CCtrl* head = win->keyTarget();
        ASSERT_EQ(head->id, "track");
        for (const char* id : {"track", "target", "arm", "mute", "solo", "monitor", "meter"}) {
            EXPECT_EQ(win->keyTarget()->id, id) << "row " << row;
            byArrows.insert(win->keyTarget());
            key("Right");
        }
        const auto* songTrack = seq()->getProg()->tracks.items(row);
        EXPECT_TRUE(row == 0 || songTrack->track->selected());
        for (int i = 0; i < 6; i++) key("Left");
        EXPECT_EQ(win->keyTarget(), head);
        key("Down");
    }
    check(win.get(), "main", byArrows);
    key("Escape");
    EXPECT_EQ(win->keyTarget(), nullptr) << "the keys are the song's again";
}

TEST_F(ReachTest, EverythingInTheMixer) {
    start();
    ASSERT_TRUE(load(kindSequencer));
    host->addSendClicked();
    addInsert(host->getAudioOut()->output(), fxCompressor, 0);
    win->move(0, 0, 800, 600);
    key("F9");
    ASSERT_TRUE(pumpUntil([this] { return win->pages->editorOf(&win->flows->mixer); }));
    settle();
    auto* panel = static_cast<CMixerWin*>(win->pages->editorOf(&win->flows->mixer))->strips();
    Controls byArrows; // along a strip, and from strip to strip
    panel->win->setKeyCtrl(panel->strips().front());
    for (size_t i = 0; i < panel->strips().size(); i++) {
        CMixerStrip* strip = panel->strips()[i];
        EXPECT_EQ(panel->win->keyCtrl, strip);
        const std::vector<CCtrl*> stops = strip->stops();
        for (const CCtrl* stop : stops) {
            EXPECT_EQ(panel->win->keyCtrl, stop) << "strip " << i;
            byArrows.insert(panel->win->keyCtrl);
            if (stop != stops.back()) key("Down");
        }
        panel->win->setKeyCtrl(strip);
        key("Right");
    }
    check(win.get(), "mixer", byArrows);
}

TEST_F(ReachTest, EverythingInTheOtherWindows) {
    start();
    ASSERT_TRUE(load(kindSequencer));
    {
        CSetupWin setup(*win);
        for (int tab = 0; tab < CSetupWin::tabCount(); tab++) {
            setup.setTab(tab);
            checkShown(setup, CSetupWin::tabName(tab));
        }
    }
    CStringList recent;
    recent.add("/songs/one.qv");
    CWelcomeWin welcome(win.get(), recent, kindEmpty);
    checkShown(welcome, "welcome");
    CRender choices(host.get(), seq());
    CRenderWin render(*win, choices, seq());
    checkShown(render, "render");
    CImageListWin images(win.get(), app->gui.get(), nullptr);
    checkShown(images, "images");
    CProgressWin progress(*win, "Progress");
    checkShown(progress, "progress");
    CColourWin colour(win.get(), "Colour", 0x804020);
    checkShown(colour, "colour");
    CFileWin file(win.get(), "Open", ".qv", at("").c_str(), "", false);
    checkShown(file, "open");
    CFileWin saving(win.get(), "Save", ".qv", at("").c_str(), "x.qv", true);
    checkShown(saving, "save");
    CFolderWin folders(win.get(), "Folder", at("").c_str());
    checkShown(folders, "folder");
    CTextWin text(win.get(), "Name", "text");
    checkShown(text, "text");
}

TEST_F(ReachTest, EverythingInThePanels) {
    start();
    ASSERT_TRUE(load(kindDefault));
    auto* sampler = static_cast<CSampler*>(host->firstOfType(compSampler));
    CSamplerWin sounds(*win, *sampler);
    PageRow* pages = nullptr;
    for (CCtrl* c : sounds.clientGroup->controls)
        if (c->id == "pages") pages = static_cast<PageRow*>(c);
    ASSERT_NE(pages, nullptr);
    for (int page = 0; page < 5; page++) {
        pages->turn(page);
        checkShown(sounds, "sampler, page " + std::to_string(page));
    }
    CArp arp(host.get());
    arp.init();
    CArpWin pattern(*win, arp);
    checkShown(pattern, "arpeggiator");
    CEffect rack(host.get());
    rack.init();
    for (const int kind : {fxReverb, fxChorus, fxFilter}) rack.addProg(kind);
    CEffectWin chain(*win, rack);
    checkShown(chain, "rack");
    CTrack* drums = seq()->addTrack(trackDrum, seq()->getProg(), nullptr)->track;
    seq()->addStandardKit(drums);
    CDrumWin kit(*win, *drums);
    checkShown(kit, "kit");
}
