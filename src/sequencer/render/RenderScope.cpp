#include "sequencer/render/RenderScope.h"

#include "audiofiles/CSample.h"
#include "audiofiles/FileRoom.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/render/RenderExport.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int maxNameBytes = 100;

/// What a name may give to a file's name.
CStr fileNameOf(const CStr& name) {
    CStr safe = name.sub(0, maxNameBytes);
    for (int i = 0; i < safe.length(); i++) {
        const auto c = static_cast<unsigned char>(safe[i]);
        if (c < ' ' || c == '/' || c == '\\') safe.buffer()[i] = '_';
    }
    return safe;
}

class Numbering {
public:
    std::vector<TrackOutput> outputs;

    void add(COutputChannel* channel, const char* kind, const CStr& name) {
        char number[16];
        std::snprintf(number, sizeof number, "%02d_", int(outputs.size()) + 1);
        outputs.push_back({channel, CStr(number) + kind + fileNameOf(name)});
    }
};

/// From the start of the first selected part to the end of the last one.
RenderSpan selectedSpan(CSeq* seq) {
    ListOf<CPart> parts;
    seq->getProg()->getSelectedParts(&parts);
    int from = maxTicks, to = 0;
    for (auto* part : parts) {
        from = std::min(from, int(part->pos));
        to = std::max(to, saturate(int64_t(part->pos) + seq->getTicks(part)));
    }
    return {double(from), double(to)};
}

} // namespace

std::vector<std::pair<CComp*, COutputChannel*>> channelsOf(CTrack* track) {
    std::vector<std::pair<CComp*, COutputChannel*>> found;
    if (track->kind == trackAudio || track->kind == trackDrum) {
        if (track->output()) found.emplace_back(track, track->output());
        return found;
    }
    const CMIDIQ* port = track->outPort();
    for (CComp* c : track->host->comps) {
        if (!fedBy(c, port)) continue;
        for (auto* ch : c->outputs) found.emplace_back(c, ch);
    }
    return found;
}

std::vector<TrackOutput> trackOutputs(CSeq* seq) {
    Numbering numbering;
    for (auto* songTrack : seq->getProg()->tracks) {
        CTrack* track = songTrack->track;
        if (!track->selected() || songTrack->parts.empty()) continue;
        for (const auto& [comp, channel] : channelsOf(track))
            numbering.add(channel, "track_", track->id);
    }
    for (auto* bus : seq->host->sends)
        for (auto* channel : bus->outputs) numbering.add(channel, "fx_", bus->id);
    return std::move(numbering.outputs);
}

RenderSpan renderSpan(const CRender& render, CSeq* seq) {
    if (!seq->getProg()) return {};
    if (render.rangeMode == rangeSelected) return selectedSpan(seq);
    int from = 0, to = render.comp->renderDuration();
    if (render.rangeMode == rangeLocators) seq->getLoopSection(from, to);
    return {double(from), double(to)};
}

CStr whyTooLong(const CRender& render, CSeq* seq, const RenderSpan& span, const CSample& file) {
    const double tail = asMax(render.tailMs, 0) / 1000.0 * double(file.rate);
    const int ticks = asInt(span.to - span.from);
    const double frames = seq->ticksToFrames(asInt(span.from), ticks, asRound(double(file.rate)));
    if (frames + tail <= double(roomOf(file))) return "";
    const int minutes = asInt(double(roomOf(file)) / double(file.rate) / 60.0);
    return "Too long: a file of " + asStr(asRound(double(file.rate))) + " Hz and " +
           asStr(file.bits) + " bits, " + (file.chs == 1 ? "mono" : "stereo") + ", holds " +
           asStr(minutes) + " minutes";
}

SelectedOnly::SelectedOnly(CSeq* sequencer, bool active) {
    if (!active || !sequencer->getProg()) return;
    for (auto* t : sequencer->getProg()->tracks) {
        trackFlags.emplace_back(t, t->flags.load());
        t->setMuted(false);
        t->setSoloed(false);
        for (auto* part : t->parts) {
            partMutes.emplace_back(part, part->muted());
            part->setMuted(!part->selected());
        }
    }
}

SelectedOnly::~SelectedOnly() {
    for (const auto& [t, flags] : trackFlags) {
        t->setMuted(flags & songTrackMuted);
        t->setSoloed(flags & songTrackSoloed);
    }
    for (const auto& [part, muted] : partMutes) {
        part->setMuted(muted);
        part->setSelected(false);
    }
}
