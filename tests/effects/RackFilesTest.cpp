#include "effects/RackFiles.h"

#include "base/CStream.h"
#include "base/TempFolder.h"
#include "effects/CEffect.h"
#include "support/Blocks.h"
#include "support/TestHost.h"

#include <numeric>
#include <random>

namespace {

/// A rack's file, block by block.
struct RackFile : Blocks {
    template <class T>
    RackFile& value(const char* name, T value) {
        return block(name, Blocks().v(value)), *this;
    }
    RackFile& prog(const char* name) { return block("prog", Blocks().s(name).zeros(8)), *this; }
    template <class... T>
    RackFile& fx(int type, int on, float dry, float wet, T... settings) {
        constexpr int rest = 16 - int(sizeof...(T));
        return block("fx", Blocks().i(type, on).f(dry, wet).v(settings...).zeros(rest)), *this;
    }
};

/// Every setting of every kind, none at its default.
std::string everything() {
    RackFile f;
    f.value("progi", 1).prog("First");
    f.fx(fxDelay, 1, 0.1f, 0.2f, 0.3f, 0, 3, 8, 5, 16, 120.0f, 340.0f, 0.25f);
    f.fx(fxReverb, 0, 0.3f, 0.4f, 55, 4321.0f).value("reverbSize", 4321);
    f.fx(fxChorus, 1, 0.5f, 0.6f, 30.0f, 0.75f, 45.0f, -0.5f, 1.5f);
    f.fx(fxPhaser, 0, 0.7f, 0.8f, 0.5f, 0.25f, 90.0f, 300.0f, 5000.0f);
    f.prog("").prog("Third program").fx(fxBitcrusher, 1, 1, 1, 9, 17);
    f.fx(fxFilter, 1, 1, 1, 2, 0.5f, 0.75f);
    f.fx(fxGate, 1, 1, 1, -30.0f, 2.0f, 70.0f, 345.0f, -60.0f);
    f.fx(fxCompressor, 0, 1, 1, -30.0f, 0.25f, 12.0f, 345.0f, -3.0f);
    f.fx(fxGuitarAmp, 1, 1, 1, 2, 0.1f, 0.2f, 0.3f, 0.4f, 0.15f, 0.25f, 0.35f, 0.45f, 0.55f, 0.65f,
         0.75f, 0.85f, 0.95f, 0.05f, 0.125f);
    return f.value("ampDrive2", 0.875f).zeros(16).bytes;
}

std::string written(CEffect& rack) {
    CMemoryStream s;
    rack.write(&s);
    return {s.data, s.data + s.getPos()};
}

void read(CEffect& rack, const std::string& bytes) {
    CMemoryStream s;
    s.write(bytes.data(), int(bytes.size()));
    s.write("behind", 6);
    s.seek(0, seekStart);
    rack.read(&s, int(bytes.size()));
    EXPECT_EQ(s.getPos(), int(bytes.size()));
}

} // namespace

/// What is written is what is told, byte by byte, and it is read back whole, also by a twin.
TEST(RackFiles, LayoutAndRoundTrip) {
    TestHost f;
    CEffect rack(f.host);
    rack.init();
    read(rack, everything());
    EXPECT_EQ(written(rack), everything());
    const std::unique_ptr<CComp> twin(rack.copy());
    EXPECT_EQ(written(static_cast<CEffect&>(*twin)), everything());
}

/// What a macro is called and how far it turns, also where a file has no range.
TEST(RackFiles, MacrosKeepNamesAndRanges) {
    TestHost f;
    CEffect rack(f.host), again(f.host);
    rack.init();
    const std::string plain = written(rack);
    setMacroStyle(rack, 2, "Space", 0.25f, 0.5f);
    setMacroStyle(rack, 5, "", 0.5f, 0.5f);
    read(again, written(rack));
    const MacroStyle space = *again.macroStyle(2), none = *again.macroStyle(5);
    EXPECT_TRUE(*space.name == "Space" && *space.low == 0.25f && *space.high == 0.5f);
    EXPECT_TRUE(none.name->empty() && *none.low == 0.0f && *none.high == 1.0f);
    EXPECT_EQ(written(again), written(rack));
    for (int i = 0; i < 2; i++) f.undo();
    EXPECT_EQ(written(rack), plain);
}

/// Of an unknown kind four fields survive. What no program takes, and foreign blocks, are skipped;
/// settings out of range are clamped, those that are missing or no number keep their default.
TEST(RackFiles, UnknownAndWildBlocks) {
    RackFile in, out;
    in.fx(fxDelay, 1, 1, 1).value("ampDrive2", 0.5f).value("progi", -7).value("new", 3).prog("A");
    in.fx(-42, 5, 0.25f, 7.0f, 1, 2).value("reverbSize", 1234);
    in.fx(fxReverb, 1, NAN, 0.5f, 9999, INFINITY).value("ampDrive2", 0.5f);
    in.block("fx"); // what follows is of no effect
    in.value("reverbSize", 5000);
    in.block("fx", Blocks().i(fxBitcrusher, 1).f(1, 1).i(7));
    in.fx(fxBitcrusher, 1, 1, 1, 0, 1000);
    out.value("progi", 0).prog("A").fx(-42, 1, 0.25f, 1.0f);
    out.fx(fxReverb, 1, 1, 0.5f, 250, 2000.0f).value("reverbSize", 2000);
    out.fx(fxBitcrusher, 1, 1, 1, 7, 4).fx(fxBitcrusher, 1, 1, 1, 1, 64);
    TestHost f;
    CEffect rack(f.host);
    read(rack, in.bytes);
    EXPECT_EQ(written(rack), out.bytes);
}

/// A file cut anywhere, or with bytes changed at random, leaves a rack that plays and is written;
/// one made of heads does not grow without bounds.
TEST(RackFiles, DamagedFilesDoNoHarm) {
    TestHost f(256);
    const std::string good = everything();
    std::mt19937 random(5);
    CEffect rack(f.host);
    const GraphMark mark(f.host);
    rack.init();
    rack.createBuffers(256);
    for (size_t round = 0; round < good.size() + 1000; round++) {
        std::string bytes = good.substr(0, round);
        for (size_t k = 0; round >= good.size() && k < 1 + round % 30; k++)
            bytes[random() % bytes.size()] = char(round % 2 ? 255 : random());
        read(rack, bytes);
        rack.curProg = int(round % 3);
        written(rack);
        rack.prepare(256);
        rack.input()->bufL[0] = 0.5f;
        rack.process(256);
        const float* out = rack.output()->bufL;
        ASSERT_TRUE(std::isfinite(std::accumulate(out, out + 256, 0.0f))) << round;
    }
    RackFile heads;
    heads.prog("");
    for (int i = 0; i < 99; i++) heads.value("fx", int(fxBitcrusher));
    for (int i = 0; i < 3000; i++) heads.prog("").value("fx", int(fxBitcrusher));
    read(rack, heads.bytes);
    EXPECT_EQ(rack.progs.getCount(), RackContent::mostProgs);
    EXPECT_EQ(rack.getProg()->effects.getCount(), RackContent::mostInChain);
}

/// Opening a file is one step, which gives back the programs and the current one.
TEST(RackFiles, OpenedFileIsOneStep) {
    const TempFolder folder;
    TestHost f(256);
    auto* rack = f.add(new CEffect(f.host));
    rack->addReverb();
    rack->setProg(1);
    const std::string before = written(*rack);
    rack->openProg(folder.write("rack.qve", everything()));
    EXPECT_EQ(written(*rack), everything());
    f.undo();
    EXPECT_EQ(written(*rack), before);
    f.redo();
    EXPECT_EQ(written(*rack), everything());
}
