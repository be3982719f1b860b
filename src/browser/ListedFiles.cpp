#include "browser/ListedFiles.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"

#include <sstream>

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

// Tags: words, then ":", then the path.

constexpr const char* tagSection = "BrowserTags";

FileTags readAllTags() {
    CStringList lines;
    CIniFile(inifile).readSection(tagSection, &lines);
    FileTags tags;
    for (int i = 0; i < lines.count(); i++) {
        const std::string line = strToValue(lines.get(i)).asChar();
        const size_t end = line.find(':');
        if (end != std::string::npos) tags[line.substr(end + 1)] = line.substr(0, end);
    }
    return tags;
}

void write(const FileTags& tags) {
    const CIniBatch batch(inifile);
    CIniFile ini(inifile);
    ini.eraseSection(tagSection);
    int i = 0;
    for (const auto& [path, words] : tags)
        ini.writeString(tagSection, asStr(i++), (words + ":" + path).c_str());
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

FileTags readTags() {
    FileTags tags = readAllTags();
    std::erase_if(tags, [](const auto& t) { return !fileExists(t.first.c_str()); });
    return tags;
}

void setTags(const CStr& path, const CStr& words) {
    std::string text = words.lowerCase().asChar(), plain;
    for (char& c : text)
        if (c == ',' || c == ';' || c == ':') c = ' ';
    std::istringstream in(text);
    for (std::string word; in >> word;) plain += (plain.empty() ? "" : " ") + word;
    FileTags tags = readAllTags();
    if (plain.empty())
        tags.erase(path.asChar());
    else
        tags[path.asChar()] = plain;
    write(tags);
}

void moveListed(const CStr& from, const CStr& to) {
    for (const FileShelf shelf : {FileShelf::favourites, FileShelf::recent}) {
        CStringList all;
        readAll(shelf, &all);
        const int at = all.indexOf(from);
        if (at < 0) continue;
        all.del(at);
        all.insert(at, to);
        write(shelf, all);
    }
    FileTags tags = readAllTags();
    if (auto known = tags.extract(from.asChar())) {
        known.key() = to.asChar();
        tags.insert(std::move(known));
        write(tags);
    }
}
