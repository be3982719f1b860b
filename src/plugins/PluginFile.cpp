#include "plugins/PluginFile.h"

#include "base/Paths.h"

namespace {

constexpr const char *between = "::", *clapEnding = ".clap", *bundleEnding = ".lv2";
constexpr const char* bundleText = ".ttl";

} // namespace

PluginFile::PluginFile(const CStr& text) : file(text) {
    for (const char* ending : {bundleEnding, clapEnding}) {
        const int at = text.pos(CStr(ending) + between);
        if (at < 0) continue;
        const int end = at + CStr(ending).length();
        file = text.sub(0, end);
        inside = text.sub(end + CStr(between).length(), -1);
        return;
    }
}

bool PluginFile::isThere() const {
    return isBundle(file) ? folderExists(file) : fileExists(file);
}

bool PluginFile::isOne(const CStr& text) {
    const CStr file = PluginFile(text).file;
    bool any = false;
    return isBundle(file) || hasFileExt(file, libraries, any);
}

PluginFormat PluginFile::formatOf(const CStr& file) {
    if (isBundle(file)) return PluginFormat::lv2;
    return sameText(extractFileExt(file), clapEnding) ? PluginFormat::clap : PluginFormat::vst2;
}

bool PluginFile::isBundle(const CStr& folder) {
    return sameText(extractFileExt(folder), bundleEnding);
}

CStr PluginFile::ofPicked(const CStr& path) {
    if (!sameText(extractFileExt(path), bundleText)) return path;
    const CStr around = extractFilePath(path);
    return around.sub(0, around.length() - 1);
}

const char* formatName(PluginFormat format) {
    switch (format) {
    case PluginFormat::lv2:
        return "LV2";
    case PluginFormat::clap:
        return "CLAP";
    case PluginFormat::vst2:
        break;
    }
    return "VST 2";
}
