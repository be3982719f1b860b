#pragma once

#include "base/CStr.h"

#include <array>

/// What moves a parameter through a map, as one number, which files have: 0 to 127 are controllers,
/// above these stand what else a device sends.
constexpr int firstNoteSource = 128; ///< to 255: a key, by its velocity; let go it is 0
constexpr int pressureSource = 256;  ///< of a channel
constexpr int bendSource = 257;
/// A controller of 0 to 31, made fine by that which stands 32 above it.
constexpr int firstFineSource = 258, lastFineSource = 289;
constexpr int firstNrpnSource = 1 << 14; ///< and 16383 above: a number that controllers choose
constexpr int mostSource = (1 << 15) - 1;

/// Whether a controller only chooses what others move.
constexpr bool choosesNumber(int source) {
    return source >= 98 && source <= 101;
}

/// In a few letters: "7", "Key 60", "Press.", "Bend", "7+39", "N300".
CStr controlSourceText(int source);

/// A source has a value, 0 to 127, and between these what it is finer.
struct ControlMove {
    int source;
    float value;
};

/// Reads messages of channels as moves of sources. It knows what went before, by channel. Graph
/// holder.
class ControlReader {
public:
    static constexpr int most = 2; ///< moves of one message

    /// Writes what a packed message moves, and answers how many moves these are.
    int read(int message, ControlMove (&moves)[most]);

private:
    struct Channel {
        std::array<unsigned char, 32> coarse{};
        int nrpn = -1; ///< that is chosen; -1 none
        int nrpnHigh = 0;
        int data = 0; ///< coarse part of its value
    };
    int readController(Channel& ch, int number, int value, ControlMove (&moves)[most]);

    std::array<Channel, 16> channels;
};
