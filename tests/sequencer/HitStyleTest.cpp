#include "PlayFixture.h"
#include "SongFileFixture.h"

#include "audiofiles/CSample.h"
#include "base/TempFolder.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartMerge.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/render/CRender.h"
#include "sequencer/song/RowLoops.h"

#include <algorithm>
#include <set>

namespace {

CMIDIEvent* styled(HitStyle style, int key = 60, int length = 240) {
    CMIDIEvent* e = note(key, length);
    e->style = style;
    return e;
}

/// A drum track whose sounds are single frames, the sound `i` of height (i + 1) / 10.
struct HitFixture : SongFixture {
    CSongTrack* drums = track(trackDrum);
    CDrumPart* part = new CDrumPart;

    explicit HitFixture(int sounds = 3) {
        for (int i = 0; i < sounds; i++) {
            auto* clip = new CSampleClip;
            clip->setFormat(44100, 16, 1);
            auto* frames = static_cast<short*>(std::calloc(64, sizeof(short)));
            frames[0] = short(32767 * (i + 1) / 10);
            clip->takeData(reinterpret_cast<unsigned char*>(frames), 64);
            clip->playAll();
            auto* sound = new CDrumSound(drums->track->drumLayer(), &host, seq);
            sound->addSample(clip);
            const GraphHold hold(&host);
            seq->drumClips.add(clip);
            drums->track->drumLayer()->addSound(sound);
        }
        drums->addPart(part, nullptr);
    }
    CDrumEvent* add(int tick, int sound = 0, HitStyle style = {}) {
        CDrumEvent* e = createDrumEvent();
        e->sound = sound;
        e->style = style;
        part->addEvent(tick, e);
        return e;
    }
    /// Frames at which something is heard, from `from` on.
    std::vector<long> heard(int ticks, double from = 0.0, int block = 256) {
        host.setPos(from);
        device.run();
        host.start();
        device.forget();
        while (int(device.left.size()) < int(ticks * 44100 / 1920)) device.run(1, block);
        host.stop();
        std::vector<long> frames;
        for (size_t i = 0; i < device.left.size(); i++)
            if (std::fabs(device.left[i]) > 0.001f) frames.push_back(long(i));
        return frames;
    }
};

} // namespace

/// Half of many notes play, within five deviations of the binomial; none at 0 and all at 100. The
/// same is drawn in blocks of any size and at each start, in another pass something else.
TEST(HitStyle, ChanceKeepsItsShare) {
    constexpr int count = 800, step = 12;
    const auto played = [](int percent, int block, int starts, bool looping) {
        PlayFixture f;
        f.host.setFrames(block);
        CPart* made = midiPart(0, count * step);
        for (int i = 0; i < count; i++)
            made->addEvent(i * step, styled({(unsigned char)percent}, 60, step));
        f.songTrack->addPart(made, nullptr);
        f.prog()->leftLocator = 0;
        f.prog()->rightLocator = count * step;
        for (int i = 0; i < starts; i++) {
            f.host.stop();
            f.device.run();
            f.play(int(f.frame(count * step * (looping ? 2 : 1))) / block, 0.0, looping);
        }
        std::vector<int> ticks;
        for (const long at : f.ear->ons())
            ticks.push_back(int(std::lround(at / f.framesPerTick())));
        return ticks;
    };
    for (const int percent : {0, 25, 50, 90, 100}) {
        const double p = percent / 100.0, spread = 5 * std::sqrt(count * p * (1 - p));
        EXPECT_NEAR(double(played(percent, 256, 1, false).size()), count * p, spread) << percent;
    }
    const std::vector<int> first = played(50, 256, 1, false);
    EXPECT_EQ(played(50, 64, 1, false), first);
    EXPECT_EQ(played(50, 256, 2, false), first);
    std::vector<int> passes = played(50, 256, 1, true), second;
    for (const int tick : passes)
        if (tick >= count * step) second.push_back(tick - count * step);
    EXPECT_GT(second.size(), size_t(count) / 3);
    passes.resize(first.size());
    EXPECT_EQ(passes, first);
    EXPECT_NE(second, first);
}

/// A render draws the same each time, whatever was played before it.
TEST(HitStyle, RendersAreEqual) {
    HitFixture f;
    for (int i = 0; i < 64; i++) f.add(i * 60, i % 3, {50, 1, 0});
    TempFolder folder;
    const auto render = [&] {
        CSample file;
        file.streamed = 1;
        file.setFormat(44100, 32, 2);
        file.create(folder.file("a.wav"));
        file.writeHeader();
        CRender made(&f.host, f.seq);
        ListOf<COutputChannel> outputs;
        outputs.add(f.device.out->output());
        made.setTarget(f.device.out->output(), &file);
        made.process(0, barTicks, &outputs, true, nullptr);
        CSample heard;
        EXPECT_TRUE(heard.open(folder.file("a.wav")));
        std::vector<float> values(size_t(heard.frames) * 2);
        heard.readFrames(0, heard.frames, values.data());
        return values;
    };
    const std::vector<float> first = render();
    EXPECT_GT(std::ranges::count_if(first, [](float v) { return v > 0.01f; }), 16);
    f.heard(960);
    f.heard(960);
    EXPECT_EQ(render(), first);
}

/// Repeats share the length; what lies behind the part or the loop is left out, and so are those to
/// come when the song stops. The soft note goes before its own by its milliseconds, and is not
/// there where the note is not. Blocks change nothing.
TEST(HitStyle, RepeatsAndFlamsFallWhereTheyAreTold) {
    for (const int block : {64, 256, 1024}) {
        PlayFixture f;
        f.host.setFrames(block);
        CPart* made = midiPart(960, 960);
        made->addEvent(0, styled({100, 4, 0}, 60, 240));
        made->addEvent(0, styled({100, 8, 30}, 61, 80));
        made->addEvent(240, styled({0, 8, 30}, 62, 240));
        made->addEvent(300, styled({100, 1, 20}, 63, 100));
        made->addEvent(900, styled({100, 3, 0}, 64, 300));
        made->addEvent(960, styled({100, 1, 60}, 65, 100));    // behind the end
        made->addEvent(300, styled({100, 3, 20, 1}, 66, 100)); // muted
        f.songTrack->addPart(made, nullptr);
        f.play(int(f.frame(4000)) / block);
        const auto expectAt = [&](int key, const std::vector<double>& ticks, double extra = 0) {
            const Frames on = f.ear->ons(key);
            ASSERT_EQ(on.size(), ticks.size()) << key << " at " << block;
            for (size_t i = 0; i < on.size(); i++)
                EXPECT_NEAR(double(on[i]), ticks[i] * f.framesPerTick() + extra, 1) << key;
            EXPECT_EQ(f.ear->offs(key).size(), ticks.size()) << key;
        };
        expectAt(60, {960, 1020, 1080, 1140});
        const double flam30 = 0.030 * 44100 / f.framesPerTick();
        expectAt(61, {960 - flam30, 960, 970, 980, 990, 1000, 1010, 1020, 1030});
        expectAt(62, {});
        expectAt(63, {1260 - flam30 * 2 / 3, 1260});
        expectAt(64, {1860});
        expectAt(65, {});
        expectAt(66, {});
        for (const Heard& e : f.ear->events)
            if (noteOn(e.data) && asByte1(e.data) == 63) {
                EXPECT_EQ(asByte2(e.data), e.frame < f.frame(1259) ? 50 : 100);
            }
    }
}

/// A shorter row comes again until the part ends, wherever playback begins and however the blocks
/// fall, also in a loop; what stands behind its length is silent. The other rows play once.
TEST(HitStyle, RowsOfTheirOwnLengthComeAgain) {
    const auto fill = [](HitFixture& f) {
        f.part->pos = 480;
        f.part->length = 1920;
        f.add(0, 0);
        f.add(60, 1);
        f.add(240, 0); // behind the length of the row
        f.add(1050, 2);
        setRowLoop(f.seq, f.part, 0, 200);
        f.host.settle();
        setRowLoop(f.seq, f.part, 1, 720);
        f.host.settle();
    };
    std::vector<double> ticks{1530};
    for (int t = 0; t < 1920; t += 200) ticks.push_back(480 + t);
    for (int t = 60; t < 1920; t += 720) ticks.push_back(480 + t);
    std::ranges::sort(ticks);
    for (const auto& [block, from] : {std::pair{64, 0.0}, {256, 0.0}, {1024, 700.0}}) {
        HitFixture f;
        fill(f);
        std::vector<double> expected;
        for (const double t : ticks)
            if (t >= from) expected.push_back((t - from) * 44100 / 1920);
        const std::vector<long> on = f.heard(3000, from, block);
        ASSERT_EQ(on.size(), expected.size()) << block;
        for (size_t i = 0; i < on.size(); i++) EXPECT_NEAR(double(on[i]), expected[i], 2) << block;
        // Cut, glued and written out it plays the same.
        f.step([&](CUndo* undo) { f.seq->splitPart(f.drums, f.part, 500, 0, 1, undo); });
        EXPECT_EQ(f.drums->parts.getCount(), 2);
        EXPECT_EQ(f.heard(3000, from, block), on);
        f.undo();
        EXPECT_NE(rowLoops(f.part), nullptr);
        EXPECT_EQ(f.heard(3000, from, block), on);
    }
}

/// More repeats than 65,536 are not written out: the part is neither cut nor glued.
TEST(HitStyle, EndlessRowsStayWhole) {
    for (const auto& [ticks, writes] : {std::pair{65537 * 30, true}, {65538 * 30 + 1, false}}) {
        HitFixture f;
        f.part->length = ticks;
        f.add(0);
        setRowLoop(f.seq, f.part, 0, 30);
        f.host.settle();
        bool cut = false;
        f.step([&](CUndo* undo) { cut = f.seq->splitPart(f.drums, f.part, 960, 0, 1, undo); });
        EXPECT_EQ(cut, writes) << ticks;
        EXPECT_EQ(f.drums->parts.getCount(), writes ? 2 : 1);
        if (writes) f.undo();
        auto* other = new CDrumPart;
        other->pos = ticks;
        f.drums->addPart(other, nullptr);
        for (auto* p : f.drums->parts) p->setSelected(true);
        glueParts(f.seq);
        f.host.settle();
        EXPECT_EQ(f.drums->parts.getCount(), writes ? 1 : 2) << ticks;
    }
}

/// Styles and rows go with the events through every edit, back by undo, and through a file; a song
/// without any has no block of them.
TEST(HitStyle, EditsAndFilesKeepThem) {
    SongFileFixture f;
    CSongTrack* keys = f.track(trackMIDI);
    CSongTrack* kit = f.track(trackDrum);
    f.seq->addStandardKit(kit->track);
    CPart* part = midiPart(0);
    part->addEvent(100, note(60, 240));
    part->addEvent(500, note(62, 240));
    keys->addPart(part, nullptr);
    CPart* beat = new CDrumPart;
    CDrumEvent* hit = createDrumEvent();
    beat->addEvent(10, hit);
    kit->addPart(beat, nullptr);
    const std::string plain = f.write();
    EXPECT_EQ(plain.find("hitStyles"), std::string::npos);
    EXPECT_EQ(plain.find("mutedNotes"), std::string::npos);
    EXPECT_EQ(plain.find("rowLoops"), std::string::npos);
    part->getEvents()->next->style.muted = 1;
    EXPECT_EQ(f.write().find("hitStyles"), std::string::npos);
    const auto stylesOf = [](CPart* of) {
        std::vector<HitStyle> list;
        for (const CBaseEvent* e = of->getEvents(); e; e = e->next) list.push_back(e->style);
        return list;
    };
    // By the values of lanes: chance 40 %, 3 repeats, 20 ms.
    const auto setLanes = [&](CPart* of) {
        for (const auto& [kind, value] :
             {std::pair{laneChance, 0.4f}, {laneRepeats, 2.0f / 7}, {laneFlam, 20.0f / mostFlamMs}})
            lineEditParts(f.seq, {of}, {kind, 0}, {0, 300, value, value});
        f.host.settle();
    };
    setLanes(part);
    setLanes(beat);
    setRowLoop(f.seq, beat, 0, 480);
    f.host.settle();
    const HitStyle all{40, 3, 20}, none{100, 1, 0, 1};
    EXPECT_EQ(stylesOf(part), (std::vector{all, none}));
    EXPECT_EQ(stylesOf(beat), std::vector{all});
    const std::string changed = f.write();
    f.read(changed);
    EXPECT_EQ(f.write(), changed);
    keys = f.prog()->tracks.items(0);
    kit = f.prog()->tracks.items(1);
    part = keys->parts.getFirst();
    beat = kit->parts.getFirst();
    EXPECT_EQ(stylesOf(part), (std::vector{all, none}));
    ASSERT_NE(rowLoops(beat), nullptr);
    EXPECT_EQ(rowLoops(beat)->of(0), 480);

    for (CBaseEvent* e = part->getEvents(); e; e = e->next) select(e, true);
    copyEvents(f.seq, part, {}, {.ticks = 1000});
    f.host.settle();
    f.step([&](CUndo* undo) { quantize(undo, part, 240, false); });
    f.step([&](CUndo* undo) { quantize(undo, beat, 240, false); });
    EXPECT_EQ(stylesOf(part), (std::vector{all, none, all, none}));
    EXPECT_EQ(rowLoops(beat)->of(0), 480);
    f.step([&](CUndo* undo) { f.seq->splitPart(keys, part, 600, 0, 1, undo); });
    auto* left = keys->parts.items(0);
    auto* right = keys->parts.items(1);
    left->setSelected(true);
    right->setSelected(true);
    glueParts(f.seq);
    f.host.settle();
    EXPECT_EQ(stylesOf(keys->parts.getFirst()), (std::vector{all, none, all, none}));
    for (int i = 0; i < 5; i++) f.undo();
    f.host.settle();
    EXPECT_EQ(stylesOf(part), (std::vector{all, none}));
    f.seq->clearCopies();
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) select(e, true);
    f.seq->copyToClipboard(part);
    f.step([&](CUndo* undo) {
        f.seq->pasteData(undo, f.seq->clipboard.parts.getFirst(), part, 2000);
    });
    EXPECT_EQ(stylesOf(part), (std::vector{all, none, all, none}));
}

/// Aftertouch takes the keys of the selected notes, once each; without one there is nothing.
TEST(HitStyle, AftertouchGoesToSelectedKeys) {
    SongFixture f;
    CSongTrack* keys = f.track(trackMIDI);
    CPart* part = keys->addPart(midiPart(0), nullptr);
    for (const int key : {60, 64, 64}) part->addEvent(0, note(key));
    const auto pressures = [&] {
        std::multiset<int> list;
        for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
            if (const int data = static_cast<const CMIDIEvent*>(e)->data;
                statusByte(data) == midiAftertouch)
                list.insert(asByte1(data) * 1000 + asByte2(data));
        return list;
    };
    const EventLane lane{laneAftertouch, 0};
    setController(part, lane, 100, 101, 0.5f);
    EXPECT_TRUE(pressures().empty());
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) select(e, true);
    setController(part, lane, 100, 101, 0.5f);
    EXPECT_EQ(pressures(), (std::multiset{60064, 64064}));
    setController(part, lane, 100, 101, 1.0f);
    EXPECT_EQ(pressures(), (std::multiset{60127, 64127}));
}
