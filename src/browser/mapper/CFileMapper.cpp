#include "browser/mapper/CFileMapper.h"

#include "base/CFileManager.h"
#include "base/CIniFile.h"
#include "base/CStream.h"
#include "base/Paths.h"
#include "browser/mapper/CFileMapperWin.h"
#include "browser/mapper/CXML.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr const char *folderName = "filemaps", *section = "file mapper";

CStr displayName(const CStr& path) {
    return changeFileExt(extractFileName(path), "");
}

} // namespace

CStr CFileMapper::getRootFolder() {
    return addSep(extractFilePath(inifile) + folderName);
}

bool CFileMapper::canStore(const CStr& path) {
    const std::string_view text = path.asChar();
    return std::ranges::all_of(
               text, [](char c) { return (c < 0 || c >= ' ') && c != '<' && c != '>'; }) &&
           text.find("&apos;") == std::string_view::npos;
}

bool CFileMapper::canNameMap(const CStr& name) {
    return !name.empty() && name[0] != '.' && name.pos("/") < 0 && name.pos("\\") < 0 &&
           canStore(name);
}

CFileMapper::CFileMapper() {
    CStringList names;
    readDir(getRootFolder(), "", nullptr, &names, true);
    const CStr chosen = iniReadString(section, "map", "");
    for (int i = 0; i < names.count(); i++) {
        addMap(getRootFolder() + names.get(i));
        if (displayName(names.get(i)) == chosen) setFilemap(i);
    }
}

CStr CFileMapper::getFilemap(int i) const {
    return displayName(maps.get(i == -1 ? current : i));
}

void CFileMapper::setFilemap(int i) {
    if (i < 0 || i >= maps.count()) return;
    current = i;
    openMap(maps.get(i));
}

void CFileMapper::openMap(const CStr& path) {
    if (!fileExists(path)) return;
    mapFile = path;
    clear();
    CFileStream stream(path, 0);
    CXML xml;
    xml.decodeStream(&stream);
    const CXMLNode* all = xml.getNode("projectList");
    if (!all) return;
    for (const auto* node : all->children)
        if (node->id == "project") addProject(node->value);
}

void CFileMapper::saveMap() {
    if (!fileExists(mapFile)) return;
    CXML xml;
    CXMLNode* all = xml.add("projectList", "");
    for (int i = 0; i < count(); i++) all->add("project", get(i));
    CStringList text;
    xml.asText(&text);
    text.save(mapFile);
}

void CFileMapper::deleteMap(int i) {
    if (i < 0 || i >= maps.count()) return;
    CFileManager().deleteFile(maps.get(i));
    maps.del(i);
    if (i > 0 && i >= maps.count()) current--;
    if (maps.count() > 0) return;
    current = -1;
    mapFile = "";
    clear();
}

bool CFileMapper::newMap(const CStr& name) {
    const CStr path = getRootFolder() + name + fileMapExt;
    for (int i = 0; i < maps.count(); i++)
        if (maps.get(i) == path) {
            setFilemap(i);
            return true;
        }
    if (!fileExists(path)) CIniFile(path).writeString("map", "test", "test");
    if (!fileExists(path)) return false;
    addMap(path);
    setFilemap(maps.count() - 1);
    return true;
}

void CFileMapper::moveProject(int i, int dir) {
    const int to = i + dir;
    if ((dir != -1 && dir != 1) || i < 0 || i >= count() || to < 0 || to >= count()) return;
    exchange(i, to);
}

void CFileMapper::setProgram(int i, bool play) {
    if (i < 0 || i >= count()) return;
    program = i;
    if (play) setPlayNext(get(i));
}

void CFileMapper::setPlayNext(const CStr& path) {
    if (fileExists(path)) playNext = path;
}

bool CFileMapper::getEnabled() const {
    return win && win->visible;
}
