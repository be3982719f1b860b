#include "project/ProjectFixture.h"

#include "engine/CGroupCh.h"
#include "engine/CompBlocks.h"
#include "instruments/CSampler.h"
#include "support/Rows.h"

using namespace qvf;

namespace {

constexpr int lazyType = 200, greedyType = 201; ///< read one byte, and nine

class OddComp : public CComp {
public:
    OddComp(CQV* root, int kind) : CComp(root) { type = kind; }
    void read(CStream* stream, int) override {
        for (int i = type == lazyType ? 1 : 9; i > 0; --i) stream->readByte();
    }
};

const std::string audioOut =
    comp("comp2", 13, 1, "Out") + item("min") + item("ain", number(2)) + item("aout", number(2));
const std::string group =
    comp("comp2", 9, 1, "G") + item("min") + item("ain", number(2)) + item("aout", number(1));

std::string errorReading(const std::string& id, int size) {
    return "Error: Error reading block: '" + id + "' (" + std::to_string(size) +
           "). Trying to read rest of file...";
}

} // namespace

TEST(ProjectReader, WhatLeadsNowhereIsLeftOut) {
    ProjectFixture f;
    const std::string map = bytes({1, 0, 0, 0}) + std::string(16, '\0');
    const std::string items = audioOut + group + item("audiodir", text("../x/tune_audio")) +
                              item("bpm", real(INFINITY)) + cable("ac", 0, 1, 0, 0, 0, 0) +
                              cable("ac", 0, 1, 0, 0, 0, 0) + cable("ac", 0, 1, 0, 0, 9, 0) +
                              cable("ac", 0, 1, 1, 0, 0, 0) + cable("mc", 0, 1, 0, 0, 0, 0) +
                              item("cm", text("") + std::string(16, '\0')) +
                              item("cmap", map + numbers({1, 0, 75, 0, 127, 0, 0})) +
                              item("cmap", map + numbers({1, 0, 75, 0, 128, 0, 0})) +
                              item("cmap", map + numbers({17, 0, 75, 0, 127, 0, 0})) +
                              item("cmap", numbers({1, 9, 0, 0, 0, 1, 0, 75, 0, 127, 0, 0}));
    ASSERT_EQ(f.load(file(items)), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});
    EXPECT_EQ(f.host->audioFolder, "tune_audio") << "beside the project and nowhere else";
    EXPECT_EQ(float(f.host->tempo), 120.0f);
    EXPECT_EQ(f.comp(0)->audioCables.getCount(), 1) << "one twice, and two without all ends";
    EXPECT_EQ(f.comp(0)->midiCables.getCount(), 0);
    const auto* maps = f.host->maps.first();
    EXPECT_EQ(maps->items.getCount(), 1) << "values out of their range, and no target";
}

/// What is wrong with an item, the one box that tells it, and whether the rest is read.
TEST(ProjectReader, DamageIsToldAndReadAround) {
    enterCompType(lazyType, [](CQV* root) -> CComp* { return new OddComp(root, lazyType); });
    enterCompType(greedyType, [](CQV* root) -> CComp* { return new OddComp(root, greedyType); });
    const std::string longName(64, 'm');
    const struct {
        const char* what;
        std::string items, box;
        LoadResult result = LoadResult::good;
    } cases[] = {
        {"unknown", item("zzz", std::string(10, 7)), ""},
        {"lazy", comp("comp2", lazyType, 1, "L", "abc"), errorReading("comp2", 35)},
        {"greedy, which is its own affair", comp("comp2", greedyType, 1, "M", "abc"), ""},
        {"short strip", group + item("strip2", "12"), errorReading("strip2", 2)},
        {"long", item("loop", "12345"), errorReading("loop", 5)},
        {"two", item("loop", "1") + item("pagei", "1"), errorReading("loop", 1)},
        {"without an owner",
         comp("comp2", 0, 1, "P") + item("wet", real(1)) + item("strip2", "12") +
             comp("insert2", 7, 4, "R") + item("mini") + item("cmap", std::string(48, 0)),
         ""},
        {"nowhere",
         comp("comp2", 9, 0, "N") + item("aout", number(2)) + comp("comp2", 9, 4, "N") +
             comp("comp2", 4, 3, "S") + item("aout", number(2)),
         ""},
        {"plug-in",
         comp("comp2", 2, 1, "A", item("filename", text("/none/a.so"))) + comp("comp2", 2, 1, "B"),
         "VST: Failed to open A, B"},
        {"odd numbers",
         group + item("strip2", real(NAN) + real(9) + std::string(44, 0)) +
             item("hideChs", number(-7)),
         ""},
        {"samples cut", item("samples2", number(1000000) + text("a") + real(1)),
         errorReading("samples2", 13)},
        {"frames cut",
         item("samples2",
              number(1) + text("a") + real(1) + bytes({16, 1, 0, 0}) + number(2000000000) + "xy"),
         errorReading("samples2", 23)},
        {"old frames",
         item("samples", number(2) + text("a") + real(1) + bytes({16, 1, 0}) + "data"), ""},
        {"negative", head("loop", -3), "Error: Block size error: 'loop' (-3).",
         LoadResult::abandoned},
        {"beyond the file", head("bpm", 2000000000) + "x", errorReading("bpm", 2000000000),
         LoadResult::abandoned},
        {"long name", head(longName + "mm", -1),
         "Error: Block size error: '" + longName + "' (-1).", LoadResult::abandoned},
        {"torn head", number(100) + "abcdefgh", errorReading("aout", 4)},
        {"one bit of a name", item("lodsb", numbers({0, 98})), errorReading("modsb", 8)},
        {"a name out of bounds", number(1 << 20) + "loop" + number(4) + number(1),
         errorReading("aout", 4)},
        {"a size that leads nowhere", head("loop", 11) + number(0), errorReading("loop", 11)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ProjectFixture f;
        f.host->projectFile = "/tmp/p.qv";
        EXPECT_EQ(f.load(file(audioOut + c.items + item("modsb", numbers({0, 99})))), c.result);
        EXPECT_EQ(shown, c.box.empty() ? std::vector<std::string>{} : std::vector{c.box});
        if (c.result == LoadResult::abandoned) {
            f.expectEmptyProject();
        } else {
            EXPECT_EQ(f.ui.windows.sidebar[1], 99);
            EXPECT_EQ(f.host->damaged, c.box.rfind("Error", 0) == 0);
            EXPECT_EQ(f.comp(0)->id, "Out");
            EXPECT_EQ(f.host->sends.getCount(), 0);
            f.device.run(2);
        }
    }
}

TEST(ProjectReader, WhatIsNoProjectLeavesTheOneThatIsOpen) {
    ProjectFixture f;
    TempFolder folder;
    f.host->id = "mine";
    f.host->projectFile = "/tmp/mine.qv";
    for (const std::string& bytes :
         {std::string(), number(3), text("QVG") + item("loop", number(1)), text("QVFX"),
          number(-1)}) {
        EXPECT_EQ(openProject(f.project, folder.write("odd.qv", bytes), false),
                  LoadResult::notProject);
        EXPECT_TRUE(f.host->projectFile == "/tmp/mine.qv" && f.host->id == "mine");
    }
    EXPECT_EQ(shown, std::vector<std::string>{});
}

/// What a file has beyond a limit is left out, which is told once.
TEST(ProjectReader, LimitsHoldAndAreTold) {
    const auto times = [](int count, const std::string& one) {
        std::string all;
        for (int i = 0; i < count; ++i) all += one;
        return all;
    };
    const std::string out = item("aout", number(2)), bus = comp("comp2", 9, 3, "B");
    const std::string track = item("track", numbers({2, 0}) + text("") + numbers({1, 1, 0, -1}) +
                                                bytes({0, 0, 0, 2}) + numbers({8, 0, 0}));
    const std::string part = item("part", bytes({2, 1, 1}) + numbers({-1, 0, 0, 9, 0}) + text(""));
    const std::string point =
        item("amevents", numbers({63, 1, 0}) + bytes({0}) + real(0) + real(0) + bytes({0}));
    const std::string parts = track +
                              item("prog", real(0) + bytes({0}) + numbers({0, 0}) + text("")) +
                              item("ptrack", bytes({0})) + times(32000, part + point);
    std::string cables;
    for (int i = 0; i < 40 * 62; ++i)
        for (const int to : {0, 1}) cables += cable("ac", 0, i / 62 + 1, i % 62, 0, to, 0);
    const Rows<std::string, std::string> cases = {
        {"channels, ports", group + times(400, out + item("min"))},
        {"channels", times(17, group + times(255, out))},
        {"sends", times(33, bus + out + item("ain", number(2))) + cable("ac", 2, 32, 0, 0, 0, 0)},
        {"components", times(1025, comp("comp2", 0, 1, "C"))},
        {"cables", times(40, group + times(61, out)) + cables},
        {"programs, components", times(64, comp("comp2", 3, 1, "S", times(200, item("prog"))))},
        {"tracks, components", times(5, comp("comp2", 4, 1, "T", times(1024, track)))},
        {"samples", item("samples2", number(320000) +
                                         times(320000, text("") + real(1) + bytes({16, 1, 2, 0})))},
        {"automation, parts", comp("comp2", 4, 1, "P", parts)},
    };
    for (const auto& [leftOut, items] : cases) {
        SCOPED_TRACE(leftOut);
        ProjectFixture f;
        ASSERT_EQ(f.load(file(audioOut + items)), LoadResult::good);
        EXPECT_EQ(shown, std::vector<std::string>{"Error: The project holds more than can be "
                                                  "loaded. Left out: " +
                                                  leftOut});
        EXPECT_LE(f.host->sends.getCount(), 32);
        EXPECT_LE(f.host->comps.getCount(), 1024);
        EXPECT_LE(f.comp(1) ? f.comp(1)->outputs.getCount() : 0, 255);
        f.device.run();
    }
}

/// No step brings a bus more than channels have levels for.
TEST(ProjectReader, StepsKeepTheNumberOfBuses) {
    ProjectFixture f;
    for (int i = 0; i < maxSends; ++i) f.host->addSendClicked();
    CUndo* step = f.host->undoStart("Add", nullptr);
    step->asAdd(new CGroupCh(f.host), &f.host->sends);
    f.host->undoEnd(step, true);
    for (const int wanted : {maxSends, maxSends - 1, maxSends}) {
        EXPECT_EQ(f.host->sends.getCount(), wanted);
        for (int i = 0; i < 2; ++i)
            wanted == maxSends ? f.host->undoClicked() : f.host->redoClicked();
        f.host->settle();
    }
}
