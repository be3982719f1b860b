#include "arrange/LaneHead.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/RowLayout.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ParamUnit.h"
#include "engine/ValueDoor.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/CTrack.h"
#include "sequencer/song/LaneUnit.h"
#include "sequencer/song/TrackValues.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int nameLeft = 39, buttonTop = 4, buttonHeight = 18, bypassWidth = 54, closeWidth = 18;
constexpr int valueHeight = 15;
constexpr double sunken = 0.35; ///< of the window's colour in the ground

/// The cross that closes.
class CloseButton : public CButton {
public:
    using CButton::CButton;
    void paint(CGraphic* g, CRect rect) override {
        paintFace(g, rect);
        drawCloseButton(g, rect, faceColour());
    }
};

} // namespace

LaneHead::LaneHead(HeadList& owner, const ArrangeRow& row)
    : RowHead(owner, "lane", row),
      bypass(new CButton(win, "bypass", "Bypass", 0, buttonTop, bypassWidth, buttonHeight)),
      close(new CloseButton(win, "close", "", 0, buttonTop, closeWidth, buttonHeight)) {
    bypass->skin = &clTrackControls;
    bypass->litSkin = &clTrackControlsPushed;
    bypass->hint = "The lane is shown and edited, but not played";
    close->skin = &clTrackControls;
    close->hint = "Close the lane; its points stay and play on";
    bypass->onChange = new _COnChange<LaneHead>(this, &LaneHead::bypassClicked);
    close->onChange = new _COnChange<LaneHead>(this, &LaneHead::closeClicked);
    addControl(bypass);
    addControl(close);
    show(row);
}

void LaneHead::show(const ArrangeRow& row) {
    inset = indentOf(row);
    const int right = headWidth - gap;
    close->setBounds(right - closeWidth, buttonTop, closeWidth, buttonHeight);
    bypass->setBounds(close->left - gap - bypassWidth, buttonTop, bypassWidth, buttonHeight);
    shownName = lane->id;
    shownValue = valueNow();
    bypass->spokenName = "Bypass, " + shownName;
    close->spokenName = "Close, " + shownName;
}

/// Of what the lane moves; of a controller the one that was sent last.
CStr LaneHead::valueNow() const {
    const bool parameter = lane->target == targetParam && lane->object;
    const float value = parameter ? paramShare(lane->object, lane->param) : lane->lastValue.load();
    return value < 0.0f ? CStr() : unitOf(*lane).text(value);
}

void LaneHead::refresh() {
    const bool on = lane->bypass != 0, named = lane->id == shownName;
    const CStr value = valueNow();
    if (on == bypass->lit && named && value == shownValue) return;
    shownName = lane->id;
    shownValue = value;
    bypass->setLit(on);
    redraw();
}

void LaneHead::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = list.palette();
    g->fillRect(fadeCol(clTrack.fillCol, colours.window, sunken), clientRect());
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    const CRect name =
        asRect(nameLeft + inset, buttonTop, bypass->left - gap, buttonTop + buttonHeight);
    g->drawText(bypass->lit ? colours.dimText : colours.text, shownName, name, textLeft);
    const CRect value =
        asRect(nameLeft + inset, name.bottom, width - gap, name.bottom + valueHeight);
    if (value.bottom < height) g->drawText(colours.dimText, shownValue, value, textLeft);
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void LaneHead::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    if (onEdge(y)) return list.size(*this, {this, x, y, btn});
    list.choose(track, btn);
}

void LaneHead::bypassClicked(CObject*) {
    list.door()->set(bypassOf(lane), lane->bypass ? 0.0 : 1.0);
}

void LaneHead::closeClicked(CObject*) {
    lane->visible = 0;
    list.state.rowsChanged();
}

std::vector<CCtrl*> LaneHead::stops() {
    return {this, bypass, close};
}

void LaneHead::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = (shownName + ", lane of " + track->track->id).asChar();
    d.text = shownValue.asChar();
}
