#include "engine/MixScene.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"

#include <algorithm>
#include <cmath>

namespace {

/// A value of a strip, or one of several of a kind.
struct Row {
    ScenePart part;
    StoredValue (*of)(COutputChannel* ch, int index);
    int count; ///< -1: one for each bus
};

template <StoredValue (*value)(COutputChannel*)>
StoredValue single(COutputChannel* ch, int) {
    return value(ch);
}

const Row rows[] = {
    {sceneLevels, single<faderOf>, 1},
    {sceneLevels, single<panOf>, 1},
    {sceneLevels, single<trimOf>, 1},
    {sceneSwitches, single<muteOf>, 1},
    {sceneSwitches, single<soloOf>, 1},
    {sceneEq, eqPowerOf, eqBandCount},
    {sceneEq, eqTypeOf, eqBandCount},
    {sceneEq, eqFrequencyOf, eqBandCount},
    {sceneEq, eqGainOf, eqBandCount},
    {sceneEq, eqQOf, eqBandCount},
    {sceneSends, [](COutputChannel* ch, int bus) { return levelOf(ch->sendLevels[bus]); }, -1},
};
constexpr int mostNumbers = 25 + maxSends, mostInserts = 256;

template <class F>
void eachStrip(CQV* host, F&& visit) {
    for (const CList* list : listsOf(host->comps, host->sends))
        for (auto* c : each<CComp>(*list))
            for (auto* ch : c->outputs) visit(ch);
}

} // namespace

CMixScene::CMixScene() {
    id = "Scene";
}

CMixScene::Strip CMixScene::taken(COutputChannel* ch, int buses) {
    Strip strip;
    strip.channel = ch;
    for (const Row& row : rows)
        for (int i = 0; i < (row.count < 0 ? buses : row.count); i++)
            strip.numbers.push_back(row.of(ch, i).get()[0]);
    for (auto* insert : ch->inserts)
        strip.inserts.push_back({insert->id, double(insert->wet), insert->enabled ? 1.0 : 0.0});
    return strip;
}

void CMixScene::take(CQV* host) {
    const int buses = std::min(host->sends.getCount(), maxSends);
    strips.clear();
    eachStrip(host, [&](COutputChannel* ch) { strips.push_back(taken(ch, buses)); });
}

void CMixScene::set(const Strip& strip, int parts) {
    ValueDoor& door = *strip.channel->comp->host->values;
    size_t next = 0;
    const int buses = int(strip.numbers.size()) - (mostNumbers - maxSends);
    for (const Row& row : rows)
        for (int i = 0; i < (row.count < 0 ? buses : row.count); i++) {
            if (next == strip.numbers.size()) return;
            const double to = strip.numbers[next++];
            if (!(parts & row.part)) continue;
            const StoredValue value = row.of(strip.channel, i);
            StoredValue::Numbers numbers = value.get();
            numbers[0] = to;
            door.set(value, numbers);
        }
    int place = 0;
    for (const Insert& kept : strip.inserts) {
        auto* insert = strip.channel->inserts.items(place++);
        if (!(parts & sceneInserts) || !insert || !(insert->id == kept.name)) continue;
        door.set(parameterOf(insert, paramWet), kept.wet);
        door.set(parameterOf(insert, paramPower), kept.power);
    }
}

void CMixScene::recall(CQV* host, int parts, const std::vector<COutputChannel*>& only,
                       const CStr& title) const {
    std::vector<const COutputChannel*> present;
    eachStrip(host, [&](COutputChannel* ch) { present.push_back(ch); });
    host->values->begin(title);
    for (const Strip& strip : strips) {
        const bool there = std::ranges::find(present, strip.channel) != present.end();
        const bool meant = only.empty() || std::ranges::find(only, strip.channel) != only.end();
        if (there && meant) set(strip, parts);
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
    std::vector<const COutputChannel*> known;
    const auto add = [&](CComp* c) {
        for (auto* ch : c->outputs) known.push_back(ch);
    };
    eachStrip(host, [&](COutputChannel* ch) { known.push_back(ch); });
    host->eachHeld([&](CObject* object) {
        if (object->category == categoryComp) add(static_cast<CComp*>(object));
        if (object->asType(categoryChannel, channelOutput))
            known.push_back(static_cast<COutputChannel*>(object));
    });
    std::erase_if(strips, [&](const Strip& s) {
        return s.channel && std::ranges::find(known, s.channel) == known.end();
    });
}

// Files.

void CMixScene::write(CStream* stream, CQV* host) const {
    stream->writeStr(id);
    std::vector<std::pair<const Strip*, Place>> kept;
    for (const Strip& strip : strips)
        for (const int list : {0, 2}) {
            const CList& comps = list ? static_cast<const CList&>(host->sends) : host->comps;
            int at = 0;
            for (auto* c : each<CComp>(comps)) {
                const int output = c->outputs.indexed(strip.channel);
                if (output >= 0) kept.push_back({&strip, {list, at, output}});
                at++;
            }
        }
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
    for (Strip& strip : strips) {
        const CList* list = intToList(host, strip.place.list);
        auto* comp = list ? static_cast<CComp*>(list->items(strip.place.comp)) : nullptr;
        strip.channel = comp ? comp->output(strip.place.output) : nullptr;
    }
    std::erase_if(strips, [](const Strip& s) { return !s.channel; });
}
