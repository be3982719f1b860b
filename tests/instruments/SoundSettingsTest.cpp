#include "instruments/SoundSettings.h"

#include "SoundFixture.h"

#include "base/CStream.h"
#include "common/fx/CFX.h"
#include "engine/EffectSettings.h"
#include "engine/ValueDoor.h"
#include "instruments/ArpSettings.h"
#include "instruments/CArp.h"
#include "support/StoredPlaces.h"

#include <random>

namespace {

std::string written(CComp& c) {
    CMemoryStream s;
    c.write(&s);
    return {s.data, s.data + s.getPos()};
}

void readBack(CComp& c, const std::string& bytes) {
    CMemoryStream s;
    s.write(bytes.data(), int(bytes.size()));
    s.seek(0, seekStart);
    c.read(&s, int(bytes.size()));
}

/// What a bench stores and has no control for: it has no effect on the sound, is no number, or is
/// chosen in a list.
StoredPlaces withoutControl(SoundBench& b, CSound* s) {
    StoredPlaces all;
    const std::string usual = written(b.sampler);
    const auto note = [&] { all.merge(differing(usual, written(b.sampler))); };
    const auto through = [&](auto& field, std::initializer_list<int> values) {
        const auto before = field.load();
        for (const int v : values) {
            field = static_cast<decltype(before)>(v);
            note();
        }
        field = before;
    };
    const auto eachSlot = [&](CMod& mod, bool whole) {
        for (CMod::Param& p : mod.params) {
            through(p.enabled, {0, 1});
            if (!whole) continue;
            through(p.index, {0, 1, 9, 10, 255, 65535});
            const float before = p.amount;
            for (const float v : {0.2718281f, -0.5772156f, 0.7721501f, 1.0f, -1.0f, 0.1f}) {
                p.amount = v;
                note();
            }
            p.amount = before;
        }
    };
    for (auto& e : s->envelope) {
        through(e->envType, {0, 1});
        eachSlot(*e, false);
    }
    for (auto& l : s->lfo) {
        through(l->inv, {0, 1});
        eachSlot(*l, false);
    }
    eachSlot(*s->vel, false);
    eachSlot(*s->cp, true);
    through(s->solo, {0, 1}); // on drum tracks only, in their rows
    for (int v = 0; v < 256; v++) {
        s->reserved = (unsigned char)v;
        note();
    }
    s->reserved = 0;
    return all;
}

StoredPlaces controls(SoundBench& b, CSound* s) {
    StoredPlaces all;
    const auto add = [&](Settings table, CObject* o) {
        all.merge(reached(table, o, [&] { return written(b.sampler); }));
    };
    add(settingsOf(*s), s);
    add(layerSettings(), b.layer);
    add(samplerSettings(), &b.sampler);
    for (int i = 0; i < envelopeCount; i++) {
        add(envelopeSettings(), s->envelope[i].get());
        if (i >= 2) add(slotSettings(*s), s->envelope[i].get()); // the first two have theirs fixed
    }
    for (auto& l : s->lfo) {
        add(lfoSettings(), l.get());
        add(slotSettings(*s), l.get());
    }
    add(slotSettings(*s), s->vel.get());
    for (const Setting& c : controllerSettings(*s)) { // any controller, to any target
        for (int number = 0; number < 128; number++) {
            const std::string before = written(b.sampler);
            c.kind.set(s, c.index, {double(number)});
            all.merge(differing(before, written(b.sampler)));
        }
        c.kind.set(s, c.index, {-1.0});
    }
    for (auto& fx : s->fx) add(settingsOf(*fx), fx.get());
    for (auto& fx : b.prog->fx) add(settingsOf(*fx), fx.get());
    return all;
}

} // namespace

/// Whatever is stored of a synthesizer sound and its program has a control, or a reason.
TEST(SoundSettings, AreWhatIsStored) {
    SoundBench b, again;
    COSCSound* s = b.addOsc();
    const std::string usual = written(b.sampler);
    StoredPlaces stored = storable(usual, [&](const std::string& bytes) {
        readBack(again.sampler, bytes);
        return written(again.sampler);
    });
    const size_t options = usual.find("options"); // the editor's own
    for (size_t at = options; at < options + 48; at++) stored.erase(at);
    const StoredPlaces other = withoutControl(b, s);
    EXPECT_EQ(missing(missing(stored, controls(b, s)), other), StoredPlaces());
}

TEST(SoundSettings, OfSamplesAreStored) {
    SoundBench b;
    CWavSound* s = b.addWav({0.5f, -0.5f, 0.25f, 0.125f});
    EXPECT_FALSE(controls(b, s).empty());
    EXPECT_FALSE(
        reached(clipSettings(*s), s->clips[0].load(), [&] { return written(b.sampler); }).empty());
}

TEST(SoundSettings, OfArpeggiatorsAreWhatIsStored) {
    TestHost host;
    CArp arp(host.host), again(host.host);
    arp.init();
    again.init();
    arp.latch = 1; // which its own control takes back
    const std::string usual = written(arp);
    const StoredPlaces stored = storable(usual, [&](const std::string& bytes) {
        readBack(again, bytes);
        return written(again);
    });
    const auto write = [&] { return written(arp); };
    StoredPlaces set = reached(arpProgSettings(), &arp, write, 0);
    set.merge(reached(arpSettings(), &arp, write));
    EXPECT_EQ(missing(stored, set), StoredPlaces());
}

/// An amount keeps within what its destination allows, whichever of the two is set first.
TEST(SoundSettings, DestinationsFitTheirAmounts) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    CMod* lfo = s->lfo[0].get();
    const Settings slots = slotSettings(*s);
    const Setting &target = slots[2], &amount = slots[3];
    target.kind.set(lfo, target.index, {double(targetPitch), 0.0});
    amount.kind.set(lfo, amount.index, {0.5});
    EXPECT_EQ(lfo->params[1].amount, 24.0f);
    EXPECT_STREQ(amount.text(lfo, 0.5).asChar(), "+24 st");
    const StoredValue::Numbers before = target.kind.get(lfo, target.index);
    target.kind.set(lfo, target.index, {double(targetCutoff), before[1]});
    EXPECT_EQ(lfo->params[1].amount, 1.0f);
    EXPECT_STREQ(amount.text(lfo, 1.0).asChar(), "100 %");
    target.kind.set(lfo, target.index, before);
    EXPECT_EQ(lfo->params[1].amount, 24.0f);
}

/// A value has one controller, a controller one value; undo gives back those that were taken.
TEST(SoundSettings, ControllersAreTakenAndGivenBack) {
    SoundBench b;
    COSCSound* s = b.addOsc();
    s->ccMap[74] = targetCutoff;
    s->ccMap[20] = targetQ;
    s->ccMap[71] = targetQ;
    const auto* q = findSetting(controllerSettings(*s), "Q");
    EXPECT_EQ(q->of(s).get()[0], 20.0);
    b.host.host->values->set(q->of(s), 74.0);
    EXPECT_EQ(s->ccMap[74], targetQ);
    EXPECT_EQ(s->ccMap[20], targetNone);
    EXPECT_EQ(s->ccMap[71], targetNone);
    EXPECT_EQ(findSetting(controllerSettings(*s), "Cutoff")->of(s).get()[0], -1.0);
    b.host.undo();
    EXPECT_EQ(s->ccMap[74], targetCutoff);
    EXPECT_EQ(s->ccMap[20], targetQ);
    EXPECT_EQ(s->ccMap[71], targetQ);
}
