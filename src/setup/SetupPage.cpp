#include "setup/SetupPage.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "setup/CSetupWin.h"

namespace {

constexpr int headingHeight = 20;
constexpr int narrowButton = 72, buttonPadding = 12;

} // namespace

SetupPage::SetupPage(CSetupWin* window, CRect place)
    : CGroup(window, "page", place.left, place.top, place.width(), place.height()), setup(window),
      qv(window->host) {
}

void SetupPage::addHeading(const CStr& text) {
    if (nextTop > margin) nextTop += gap;
    placeHeading(text, margin);
    nextTop += headingHeight + gap / 2;
}

CLabel* SetupPage::placeHeading(const CStr& text, int x) {
    auto* label = new CLabel(win, text, x, nextTop, width - margin - x, headingHeight);
    label->textCol = win->app->gui->palette.accent;
    addControl(label);
    return label;
}

void SetupPage::placeField(const CStr& label, CCtrl* field) {
    int x = margin;
    if (!label.empty()) {
        auto* name = new CLabel(win, label, margin, nextTop, labelWidth - gap, fieldHeight);
        addControl(name);
        name->field = field;
        x += labelWidth;
    }
    lineTop = nextTop;
    nextTop += asMax(field->height, fieldHeight) + gap;
    besideLeft = x;
    placeBeside(field);
}

void SetupPage::placeBeside(CCtrl* field) {
    field->setBounds(besideLeft, lineTop, field->width, field->height);
    besideLeft += field->width + gap;
    addControl(field);
}

CLabel* SetupPage::addNote(const CStr& text) {
    const int room = width - margin - besideLeft;
    auto* note = new CLabel(win, text, besideLeft, lineTop, room, fieldHeight);
    note->textCol = win->app->gui->palette.dimText;
    note->id = "note";
    note->setAlign(alignWidth, margin, 0);
    addControl(note);
    return note;
}

void SetupPage::addPair(const CStr& leftText, CCtrl* first, const CStr& rightText, CCtrl* second) {
    if (nextTop > margin) nextTop += gap;
    const int wide = (width - 2 * margin - gap) / 2, rightX = width - margin - wide;
    const int top0 = nextTop + headingHeight + gap / 2, high = height - margin - top0;
    placeHeading(leftText, margin)->field = first;
    placeHeading(rightText, rightX)->field = second;
    first->setBounds(margin, top0, wide, high);
    first->setAlign(alignHeight, 0, margin);
    second->setBounds(rightX, top0, wide, high);
    second->setAlign(alignWidth | alignHeight, margin, margin);
    addControl(first);
    addControl(second);
}

CButton* SetupPage::newButton(const CStr& text, COnChange* clicked) {
    const int wide = asMax(narrowButton, win->graphic->textWidth(text) + 2 * buttonPadding);
    auto* button = new CButton(win, text, text, 0, 0, wide, fieldHeight);
    wire(button->onChange, clicked);
    return button;
}
