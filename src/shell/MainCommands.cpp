#include "shell/MainCommands.h"

#include "base/Messages.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "shell/CMainWin.h"
#include "shell/Pages.h"
#include "shell/ProjectFlows.h"
#include "ui/Options.h"
#include "ui/Song.h"

namespace {

constexpr const char* aboutText =
    "Sondrava 2.0 - alpha\n\nA digital audio workstation for Linux.\n\n"
    "Free software under the GNU General Public License, version 3 or later.";

} // namespace

MainCommands::MainCommands(CMainWin* mainWin)
    : window(mainWin), qv(mainWin->host()), online(mainWin) {
    bindFlows();
    bindTransport();
    bindWindow();
}

void MainCommands::bindFlows() {
    Commands& commands = window->commands();
    ProjectFlows* flows = window->flows.get();
    commands.bind("new", [flows] { flows->newClicked(); });
    commands.bind("open", [flows] { flows->openClicked(); });
    commands.bind("openlast", [flows] { flows->openLast(); });
    commands.bind("save", [flows] { flows->saveClicked(); });
    commands.bind("saveas", [flows] { flows->saveAsClicked(); });
    commands.bind("setdefault", [flows] { flows->setDefaultClicked(); });
    commands.bind(
        "collect", [flows] { flows->collectClicked(); },
        [this] { return window->pumping == 0 && !window->flows->coming(); });
    commands.bind("exit", [this] { window->hide(); });
    commands.bind(
        "undo", [this] { qv->undoClicked(); },
        [this] { return !qv->undoText().empty() || qv->values->moved(); });
    commands.bind(
        "redo", [this] { qv->redoClicked(); }, [this] { return !qv->redoText().empty(); });
}

void MainCommands::bindTransport() {
    Commands& commands = window->commands();
    commands.bind(
        "play", [this] { play(); }, {}, [this] { return qv->playing != 0; });
    commands.bind(
        "record", [this] { qv->rec(); }, {}, [this] { return qv->recording != 0; });
    commands.bind("stop", [this] { qv->stop(); });
    commands.bind(
        "loop", [this] { loop(); }, {}, [this] { return qv->loop != 0; });
    commands.bind("rewind", [this] { qv->setPos(0.0); });
    commands.bind("rewindToPlay", [this] { qv->setPos(double(qv->startPos)); });
    commands.bind(
        "metronome", [this] { metronome(); }, {}, [this] { return clicking(); });
}

void MainCommands::bindWindow() {
    Commands& commands = window->commands();
    Options& options = window->options();
    const auto turns = [this] { return window->pages->canTurn(); };
    commands.bind(
        "priorpage", [this] { window->pages->nextDock(-1); }, turns);
    commands.bind(
        "nextpage", [this] { window->pages->nextDock(1); }, turns);
    commands.bind(
        "closeall", [this] { window->pages->closeDocked(); },
        [this] { return window->pages->current() != nullptr; });
    for (auto [name, option] : {std::pair{"spectrum", &options.spectrum},
                                {"hints", &options.hints},
                                {"ribbon", &options.ribbon}})
        commands.bind(
            name, [option] { option->toggle(); }, {}, [option] { return option->on(); });
    options.hasUpdates = online.isThere();
    if (online.isThere())
        commands.bind(
            "checkupdates", [this] { online.run(); }, [this] { return window->pumping == 0; });
    commands.bind("about", [this] { showMsg(window, "About", aboutText); });
}

void MainCommands::play() {
    if (qv->playing)
        qv->stop();
    else
        qv->start();
}

void MainCommands::loop() {
    const double on = qv->loop ? 0.0 : 1.0;
    CSeq* seq = songOf(qv);
    CSeqProg* prog = seq ? seq->getProg() : nullptr;
    qv->values->set(prog ? loopOf(prog) : loopOf(qv), {on, prog ? on : 0.0});
}

bool MainCommands::clicking() const {
    return qv->click->enabled && (qv->click->mode & clickPlay);
}

void MainCommands::metronome() {
    CClick* click = qv->click;
    const bool on = !clicking();
    if (on) click->enabled = 1;
    click->mode = on ? click->mode | clickPlay : click->mode & ~clickPlay;
}
