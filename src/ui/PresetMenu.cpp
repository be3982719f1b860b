#include "ui/PresetMenu.h"

#include "base/CStringList.h"
#include "base/Paths.h"
#include "gui/controls/CPopup.h"
#include "ui/IniFolders.h"
#include "ui/MenuDeed.h"

#include <vector>

namespace {

using Chosen = std::function<void(const CStr&)>;

constexpr int mostDeep = 4, mostInAll = 1000; ///< against folders that are no presets'

/// Folders with what of the kind is in them, at any depth.
struct Shelf {
    CStr name;
    std::vector<CStr> files; ///< paths
    std::vector<Shelf> folders;
};

Shelf read(const CStr& folder, const CStr& name, const CStr& endings, int deep, int& room) {
    Shelf shelf{name, {}, {}};
    CStringList folders, files;
    readDir(folder, endings, deep < mostDeep ? &folders : nullptr, &files, true);
    for (int i = 0; i < files.count() && room > 0; i++, room--)
        shelf.files.push_back(addSep(folder) + files.get(i));
    for (int i = 0; i < folders.count() && room > 0; i++, room--) {
        const CStr inside = folders.get(i);
        Shelf sub = read(addSep(folder) + inside, inside, endings, deep + 1, room);
        if (!sub.files.empty() || !sub.folders.empty()) shelf.folders.push_back(std::move(sub));
    }
    return shelf;
}

void add(CPopup* popup, const Shelf& shelf, const Chosen& chosen) {
    for (const Shelf& folder : shelf.folders) add(popup->addSub(folder.name), folder, chosen);
    for (const CStr& path : shelf.files)
        addDeed(popup, changeFileExt(extractFileName(path), ""), [path, chosen] { chosen(path); });
}

/// A folder that holds nothing but one folder is passed through.
const Shelf& opened(const Shelf& shelf) {
    const bool through = shelf.files.empty() && shelf.folders.size() == 1;
    return through ? opened(shelf.folders.front()) : shelf;
}

/// Each folder once: that beside the program, which may be the user's first, then the user's.
std::vector<Shelf> shelves(CQV* host, const CStr& endings) {
    CStringList paths;
    const CStr own = presetSetFolder();
    if (folderExists(own)) paths.append(own);
    readIniFolders(host, modeToSection(foldersPreset), &paths);
    std::vector<Shelf> all;
    int room = mostInAll;
    for (int i = 0; i < paths.count(); i++) {
        Shelf shelf = read(paths.get(i), extractFileName(paths.get(i)), endings, 0, room);
        if (!shelf.files.empty() || !shelf.folders.empty()) all.push_back(std::move(shelf));
    }
    return all;
}

} // namespace

CStr presetSetFolder() {
    return extractFilePath(asAppname()) + "presets";
}

void addPresetMenu(CPopup* popup, const CStr& title, CQV* host, const CStr& endings,
                   const Chosen& chosen) {
    const std::vector<Shelf> all = shelves(host, endings);
    CPopup* sub = all.empty() ? nullptr : popup->addSub(title);
    for (size_t i = 0; i < all.size(); i++) {
        if (i > 0) sub->addSeparator();
        add(sub, opened(all[i]), chosen);
    }
}
