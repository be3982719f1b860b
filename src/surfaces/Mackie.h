#pragma once

#include "surfaces/SurfaceStrips.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

class COutputChannel;
class CQV;

/// A control surface that speaks the Mackie protocol: eight strips with motor fader, turning knob,
/// buttons, meter and two lines of text, a ninth fader for the main out, and the transport. Its
/// strips are those of the song's tracks, groups and sends, eight at a time. What is shown there
/// follows the program, but for a fader on which a hand lies. Interface thread.
class Mackie {
public:
    static constexpr int strips = 8;

    /// Both send to the surface: a short message, packed, and one of system exclusive.
    using Send = std::function<void(int message)>;
    using SendLong = std::function<void(const std::vector<unsigned char>& bytes)>;

    Mackie(CQV* host, Send sendShort, SendLong sendExclusive);
    Mackie(const Mackie&) = delete;
    Mackie& operator=(const Mackie&) = delete;

    void receive(int message); ///< from the surface
    void idle();               ///< brings the surface up to date; interface tick
    void forgetShown();        ///< it was switched on: all is sent again
    int bank() const { return first; }

private:
    static constexpr int faders = strips + 1, master = strips;
    static constexpr int lines = 2, cell = 7, lineLength = strips * cell;

    SurfaceStrip stripAt(int place) const;
    void turnBank(int by);
    void moveFader(int place, int value);
    void touch(int place, bool on);
    void turnKnob(int place, int steps);
    void press(int note);
    void pressStrip(int row, int place);
    void showStrip(int place);
    void showText(int line, int place, const std::string& text);
    void showMeter(int place, const COutputChannel* channel);
    void showLights();
    void show(int& shown, int message); ///< unless that is what is shown

    CQV* host;
    const Send send;
    const SendLong sendLong;
    int first = 0; ///< of the strips that are shown
    std::array<bool, faders> touched{};
    std::array<int, faders> movedAt{}; ///< when the fader was moved, as `asTimeInMS`
    std::array<int, 128> lights{};     ///< as they are shown, by note; -1 unknown
    std::array<int, faders> faderAt{};
    std::array<int, strips> rings{}, meters{};
    std::array<std::array<std::string, strips>, lines> texts;
};
