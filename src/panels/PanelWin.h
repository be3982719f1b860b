#pragma once

#include "panels/CompareBar.h"
#include "panels/MacroRow.h"
#include "panels/ProgramBar.h"
#include "ui/CCompEditor.h"

#include <optional>
#include <vector>

class PanelBody;
class Workspace;

/// A window that edits the settings of a component: the bar of its programs, and below what the
/// current one, or the component itself, is made of. What it shows is made anew when something of
/// that comes or goes. Interface thread.
class PanelWin : public CCompEditor {
public:
    /// Without `deeds` it has no bar, and without `macros` none of these.
    PanelWin(Workspace& workspace, CComp& comp, const CRect& place,
             std::optional<ProgramBar::Deeds> deeds, std::optional<MacroLook> macros = {});

    void idle() override;

protected:
    /// What the content is made of, to be compared only.
    struct Shape {
        std::vector<const void*> objects;
        std::vector<int> choices; ///< of pages
        bool operator==(const Shape&) const = default;
    };

    Workspace& workspace;
    PanelBody* body;
    MacroRow* macros = nullptr; ///< among the controls; null without

    int contentTop() const { return contentFrom; } ///< below the bar and the macros

    virtual Shape shape() const = 0;
    virtual void build() = 0;           ///< fills the inner group of the body, which is empty
    virtual void arrange(int wide) = 0; ///< lays that out
    virtual void refresh() = 0;         ///< takes the present values
    void follow();                      ///< makes the content anew if its shape has changed
    /// Offers two states of these settings to compare, as long as they are of the same `subject`.
    void compare(Compare::Values values, std::function<const void*()> subject);

private:
    ProgramBar* bar = nullptr; ///< among the controls, as the next
    CompareBar* comparing = nullptr;
    int contentFrom = 0;
    Shape shown;
};
