#pragma once

#include "modular/GraphModel.h"

#include <vector>

class CGraphic;
class GraphWatch;
class PixelPaper;
struct CPalette;

/// What is told of a cable or box by a letter.
enum GraphTag : unsigned char { tagMuted = 1, tagSolo = 2, tagHeard = 4, tagFailed = 8 };

/// What is shown of a graph beside its places. Lists are by the indexes of the model.
struct GraphShown {
    double zoom = 1;                       ///< 0.25 to 3
    std::vector<bool> litCables, litBoxes; ///< of the path under the pointer; empty without one
    std::vector<bool> faintCables;         ///< of kinds that are not wanted now; empty for none
    std::vector<float> levels;             ///< of what cables carry, 0 to 1, as it is shown
    std::vector<CStr> delays;              ///< of cables, told beside them; empty for none
    std::vector<unsigned char> cableTags, boxTags; ///< bits of `GraphTag`
    std::vector<CStr> loads;                       ///< of boxes; empty for none
    int hotPort = -1;                              ///< under the pointer
    CObject* focus = nullptr;       ///< component, port or cable that the keys act on
    int fromPort = -1, toPort = -1; ///< of a cable that is being drawn
    CStr linkText;                  ///< told beside its end
    int intoCable = -1;             ///< that a box would come into
};

/// Draws a graph on a canvas whose origin is that of the graph. Interface thread.
class GraphPainter {
public:
    GraphPainter(const GraphModel& graph, const GraphShown& look, const GraphWatch& watched,
                 const CPalette& colours);

    void paint(CGraphic* g, CRect asked) const;

    // Where things lie on the canvas, with all that is drawn of them.
    static CRect scaled(CRect area, double zoom);
    CRect boxArea(int box) const;
    CRect cableArea(int cable) const;
    CRect marksArea(int cable) const; ///< of what is told in its middle
    CRect linkArea() const;           ///< of the cable that is being drawn; empty without one

private:
    void paintCables(CGraphic* g, CRect asked) const;
    void paintCable(PixelPaper& paper, int index) const;
    void paintMarks(CGraphic* g, int index) const;
    void paintTags(CGraphic* g, unsigned char tags, CPoint end) const;
    void paintBox(CGraphic* g, int index) const;
    void paintFigure(CGraphic* g, const GraphModel::Box& box) const;
    void paintNames(CGraphic* g, const GraphModel::Box& box, CRect area) const;
    void paintPorts(CGraphic* g, const GraphModel::Box& box) const;
    void paintKey(CGraphic* g, CRect square, int colour, bool joined) const;
    void paintLink(CGraphic* g) const;
    CRect tagArea() const; ///< of what is told of that cable
    int kindColour(bool midi) const { return midi ? midiColour : audioColour; }
    CableCurve curve(const GraphModel::Cable& cable) const;

    const GraphModel& model;
    const GraphShown& shown;
    const GraphWatch& watch;
    const CPalette& palette;
    const int midiColour, audioColour;
};
