#pragma once

#include "TestServer.h"

/// A window of 200 by 150 at (100, 100) for controls; `changes` counts what they report.
class ControlTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (usable()) win = bareWindow();
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    template <class T>
    T* add(T* ctrl) {
        win->addControl(ctrl);
        ctrl->onChange = counter.change();
        win->resized();
        settle();
        return ctrl;
    }
    /// Moves the pointer to a point of the window, and does more there.
    void at(int x, int y, const std::string& then = "") {
        xdo("mousemove " + std::to_string(100 + x) + " " + std::to_string(100 + y) + " " + then);
    }

    std::unique_ptr<CWin> win;
    int changes = 0;
    Target counter{[this] { changes++; }};
};

/// A window whose timer carries out commands while the loop of a menu or dialog runs.
class LoopTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!usable()) return;
        win = bareWindow();
        clock = new ProbeCtrl(win.get(), "clock", 0, 0, 1, 1);
        win->addControl(clock);
        clock->onTick = [this] { nextStep(); };
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    void later(const std::function<void()>& step) {
        steps.push_back(step);
        app->addTimer(clock, 30, true);
    }
    void later(const std::string& line) {
        later([line] { xdotool(line); });
    }
    /// When there are none for three seconds, what is open is closed: a test must not hang.
    void nextStep() {
        if (steps.empty() && ++waited < 100) return;
        waited = 0;
        if (steps.empty()) {
            app->killMenu(nullptr);
            if (app->modalWin) app->modalWin->hide();
            return;
        }
        const std::function<void()> step = steps.front();
        steps.erase(steps.begin());
        step();
    }
    /// Asks again at each tick until the condition holds, 100 times at most.
    void whenever(const std::function<bool()>& condition, const std::function<void()>& step,
                  int patience = 100) {
        later([=, this] { await(condition, step, patience); });
    }
    void await(const std::function<bool()>& condition, const std::function<void()>& step,
               int patience) {
        if (condition() || patience == 0) return step();
        steps.insert(steps.begin(), [=, this] { await(condition, step, patience - 1); });
    }

    std::unique_ptr<CWin> win;
    ProbeCtrl* clock = nullptr;
    std::vector<std::function<void()>> steps;
    int waited = 0; ///< ticks without a step
};
