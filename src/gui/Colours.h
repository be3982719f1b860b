#pragma once

/// Colours are pixel values of the screen. Mixing works on channels of 0 to 255. Interface thread.

/// The pixel of a colour; each channel is clamped to 0 to 255.
int asColor(int r, int g, int b);
/// The channels of a pixel; nothing changes on screens of fewer than 16 bits.
void asRGB(int pixel, int* r, int* g, int* b);
/// A pixel as R + G x 256 + B x 65536, the form of files.
int RGBToInt(int pixel);
/// The pixel of that form.
int intToRGB(int portable);
/// Adds `n` to each channel, clamped.
int addBrightness(int color, int n);
/// From `a` (f = 0) to `b` (f = 1), each channel rounded.
int fadeCol(int a, int b, double f);
/// How well one colour reads on the other, 1 to 21: (L1 + 0.05) / (L2 + 0.05) of the relative
/// luminances as WCAG 2.1 defines them.
double contrast(int a, int b);
/// White or near-black, whichever reads better on `fill`.
int textOn(int fill);
/// Bits of a pixel of the screen.
int screenDepth();

/// The pixel of 0xRRGGBB, as colours are written in the tables of the looks.
inline int hexColor(unsigned rgb) {
    return asColor(int(rgb >> 16 & 255), int(rgb >> 8 & 255), int(rgb & 255));
}
