#include "browser/ListedFiles.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"

namespace {

const char* sectionOf(FileShelf shelf) {
    return shelf == FileShelf::favourites ? "BrowserFavourites" : "BrowserRecent";
}

void readAll(FileShelf shelf, CStringList* paths) {
    CStringList lines;
    CIniFile(inifile).readSection(sectionOf(shelf), &lines);
    for (int i = 0; i < lines.count(); i++) {
        const CStr path = strToValue(lines.get(i));
        if (!path.empty() && paths->indexOf(path) < 0) paths->append(path);
    }
}

void write(FileShelf shelf, const CStringList& paths) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.eraseSection(sectionOf(shelf));
    for (int i = 0; i < paths.count(); i++)
        ini.writeString(sectionOf(shelf), asStr(i), paths.get(i));
}

} // namespace

void readShelf(FileShelf shelf, CStringList* paths) {
    CStringList all;
    readAll(shelf, &all);
    for (int i = 0; i < all.count(); i++)
        if (fileExists(all.get(i)) || folderExists(all.get(i))) paths->append(all.get(i));
}

bool onShelf(FileShelf shelf, const CStr& path) {
    CStringList all;
    readAll(shelf, &all);
    return all.indexOf(path) >= 0;
}

void putOnShelf(FileShelf shelf, const CStr& path) {
    CStringList all;
    readAll(shelf, &all);
    const int at = all.indexOf(path);
    if (at == 0 && shelf == FileShelf::recent) return;
    all.del(at);
    if (shelf == FileShelf::favourites)
        all.append(path);
    else
        all.insert(0, path);
    while (shelf == FileShelf::recent && all.count() > mostRecentFiles) all.del(all.count() - 1);
    write(shelf, all);
}

void takeOffShelf(FileShelf shelf, const CStr& path) {
    CStringList all;
    readAll(shelf, &all);
    all.del(all.indexOf(path));
    write(shelf, all);
}
