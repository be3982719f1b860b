#include "ui/CAppGui.h"

#include "gui/Colours.h"
#include "gui/dialogs/CSwatches.h"

int clBase, clBevel, clDarker, clLighter, clWinTextHigh, clWinTextLow, clLed, clPower, clGroup,
    clAudioIn, clAudioOut, clSend, clSeq, clSampler, clVST;
int clBlack, clWhite, clRed, clGreen, clBlue, clGray;

namespace {

void setFixedColours() {
    clBlack = hexColor(0x000000);
    clWhite = hexColor(0xffffff);
    clRed = hexColor(0xff0000);
    clGreen = hexColor(0x00ff00);
    clBlue = hexColor(0x0000ff);
    clGray = hexColor(0x808080);
}

void setPlainColours(const CPalette& look) {
    constexpr int tone = 16;
    clBase = look.window;
    clBevel = look.frame;
    clDarker = addBrightness(look.window, -tone);
    clLighter = addBrightness(look.window, tone);
    clWinTextHigh = look.text;
    clWinTextLow = look.dimText;
    clLed = look.accent;
    clPower = look.meter[0];
}

/// The kinds of components are told apart by hues of even lightness.
void setKindColours() {
    int* const kinds[] = {&clGroup, &clAudioIn, &clAudioOut, &clSend, &clSeq, &clSampler, &clVST};
    constexpr int apart = 2;
    int hue = 0;
    for (int* kind : kinds) {
        *kind = paletteColour(hue);
        hue += apart;
    }
}

bool isSolid(const CGuiItem2& item) {
    return item.fill == fillSolid || item.fill == fillShaded;
}

} // namespace

CAppGui::~CAppGui() {
    delete onInit;
    delete onChanged;
}

void CAppGui::init() {
    CGui::init();
    int rows = 0;
    const ItemLook* table = programItems(rows);
    addItems(table, rows);
    if (onInit) (*onInit)(this);
}

void CAppGui::changed() {
    setFixedColours();
    setPlainColours(palette);
    setKindColours();
    if (onChanged) (*onChanged)(this);
}

void CAppGui::readPalette() {
    CGui::readPalette();
    if (isSolid(clTrackSoloPushed)) palette.solo = clTrackSoloPushed.fillCol;
    if (isSolid(clTrackMutePushed)) palette.mute = clTrackMutePushed.fillCol;
}
