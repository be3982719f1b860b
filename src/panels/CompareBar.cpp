#include "panels/CompareBar.h"

#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CDrag.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "ui/ProgramItems.h"

#include <algorithm>

namespace {

constexpr int gap = 4, high = 24, sideWidth = 28, barHeight = 4, thumbWidth = 4;
constexpr double keyShare = 0.1, percent = 100.0;

} // namespace

/// Where between the two states the present one lies.
class CompareBar::Slider : public CCtrl, private DragHandler {
public:
    Slider(CWin* owner, ValueDoor& through, Compare& of)
        : CCtrl(owner, "morph", 0, 0, 1, high), door(through), compare(of) {
        tabStop = hooverable = true;
        spokenName = "Between A and B";
        hint = "Drag: what lies between A and B";
        refresh();
    }

    bool refresh() {
        enabled = compare.both();
        if (compare.place() == shown && enabled == wasEnabled) return false;
        shown = compare.place();
        wasEnabled = enabled;
        redraw();
        return true;
    }
    void paint(CGraphic* g, CRect) override {
        const CPalette& colours = win->app->gui->palette;
        const int middle = height / 2, x = asRound(shown * (width - thumbWidth));
        g->fillRound(clTrackLed.fillCol,
                     asRect(0, middle - barHeight / 2, width, middle + barHeight / 2));
        if (!enabled) return;
        const bool held = win->app->drag.of(this) || isHovered();
        g->fillRound(held ? colours.accent : colours.text,
                     asRect(x, 4, x + thumbWidth, height - 4));
        if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
    }
    void mouseDown(int x, int y, int btn) override {
        CCtrl::mouseDown(x, y, btn);
        if (btn & modLeft) win->app->drag.start(this, this, asPoint(x, y), btn, 1);
    }
    bool keyDown(int key, int mods) override {
        if (CCtrl::keyDown(key, mods)) return true;
        if (mods || !compare.both()) return false;
        const int by = (key == keyPageUp) - (key == keyPageDown);
        if (by == 0 && key != keyHome && key != keyEnd) return false;
        door.begin(step);
        compare.morph(by ? shown + by * keyShare : key == keyEnd ? 1.0 : 0.0);
        door.end();
        refresh();
        return true;
    }
    void describe(Description& d, int) const override {
        d.role = Role::slider;
        d.text = (asStr(asRound(shown * percent)) + " %").asChar();
        d.range = Description::Range{shown, 0.0, 1.0, 0.0};
    }

private:
    static constexpr const char* step = "Morph";

    void dragBegin(const DragPoint&) override {
        from = shown;
        door.begin(step);
    }
    void dragMove(const DragPoint& point) override {
        if (!door.dragging()) return; // undone meanwhile
        compare.morph(from + double(point.at.x - point.anchor.x) / std::max(1, width - thumbWidth));
        refresh();
    }
    void dragEnd(const DragPoint&) override { door.end(); }
    void dragCancel() override {
        compare.morph(from);
        door.cancel();
        refresh();
    }

    ValueDoor& door;
    Compare& compare;
    double shown = 0.0, from = 0.0;
    bool wasEnabled = true;
};

CompareBar::CompareBar(CWin* owner, ValueDoor& door, Compare::Values values,
                       std::function<const void*()> of)
    : CGroup(owner, "compare", 0, 0, usualWidth, high), compare(door, std::move(values)),
      subject(std::move(of)), shown(subject()), slider(new Slider(owner, door, compare)) {
    arrowsWalk = true;
    for (int i : {0, 1}) {
        const char* text = i ? "B" : "A";
        CButton* b = sides[i] = new CButton(owner, text, text, 0, 0, sideWidth, high);
        b->hint = "One of two states to compare: each comes back as it was left";
        b->spokenName = CStr("State ") + text;
        b->skin = &clTrackControls;
        b->litSkin = &clTrackControlsPushed;
        b->tabStop = true;
        b->tag = i;
        b->onChange = new _COnChange<CompareBar>(this, &CompareBar::sideClicked);
        addControl(b);
    }
    addControl(slider);
    resized();
    refresh();
}

CompareBar::~CompareBar() = default;

void CompareBar::resized() {
    sides[0]->setBounds(0, 0, sideWidth, high);
    slider->setBounds(sideWidth + gap, 0, width - 2 * (sideWidth + gap), high);
    sides[1]->setBounds(width - sideWidth, 0, sideWidth, high);
}

void CompareBar::refresh() {
    if (const void* now = subject(); now != shown) {
        shown = now;
        compare.forget();
    }
    for (CButton* b : sides) b->setLit(compare.place() == double(b->tag));
    slider->refresh();
}

void CompareBar::sideClicked(CObject* sender) {
    compare.turn(tagOf(sender));
    refresh();
}
