#pragma once

#include "SongFixture.h"
#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "effects/CEffect.h"

#include <cstdlib>
#include <cstring>

/// The blocks of a song, put together by hand from the tables of the format.
class Blocks {
public:
    std::string bytes;

    Blocks& i(int v) { return raw(&v, 4); }
    Blocks& ints(std::initializer_list<int> all) {
        for (int v : all) i(v);
        return *this;
    }
    Blocks& f(float v) { return raw(&v, 4); }
    Blocks& floats(std::initializer_list<float> all) {
        for (float v : all) f(v);
        return *this;
    }
    Blocks& b(std::initializer_list<int> all) {
        for (int v : all) bytes += char(v);
        return *this;
    }
    Blocks& zeros(int ints) {
        bytes.append(size_t(ints) * 4, '\0');
        return *this;
    }
    Blocks& s(const std::string& text) {
        i(int(text.size()));
        bytes += text;
        return *this;
    }
    /// A block, whose told size is that of its content unless it is given.
    Blocks& block(const char* name, const Blocks& content = {}, int told = -1) {
        s(name).i(told == -1 ? int(content.bytes.size()) : told);
        bytes += content.bytes;
        return *this;
    }
    Blocks& raw(const void* data, size_t size) {
        bytes.append(static_cast<const char*>(data), size);
        return *this;
    }
};

/// A host with a pool of one sample (1000 frames), a send bus and a rack beside the sequencer.
struct SongFileFixture : SongFixture {
    CEffect* rack = device.add(new CEffect(&host));

    SongFileFixture() {
        enterCompType(compEffect, [](CQV* root) -> CComp* { return new CEffect(root); });
        auto* sample = new CSample;
        sample->setFormat(48000, 16, 2);
        sample->takeData(static_cast<unsigned char*>(std::calloc(1000, 4)), 1000);
        host.samples.add(sample);
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
        const GraphHold hold(&host);
        replace(new CSeq(&host));
        seq->read(&stream, end);
        EXPECT_EQ(stream.pos(), end);
        for (auto* t : each<CTrack>(seq->tracks)) handOut(t);
        seq->afterRead();
    }

    /// Puts another song, owned from then on, in the place of this one.
    void replace(CSeq* other) {
        const GraphHold hold(&host);
        host.comps.replace(seq, other);
        dropCables(&host, seq);
        delete seq;
        seq = other;
    }

private:
    void handOut(CTrack* t) {
        const auto give = [t, this](CList CComp::*list, CObject* io) {
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
