#pragma once

#include <cstdint>

/// Ticks and pixels of a view of the song, whose left edge shows `scroll`: x = ticks x zoom / 960 -
/// scroll. Interface thread.
class TimeAxis {
public:
    static constexpr double leastZoom = 0.001, mostZoom = 65565.0;
    static constexpr double firstZoom = 64.0;
    static constexpr int farX = 1 << 24; ///< no x lies further to either side

    double zoom() const { return perQuarter; } ///< pixels per 960 ticks
    int64_t scroll() const { return start; }   ///< pixels, at least 0
    void setZoom(double pixelsPerQuarter);     ///< kept between the least and the most
    void scrollTo(int64_t pixels);             ///< kept at 0 and above
    /// The song position under `x` stays there, as far as there is song before it.
    void zoomAt(double x, double pixelsPerQuarter);

    int xOf(double ticks) const;       ///< of the view, within `farX`
    int64_t wideX(double ticks) const; ///< from the start of the song
    double ticksAt(double x) const;    ///< below 0 before the start of the song
    double ticksIn(double pixels) const;
    double pixelsIn(double ticks) const;

private:
    double perQuarter = firstZoom;
    int64_t start = 0;
};
