#include "plugins/scan/PluginFacts.h"

#include "base/Numbers.h"

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

CStr PluginFacts::line() const {
    std::ostringstream out;
    out << field(name) << '\t' << field(vendor) << '\t' << instrument << '\t' << editor << '\t'
        << inputs << '\t' << outputs << '\t' << params << '\t' << programs;
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
    facts.name = name.c_str();
    facts.vendor = vendor.c_str();
    return facts;
}

std::optional<FileMark> FileMark::of(const CStr& path) {
    struct stat about {};
    if (stat(path.asChar(), &about) != 0) return std::nullopt;
    return FileMark{about.st_size, about.st_mtim.tv_sec, static_cast<long long>(about.st_dev),
                    static_cast<long long>(about.st_ino)};
}
