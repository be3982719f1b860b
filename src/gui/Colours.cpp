#include "gui/Colours.h"

#include "base/Numbers.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <bit>
#include <cmath>

namespace {

constexpr int channelBits = 8, channelMax = 255;

unsigned long toMask(int channel, unsigned long mask) {
    const int shift = std::countr_zero(mask), width = std::popcount(mask);
    const unsigned long value = unsigned(channel);
    const unsigned long scaled =
        width < channelBits ? value >> (channelBits - width) : value << (width - channelBits);
    return scaled << shift & mask;
}

int fromMask(unsigned long pixel, unsigned long mask) {
    const int width = std::popcount(mask);
    const unsigned long value = (pixel & mask) >> std::countr_zero(mask);
    return int(width < channelBits ? value << (channelBits - width)
                                   : value >> (width - channelBits));
}

int allocated(int r, int g, int b) {
    constexpr int to16Bits = 257;
    Display* display = liveDisplay();
    if (!display) return 0;
    XColor wanted{};
    wanted.red = static_cast<unsigned short>(r * to16Bits);
    wanted.green = static_cast<unsigned short>(g * to16Bits);
    wanted.blue = static_cast<unsigned short>(b * to16Bits);
    return XAllocColor(display, xConnection().colormap, &wanted) ? int(wanted.pixel) : 0;
}

/// Of one channel, 0 to 255, after the screen's curve.
double linear(int channel) {
    const double c = double(channel) / channelMax;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(int color) {
    int r = 0, g = 0, b = 0;
    asRGB(color, &r, &g, &b);
    return 0.2126 * linear(r) + 0.7152 * linear(g) + 0.0722 * linear(b);
}

} // namespace

int asColor(int r, int g, int b) {
    r = asMinMax(r, 0, channelMax);
    g = asMinMax(g, 0, channelMax);
    b = asMinMax(b, 0, channelMax);
    if (xlibColorDepth <= 15) return allocated(r, g, b);
    const XConnection& x = xConnection();
    return int(toMask(r, x.redMask) | toMask(g, x.greenMask) | toMask(b, x.blueMask));
}

void asRGB(int pixel, int* r, int* g, int* b) {
    if (xlibColorDepth < 16) return;
    const XConnection& x = xConnection();
    const auto bits = static_cast<unsigned>(pixel);
    *r = fromMask(bits, x.redMask);
    *g = fromMask(bits, x.greenMask);
    *b = fromMask(bits, x.blueMask);
}

int RGBToInt(int pixel) {
    int r = 0, g = 0, b = 0;
    asRGB(pixel, &r, &g, &b);
    return r + g * 256 + b * 65536;
}

int intToRGB(int portable) {
    return asColor(portable & 255, portable >> 8 & 255, portable >> 16 & 255);
}

int addBrightness(int color, int n) {
    int r = 0, g = 0, b = 0;
    asRGB(color, &r, &g, &b);
    return asColor(r + n, g + n, b + n);
}

int fadeCol(int a, int b, double f) {
    int from[3] = {}, to[3] = {}, mixed[3];
    asRGB(a, &from[0], &from[1], &from[2]);
    asRGB(b, &to[0], &to[1], &to[2]);
    for (int i = 0; i < 3; i++) mixed[i] = asRound(from[i] + (to[i] - from[i]) * f);
    return asColor(mixed[0], mixed[1], mixed[2]);
}

double contrast(int a, int b) {
    constexpr double flare = 0.05;
    const double one = luminance(a) + flare, other = luminance(b) + flare;
    return one > other ? one / other : other / one;
}

int textOn(int fill) {
    const int white = hexColor(0xffffff), black = hexColor(0x101214);
    return contrast(white, fill) >= contrast(black, fill) ? white : black;
}

int screenDepth() {
    return xlibColorDepth;
}
