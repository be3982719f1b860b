#pragma once

#include <jack/jack.h>
#include <set>
#include <string>
#include <vector>

/// How the ports of our client are joined to others, over its whole life and that of the next one:
/// what the user has joined or parted stays so when the device is opened anew, or the server comes
/// back. Interface thread.
class JackWiring {
public:
    using Ports = std::vector<jack_port_t*>;

    /// A new client has no connections yet: all that are known are to be made.
    void begin() { missing = pairs; }
    /// Whether our port `own` is to be joined to a port of the hardware by itself: not if the user
    /// has parted the two.
    bool joinsHardware(const std::string& own, const std::string& other) const;
    /// Makes the connections that are missing still, as far as their other ends are there by now;
    /// then takes down how the ports are joined. True if it made any. The server shows a change
    /// only in its next cycle: until then, not `settled`, nothing that was known is given up.
    bool look(jack_client_t* client, const Ports& ports, bool settled);

private:
    struct Pair {
        std::string own, other; ///< short name; full name
        bool operator==(const Pair&) const = default;
    };
    static bool make(jack_client_t* client, const Ports& ports, const Pair& pair);
    void takeDown(jack_client_t* client, const Ports& ports, bool settled);
    void add(const Pair& pair);

    std::vector<Pair> pairs;        ///< as of the latest look
    std::vector<Pair> missing;      ///< those of them that could not be made yet
    std::set<std::string> hardware; ///< the physical ports that there were
};
