#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
class Workspace;

/// What stands in place of the parts while the song has no tracks: how to begin, with a button for
/// each way.
class EmptySong : public CGroup {
public:
    EmptySong(CWin* win, Workspace& workspace);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

private:
    void clicked(CObject* sender);

    Workspace& workspace;
    std::vector<CButton*> buttons; ///< among `controls`
};
