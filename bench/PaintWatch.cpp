#include "PaintWatch.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xdamage.h>
#include <poll.h>

#include <algorithm>
#include <cstddef>

namespace {

constexpr double patienceMs = 2000;

std::chrono::nanoseconds nanoseconds(double ms) {
    return std::chrono::nanoseconds(long(ms * 1e6));
}

double msBetween(PaintWatch::Clock::time_point from, PaintWatch::Clock::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace

PaintWatch::Area PaintWatch::Area::within(const Area& other) const {
    Area both;
    both.x = std::max(x, other.x);
    both.y = std::max(y, other.y);
    both.width = std::min(x + width, other.x + other.width) - both.x;
    both.height = std::min(y + height, other.y + other.height) - both.y;
    return both;
}

PaintWatch::PaintWatch(Display* shown, unsigned long of) : display(shown), window(of) {
    int error;
    XDamageQueryExtension(display, &damageEvent, &error);
    XDamageCreate(display, window, XDamageReportRawRectangles);
    XSync(display, False);
}

/// The next paint of anything, if one comes in time.
bool PaintWatch::next(Paint& paint, Clock::time_point until) {
    for (;;) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type != damageEvent + XDamageNotify) continue;
            const auto& damage = *reinterpret_cast<XDamageNotifyEvent*>(&event);
            const XRectangle& r = damage.area;
            paint = {Clock::now(), {r.x, r.y, r.width, r.height}};
            return true;
        }
        const double left = msBetween(Clock::now(), until);
        if (left <= 0) return false;
        pollfd waits{ConnectionNumber(display), POLLIN, 0};
        const timespec most{0, std::min(long(left * 1e6), 100'000'000L)};
        ppoll(&waits, 1, &most, nullptr);
    }
}

std::vector<PaintWatch::Paint> PaintWatch::paintsFor(double ms) {
    std::vector<Paint> found;
    const auto until = Clock::now() + nanoseconds(ms);
    for (Paint paint; next(paint, until);)
        if (paint.area.within(canvas).pixels() > 0) found.push_back(paint);
    return found;
}

void PaintWatch::settle(double quietMs, double mostMs) {
    const auto most = Clock::now() + nanoseconds(mostMs);
    while (Clock::now() < most && !paintsFor(quietMs).empty()) {
    }
}

bool PaintWatch::shows(const Area& area, std::vector<unsigned>& pixels) const {
    XImage* image = XGetImage(display, window, area.x, area.y, unsigned(area.width),
                              unsigned(area.height), AllPlanes, ZPixmap);
    if (!image) return false;
    pixels.clear();
    for (int y = 0; y < image->height; y++) {
        const auto* row =
            reinterpret_cast<unsigned*>(image->data + ptrdiff_t(y) * image->bytes_per_line);
        pixels.insert(pixels.end(), row, row + image->width);
    }
    XDestroyImage(image);
    return true;
}

void PaintWatch::remember() {
    shows(canvas, before);
}

bool PaintWatch::differs(const Area& area) const {
    std::vector<unsigned> now;
    if (area.pixels() == 0 || !shows(area, now)) return false;
    for (int y = 0; y < area.height; y++) {
        const auto row = now.begin() + ptrdiff_t(y) * area.width;
        const auto former =
            before.begin() + ptrdiff_t(area.y - canvas.y + y) * canvas.width + area.x - canvas.x;
        if (!std::equal(row, row + area.width, former)) return true;
    }
    return false;
}

/// First some lines of it, as the server has better things to do meanwhile.
bool PaintWatch::changed(const Area& painted) const {
    constexpr int lines = 6;
    const Area area = painted.within(canvas);
    for (int i = 0; i < lines && area.pixels() > 0; i++)
        if (differs({area.x, area.y + (area.height - 1) * i / (lines - 1), area.width, 1}))
            return true;
    return differs(area);
}

PaintWatch::Answer PaintWatch::awaitPaint(Clock::time_point begun, double tailMs, bool compared) {
    Answer answer{-1, -1};
    auto until = begun + nanoseconds(patienceMs);
    for (Paint paint; next(paint, until);) {
        if (compared && paint.area.within(canvas).pixels() == 0) continue;
        if (answer.first < 0) {
            if (compared && !changed(paint.area)) continue;
            answer.first = msBetween(begun, paint.at);
            until = begun + nanoseconds(answer.first + tailMs);
        }
        answer.last = msBetween(begun, paint.at);
    }
    return answer;
}

PaintWatch::Answer PaintWatch::answerTo(const std::function<void()>& act, double tailMs) {
    remember();
    paintsFor(0);
    const auto begun = Clock::now();
    act();
    send();
    return awaitPaint(begun, tailMs, true);
}

PaintWatch::Answer PaintWatch::resize(int width, int height, double tailMs) {
    const auto begun = Clock::now();
    XResizeWindow(display, window, unsigned(width), unsigned(height));
    XSync(display, False);
    for (Paint by; next(by, begun);) {
    } // what the server itself has moved and cleared
    return awaitPaint(begun, tailMs, false);
}

void PaintWatch::point(int x, int y) const {
    XTestFakeMotionEvent(display, -1, x, y, CurrentTime);
}

void PaintWatch::button(int number, bool down) const {
    XTestFakeButtonEvent(display, unsigned(number), down, CurrentTime);
}

void PaintWatch::click(int number) const {
    button(number, true);
    button(number, false);
}

void PaintWatch::key(const char* name, bool down) const {
    XTestFakeKeyEvent(display, XKeysymToKeycode(display, XStringToKeysym(name)), down, CurrentTime);
}

void PaintWatch::send() const {
    XFlush(display);
}
