#include "plugins/scan/PluginList.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/SafeFile.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace {

/// Another form of the file is read as none.
constexpr const char* firstLine = "plug-ins 2";

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

/// One of both may not tell it.
bool isMaker(const CStr& one, const CStr& other) {
    return sameText(one, other) || one.empty() || other.empty();
}

/// Whether it is one more format of an effect.
bool isSame(const PluginList::Effect& effect, const PluginList::Entry& e) {
    const PluginFacts &known = effect.front()->facts, &facts = e.facts;
    const auto hasFormat = [&e](const PluginList::Entry* one) {
        return one->format() == e.format();
    };
    return isMaker(known.vendor, facts.vendor) && sameText(known.name, facts.name) &&
           known.instrument == facts.instrument && known.inputs == facts.inputs &&
           known.outputs == facts.outputs && std::ranges::none_of(effect, hasFormat);
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

std::vector<PluginList::Effect> PluginList::effects() const {
    std::vector<Effect> found;
    for (const Entry* e : usable()) {
        // Neighbours by name: the same one is among the last.
        const auto same = std::find_if(found.rbegin(), found.rend(), [e](const Effect& known) {
            return !sameText(known.front()->facts.name, e->facts.name) || isSame(known, *e);
        });
        if (same == found.rend() || !isSame(*same, *e))
            found.push_back({e});
        else
            same->push_back(e);
    }
    for (Effect& effect : found)
        std::ranges::stable_sort(effect, {}, [](const Entry* e) { return e->format(); });
    return found;
}

std::vector<const PluginList::Entry*> PluginList::formatsOf(const CStr& name,
                                                            const CStr& vendor) const {
    std::vector<const Entry*> found;
    for (const Entry* e : usable())
        if (sameText(e->facts.name, name) && isMaker(e->facts.vendor, vendor)) found.push_back(e);
    std::ranges::stable_sort(found, {}, &Entry::format);
    return found;
}

const PluginList::Entry* PluginList::find(const CStr& path) const {
    const auto at = std::ranges::find(entries, path, &Entry::path);
    return at == entries.end() ? nullptr : &*at;
}

std::vector<CStr> PluginList::compare(const std::vector<CStr>& files) {
    std::set<std::string> there;
    for (const CStr& one : files) there.insert(one.asChar());
    const size_t gone =
        std::erase_if(entries, [&](const Entry& e) { return !there.count(e.file().asChar()); });
    if (gone > 0) save();
    std::map<std::string, FileMark> known;
    for (const Entry& e : entries) known[e.file().asChar()] = e.mark;
    std::vector<CStr> changed;
    for (const CStr& path : files) {
        const auto at = known.find(path.asChar());
        const auto mark = FileMark::of(path);
        if (mark && (at == known.end() || !(at->second == *mark))) changed.push_back(path);
    }
    return changed;
}

void PluginList::put(const CStr& holder, std::vector<Entry> found) {
    std::erase_if(entries, [&holder](const Entry& e) { return e.file() == holder; });
    std::ranges::move(found, std::back_inserter(entries));
    save();
}
