#include "shell/AppIcon.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr unsigned long paper = 0x23262b, ink = 0x58a9ff;

struct Box {
    double left, top, right, bottom, radius; ///< of an icon of side 1
};
constexpr Box ground{0.03, 0.03, 0.97, 0.97, 0.2};
/// A wave of five rounded bars.
constexpr Box bars[] = {{0.175, 0.39, 0.265, 0.61, 0.045},
                        {0.315, 0.25, 0.405, 0.75, 0.045},
                        {0.455, 0.33, 0.545, 0.67, 0.045},
                        {0.595, 0.20, 0.685, 0.80, 0.045},
                        {0.735, 0.37, 0.825, 0.63, 0.045}};

/// How much of the pixel of that size around a point lies in the box, 0..1: by the distance to its
/// rounded edge, in pixels.
double covered(const Box& box, double x, double y, double pixel) {
    const double across = std::max(box.left - x, x - box.right) + box.radius;
    const double down = std::max(box.top - y, y - box.bottom) + box.radius;
    const double distance = std::hypot(std::max(across, 0.0), std::max(down, 0.0)) +
                            std::min(std::max(across, down), 0.0) - box.radius;
    return std::clamp(0.5 - distance / pixel, 0.0, 1.0);
}

unsigned long mixed(double inked, double opaque) {
    unsigned long pixel = static_cast<unsigned long>(std::lround(255 * opaque)) << 24;
    for (const int shift : {16, 8, 0}) {
        const auto channel = [&](unsigned long colour) { return double(colour >> shift & 255); };
        const double value = channel(paper) + (channel(ink) - channel(paper)) * inked;
        pixel |= static_cast<unsigned long>(std::lround(value)) << shift;
    }
    return pixel;
}

unsigned long pixelAt(int x, int y, int side) {
    const double u = (x + 0.5) / side, v = (y + 0.5) / side;
    double inked = 0;
    for (const Box& bar : bars) inked = std::max(inked, covered(bar, u, v, 1.0 / side));
    return mixed(inked, covered(ground, u, v, 1.0 / side));
}

} // namespace

std::vector<unsigned long> appIcon() {
    std::vector<unsigned long> icon;
    for (const int side : {16, 24, 32, 48, 64, 128}) {
        icon.insert(icon.end(), 2, static_cast<unsigned long>(side));
        for (int i = 0; i < side * side; i++) icon.push_back(pixelAt(i % side, i / side, side));
    }
    return icon;
}
