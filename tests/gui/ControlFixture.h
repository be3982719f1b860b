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
    void at(int x, int y, const std::vector<std::string>& then) {
        std::vector<std::string> words = {"mousemove", std::to_string(100 + x),
                                          std::to_string(100 + y)};
        words.insert(words.end(), then.begin(), then.end());
        act(words);
    }

    std::unique_ptr<CWin> win;
    int changes = 0;
    Target counter{[this] { changes++; }};
};

using Words = std::vector<std::string>;

/// A window whose timer carries out commands while the loop of a menu or dialog runs.
class LoopTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        if (!usable()) return;
        win = bareWindow();
        clock = new ProbeCtrl(win.get(), "clock", 0, 0, 1, 1);
        win->addControl(clock);
        clock->onTick = [this] {
            if (steps.empty()) return;
            const std::function<void()> step = steps.front();
            steps.erase(steps.begin());
            step();
        };
    }
    void TearDown() override {
        win.reset();
        GuiTest::TearDown();
    }
    void later(const Words& words) {
        steps.push_back([words] {
            Words command = {"xdotool"};
            command.insert(command.end(), words.begin(), words.end());
            runCommand(command);
        });
        app->addTimer(clock, 30, true);
    }
    void later(const std::function<void()>& step) {
        steps.push_back(step);
        app->addTimer(clock, 30, true);
    }
    /// Asks again at each tick until the condition holds, 100 times at most.
    void whenever(const std::function<bool()>& condition, const std::function<void()>& step,
                  int patience = 100) {
        later([=, this] {
            if (condition() || patience == 0)
                step();
            else
                whenever(condition, step, patience - 1);
        });
    }

    std::unique_ptr<CWin> win;
    ProbeCtrl* clock = nullptr;
    std::vector<std::function<void()>> steps;
};
