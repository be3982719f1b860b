#include "SongFixture.h"

#include <map>
#include <sstream>

namespace {

/// Objects by name, so that the text names what a cable or lane leads to.
class Dumper {
public:
    explicit Dumper(CSeq* song) : seq(song) {}

    std::string text() {
        for (auto* c : each<CComp>(seq->host->comps)) nameIO(c, c->id.asChar());
        for (auto* t : each<CTrack>(seq->tracks)) dumpTrack(t);
        for (auto* c : each<CComp>(seq->host->comps)) dumpComp(c);
        for (auto* master : each<CPart>(seq->masterParts)) dumpPart("master", master);
        for (auto* p : each<CSeqProg>(seq->progs)) dumpProg(p);
        return out.str();
    }

private:
    void nameIO(CComp* c, const std::string& name) {
        for (const CList* list : {&c->inPorts, &c->outPorts, &c->inputs, &c->outputs})
            for (auto* io : each<CObject>(*list))
                names.try_emplace(io, name + kindOf(io) + std::to_string(list->indexed(io)));
    }
    static std::string kindOf(const CObject* io) {
        const bool in = io->type == 10 || (io->category == categoryChannel && io->type == 1);
        return std::string(io->category == categoryPort ? " port " : " channel ") +
               (in ? "in " : "out ");
    }
    void dumpTrack(CTrack* t) {
        out << "track " << t->id.asChar() << " kind " << t->kind << " flags " << t->flags
            << " height " << t->height << '/' << t->openHeight << " scroll " << t->scroll
            << " folder " << seq->tracks.indexed(t->folder) << '\n';
        for (const CList* list : {&t->inPorts, &t->outPorts, &t->inputs, &t->outputs})
            for (auto* io : each<CIO>(*list))
                out << "  " << names[io] << (io->comp == seq ? "" : " of a stranger") << '\n';
        for (auto* lane : each<CSubTrack>(t->subTracks))
            out << "  lane " << lane->id.asChar() << ' ' << lane->kind << " slot " << lane->slot
                << " param " << lane->param << " of " << names[lane->object] << '\n';
    }
    void dumpComp(CComp* c) {
        out << "comp " << c->id.asChar() << ' ' << c->type << '\n';
        for (auto* cable : each<CMIDICable>(c->midiCables))
            out << "  " << names[cable->fromPort] << " > " << names[cable->toPort] << '\n';
        for (auto* cable : each<CAudioCable>(c->audioCables))
            out << "  " << names[cable->fromChannel] << " > " << names[cable->toChannel] << '\n';
    }
    void dumpProg(CSeqProg* p) {
        out << "program " << p->id.asChar() << '\n';
        for (auto* t : each<CSongTrack>(p->tracks)) {
            out << " song track " << t->track->id.asChar() << '\n';
            for (auto* part : each<CPart>(t->parts)) dumpPart("part", part);
        }
        for (auto* point : each<CTempoPart>(p->tempos))
            out << " tempo " << point->pos << ' ' << point->getTempo() << '\n';
    }
    void dumpPart(const char* what, CPart* part) {
        out << "  " << what << ' ' << part->id.asChar() << " class " << part->type << " flags "
            << part->flags << " at " << part->pos << '+' << part->offset << " long " << part->length
            << " ghost " << seq->masterParts.indexed(part->ghostOf) << " users " << part->ghostCount
            << '\n';
        if (part->ghostOf) return;
        for (CBaseEvent* e = part->getEvents(); e; e = e->next)
            out << "    " << e->delta << ' ' << static_cast<CMIDIEvent*>(e)->data << '\n';
        for (int slot = 0; slot < maxSlots; slot++)
            for (const auto& [tick, value] : pointsOf(part, slot))
                out << "    point " << slot << ' ' << tick << ' ' << value << '\n';
    }

    CSeq* seq;
    std::map<const CObject*, std::string> names{{nullptr, "nothing"}};
    std::ostringstream out;
};

} // namespace

std::string dump(CSeq* seq) {
    return Dumper(seq).text();
}
