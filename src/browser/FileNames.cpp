#include "browser/FileNames.h"

#include "audiofiles/CSample.h"
#include "base/Paths.h"
#include "browser/ListedFiles.h"
#include "engine/CQV.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// In one step, and never over a file that is there.
bool moveFile(const CStr& from, const CStr& to) {
    if (renameat2(AT_FDCWD, from.asChar(), AT_FDCWD, to.asChar(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    return !fileExists(to) && rename(from.asChar(), to.asChar()) == 0;
}

} // namespace

CStr renameFile(CQV* host, const CStr& path, const CStr& name) {
    const CStr to = extractFilePath(path) + name;
    if (to == path) return "";
    if (name.empty() || name.pos("/") >= 0 || name.pos("\\") >= 0 || name[0] == '.')
        return "A name has letters, and neither \"/\" nor \"\\\" in it nor \".\" in front";
    if (fileExists(to) || folderExists(to)) return name + " is there already";
    if (!moveFile(path, to)) return "Could not rename " + extractFileName(path);
    moveListed(path, to);
    for (auto* sample : host->samples) {
        if (!(sample->filename == path)) continue;
        sample->filename = to;
        host->setModified();
        host->hostNotices.raise(HostNotice::pool);
    }
    return "";
}
