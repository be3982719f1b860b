#include "Blocks.h"
#include "ModularFixture.h"

#include "base/CStream.h"
#include "engine/DeviceComps.h"
#include "engine/MidiBytes.h"
#include "engine/MidiInSettings.h"
#include "panels/midiin/PianoKeys.h"
#include "support/StoredPlaces.h"

/// The window of a MIDI input, opened from the graph.
class MidiInTest : public ModularFixture {
protected:
    void SetUp() override {
        ModularFixture::SetUp();
        startModular();
        in = static_cast<CMIDIIn*>(host->getMIDIIn());
        add(compSampler, 300, 60); // which it is cabled to, so that blocks work it out
        in->edit(true);
        ASSERT_TRUE(pumpUntil([this] { return piano() && piano()->width > 100; }));
        settle();
    }
    PianoKeys* piano() {
        CCompEditor* page = win->pages->editorOf(in);
        return page ? find<PianoKeys>("piano", page->clientGroup) : nullptr;
    }
    /// The notes of the next block, "60 " and, let go, "-60 ".
    std::string notes() {
        std::string all;
        runBlocks(host.get(), 1);
        for (const CMIDIBytes* e = in->outPort()->first(); e; e = e->next)
            all += (noteOn(e->data) ? "" : "-") + std::to_string(asByte1(e->data)) + " ";
        return all;
    }
    void toKey(int x) {
        const CPoint screen = piano()->win->getPos(true), at = piano()->win->controlPos(piano());
        act({"mousemove", std::to_string(screen.x + at.x + x),
             std::to_string(screen.y + at.y + piano()->height - 6)});
    }

    CMIDIIn* in = nullptr;
};

/// A press plays, a drag glides to the next key, the release ends it; by keys as well.
TEST_F(MidiInTest, KeysArePlayed) {
    const int white = piano()->width / 50; // 49 white keys from C1 on
    toKey(white / 2);
    act({"mousedown", "1"});
    EXPECT_TRUE(pumpUntil([this] { return piano()->sounding() == 24; }));
    EXPECT_EQ(notes(), "24 ");
    toKey(white + white / 2 + 2);
    EXPECT_TRUE(pumpUntil([this] { return piano()->sounding() == 26; }));
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([this] { return piano()->sounding() == -1; }));
    runBlocks(host.get(), 20);
    act({"keydown", "Return"});
    EXPECT_TRUE(pumpUntil([this] { return piano()->sounding() == 24; })) << "that was pressed last";
    act({"keyup", "Return"});
    EXPECT_TRUE(pumpUntil([this] { return piano()->sounding() == -1; }));
}

/// Whatever is stored of it is set in its window, or in its menu in the graph.
TEST_F(MidiInTest, WhatIsStoredHasControls) {
    const auto write = [](CMIDIIn& of) {
        CMemoryStream stream;
        of.write(&stream);
        return std::string(stream.data, stream.data + stream.getPos());
    };
    const std::string usual = write(*in);
    CMIDIIn other(host.get());
    const StoredPlaces stored = storable(usual, [&](const std::string& bytes) {
        CMemoryStream stream;
        stream.write(bytes.data(), int(bytes.size()));
        stream.setPos(0);
        other.read(&stream, int(bytes.size()));
        return write(other);
    });
    StoredPlaces controls = reached(midiInSettings(), in, [&] { return write(*in); });
    for (const int device : {-1, 1, 44}) {
        chooseDevice(in, in->device, device);
        controls.merge(differing(usual, write(*in)));
    }
    EXPECT_FALSE(stored.empty());
    EXPECT_EQ(missing(stored, controls), StoredPlaces());
}
