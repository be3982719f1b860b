#include "sequencer/song/CPart.h"

#include "engine/WordChanges.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

/// Copies a list record by record with the create function of its class.
template <class E, class Create>
E* copyList(const CBaseEvent* list, Create create) {
    CBaseEvent* head = nullptr;
    CBaseEvent** link = &head;
    for (; list; list = list->next) {
        *link = create(static_cast<const E*>(list));
        link = &(*link)->next;
    }
    return static_cast<E*>(head);
}

CEnvEvent* copyPoints(const CEnvEvent* list) {
    return copyList<CEnvEvent>(list, [](const CEnvEvent* e) { return createEnvEvent(e, 0.0f); });
}

/// Links an event that stands at `tick` behind those that `passes(delta, rest)` lets by, where
/// `rest` is what remains of the tick. `keepFirst` exempts the head of the list from that test.
template <class Passes>
CBaseEvent* linkAt(CBaseEvent* head, int tick, CBaseEvent* event, Passes passes) {
    CBaseEvent* before = nullptr;
    CBaseEvent* after = head;
    while (after && passes(after->delta, tick, before == nullptr)) {
        tick -= after->delta;
        before = after;
        after = after->next;
    }
    event->delta = tick;
    event->next = after;
    if (after) after->delta -= tick;
    if (!before) return event;
    before->next = event;
    return head;
}

/// Frees the selected records; the time that they took goes to their followers.
CBaseEvent* cutSelected(CBaseEvent* head) {
    CBaseEvent** link = &head;
    int carried = 0;
    while (CBaseEvent* event = *link) {
        if (event->flags & eventSelected) {
            carried += event->delta;
            *link = event->next;
            freeEvent(event);
        } else {
            event->delta += carried;
            carried = 0;
            link = &event->next;
        }
    }
    return head;
}

} // namespace

CPart::CPart() : CPart(partPlain) {
}

CPart::CPart(PartType partType) {
    category = categoryPart;
    type = partType;
}

CPart::~CPart() {
    freeEvents(events);
    delete takes.load();
    for (Chunk* chunk : chunks) {
        if (!chunk) continue;
        for (CEnvEvent* list : chunk->params) freeEvents(list);
        delete chunk;
    }
}

CBaseEvent* CPart::getEvents() {
    return content()->events;
}

CEnvEvent* CPart::getParam(int index) {
    Shared<CEnvEvent*>* list = content()->slot(index);
    return list ? list->load() : nullptr;
}

CPart* CPart::copy(int) {
    auto* part = new CPart;
    copyHeader(part);
    return part;
}

void CPart::swap(CPart* other) {
    WordChanges words;
    listWords(other, words);
    words.carryOut();
}

void CPart::listWords(CUndoContent* other, WordChanges& words) {
    auto* part = static_cast<CPart*>(other);
    words.exchange(events, part->events);
    const int slots = std::min(reservedSlots(), part->reservedSlots());
    for (int i = 0; i < slots; i++) words.exchange(*slot(i), *part->slot(i));
    if (takes && part->takes) words.exchange(takes, part->takes);
}

CStr CPart::getId() const {
    if (type == partMIDI) return "MIDI";
    if (type == partAudio) return "Audio";
    return type == partDrum ? "Drum" : "";
}

void CPart::setEvents(CBaseEvent* list) {
    CPart* owner = content();
    freeEvents(owner->events);
    owner->events = list;
}

void CPart::setParam(int index, CEnvEvent* list) {
    CPart* owner = content();
    Shared<CEnvEvent*>* target = owner->slotWithRoom(index);
    if (!target) return freeEvents(list);
    freeEvents(*target);
    *target = list;
}

void CPart::relinkParam(int index, CEnvEvent* list) {
    if (Shared<CEnvEvent*>* target = content()->slot(index)) *target = list;
}

void CPart::addEvent(int tick, CBaseEvent* event) {
    CPart* owner = content();
    owner->events =
        linkAt(owner->events, tick, event, [](int delta, int rest, bool) { return delta <= rest; });
}

void CPart::addEventParam(int tick, CEnvEvent* event, int index) {
    CPart* owner = content();
    Shared<CEnvEvent*>* list = owner->slotWithRoom(index);
    if (!list) return freeEvent(event);
    *list = static_cast<CEnvEvent*>(
        linkAt(list->load(), tick, event, [](int delta, int rest, bool first) {
            return delta < rest || (first && delta == rest);
        }));
}

void CPart::deleteSelected() {
    if (ghostOf) return;
    events = cutSelected(events);
    for (int i = 0; i < reservedSlots(); i++)
        *slot(i) = static_cast<CEnvEvent*>(cutSelected(*slot(i)));
}

void CPart::copyParams(CPart* source) {
    CPart* from = source->content();
    CPart* owner = content();
    const int slots = std::max(from->reservedSlots(), owner->reservedSlots());
    for (int i = 0; i < slots; i++) owner->setParam(i, copyPoints(from->getParam(i)));
}

void CPart::reserveSlots(int slots) {
    for (int i = reservedSlots(); i < std::min(slots, maxSlots); i += chunkSlots) {
        chunks[i / chunkSlots].storeRelease(new Chunk);
    }
}

int CPart::reservedSlots() const {
    int count = 0;
    while (count < maxSlots / chunkSlots && chunks[count].loadAcquire()) count++;
    return count * chunkSlots;
}

uint64_t CPart::usedSlots() {
    CPart* owner = content();
    const int slots = owner->reservedSlots();
    uint64_t used = 0;
    for (int i = 0; i < slots; i++)
        if (owner->slot(i)->load()) used |= uint64_t(1) << i;
    return used;
}

Shared<CEnvEvent*>* CPart::slot(int index) {
    if (index < 0 || index >= maxSlots) return nullptr;
    Chunk* chunk = chunks[index / chunkSlots].loadAcquire();
    return chunk ? &chunk->params[index % chunkSlots] : nullptr;
}

Shared<CEnvEvent*>* CPart::slotWithRoom(int index) {
    if (index >= 0 && index < maxSlots) reserveSlots(index + 1);
    return slot(index);
}

CPlayStruct* CPart::play(int i) {
    if (i == 0) return &mainPlay;
    if (i < 0 || i > maxSlots) return nullptr;
    Chunk* chunk = chunks[(i - 1) / chunkSlots].loadAcquire();
    return chunk ? &chunk->play[(i - 1) % chunkSlots] : nullptr;
}

CPlayStruct* CPart::addPlay() {
    const int index = numPlay;
    if (index >= maxSlots) return nullptr;
    CPlayStruct* pointer = play(index);
    if (!pointer) return nullptr;
    *pointer = CPlayStruct();
    numPlay = index + 1;
    return pointer;
}

bool CPart::mainPlays(unsigned pass) {
    return numPlay > 0 && playPass == pass && mainPlay.head == getEvents();
}

void CPart::dropPlay() {
    numPlay = 0;
}

void CPart::dropLanePlay() {
    numPlay = std::min(int(numPlay), 1);
}

void CPart::copyHeader(CPart* target) const {
    target->id = id;
    target->flags = flags;
    target->colour = colour;
    target->ghostOf = ghostOf;
    target->pos = pos;
    target->offset = offset;
    target->length = length;
}

void CPart::copyTakesTo(CPart* target) const {
    if (const Takes* kept = takes) target->takes = new Takes(*kept);
}

CPart* CMIDIPart::copy(int withoutParams) {
    auto* part = new CMIDIPart;
    copyHeader(part);
    if (ghostOf) return part;
    part->setEvents(copyList<CMIDIEvent>(events, createMIDIEvent));
    copyTakesTo(part);
    if (!withoutParams) part->copyParams(this);
    return part;
}

CDrumPart::~CDrumPart() {
    delete rows.load();
}

void CDrumPart::listWords(CUndoContent* other, WordChanges& words) {
    CPart::listWords(other, words);
    words.exchange(rows, static_cast<CDrumPart*>(other)->rows);
}

CPart* CDrumPart::copy(int withoutParams) {
    auto* part = new CDrumPart;
    copyHeader(part);
    if (ghostOf) return part;
    part->setEvents(copyList<CDrumEvent>(events, createDrumEvent));
    setRowLoops(part, rows);
    copyTakesTo(part);
    if (!withoutParams) part->copyParams(this);
    return part;
}

CPart* CAudioPart::copy(int withoutParams) {
    auto* part = new CAudioPart;
    copyHeader(part);
    part->multiclip = multiclip;
    part->chs = chs;
    if (ghostOf) return part;
    part->setEvents(copyList<CAudioEvent>(events, createAudioEvent));
    copyTakesTo(part);
    if (!withoutParams) part->copyParams(this);
    return part;
}

int CAudioPart::getChs() {
    CPart* master = content();
    return master->type == partAudio ? static_cast<CAudioPart*>(master)->chs : chs;
}

void swapUndoPart(CUndo* undo, CPart* original, CPart* edited) {
    const int slots = std::max(original->reservedSlots(), edited->reservedSlots());
    original->reserveSlots(slots);
    edited->reserveSlots(slots);
    undo->asSwap(original, edited);
}

void swapUndoEvents(CUndo* undo, CPart* original, CPart* edited) {
    assert(edited->reservedSlots() == 0);
    setRowLoops(edited, rowLoops(original));
    undo->asSwap(original, edited);
}
