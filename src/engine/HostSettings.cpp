#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>

// What of the host lives in the settings file.

namespace {

constexpr int percent = 100;
constexpr int maxBeats = 255;
constexpr int allClickModes = clickPlay | clickRecord | clickCountIn;

/// Where a kind of folder is looked for when the user has named none.
struct FolderKind {
    const char* section;
    const char* name;
};
constexpr FolderKind folderKinds[] = {
    {"ProjectFolders", "projects"}, {"ClipFolders", "clips"}, {"SampleFolders", "samples"},
    {"PresetFolders", "presets"},   {"VSTFolders", "vst"},
};

CStr firstFolder(CQV* host, const char* section) {
    CStringList names, paths;
    host->getFolders(section, &names, &paths);
    return paths.first();
}

void addFoundFolder(const CStr& section, CStringList* names, CStringList* paths) {
    const auto* kind = std::ranges::find_if(
        folderKinds, [&](const FolderKind& k) { return sameText(section, k.section); });
    if (kind == std::end(folderKinds)) return;
    const CStr beside = extractFilePath(asAppname());
    for (const CStr& folder : {beside, uplevel(beside)}) {
        const CStr path = addSep(folder) + kind->name;
        if (!folderExists(path)) continue;
        names->add(kind->name);
        paths->add(path);
        return;
    }
}

} // namespace

void CQV::readSettings() {
    if (!settingsEnabled) return;
    CIniFile ini(inifile);
    tempAudioFolder = ini.readString("options", "tempaudiofolder", "");
    const int width = ini.readInteger("audio", "recbits", recBits);
    if (width == 16 || width == 24 || width == 32) recBits = width;
    const int helpers = ini.readInteger("audio", "workers", -1);
    workers->setCount(helpers < 0 ? GraphWorkers::usual() : helpers);
    recLatency = asMax(0, storeInt("rec-latency", 0));
    click->enabled = ini.readInteger("metronome", "enabled", 1);
    click->mode = ini.readInteger("metronome", "mode", click->mode) & allClickModes;
    click->beats = asMinMax(ini.readInteger("metronome", "beats", 4), 0, maxBeats);
    click->volume = float(asMax(ini.readInteger("metronome", "volume", 80), 0)) / percent;
    const struct {
        const char* section;
        CStr* folder;
    } folders[] = {{"PresetFolders", &presetFolder},
                   {"ClipFolders", &clipFolder},
                   {"SampleFolders", &sampleFolder}};
    for (const auto& f : folders) {
        const CStr path = firstFolder(this, f.section);
        if (!path.empty()) *f.folder = path;
    }
}

void CQV::writeSettings() {
    if (!settingsEnabled) return;
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.writeString("options", "tempaudiofolder", tempAudioFolder);
    ini.writeInteger("metronome", "enabled", click->enabled);
    ini.writeInteger("metronome", "mode", click->mode);
    ini.writeInteger("metronome", "beats", click->beats);
    ini.writeInteger("metronome", "volume", asRound(double(click->volume) * percent));
    for (int i = 0; i < settings.numItems(); ++i) {
        const CSettings::Item* item = settings.getItem(i);
        if (item->kind == CSettings::kindInt && item->stored)
            ini.writeInteger("options", item->key, item->value);
    }
}

int CQV::storeInt(const CStr& key, int def) {
    const int value = CIniFile(inifile).readInteger("options", key, def);
    settings.setInt(key, value)->stored = true;
    return value;
}

void CQV::getFolders(const CStr& section, CStringList* names, CStringList* paths) {
    CStringList lines;
    CIniFile(inifile).readSection(section, &lines);
    for (int i = 0; i < lines.count(); ++i) {
        names->add(strToIdent(lines.get(i)));
        paths->add(strToValue(lines.get(i)));
    }
    if (lines.count() == 0) addFoundFolder(section, names, paths);
}
