#pragma once

#include "base/Delegates.h"
#include "gui/CGui.h"
#include "ui/ProgramItems.h"

/// The theme of the program: the toolkit's items and those of its own views. Interface thread.
class CAppGui : public CGui {
public:
    COnChange* onInit = nullptr;    ///< owned; the table is filled, and further items may follow
    COnChange* onChanged = nullptr; ///< owned; the look has changed

    CAppGui() = default;
    ~CAppGui() override;
    CAppGui(const CAppGui&) = delete;
    CAppGui& operator=(const CAppGui&) = delete;

    void init() override;
    void changed() override;

protected:
    void readPalette() override;
};

/// Colours that follow the look and are not in its file, as pixel values.
extern int clBase, clBevel, clDarker, clLighter, clWinTextHigh, clWinTextLow, clLed, clPower,
    clGroup, clAudioIn, clAudioOut, clSend, clSeq, clSampler, clVST;
/// Those that are the same in every look.
extern int clBlack, clWhite, clRed, clGreen, clBlue, clGray;
