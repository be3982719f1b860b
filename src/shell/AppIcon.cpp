#include "shell/AppIcon.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr unsigned long paper = 0x23262b, ink = 0x58a9ff;
constexpr int samples = 4; // of a pixel, either way

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

bool inside(const Box& box, double x, double y) {
    const double acrossBy = std::max({box.left + box.radius - x, x - box.right + box.radius, 0.0});
    const double downBy = std::max({box.top + box.radius - y, y - box.bottom + box.radius, 0.0});
    return std::hypot(acrossBy, downBy) <= box.radius;
}

unsigned long mixed(int inked, int covered) {
    unsigned long pixel = 0;
    for (const int shift : {16, 8, 0}) {
        const auto channel = [&](unsigned long colour) { return int(colour >> shift & 255); };
        const int sum = channel(ink) * inked + channel(paper) * (covered - inked);
        pixel |= static_cast<unsigned long>(sum / std::max(covered, 1)) << shift;
    }
    return pixel | static_cast<unsigned long>(255 * covered / (samples * samples)) << 24;
}

unsigned long pixelAt(int x, int y, int side) {
    int covered = 0, inked = 0;
    for (int i = 0; i < samples * samples; i++) {
        const double u = (x + (i % samples + 0.5) / samples) / side;
        const double v = (y + (i / samples + 0.5) / samples) / side;
        covered += inside(ground, u, v);
        inked += std::any_of(std::begin(bars), std::end(bars),
                             [&](const Box& bar) { return inside(bar, u, v); });
    }
    return mixed(inked, covered);
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
