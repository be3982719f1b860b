#include "project/ProjectReader.h"

#include "base/BlockSearch.h"
#include "base/LoadBudget.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CMap.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/ObjectKinds.h"
#include "engine/Solo.h"
#include "plugins/CVST.h"
#include "project/CableBlocks.h"
#include "project/CompReader.h"
#include "project/ItemView.h"
#include "project/KeyBlocks.h"
#include "project/MapBlocks.h"
#include "project/Percent.h"
#include "project/ProjectUi.h"
#include "project/SampleBlocks.h"
#include "project/SeqChannels.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iterator>
#include <limits>

namespace {

constexpr int magicBytes = 3;
/// What objects may take: so much whatever the file is, and so much for each of its bytes. A
/// program of an instrument with its sounds needs 14.
constexpr int64_t anyBytes = 192 << 20, bytesPerByte = 16;
constexpr int smallBytes = 128; ///< about what a page or a map takes
constexpr int longestShownId = 64;
constexpr int learnController = -2, highestController = 127;

/// Abandons a load.
struct BadProject : std::exception {};

/// A load, from behind the magic string to the last item.
class Reading {
public:
    Reading(const Project& p, CStream* s)
        : project(p), host(p.host), stream(s), comps(host, index),
          budget(anyBytes + bytesPerByte * s->left()) {}

    void readItems();
    void finish();
    void tellWhereItEnded() const;

private:
    struct Kind {
        const char* id;
        void (Reading::*read)(ItemView& item);
    };
    static const Kind kinds[];

    const Project& project;
    CQV* host;
    CStream* stream;
    GraphIndex index;
    CompReader comps;
    const BlockNames known = allNames();
    CableReader cables{index};
    CStr id; ///< of the item at hand
    int size = 0;
    LoadBudget budget;
    bool sawSamples2 = false;
    bool sourceDamaged = false; ///< the project that this is a copy of was read with damage
    int shownPercent = -1;

    static BlockNames allNames();
    void readItem(const BlockStart& start);
    void dispatch(ItemView& item);
    void complain();
    CStr name() const;
    void showProgress();
    void fillDevices();
    void fillPlugins();
    void closeSilenced();
    void warnOfMissing() const;
    void warnOfLeftOut() const;

    void tempo(ItemView& item);
    void loop(ItemView& item) { host->loop = item.readInt() ? 1 : 0; }
    void audioFolder(ItemView& item);
    void samples2(ItemView& item);
    void samples(ItemView& item);
    void sampleMarks(ItemView& item) { readSampleMarks(item, host); }
    void page(ItemView& item);
    void currentPage(ItemView& item) { project.ui->windows.currentPage = item.readInt(); }
    void modularPage(ItemView& item) { project.ui->windows.modularPage = item.readInt(); }
    void sidebar(ItemView& item);
    void mixer(ItemView& item) { project.mixer->read(&item, saturate(item.getSize())); }
    void mixerEditor(ItemView& item) { readEditorStruct(item, project.mixer->editorStruct); }
    void audioCable(ItemView& item) { cables.readAudio(item); }
    void midiCable(ItemView& item) { cables.readMIDI(item); }
    void cableMute(ItemView& item) { cables.readMute(item); }
    void sideChain(ItemView& item) { readKey(item, index); }
    void controller(Shared<int>& to, ItemView& item);
    void ctrlStart(ItemView& item) { controller(host->ctrlStart, item); }
    void ctrlStop(ItemView& item) { controller(host->ctrlStop, item); }
    void ctrlRewind(ItemView& item) { controller(host->ctrlRewind, item); }
    void ctrlRecord(ItemView& item) { controller(host->ctrlRecord, item); }
    void ctrlTempo(ItemView& item) { controller(host->ctrlTempo, item); }
    void mapProg(ItemView& item);
    void map(ItemView& item);
    void currentMap(ItemView& item) { host->curMap = item.readInt(); }
    void mapEditor(ItemView& item) { readEditorStruct(item, host->mapStruct); }
    void recoveryCopy(ItemView& item);
};

const Reading::Kind Reading::kinds[] = {
    {"bpm", &Reading::tempo},
    {"loop", &Reading::loop},
    {"audiodir", &Reading::audioFolder},
    {"samples2", &Reading::samples2},
    {"samples", &Reading::samples},
    {"samplemarks", &Reading::sampleMarks},
    {"page", &Reading::page},
    {"pagei", &Reading::currentPage},
    {"pageModular", &Reading::modularPage},
    {"mixer", &Reading::mixer},
    {"mixed", &Reading::mixerEditor},
    {"ac", &Reading::audioCable},
    {"mc", &Reading::midiCable},
    {"cableMute", &Reading::cableMute},
    {"sidechain", &Reading::sideChain},
    {"ccplay", &Reading::ctrlStart},
    {"ccstop", &Reading::ctrlStop},
    {"ccrew", &Reading::ctrlRewind},
    {"ccrec", &Reading::ctrlRecord},
    {"ccbpm", &Reading::ctrlTempo},
    {"cm", &Reading::mapProg},
    {"cmap", &Reading::map},
    {"cmi", &Reading::currentMap},
    {"cmed", &Reading::mapEditor},
    {"modsb", &Reading::sidebar},
    {"recovery", &Reading::recoveryCopy},
};

// The walk through the file.

BlockNames Reading::allNames() {
    BlockNames made;
    for (const Kind& kind : kinds) made.add(kind.id);
    CompReader::addNames(made);
    return made;
}

void Reading::readItems() {
    while (stream->left() > 0) {
        const int64_t at = stream->getPos();
        BlockStart start;
        if (known.readStart(*stream, start) || !start.name.empty()) {
            readItem(start);
        } else {
            complain();
            stream->setPos(known.find(*stream, at + 1));
        }
    }
}

void Reading::readItem(const BlockStart& start) {
    id = start.name;
    size = start.size;
    showProgress();
    if (size < 0) {
        showMsg(nullptr, "Error",
                CStr("Block size error: '") + name() + "' (" + asStr(size) + ").");
        throw BadProject();
    }
    int64_t end = start.body + size;
    if (end > std::min<int64_t>(stream->getSize(), std::numeric_limits<int>::max())) {
        complain();
        throw BadProject();
    }
    const bool fits = known.isAt(*stream, end);
    if (!fits) end = known.find(*stream, start.body);
    stream->setPos(start.body);
    ItemView item(stream, end - start.body);
    dispatch(item);
    const bool noted = LoadBudget::takeDamage();
    if (noted || !fits || start.damaged || !item.exact()) complain();
    stream->setPos(end);
}

void Reading::dispatch(ItemView& item) {
    const Kind* kind = std::find_if(std::begin(kinds), std::end(kinds),
                                    [this](const Kind& k) { return id == k.id; });
    if (kind != std::end(kinds))
        (this->*kind->read)(item);
    else if (!comps.readItem(id, item))
        item.skipRest();
}

/// The first of a load in a box, as a bad file may have thousands.
void Reading::complain() {
    const CStr text = CStr("Error reading block: '") + name() + "' (" + asStr(size) +
                      "). Trying to read rest of file...";
    if (LoadBudget::firstDamage())
        showMsg(nullptr, "Error", text);
    else
        showStr(text);
}

CStr Reading::name() const {
    return id.sub(0, longestShownId);
}

void Reading::showProgress() {
    const int64_t total = std::max<int64_t>(stream->getSize(), 1);
    const int percent = int(stream->getPos() * 100 / total);
    if (percent == shownPercent) return;
    shownPercent = percent;
    setStatus(CStr("Loading...") + percentText(stream->getPos(), total));
}

void Reading::tellWhereItEnded() const {
    const bool inComp = (id == "comp" || id == "comp2") && comps.current();
    const CStr where = inComp ? CStr("comp '") + comps.current()->id.sub(0, longestShownId)
                              : CStr("block '") + name();
    showStr(CStr("openProject error: loading ") + where + "' (" + asStr(size) + ")");
}

// Items of the host.

void Reading::tempo(ItemView& item) {
    const float stored = item.readFloat();
    host->setTempo(std::isfinite(stored) ? stored : usualTempo);
    host->tempoNow = float(host->tempo);
}

/// A name alone: the audio of a project lies beside it, and nowhere else.
void Reading::audioFolder(ItemView& item) {
    const CStr folder = extractFileName(item.readStr());
    host->audioFolder = folder == "." || folder == ".." ? CStr() : folder;
}

void Reading::samples2(ItemView& item) {
    if (sawSamples2) return item.skipRest();
    sawSamples2 = true;
    readSamples2(item, host);
}

void Reading::samples(ItemView& item) {
    if (sawSamples2) return item.skipRest();
    readSamples(item, host);
}

void Reading::page(ItemView& item) {
    if (!LoadBudget::take("pages", smallBytes)) return item.skipRest();
    std::vector<unsigned char> bytes(size_t(item.left()));
    item.read(bytes.data(), int(bytes.size()));
    project.ui->windows.pages.push_back(std::move(bytes));
}

void Reading::sidebar(ItemView& item) {
    for (int& v : project.ui->windows.sidebar) v = item.readInt();
}

void Reading::controller(Shared<int>& to, ItemView& item) {
    to = std::clamp(item.readInt(), learnController, highestController);
}

void Reading::mapProg(ItemView& item) {
    if (!LoadBudget::take("controller maps", smallBytes)) return item.skipRest();
    host->maps.add(readMapProg(item));
}

void Reading::map(ItemView& item) {
    auto* prog = host->maps.last();
    if (prog && LoadBudget::take("controller maps", smallBytes))
        readMap(item, prog, index);
    else
        item.skipRest();
}

/// The name of its project is asked for where copies are looked for.
void Reading::recoveryCopy(ItemView& item) {
    item.readStr();
    sourceDamaged = item.readInt() != 0;
}

// What follows the last item.

void Reading::finish() {
    for (const CompIO& io : index.comps)
        if (auto* seq = compAs<CSeq>(io.comp)) bindSeqChannels(seq, io);
    fillDevices();
    fillPlugins();
    host->createBuffers(host->frames);
    for (const auto* list : listsOf(host->comps, host->sends)) {
        for (auto* c : *list) {
            c->createBuffers(host->frames);
            c->curOutput = std::clamp(c->curOutput, 0, std::max(c->outputs.getCount() - 1, 0));
        }
    }
    closeSilenced();
    for (const CompIO& io : index.comps)
        if (auto* seq = compAs<CSeq>(io.comp)) seq->afterRead();
    if (host->maps.empty()) host->maps.add(new CMapProg);
    host->curMap = std::clamp(int(host->curMap), 0, host->maps.getCount() - 1);
    if (project.mixer->progs.empty()) project.mixer->init();
    project.mixer->bindScenes();
    warnOfMissing();
    warnOfLeftOut();
    host->damaged = sourceDamaged || budget.damaged() || !budget.leftOut().empty();
}

void Reading::fillDevices() {
    for (auto* c : host->comps) {
        if (c->type != compAudioOut) continue;
        if (c->outputs.empty()) c->outputs.add(new COutputChannel(c));
        if (c->inPorts.empty()) c->inPorts.add(new CInputPort(c));
    }
}

/// A plug-in may have got more channels since the project was saved.
void Reading::fillPlugins() {
    const auto fill = [](CComp* c) {
        if (auto* plugin = compAs<CVST>(c)) plugin->fixChannels();
    };
    for (const auto* list : listsOf(host->comps, host->sends)) {
        for (auto* c : *list) {
            fill(c);
            c->eachInsert(fill);
        }
    }
}

/// Closes the strips that mute, or a solo elsewhere, silences: they would sound for the length of a
/// ramp if the project were played at once.
void Reading::closeSilenced() {
    spreadSolo(host);
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* c : *list)
            for (auto* ch : c->outputs)
                if (!stripOpen(c, ch)) ch->setVol(0.0f, false);
}

void Reading::warnOfMissing() const {
    CStr names;
    for (const CStr& missing : comps.notLoaded) names += names.empty() ? missing : ", " + missing;
    if (!names.empty()) showMsg(nullptr, "VST", CStr("Failed to open ") + names);
}

void Reading::warnOfLeftOut() const {
    if (budget.leftOut().empty()) return;
    showMsg(nullptr, "Error",
            CStr("The project holds more than can be loaded. Left out: ") + budget.leftOut());
}

// Around the walk.

/// The string in front of all items.
bool readMagic(CStream* stream) {
    if (stream->left() < int64_t(sizeof(int)) + magicBytes || stream->readInt() != magicBytes)
        return false;
    char text[magicBytes + 1] = {};
    stream->read(text, magicBytes);
    return CStr(text) == "QVF";
}

void clearProject(const Project& project) {
    project.ui->clearWindows();
    project.ui->windows = WindowRecords();
    project.host->clear();
    project.mixer->clear();
    CQV* host = project.host;
    for (Shared<int>* binding : {&host->ctrlStart, &host->ctrlStop, &host->ctrlRewind,
                                 &host->ctrlRecord, &host->ctrlTempo})
        *binding = -1;
    host->loop = 1;
}

void abandon(const Project& project) {
    clearProject(project);
    project.host->init();
    project.host->projectFile = "";
    project.mixer->init();
}

} // namespace

LoadResult readProject(const Project& project, CStream* stream) {
    if (!readMagic(stream)) return LoadResult::notProject;
    CQV* host = project.host;
    const Standstill still(host);
    clearProject(project);
    Reading reading(project, stream);
    try {
        reading.readItems();
    } catch (const std::exception&) {
        reading.tellWhereItEnded();
        abandon(project);
        return LoadResult::abandoned;
    }
    reading.finish();
    host->hostNotices.raise(HostNotice::delays | HostNotice::pages);
    host->notices.raise(CompNotice::maps);
    return LoadResult::good;
}

void showProjectWindows(const Project& project) {
    CQV* host = project.host;
    const auto open = [](CComp* c) {
        if (c->editorStruct.visible) c->edit(true);
    };
    project.ui->showPages();
    for (const auto* list : listsOf(host->comps, host->sends)) {
        for (auto* c : *list) {
            open(c);
            c->eachInsert(open);
        }
    }
    open(project.mixer);
    if (host->mapStruct.visible) host->editMap(nullptr);
    if (host->settings.getInt("savePosAndSize", 0)) project.ui->placeMainWindow();
}
