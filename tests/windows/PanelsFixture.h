#pragma once

#include "MainFixture.h"

#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/GraphHold.h"
#include "instruments/CSampler.h"
#include "shell/Pages.h"

/// Panels of instruments and effects under the mouse and the keys: what is left in the component.
class PanelsFixture : public MainWinTest {
protected:
    template <class T = CCtrl>
    T* find(const char* id, int number = 0) {
        return static_cast<T*>(search(page->clientGroup, id, number));
    }
    static CCtrl* search(CGroup* in, const char* id, int& number) {
        for (auto* c : in->controls) {
            if (!c->visible) continue;
            if (c->id == id && number-- == 0) return c;
            if (c->category != catGroup && c->category != catGroupLike) continue;
            if (CCtrl* found = search(static_cast<CGroup*>(c), id, number)) return found;
        }
        return nullptr;
    }
    void mouseTo(CCtrl* c, int x, int y) {
        settle();
        const CPoint screen = c->win->getPos(true), in = c->win->controlPos(c);
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    }
    static void comeIntoView(CCtrl* c) {
        if (c->visibleRect().height() == c->height) return;
        c->win->setKeyCtrl(c);
        c->win->setKeyCtrl(nullptr);
    }
    void click(const char* id, int number = 0) {
        CCtrl* c = find(id, number);
        ASSERT_NE(c, nullptr) << id;
        comeIntoView(c);
        mouseTo(c, c->width / 2, c->height / 2);
        act({"click", "1"});
        ASSERT_TRUE(loaded());
    }
    void drag(CCtrl* c, CPoint from, CPoint to, bool escape = false) {
        if (c->tabStop) comeIntoView(c);
        mouseTo(c, from.x, from.y);
        act({"mousedown", "1"});
        mouseTo(c, (from.x + to.x) / 2, (from.y + to.y) / 2);
        mouseTo(c, to.x, to.y);
        if (escape) key("Escape");
        act({"mouseup", "1"});
        ASSERT_TRUE(loaded());
    }
    /// Opens a menu by a button and takes the entry that so many keys lead to.
    void choose(const char* id, std::vector<std::string> keys) {
        inMenu(keys);
        click(id);
    }
    void undo() {
        key("ctrl+z");
        ASSERT_TRUE(loaded());
    }
    void open(CComp* comp) {
        win->move(0, 0, 800, 590);
        win->openEditor(comp);
        ASSERT_TRUE(pumpUntil([&] { return win->pages->editorOf(comp) != nullptr; }));
        ASSERT_TRUE(loaded());
        page = win->pages->editorOf(comp);
        settle();
    }
    CSampler* sampler() { return static_cast<CSampler*>(host->firstOfType(compSampler)); }
    CSound* sound(int index = 0) { return sampler()->getLayer()->sounds.items(index); }
    CEffect* rack() {
        CSampler* s = sampler();
        auto* made = static_cast<CEffect*>(addInsert(s->output(), fxDelay, -1));
        EXPECT_TRUE(loaded());
        return made;
    }

    /// Whether a note is on its way to a track, or sounds there.
    bool heard(CTrack* track) {
        CMIDIQ queue(track);
        const GraphHold hold(host.get());
        track->preview.process(&queue, 1.0, 20.0);
        const bool any = queue.count > 0;
        track->preview.mute();
        track->preview.process(&queue, 1.0, 20.0);
        return any;
    }

    CCompEditor* page = nullptr;
};
