#include "app/main/MainActions.h"

#include "app/CAction.h"
#include "app/main/CMainWin.h"
#include "app/main/Displays.h"
#include "app/main/Pages.h"
#include "app/main/ProjectFlows.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"

const MainActions::Command MainActions::commands[] = {
    {"new", &MainActions::newProject},
    {"open", &MainActions::open},
    {"save", &MainActions::save},
    {"saveas", &MainActions::saveAs},
    {"openlast", &MainActions::openLast},
    {"undo", &MainActions::undo},
    {"redo", &MainActions::redo},
    {"play", &MainActions::play},
    {"record", &MainActions::record},
    {"stop", &MainActions::stop},
    {"loop", &MainActions::loop},
    {"rewind", &MainActions::rewind},
    {"rewindToPlay", &MainActions::rewindToPlay},
    {"metronome", &MainActions::metronome},
    {"setup", &MainActions::setup},
    {"priorpage", &MainActions::priorPage},
    {"nextpage", &MainActions::nextPage},
};

const MainActions::Command* MainActions::find(const CAction* action) {
    for (const Command& c : commands)
        if (action->name == c.name) return &c;
    return nullptr;
}

bool MainActions::knows(const CAction* action) const {
    const Command* command = find(action);
    const bool turns = command && (command->run == &MainActions::priorPage ||
                                   command->run == &MainActions::nextPage);
    return command && (!turns || window->pages->canTurn());
}

bool MainActions::run(const CAction* action) {
    const Command* command = find(action);
    if (command) (this->*command->run)();
    return command != nullptr;
}

bool MainActions::isOn(const CAction* action) const {
    const Command* command = find(action);
    if (!command) return false;
    if (command->run == &MainActions::loop) return qv->loop != 0;
    if (command->run == &MainActions::record) return qv->recording != 0;
    if (command->run != &MainActions::metronome) return false;
    return qv->click->enabled && (qv->click->mode & clickPlay);
}

void MainActions::newProject() {
    window->flows->newClicked();
}

void MainActions::open() {
    window->flows->openClicked();
}

void MainActions::save() {
    window->flows->saveClicked();
}

void MainActions::saveAs() {
    window->flows->saveAsClicked();
}

void MainActions::openLast() {
    window->flows->openLast();
}

void MainActions::undo() {
    qv->undoClicked();
}

void MainActions::redo() {
    qv->redoClicked();
}

void MainActions::play() {
    if (qv->playing)
        qv->stop();
    else
        qv->start();
}

void MainActions::record() {
    qv->rec();
}

void MainActions::stop() {
    qv->stop();
}

void MainActions::loop() {
    const double on = qv->loop ? 0.0 : 1.0;
    CSeq* seq = songOf(qv);
    CSeqProg* prog = seq ? seq->getProg() : nullptr;
    qv->values->set(prog ? loopOf(prog) : loopOf(qv), {on, prog ? on : 0.0});
}

void MainActions::rewind() {
    qv->setPos(0.0);
}

void MainActions::rewindToPlay() {
    qv->setPos(double(qv->startPos));
}

void MainActions::setup() {
    window->openSetup();
}

void MainActions::metronome() {
    CClick* click = qv->click;
    const bool on = !(click->enabled && (click->mode & clickPlay));
    if (on) click->enabled = 1;
    click->mode = on ? click->mode | clickPlay : click->mode & ~clickPlay;
}

void MainActions::priorPage() {
    window->priorDockClicked(nullptr);
}

void MainActions::nextPage() {
    window->nextDockClicked(nullptr);
}
