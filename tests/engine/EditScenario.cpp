#include "EditScenario.h"

#include <sstream>

namespace {

constexpr int mostComps = 24, mostSends = 8;

bool isSignal(const CComp* c) {
    return c->id.pos("c") == 0;
}

CComp* insertOf(COutputChannel* ch, int i) {
    return static_cast<CComp*>(ch->inserts.items(i));
}

} // namespace

void EditScenario::edit() {
    static const Edit edits[] = {
        &EditScenario::addComponent,  &EditScenario::addComponent, &EditScenario::removeComponent,
        &EditScenario::moveComponent, &EditScenario::toggleAudio,  &EditScenario::toggleAudio,
        &EditScenario::toggleMIDI,    &EditScenario::addSend,      &EditScenario::removeSend,
        &EditScenario::moveSend,      &EditScenario::addInsert,    &EditScenario::moveInsert,
        &EditScenario::removeInsert,  &EditScenario::changeValues, &EditScenario::swapContent};
    CUndo* u = host->undoStart("Edit", host, undoGraph);
    const Edit kind = edits[below(int(std::size(edits)))];
    (this->*kind)(u);
    // One structural change a step, as all are recorded against the present lists. Values change
    // when they are recorded, so a level is not to be one that moves with its bus.
    const bool buses = kind == &EditScenario::addSend || kind == &EditScenario::removeSend ||
                       kind == &EditScenario::moveSend;
    for (int more = below(3); more > 0 && !buses; --more) {
        changeValues(u);
        swapContent(u);
    }
    host->undoEnd(u, false);
}

CComp* EditScenario::anyComp(bool device) {
    std::vector<CComp*> found;
    for (auto* c : each<CComp>(host->comps))
        if (isSignal(c) || (device && c == out)) found.push_back(c);
    return found.empty() ? nullptr : found[size_t(below(int(found.size())))];
}

COutputChannel* EditScenario::anyChannel() {
    CComp* c = anyComp(true);
    return c ? c->output() : nullptr;
}

void EditScenario::record(CUndo* u, CComp* c, CList* list) {
    c->id = CStr(list == &host->sends ? "s" : "c") + asStr(serial++);
    c->init();
    c->createBuffers(host->frames);
    u->asAdd(c, list, below(list->getCount() + 2) - 1);
    if (below(4)) u->asAdd(createAudioCable(out, c->output(), nullptr), &out->audioCables);
}

void EditScenario::addComponent(CUndo* u) {
    if (host->comps.getCount() < mostComps) record(u, new SignalComp(host), &host->comps);
}

void EditScenario::removeComponent(CUndo* u) {
    CComp* c = anyComp(false);
    if (!c) return;
    host->stripCables(c, u);
    u->asRemove(c, &host->comps);
}

void EditScenario::moveComponent(CUndo* u) {
    const int last = host->comps.getCount();
    if (CComp* c = anyComp(true)) u->asMove(c, &host->comps, &host->comps, below(last + 2) - 1);
}

void EditScenario::toggleAudio(CUndo* u) {
    CComp* from = anyComp(false);
    CComp* to = anyComp(true);
    if (!from || !to) return;
    if (CAudioCable* cable = getAudioCable(to, from->output(), nullptr))
        u->asRemove(cable, &to->audioCables);
    else
        u->asAdd(createAudioCable(to, from->output(), nullptr), &to->audioCables);
}

void EditScenario::toggleMIDI(CUndo* u) {
    CComp* from = anyComp(false);
    CComp* to = anyComp(false);
    if (!from || !to) return;
    if (CMIDICable* cable = getMIDICable(to, from->outPort(), nullptr))
        u->asRemove(cable, &to->midiCables);
    else
        u->asAdd(createMIDICable(to, from->outPort(), nullptr), &to->midiCables);
}

void EditScenario::addSend(CUndo* u) {
    if (host->sends.getCount() < mostSends) record(u, new CGroupCh(host), &host->sends);
}

void EditScenario::removeSend(CUndo* u) {
    auto* bus = static_cast<CComp*>(host->sends.items(below(host->sends.getCount())));
    if (!bus || bus == foreignBus) return;
    host->stripCables(bus, u);
    u->asRemove(bus, &host->sends);
}

void EditScenario::moveSend(CUndo* u) {
    const int count = host->sends.getCount();
    if (count > 0)
        u->asMove(static_cast<CObject*>(host->sends.items(below(count))), &host->sends,
                  &host->sends, below(count + 2) - 1);
}

void EditScenario::addInsert(CUndo* u) {
    COutputChannel* ch = anyChannel();
    if (!ch) return;
    auto* insert = new GainComp(host);
    insert->id = CStr("i") + asStr(serial++);
    insert->init();
    insert->createBuffers(host->frames);
    u->asAdd(insert, &ch->inserts, below(ch->inserts.getCount() + 1));
}

void EditScenario::moveInsert(CUndo* u) {
    COutputChannel *from = anyChannel(), *to = anyChannel();
    CComp* insert = from ? insertOf(from, below(from->inserts.getCount())) : nullptr;
    if (insert) u->asMove(insert, &from->inserts, &to->inserts, below(3) - 1);
}

void EditScenario::removeInsert(CUndo* u) {
    COutputChannel* ch = anyChannel();
    CComp* insert = ch ? insertOf(ch, below(ch->inserts.getCount())) : nullptr;
    if (insert) u->asRemove(insert, &ch->inserts);
}

void EditScenario::changeValues(CUndo* u) {
    COutputChannel* ch = anyChannel();
    if (!ch) return;
    u->asInt(&ch->comp->posX);
    ch->comp->posX = below(1000);
    u->asInt(ch->comp->enabled.address());
    ch->comp->enabled = below(2);
    u->asFloat(ch->vol.address());
    ch->vol = float(below(100)) / 100;
    const int bus = below(mostSends);
    if (!foreignBus || host->sends.items(bus) != foreignBus) {
        CSend* send = ch->sendLevels[bus];
        u->asFloat(send->level.address());
        send->level = float(below(100)) / 100;
    }
    u->asPtr(&pointer);
    pointer = ch;
}

void EditScenario::swapContent(CUndo* u) {
    auto* edited = new Content;
    for (int i = below(5); i >= 0; --i) edited->values.push_back(below(1000));
    u->asSwap(&content, edited);
}

std::string EditScenario::dump() const {
    std::ostringstream text;
    const CList* const lists[] = {&host->comps, &host->sends};
    for (const CList* list : lists) {
        for (auto* c : each<CComp>(*list)) {
            text << c->id.asChar() << " at " << c->posX << " on " << c->enabled << " asleep "
                 << c->sleeping << "\n";
            for (auto* cable : each<CAudioCable>(c->audioCables))
                text << "  audio " << cable->fromComp->id.asChar() << "\n";
            for (auto* cable : each<CMIDICable>(c->midiCables))
                text << "  midi " << cable->fromComp->id.asChar() << "\n";
            for (auto* ch : each<COutputChannel>(c->outputs)) {
                text << "  strip " << ch->vol;
                for (const CSend* send : ch->sendLevels)
                    text << " " << send->level << (send->muted ? "m" : "") << send->shownLevel;
                for (auto* insert : each<CComp>(ch->inserts)) text << " " << insert->id.asChar();
                text << "\n";
            }
        }
    }
    text << pointer;
    for (const int v : content.values) text << " " << v;
    return text.str();
}
