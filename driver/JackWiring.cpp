#include "driver/JackWiring.h"

#include <algorithm>
#include <cerrno>

namespace {

/// Calls `visit` for each name of a list of the server's, which may be null.
template <class F>
void eachName(const char** names, F&& visit) {
    for (const char** name = names; name && *name; ++name) visit(std::string(*name));
    if (names) jack_free(names);
}

} // namespace

bool JackWiring::joinsHardware(const std::string& own, const std::string& other) const {
    const auto known = std::find(pairs.begin(), pairs.end(), Pair{own, other});
    return known != pairs.end() || !hardware.contains(other);
}

bool JackWiring::look(jack_client_t* client, const Ports& ports, bool settled) {
    const auto made =
        std::erase_if(missing, [&](const Pair& pair) { return make(client, ports, pair); });
    takeDown(client, ports, settled && made == 0);
    return made > 0;
}

bool JackWiring::make(jack_client_t* client, const Ports& ports, const Pair& pair) {
    const auto at = std::find_if(ports.begin(), ports.end(), [&](jack_port_t* port) {
        return pair.own == jack_port_short_name(port);
    });
    if (at == ports.end() || !jack_port_by_name(client, pair.other.c_str())) return false;
    const char *own = jack_port_name(*at), *other = pair.other.c_str();
    const bool sends = jack_port_flags(*at) & JackPortIsOutput;
    const int result = sends ? jack_connect(client, own, other) : jack_connect(client, other, own);
    return result == 0 || result == EEXIST;
}

void JackWiring::takeDown(jack_client_t* client, const Ports& ports, bool settled) {
    if (settled) pairs = missing;
    for (jack_port_t* port : ports)
        eachName(jack_port_get_all_connections(client, port), [&](const std::string& other) {
            add({jack_port_short_name(port), other});
        });
    hardware.clear();
    eachName(jack_get_ports(client, nullptr, nullptr, JackPortIsPhysical),
             [this](const std::string& name) { hardware.insert(name); });
}

void JackWiring::add(const Pair& pair) {
    if (std::find(pairs.begin(), pairs.end(), pair) == pairs.end()) pairs.push_back(pair);
}
