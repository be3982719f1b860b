#include "instruments/ArpEdits.h"

#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "instruments/CArp.h"
#include "instruments/CArpProg.h"

void addArpProgram(CArp* arp) {
    auto* prog = new CArpProg;
    if (const CArpProg* now = arp->getProg()) prog->copySettings(*now);
    CUndo* step = arp->host->undoStart("Add program", arp, {.comp = CompNotice::program});
    step->asInt(arp->curProg.address()); // undone last
    step->asAdd(prog, &arp->progs);
    arp->host->undoEnd(step, true);
}
