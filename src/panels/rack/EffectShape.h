#pragma once

#include "base/CStr.h"
#include "gui/Shapes.h"

#include <memory>
#include <vector>

class CFX;

/// What an effect does, as lines in a square: 0 to 1 to the right and up.
struct EffectShape {
    struct Line {
        std::vector<CPath::Point> points;
        bool second = false; ///< of the right side, or beside the main one
    };
    struct Bar {
        double x, height; ///< from the middle up, or below 0 down
        bool second = false;
    };
    std::vector<Line> lines;
    std::vector<Bar> bars;
    CStr from, to; ///< at the ends of the scale
    CStr spoken;   ///< what the picture is of

    bool empty() const { return lines.empty() && bars.empty(); }
};

/// Works out the pictures of one effect. What only the effect itself can tell, how loud it makes
/// each frequency, is measured on one of its kind with the same settings. Interface thread.
class EffectShaper {
public:
    EffectShaper();
    ~EffectShaper();
    EffectShaper(const EffectShaper&) = delete;
    EffectShaper& operator=(const EffectShaper&) = delete;

    /// Empty for a kind that has no picture. `tempo` in beats a minute.
    EffectShape shapeOf(const CFX& fx, double tempo);

private:
    EffectShape response(const CFX& fx, double top, double bottom, const CStr& spoken);
    std::vector<double> decibels(const CFX& fx);

    std::unique_ptr<CFX> twin; ///< that is measured; null before it is needed
};
