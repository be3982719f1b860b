#include "plugins/scan/PluginFacts.h"

#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "plugins/PluginFile.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace {

/// Without what would end a field.
std::string field(const CStr& text) {
    std::string made = text.asChar();
    std::ranges::replace_if(
        made, [](unsigned char c) { return c < ' '; }, ' ');
    return made;
}

} // namespace

CStr PluginFacts::makerAlone(const CStr& told) {
    for (const char* format : {" VST", " VST2", " VST3", " CLAP", " LV2"}) {
        const int length = CStr(format).length(), rest = told.length() - length;
        if (rest > 0 && sameText(told.sub(rest, length), format)) return told.sub(0, rest);
    }
    return told;
}

CStr PluginFacts::line() const {
    std::ostringstream out;
    out << field(name) << '\t' << field(vendor) << '\t' << instrument << '\t' << editor << '\t'
        << inputs << '\t' << outputs << '\t' << params << '\t' << programs << '\t' << field(inside);
    return out.str().c_str();
}

std::optional<PluginFacts> PluginFacts::fromLine(const CStr& line) {
    std::istringstream in(line.asChar());
    std::string name, vendor;
    PluginFacts facts;
    if (!std::getline(in, name, '\t') || !std::getline(in, vendor, '\t')) return std::nullopt;
    in >> facts.instrument >> facts.editor >> facts.inputs >> facts.outputs >> facts.params >>
        facts.programs;
    if (!in) return std::nullopt;
    in.get();
    std::string inside;
    std::getline(in, inside);
    facts.inside = inside.c_str();
    facts.name = name.c_str();
    facts.vendor = vendor.c_str();
    return facts;
}

std::optional<FileMark> FileMark::of(const CStr& path) {
    const CStr file = PluginFile(path).file;
    struct stat about {};
    if (stat(file.asChar(), &about) != 0) return std::nullopt;
    FileMark mark{about.st_size, about.st_mtim.tv_sec, static_cast<long long>(about.st_dev),
                  static_cast<long long>(about.st_ino)};
    CStringList names;
    const CStr folder = PluginFile(path).folderOfLibrary();
    if (S_ISDIR(about.st_mode)) readDir(folder, CStr(), nullptr, &names, false);
    for (int i = 0; i < names.count(); i++) {
        if (stat((folder + names.get(i)).asChar(), &about) != 0) continue;
        mark.size += about.st_size;
        mark.time = std::max<long long>(mark.time, about.st_mtim.tv_sec);
    }
    return mark;
}
