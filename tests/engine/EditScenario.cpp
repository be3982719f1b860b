#include "EditScenario.h"
#include "base/Numbers.h"

#include <sstream>

namespace {

constexpr int mostComps = 24, mostSends = 8;
constexpr const char* ownName = "own";

} // namespace

void EditScenario::edit() {
    CUndo* u = host->undoStart("Edit", host, undoGraph);
    CList* const lists[] = {&host->comps, &host->sends, &anyStrip()->inserts};
    const int kind = below(6);
    if (kind < 3) editList(u, lists[kind]);
    if (kind == 3 || kind == 4) toggleCable(u, kind == 3);
    // One structural change a step, as all are recorded against the present
    // lists. Values change when they are recorded, so a level is not to be one
    // that moves with its bus.
    for (int more = below(3); more > 0 && kind != 1; --more) changeValues(u);
    host->undoEnd(u, false);
}

CComp* EditScenario::anyOf(const CList* list) {
    std::vector<CComp*> found;
    for (auto* c : each<CComp>(*list))
        if (c == foreignBus || c->id.pos(ownName) == 0) found.push_back(c);
    return found.empty() ? nullptr : found[size_t(below(int(found.size())))];
}

COutputChannel* EditScenario::anyStrip() {
    CComp* c = anyOf(&host->comps);
    return (c ? c : out)->output();
}

CComp* EditScenario::newFor(const CList* list) {
    CComp* c = nullptr;
    if (list == &host->comps)
        c = new SignalComp(host);
    else if (list == &host->sends)
        c = new CGroupCh(host);
    else
        c = new GainComp(host);
    c->id = CStr(ownName) + asStr(serial++);
    c->init();
    c->createBuffers(host->frames);
    return c;
}

void EditScenario::editList(CUndo* u, CList* list) {
    const bool inserts = list != &host->comps && list != &host->sends;
    const int count = list->getCount(), most = list == &host->comps ? mostComps : mostSends;
    CComp* c = anyOf(list);
    const int kind = below(4);
    if (kind < 2 && count < most) {
        c = newFor(list);
        u->asAdd(c, list, below(count + 2) - 1);
        if (!inserts && below(4))
            u->asAdd(createAudioCable(out, c->output(), nullptr), &out->audioCables);
    } else if (c && kind == 2) {
        u->asMove(c, list, inserts ? &anyStrip()->inserts : list, below(count + 2) - 1);
    } else if (c && c != foreignBus) {
        host->stripCables(c, u);
        u->asRemove(c, list);
    }
}

void EditScenario::toggleCable(CUndo* u, bool audio) {
    CComp *from = anyOf(&host->comps), *to = audio && below(2) ? out : anyOf(&host->comps);
    if (!from) return;
    CList* list = audio ? &to->audioCables : &to->midiCables;
    CObject* known = audio ? static_cast<CObject*>(getAudioCable(to, from->output(), nullptr))
                           : getMIDICable(to, from->outPort(), nullptr);
    if (known) return void(u->asRemove(known, list));
    if (audio)
        u->asAdd(createAudioCable(to, from->output(), nullptr), list);
    else
        u->asAdd(createMIDICable(to, from->outPort(), nullptr), list);
}

void EditScenario::changeValues(CUndo* u) {
    COutputChannel* ch = anyStrip();
    u->asInt(ch->comp->enabled.address());
    ch->comp->enabled = below(2);
    u->asFloat(ch->vol.address());
    ch->vol = float(below(100)) / 100;
    const int bus = below(mostSends);
    if (host->sends.items(bus) != foreignBus) {
        u->asFloat(ch->sendLevels[bus]->level.address());
        ch->sendLevels[bus]->level = float(below(100)) / 100;
    }
    u->asPtr(&pointer);
    pointer = ch;
    auto* edited = new Content;
    for (int i = below(5); i >= 0; --i) edited->values->push_back(below(1000));
    u->asSwap(&content, edited);
}

std::string EditScenario::dump() const {
    std::ostringstream text;
    for (const CList* list : {&host->comps, &host->sends})
        for (auto* c : each<CComp>(*list)) {
            text << c->id.asChar() << c->enabled << c->sleeping << "\n";
            for (auto* cable : each<CAudioCable>(c->audioCables))
                text << "  audio " << cable->fromComp->id.asChar() << "\n";
            for (auto* cable : each<CMIDICable>(c->midiCables))
                text << "  midi " << cable->fromComp->id.asChar() << "\n";
            for (auto* ch : each<COutputChannel>(c->outputs)) {
                text << "  strip " << ch->vol;
                for (const CSend* send : ch->sendLevels) text << " " << send->level;
                for (auto* insert : each<CComp>(ch->inserts)) text << " " << insert->id.asChar();
                text << "\n";
            }
        }
    text << pointer;
    for (const int v : *content.values) text << " " << v;
    return text.str();
}
