#include "shell/RecentFiles.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"

namespace {

constexpr const char* section = "recent";

} // namespace

void RecentFiles::addRecent(const CStr& path) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    paths.clear();
    const bool adds = !path.empty() && fileExists(path);
    if (adds) paths.append(path);
    for (int i = 0; i < most; i++) {
        const CStr entry = ini.readString(section, asStr(i), "");
        if (!entry.empty() && !(adds && sameText(entry, path)) && fileExists(entry))
            paths.append(entry);
    }
    while (paths.count() > most) paths.del(most);
    if (path.empty()) return;
    if (adds) ini.writeString("last", "project", path);
    ini.eraseSection(section);
    for (int i = 0; i < paths.count(); i++) ini.writeString(section, asStr(i), paths.get(i));
}

CStr RecentFiles::lastProject() {
    return iniReadString("last", "project", "");
}
