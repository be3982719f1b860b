#pragma once

#include "panels/PanelWin.h"
#include "panels/sampler/SoundContent.h"

class CDrumSound;
class CListbox;
class CTrack;

/// The window of a drum track's kit: its sounds at the left, of which a press plays one and shows
/// what is set of it. Interface thread.
class CDrumWin : public PanelWin {
public:
    CDrumWin(Workspace& workspace, CTrack& track);

private:
    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    void listSounds();
    void rowChosen(CObject*);
    CDrumSound* sound() const; ///< that is chosen; null without any

    CTrack& track;
    SoundContent content;
    CListbox* list;
    std::vector<CStr> names; ///< as listed
};
