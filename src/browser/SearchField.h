#pragma once

#include "gui/controls/CEdit.h"

#include <functional>

/// The field in which the browser is asked. Interface thread.
class SearchField : public CEdit {
public:
    std::function<void()> onTyped;  ///< another text
    std::function<void()> onAccept; ///< Return, or Down, which leads to what was found
    std::function<void()> onLeave;  ///< Escape

    explicit SearchField(CWin* win);

    void paint(CGraphic* g, CRect rect) override;
    bool keyDown(int key, int mods) override;
    bool enterText(const std::string& to) override;
};
