#include "arrange/SongImports.h"

#include "audiofiles/AudioImport.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "gui/dialogs/CFileWin.h"
#include "project/TrackPreset.h"
#include "sequencer/song/CSeq.h"
#include "ui/CProgressWin.h"
#include "ui/Commands.h"
#include "ui/PresetMenu.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <chrono>
#include <utility>

namespace {

constexpr auto quiet = std::chrono::milliseconds(300); ///< work that shows no progress

bool freeFrom(CSeq* seq, const CSongTrack* songTrack, int tick) {
    for (auto* part : songTrack->parts)
        if (part->pos + seq->getTicks(part) > tick) return false;
    return true;
}

} // namespace

SongImports::SongImports(Workspace& space) : workspace(space), qv(space.host()) {
    const auto ready = [this] { return seq() != nullptr; };
    Commands& commands = workspace.commands();
    commands.bind(
        "importaudio", [this] { audioClicked(); }, ready);
    commands.bind(
        "importmidi", [this] { midiClicked(); }, ready);
    commands.bind(
        "importsound", [this] { soundClicked(); }, ready);
    commands.bind(
        "savetrack", [this] { saveTrackClicked(); },
        [this] { return seq() && selectedTrack() && selectedTrack()->track->kind != trackFolder; });
}

CSeq* SongImports::seq() const {
    return playableSongOf(qv);
}

CSongTrack* SongImports::selectedTrack() const {
    return seq()->selection.tracks.getFirst();
}

// By the menu.

CStr SongImports::ask(const char* title, const char* ext) const {
    CFileWin dialog(workspace.mainWindow(), title, ext, workspace.dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return "";
    workspace.projectFolder = dialog.folder;
    return dialog.path;
}

void SongImports::audioClicked() {
    const CStr path = ask("Import audio", audioFileExt);
    if (path.empty()) return;
    const int tick = asInt(seq()->getPos());
    CSongTrack* onto = selectedTrack();
    if (onto && !freeFrom(seq(), onto, tick)) onto = nullptr;
    bring({{path, {onto, tick}}}, "Import");
}

void SongImports::midiClicked() {
    const CStr path = ask("Import MIDI file", midiFileExt);
    if (!path.empty()) bring({{path, {}}}, "Import");
}

void SongImports::soundClicked() {
    const CStr path = ask("Import sound or clip", soundFileExt);
    if (!path.empty()) bring({{path, {selectedTrack(), asInt(seq()->getPos())}}}, "Import");
}

// Out of the presets.

void SongImports::addPresets(CPopup* popup, const char* title, const char* endings,
                             const char* verb) {
    addPresetMenu(popup, title, qv, endings, [this, verb](const CStr& path) {
        if (seq()) bring({{path, {selectedTrack()}}}, verb);
    });
}

void SongImports::fillForTrack(CPopup* popup) {
    const CSongTrack* of = seq() ? selectedTrack() : nullptr;
    if (!of || of->track->locked) return;
    const int kind = of->track->kind;
    if (kind == trackDrum) addPresets(popup, "Kit", ".qvd", "Load");
    if (kind == trackMIDI) addPresets(popup, "Arpeggio", ".qva", "Load");
    if (kind != trackFolder) addPresets(popup, "Effects", ".qve", "Add");
}

void SongImports::fillNewTracks(CPopup* popup) {
    if (seq()) addPresets(popup, "From preset", ".qvp", "Add");
}

void SongImports::saveTrackClicked() {
    CTrack* const track = selectedTrack()->track;
    CFileWin dialog(workspace.mainWindow(), "Save track as preset", ".qvp",
                    workspace.dialogFolder(), track->id, true);
    dialog.showModal();
    if (!dialog.result || !seq() || !seq()->tracks.contains(track)) return;
    workspace.projectFolder = dialog.folder;
    saveTrack(track, dialog.path);
}

// By dropping.

void SongImports::dropped(const DropPlan& plan) {
    waiting = plan.files;
    waitingVerb = "Drop";
    if (plan.files.empty()) setStatus(plan.refusal);
}

void SongImports::comeBeside(const std::vector<CStr>& paths, const char* verb) {
    if (!seq()) return;
    FactReader reader(paths);
    reader.waitFor();
    std::vector<FileFacts> facts;
    for (int i = 0; i < int(reader.paths.size()); i++) facts.push_back(reader.facts(i));
    dropped(planDrop(seq(), {}, reader.paths, facts, {nullptr, asInt(qv->getPos())}));
    waitingVerb = verb;
}

void SongImports::serve() {
    if (waiting.empty() || workspace.pumping) return;
    std::vector<BringFile> files = std::exchange(waiting, {});
    if (!seq()) return setStatus("There is no song to bring files into");
    for (BringFile& file : files)
        if (!seq()->getProg()->tracks.contains(file.place.onto)) file.place.onto = nullptr;
    bring(files, waitingVerb);
}

void SongImports::bring(const std::vector<BringFile>& files, const char* verb) {
    if (qv->recording || qv->recUndo) return setStatus("Nothing can be imported while recording");
    CStr names;
    std::vector<BringFile> known;
    for (const BringFile& file : files) {
        const CStr name = extractFileName(file.path);
        if (songFileOf(file.path) == SongFile::none) {
            setStatus(name + " is of no kind that a song takes");
            continue;
        }
        known.push_back(file);
        names += (names.empty() ? CStr() : CStr(", ")) + name;
    }
    CProgressWin progress(workspace, verb);
    progress.hold();
    const auto begun = std::chrono::steady_clock::now();
    const auto watch = [&](const CStr& name, float done) {
        if (std::chrono::steady_clock::now() - begun > quiet)
            progress.onStatus(CStr("Reading ") + name);
        return progress.onRender(done);
    };
    if (!known.empty() && bringIn(seq(), known, CStr(verb) + " " + names, watch))
        setStatus(CStr(verb) + ": " + names);
}
