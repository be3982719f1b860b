#include "MixerFixture.h"
#include "ProjectMask.h"
#include "SentEvents.h"

#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CMixer.h"
#include "engine/MixScene.h"

/// Whatever is done in the mixer.
class MixerRandomTest : public MixerFixture {};

TEST_F(MixerRandomTest, RandomGesturesCanBeUndone) {
    startWith(4);
    unsigned seed = 7;
    const auto upTo = [&seed](int n) {
        seed = seed * 1664525u + 1013904223u;
        return int((seed >> 16) % unsigned(n));
    };
    const auto content = [this] {
        host->settle();
        host->idle();
        return projectContent(host.get(), &mixer());
    };
    const auto where = [&](const std::string& other) {
        const std::string now = content();
        size_t at = 0;
        while (at < now.size() && at < other.size() && now[at] == other[at]) at++;
        return blockAt(now, at);
    };
    const std::string first = content();
    const int begun = host->undoIndex;
    const unsigned held[] = {0, 0, 0, ShiftMask, ControlMask};
    const KeySym keys[] = {XK_Delete, XK_Prior, XK_Next, XK_Home,
                           XK_Right,  XK_Down,  XK_5,    XK_Return};
    for (int i = 0; i < 10000 && !HasFailure(); i++) {
        SentEvents hand(app.get());
        hand.held = held[upTo(5)];
        panel()->follow();
        const auto& strips = panel()->strips();
        CMixerStrip* strip = strips[size_t(upTo(int(strips.size())))];
        COutputChannel* ch = strip->strip().channel;
        std::vector<CCtrl*> targets;
        for (CCtrl* c : strip->stops()) // what opens menus would wait
            if (!(c->id == "insert") && !(c->id == "source") && !(c->id == "target") &&
                !(c->id == "eq"))
                targets.push_back(c);
        CCtrl* target = targets[size_t(upTo(int(targets.size())))];
        const CPoint in = page()->controlPos(target);
        const CPoint middle = asPoint(in.x + target->width / 2, in.y + target->height / 2);
        if (page()->controlAtPos(middle.x, middle.y) != target) continue; // out of view
        const auto place = [&] {
            return asPoint(in.x + upTo(target->width + 20) - 10,
                           in.y + upTo(target->height + 60) - 30);
        };
        const int what = upTo(16);
        if (what < 8) {
            hand.press(page(), middle, Button1);
            for (int k = upTo(4); k > 0; k--) hand.move(page(), place());
            if (upTo(6) == 0) hand.key(win.get(), XK_Escape);
            hand.release(page(), place(), Button1);
        } else if (what < 10) {
            hand.held = ControlMask;
            hand.wheel(page(), middle, upTo(2) ? Button4 : Button5);
        } else if (what < 11) {
            page()->setKeyCtrl(target);
            hand.held = 0;
            hand.key(win.get(), keys[upTo(8)]);
        } else if (what < 13) {
            auto* insert = ch->inserts.first();
            auto* other = strips[size_t(upTo(int(strips.size())))]->strip().channel;
            if (!insert)
                addInsert(ch, upTo(effectKindCount), 0);
            else if (upTo(3))
                upTo(2) ? void(moveInsert(ch, insert, other, upTo(3)))
                        : void(copyInsert(insert, other, -1));
            else
                removeInsert(ch, insert);
        } else if (what < 14) {
            const char* const actions[] = {"addsend", "addgroup", "groupstrips", "unsolo",
                                           "solosafe"};
            if (strips.size() < 12) win->runAction(win->getAction(actions[upTo(5)]));
        } else if (what < 15) {
            upTo(2) ? panel()->scenes.compare(upTo(2)) : mixer().addScene();
        } else {
            win->runAction(win->getAction(upTo(3) ? "undo" : "redo"));
        }
        host->settle();
        host->idle();
        app->paintFrame();
    }
    host->values->end();
    const std::string last = content();
    const int end = host->undoIndex;
    EXPECT_GT(end - begun, 1000) << "hardly anything was done";
    while (host->undoIndex > begun) host->undoClicked(), host->settle();
    EXPECT_TRUE(content() == first) << where(first);
    while (host->undoIndex < end) host->redoClicked(), host->settle();
    EXPECT_TRUE(content() == last) << where(last);
}
