#pragma once

#include "panels/PanelWin.h"
#include "panels/sampler/SoundContent.h"

class CDrumSound;
class CTrack;
class DrumPads;
class PageRow;

/// The window of a drum track's kit: its sounds at the left as pads, of which a press plays one and
/// shows what is set of it. Interface thread.
class CDrumWin : public PanelWin {
public:
    CDrumWin(Workspace& workspace, CTrack& track);

private:
    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    void followKit();          ///< as many buttons as there are pages of pads
    CDrumSound* sound() const; ///< that is chosen; null without any

    CTrack& track;
    SoundContent content;
    DrumPads* pads;
    PageRow* pages = nullptr; ///< among the controls; null with one page
    int pageCount = 1;
};
