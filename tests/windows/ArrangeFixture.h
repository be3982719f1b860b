#pragma once

#include "MainFixture.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeView.h"
#include "arrange/HeadList.h"
#include "arrange/RulerBars.h"
#include "arrange/TrackHead.h"
#include "gui/Peer.h"
#include "gui/Selections.h"
#include "sequencer/edit/MoveEdits.h"
#include "shell/Pages.h"

#include <thread>

/// The arrangement on its page, under the mouse and the keys of a user.
class ArrangeFixture : public MainWinTest {
protected:
    CCompEditor* page() { return win->pages->editorOf(seq()); }
    template <class T>
    T* find(const char* id, CGroup* group = nullptr) {
        for (auto* c : (group ? group : page()->clientGroup)->controls) {
            if (c->id == id) return static_cast<T*>(c);
            if (c->id != "song" && c->id != "heads") continue;
            if (T* found = find<T>(id, static_cast<CGroup*>(c))) return found;
        }
        return nullptr;
    }
    ArrangeView* song() { return find<ArrangeView>("song"); }
    ArrangeGrid* grid() { return find<ArrangeGrid>("grid"); }
    CSongTrack* row(int i) { return seq()->getProg()->tracks.items(i); }
    CPart* part(int track, int index) { return row(track)->parts.items(index); }
    int parts(int track) { return row(track)->parts.getCount(); }
    int selectedRow() {
        for (int i = 0; i < tracks(); i++)
            if (row(i)->track->selected()) return i;
        return -1;
    }

    /// A song of empty tracks of these kinds, whose window is all on the screen.
    void startWith(std::initializer_list<TrackKind> kinds) {
        start();
        ASSERT_TRUE(load(kindEmpty));
        for (const TrackKind kind : kinds) seq()->addTrack(kind, seq()->getProg(), nullptr);
        seq()->songNotices.raise(SeqNotice::tracks);
        win->move(0, 0, 900, 560);
        ASSERT_TRUE(loaded());
        settle();
    }
    CPart* addPart(int track, int pos, int length) {
        CPart* made = insertPart(seq(), row(track), PartPlace{pos, length});
        EXPECT_TRUE(loaded());
        seq()->unselectParts();
        return made;
    }

    void drop(const std::string& path, CCtrl* onto, int x, int y) {
        app->startDrag(nullptr);
        auto* item = new CDropItem("", dropFile);
        item->path = path.c_str();
        app->dragList->add(item);
        const CPoint in = onto->win->controlPos(onto);
        onto->win->dropAt(in.x + x, in.y + y, modLeft);
        app->endDrag();
    }
    /// Goes over a point of the screen with files, and drops them or leaves. `then` is called while
    /// they hover.
    void dragTo(const std::vector<std::string>& paths, CPoint at, const std::string& held = "",
                bool drops = true, const std::function<void()>& then = {}) {
        if (!held.empty()) act({"keydown", held});
        std::string list;
        for (const std::string& path : paths) list += "file://" + path + "\r\n";
        std::atomic<int> stage{0};
        std::thread manager([&, target = win->handle] {
            Peer peer;
            peer.answer = [&list](Peer& p, const XSelectionRequestEvent& e) { p.put(e, list); };
            peer.own("XdndSelection");
            const long self = long(peer.window);
            std::vector<long> data;
            peer.send(target, "XdndEnter",
                      {self, 5L << 24, long(peer.atom("text/uri-list")), 0, 0});
            peer.send(target, "XdndPosition",
                      {self, 0, long(at.x) << 16 | at.y, 0, long(peer.atom("XdndActionCopy"))});
            EXPECT_TRUE(peer.await("XdndStatus", data) && (data[1] & 1));
            for (stage = 1; stage == 1;) usleep(1000);
            peer.send(target, drops ? "XdndDrop" : "XdndLeave", {self, 0, 0, 0, 0});
            EXPECT_TRUE(!drops || peer.await("XdndFinished", data));
            stage = 3;
        });
        EXPECT_TRUE(pumpUntil([&] { return stage == 1; }) && loaded());
        if (then) then();
        stage = 2;
        EXPECT_TRUE(pumpUntil([&] { return stage == 3; }));
        manager.join();
        if (!held.empty()) act({"keyup", held});
        EXPECT_TRUE(loaded());
    }
    /// A second of a tone, in any format that the ending tells.
    std::string tone(const std::string& name) {
        const std::string path = at(name);
        EXPECT_EQ(
            runCommand({"sox", "-n", "-r", "44100", "-c", "1", path, "synth", "1", "sine", "440"}),
            0);
        return path;
    }

    // Points of the grid.
    int xOf(double tick) { return int(tick * song()->zoomNow() / 960.0 + 0.5); }
    int yOf(int track) { return track * CTrack::usualRow + CTrack::usualRow / 2; }
    int scrolled() { // pixels, from the time at the left edge
        return xOf(song()->tickAt(TrackHead::headWidth + 1));
    }
    void mouseTo(CCtrl* ctrl, int x, int y) {
        const CPoint screen = ctrl->win->getPos(true), in = ctrl->win->controlPos(ctrl);
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    }
    static void focus(CCtrl* ctrl) { ctrl->win->setKeyCtrl(ctrl); }
    void mouseTo(CPoint at) { mouseTo(grid(), at.x, at.y); }
    CPoint point(double tick, int track) { return asPoint(xOf(tick), yOf(track)); }
    void clickAt(CPoint at, const char* button = "1") {
        mouseTo(at);
        act({"click", button});
    }
    /// Presses at one point, goes to the other in steps, and releases unless `escape`.
    void drag(CPoint from, CPoint to, const std::string& held = "", bool escape = false,
              const char* button = "1") {
        mouseTo(from);
        if (!held.empty()) act({"keydown", held});
        act({"mousedown", button});
        mouseTo(asPoint((from.x + to.x) / 2, (from.y + to.y) / 2));
        mouseTo(to);
        if (escape) key("Escape");
        act({"mouseup", button});
        if (!held.empty()) act({"keyup", held});
        EXPECT_TRUE(loaded());
    }
};
