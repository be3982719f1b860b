#include "plugins/scan/PluginList.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/SafeFile.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace {

/// Another form of the file is read as none.
constexpr const char* firstLine = "plug-ins 1";

std::string entryLine(const PluginList::Entry& e) {
    std::ostringstream out;
    out << e.mark.size << '\t' << e.mark.time << '\t' << e.mark.device << '\t' << e.mark.inode
        << '\t' << e.path.asChar() << '\t' << e.why.asChar() << '\t' << e.facts.line().asChar();
    return out.str();
}

bool readEntry(const CStr& line, PluginList::Entry& e) {
    std::istringstream in(line.asChar());
    std::string path, why, rest;
    in >> e.mark.size >> e.mark.time >> e.mark.device >> e.mark.inode;
    in.get();
    if (!std::getline(in, path, '\t') || !std::getline(in, why, '\t') || !std::getline(in, rest))
        return false;
    const auto facts = PluginFacts::fromLine(rest.c_str());
    if (!facts) return false;
    e.path = path.c_str();
    e.why = why.c_str();
    e.facts = *facts;
    return true;
}

} // namespace

PluginList::PluginList(const CStr& cacheFile) : file(cacheFile) {
    CFileStream stream(file, 0);
    CStringList lines;
    if (stream.isOpen()) streamToStrs(&stream, &lines);
    if (lines.first() != firstLine) return;
    for (int i = 1; i < lines.count(); i++) {
        Entry entry;
        if (readEntry(lines.get(i), entry)) entries.push_back(entry);
    }
}

void PluginList::save() const {
    std::string text = std::string(firstLine) + "\n";
    for (const Entry& e : entries) text += entryLine(e) + "\n";
    SafeFile place(file);
    if (CFileStream* stream = place.stream()) {
        stream->write(text.data(), int(text.size()));
        place.commit();
    }
}

std::vector<const PluginList::Entry*> PluginList::usable() const {
    std::vector<const Entry*> good;
    for (const Entry& e : entries)
        if (e.good()) good.push_back(&e);
    std::ranges::stable_sort(good, [](const Entry* a, const Entry* b) {
        return compareText(a->facts.name, b->facts.name) < 0;
    });
    return good;
}

const PluginList::Entry* PluginList::find(const CStr& path) const {
    const auto at = std::ranges::find(entries, path, &Entry::path);
    return at == entries.end() ? nullptr : &*at;
}

std::vector<CStr> PluginList::compare(const std::vector<CStr>& files) {
    const size_t before = entries.size();
    std::erase_if(entries, [&files](const Entry& e) {
        return std::ranges::find(files, e.path) == files.end();
    });
    if (entries.size() != before) save();
    std::vector<CStr> changed;
    for (const CStr& path : files) {
        const Entry* known = find(path);
        const auto mark = FileMark::of(path);
        if (mark && (!known || !(known->mark == *mark))) changed.push_back(path);
    }
    return changed;
}

void PluginList::put(Entry entry) {
    const auto at = std::ranges::find(entries, entry.path, &Entry::path);
    if (at == entries.end())
        entries.push_back(std::move(entry));
    else
        *at = std::move(entry);
    save();
}
