#include "sequencer/play/StretchersAhead.h"

#include "engine/CQV.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr int tailTicks = ticksPerQuarter; ///< for which a clip at most dies away

struct Span {
    int from, to; ///< ticks
};

/// With a tail behind each.
int mostAtOnce(const std::vector<Span>& spans, int tail) {
    std::vector<std::pair<int, int>> edges; ///< tick, and what it adds; ends before beginnings
    for (const Span& s : spans) {
        edges.emplace_back(s.from, 1);
        edges.emplace_back(s.to + tail, -1);
    }
    std::ranges::sort(edges);
    int now = 0, most = 0;
    for (const auto& [tick, change] : edges) most = std::max(most, now += change);
    return most;
}

/// Counts all clips, and lists those that stretch.
int clipsOf(const CSeqProg& prog, std::vector<Span>& stretched) {
    int clips = 0;
    for (auto* track : prog.tracks)
        for (auto* part : track->parts) {
            if (part->type != partAudio) continue;
            int at = part->pos + part->offset;
            for (const CBaseEvent* e = part->getEvents(); e; e = e->next, clips++) {
                at += e->delta;
                if (asClip(e)->mode == playStretch)
                    stretched.push_back({at, at + asClip(e)->ticks});
            }
        }
    return clips;
}

/// After a jump those sound that begin there, beside all that die away.
int stretchersFor(const CSeq& seq) {
    int most = 0;
    for (auto* prog : seq.programs()) {
        std::vector<Span> spans;
        const int spare = clipsOf(*prog, spans) > 0 ? 1 : 0;
        most = std::max({most, spare, mostAtOnce(spans, tailTicks) + mostAtOnce(spans, 0)});
    }
    return std::min(most, CQV::stretcherCount);
}

} // namespace

int StretchersAhead::wanted() {
    const unsigned changes = seq->host->changes;
    if (countedAt != changes) counted = stretchersFor(*seq);
    countedAt = changes;
    return counted;
}

void StretchersAhead::idle() {
    CQV* host = seq->host;
    if (host->stretchers.getCount() < wanted()) host->makeStretcher();
}

void StretchersAhead::makeAll() {
    CQV* host = seq->host;
    while (host->stretchers.getCount() < wanted() && host->makeStretcher()) {
    }
}
