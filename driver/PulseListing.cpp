#include "driver/PulseListing.h"

#include <algorithm>

namespace {

/// What the callbacks of one question write to.
struct Answer {
    PulseConnection& connection;
    std::vector<PulseEndpoint>& list;
};

template <class Info>
void addEndpoint(const Info& info, std::vector<PulseEndpoint>& list) {
    list.push_back(
        {info.name, info.description ? info.description : info.name, info.card, info.channel_map});
}

void sinkFound(pa_context*, const pa_sink_info* info, int end, void* data) {
    auto* answer = static_cast<Answer*>(data);
    if (end)
        answer->connection.signal();
    else
        addEndpoint(*info, answer->list);
}

void sourceFound(pa_context*, const pa_source_info* info, int end, void* data) {
    auto* answer = static_cast<Answer*>(data);
    if (end)
        answer->connection.signal();
    else if (info->monitor_of_sink == PA_INVALID_INDEX)
        addEndpoint(*info, answer->list);
}

} // namespace

PulseListing::PulseListing(PulseConnection& pulse) : connection(pulse) {
    const PulseConnection::Lock lock(connection);
    if (!connection.good()) return;
    const auto serverFound = [](pa_context*, const pa_server_info* info, void* data) {
        auto* listing = static_cast<PulseListing*>(data);
        if (info && info->default_sink_name) listing->defaultSink = info->default_sink_name;
        if (info && info->default_source_name) listing->defaultSource = info->default_source_name;
        listing->connection.signal();
    };
    pa_context* context = connection.context;
    Answer sinkAnswer{connection, sinks}, sourceAnswer{connection, sources};
    connection.finish(pa_context_get_server_info(context, serverFound, this));
    connection.finish(pa_context_get_sink_info_list(context, sinkFound, &sinkAnswer));
    connection.finish(pa_context_get_source_info_list(context, sourceFound, &sourceAnswer));
    defaultFirst(sinks, defaultSink);
    defaultFirst(sources, defaultSource);
}

void PulseListing::defaultFirst(std::vector<PulseEndpoint>& list, const std::string& name) {
    std::stable_partition(list.begin(), list.end(),
                          [&](const PulseEndpoint& e) { return e.name == name; });
}

const PulseEndpoint* PulseListing::partner(const PulseEndpoint& sink) const {
    for (const PulseEndpoint& source : sources) {
        if (sink.card != PA_INVALID_INDEX && source.card == sink.card) return &source;
    }
    const bool hasDefault = !sources.empty() && sources.front().name == defaultSource;
    return hasDefault ? &sources.front() : nullptr;
}
