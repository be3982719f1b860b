#include "ControlFixture.h"

#include "base/Messages.h"
#include "gui/CBitmap.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/MessageBox.h"

#include <X11/Xlib.h>
#include <X11/extensions/XRes.h>
#include <X11/keysym.h>
#include <malloc.h>

#include <cstdlib>

namespace {

/// How often each kind is opened; SONDRAVA_OPENS makes a long proof of it.
int openCount() {
    const char* wanted = std::getenv("SONDRAVA_OPENS");
    return wanted ? std::atoi(wanted) : 100;
}

/// What our side of the connection holds.
struct Holdings {
    int resources = 0;             ///< windows, contexts, pixmaps, cursors on the server
    unsigned long pixmapBytes = 0; ///< on the server
    size_t heapBytes = 0;

    Holdings() {
        XSync(liveDisplay(), False);
        const XID ours = xConnection().cursors[1];
        int count = 0;
        XResType* types = nullptr;
        XResQueryClientResources(liveDisplay(), ours, &count, &types);
        for (int i = 0; i < count; i++) resources += int(types[i].count);
        if (types) XFree(types);
        XResQueryClientPixmapBytes(liveDisplay(), ours, &pixmapBytes);
        heapBytes = mallinfo2().uordblks;
    }
};

int errors = 0; ///< of the server

class OpensTest : public LoopTest {
protected:
    void SetUp() override {
        LoopTest::SetUp();
        if (!usable()) return;
        installMessageBox(app.get());
        errors = 0;
        formerHandler = XSetErrorHandler([](Display*, XErrorEvent*) { return ++errors; });
    }
    void TearDown() override {
        messageHooks().showMsg = nullptr;
        XSetErrorHandler(formerHandler);
        LoopTest::TearDown();
    }

public:
    /// Goes with a window inside it, which outlives it.
    void window() {
        auto second = std::make_unique<CWin>(app.get(), win.get(), "second", 400, 100, 150, 100,
                                             winCaption | winSizable | winMaxButton | winMinButton);
        second->addControl(new CButton(second.get(), "button", "Button", 10, 10, 60, 20));
        CWin inside(app.get(), second.get(), "inside", 10, 50, 50, 30, winChild | winNoBorder);
        second->show(true);
        inside.show(true);
        settle();
        second.reset();
    }
    void menu() {
        auto* popup = new CPopup(app.get(), win.get());
        popup->autoDelete = true;
        popup->addSub("More")->add("Inner", nullptr);
        popup->add("Last", nullptr);
        soon([this] {
            for (const KeySym symbol : {XK_Right, XK_Escape, XK_Escape}) key(symbol);
        });
        popup->popup(300, 300, true);
    }
    void message() {
        whenFocused([this] { key(XK_Return); });
        showMsg(win.get(), "Title", "A question?", mbYes | mbNo);
    }
    /// A message in a message, and a menu with a sub-menu in that.
    void nested() {
        whenFocused([this] {
            whenFocused([this] {
                menu();
                key(XK_Return);
            });
            showMsg(app->modalWin, "Title", "A second question?", mbYes | mbNo);
            key(XK_Return);
        });
        showMsg(win.get(), "Title", "A question?", mbYes | mbNo);
    }
    void repeat(void (OpensTest::*open)(), int times) {
        for (int i = 0; i < times; i++) {
            (this->*open)();
            clock->log.clear();
        }
    }

private:
    XErrorHandler formerHandler = nullptr;

    void soon(const std::function<void()>& act) {
        steps.push_back(act);
        app->addTimer(clock, CApp::turnMs, true);
    }
    /// When a further modal window has the focus.
    void whenFocused(const std::function<void()>& act) { awaitFocus(app->modalWin, act); }
    void awaitFocus(CWin* former, const std::function<void()>& act) {
        soon([=, this] {
            if (app->modalWin != former && app->modalWin->hasFocus())
                act();
            else
                awaitFocus(former, act);
        });
    }
    /// To the window that has the keys, by way of the server.
    void key(KeySym symbol) const {
        const CWin* target = app->topMenu ? app->topMenu : app->modalWin;
        if (!target) return;
        XEvent event{};
        event.xkey.type = KeyPress;
        event.xkey.window = target->handle;
        event.xkey.keycode = XKeysymToKeycode(liveDisplay(), symbol);
        XSendEvent(liveDisplay(), target->handle, False, KeyPressMask, &event);
    }
};

} // namespace

TEST_F(OpensTest, LeaveNothingBehind) {
    constexpr int warmUp = 20;
    constexpr size_t noise = 8192; // bytes of the heap, however often
    const struct {
        const char* name;
        void (OpensTest::*open)();
    } kinds[] = {{"window", &OpensTest::window},
                 {"menu", &OpensTest::menu},
                 {"message", &OpensTest::message},
                 {"nested", &OpensTest::nested}};
    app->backBuffer =
        std::make_unique<CBitmap>(800, 600); // it grows with what happens to be painted
    for (const auto& kind : kinds) {
        repeat(kind.open, warmUp);
        const Holdings before;
        repeat(kind.open, openCount());
        settle();
        const Holdings after;
        EXPECT_EQ(after.resources, before.resources) << kind.name;
        EXPECT_EQ(after.pixmapBytes, before.pixmapBytes) << kind.name;
        EXPECT_LE(after.heapBytes, before.heapBytes + noise) << kind.name;
        RecordProperty(std::string(kind.name) + " resources", after.resources);
        RecordProperty(std::string(kind.name) + " heap growth",
                       int(after.heapBytes - before.heapBytes));
    }
    EXPECT_EQ(errors, 0);
    EXPECT_TRUE(app->menus.empty() && app->windows.getCount() == 1 && !app->modalWin);
}
