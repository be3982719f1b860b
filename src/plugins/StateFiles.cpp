#include "plugins/StateFiles.h"

#include "base/Numbers.h"
#include "plugins/StateText.h"
#include "plugins/vst3/Vst3Presets.h"

#include <fstream>
#include <iterator>

namespace {

constexpr std::string_view clapTag = "clap";

std::string textOf(const Plugin::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// Of one program without values of parameters.
Plugin::Bytes chunkWith(const char* format, int program, std::string own) {
    StateText text;
    text.program = program;
    text.own = std::move(own);
    const std::string made = text.write(format);
    return {made.begin(), made.end()};
}

// CLAP: the tag, the length of the id with its highest byte first, the id, the state.

std::string clapHead(const CStr& id) {
    const std::string name = id.asChar();
    std::string head(clapTag);
    for (int shift = 24; shift >= 0; shift -= 8) head += char(name.size() >> shift & 255);
    return head + name;
}

// VST 3: the two parts one behind the other, cut where the second begins.

std::string vst3Preset(const CStr& id, const StateText& text) {
    const auto split = size_t(asMinMax(text.program, 0, int(text.own.size())));
    return writeVst3Preset(id, {{text.own.begin(), text.own.begin() + long(split)},
                                {text.own.begin() + long(split), text.own.end()}});
}

} // namespace

const char* stateExtension(PluginFormat format) {
    switch (format) {
    case PluginFormat::vst2:
        return ".fxb";
    case PluginFormat::clap:
        return ".clap-preset";
    case PluginFormat::vst3:
        return ".vstpreset";
    case PluginFormat::lv2:
        break;
    }
    return "";
}

Plugin::Bytes presetOf(PluginFormat format, const CStr& id, const Plugin::Bytes& chunk) {
    const bool clap = format == PluginFormat::clap;
    if (!clap && format != PluginFormat::vst3) return {};
    const auto text = StateText::read(textOf(chunk), clap ? clapStateFormat : vst3StateFormat);
    if (!text || text->own.empty()) return {};
    const std::string made = clap ? clapHead(id) + text->own : vst3Preset(id, *text);
    return {made.begin(), made.end()};
}

std::optional<Plugin::Bytes> chunkOf(PluginFormat format, const CStr& id, const CStr& path) {
    if (format == PluginFormat::clap) {
        std::ifstream file(path.asChar(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}}, head = clapHead(id);
        if (!text.starts_with(head)) return {};
        return chunkWith(clapStateFormat, 0, text.substr(head.size()));
    }
    if (format != PluginFormat::vst3) return {};
    const auto state = readVst3Preset(path, id);
    if (!state) return {};
    std::string own(state->played.begin(), state->played.end());
    own.append(state->known.begin(), state->known.end());
    return chunkWith(vst3StateFormat, int(state->played.size()), std::move(own));
}
