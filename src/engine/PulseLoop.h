#pragma once

#include <algorithm>
#include <cstdint>
#include <numbers>

/// Smooths the moments at which messages come that are evenly far apart: a loop of second order,
/// quick at first, and with a time of one second from then on. All in frames. Graph holder.
struct PulseLoop {
    double at = 0.0;     ///< when the latest one was
    double period = 0.0; ///< from one to the next; 0 not known yet
    int64_t came = -1;   ///< when the latest one came; -1 none yet
    int count = 0;       ///< that were followed

    /// Begins with a message that comes now; `expected` 0: the next one tells the period.
    void begin(int64_t now, double expected) {
        at = double(now);
        period = expected;
        came = now;
        count = 0;
    }
    /// Another one, at a rate in Hz.
    void follow(int64_t now, double rate) {
        constexpr double quickHz = 2.0, steadyHz = 0.5 * std::numbers::inv_pi; // of a second
        constexpr int quickly = 24;
        const double past = double(now - came);
        came = now;
        count++;
        if (period == 0.0) {
            period = past;
            at = double(now);
            return;
        }
        const double hz = std::max(quickHz / (1.0 + count / double(quickly)), steadyHz);
        const double turn = 2.0 * std::numbers::pi * hz * period / rate;
        const double error = double(now) - (at + period);
        at += period + std::min(std::numbers::sqrt2 * turn, 1.0) * error;
        period = std::max(period + std::min(turn * turn, 0.5) * error, 1.0);
    }
};
