#include "project/ProjectFixture.h"

#include "common/fx/CEQ.h"
#include "engine/CGroupCh.h"
#include "engine/CompBlocks.h"
#include "instruments/CSampler.h"

using namespace qvf;

namespace {

constexpr int lazyType = 200; ///< reads only one byte of what it has

class LazyComp : public CComp {
public:
    explicit LazyComp(CQV* root) : CComp(root) { type = lazyType; }
    void read(CStream* stream, int) override { stream->readByte(); }
};

const std::string audioOut =
    comp("comp2", 13, 1, "Out") + item("min") + item("ain", number(2)) + item("aout", number(2));
const std::string group =
    comp("comp2", 9, 1, "G") + item("min") + item("ain", number(2)) + item("aout", number(1));

std::string errorReading(const std::string& id, int size) {
    return "Error: Error reading block: '" + id + "' (" + std::to_string(size) +
           "). Trying to read rest of file...";
}

std::string eq2(float hz) {
    std::string s;
    for (int k = 0; k < 4; ++k)
        s += bytes({k & 1, k}) + real(hz * float(k + 1)) + real(float(k) - 2) + real(0.5f) +
             bytes({k, -1, 1, 2});
    return s;
}

} // namespace

/// Every item by its table, and where in the graph each value has to arrive.
TEST(ProjectReader, ReadsEachItemByItsTable) {
    ProjectFixture f;
    const std::string strip = real(0.25f) + real(-0.5f) + real(0.75f) + real(2.0f) +
                              bytes({1, 0, 0, 1, 1, 0, -1, 5}) + std::string(28, 0);
    const std::string items =
        item("bpm", real(90)) + item("loop", number(0)) +
        item("audiodir", text("../x/tune_audio")) +
        item("samples2", number(2) + text("tone") + real(8000) + bytes({16, 1, 0, 1}) + number(3) +
                             std::string("\1\2\3\4\5\6") + text("/no/such.wav") + real(48000) +
                             bytes({24, 2, 1, 0, -1})) +
        item("samples", number(1) + text("twice") + real(1) + bytes({16, 1, 1, -1})) +
        item("page", text("Mixer") + numbers({0, 0})) + item("pagei", number(1)) +
        item("pageModular", number(1)) + comp("comp2", 1, 0, "Host") +
        item("comped", numbers({1, 2, 3, 4, 0, 6, 7, 8})) + audioOut + group +
        item("strip2", strip) + item("eq2", eq2(1000)) + item("sends", number(1) + real(0.5f)) +
        comp("insert2", 7, 4, "Rack", "", 0, 16 + 2) +
        item("compedi", numbers({9, 9, 9, 9, 0, 0, -1, 0})) + item("mini") +
        item("aini", number(2)) + item("aouti", number(2)) + item("wet", real(0.25f)) +
        item("hideChs", number(1)) + comp("comp2", 9, 3, "Bus") + item("ain", number(2)) +
        item("aout", number(2)) + item("mixer", item("mxv", number(5))) +
        item("mixed", numbers({1, 1, 1, 1, 1, 1, 1, 1})) + cable("ac", 0, 1, 0, 0, 0, 0) +
        cable("ac", 0, 1, 0, 0, 0, 0) + cable("ac", 2, 0, 0, 0, 0, 0) +
        cable("ac", 0, 1, 0, 0, 9, 0) + cable("ac", 0, 1, 1, 0, 0, 0) +
        cable("mc", 0, 1, 0, 0, 0, 0) + item("ccplay", number(20)) + item("ccbpm", number(24)) +
        item("cm", text("Live") + bytes({3, 0, 0, 0}) + numbers({0, 0, 0})) +
        item("cmap", numbers({4, 0, 1, 0, 0, 2, -2, 74, 10, 90, 0, 0})) +
        item("cmap", numbers({7, 1, 0, 0, 0, 1, 0, 75, 0, 127, 0, 0})) +
        item("cmap", numbers({6, 1, 0, 0, 0, 1, 0, 75, 0, 127, 0, 0})) +
        item("cmap", numbers({1, 9, 0, 0, 0, 1, 0, 75, 0, 127, 0, 0})) +
        item("cmap", numbers({3, 0, 0, 0, 0, 1, 0, 75, 0, 128, 0, 0})) + item("cmi", number(7)) +
        item("cmed", numbers({5, 6, 7, 8, 0, 0, -1, 0})) + item("modsb", numbers({1, 180}));
    ASSERT_EQ(f.load(file(items)), LoadResult::good);
    EXPECT_EQ(shown, std::vector<std::string>{});

    CQV* host = f.host;
    EXPECT_EQ(float(host->tempo), 90.0f);
    EXPECT_EQ(host->loop, 0);
    EXPECT_EQ(host->audioFolder, "tune_audio");
    EXPECT_EQ(host->id, "Host");
    EXPECT_EQ(host->editorStruct.pageItem, 8);
    ASSERT_EQ(host->samples.getCount(), 2);
    const auto* tone = static_cast<CSample*>(host->samples.items(0));
    EXPECT_TRUE(tone->frames == 3 && tone->valid && tone->fixedPitch && tone->data[5] == 6);
    const auto* missing = static_cast<CSample*>(host->samples.items(1));
    EXPECT_TRUE(!missing->valid && missing->streamed && missing->bits == 24);
    EXPECT_EQ(missing->filename, "/no/such.wav");

    ASSERT_EQ(host->comps.getCount(), 2);
    CComp* out = f.comp(0);
    CComp* member = f.comp(1);
    EXPECT_TRUE(member->posX == 7 && member->hideChs == 1 && member->listKind == listComps);
    COutputChannel* ch = member->output();
    EXPECT_EQ(ch->channels, 1);
    EXPECT_TRUE(ch->vol == 0.25f && ch->gain == 0.25f && ch->pan == -0.5f && ch->panL == 1.25f);
    EXPECT_TRUE(ch->trim == 0.75f && ch->trimAux == 2.0f && ch->solo == 1 && ch->mute == 0);
    EXPECT_TRUE(ch->showFader == 0 && ch->showExtra == 1);
    EXPECT_TRUE(ch->sections[0] == 1 && ch->sections[1] == 0 && ch->sections[2] == -1);
    EXPECT_TRUE(ch->eq[3]->getFrequency() == 4000.0f && ch->eq[3]->active == 1);
    EXPECT_TRUE(ch->eq[2]->filterType == 2 && ch->eq[2]->state[1] == -1);
    EXPECT_EQ(ch->sendLevels[0]->level, 0.5f);
    ASSERT_EQ(ch->inserts.getCount(), 1);
    auto* rack = static_cast<CComp*>(ch->inserts.first());
    EXPECT_TRUE(rack->type == compEffect && rack->enabled == 0 && rack->flags.load() == 2u);
    EXPECT_TRUE(rack->wet == 0.25f && rack->inPort() && rack->output()->comp == rack);
    EXPECT_EQ(rack->editorStruct.left, 9);

    EXPECT_EQ(host->sends.getCount(), 1);
    EXPECT_EQ(f.mixer.mxv, 5);
    EXPECT_EQ(out->audioCables.getCount(), 2) << "one twice, and two without all ends";
    EXPECT_EQ(out->midiCables.getCount(), 0);
    EXPECT_TRUE(host->ctrlStart == 20 && host->ctrlTempo == 24 && host->ctrlStop == -1);
    auto* maps = static_cast<CMapProg*>(host->maps.first());
    EXPECT_TRUE(maps->name == "Live" && maps->value == 3);
    ASSERT_EQ(maps->items.getCount(), 3) << "one target is missing, one value is none";
    const auto* map = static_cast<CMap*>(maps->items.items(0));
    EXPECT_TRUE(map->target.load() == rack && map->owner.load() == ch &&
                map->comp.load() == member);
    EXPECT_TRUE(map->ch == 2 && map->param == -2 && map->cc == 74 && map->min == 10);
    EXPECT_EQ(static_cast<CMap*>(maps->items.items(1))->target.load(), ch->sendLevels[0]);
    EXPECT_EQ(static_cast<CMap*>(maps->items.items(2))->target.load(),
              static_cast<CComp*>(host->sends.first())->output());
    EXPECT_EQ(host->curMap, 0);
    EXPECT_EQ(host->mapStruct.height, 8);
    EXPECT_TRUE(f.ui.windows.pages.size() == 1 && f.ui.windows.sidebar[1] == 180);
    f.device.run(3);

    // Windows and what is missing come out again as they went in.
    const std::string again = f.save();
    for (const std::string& part :
         {item("page", text("Mixer") + numbers({0, 0})), item("pagei", number(1)),
          item("modsb", numbers({1, 180})), item("mixed", numbers({1, 1, 1, 1, 1, 1, 1, 1})),
          text("/no/such.wav") + real(48000) + bytes({24, 2, 1, 0, -1}), item("strip2", strip),
          cable("ac", 2, 0, 0, 0, 0, 0)})
        EXPECT_NE(again.find(part), std::string::npos) << part;
}

/// What is wrong with an item, the one box that tells it, and whether the rest is read.
TEST(ProjectReader, DamageIsToldAndReadAround) {
    enterCompType(lazyType, [](CQV* root) -> CComp* { return new LazyComp(root); });
    const struct {
        const char* what;
        std::string items;
        std::vector<std::string> boxes;
        LoadResult result;
    } cases[] = {
        {"unknown", item("zzz", std::string(10, 7)), {}, LoadResult::good},
        {"lazy",
         comp("comp2", lazyType, 1, "L", "abc"),
         {errorReading("comp2", 35)},
         LoadResult::good},
        {"short strip",
         group + item("strip2", "12"),
         {errorReading("strip2", 2)},
         LoadResult::good},
        {"long", item("loop", "12345"), {errorReading("loop", 5)}, LoadResult::good},
        {"two",
         item("loop", "1") + item("pagei", "1"),
         {errorReading("loop", 1)},
         LoadResult::good},
        {"without an owner",
         comp("comp2", 0, 1, "P") + item("wet", real(1)) + item("strip2", "12") +
             comp("insert2", 7, 4, "R") + item("mini") + item("cmap", std::string(48, 0)),
         {},
         LoadResult::good},
        {"nowhere",
         comp("comp2", 9, 0, "N") + item("aout", number(2)) + comp("comp2", 9, 4, "N"),
         {},
         LoadResult::good},
        {"plug-in",
         comp("comp2", 2, 1, "A", "x") + comp("comp2", 2, 1, "B"),
         {"VST: Failed to open A, B"},
         LoadResult::good},
        {"odd numbers",
         group + item("strip2", real(NAN) + real(9) + std::string(44, 0)) +
             item("bpm", real(INFINITY)) + item("hideChs", number(-7)),
         {},
         LoadResult::good},
        {"samples cut",
         item("samples2", number(1000000) + text("a") + real(1)),
         {errorReading("samples2", 13)},
         LoadResult::good},
        {"frames cut",
         item("samples2",
              number(1) + text("a") + real(1) + bytes({16, 1, 0, 0}) + number(2000000000) + "xy"),
         {},
         LoadResult::good},
        {"old frames",
         item("samples", number(2) + text("a") + real(1) + bytes({16, 1, 0}) + "data"),
         {},
         LoadResult::good},
        {"negative",
         head("loop", -3),
         {"Error: Block size error: 'loop' (-3)."},
         LoadResult::abandoned},
        {"beyond the file",
         head("bpm", 2000000000) + "x",
         {errorReading("bpm", 2000000000)},
         LoadResult::abandoned},
        {"long name",
         item(std::string(70, 'n')) + head(std::string(70, 'm'), -1),
         {"Error: Block size error: '" + std::string(64, 'm') + "' (-1)."},
         LoadResult::abandoned},
        {"torn head", number(100) + "abcdefgh", {}, LoadResult::good},
    };
    for (const auto& c : cases) {
        ProjectFixture f;
        f.host->projectFile = "/tmp/p.qv";
        EXPECT_EQ(f.load(file(audioOut + c.items + item("modsb", numbers({0, 99})))), c.result)
            << c.what;
        EXPECT_EQ(shown, c.boxes) << c.what;
        if (c.result == LoadResult::abandoned) {
            f.expectEmptyProject();
        } else {
            const bool torn = std::string(c.what) == "torn head";
            EXPECT_EQ(f.ui.windows.sidebar[1], torn ? 0 : 99) << c.what;
            EXPECT_EQ(f.comp(0)->id, "Out") << c.what;
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
        const CStr path = folder.write("odd.qv", bytes);
        EXPECT_EQ(openProject(f.project, path, false), LoadResult::notProject);
        EXPECT_EQ(f.host->projectFile, "/tmp/mine.qv");
        EXPECT_EQ(f.host->id, "mine");
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
                              item("ptrack", bytes({0})) + times(22000, part + point);
    std::string cables;
    for (int i = 0; i < 40 * 62; ++i)
        for (const int to : {0, 1}) cables += cable("ac", 0, i / 62 + 1, i % 62, 0, to, 0);
    const struct {
        const char* what;
        std::string items, leftOut;
    } cases[] = {
        {"of a component", group + times(400, out + item("min")), "channels, ports"},
        {"in all", times(17, group + times(255, out)), "channels"},
        {"buses", times(33, bus + out + item("ain", number(2))) + cable("ac", 2, 32, 0, 0, 0, 0),
         "sends"},
        {"components", times(1025, comp("comp2", 0, 1, "C")), "components"},
        {"cables", times(40, group + times(61, out)) + cables, "cables"},
        {"programs of instruments", times(64, comp("comp2", 3, 1, "S", times(200, item("prog")))),
         "programs, components"},
        {"tracks of songs", times(5, comp("comp2", 4, 1, "T", times(1024, track))),
         "tracks, components"},
        {"samples",
         item("samples2",
              number(200000) + times(200000, text("") + real(1) + bytes({16, 1, 2, 0}))),
         "samples"},
        {"automation", comp("comp2", 4, 1, "P", parts), "automation"},
    };
    for (const auto& c : cases) {
        ProjectFixture f;
        ASSERT_EQ(f.load(file(audioOut + c.items)), LoadResult::good) << c.what;
        EXPECT_EQ(shown, std::vector<std::string>{"Error: The project holds more than can be "
                                                  "loaded. Left out: " +
                                                  c.leftOut})
            << c.what;
        EXPECT_LE(f.host->sends.getCount(), 32);
        EXPECT_LE(f.host->comps.getCount(), 1024);
        EXPECT_LE(f.comp(1) ? f.comp(1)->outputs.getCount() : 0, 255) << c.what;
        f.device.run();
    }
}

/// No step brings a bus more than channels have levels for.
TEST(ProjectReader, StepsKeepTheNumberOfBuses) {
    ProjectFixture f;
    for (int i = 0; i < maxSends; ++i) f.host->addSendClicked();
    CUndo* step = f.host->undoStart("Add", nullptr, 0);
    step->asAdd(new CGroupCh(f.host), &f.host->sends);
    f.host->undoEnd(step, true);
    EXPECT_EQ(f.host->sends.getCount(), maxSends);
    for (int i = 0; i < 2; ++i) f.host->undoClicked();
    f.host->settle();
    EXPECT_EQ(f.host->sends.getCount(), maxSends - 1);
    for (int i = 0; i < 2; ++i) f.host->redoClicked();
    f.host->settle();
    EXPECT_EQ(f.host->sends.getCount(), maxSends);
}
