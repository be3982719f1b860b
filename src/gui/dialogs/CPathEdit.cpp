#include "gui/dialogs/CPathEdit.h"

#include "base/Paths.h"
#include "gui/Keys.h"

#include <filesystem>

namespace {

/// The first name that begins with `start`, preferably with the same capitals; empty without one.
CStr beginning(const CStringList& names, const CStr& start) {
    const int length = start.length();
    CStr found;
    for (const CStringItem* name : names.list) {
        const CStr head = name->text.sub(0, length);
        if (head == start) return name->text;
        if (found.empty() && sameText(head, start)) found = name->text;
    }
    return found;
}

} // namespace

CStr CPathEdit::fullPath(const CStr& typed, const CStr& base) {
    CStr path = typed;
    if (typed[0] == '~' && (typed[1] == 0 || typed[1] == folderSeparator))
        path = getHomeFolder() + typed.sub(1, -1);
    else if (typed[0] != folderSeparator)
        path = addSep(base) + typed;
    return std::filesystem::path(path.asChar()).lexically_normal().c_str();
}

void CPathEdit::list(const CStr& folder) {
    if (folder == listed) return;
    listed = folder;
    folders.clear();
    files.clear();
    readDir(folder, filter, &folders, &files, true);
}

/// Adds the rest of the last name, selected; false when there is none to add.
bool CPathEdit::complete(bool withFiles) {
    const CStr start = extractFileName(text), around = text.sub(0, text.length() - start.length());
    if (start.empty() || cursor != text.length() - 1) return false;
    list(fullPath(around, base));
    CStr name = beginning(folders, start);
    if (!name.empty())
        name += CStr(folderSeparator);
    else if (withFiles)
        name = beginning(files, start);
    if (name.length() <= start.length()) return false;
    const int typed = cursor;
    text = around + name;
    setCursor(typed, false);
    setCursor(text.length() - 1, true);
    redraw();
    return true;
}

void CPathEdit::setFocus(bool on) {
    if (on) listed = CStr(); // what has changed meanwhile is read anew
    CEdit::setFocus(on);
}

bool CPathEdit::keyDown(int key, int mods) {
    const bool added = selLength > 0 && anchor >= 0 && cursor == text.length() - 1;
    if (key == keyTab && !mods) {
        if (!added && !complete(completing != completeFolders)) return false;
        setCursor(text.length() - 1, false);
        redraw();
        return true;
    }
    if (!CEdit::keyDown(key, mods)) return false;
    const bool typed = key > 0 && !(mods & (modControl | modAlt));
    if (typed && completing != completeOnTab && hasKeyFocus()) complete(completing == completeAll);
    return true;
}
