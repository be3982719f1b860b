#include "modular/AskGraph.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/plan/GraphProbe.h"
#include "modular/AskSilence.h"
#include "modular/GraphNames.h"
#include "modular/GraphPaths.h"
#include "sequencer/song/CSeq.h"
#include "ui/LevelText.h"
#include "ui/Song.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

using Causes = std::vector<GraphCause>;

constexpr double littleWork = 0.02; ///< share of a block that is not worth a word
constexpr float strongBoost = 6;    ///< dB of an equaliser

CStr withDigits(double value, const char* form) {
    char text[64];
    std::snprintf(text, sizeof text, form, value);
    return text;
}

CStr milliseconds(double frames, double rate) {
    return withDigits(frames / rate * 1000, "%.1f ms");
}

CStr percent(double share) {
    return withDigits(share * 100, "%.1f %%");
}

/// Calls `visit(comp, strip)` for the strips of the boxes of a path.
template <class F>
void eachStripOf(const GraphModel& model, const std::vector<bool>& boxes, F&& visit) {
    for (size_t i = 0; i < model.boxes.size(); i++) {
        if (!boxes[i]) continue;
        CComp* comp = model.boxes[i].comp;
        for (auto* strip : comp->outputs) visit(comp, strip);
    }
}

} // namespace

const char* questionText(GraphQuestion question) {
    switch (question) {
    case GraphQuestion::whySilent:
        return "Why silent?";
    case GraphQuestion::whyLate:
        return "Why late?";
    case GraphQuestion::whyLoud:
        return "Why loud?";
    default:
        return "What costs time?";
    }
}

GraphAnswer AskGraph::ask(GraphQuestion question, const CObject* about) const {
    switch (question) {
    case GraphQuestion::whySilent:
        return whySilent(about);
    case GraphQuestion::whyLate:
        return whyLate(about);
    case GraphQuestion::whyLoud:
        return whyLoud(about);
    default:
        return whatCosts(about);
    }
}

CStr AskGraph::title(GraphQuestion question, const CObject* about) const {
    return CStr(questionText(question)) + " " + itemName(model, about);
}

std::vector<int> AskGraph::portsOf(const CObject* about) const {
    if (about->category == categoryCable) return {model.cables[size_t(model.cableOf(about))].from};
    if (about->category != categoryComp) return {model.portOf(about)};
    const auto& box = model.boxes[size_t(model.boxOf(about))];
    std::vector<int> outs, ins;
    for (int i = box.firstPort; i < box.firstPort + box.portCount; i++)
        (isOutput(model.ports[size_t(i)].kind) ? outs : ins).push_back(i);
    if (!outs.empty()) return outs;
    const bool speaker = box.comp->type == compAudioOut; // its MIDI input is for controllers
    std::erase_if(ins, [&](int i) { return speaker && isMidi(model.ports[size_t(i)].kind); });
    return ins;
}

// Silence.

GraphAnswer AskGraph::whySilent(const CObject* about) const {
    AskSilence search(qv, model);
    Causes all;
    bool open = false;
    for (const int port : portsOf(about)) {
        Causes one;
        const auto& p = model.ports[size_t(port)];
        if (isOutput(p.kind)) {
            one = search.atOutput(port);
            addCauses(one, about->category == categoryCable ? search.alongCable(about)
                                                            : search.onward(port));
        } else {
            one = search.atInput(port);
            addCauses(one, search.fromInput(port));
        }
        open = open || one.empty();
        addCauses(all, one);
    }
    if (!open && !all.empty()) return {all, {}};
    CStr note = "Nothing keeps " + itemName(model, about) + " silent";
    CSeq* song = songOf(qv);
    if (song && !qv->playing)
        note += "; the song stands still";
    else if (song && song->getPos() > song->renderDuration())
        note += "; the song stands behind its last part";
    return {{}, note + "."};
}

// Lateness.

GraphAnswer AskGraph::whyLate(const CObject* about) const {
    const GraphPath path(model, about);
    const double rate = double(qv->rate);
    std::vector<std::pair<int, GraphCause>> found;
    int total = 0;
    for (size_t i = 0; i < model.boxes.size(); i++) {
        if (!path.boxes[i]) continue;
        CComp* comp = model.boxes[i].comp;
        int own = comp->enabled ? comp->getDelay() : 0;
        comp->eachInsert([&own](CComp* insert) {
            if (insert->enabled) own += insert->getDelay();
        });
        if (own <= 0) continue;
        total += own;
        found.push_back({own, {comp, boxName(comp) + " takes " + milliseconds(own, rate) + "."}});
    }
    for (size_t i = 0; i < model.cables.size(); i++) {
        const int added = path.cables[i] ? probe.delayOf(model.cables[i].cable).added : 0;
        if (added <= 0) continue;
        found.push_back(
            {added,
             {model.cables[i].cable, "The cable " + cableName(model, int(i)) + " waits " +
                                         milliseconds(added, rate) + " for what is later."}});
    }
    std::ranges::stable_sort(found, std::greater(), [](const auto& f) { return f.first; });
    GraphAnswer answer;
    for (auto& [frames, cause] : found) answer.causes.push_back(cause);
    answer.note = found.empty() ? itemName(model, about) + " is not late."
                                : "In all " + milliseconds(total, rate) + ".";
    return answer;
}

// Loudness.

GraphAnswer AskGraph::whyLoud(const CObject* about) const {
    const GraphPath path(model, about);
    GraphAnswer answer;
    eachStripOf(model, path.boxes, [&](CComp* comp, COutputChannel* strip) {
        const CComp* track = comp->getComp(strip);
        const CStr name = track ? track->id : boxName(comp);
        CObject* blame = track ? static_cast<CObject*>(strip) : comp;
        const float peak = std::max<float>(strip->holdL, strip->holdR);
        if (peak >= 1.0f)
            answer.causes.push_back(
                {blame, name + " has reached " + decibelText(peak) + ": it clips."});
        if (strip->trim > 0.0f) answer.causes.push_back({blame, "The trim of " + name + " is up."});
        for (const CEQ* band : strip->eq)
            if (band && band->active && band->gain >= strongBoost)
                answer.causes.push_back({blame, "The equaliser of " + name + " adds " +
                                                    withDigits(double(band->gain), "%.1f dB") +
                                                    "."});
    });
    for (size_t i = 0; i < model.cables.size(); i++)
        if (path.cables[i] && model.cables[i].loops && !model.cables[i].midi)
            answer.causes.push_back(
                {model.cables[i].cable, "The cable " + cableName(model, int(i)) + " feeds back."});
    // The same sound by two cables to one end.
    for (size_t i = 0; i < model.boxes.size(); i++) {
        const auto& box = model.boxes[i];
        if (!path.boxes[i] || box.comp->type == compSeq) continue;
        for (int out = box.firstPort; out < box.firstPort + box.portCount; out++)
            if (model.ports[size_t(out)].kind == PortKind::audioOut && waysToOut(out) > 1)
                answer.causes.push_back(
                    {box.comp, boxName(box.comp) + " reaches the output by several ways."});
    }
    if (answer.causes.empty()) answer.note = itemName(model, about) + " is not loud.";
    return answer;
}

/// From an audio output to the audio outs; those beyond a few are not counted.
int AskGraph::waysToOut(int output, int depth) const {
    constexpr int deepest = 32, most = 4;
    if (depth > deepest) return 0;
    int ways = 0;
    for (const auto& cable : model.cables) {
        if (cable.from != output || cable.loops || model.toKey(cable) || ways >= most) continue;
        const auto& box = model.boxes[size_t(model.ports[size_t(cable.to)].box)];
        if (box.comp->type == compAudioOut) ways++;
        for (int i = box.firstPort; i < box.firstPort + box.portCount; i++)
            if (model.ports[size_t(i)].kind == PortKind::audioOut && passes(model, cable.to, i))
                ways += waysToOut(i, depth + 1);
    }
    return ways;
}

// Work.

GraphAnswer AskGraph::whatCosts(const CObject* about) const {
    const GraphPath path(model, about);
    const double block = probe.blockNs();
    std::vector<std::pair<double, GraphCause>> found;
    double total = 0;
    for (size_t i = 0; i < model.boxes.size(); i++) {
        if (!path.boxes[i] || block <= 0) continue;
        CComp* comp = model.boxes[i].comp;
        const GraphProbe::Work work = probe.workOf(comp);
        const double mean = double(work.mean) / block, worst = double(work.worst) / block;
        total += mean;
        if (mean < littleWork) continue;
        found.push_back({mean,
                         {comp, boxName(comp) + " takes " + percent(mean) +
                                    " of a block, at worst " + percent(worst) + "."}});
    }
    std::ranges::stable_sort(found, std::greater(), [](const auto& f) { return f.first; });
    GraphAnswer answer;
    for (auto& [share, cause] : found) answer.causes.push_back(cause);
    answer.note = found.empty() ? "Nothing here costs much: " + percent(total) + " of a block."
                                : "In all " + percent(total) + " of a block.";
    return answer;
}
