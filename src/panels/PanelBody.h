#pragma once

#include "gui/controls/CListbox.h"

#include <functional>

/// What an editing panel shows below its bar: content that is laid out for the width that there is,
/// and scrolled where it is higher than the window. Interface thread.
class PanelBody : public CScrollPanel {
public:
    std::function<void(int width)> arrange; ///< lays the children of `inner` out

    using CScrollPanel::CScrollPanel;
    void resized() override;
};
