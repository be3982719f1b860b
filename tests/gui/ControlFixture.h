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
