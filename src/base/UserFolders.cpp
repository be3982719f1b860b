#include "base/UserFolders.h"

#include "base/CStringList.h"
#include "base/Paths.h"

#include <cstdlib>
#include <string>

namespace {

CStr listPath() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const CStr folder =
        config && *config == '/' ? CStr(config) : addSep(getHomeFolder()) + ".config";
    return addSep(folder) + "user-dirs.dirs";
}

/// The value of a line such as XDG_MUSIC_DIR="$HOME/Music"; false for any other line.
bool readLine(const std::string& line, const std::string& key, std::string& path) {
    const std::string start = "XDG_" + key + "_DIR=\"", home = "$HOME";
    if (line.rfind(start, 0) != 0) return false;
    path = line.substr(start.size(), line.find('"', start.size()) - start.size());
    if (path.rfind(home, 0) == 0) path.replace(0, home.size(), getHomeFolder().asChar());
    return !path.empty() && path[0] == '/';
}

} // namespace

CStr userFolder(const char* key, const char* name) {
    const CStr home = addSep(getHomeFolder());
    std::string path = (home + name).asChar();
    CStringList lines;
    lines.open(listPath());
    for (int i = 0; i < lines.count(); i++) readLine(lines.get(i).asChar(), key, path);
    const CStr folder = addSep(CStr(path.c_str()));
    return folder != home && folderExists(folder) ? folder : CStr();
}
