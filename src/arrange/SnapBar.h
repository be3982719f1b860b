#pragma once

#include "gui/CGroup.h"

#include <array>

class ArrangeState;
class CButton;

/// The grid that edits come to: on or off, absolute or relative, triplet, dotted, and its
/// resolution, which may follow the zoom. Interface thread.
class SnapBar : public CGroup {
public:
    static constexpr int barWidth = 406, barHeight = 26;

    SnapBar(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< whether another grid shows

private:
    static constexpr int switches = 5, resolutions = 7;

    CButton* add(const char* name, const char* text, const char* hint, int wide);
    void clicked(CObject* sender);

    ArrangeState& state;
    std::array<CButton*, switches + resolutions> buttons{};
    int nextX = 4;
};
