#include "project/GraphIndex.h"

#include "base/CStream.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "sequencer/song/CSeq.h"

namespace {

template <class T>
void append(std::vector<T*>& to, const ListOf<T>& from) {
    for (auto* io : from) to.push_back(io);
}

CompIO seqIO(CSeq* seq) {
    CompIO io{seq, {}, {}, {}, {}};
    for (auto* track : seq->tracks) {
        append(io.inputs, track->inputs);
        append(io.outputs, track->outputs);
        if (track->kind == trackAudio) continue;
        append(io.inPorts, track->inPorts);
        append(io.outPorts, track->outPorts);
    }
    return io;
}

} // namespace

CompIO fileIO(CComp* c) {
    if (auto* seq = compAs<CSeq>(c)) return seqIO(seq);
    CompIO io{c, {}, {}, {}, {}};
    append(io.inputs, c->inputs);
    append(io.outputs, c->outputs);
    append(io.inPorts, c->inPorts);
    append(io.outPorts, c->outPorts);
    return io;
}

void writePlace(CStream* stream, const FilePlace& place) {
    stream->writeByte(static_cast<unsigned char>(place.list));
    stream->writeInt(place.comp);
    stream->writeByte(static_cast<unsigned char>(place.io));
}

GraphIndex::GraphIndex(CQV* root) : host(fileIO(root)) {
    for (auto* c : root->comps) comps.push_back(fileIO(c));
    for (auto* c : root->sends) sends.push_back(fileIO(c));
    enter(host, fileHost, 0);
    for (size_t i = 0; i < comps.size(); ++i) enter(comps[i], fileComps, int(i));
    for (size_t i = 0; i < sends.size(); ++i) enter(sends[i], fileSends, int(i));
}

void GraphIndex::enter(const CompIO& io, int list, int index) {
    places[io.comp] = {list, index, -1};
    const auto number = [&](const auto& ios) {
        int i = 0;
        for (const CIO* one : ios) places[one] = {list, index, i++};
    };
    number(io.inputs);
    number(io.outputs);
    number(io.inPorts);
    number(io.outPorts);
}

CompIO* GraphIndex::at(int list, int index) {
    if (list == fileHost) return &host;
    if (list != fileComps && list != 1 && list != fileSends) return nullptr;
    auto& found = list == fileSends ? sends : comps;
    return index >= 0 && size_t(index) < found.size() ? &found[size_t(index)] : nullptr;
}

const FilePlace* GraphIndex::placeOf(const CObject* object) const {
    const auto found = places.find(object);
    return found == places.end() ? nullptr : &found->second;
}
