#include "project/PresetFiles.h"
#include "ClipFixture.h"
#include "base/Paths.h"
#include "effects/CEffect.h"
#include "instruments/CArp.h"
#include "support/Rows.h"

namespace {

/// A component for each kind of file, with a program of its own making that is not the first.
struct PresetFixture : ClipFixture {
    CSampler* sampler = device.add(new CSampler(host));
    CEffect* rack = device.add(new CEffect(host));
    CArp* arp = device.add(new CArp(host));
    CSongTrack* drums = track(trackDrum);

    void edit() {
        sampler->progs.add(sampler->createProg());
        sampler->setProg(sampler->progs.getCount() - 1);
        rack->addReverb();
        rack->addGuitarAmp();
        rack->setProg(1);
        auto* pattern = new CArpProg;
        pattern->setStepTicks(77.0f);
        arp->progs.add(pattern);
        arp->setProg(1);
        addHits(drums);
        CProgram* edited[] = {sampler->getProg(), pattern, drums->track->synthProg.get()};
        for (CProgram* prog : edited) prog->id = "Edited";
    }
    /// What the extension of the path stands for.
    bool saveAs(const CStr& path) {
        const CStr ext = extractFileExt(path);
        if (ext == ".qvs") return saveProgram(sampler, path);
        if (ext == ".qve") return saveProgram(rack, path);
        return ext == ".qva" ? saveProgram(arp, path) : saveKit(drums->track, path);
    }
    void open(const CStr& path) {
        const CStr ext = extractFileExt(path);
        if (ext == ".qvs") sampler->openBank(path);
        if (ext == ".qve") rack->openProg(path);
        if (ext == ".qva") arp->openProg(path);
        if (ext == ".qvd") loadPreset(seq, drums->track->drumLayer(), drums->track, path);
    }
};

const char* const names[] = {"a.qvs", "a.qve", "a.qva", "a.qvd"};

std::string saved(const char* name) {
    PresetFixture f;
    f.edit();
    EXPECT_TRUE(f.saveAs(f.files.file(name)));
    return f.files.read(name);
}

} // namespace

TEST(PresetFiles, RoundTripsAndUndo) {
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const std::string bytes = saved(name);
        ASSERT_FALSE(bytes.empty());
        PresetFixture f;
        f.seq->addStandardKit(f.drums->track);
        f.drums->track->synthProg->id = "Before";
        f.arp->progs.add(new CArpProg);
        f.arp->setProg(1);
        const std::string before = f.save();
        f.open(f.files.write(name, bytes));
        EXPECT_TRUE(f.saveAs(f.files.file(name)));
        EXPECT_TRUE(f.files.read(name) == bytes);
        f.expectStep(before);
        EXPECT_TRUE(shown.empty());
    }
}

/// Damaged ones give what stands in front of the damage, or nothing; never more than one step.
TEST(PresetFiles, DamagedOnesAreTakenBackWhole) {
    for (const char* name : names) {
        SCOPED_TRACE(name);
        const std::string bytes = saved(name);
        PresetFixture f;
        f.addHits(f.drums);
        f.host->undoClear();
        const std::string before = f.save();
        eachDamage(bytes, [&](const std::string& damaged) {
            f.open(f.put(name, damaged));
            ASSERT_LE(f.host->undoIndex, 0);
            if (f.host->undoIndex < 0) return;
            f.runAlone();
            f.undo();
            f.host->undoClear();
        });
        EXPECT_TRUE(f.save() == before);
        for (const std::string& text : shown)
            EXPECT_EQ(text.rfind("Error reading Synthesizer: Error reading block: ", 0), 0u);
        EXPECT_EQ(shown.empty(), name != names[0]);
    }
}

TEST(PresetFiles, TypeIsTheFirstBlockOfThatName) {
    using namespace qvf;
    const std::string other = item("zzz", "12345"), type = item("filetype", number(3));
    TempFolder files;
    for (const auto& [content, wanted] :
         Rows<std::string, int>{{"", -1},
                                {other + type, 3},
                                {item("filetype", number(7)) + type, 7},
                                {item("prog") + item("filetype", "ab"), -1},
                                {head("zzz", -5) + type, -1},
                                {head("zzz", 1000) + type, -1}})
        EXPECT_EQ(getFiletype(files.write("x", content)), wanted);
}

TEST(PresetFiles, KitsGiveWayToKitsAlone) {
    PresetFixture f;
    f.edit();
    CTrack* track = f.drums->track;
    f.host->undoClear();
    const std::string before = f.save();
    ASSERT_TRUE(f.saveAs(f.files.file("program.qvs")));
    for (const CStr& path : {f.files.file("program.qvs"),
                             f.files.write("none.qvd", qvf::item("progid", qvf::text("No kit"))),
                             f.files.write("bad.qvd", qvf::item("sound", "too short")),
                             f.files.write("loop.rex", "no slices"), f.files.file("missing.qvd")})
        loadPreset(f.seq, track->drumLayer(), track, path);
    EXPECT_TRUE(f.save() == before);
    EXPECT_EQ(f.host->undoIndex, -1);
    const int height = track->openHeight;
    f.open(f.files.write("kit.qvd", saved("a.qvd")));
    EXPECT_EQ(f.host->undoText(), "Replace");
    EXPECT_EQ(track->drumLayer()->sounds.getCount(), 2);
    EXPECT_EQ(track->openHeight, height);
}
