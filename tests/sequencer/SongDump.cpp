#include "SongFixture.h"

#include <map>
#include <sstream>

namespace {

class Dumper {
public:
    explicit Dumper(CSeq* song) : seq(song) {}

    std::string text() {
        for (auto* t : seq->tracks) dumpTrack(t);
        for (auto* c : seq->host->comps) dumpComp(c);
        for (auto* master : seq->masterParts) dumpPart(master);
        for (auto* p : each<CSeqProg>(seq->progs)) dumpProg(p);
        return out.str();
    }

private:
    /// Ports, channels and what else lanes lead to are numbers, in the order of their appearance.
    size_t number(const CObject* object) {
        return numbers.try_emplace(object, numbers.size()).first->second;
    }
    void dumpTrack(CTrack* t) {
        out << "track " << t->id.asChar() << " kind " << t->kind << " flags " << t->flags
            << " height " << t->height << '/' << t->openHeight << " scroll " << t->scroll
            << " folder " << seq->tracks.indexed(t->folder) << " ends";
        const auto dumpEnds = [&](auto of) {
            for (auto* io : t->*of)
                out << ' ' << number(io) << '@' << (seq->*of).indexed(io)
                    << (io->comp == seq ? "" : " of a stranger");
        };
        dumpEnds(&CComp::inPorts);
        dumpEnds(&CComp::outPorts);
        dumpEnds(&CComp::inputs);
        dumpEnds(&CComp::outputs);
        for (auto* lane : t->subTracks)
            out << "\n  lane " << lane->id.asChar() << ' ' << lane->kind << " slot " << lane->slot
                << " param " << lane->param << " of " << number(lane->object);
        out << '\n';
    }
    void dumpComp(CComp* c) {
        out << "comp " << c->id.asChar() << ' ' << c->type;
        for (auto* cable : c->midiCables)
            out << ' ' << number(cable->fromPort) << '>' << number(cable->toPort);
        for (auto* cable : c->audioCables)
            out << ' ' << number(cable->fromChannel) << '>' << number(cable->toChannel);
        out << '\n';
    }
    void dumpProg(CSeqProg* p) {
        out << "program " << p->id.asChar() << '\n';
        for (auto* t : p->tracks) {
            out << " song track " << t->track->id.asChar() << '\n';
            for (auto* part : t->parts) dumpPart(part);
        }
        for (auto* point : p->tempos)
            out << " tempo " << point->pos << ' ' << point->getTempo() << '\n';
    }
    void dumpPart(CPart* part) {
        out << "  part " << part->id.asChar() << " class " << part->type << " flags " << part->flags
            << " at " << part->pos << '+' << part->offset << " long " << part->length << " ghost "
            << seq->masterParts.indexed(part->ghostOf) << " users " << part->ghostCount << '\n';
        if (part->ghostOf) return;
        for (CBaseEvent* e = part->getEvents(); e; e = e->next)
            out << "    " << e->delta << ' ' << static_cast<CMIDIEvent*>(e)->data << '\n';
        for (int slot = 0; slot < maxSlots; slot++)
            for (const auto& [tick, value] : pointsOf(part, slot))
                out << "    point " << slot << ' ' << tick << ' ' << value << '\n';
    }

    CSeq* seq;
    std::map<const CObject*, size_t> numbers{{nullptr, 0}};
    std::ostringstream out;
};

} // namespace

std::string dump(CSeq* seq) {
    return Dumper(seq).text();
}
