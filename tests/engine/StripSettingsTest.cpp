#include "base/CStream.h"
#include "engine/StripBlocks.h"
#include "engine/StripFixture.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "support/StoredPlaces.h"

#include <random>

namespace {

constexpr int stripBytes = 52, eqBytes = 72, sendsBytes = 12, buses = 2;

std::string written(const COutputChannel* ch) {
    CMemoryStream s;
    writeStrip(&s, ch);
    writeEq2(&s, ch);
    writeSends(&s, ch, buses);
    return {s.data, s.data + s.getPos()};
}

/// Where what is stored can differ at all: any numbers are read, and written again.
StoredPlaces storable(COutputChannel* ch, const std::string& usual) {
    std::mt19937 chance(1);
    StoredPlaces all;
    for (int round = 0; round < 400; round++) {
        CMemoryStream s;
        for (int i = 0; i < stripBytes + eqBytes; i += 4)
            if (chance() % 2)
                s.writeInt(int(chance() % 3));
            else
                s.writeFloat(float(chance() % 2001) * (chance() % 3 ? 0.001f : 10.0f) - 1.0f);
        s.writeInt(buses);
        for (int i = 0; i < buses; i++) s.writeFloat(float(chance() % 1001) * 0.001f);
        s.setPos(0);
        readStrip(&s, ch);
        s.setPos(stripBytes);
        readEq2(&s, ch);
        s.setPos(stripBytes + eqBytes);
        readSends(&s, ch, int(s.getSize()));
        all.merge(differing(usual, written(ch)));
    }
    return all;
}

std::vector<StoredValue> controls(COutputChannel* ch) {
    std::vector<StoredValue> all{faderOf(ch), panOf(ch), trimOf(ch), muteOf(ch), soloOf(ch)};
    for (int band = 0; band < eqBandCount; band++)
        for (const auto& of : {eqPowerOf, eqTypeOf, eqFrequencyOf, eqGainOf, eqQOf})
            all.push_back(of(ch, band));
    for (int bus = 0; bus < buses; bus++) all.push_back(levelOf(ch->sendLevels[bus]));
    return all;
}

/// Of a strip of any component, group or bus.
StoredPlaces set(COutputChannel* ch) {
    StoredPlaces places;
    for (const StoredValue& value : controls(ch)) {
        const std::string usual = written(ch);
        const StoredValue::Numbers before = value.get();
        StoredPlaces own;
        for (const double to : {0.0, 1.0, 2.0, 3.0, -0.7182818, 0.1234567, 0.6180339, 1.4142135,
                                12.3456, 234.5678, 3456.789, 17654.3}) {
            StoredValue::Numbers now = before;
            now[0] = to;
            ch->comp->host->values->set(value, now);
            own.merge(differing(usual, written(ch)));
        }
        EXPECT_FALSE(own.empty());
        places.merge(own);
        ch->comp->host->values->set(value, before);
    }
    return places;
}

/// Where four bytes, or one, stand of those behind a block's head.
void leaveOut(StoredPlaces& places, const std::string& bytes, const char* block, size_t from,
              size_t count) {
    constexpr size_t size = 4;
    const size_t content = bytes.find(block) + std::string(block).size() + size;
    for (size_t i = content + from; i < content + from + count; i++) places.erase(i);
}

} // namespace

/// Whatever is stored of a strip has a value that windows set, but for the second trim, which has
/// no effect, and what the mixer shows of it.
TEST(StripSettings, AreWhatIsStored) {
    StripFixture t;
    COutputChannel* ch = t.add(new CGroupCh(t.host))->output();
    const std::string usual = written(ch);
    const StoredPlaces reached = set(ch);
    ASSERT_EQ(written(ch), usual);
    StoredPlaces stored = storable(ch, usual);
    constexpr size_t trimAux = 12, shown = 18, switches = 6, band = 18, state = 14, states = 4;
    leaveOut(stored, usual, "strip2", trimAux, 4);
    leaveOut(stored, usual, "strip2", shown, switches);
    for (size_t i = 0; i < eqBandCount; i++)
        leaveOut(stored, usual, "eq2", i * band + state, states);
    EXPECT_GT(stored.size(), reached.size() / 2) << "hardly anything was read";
    EXPECT_EQ(missing(stored, reached), StoredPlaces());
}
