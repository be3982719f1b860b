#include "ui/IniFolders.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"

namespace {

struct ModeSection {
    int mode;
    const char* section;
};
constexpr ModeSection modes[] = {{foldersProject, "ProjectFolders"},
                                 {foldersSample, "SampleFolders"},
                                 {foldersPlugin, "VSTFolders"},
                                 {foldersPreset, "PresetFolders"},
                                 {foldersClip, "ClipFolders"}};

bool samePath(const CStr& a, const CStr& b) {
    return addSep(a) == addSep(b);
}

bool hasPath(const CStringList& paths, const CStr& path) {
    for (int i = 0; i < paths.count(); i++)
        if (samePath(paths.get(i), path)) return true;
    return false;
}

void rewrite(const CStr& section, const CStringList& paths) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.eraseSection(section);
    for (int i = 0; i < paths.count(); i++) ini.writeString(section, asStr(i), paths.get(i));
}

/// The first folder of some kinds is where dialogs and readers look.
void tellHost(CQV* host, const CStr& section) {
    const struct {
        const char* section;
        CStr* folder;
    } firsts[] = {{"PresetFolders", &host->presetFolder},
                  {"ClipFolders", &host->clipFolder},
                  {"SampleFolders", &host->sampleFolder}};
    for (const auto& f : firsts) {
        if (section != f.section) continue;
        CStringList paths;
        readIniFolders(host, section, &paths);
        *f.folder = paths.first();
    }
}

} // namespace

CStr modeToSection(int mode) {
    for (const ModeSection& m : modes)
        if (m.mode == mode) return m.section;
    return "";
}

void readIniFolders(CQV* host, const CStr& section, CStringList* paths) {
    CStringList names, all;
    host->getFolders(section, &names, &all);
    for (int i = 0; i < all.count(); i++)
        if (!all.get(i).empty() && !hasPath(*paths, all.get(i))) paths->append(all.get(i));
}

void addIniFolder(CQV* host, const CStr& section, const CStr& path) {
    CStringList paths;
    readIniFolders(host, section, &paths);
    if (!hasPath(paths, path)) paths.append(path);
    rewrite(section, paths);
    tellHost(host, section);
}

void delIniFolder(CQV* host, const CStr& section, const CStr& path) {
    CStringList paths, left;
    readIniFolders(host, section, &paths);
    for (int i = 0; i < paths.count(); i++)
        if (!samePath(paths.get(i), path)) left.append(paths.get(i));
    rewrite(section, left);
    tellHost(host, section);
}
