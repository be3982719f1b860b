#pragma once

#include "plugins/ParamRange.h"
#include "plugins/lv2/Lv2World.h"

#include <cstdint>
#include <utility>
#include <vector>

/// The ports of an LV2 plug-in as its bundle tells them.
struct Lv2Ports {
    struct Param {
        static constexpr uint32_t noPort = ~0u;

        uint32_t port = noPort;
        std::string symbol; ///< of a port; else the URI of a property, which messages set
        std::string type;   ///< of the value of a property: a URI
        std::string name, unit;
        ParamRange range;
        float usual = 0.0f;
        bool isSwitch = false;
        std::vector<std::pair<float, std::string>> points; ///< values that have names

        CStr text(float value) const;
    };
    /// A property that is a file.
    struct File {
        std::string uri, name;
    };
    struct Pin {
        uint32_t port = 0;
        bool pair = false; ///< it and the next belong together
    };
    /// Of sequences of events.
    struct Events {
        uint32_t port = 0;
        uint32_t bytes = 0; ///< room that it needs at least
        bool midi = false, position = false, patches = false;
        bool control = false; ///< what the plug-in's window says goes there
    };

    uint32_t count = 0;
    std::vector<Pin> audioIn, audioOut;
    std::vector<Param> params;
    std::vector<File> files;
    std::vector<uint32_t> shown;    ///< control outputs
    std::vector<uint32_t> carriers; ///< control voltage, which nothing is cabled to
    std::vector<Events> eventsIn, eventsOut;
    int latencyPort = -1;
    int propertyPort = -1; ///< takes in the messages for properties

    /// False, with `why`, for a plug-in that could not work here.
    bool read(const Lv2World& world, const LilvPlugin* plugin, double rate, CStr& why);
    int paramOf(uint32_t port) const;             ///< its index; -1 none
    int paramOf(const std::string& symbol) const; ///< the same
    bool hearsMidi() const;
    bool isPlayed() const; ///< by notes alone
    bool sendsMidi() const;

private:
    void readProperties(const Lv2World& world, const LilvPlugin* plugin);
    bool readPort(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port,
                  double rate);
    void readControl(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port,
                     double rate);
    void readEvents(const Lv2World& world, const LilvPlugin* plugin, const LilvPort* port);
};
