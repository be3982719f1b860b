#pragma once

/// Frames of a sample and pixels of a view of them. Interface thread.
class FrameAxis {
public:
    static constexpr double leastPerPixel = 1.0 / 64; ///< frames
    static constexpr int farX = 1 << 24;              ///< no x lies further to either side

    double perPixel() const { return framesPerPixel; }
    double start() const { return first; } ///< the frame at x = 0
    void setZoom(double frames);           ///< a pixel, kept at `leastPerPixel` and above
    void scrollTo(double frame) { first = frame; }
    void zoomAt(double x, double frames); ///< the frame under `x` stays there

    int xOf(double frame) const; ///< of the view, within `farX`
    double frameAt(double x) const { return first + x * framesPerPixel; }

private:
    double framesPerPixel = 256, first = 0;
};
