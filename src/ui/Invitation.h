#pragma once

#include "base/CStr.h"
#include "gui/CGroup.h"

#include <vector>

class CButton;
class Workspace;

/// What stands in place of content while there is none: how to begin, with a button for each way.
class Invitation : public CGroup {
public:
    struct Way {
        const char *action, *text;
    };

    Invitation(CWin* win, Workspace& workspace, const char* name);

    /// What it says and offers from now on; `title` is its name for a screen reader.
    void set(const CStr& title, const CStr& told, const std::vector<Way>& ways);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

private:
    void clicked(CButton* sender);

    Workspace& workspace;
    CStr title, told;
    std::vector<CButton*> buttons; ///< among `controls`
};
