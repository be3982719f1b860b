#pragma once

#include "gui/CGroup.h"
#include "panels/Compare.h"

class CButton;
class ValueDoor;

/// Buttons for the states A and B of what a panel shows, and a slider for what lies between.
/// Interface thread.
class CompareBar : public CGroup {
public:
    static constexpr int usualWidth = 208;

    /// The states last as long as `subject` tells the same.
    CompareBar(CWin* win, ValueDoor& door, Compare::Values values,
               std::function<const void*()> subject);
    ~CompareBar() override;

    void resized() override;
    void refresh(); ///< follows what it is about

private:
    class Slider;
    void sideClicked(CObject* sender);

    Compare compare;
    std::function<const void*()> subject;
    const void* shown;
    CButton* sides[2]; ///< among the controls, as the next
    Slider* slider;
};
