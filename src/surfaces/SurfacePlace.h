#pragma once

#include "surfaces/SurfaceDef.h"

/// A thing in a definition, by its place; -1 for what it is not in.
struct SurfacePlace {
    enum Kind : int { ofDevice, ofGroups, ofGroup, ofCtrl, ofSections, ofSection, ofPage, ofMap };

    int kind = ofDevice;
    int a = -1, b = -1, c = -1; ///< of group or section, control or page, map

    // What it is or lies in; null for none.
    CHWCtrlGroup* group(SurfaceDef& def) const;
    CHWCtrl* ctrl(SurfaceDef& def) const;
    CControlPages* section(SurfaceDef& def) const;
    CControlSectionPage* page(SurfaceDef& def) const;
    CControlMap* map(SurfaceDef& def) const;
    CStr* name(SurfaceDef& def) const; ///< of it
};

/// Adds what belongs into a place, and answers where it is; the place itself where no more has
/// room.
SurfacePlace addToSurface(SurfaceDef& def, const SurfacePlace& to);
void deleteFromSurface(SurfaceDef& def, const SurfacePlace& what);
