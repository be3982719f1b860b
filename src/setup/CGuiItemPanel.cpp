#include "setup/CGuiItemPanel.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/Images.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CColorButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CValue.h"
#include "setup/CImageListWin.h"

#include <iterator>

namespace {

constexpr int rowHeight = 24, rowStep = 28, gap = 8;
constexpr int labelWidth = 104, fieldWidth = 140, replaceWidth = 80;
constexpr int percent = 100;
constexpr int updateMs = 20;

constexpr const char* fillNames[] = {"None", "Solid", "Shaded", "Image"};
constexpr int directions[] = {gradientAcross, gradientDown, gradientDownUp, gradientAcrossTo};

int directionIndex(int fillAlign) {
    for (int i = 0; i < int(std::size(directions)); i++)
        if (directions[i] == fillAlign) return i;
    return 0;
}

} // namespace

CGuiItemPanel::CGuiItemPanel(CWin* owner, int l, int t, int w)
    : CGroup(owner, "item", l, t, w, 1), gui(owner->app->gui.get()) {
}

void CGuiItemPanel::setItem(CGuiItem2* edited) {
    item = edited;
    setup();
}

void CGuiItemPanel::setup() {
    clear();
    colourFields.clear();
    y = 0;
    const int caps = item ? item->caps : 0;
    if (caps & capShape) addChoice("Shape", Choice::shape, {"Square", "Rounded"}, item->shape);
    if (caps & capFrame) {
        addChoice("Frame", Choice::frame, {"None", "Line"}, item->frame);
        if (item->frame) addColour("Frame colour", &CGuiLook::frameCol);
    }
    if (caps & capFill) setupFill();
    if (caps & capText) addColour("Text", &CGuiLook::textCol);
    if (caps & capSymbol) addColour("Symbol", &CGuiLook::symbolCol);
    if (caps & capSep) {
        addChoice("Separator", Choice::sep, {"None", "Line"}, item->sep);
        if (item->sep) addColour("Separator colour", &CGuiLook::sepCol);
    }
    height = asMax(y, 1);
    redraw();
    if (onChange) (*onChange)(this);
}

/// An item that is made for images offers no other fill than the one it has.
void CGuiItemPanel::setupFill() {
    Names names;
    fills.clear();
    for (int fill = fillNone; fill <= fillImage; fill++) {
        const bool offered = !(item->caps & capImageOnly) || fill == fillNone ||
                             fill == fillImage || fill == item->fill;
        if (!offered) continue;
        fills.push_back(fill);
        names.push_back(fillNames[fill]);
    }
    int row = 0;
    while (row + 1 < int(fills.size()) && fills[size_t(row)] != item->fill) row++;
    addChoice("Fill", Choice::fill, names, row);
    if (item->fill == fillSolid) addColour("Fill colour", &CGuiLook::fillCol);
    if (item->fill == fillShaded) setupShade();
    if (item->fill == fillImage) addImage();
}

void CGuiItemPanel::setupShade() {
    addChoice("Texture", Choice::texture, {"Gloss", "Gradient"}, item->fillTex);
    if (item->fillTex == textureGlossy) {
        addColour("Fill colour", &CGuiLook::fillCol);
        addStrength();
        return;
    }
    addColour("From", &CGuiLook::fillCol);
    addColour("To", &CGuiLook::fillCol2);
    addChoice("Direction", Choice::direction,
              {"Left to right", "Top to bottom", "Top to middle", "Left to middle"},
              directionIndex(item->fillAlign));
}

// Rows.

void CGuiItemPanel::addRow(const char* text, CCtrl* field) {
    auto* label = new CLabel(win, text, 0, y, labelWidth, rowHeight);
    label->field = field;
    addControl(label);
    addControl(field);
}

void CGuiItemPanel::addChoice(const char* label, Choice choice, const Names& names, int index) {
    auto* field = new CDropdown(win, label, labelWidth, y, fieldWidth, rowHeight);
    for (const char* name : names) field->add(name);
    field->setIndex(index);
    field->tag = int(choice);
    field->onChange = new _COnChange(this, &CGuiItemPanel::choiceChanged);
    addRow(label, field);
    y += rowStep;
}

void CGuiItemPanel::addColour(const char* label, int CGuiLook::*field) {
    auto* button = new CColorButton(win, label, item->*field, labelWidth, y, fieldWidth, rowHeight);
    button->hint = "Choose a colour; the right button replaces it in the whole skin";
    button->tag = int(colourFields.size());
    button->onChange = new _COnChange(this, &CGuiItemPanel::colourChanged);
    button->onReplace = new _COnChange(this, &CGuiItemPanel::colourReplaced);
    colourFields.push_back(field);
    addRow(label, button);
    auto* all = new CButton(win, CStr(label) + " replace", "Replace...",
                            labelWidth + fieldWidth + gap, y, replaceWidth, rowHeight);
    all->hint = "Replace this colour in the whole skin";
    all->spokenName = CStr("Replace ") + label;
    all->data = button;
    all->onChange = new _COnChange(this, &CGuiItemPanel::replaceClicked);
    addControl(all);
    y += rowStep;
}

void CGuiItemPanel::addStrength() {
    auto* field = new CValue(win, "Strength", labelWidth, y, fieldWidth, rowHeight);
    field->min = -percent;
    field->max = percent;
    field->resetValue = 0;
    field->showValue(asRound(double(item->fillEffect) * percent));
    field->hint = "Strength of the shine in percent; below 0 it lies on the lower half";
    field->onChange = new _COnChange(this, &CGuiItemPanel::strengthChanged);
    addRow("Strength", field);
    y += rowStep;
}

void CGuiItemPanel::addImage() {
    const CStr name = item->image ? item->image->id : CStr("None");
    auto* button = new CButton(win, "Image", name, labelWidth, y, fieldWidth, rowHeight);
    button->hint = "Choose an image";
    button->onChange = new _COnChange(this, &CGuiItemPanel::imageClicked);
    addRow("Image", button);
    y += rowStep;
}

// Changes.

void CGuiItemPanel::mustUpdate() {
    win->app->addTimer(this, updateMs, false);
}

void CGuiItemPanel::onTimer() {
    setup();
}

void CGuiItemPanel::apply() {
    gui->updateAll();
    gui->changed();
    win->app->redrawAll();
}

void CGuiItemPanel::setFill(int fill) {
    if (fill == fillNone)
        setGuiFill(*item, guiNoFill);
    else if (fill == fillSolid)
        setGuiFill(*item, item->fillCol);
    else if (fill == fillImage)
        setGuiImage(*item, item->image);
    else if (item->fillTex == textureGradient)
        setGuiGradient(*item, item->fillCol, item->fillCol2, item->fillAlign);
    else
        setGuiGlossy(*item, item->fillCol, item->fillEffect);
}

void CGuiItemPanel::choiceChanged(CDropdown* field) {
    const int chosen = asMax(field->index, 0);
    switch (Choice(field->tag)) {
    case Choice::shape:
        setGuiShape(*item, chosen);
        break;
    case Choice::frame:
        setGuiFrame(*item, chosen, item->frameCol);
        break;
    case Choice::fill:
        setFill(fills[size_t(chosen)]);
        break;
    case Choice::texture:
        item->fillTex = chosen;
        setFill(fillShaded);
        break;
    case Choice::direction:
        setGuiGradient(*item, item->fillCol, item->fillCol2, directions[chosen]);
        break;
    case Choice::sep:
        setGuiSep(*item, chosen, item->sepCol, item->sepSize);
        break;
    }
    apply();
    mustUpdate();
}

void CGuiItemPanel::colourChanged(CColorButton* button) {
    item->*colourFields[size_t(button->tag)] = button->colour;
    apply();
}

void CGuiItemPanel::colourReplaced(CColorButton* button) {
    gui->colorReplace(button->colour, button->replacement);
    gui->changed();
    win->app->redrawAll();
    mustUpdate();
}

void CGuiItemPanel::replaceClicked(CCtrl* sender) {
    static_cast<CColorButton*>(sender->data)->replace();
}

void CGuiItemPanel::strengthChanged(CValue* sender) {
    setGuiGlossy(*item, item->fillCol, float(sender->value) / percent);
    apply();
}

void CGuiItemPanel::imageClicked(CButton* sender) {
    CImageListWin dialog(win, gui, item->image);
    dialog.showModal();
    if (!dialog.result) return;
    setGuiImage(*item, dialog.image);
    sender->setText(dialog.image ? dialog.image->id : CStr("None"));
    apply();
}
