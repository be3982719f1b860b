#include "plugins/PluginFile.h"

#include "base/Paths.h"

namespace {

constexpr const char *between = "::", *clapEnding = ".clap", *lv2Ending = ".lv2";
constexpr const char *vst3Ending = ".vst3", *bundleText = ".ttl";

bool endsIn(const CStr& path, const char* ending) {
    return sameText(extractFileExt(path), ending);
}

} // namespace

PluginFile::PluginFile(const CStr& text) : file(text) {
    for (const char* ending : {lv2Ending, vst3Ending, clapEnding}) {
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
    if (endsIn(file, lv2Ending)) return PluginFormat::lv2;
    if (endsIn(file, vst3Ending)) return PluginFormat::vst3;
    return endsIn(file, clapEnding) ? PluginFormat::clap : PluginFormat::vst2;
}

bool PluginFile::isBundle(const CStr& folder) {
    return endsIn(folder, lv2Ending) || endsIn(folder, vst3Ending);
}

CStr PluginFile::ofPicked(const CStr& path) {
    const int at = path.pos(CStr(vst3Ending) + "/");
    if (at >= 0) return path.sub(0, at + CStr(vst3Ending).length());
    if (!endsIn(path, bundleText)) return path;
    const CStr around = extractFilePath(path);
    return around.sub(0, around.length() - 1);
}

CStr PluginFile::folderOfLibrary() const {
    if (format() == PluginFormat::vst3) return file + "/Contents/x86_64-linux/";
    return format() == PluginFormat::lv2 ? addSep(file) : extractFilePath(file);
}

const char* formatName(PluginFormat format) {
    switch (format) {
    case PluginFormat::lv2:
        return "LV2";
    case PluginFormat::clap:
        return "CLAP";
    case PluginFormat::vst3:
        return "VST 3";
    case PluginFormat::vst2:
        break;
    }
    return "VST 2";
}
