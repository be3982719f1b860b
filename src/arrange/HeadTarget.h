#pragma once

#include "gui/controls/CButton.h"

class CComp;
class CSongTrack;
class HeadList;

/// The sign of a track's kind and what it leads to: its instrument, or its output. A press offers
/// others, for all that are selected if the track is one of them.
class HeadTarget : public CButton {
public:
    static constexpr int signWidth = 18;

    bool named = false; ///< a line with the name, instead of the sign alone
    int colour = 0;     ///< of the sign

    HeadTarget(HeadList& list, CSongTrack* track);

    void paint(CGraphic* g, CRect rect) override;
    void click() override;
    void describe(Description& d, int part) const override;
    void cablesChanged();
    void nameAfter(const CStr& row); ///< tells screen readers whose it is

private:
    HeadList& list;
    CSongTrack* track; ///< not owned
    CStr target;       ///< its name
};
