#include "panels/sampler/FrameField.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "instruments/CSampleClip.h"
#include "instruments/SampleValues.h"
#include "ui/SettingName.h"

#include <algorithm>

namespace {

constexpr double wholeTravel = 600.0; ///< pixels from the first frame to the last

} // namespace

FrameField::FrameField(CWin* owner, ValueDoor* through, CSampleClip* of, int which,
                       std::function<bool()> lives)
    : CStoredCtrl(owner, sampleMark(of, which).kind->name, through, 0, 0, usualWidth, usualHeight),
      clip(of), mark(which), alive(std::move(lives)) {
    whole = true;
    usual = 0.0;
    spokenName = id + ", frames";
    value = [this] { return alive() ? std::optional(sampleMark(clip, mark)) : std::nullopt; };
    text = [this] { return asStr(asRound(sampleMark(clip, mark).get()[0])); };
    typedValue = [](double entered) { return entered; };
    menu = [](CPopup*) {};
    refresh();
}

bool FrameField::refresh() {
    if (alive()) {
        most = std::max(1, int(clip->frames) - 1);
        if (mark == sampleEnd) usual = most;
    }
    return CStoredCtrl::refresh();
}

double FrameField::along(const DragPoint& point) const {
    return (point.at.x - point.anchor.x) + (point.anchor.y - point.at.y);
}

double FrameField::travel() const {
    return wholeTravel;
}

void FrameField::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    paintSettingName(g, colours, id, width);
    const CRect box = asRect(0, settingNameHeight + 4, width, height - 2);
    g->fillRound(colours.window, box);
    g->frameRound(held() || hasKeyFocus() ? colours.accent : colours.frame, box);
    if (typing())
        paintTyping(g, asRect(box.left + 1, box.top + 1, box.right - 1, box.bottom - 1));
    else
        g->drawText(colours.text, told(), box, 0);
}
