#include "ui/CListWin.h"

#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CDialogWin.h"

namespace {

constexpr int contentWidth = 520, contentHeight = 320, textHeight = 20;
constexpr int listTop = CDialogWin::margin + textHeight + CDialogWin::gap;

class CListWin : public CDialogWin {
public:
    CListWin(CWin* owner, const CStr& title, const CStr& heading, const std::vector<CStr>& lines)
        : CDialogWin(owner, title, contentWidth, contentHeight) {
        const int wide = clientGroup->width - 2 * margin;
        addControl(new CLabel(this, heading, margin, margin, wide, textHeight));
        addButton("OK");
        const int below = clientGroup->height - contentBottom() + gap;
        auto* list = new CListbox(this, "list", margin, listTop, wide,
                                  clientGroup->height - below - listTop);
        list->spokenName = heading;
        for (const CStr& line : lines) list->add(line);
        addControl(list);
        list->setAlign(alignWidth | alignHeight, margin, below);
        startCtrl = list;
    }
};

} // namespace

void showList(CWin* owner, const CStr& title, const CStr& heading, const std::vector<CStr>& lines) {
    if (lines.empty()) return;
    CListWin window(owner, title, heading, lines);
    window.showModal();
}
