#include "gui/dialogs/CColourWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CValue.h"
#include "gui/dialogs/CColourField.h"
#include "gui/dialogs/CSwatches.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

constexpr int margin = CDialogWin::margin, gap = CDialogWin::gap;
constexpr int fieldHeight = CDialogWin::fieldHeight;
constexpr int squareWidth = 220, squareHeight = 184, sampleHeight = 32;
constexpr int labelHeight = 16, valueWidth = 68, channelMax = 255;
constexpr int rightLeft = margin + squareWidth + 2 * gap;
constexpr int valuesTop = margin + sampleHeight + gap;
constexpr int codeTop = valuesTop + labelHeight + fieldHeight + gap;
constexpr int swatchesTop = margin + squareHeight - CSwatches::fullHeight;
constexpr int contentWidth = rightLeft + CSwatches::fullWidth + margin;
const char* const channelNames[] = {"Red", "Green", "Blue"};

int contentHeight() {
    return margin + squareHeight + 2 * gap + buttonHeight + margin;
}

CStr codeOf(int pixel) {
    int r, g, b;
    char text[16];
    asRGB(pixel, &r, &g, &b);
    std::snprintf(text, sizeof text, "#%02x%02x%02x", unsigned(r) & 255, unsigned(g) & 255,
                  unsigned(b) & 255);
    return text;
}

/// A colour as six hexadecimal digits, with or without "#"; false when it is none.
bool readCode(const CStr& typed, int& pixel) {
    constexpr int digitCount = 6;
    const CStr digits = typed[0] == '#' ? typed.sub(1, -1) : typed;
    if (digits.length() != digitCount) return false;
    unsigned rgb = 0;
    for (int i = 0; i < digitCount; i++) {
        const char* const all = "0123456789abcdef";
        const char* found = std::strchr(all, std::tolower(digits[i]));
        if (!found) return false;
        rgb = rgb << 4 | unsigned(found - all);
    }
    pixel = hexColor(rgb);
    return true;
}

} // namespace

CColourWin::CColourWin(CWin* owner, const CStr& title, int first)
    : CDialogWin(owner, title, contentWidth, contentHeight(), dialogStyle & ~winSizable),
      colour(first), present(first),
      field(new CColourField(this, "field", margin, margin, squareWidth, squareHeight)),
      swatches(new CSwatches(this, "palette", rightLeft, swatchesTop)),
      sample(new CCtrl(this, "sample", rightLeft, margin, CSwatches::fullWidth, sampleHeight)) {
    wire(field->onChange, new _COnChange<CColourWin>(this, &CColourWin::fieldChanged));
    wire(swatches->onChange, new _COnChange<CColourWin>(this, &CColourWin::swatchChanged));
    wire(sample->onPaint, new _COnPaint<CColourWin>(this, &CColourWin::paintSample));
    addControl(field);
    addControl(sample);
    makeValues(rightLeft, valuesTop);
    makeCode(rightLeft, codeTop);
    addControl(swatches);
    addOkCancel("OK");
    choose(first, nullptr);
}

void CColourWin::makeValues(int x, int y) {
    for (int i = 0; i < 3; i++, x += valueWidth + gap) {
        auto* label = new CLabel(this, channelNames[i], x, y, valueWidth, labelHeight);
        label->textFlags = textLeft | textTop;
        addControl(label);
        auto* value =
            new CValue(this, channelNames[i], x, y + labelHeight, valueWidth, fieldHeight);
        label->field = value;
        value->max = channelMax;
        wire(value->onChange, new _COnChange<CColourWin>(this, &CColourWin::valueChanged));
        addControl(value);
        channels[i] = value;
    }
}

void CColourWin::makeCode(int x, int y) {
    auto* label = new CLabel(this, "Code", x, y, valueWidth, fieldHeight);
    addControl(label);
    const int left0 = x + valueWidth + gap;
    code = new CEdit(this, "code", left0, y, 2 * valueWidth + gap, fieldHeight);
    label->field = code;
    code->selectOnFocus = true;
    wire(code->onChange, new _COnChange<CColourWin>(this, &CColourWin::codeChanged));
    addControl(code);
}

/// Shows a colour in all fields but the one that it came from.
void CColourWin::choose(int pixel, const CObject* from) {
    present = pixel;
    int rgb[3];
    asRGB(pixel, &rgb[0], &rgb[1], &rgb[2]);
    for (int i = 0; i < 3; i++)
        if (channels[i] != from) channels[i]->showValue(rgb[i]);
    if (code != from) code->setText(codeOf(pixel));
    if (field != from) {
        const CHsv former = field->colour;
        field->colour = toHsv(pixel);
        // A grey has no hue of its own: the one that was there stays.
        if (field->colour.saturation <= 0) field->colour.hue = former.hue;
        field->redraw();
    }
    sample->redraw();
}

void CColourWin::fieldChanged(CObject* sender) {
    choose(fromHsv(field->colour), sender);
}

void CColourWin::valueChanged(CObject* sender) {
    choose(asColor(channels[0]->value, channels[1]->value, channels[2]->value), sender);
}

void CColourWin::codeChanged(CObject*) {
    int pixel = present;
    readCode(code->text.trim(), pixel);
    choose(pixel, nullptr);
}

void CColourWin::swatchChanged(CObject* sender) {
    choose(paletteColour(swatches->index), sender);
}

/// Return in a field accepts what stands in it; a code that is none stays to be mended.
bool CColourWin::keyDown(int key, int mods) {
    const bool inField = keyCtrl && keyCtrl->type == ctrlEdit;
    if (key != keyReturn || mods || !inField) return CDialogWin::keyDown(key, mods);
    int ignored;
    if (keyCtrl != code || readCode(code->text.trim(), ignored)) {
        accept();
    } else {
        code->selectAll();
        code->redraw();
    }
    return true;
}

void CColourWin::accept() {
    setKeyCtrl(firstButton); // what is being typed counts
    colour = present;
    CDialogWin::accept();
}

void CColourWin::paintSample(CObject*, CGraphic* g, CRect rect) {
    const int middle = rect.right / 2;
    g->fillRect(colour, asRect(0, 0, middle, rect.bottom));
    g->fillRect(present, asRect(middle, 0, rect.right, rect.bottom));
    g->frameRect(app->gui->palette.frame, rect);
}
