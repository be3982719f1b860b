#pragma once

#include "driver/PulseConnection.h"

#include <cstdint>
#include <string>
#include <vector>

/// A sink to play to or a source to record from.
struct PulseEndpoint {
    std::string name, description;
    uint32_t card = PA_INVALID_INDEX;
    pa_channel_map map{};
};

/// What the server offers.
struct PulseListing {
    std::vector<PulseEndpoint> sinks;   ///< the default first
    std::vector<PulseEndpoint> sources; ///< the default first, without monitors of sinks

    /// Asks the server; empty if it does not answer.
    explicit PulseListing(PulseConnection& connection);
    /// The source to record from beside `sink`: that of the same card, else the default; null if
    /// there is none.
    const PulseEndpoint* partner(const PulseEndpoint& sink) const;

private:
    void defaultFirst(std::vector<PulseEndpoint>& list, const std::string& name);
    PulseConnection& connection;
    std::string defaultSink, defaultSource;
};
