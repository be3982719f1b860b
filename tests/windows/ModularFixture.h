#pragma once

#include "MainFixture.h"

#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "gui/Selections.h"
#include "modular/GraphEdits.h"
#include "modular/ModularView.h"
#include "shell/Pages.h"

/// The canvas of the graph, under the mouse and the keys of a user.
class ModularFixture : public MainWinTest {
protected:
    /// Devices and nothing else, on the first page; the canvas is all on the screen.
    void startModular() {
        start();
        ASSERT_TRUE(load(kindModular));
        win->move(0, 0, 900, 640);
        win->runAction(win->getAction("modular"));
        ASSERT_TRUE(loaded());
        settle();
        view()->zoomTo(1, {});
        view()->scroll(0, 0);
    }
    ModularView* view() { return find<ModularView>("modular"); }
    template <class T>
    T* find(const char* id, CGroup* group = nullptr) {
        for (auto* c : (group ? group : win->clientGroup)->controls) {
            if (c->id == id) return static_cast<T*>(c);
            if (c->category != catGroup) continue;
            if (T* found = find<T>(id, static_cast<CGroup*>(c))) return found;
        }
        return nullptr;
    }
    CComp* comp(const char* name) {
        for (auto* c : host->comps)
            if (c->id == name) return c;
        return nullptr;
    }
    /// Adds a component at a place of the graph.
    CComp* add(int type, int x, int y) {
        CComp* made = addComp(host.get(), type, asPoint(x, y));
        refresh();
        return made;
    }
    void refresh() {
        EXPECT_TRUE(loaded());
        settle();
    }
    std::string undoName() { return host->undoText().asChar(); }
    void undo() {
        host->undoClicked();
        refresh();
    }

    CPoint middleOf(const CComp* c) {
        const auto& area = view()->graph().boxes[size_t(view()->graph().boxOf(c))].area;
        return asPoint((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    }
    CPoint portAt(const CIO* io) {
        return view()->graph().ports[size_t(view()->graph().portOf(io))].centre();
    }
    CPoint cableAt(const CObject* cable) {
        const auto& graph = view()->graph();
        const auto at = curveOf(graph, graph.cables[size_t(graph.cableOf(cable))]).at(0.5);
        return asPoint(int(at.x), int(at.y));
    }
    void mouseTo(CPoint ofGraph) {
        const CPoint screen = win->getPos(true), in = win->controlPos(view());
        const CPoint at = view()->toControl(ofGraph);
        act({"mousemove", std::to_string(screen.x + in.x + at.x),
             std::to_string(screen.y + in.y + at.y)});
    }
    void click(CPoint at, const char* button = "1") {
        mouseTo(at);
        act({"click", button});
        refresh();
    }
    /// Opens the context menu and chooses by these keys.
    void menuAt(CPoint at, const std::vector<std::string>& keys) {
        inMenu(keys);
        click(at, "3");
        EXPECT_TRUE(pumpUntil([this] { return app->menus.empty(); }));
        refresh();
    }
    void drag(CPoint from, CPoint to, const std::string& held = "", bool escape = false) {
        mouseTo(from);
        if (!held.empty()) act({"keydown", held});
        act({"mousedown", "1"});
        mouseTo(asPoint((from.x + to.x) / 2, (from.y + to.y) / 2));
        mouseTo(to);
        if (escape) key("Escape");
        act({"mouseup", "1"});
        if (!held.empty()) act({"keyup", held});
        refresh();
    }
    void dropAFile(const std::string& path, CPoint inView) {
        app->startDrag(nullptr);
        auto* item = new CDropItem("", dropFile);
        item->path = path.c_str();
        app->dragList->add(item);
        const CPoint in = win->controlPos(view());
        win->dropAt(in.x + inView.x, in.y + inView.y, modLeft);
        app->endDrag();
        refresh();
    }
    int audioCables(CComp* to) { return to->audioCables.getCount(); }
    int midiCables(CComp* to) { return to->midiCables.getCount(); }
    CComp* out() { return host->getAudioOut(); }
};
