#include "mixer/StripFilter.h"

#include "engine/CQV.h"
#include "sequencer/song/CTrack.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace {

using Channels = std::vector<const COutputChannel*>;

bool has(const Channels& channels, const COutputChannel* ch) {
    return std::ranges::find(channels, ch) != channels.end();
}

/// Whether the sound of a strip comes to one of them, by cables or sends.
bool reaches(CQV* host, const COutputChannel* ch, const Channels& goals,
             std::set<const COutputChannel*>& seen) {
    if (has(goals, ch)) return true;
    if (!seen.insert(ch).second) return false;
    const auto through = [&](const CComp* c) {
        for (const auto* out : c->outputs)
            if (reaches(host, out, goals, seen)) return true;
        return false;
    };
    for (const auto* c : host->comps)
        if (c->type != compSeq && fedBy(c, ch) && through(c)) return true;
    int bus = 0;
    for (const auto* c : host->sends) {
        const CSend* send = ch->sendLevels[bus];
        if (send->level > 0.0f && !send->muted && through(c)) return true;
        if (++bus == maxSends) break;
    }
    return false;
}

} // namespace

void StripFilter::set(Kind which, const std::vector<MixerStrip>& strips) {
    how = which;
    meant.clear();
    for (const MixerStrip& s : strips) meant.push_back(s.channel);
}

void StripFilter::setName(const CStr& part) {
    name = part.lowerCase();
}

bool StripFilter::passes(CQV* host, const MixerStrip& strip) const {
    if (strip.section == StripSection::outputs) return true;
    if (!name.empty()) {
        const CStr own = nameOf(strip).lowerCase();
        if (std::string_view(own.asChar()).find(name.asChar()) == std::string_view::npos)
            return false;
    }
    std::set<const COutputChannel*> seen;
    // The sound of a kit goes as the kit does.
    const COutputChannel* leads = strip.drum ? strip.track->output() : strip.channel;
    switch (how) {
    case sounding:
        return sounds(leads);
    case routed:
        return reaches(host, leads, meant, seen);
    case chosen:
        return has(meant, strip.channel);
    default:
        return true;
    }
}

bool StripFilter::listen(const std::vector<MixerStrip>& strips, int now) {
    const size_t before = heard.size();
    bool fresh = false;
    for (const MixerStrip& s : strips)
        if (s.channel->peakL > audible || s.channel->peakR > audible)
            fresh = heard.insert_or_assign(s.channel, now).second || fresh;
    std::erase_if(heard, [now](const auto& entry) { return now - entry.second > soundMs; });
    return fresh || heard.size() != before;
}

void StripFilter::keepTo(const std::vector<MixerStrip>& strips) {
    const auto gone = [&strips](const COutputChannel* ch) {
        return std::ranges::none_of(strips, [ch](const MixerStrip& s) { return s.channel == ch; });
    };
    std::erase_if(meant, gone);
    std::erase_if(heard, [&gone](const auto& entry) { return gone(entry.first); });
}
