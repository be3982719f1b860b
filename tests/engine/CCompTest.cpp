#include "StripFixture.h"
#include "base/CStream.h"
#include "engine/CompBlocks.h"

#include <climits>
#include <memory>

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
    EXPECT_EQ(b->addAudioCable(a->output(), b->input()), audio.get());
    EXPECT_EQ(b->addMIDICable(a->outPort(), b->inPort()), midi.get());
    EXPECT_TRUE(b->audioCables.empty() && b->midiCables.empty());
}

/// What copy, strip and list of cables have to find in a graph with every kind of edge, and by what
/// place and list files name its ends.
TEST(Cables, EveryOneThatTouchesAComponentIsFound) {
    StripFixture f;
    SignalComp* from = f.add(new SignalComp(f.host));
    SignalComp* mid = f.add(new SignalComp(f.host));
    SignalComp* to = f.add(new SignalComp(f.host));
    CGroupCh* bus = f.addBus();
    to->inputs.add(new CInputChannel(to));
    f.connect(from, mid);
    f.connectMIDI(from, mid);
    to->addAudioCable(mid->output(), to->input(1));
    f.connectMIDI(mid, to);
    f.connect(mid, bus);
    f.connectMIDI(mid, bus);
    EXPECT_EQ(compToInt(f.host, mid), f.host->comps.indexed(mid));
    EXPECT_EQ(compToInt(f.host, bus), 0);
    EXPECT_EQ(intToList(f.host, listToInt(f.host, mid)), &f.host->comps);
    EXPECT_EQ(intToList(f.host, listToInt(f.host, bus)), &f.host->sends);
    EXPECT_EQ(intToList(f.host, listToInt(f.host, f.host)), nullptr);

    auto* twin = new SignalComp(f.host);
    twin->copyIO(mid);
    f.step([&](CUndo* u) {
        u->asAdd(twin, &f.host->comps);
        twin->copyCables(mid, u);
    });
    EXPECT_NE(getAudioCable(twin, from->output(), twin->input()), nullptr);
    EXPECT_NE(getMIDICable(twin, from->outPort(), twin->inPort()), nullptr);
    EXPECT_NE(getAudioCable(to, twin->output(), to->input(1)), nullptr);
    EXPECT_NE(getMIDICable(to, twin->outPort(), to->inPort()), nullptr);
    EXPECT_NE(getMIDICable(bus, twin->outPort(), bus->inPort()), nullptr);
    EXPECT_EQ(getAudioCable(bus, twin->output(), bus->input()), nullptr) << "only MIDI into a bus";
    f.undo();

    CList midi, audio, none;
    listCables(&midi, &audio, f.host, mid, nullptr);
    EXPECT_TRUE(midi.getCount() == 3 && audio.getCount() == 3);
    const size_t leaving =
        cablesFrom(f.host, mid->output()).size() + cablesFrom(f.host, mid->outPort()).size();
    EXPECT_EQ(leaving, 4u);
    f.step([&](CUndo* u) {
        f.host->stripCables(mid, u);
        u->asRemove(mid, &f.host->comps);
    });
    listCables(&none, &none, f.host, mid, nullptr);
    EXPECT_TRUE(none.empty() && mid->audioCables.empty() && mid->midiCables.empty());
    f.undo();
    listCables(&none, &none, f.host, mid, nullptr);
    EXPECT_EQ(none.getCount(), 6);
}

/// Places of a file may be any numbers: those beyond the canvas come to its edge.
TEST(CComp, PlacesAreKeptOnTheCanvas) {
    StripFixture f;
    const struct {
        int stored, read;
    } cases[] = {{0, 0}, {7, 7}, {32767, 32767}, {32768, 32767}, {-1, 0}, {INT_MIN, 0}};
    for (const auto& c : cases) {
        CGroupCh group(f.host);
        group.posX = group.posY = c.stored;
        CMemoryStream stream;
        writeCompChunk(&stream, &group, listComps, "comp2");
        const int size = stream.getPos();
        stream.seek(0, seekStart);
        stream.readStr();
        stream.readInt(); // the size of the block
        const std::unique_ptr<CComp> read(readCompChunk(f.host, &stream, size));
        EXPECT_TRUE(read->posX == c.read && read->posY == c.read) << c.stored;
    }
}
