#pragma once

#include "gui/CApp.h"
#include "gui/CWin.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// An X server without a screen, for as long as the object lives.
class TestServer {
public:
    explicit TestServer(const std::vector<std::string>& options = {});
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    std::string display; ///< empty when it did not start
    void kill();         ///< at once, as in a crash

private:
    int pid = 0;
};

std::vector<std::string> split(const std::string& line); ///< at blanks

/// Tests with an application on a server of 800 x 600 pixels without a window manager.
class GuiTest : public testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    /// A window at (100, 100) without caption and border, with the focus, painted.
    std::unique_ptr<CWin> bareWindow(int width = 200, int height = 150);
    /// Carries out a command of xdotool and handles the events that it makes.
    void act(const std::vector<std::string>& words);
    void xdo(const std::string& line) { act(split(line)); } ///< the same from one line
    /// Runs the loop until the condition holds; false when three seconds were not enough.
    bool pumpUntil(const std::function<bool()>& condition);
    void settle(); ///< handles all events that the server has for us
    bool usable() const { return app != nullptr; }
    void reopen(int percent); ///< a new application, at another scale

    std::unique_ptr<CApp> app;
    static std::unique_ptr<TestServer> server;
};

/// Runs an outside program with these words as its arguments; its exit status.
int runCommand(const std::vector<std::string>& words);
int xdotool(const std::string& line); ///< a line of it, without handling any events

/// What a drawable shows.
class Shot {
public:
    Shot(unsigned long drawable, int width, int height);
    explicit Shot(const CBitmap& bitmap); ///< all of it, in device pixels
    int at(int x, int y) const;           ///< pixel value; -1 outside
    /// The smallest rectangle around all pixels of a colour.
    CRect boundsOf(int color) const;
    int count(int color) const;

private:
    int width, height;
    std::vector<int> pixels;
};

/// A control that notes what reaches it.
class ProbeCtrl : public CCtrl {
public:
    using CCtrl::CCtrl;
    std::vector<std::string> log;
    std::function<void()> onUp, onTick;
    int fill = 0, paints = 0;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override { note("down", x, y, btn); }
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void onTimer() override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void mouseOver(bool enter, int x, int y) override;
    void setFocus(bool on) override { log.emplace_back(on ? "focus" : "blur"); }
    bool saw(const std::string& entry) const;
    std::string last() const { return log.empty() ? "" : log.back(); }

private:
    void note(const char* what, int x, int y, int btn);
};

/// Delegates from a lambda, as long as the target object lives.
class Target : public CObject {
public:
    std::function<void()> act;
    CObject* sender = nullptr; ///< of the last call, as the next two
    CPoint at;                 ///< of the mouse and the wheel
    int dy = 0;                ///< of the wheel
    bool takes = false;        ///< what keys and the wheel are answered

    explicit Target(std::function<void()> action) : act(std::move(action)) {}
    COnChange* change() { return new _COnChange<Target>(this, &Target::changed); }
    COnMouse* mouse() { return new _COnMouse<Target>(this, &Target::moused); }
    COnKey* key() { return new _COnKey<Target>(this, &Target::keyed); }
    COnWheel* wheel() { return new _COnWheel<Target>(this, &Target::turned); }

private:
    void changed(CObject* from) { moused(from, 0, 0, 0); }
    void moused(CObject* from, int x, int y, int) {
        sender = from;
        at = asPoint(x, y);
        act();
    }
    bool keyed(CObject* from, int&, int) {
        changed(from);
        return takes;
    }
    bool turned(CObject* from, int x, int y, int, int turn, int) {
        dy = turn;
        return moused(from, x, y, 0), takes;
    }
};
