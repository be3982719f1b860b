#include "modular/FindGraph.h"

#include "base/CObject.h"
#include "engine/CComp.h"
#include "modular/CompGlyphs.h"
#include "modular/GraphNames.h"

#include <algorithm>
#include <string>

namespace {

using Words = std::vector<std::string>;

Words wordsOf(const CStr& text) {
    Words words;
    std::string word;
    for (const char c : std::string(text.lowerCase().asChar()) + " ") {
        if (c != ' ' && c != ',') {
            word += c;
        } else if (!word.empty()) {
            words.push_back(word);
            word.clear();
        }
    }
    return words;
}

/// How well a name bears words: letters that are left over, -1 if a word is missing.
int restOf(const CStr& name, const Words& words) {
    const Words has = wordsOf(name);
    int rest = 0;
    for (const std::string& word : has) rest += int(word.size());
    for (const std::string& word : words) {
        const bool found = std::ranges::any_of(
            has, [&word](const std::string& part) { return part.find(word) == 0; });
        if (!found) return -1;
        rest -= int(word.size());
    }
    return rest < 0 ? 0 : rest;
}

struct Match {
    int index, rest;
};

/// The ports of a direction, the best first.
std::vector<Match> matchPorts(const GraphModel& model, const Words& words, bool outputs) {
    std::vector<Match> found;
    for (size_t i = 0; i < model.ports.size(); i++) {
        if (isOutput(model.ports[i].kind) != outputs) continue;
        const int rest = restOf(fullPortName(model, int(i)), words);
        if (rest >= 0) found.push_back({int(i), rest});
    }
    std::ranges::stable_sort(found, {}, &Match::rest);
    return found;
}

/// The best pair of one kind of different components; sound before notes, where both would do.
void matchPair(const GraphModel& model, const Words& from, const Words& to, FoundItems& found) {
    int least = 0;
    for (const Match& a : matchPorts(model, from, true))
        for (const Match& b : matchPorts(model, to, false)) {
            const auto &out = model.ports[size_t(a.index)], &in = model.ports[size_t(b.index)];
            if (out.box == in.box || !fits(out.kind, in.kind)) continue;
            constexpr int forNotes = 8;
            const int rest = a.rest + b.rest + (isMidi(out.kind) ? forNotes : 0);
            if (found.from >= 0 && rest >= least) continue;
            least = rest;
            found.from = a.index;
            found.to = b.index;
        }
}

} // namespace

FoundItems findItems(const GraphModel& model, const CStr& typed) {
    FoundItems found;
    Words words = wordsOf(typed);
    if (!words.empty() && words.front() == "connect") words.erase(words.begin());
    const auto to = std::ranges::find(words, "to");
    if (to != words.end() && to != words.begin()) {
        found.joins = true;
        const Words from(words.begin(), to), target(to + 1, words.end());
        if (!target.empty()) matchPair(model, from, target, found);
        return found;
    }
    if (words.empty()) return found;
    std::vector<std::pair<int, CObject*>> all;
    for (const auto& box : model.boxes) {
        const int rest = restOf(boxName(box.comp) + " " + compKindName(box.comp->type), words);
        if (rest >= 0) all.emplace_back(rest, box.comp);
    }
    constexpr int behindBoxes = 1000;
    for (size_t i = 0; i < model.ports.size(); i++) {
        const int rest = restOf(fullPortName(model, int(i)), words);
        if (rest >= 0) all.emplace_back(rest + behindBoxes, model.ports[i].io);
    }
    std::ranges::stable_sort(all, {}, [](const auto& a) { return a.first; });
    for (const auto& [rest, item] : all) found.items.push_back(item);
    return found;
}
