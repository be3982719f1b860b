#pragma once

#include "SongFixture.h"
#include "base/CStream.h"
#include "effects/CEffect.h"
#include "engine/ForgetHooks.h"
#include "support/Blocks.h"

/// A host with a pool of one sample (1000 frames), a send bus and a rack beside the sequencer.
struct SongFileFixture : SongFixture {
    CEffect* rack = device.add(new CEffect(&host));

    SongFileFixture() {
        enterCompType(compEffect, [](CQV* root) -> CComp* { return new CEffect(root); });
        addSample(
            1000, [](int) { return 0.0; }, 48000);
        host.addSendClicked();
        host.settle();
    }

    std::string write() {
        CMemoryStream stream;
        seq->saving();
        seq->write(&stream);
        return {reinterpret_cast<const char*>(stream.data), size_t(stream.getPos())};
    }
    /// Replaces the song by what `bytes` hold, with channels and ports as a project gives them.
    void read(const std::string& bytes) {
        CMemoryStream stream;
        stream.write("head", 4);
        stream.write(bytes.data(), int(bytes.size()));
        const int end = stream.pos();
        stream.write("tail", 4);
        stream.setPos(4);
        const Standstill still(&host); // the workers as well
        replace(new CSeq(&host));
        seq->read(&stream, end);
        EXPECT_EQ(stream.pos(), end);
        for (auto* t : seq->tracks) handOut(t);
        seq->afterRead();
    }

    /// Puts another song, owned from then on, in the place of this one.
    void replace(CSeq* other) {
        const Standstill still(&host);
        host.comps.replace(seq, other);
        dropCables(&host, ForgetSet(seq));
        delete seq;
        seq = other;
    }

private:
    void handOut(CTrack* t) {
        const auto give = [t, this](auto list, auto* io) {
            (t->*list).add(io);
            (seq->*list).add(io);
        };
        const bool midi = t->kind == trackMIDI, drum = t->kind == trackDrum;
        if (midi || drum) give(&CComp::inPorts, new CInputPort(seq));
        if (midi) give(&CComp::outPorts, new COutputPort(seq));
        if (t->kind == trackAudio) give(&CComp::inputs, new CInputChannel(seq));
        if (drum || t->kind == trackAudio) give(&CComp::outputs, new COutputChannel(seq));
        t->createBuffers(host.frames);
    }
};
