#include "plugins/PluginPlaces.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "plugins/PluginFile.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr const char *foldersSection = "VSTFolders", *pickedSection = "VSTPicked";
constexpr int deepest = 16;

using FileId = std::pair<dev_t, ino_t>;

bool idOf(const CStr& path, FileId& id) {
    struct stat about {};
    if (stat(path.asChar(), &about) != 0) return false;
    id = {about.st_dev, about.st_ino};
    return true;
}

/// Goes through a folder and those inside, each once, as links may lead in a circle; a bundle
/// counts as a file. `visit` gets the path of each file of the filter and ends the walk with true.
template <class F>
class Walk {
public:
    Walk(const CStr& ending, F& take) : filter(ending), visit(take) {}

    bool into(const CStr& folder, int depth = 0) {
        FileId id;
        if (depth > deepest || !idOf(folder, id) || !met.insert(id).second) return false;
        CStringList folders, files;
        if (!readDir(folder, filter, &folders, &files, true)) return false;
        const CStr inside = addSep(folder);
        for (int i = 0; i < folders.count(); i++)
            if (PluginFile::isBundle(folders.get(i))) files.append(folders.get(i));
        for (int i = 0; i < files.count(); i++)
            if (visit(inside + files.get(i))) return true;
        for (int i = 0; i < folders.count(); i++)
            if (!PluginFile::isBundle(folders.get(i)) && into(inside + folders.get(i), depth + 1))
                return true;
        return false;
    }

private:
    const CStr filter;
    F& visit;
    std::set<FileId> met;
};

bool liesIn(const CStr& folder, const CStr& file) {
    const CStr around = addSep(absolutePath(folder)), path = absolutePath(file);
    return std::strncmp(path.asChar(), around.asChar(), size_t(around.length())) == 0;
}

bool isPicked(const CStr& path) {
    CStringList lines;
    CIniFile(inifile).readSection(pickedSection, &lines);
    for (int i = 0; i < lines.count(); i++)
        if (strToValue(lines.get(i)) == path) return true;
    return false;
}

} // namespace

void findPlug(CStr& name, const CStr& folder, bool& found) {
    const CStr wanted = name;
    auto take = [&](const CStr& path) {
        if (!sameText(extractFileName(path), wanted)) return false;
        name = path;
        found = true;
        return true;
    };
    Walk(CStr(), take).into(folder);
}

bool hasVSTFolders() {
    CStringList lines;
    CIniFile(inifile).readSection(foldersSection, &lines);
    return lines.count() > 0;
}

std::vector<CStr> pluginFolders(CQV* host) {
    CStringList names, own;
    host->getFolders(foldersSection, &names, &own);
    std::vector<CStr> all;
    for (int i = 0; i < own.count(); i++) all.push_back(own.get(i));
    const CStr home = addSep(getHomeFolder()) + ".";
    for (const char* kind : {"vst", "lxvst", "vst3", "clap", "lv2"})
        for (const CStr& around :
             {home, CStr("/usr/local/lib/"), CStr("/usr/lib/"), CStr("/usr/lib/x86_64-linux-gnu/")})
            if (folderExists(around + kind)) all.push_back(around + kind);
    return all;
}

std::vector<CStr> pluginFiles(CQV* host) {
    std::vector<CStr> files;
    std::set<FileId> met;
    auto take = [&](const CStr& path) {
        FileId id;
        if (idOf(path, id) && met.insert(id).second) files.push_back(path);
        return false;
    };
    for (const CStr& folder : pluginFolders(host))
        Walk(CStr(PluginFile::libraries), take).into(folder);
    return files;
}

CStr allowedPlugin(CQV* host, const CStr& path) {
    const PluginFile wanted(path);
    const std::vector<CStr> folders = pluginFolders(host);
    const bool trusted = std::ranges::any_of(
        folders, [&wanted](const CStr& folder) { return liesIn(folder, wanted.file); });
    if (wanted.isThere() && (trusted || isPicked(wanted.file))) return path;
    bool found = false;
    CStr name = extractFileName(wanted.file);
    for (const CStr& folder : folders) {
        if (!name.empty()) findPlug(name, folder, found);
        if (found) return PluginFile(name, wanted.inside).text();
    }
    return "";
}

void allowPlugin(const CStr& path) {
    const CStr file = PluginFile(path).file;
    if (isPicked(file)) return;
    CStringList lines;
    CIniFile ini(inifile);
    ini.readSection(pickedSection, &lines);
    ini.writeString(pickedSection, asStr(lines.count()), file);
}
