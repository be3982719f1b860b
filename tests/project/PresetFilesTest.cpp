#include "project/PresetFiles.h"
#include "ClipFixture.h"
#include "effects/CEffect.h"
#include "instruments/CArp.h"

namespace {

/// A component for each kind of file, with a program of its own making that is not the first.
struct PresetFixture : ClipFixture {
    CSampler* sampler = device.add(new CSampler(host));
    CEffect* rack = device.add(new CEffect(host));
    CArp* arp = device.add(new CArp(host));
    CSongTrack* drums = track(trackDrum);

    void edit() {
        CSynthProg* prog = sampler->createProg();
        prog->id = "Edited";
        sampler->progs.add(prog);
        sampler->setProg(sampler->progs.getCount() - 1);
        rack->addReverb();
        rack->addGuitarAmp();
        rack->setProg(1);
        auto* pattern = new CArpProg;
        pattern->id = "Edited";
        pattern->setStepTicks(77.0f);
        arp->progs.add(pattern);
        arp->setProg(1);
        addHits(drums);
        drums->track->synthProg->id = "Edited";
    }
};

struct PresetKind {
    const char* file;
    bool (*save)(PresetFixture& f, const CStr& path);
    void (*open)(PresetFixture& f, const CStr& path);
};

const PresetKind kinds[] = {
    {"a.qvs", [](PresetFixture& f, const CStr& path) { return saveProgram(f.sampler, path); },
     [](PresetFixture& f, const CStr& path) { f.sampler->openBank(path); }},
    {"a.qve", [](PresetFixture& f, const CStr& path) { return saveProgram(f.rack, path); },
     [](PresetFixture& f, const CStr& path) { f.rack->openProg(path); }},
    {"a.qva", [](PresetFixture& f, const CStr& path) { return saveProgram(f.arp, path); },
     [](PresetFixture& f, const CStr& path) { f.arp->openProg(path); }},
    {"a.qvd", [](PresetFixture& f, const CStr& path) { return saveKit(f.drums->track, path); },
     [](PresetFixture& f, const CStr& path) {
         loadPreset(f.seq, f.drums->track->drumLayer(), f.drums->track, path);
     }},
};

std::string saved(const PresetKind& kind) {
    PresetFixture f;
    f.edit();
    EXPECT_TRUE(kind.save(f, f.files.file(kind.file)));
    return f.files.read(kind.file);
}

} // namespace

/// What was opened elsewhere is saved as the same bytes, and undo gives back what was there.
TEST(PresetFiles, RoundTripsAndUndo) {
    for (const PresetKind& kind : kinds) {
        SCOPED_TRACE(kind.file);
        const std::string bytes = saved(kind);
        ASSERT_FALSE(bytes.empty());
        PresetFixture f;
        f.seq->addStandardKit(f.drums->track);
        f.drums->track->synthProg->id = "Before";
        f.arp->progs.add(new CArpProg);
        f.arp->setProg(1);
        const std::string before = f.save();
        kind.open(f, f.files.write(kind.file, bytes));
        const std::string after = f.save();
        EXPECT_TRUE(after != before);
        EXPECT_TRUE(kind.save(f, f.files.file("again")));
        EXPECT_TRUE(f.files.read("again") == bytes);
        for (int i = 0; i < 2; ++i) {
            f.undo();
            EXPECT_TRUE(f.save() == before);
            f.redo();
            EXPECT_TRUE(f.save() == after);
        }
        EXPECT_TRUE(shown.empty());
    }
}

/// Damaged ones give what stands in front of the damage, or nothing; never more than one step.
TEST(PresetFiles, DamagedOnesAreTakenBackWhole) {
    for (const PresetKind& kind : kinds) {
        SCOPED_TRACE(kind.file);
        const std::string bytes = saved(kind);
        PresetFixture f;
        f.addHits(f.drums);
        f.host->undoClear();
        const std::string before = f.save();
        eachDamage(bytes, [&](const std::string& damaged) {
            kind.open(f, f.put(kind.file, damaged));
            ASSERT_LE(f.host->undoIndex, 0);
            if (f.host->undoIndex < 0) return;
            f.runAlone();
            f.undo();
            f.host->undoClear();
        });
        EXPECT_TRUE(f.save() == before);
        for (const std::string& text : shown)
            EXPECT_EQ(text.rfind("Error reading Synthesizer: Error reading block: ", 0), 0u);
    }
}

TEST(PresetFiles, TypeIsTheFirstBlockOfThatName) {
    using namespace qvf;
    const struct {
        std::string bytes;
        int type;
    } cases[] = {{"", -1},
                 {item("zzz", "12345") + item("filetype", number(3)), 3},
                 {item("filetype", number(7)) + item("filetype", number(3)), 7},
                 {item("prog") + item("filetype", "ab"), -1},
                 {head("zzz", -5) + item("filetype", number(3)), -1},
                 {head("zzz", 1000) + item("filetype", number(3)), -1}};
    TempFolder files;
    for (const auto& c : cases) EXPECT_EQ(getFiletype(files.write("x", c.bytes)), c.type);
    EXPECT_EQ(getFiletype(files.file("missing")), -1);
}

/// Only a file with drums in it takes the place of a kit.
TEST(PresetFiles, KitsGiveWayToKitsAlone) {
    PresetFixture f;
    f.edit();
    CTrack* track = f.drums->track;
    const auto load = [&](const CStr& path) { loadPreset(f.seq, track->drumLayer(), track, path); };
    f.host->undoClear();
    const std::string before = f.save();
    ASSERT_TRUE(saveProgram(f.sampler, f.files.file("program.qvs")));
    load(f.files.file("program.qvs"));
    load(f.files.write("none.qvd", qvf::item("progid", qvf::text("No kit"))));
    load(f.files.write("bad.qvd", qvf::item("sound", "too short")));
    load(f.files.write("loop.rex", "no slices"));
    load(f.files.file("missing.qvd"));
    EXPECT_TRUE(f.save() == before);
    EXPECT_EQ(f.host->undoIndex, -1);
    const int height = track->openHeight;
    f.files.write("kit.qvd", saved(kinds[3]));
    load(f.files.file("kit.qvd"));
    EXPECT_EQ(f.host->undoText(), "Replace");
    EXPECT_EQ(track->drumLayer()->sounds.getCount(), 2);
    EXPECT_EQ(track->openHeight, height);
}

TEST(PresetFiles, TrackPresetsAreEmpty) {
    TempFolder files;
    const CStr path = files.file("x.qvp");
    EXPECT_TRUE(saveTrackAsPreset(path));
    EXPECT_EQ(std::filesystem::file_size(path.asChar()), 0u);
}
