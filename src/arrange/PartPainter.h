#pragma once

#include "arrange/PartSketch.h"
#include "base/CStr.h"
#include "base/Geometry.h"

#include <array>
#include <vector>

class ArrangeState;
class CGraphic;
class CPart;
class DrawBatch;
class PixelPaper;
class PeakImage;
class Takes;
struct ArrangeRow;
struct CAudioEvent;
struct CPalette;
struct PartColours;

/// Paints parts in the boxes that `partBox` tells: a header in the part's colour with its name, and
/// below it notes within the part's own range, hits by row, or the wave. What is not heard is
/// faint. One pass of painting: first `part` for all, then `names`.
class PartPainter {
public:
    static constexpr int headerHeight = 14;

    PartPainter(const ArrangeState& state, PartSketches& sketches, CGraphic* g, PixelPaper& paper,
                CRect asked);
    void part(const ArrangeRow& row, CPart* part, bool heard);
    /// The take of a row, over a part that has those takes, null for none: what the part plays of
    /// it in full, the rest faint.
    void take(const ArrangeRow& row, CPart* part, const Takes* takes);
    void names(); ///< once the paper is gone

private:
    struct Name {
        CRect box;
        int colour;
        CStr name;
        const CPart* part;
        bool frozen;
    };

    double deviceX(double ticks) const;
    void coverNames(CRect box);
    void frame(const CPart* part, CRect box, CRect header, const PartColours& c);
    void seam(CRect header, int colour);
    static std::array<CStr, 2> kindOf(const Name& n);
    void notes(const PartSketch& s, double start, CRect room, const PartColours& c);
    void hits(const PartSketch& s, double start, CRect room, const PartColours& c);
    void takeContent(CPart* part, const Takes& takes, int index, CRect room, const PartColours& c);
    void clips(CPart* part, CRect room, const PartColours& c);
    void fades(CPart* part, CRect room, int colour);
    void handles(CPart* part, CRect box);
    void wave(const CAudioEvent* clip, CRect room, double fromX, double toX, const PartColours& c);

    const ArrangeState& state;
    PartSketches& sketches;
    CGraphic* graphic;
    PixelPaper& paper;
    const CRect asked, askedDevice;
    const double originX; ///< device pixels
    const CPalette& palette;
    std::vector<Name> told;
};

/// The colour of a part: its own, else that of its track, else one by the place of the track.
int partColour(const ArrangeRow& row, const CPart* part);
int trackColourOf(const ArrangeRow& row);
