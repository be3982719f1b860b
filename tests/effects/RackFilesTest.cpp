#include "effects/RackFiles.h"

#include "base/CStream.h"
#include "effects/CEffect.h"
#include "support/TestHost.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

/// Bytes as they are told, little-endian.
struct Bytes : std::string {
    template <class T>
    Bytes& put(T v) {
        append(reinterpret_cast<const char*>(&v), sizeof v);
        return *this;
    }
    Bytes& text(const char* t) {
        put(int(std::strlen(t)));
        append(t);
        return *this;
    }
    Bytes& block(const char* name, int size) { return text(name).put(size); }
    Bytes& zeros(size_t bytes) {
        append(bytes, '\0');
        return *this;
    }
    Bytes& prog(const char* name) {
        return block("prog", int(std::strlen(name)) + 36).text(name).zeros(32);
    }
    /// A block "fx" whose settings are `values`, of whole numbers where `kinds` has an i.
    Bytes& fx(int type, int on, float dry, float wet, const char* kinds,
              std::initializer_list<float> values) {
        block("fx", 80).put(type).put(on).put(dry).put(wet);
        for (float v : values)
            if (*kinds++ == 'i')
                put(int(v));
            else
                put(v);
        return zeros(64 - 4 * values.size());
    }
};

/// Every setting of every kind, none at its default.
Bytes everything() {
    Bytes b;
    b.block("progi", 4).put(1);
    b.prog("First");
    b.fx(fxDelay, 1, 0.1f, 0.2f, "fiiiiifff", {0.3f, 0, 3, 8, 5, 16, 120, 340, 0.25f});
    b.fx(fxReverb, 0, 0.3f, 0.4f, "if", {55, 4321});
    b.block("reverbSize", 4).put(4321);
    b.fx(fxChorus, 1, 0.5f, 0.6f, "fffff", {30, 0.75f, 45, -0.5f, 1.5f});
    b.fx(fxPhaser, 0, 0.7f, 0.8f, "fffff", {0.5f, 0.25f, 90, 300, 5000});
    b.prog("");
    b.prog("Third program");
    b.fx(fxBitcrusher, 1, 1, 1, "ii", {9, 17});
    b.fx(fxFilter, 1, 1, 1, "iff", {2, 0.5f, 0.75f});
    b.fx(fxCompressor, 0, 1, 1, "fffff", {-30, 0.25f, 12, 345, -3});
    b.fx(fxGuitarAmp, 1, 1, 1,
         "iffffffffffffff"
         "f",
         {2, 0.1f, 0.2f, 0.3f, 0.4f, 0.15f, 0.25f, 0.35f, 0.45f, 0.55f, 0.65f, 0.75f, 0.85f, 0.95f,
          0.05f, 0.125f});
    b.block("ampDrive2", 4).put(0.875f).zeros(64);
    return b;
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
    EXPECT_EQ(rack.getProgName(rack.curProg + 1), "Third program");
    const std::unique_ptr<CComp> twin(rack.copy());
    EXPECT_EQ(written(static_cast<CEffect&>(*twin)), everything());
    EXPECT_EQ(twin->inputs.getCount() + twin->outputs.getCount() + twin->inPorts.getCount(), 3);
}

/// Of an unknown kind four fields survive. What no program takes, and foreign blocks, are skipped;
/// settings out of range are clamped, those that are missing or no number keep their default.
TEST(RackFiles, UnknownAndWildBlocks) {
    Bytes in, out;
    in.fx(fxDelay, 1, 1, 1, "", {});
    in.block("progi", 4).put(-7).block("new", 3).zeros(3).prog("A");
    in.fx(-42, 5, 0.25f, 7.0f, "ff", {1, 2}).block("reverbSize", 4).put(1234);
    in.fx(fxReverb, 1, NAN, 0.5f, "if", {9999, INFINITY}).block("ampDrive2", 4).put(0.5f);
    in.block("fx", 20).put(int(fxBitcrusher)).put(1).put(1.0f).put(1.0f).put(7);
    in.fx(fxBitcrusher, 1, 1, 1, "ii", {0, 1000});
    out.block("progi", 4).put(0).prog("A").fx(-42, 1, 0.25f, 1.0f, "", {});
    out.fx(fxReverb, 1, 1, 0.5f, "if", {250, 2000}).block("reverbSize", 4).put(2000);
    out.fx(fxBitcrusher, 1, 1, 1, "ii", {7, 4}).fx(fxBitcrusher, 1, 1, 1, "ii", {1, 64});
    TestHost f;
    CEffect rack(f.host);
    read(rack, in);
    EXPECT_EQ(written(rack), out);
}

/// A file cut anywhere, or with bytes changed at random, leaves a rack that plays and is written;
/// one made of heads does not grow without bounds.
TEST(RackFiles, DamagedFilesDoNoHarm) {
    TestHost f(256);
    const std::string good = everything();
    std::mt19937 random(5);
    CEffect rack(f.host);
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
        rack.input()->bufL[0] = rack.input()->bufR[7] = 0.5f;
        rack.process(256);
        for (int i = 0; i < 256; i++)
            ASSERT_TRUE(std::isfinite(rack.output()->bufL[i])) << round << ", frame " << i;
    }
    Bytes heads;
    heads.prog("");
    for (int i = 0; i < 99; i++) heads.block("fx", 4).put(int(fxBitcrusher));
    for (int i = 0; i < 3000; i++) heads.prog("").block("fx", 4).put(int(fxBitcrusher));
    read(rack, heads);
    EXPECT_EQ(rack.progs.getCount(), RackContent::mostProgs);
    EXPECT_EQ(rack.getProg()->effects.getCount(), RackContent::mostInChain);
}

/// Opening a file is one step, which gives back the programs and the current one.
TEST(RackFiles, OpenedFileIsOneStep) {
    const std::string path = testing::TempDir() + "rack.qve";
    TestHost f(256);
    auto* rack = f.add(new CEffect(f.host));
    rack->addReverb();
    rack->addFilter();
    rack->setProg(1);
    const std::string before = written(*rack);
    rack->openProg("/nowhere.qve");
    EXPECT_EQ(written(*rack), before);
    CMemoryStream s;
    s.write(everything().data(), int(everything().size()));
    ASSERT_TRUE(s.saveToFile(path.c_str()));
    rack->openProg(path.c_str());
    std::filesystem::remove(path);
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(written(*rack), everything());
        f.host->undoClicked();
        f.host->settle();
        EXPECT_EQ(written(*rack), before);
        f.host->redoClicked();
        f.host->settle();
    }
}
