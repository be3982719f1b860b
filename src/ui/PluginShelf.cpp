#include "ui/PluginShelf.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "plugins/PluginPlaces.h"

#include <algorithm>

namespace {

constexpr const char *cacheName = "plugins.txt", *helperName = "sondrava-plugins";
constexpr const char* recentSection = "recent-plugins";

PluginShelf* onlyShelf = nullptr;

CStr cacheFile() {
    return extractFilePath(inifile) + cacheName;
}

} // namespace

PluginShelf::PluginShelf(CQV* host)
    : list(cacheFile()), scan(list, extractFilePath(asAppname()) + helperName), qv(host) {
    onlyShelf = this;
}

PluginShelf::~PluginShelf() {
    onlyShelf = nullptr;
}

PluginShelf* PluginShelf::current() {
    return onlyShelf;
}

void PluginShelf::refresh() {
    scan.add(list.compare(pluginFiles(qv)));
    if (onChange) onChange();
}

void PluginShelf::rescan(const CStr& path) {
    scan.add({path});
}

void PluginShelf::rescanAll() {
    const std::vector<CStr> files = pluginFiles(qv);
    list.compare(files);
    scan.add(files);
}

void PluginShelf::idle() {
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
