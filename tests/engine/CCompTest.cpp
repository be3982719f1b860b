#include "StripFixture.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

TEST(CompTypes, UnknownTypesGiveAPlainComponent) {
    StripFixture f;
    enterCompType(compGroupCh, [](CQV* host) -> CComp* { return new CGroupCh(host); });
    struct Case {
        unsigned char type;
        int made;
    };
    for (const Case& c : {Case{0, 0}, Case{8, 0}, Case{200, 0}, Case{9, compGroupCh}}) {
        CComp* made = createComp(f.host, 1, c.type);
        EXPECT_EQ(made->type, c.made);
        EXPECT_EQ(made->category, categoryComp);
        delete made;
    }
}

TEST(CComp, NamesOfChannelsDependOnTheirNumber) {
    StripFixture f;
    SignalComp* c = f.add(new SignalComp(f.host));
    EXPECT_STREQ(c->getName(c->output()).asChar(), "Signal");
    EXPECT_STREQ(c->getName(c->input()).asChar(), "");
    c->outputs.add(new COutputChannel(c));
    c->inputs.add(new CInputChannel(c));
    EXPECT_STREQ(c->getName(c->output(1)).asChar(), "Out 2");
    EXPECT_STREQ(c->getName(c->input(0)).asChar(), "In 1");
    EXPECT_STREQ(c->getName(c).asChar(), "Signal");
}

TEST(CComp, IndicesOutsideAListAreRefused) {
    StripFixture f;
    CComp c(f.host);
    for (int i = 0; i < 2; ++i) c.progs.add(new CProgram);
    c.setProg(2);
    EXPECT_EQ(c.updateFlags, 0u);
    c.setProg(1);
    EXPECT_EQ(c.updateFlags, updateProgram);
    EXPECT_EQ(c.getProgram(-1), c.progs.items(1));
    c.curProg = 99;
    EXPECT_EQ(c.getProgram(-1), nullptr);
    for (const int i : {8, -1}) {
        c.setMacroParam(i, 3);
        EXPECT_EQ(c.getMacroParam(i), -1);
    }
    c.setCurOutputChannel(5);
    EXPECT_EQ(c.getCurOutputChannel(), nullptr);
}

TEST(CComp, PrepareClearsTheBlockAndLeavesTheSourceOfInsertsAlone) {
    StripFixture f;
    SignalComp* c = f.addSignal();
    auto* seq = f.add(new SignalComp(f.host));
    seq->type = compSeq;
    c->addMIDICable(seq->outPort(), nullptr);
    CComp* insert = f.addInsert(c->output(), new GainComp(f.host));
    CList freeze;
    c->outPort()->freezeItems = &freeze;
    f.block(64);
    f.block(64);
    EXPECT_EQ(c->sourceSeq, seq);
    EXPECT_EQ(insert->sourceSeq, seq);
    EXPECT_EQ(seq->sourceSeq, seq);
    c->prepare(64);
    EXPECT_EQ(c->output()->bufL[63], 0.0f);
    EXPECT_EQ(c->outPort()->freezeItems, nullptr);
    EXPECT_FALSE(c->processed || c->mixed || c->fxDone);
}

TEST(Cables, AddingTwiceIsAToggle) {
    StripFixture f;
    SignalComp* a = f.add(new SignalComp(f.host));
    SignalComp* b = f.add(new SignalComp(f.host));
    CComp bare(f.host);
    EXPECT_EQ(b->addAudioCable(nullptr, nullptr), nullptr);
    EXPECT_EQ(bare.addAudioCable(a->output(), nullptr), nullptr);
    EXPECT_EQ(bare.addMIDICable(a->outPort(), nullptr), nullptr);
    const std::unique_ptr<CAudioCable> audio(b->addAudioCable(a->output(), nullptr));
    const std::unique_ptr<CMIDICable> midi(b->addMIDICable(a->outPort(), nullptr));
    EXPECT_EQ(audio->toChannel, b->input());
    EXPECT_EQ(midi->toPort, b->inPort());
    EXPECT_EQ(b->addAudioCable(a->output(), b->input()), audio.get());
    EXPECT_EQ(b->addMIDICable(a->outPort(), b->inPort()), midi.get());
    EXPECT_TRUE(b->audioCables.empty() && b->midiCables.empty());
}

/// What copy, strip and list of cables have to find in a graph with every kind of edge.
class CableGraph : public testing::Test {
protected:
    StripFixture f;
    SignalComp* from = f.add(new SignalComp(f.host));
    SignalComp* mid = f.add(new SignalComp(f.host));
    SignalComp* to = f.add(new SignalComp(f.host));
    CGroupCh* bus = f.addBus();

    void SetUp() override {
        to->inputs.add(new CInputChannel(to));
        mid->addAudioCable(from->output(), nullptr);
        mid->addMIDICable(from->outPort(), nullptr);
        to->addAudioCable(mid->output(), to->input(1));
        to->addMIDICable(mid->outPort(), nullptr);
        bus->addMIDICable(mid->outPort(), nullptr);
        bus->addAudioCable(mid->output(), nullptr);
    }
};

TEST_F(CableGraph, CopiesOfADuplicateKeepThePlaces) {
    auto* twin = new SignalComp(f.host);
    twin->copyIO(mid);
    CUndo* u = f.host->undoStart("Copy", twin, 0);
    u->asAdd(twin, &f.host->comps);
    twin->copyCables(mid, u);
    f.host->undoEnd(u, true);
    EXPECT_NE(getAudioCable(twin, from->output(), twin->input()), nullptr);
    EXPECT_NE(getMIDICable(twin, from->outPort(), twin->inPort()), nullptr);
    EXPECT_NE(getAudioCable(to, twin->output(), to->input(1)), nullptr);
    EXPECT_NE(getMIDICable(to, twin->outPort(), to->inPort()), nullptr);
    EXPECT_NE(getMIDICable(bus, twin->outPort(), bus->inPort()), nullptr);
    EXPECT_EQ(getAudioCable(bus, twin->output(), bus->input()), nullptr) << "only MIDI into a bus";
    EXPECT_EQ(twin->input()->channels, 2);
    EXPECT_NE(twin->output()->bufL, nullptr);
}

TEST_F(CableGraph, EveryCableThatTouchesAComponentIsFound) {
    CList midi, audio, leaving;
    listCables(&midi, &audio, f.host, mid, nullptr);
    EXPECT_EQ(midi.getCount(), 3);
    EXPECT_EQ(audio.getCount(), 3);
    listOutput(f.host, mid->output(), &leaving);
    EXPECT_EQ(leaving.getCount(), 2);
    listOutput(f.host, mid->outPort(), &leaving);
    EXPECT_EQ(leaving.getCount(), 4);

    CUndo* u = f.host->undoStart("Delete", f.host, 0);
    f.host->stripCables(mid, u);
    u->asRemove(mid, &f.host->comps);
    f.host->undoEnd(u, true);
    EXPECT_TRUE(to->midiCables.empty() && to->audioCables.empty() && bus->midiCables.empty());
    EXPECT_TRUE(mid->audioCables.empty() && mid->midiCables.empty());
    f.host->undoClicked();
    f.host->settle();
    CList again;
    listCables(&again, &again, f.host, mid, nullptr);
    EXPECT_EQ(again.getCount(), 6);
}

TEST_F(CableGraph, FilesNameAComponentByListAndPlace) {
    EXPECT_EQ(compToInt(f.host, mid), f.host->comps.indexed(mid));
    EXPECT_EQ(listToInt(f.host, mid), 0);
    EXPECT_EQ(compToInt(f.host, bus), 0);
    EXPECT_EQ(listToInt(f.host, bus), 2);
    EXPECT_EQ(listToInt(f.host, f.host), -1);
    EXPECT_EQ(intToList(f.host, 1), &f.host->comps);
    EXPECT_EQ(intToList(f.host, 2), &f.host->sends);
    EXPECT_EQ(intToList(f.host, 3), nullptr);
}

} // namespace
