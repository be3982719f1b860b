#pragma once

#include "gui/CGroup.h"

#include <functional>
#include <initializer_list>
#include <vector>

class CButton;

/// Buttons beside each other, of which one is on: the page that is shown. Interface thread.
class PageRow : public CGroup {
public:
    static constexpr int usualHeight = 32; ///< of one line

    std::function<void()> onTurned;

    PageRow(CWin* win, const CStr& name, const std::vector<CStr>& titles, int buttonWidth);

    void fit(int width); ///< on as many lines as it takes; takes their height
    int page() const { return current; }
    void turn(int page); ///< tells `onTurned`, but for the page that it is

private:
    void clicked(CObject* sender);

    std::vector<CButton*> buttons; ///< among the controls
    int current = 0;
};
