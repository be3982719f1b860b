#include "panels/PageRow.h"

#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int gap = 8, high = 22;

} // namespace

PageRow::PageRow(CWin* owner, const CStr& name, const std::vector<CStr>& titles, int buttonWidth)
    : CGroup(owner, name, 0, 0, 1, usualHeight) {
    arrowsWalk = true;
    for (const CStr& title : titles) {
        auto* b = new CButton(owner, title, title, 0, 0, buttonWidth, high);
        b->skin = &clTrackControls;
        b->litSkin = &clTrackControlsPushed;
        b->tabStop = true;
        b->tag = int(buttons.size());
        b->onChange = new _COnChange<PageRow>(this, &PageRow::clicked);
        addControl(b);
        buttons.push_back(b);
    }
    buttons.front()->setLit(true);
    fit(int(titles.size()) * (buttonWidth + gap) + gap);
}

void PageRow::fit(int wide) {
    int x = gap, y = (usualHeight - high) / 2;
    for (CButton* b : buttons) {
        if (x > gap && x + b->width > wide - gap) {
            x = gap;
            y += high + gap / 2;
        }
        b->setBounds(x, y, b->width, high);
        x += b->width + gap / 2;
    }
    setBounds(left, top, wide, y + high + (usualHeight - high) / 2);
}

void PageRow::turn(int page) {
    if (page == current || page < 0 || page >= int(buttons.size())) return;
    current = page;
    for (CButton* b : buttons) b->setLit(b->tag == page);
    if (onTurned) onTurned();
}

void PageRow::clicked(CObject* sender) {
    turn(tagOf(sender));
}
