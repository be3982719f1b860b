#include "project/SeqChannels.h"

#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "sequencer/song/CSeq.h"

namespace {

bool takesMIDI(const CTrack* track) {
    return track->kind == trackMIDI || track->kind == trackDrum;
}

bool sounds(const CTrack* track) {
    return track->kind == trackAudio || track->kind == trackDrum;
}

bool isAudio(const CTrack* track) {
    return track->kind == trackAudio;
}

bool isMIDI(const CTrack* track) {
    return track->kind == trackMIDI;
}

template <class IO>
void drop(CSeq* seq, CList& list, IO* io) {
    forgetObject(seq->host, io);
    list.remove(io);
    delete io;
}

/// One kind of port or channel of a sequencer on its way to the tracks.
template <class Made, class IO>
class Binding {
public:
    /// The list of the sequencer, or of a track, that this kind stands in.
    using IOList = ListOf<IO> CComp::*;

    Binding(CSeq* song, IOList which, const std::vector<IO*>& fromFile)
        : seq(song), list(which), read(fromFile) {}

    /// Gives each track that `wants` one the next, or a new one when they have run out.
    template <class F>
    void bind(F&& wants) {
        size_t next = 0;
        for (auto* track : seq->tracks) {
            if (!wants(track)) continue;
            IO* io = next < read.size() ? read[next++] : make();
            (track->*list).add(io);
        }
        for (; next < read.size(); ++next) drop(seq, seq->*list, read[next]);
    }
    /// Lets go of all when there are not as many as tracks that want one.
    template <class F>
    void resetUnlessFitting(F&& wants) {
        size_t wanted = 0;
        for (auto* track : seq->tracks) wanted += wants(track) ? 1 : 0;
        if (wanted == read.size()) return;
        for (IO* io : read) drop(seq, seq->*list, io);
        read.clear();
    }

private:
    CSeq* seq;
    IOList list;
    std::vector<IO*> read;

    IO* make() {
        IO* io = new Made(seq);
        (seq->*list).add(io);
        return io;
    }
};

/// The ports of an audio track are in no file.
void makeAudioPorts(CSeq* seq, CTrack* track) {
    if (track->inPorts.empty()) track->inPorts.add(new CInputPort(seq));
    if (track->outPorts.empty()) track->outPorts.add(new COutputPort(seq));
    seq->inPorts.addUnique(track->inPort());
    seq->outPorts.addUnique(track->outPort());
}

} // namespace

void bindSeqChannels(CSeq* seq, const CompIO& read) {
    Binding<CInputPort, CMIDIQ> inPorts(seq, &CComp::inPorts, read.inPorts);
    Binding<CInputChannel, CInputChannel> inputs(seq, &CComp::inputs, read.inputs);
    Binding<COutputChannel, COutputChannel> outputs(seq, &CComp::outputs, read.outputs);
    Binding<COutputPort, CMIDIQ> outPorts(seq, &CComp::outPorts, read.outPorts);
    inPorts.resetUnlessFitting(takesMIDI);
    inputs.resetUnlessFitting(isAudio);
    inPorts.bind(takesMIDI);
    inputs.bind(isAudio);
    outputs.bind(sounds);
    outPorts.bind(isMIDI);
    for (auto* track : seq->tracks)
        if (isAudio(track)) makeAudioPorts(seq, track);
}
