#include "plugins/PluginTrust.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/SafeFile.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <sstream>

namespace {

constexpr int64_t longestStep = 60, savesEvery = 600; // seconds

int64_t steadySeconds() {
    using namespace std::chrono;
    return duration_cast<seconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

PluginTrust::PluginTrust(const CStr& place) : clock(steadySeconds), file(place) {
    CFileStream stream(file, 0);
    CStringList lines;
    if (stream.isOpen()) streamToStrs(&stream, &lines);
    for (int i = 0; i < lines.count(); i++) {
        std::istringstream in(lines.get(i).asChar());
        Entry e;
        std::string path;
        in >> e.word >> e.seconds >> e.mark.size >> e.mark.time >> e.mark.device >> e.mark.inode;
        in.get();
        if (std::isdigit(in.peek())) { // older files have no such number
            in >> e.crashes;
            in.get();
        }
        if (std::getline(in, path)) entries[path] = e;
    }
    savedAt = clock();
}

PluginTrust::~PluginTrust() {
    if (!entries.empty()) save();
}

void PluginTrust::save() {
    savedAt = clock();
    std::ostringstream out;
    for (const auto& [path, e] : entries)
        out << e.word << '\t' << e.seconds << '\t' << e.mark.size << '\t' << e.mark.time << '\t'
            << e.mark.device << '\t' << e.mark.inode << '\t' << e.crashes << '\t' << path << '\n';
    const std::string text = out.str();
    SafeFile place(file);
    if (CFileStream* stream = place.stream()) {
        stream->write(text.data(), int(text.size()));
        place.commit();
    }
}

bool PluginTrust::trusted(const CStr& path) const {
    const auto at = entries.find(path.asChar());
    if (at == entries.end() || at->second.word == no) return false;
    const auto mark = FileMark::of(path);
    return mark && *mark == at->second.mark &&
           (at->second.word == yes || at->second.seconds >= enoughSeconds);
}

PluginTrust::Entry& PluginTrust::entry(const CStr& path) {
    Entry& e = entries[path.asChar()];
    const FileMark now = FileMark::of(path).value_or(FileMark());
    if (!(e.mark == now)) e = {now, e.word == no ? no : none, 0, -1, 0};
    return e;
}

void PluginTrust::set(const CStr& path, bool trust) {
    entry(path).word = trust ? yes : no;
    save();
}

void PluginTrust::works(const CStr& path) {
    const int64_t now = clock();
    Entry& e = entry(path);
    if (e.seen >= 0) e.seconds += std::clamp<int64_t>(now - e.seen, 0, longestStep);
    e.seen = now;
    if (now - savedAt >= savesEvery) save();
}

void PluginTrust::failed(const CStr& path) {
    Entry& e = entry(path);
    e.seconds = 0;
    e.crashes++;
    save();
}

int PluginTrust::crashes(const CStr& path) const {
    const auto at = entries.find(path.asChar());
    const auto mark = FileMark::of(path);
    return at != entries.end() && mark && *mark == at->second.mark ? at->second.crashes : 0;
}
