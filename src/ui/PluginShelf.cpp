#include "ui/PluginShelf.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "plugins/CVST.h"
#include "plugins/PluginPlaces.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CTrack.h"
#include "ui/Song.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char *cacheName = "plugins.txt", *trustName = "plugin-trust.txt";
constexpr const char* recentSection = "recent-plugins";

/// Beside the settings.
CStr own(const char* name) {
    return extractFilePath(inifile) + name;
}

} // namespace

PluginShelf::PluginShelf(CQV* host)
    : list(own(cacheName)), scan(list, pluginHelperProgram()),
      processes(std::make_shared<PluginProcesses>(pluginHelperProgram(), own(trustName))),
      qv(host) {
    processes->makerOf = [this](const CStr& path) {
        const PluginList::Entry* known = list.find(path);
        return known ? known->facts.vendor : CStr();
    };
}

/// Plug-ins may outlive it.
PluginShelf::~PluginShelf() {
    processes->makerOf = {};
}

void PluginShelf::refresh() {
    scan.add(list.compare(pluginFiles(qv)));
    if (onChange) onChange();
}

void PluginShelf::rescan(const CStr& path) {
    scan.add({PluginFile(path).file});
}

void PluginShelf::rescanAll() {
    const std::vector<CStr> files = pluginFiles(qv);
    list.compare(files);
    scan.add(files);
}

void PluginShelf::idle() {
    if (std::exchange(refreshDue, false)) refresh();
    if (scan.poll() && onChange) onChange();
}

std::vector<const PluginList::Entry*> PluginShelf::recent() const {
    CStringList lines;
    CIniFile(inifile).readSection(recentSection, &lines);
    std::vector<const PluginList::Entry*> found;
    for (int i = 0; i < lines.count(); i++) {
        const PluginList::Entry* entry = list.find(strToValue(lines.get(i)));
        if (entry && entry->good()) found.push_back(entry);
    }
    return found;
}

float PluginShelf::loadOf(const CStr& path) const {
    float load = -1.0f;
    const auto add = [&](CComp* c) {
        if (c->type != compVST) return;
        const auto* plugin = static_cast<CVST*>(c);
        if (plugin->opened() && plugin->fileName == path)
            load = std::max(load, 0.0f) + plugin->workShare;
    };
    const auto addAll = [&add](CComp* c) {
        add(c);
        c->eachInsert(add);
    };
    for (const auto* comps : listsOf(qv->comps, qv->sends))
        for (auto* c : *comps) addAll(c);
    if (const CSeq* song = songOf(qv))
        for (auto* track : song->tracks) addAll(track);
    return load;
}

void PluginShelf::used(const CStr& path) {
    CStringList lines;
    CIniFile ini(inifile);
    ini.readSection(recentSection, &lines);
    std::vector<CStr> paths{path};
    for (int i = 0; i < lines.count(); i++) {
        const CStr known = strToValue(lines.get(i));
        if (!(known == path) && int(paths.size()) < mostRecent) paths.push_back(known);
    }
    const CIniBatch batch(inifile);
    ini.eraseSection(recentSection);
    for (size_t i = 0; i < paths.size(); i++)
        ini.writeString(recentSection, asStr(int(i)), paths[i]);
}
