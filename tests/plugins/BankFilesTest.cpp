#include "plugins/vst2/BankFiles.h"

#include "plugins/PluginFixture.h"
#include "support/Blocks.h"

#include <bit>
#include <memory>

namespace {

/// The words of a file, the highest byte first.
struct File {
    std::string bytes;
    File& w(const char* four) { return add(four); }
    File& i(int v) {
        for (int shift = 24; shift >= 0; shift -= 8) bytes += char(v >> shift);
        return *this;
    }
    File& f(float v) { return i(std::bit_cast<int>(v)); }
    File& name(std::string text) {
        text.resize(28);
        return add(text);
    }
    File& zeros(int words) { return add(std::string(size_t(words) * 4, '\0')); }
    File& add(const std::string& raw) {
        bytes += raw;
        return *this;
    }
    File& head(const char* kind, int count) {
        return w("CcnK").i(0).w(kind).i(1).w("Test").i(1).i(count);
    }
};

std::string chunkOf(const float (&values)[3][3]) {
    return {reinterpret_cast<const char*>(values), sizeof values};
}

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct Banks : PluginFixture {
    std::string put(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
        return folder + "/" + name;
    }
};

} // namespace

/// Byte for byte as the formats say, and the other way round into another instance.
TEST(BankFiles, AreWrittenAndRead) {
    Banks f;
    const float values[3][3] = {{0.25f, 0, 0}, {0.5f, 0, 0.75f}, {0.5f, 0, 0}};
    File program, bank, chunkProgram, chunkBank;
    program.head("FxCk", 3).name("Sound 2").f(0.5f).f(0).f(0.75f);
    bank.head("FxBk", 3).zeros(32);
    for (int i = 0; i < 3; i++) {
        bank.head("FxCk", 3).name("Sound " + std::to_string(i + 1));
        for (const float v : values[i]) bank.f(v);
    }
    chunkProgram.head("FPCh", 3).zeros(7).i(36).add(chunkOf(values));
    chunkBank.head("FBCh", 3).zeros(32).i(36).add(chunkOf(values));
    const struct {
        const char* plug;
        std::string program, bank;
    } cases[] = {{"gain", program.bytes, bank.bytes},
                 {"synth", chunkProgram.bytes, chunkBank.bytes}};
    int steps = 0;
    for (const auto& c : cases) {
        const std::unique_ptr<CVST> one(f.plug(c.plug));
        one->setParam(0, 0.25f);
        one->setProg(1);
        one->idle();
        one->setParam(2, 0.75f);
        const std::string at = f.folder + "/x.fx";
        ASSERT_TRUE(one->saveProgram((at + "p").c_str()));
        ASSERT_TRUE(one->saveBank((at + "b").c_str()));
        EXPECT_EQ(contentOf(at + "p"), c.program) << c.plug;
        EXPECT_EQ(contentOf(at + "b"), c.bank) << c.plug;
        const std::unique_ptr<CVST> other(f.plug(c.plug));
        ASSERT_TRUE(other->openBank((at + "b").c_str()));
        EXPECT_EQ(chunkOf(f.seen(c.plug)->values), chunkOf(values)) << c.plug;
        EXPECT_EQ(other->chunkPath, (at + "b").c_str());
        EXPECT_EQ(f.host->undoList.getCount(), ++steps) << "its reports are nobody's moves";
        f.undo();
        other->idle();
        EXPECT_EQ(f.seen(c.plug)->values[0][0], 0.5f) << c.plug;
        EXPECT_EQ(f.seen(c.plug)->values[1][2], 0.0f) << c.plug;
        f.redo();
        other->idle();
        EXPECT_EQ(chunkOf(f.seen(c.plug)->values), chunkOf(values)) << c.plug;
        EXPECT_EQ(int(f.host->undoList.getCount()), steps);
        f.host->undoClear();
        steps = 0;
        const std::unique_ptr<CVST> third(f.plug(c.plug));
        ASSERT_TRUE(third->openProgram((at + "p").c_str()));
        EXPECT_EQ(third->param(2), c.plug == std::string("gain") ? 0.75f : 0.0f);
        f.host->undoClear();
    }
}

/// What a plug-in cannot take is told, and the plug-in is left as it is.
TEST(BankFiles, DamageIsTold) {
    Banks f;
    const Told told;
    const struct {
        const char *what, *plug;
        std::string bytes;
        int size;
    } cases[] = {
        {"empty", "gain", "", 0},
        {"another kind", "gain", File().head("FxXx", 3).zeros(80).bytes, 0},
        {"a chunk for none", "gain", File().head("FBCh", 3).zeros(32).i(4).zeros(1).bytes, 4},
        {"a chunk cut", "synth", File().head("FBCh", 3).zeros(32).i(100).zeros(1).bytes, 100},
        {"a chunk below 0", "synth", File().head("FBCh", 3).zeros(32).i(-1).zeros(9).bytes, -1},
        {"programs", "gain", File().head("FxBk", 4).zeros(32 + 4 * 20).bytes, 0},
        {"many programs", "gain", File().head("FxBk", 1 << 30).zeros(32).bytes, 0},
        {"values", "gain",
         File().head("FxBk", 1).zeros(32).head("FxCk", 4).name("x").zeros(9).bytes, 0},
        {"values cut", "gain",
         File().head("FxBk", 1).zeros(32).head("FxCk", 3).name("x").zeros(2).bytes, 0},
        {"throws", "bad-throws-chunk", File().head("FBCh", 3).zeros(32).i(4).zeros(1).bytes, 4},
    };
    for (const auto& c : cases) {
        const std::unique_ptr<CVST> plug(f.plug(c.plug));
        const std::string path = f.put("bad.fxb", c.bytes), before = f.bytesOf(plug.get());
        told.messages.clear();
        EXPECT_FALSE(plug->openBank(path.c_str())) << c.what;
        EXPECT_EQ(told.messages,
                  std::vector{"VST: Error opening chunk " + std::to_string(c.size) + " " + path})
            << c.what;
        EXPECT_EQ(f.bytesOf(plug.get()), before) << c.what;
    }
    const std::unique_ptr<CVST> plug(f.plug("gain-noid"));
    const std::string path = f.put("id.fxb", File().head("FxBk", 0).zeros(32).bytes);
    told.messages.clear();
    EXPECT_FALSE(plug->openBank(path.c_str()));
    EXPECT_EQ(told.messages, std::vector{"VST: " + path + " - Plugin id doesn't match id in file"});
}
