#include "engine/EffectSettings.h"

#include "base/CStream.h"
#include "common/fx/CDelay.h"
#include "effects/CEffect.h"
#include "effects/RackFiles.h"
#include "engine/ValueDoor.h"
#include "support/Blocks.h"
#include "support/StoredPlaces.h"
#include "support/TestHost.h"

#include <random>

namespace {

std::string written(const CEffectProg& prog) {
    CMemoryStream s;
    writeEffectProg(&s, prog);
    return {s.data, s.data + s.getPos()};
}

/// Where what is stored of an effect can differ at all: files of any content are read and written.
StoredPlaces storable(int kind, const std::string& usual) {
    std::mt19937 gen(1);
    const auto any = [&gen](Blocks& b) {
        if (gen() % 2)
            b.i(int(gen() % 70));
        else
            b.f(float(gen() % 2001) * (gen() % 3 ? 0.001f : 10.0f) - 1.0f);
    };
    StoredPlaces all;
    for (int round = 0; round < 300; round++) {
        Blocks content, size, drive;
        content.i(kind);
        for (int i = 0; i < 19; i++) any(content);
        any(size);
        any(drive);
        Blocks file = block("prog", Blocks().s("p").zeros(8));
        file.block("fx", content).block("reverbSize", size).block("ampDrive2", drive);
        CMemoryStream s;
        s.write(file.bytes.data(), int(file.bytes.size()));
        s.seek(0, seekStart);
        RackContent read(44100.0f, 64);
        read.read(&s, s.getSize());
        all.merge(differing(usual, written(*static_cast<CEffectProg*>(read.progs.getFirst()))));
    }
    return all;
}

} // namespace

/// Whatever is stored of an effect has a control, and every control sets what is stored. A new
/// effect has what the table calls usual.
TEST(EffectSettings, AreWhatIsStored) {
    for (int kind = 0; kind < effectKindCount; kind++) {
        CEffectProg prog;
        prog.id = "p";
        CFX* fx = makeNewEffect(kind, 44100.0f, 64);
        prog.effects.add(fx);
        for (const Setting& s : settingsOf(*fx)) {
            EXPECT_NEAR(s.of(fx).get()[0], s.usual, 1e-6) << kind << ", " << s.group << s.name();
        }
        const std::string usual = written(prog);
        const StoredPlaces set = reached(settingsOf(*fx), fx, [&] { return written(prog); });
        StoredPlaces stored = storable(kind, usual);
        if (kind >= fxBitcrusher) // which ignore their gains
            for (Stored<float>* gain : {&fx->dry, &fx->wet}) {
                *gain = 0.3f;
                for (const size_t at : differing(usual, written(prog))) stored.erase(at);
                *gain = 1.0f;
            }
        EXPECT_EQ(missing(stored, set), StoredPlaces()) << kind;
    }
}

/// An effect that a file holds switched off has no lines yet: switching it on by the door takes
/// them before, so that undo and redo can be carried out on the audio thread.
TEST(EffectSettings, PowerTakesRoomBefore) {
    TestHost host;
    auto* rack = host.add(new CEffect(host.host));
    CFX* fx = makeEffect(fxDelay, 44100.0f, 64);
    {
        const GraphHold hold(host.host);
        rack->getProg()->effects.add(fx);
    }
    EXPECT_EQ(static_cast<CDelay*>(fx)->lineL.load(), nullptr);
    host.host->values->set(effectPower().of(fx), 1.0);
    EXPECT_EQ(fx->enabled, 1);
    EXPECT_NE(static_cast<CDelay*>(fx)->lineL.load(), nullptr);
    host.undo();
    EXPECT_EQ(fx->enabled, 0);
    host.redo();
    EXPECT_EQ(fx->enabled, 1);
}

TEST(EffectSettings, KeepToTheirRange) {
    for (int kind = 0; kind < effectKindCount; kind++) {
        const std::unique_ptr<CFX> fx(makeNewEffect(kind, 44100.0f, 64));
        for (const Setting& s : settingsOf(*fx)) {
            for (const double wild : {-1e30, 1e30, 1e308 * 10, std::nan("")}) {
                s.kind.set(fx.get(), s.index, {wild});
                const double now = s.of(fx.get()).get()[0];
                EXPECT_GE(now, s.least - 1e-6) << s.name();
                EXPECT_LE(now, s.most + 1e-6) << s.name();
            }
            EXPECT_FALSE(s.text(fx.get(), s.least).empty()) << s.name();
        }
    }
}
