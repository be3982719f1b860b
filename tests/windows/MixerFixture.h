#pragma once

#include "MainFixture.h"

#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "mixer/CMixerPanel.h"
#include "mixer/CMixerStrip.h"
#include "mixer/CMixerWin.h"
#include "sequencer/song/TrackInstrument.h"
#include "shell/Pages.h"

/// The mixer on its page, under the mouse and the keys of a user.
class MixerFixture : public MainWinTest {
protected:
    static constexpr int wide = 800, high = 590; ///< of the window

    CMixerWin* page() { return static_cast<CMixerWin*>(win->pages->editorOf(&win->flows->mixer)); }
    CMixerPanel* panel() { return page()->strips(); }
    CMixer& mixer() { return win->flows->mixer; }
    /// A song of audio tracks named "a", "b", ..., in front of which the mixer is opened.
    void startWith(int audioTracks) {
        start();
        ASSERT_TRUE(load(kindEmpty));
        for (int i = 0; i < audioTracks; i++)
            seq()->addTrack(trackAudio, seq()->getProg(), nullptr)->track->id =
                CStr(std::string(1, char('a' + i)).c_str());
        seq()->songNotices.raise(SeqNotice::tracks);
        win->move(0, 0, wide, high);
        key("F9");
        ASSERT_TRUE(pumpUntil([this] { return page() && !panel()->strips().empty(); }));
        ASSERT_TRUE(loaded());
        settle();
    }
    std::string names() {
        std::string all;
        for (const CMixerStrip* s : panel()->strips()) all += s->name().asChar() + std::string(" ");
        return all;
    }
    CMixerStrip* strip(const char* name) {
        for (CMixerStrip* s : panel()->strips())
            if (s->name() == name) return s;
        return nullptr;
    }
    COutputChannel* out(const char* name) { return strip(name)->strip().channel; }
    /// A control of a strip; of several with that name the one with this number.
    CCtrl* on(const char* name, const char* id, int number = 0) {
        for (auto* c : strip(name)->controls)
            if (c->id == id && number-- == 0) return c;
        return nullptr;
    }
    CButton* button(const char* id, int number = 0) {
        for (auto* c : page()->clientGroup->controls)
            if (c->id == "mixerbar")
                for (auto* b : static_cast<CGroup*>(c)->controls)
                    if (b->id == id && number-- == 0) return static_cast<CButton*>(b);
        return nullptr;
    }
    void mouseTo(CCtrl* ctrl, int x, int y) {
        const CPoint screen = ctrl->win->getPos(true), in = ctrl->win->controlPos(ctrl);
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    }
    void toMiddle(CCtrl* ctrl) { mouseTo(ctrl, ctrl->width / 2, ctrl->height / 2); }
    void clickOn(CCtrl* ctrl, const char* which = "1") {
        toMiddle(ctrl);
        act({"click", which});
        EXPECT_TRUE(loaded());
    }
    /// From about the middle of one to that of another, moved by so much. From another place each
    /// time, as two quick presses are a double click.
    void drag(CCtrl* from, CCtrl* to, int dx, int dy, const std::string& held = "",
              bool escape = false) {
        shift = shift ? 0 : 8;
        const int x = to->width / 2 + shift;
        mouseTo(from, from->width / 2 + shift, from->height / 2);
        act({"mousedown", "1"});
        if (!held.empty()) act({"keydown", held});
        mouseTo(to, x + dx / 2, to->height / 2 + dy / 2);
        mouseTo(to, x + dx, to->height / 2 + dy);
        if (escape) key("Escape");
        act({"mouseup", "1"});
        if (!held.empty()) act({"keyup", held});
        EXPECT_TRUE(loaded());
    }
    void focus(CCtrl* ctrl) { ctrl->win->setKeyCtrl(ctrl); }
    int steps() { return host->undoIndex + 1; }
    std::string inserts(const char* name) {
        std::string all;
        for (auto* c : out(name)->inserts) all += c->id.asChar() + std::string(" ");
        return all;
    }

private:
    int shift = 0; ///< pixels, of the latest drag
};
