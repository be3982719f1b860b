#include "engine/MixScene.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"

#include <algorithm>
#include <cmath>

namespace {

/// A value of a strip, or one of several of a kind.
struct Row {
    ScenePart part;
    StoredValue (*of)(const SceneStrip& strip, int index);
    int count; ///< -1: one for each bus
};

template <StoredValue (*value)(COutputChannel*, int)>
StoredValue ofBand(const SceneStrip& strip, int band) {
    return value(strip.channel, band);
}

const Row rows[] = {
    {sceneLevels, [](const SceneStrip& s, int) { return s.level; }, 1},
    {sceneLevels, [](const SceneStrip& s, int) { return s.pan; }, 1},
    {sceneLevels, [](const SceneStrip& s, int) { return trimOf(s.channel); }, 1},
    {sceneSwitches, [](const SceneStrip& s, int) { return s.mute; }, 1},
    {sceneSwitches, [](const SceneStrip& s, int) { return s.solo; }, 1},
    {sceneEq, ofBand<eqPowerOf>, eqBandCount},
    {sceneEq, ofBand<eqTypeOf>, eqBandCount},
    {sceneEq, ofBand<eqFrequencyOf>, eqBandCount},
    {sceneEq, ofBand<eqGainOf>, eqBandCount},
    {sceneEq, ofBand<eqQOf>, eqBandCount},
    {sceneSends, [](const SceneStrip& s, int bus) { return levelOf(s.channel->sendLevels[bus]); },
     -1},
};
constexpr int mostNumbers = 25 + maxSends, mostInserts = 256;
constexpr int sendsList = 2; ///< of places

std::vector<InnerStrips>& innerStrips() {
    static std::vector<InnerStrips> all;
    return all;
}

void visitOutputs(CComp* comp, SceneStrip::Place place, const VisitStrips& visit) {
    for (auto* ch : comp->outputs) {
        place.output++;
        visit({ch, place, faderOf(ch), panOf(ch), muteOf(ch), soloOf(ch)});
    }
}

/// All strips that a project has.
std::vector<SceneStrip> listStrips(CQV* host) {
    std::vector<SceneStrip> all;
    const VisitStrips add = [&all](const SceneStrip& strip) { all.push_back(strip); };
    for (const int list : {0, sendsList}) {
        const auto& comps = list ? host->sends : host->comps;
        int at = 0;
        for (auto* c : comps) visitOutputs(c, {list, at++, -1}, add);
    }
    for (const InnerStrips inner : innerStrips()) inner(host, nullptr, add);
    return all;
}

const SceneStrip* find(const std::vector<SceneStrip>& all, const COutputChannel* ch) {
    const auto found = std::ranges::find(all, ch, &SceneStrip::channel);
    return found == all.end() ? nullptr : &*found;
}

} // namespace

void enterInnerStrips(InnerStrips strips) {
    std::vector<InnerStrips>& all = innerStrips();
    if (std::ranges::find(all, strips) == all.end()) all.push_back(strips);
}

CMixScene::CMixScene() {
    id = "Scene";
}

CMixScene::Strip CMixScene::taken(const SceneStrip& strip, int buses) {
    Strip kept;
    kept.channel = strip.channel;
    for (const Row& row : rows)
        for (int i = 0; i < (row.count < 0 ? buses : row.count); i++)
            kept.numbers.push_back(row.of(strip, i).get()[0]);
    for (auto* insert : strip.channel->inserts)
        kept.inserts.push_back({insert->id, double(insert->wet), insert->enabled ? 1.0 : 0.0});
    return kept;
}

void CMixScene::take(CQV* host) {
    const int buses = std::min(host->sends.getCount(), maxSends);
    strips.clear();
    for (const SceneStrip& strip : listStrips(host)) strips.push_back(taken(strip, buses));
}

void CMixScene::set(const Strip& kept, const SceneStrip& strip, int parts) {
    ValueDoor& door = *strip.channel->comp->host->values;
    size_t next = 0;
    const int buses = int(kept.numbers.size()) - (mostNumbers - maxSends);
    for (const Row& row : rows)
        for (int i = 0; i < (row.count < 0 ? buses : row.count); i++) {
            if (next == kept.numbers.size()) return;
            const double to = kept.numbers[next++];
            if (!(parts & row.part)) continue;
            const StoredValue value = row.of(strip, i);
            StoredValue::Numbers numbers = value.get();
            numbers[0] = to;
            door.set(value, numbers);
        }
    int place = 0;
    for (const Insert& was : kept.inserts) {
        auto* insert = strip.channel->inserts.items(place++);
        if (!(parts & sceneInserts) || !insert || !(insert->id == was.name)) continue;
        door.set(parameterOf(insert, paramWet), was.wet);
        door.set(parameterOf(insert, paramPower), was.power);
    }
}

void CMixScene::recall(CQV* host, int parts, const std::vector<COutputChannel*>& only,
                       const CStr& title) const {
    const std::vector<SceneStrip> present = listStrips(host);
    host->values->begin(title);
    for (const Strip& kept : strips) {
        const SceneStrip* strip = find(present, kept.channel);
        const bool meant = only.empty() || std::ranges::find(only, kept.channel) != only.end();
        if (strip && meant) set(kept, *strip, parts);
    }
    host->values->end();
}

CMixScene* CMixScene::copy() const {
    auto* twin = new CMixScene;
    twin->id = id;
    twin->strips = strips;
    return twin;
}

void CMixScene::keepTo(CQV* host) {
    if (strips.empty()) return;
    std::vector<const COutputChannel*> known;
    const VisitStrips add = [&known](const SceneStrip& strip) { known.push_back(strip.channel); };
    for (const SceneStrip& strip : listStrips(host)) add(strip);
    host->eachHeld([&](CObject* object) {
        if (CComp* comp = asComp(object)) visitOutputs(comp, {}, add);
        if (const COutputChannel* strip = asStrip(object)) known.push_back(strip);
        for (const InnerStrips inner : innerStrips()) inner(host, object, add);
    });
    std::erase_if(strips, [&](const Strip& s) {
        return s.channel && std::ranges::find(known, s.channel) == known.end();
    });
}

// Files.

void CMixScene::write(CStream* stream, CQV* host) const {
    stream->writeStr(id);
    const std::vector<SceneStrip> present = listStrips(host);
    std::vector<std::pair<const Strip*, SceneStrip::Place>> kept;
    for (const Strip& strip : strips)
        if (const SceneStrip* there = find(present, strip.channel))
            kept.push_back({&strip, there->place});
    stream->writeInt(int(kept.size()));
    for (const auto& [strip, place] : kept) {
        for (const int v : {place.list, place.comp, place.output, int(strip->numbers.size())})
            stream->writeInt(v);
        for (const double number : strip->numbers) stream->writeFloat(float(number));
        stream->writeInt(int(strip->inserts.size()));
        for (const Insert& insert : strip->inserts) {
            stream->writeStr(insert.name);
            stream->writeFloat(float(insert.wet));
            stream->writeFloat(float(insert.power));
        }
    }
}

void CMixScene::read(BlockView& body) {
    constexpr int intBytes = 4, headInts = 4, leastInsert = 12;
    strips.clear();
    if (!body.has(intBytes)) return;
    id = body.readStr();
    if (!body.has(intBytes)) return;
    for (int left = body.readInt(); left > 0 && body.has(headInts * intBytes); left--) {
        Strip strip;
        strip.place.list = body.readInt();
        strip.place.comp = body.readInt();
        strip.place.output = body.readInt();
        const int numbers = body.readInt();
        if (numbers < 0 || numbers > mostNumbers || !body.has((numbers + 1) * intBytes)) return;
        for (int i = 0; i < numbers; i++) {
            const double number = double(body.readFloat());
            strip.numbers.push_back(std::isfinite(number) ? number : 0.0);
        }
        const int inserts = body.readInt();
        if (inserts < 0 || inserts > mostInserts) return;
        for (int i = 0; i < inserts; i++) {
            if (!body.has(leastInsert)) return;
            Insert insert{body.readStr()};
            if (!body.has(2 * intBytes)) return;
            insert.wet = double(fLimit(body.readFloat(), 0.0f, 1.0f));
            insert.power = double(fLimit(body.readFloat(), 0.0f, 1.0f));
            strip.inserts.push_back(std::move(insert));
        }
        strips.push_back(std::move(strip));
    }
}

void CMixScene::bind(CQV* host) {
    const std::vector<SceneStrip> present = listStrips(host);
    for (Strip& strip : strips) {
        const auto there = std::ranges::find(present, strip.place, &SceneStrip::place);
        strip.channel = there == present.end() ? nullptr : there->channel;
    }
    std::erase_if(strips, [](const Strip& s) { return !s.channel; });
}
