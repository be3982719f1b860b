#pragma once

#include <chrono>
#include <functional>
#include <vector>

struct _XDisplay;

/// Sends events to a program's window as its user's hand would, and sees what the program paints.
/// Pixels of the window, which has its corner at that of the screen.
class PaintWatch {
public:
    using Clock = std::chrono::steady_clock;
    struct Area {
        int x = 0, y = 0, width = 0, height = 0;
        Area within(const Area& other) const;
        long pixels() const { return width > 0 && height > 0 ? long(width) * height : 0; }
    };
    struct Paint {
        Clock::time_point at; ///< when it was told
        Area area;
    };

    PaintWatch(_XDisplay* shown, unsigned long window);
    void setCanvas(const Area& area) { canvas = area; } ///< the part that counts

    /// What is painted of the canvas for so long.
    std::vector<Paint> paintsFor(double ms);
    /// Until nothing was painted of the canvas for so long; no longer than `most`.
    void settle(double quietMs, double mostMs);

    /// Does `act` and tells the milliseconds until a rectangle of the canvas is painted that shows
    /// something else than before, and until the last one within `tailMs`; below 0: none came.
    struct Answer {
        double first, last;
    };
    Answer answerTo(const std::function<void()>& act, double tailMs);
    /// The same with a new size: of all that the program paints, not the server.
    Answer resize(int width, int height, double tailMs);

    void point(int x, int y) const;
    void button(int number, bool down) const;
    void click(int number) const;
    void key(const char* name, bool down) const;
    void send() const; ///< what was asked for

private:
    bool next(Paint& paint, Clock::time_point until);
    bool shows(const Area& area, std::vector<unsigned>& pixels) const;
    bool differs(const Area& area) const;
    bool changed(const Area& area) const;
    void remember();
    Answer awaitPaint(Clock::time_point begun, double tailMs, bool compared);

    _XDisplay* display;
    unsigned long window;
    int damageEvent = 0;
    Area canvas;
    std::vector<unsigned> before; ///< of the canvas
};
