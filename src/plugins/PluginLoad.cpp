#include "plugins/PluginLoad.h"

#include "base/Paths.h"
#include "plugins/PluginFile.h"
#include "plugins/clap/ClapPlugin.h"
#include "plugins/lv2/Lv2Plugin.h"
#include "plugins/vst2/Vst2Plugin.h"
#include "plugins/vst3/Vst3Plugin.h"

namespace {

PluginFacts factsOf(Plugin& plugin, const PluginFile& where) {
    PluginFacts facts;
    facts.name = plugin.product();
    if (facts.name.empty()) facts.name = changeFileExt(extractFileName(where.file), "");
    facts.vendor = PluginFacts::makerAlone(plugin.vendor());
    facts.inside = where.inside;
    facts.instrument = plugin.isInstrument();
    facts.editor = plugin.hasEditor();
    facts.inputs = plugin.inputs();
    facts.outputs = plugin.outputs();
    facts.params = plugin.numParams();
    facts.programs = plugin.numPrograms();
    return facts;
}

} // namespace

std::unique_ptr<Plugin> loadPlugin(const CStr& text, PluginHost& host, CStr& why) {
    const PluginFile wanted(text);
    switch (wanted.format()) {
    case PluginFormat::lv2:
        return Lv2Plugin::load(wanted, host, why);
    case PluginFormat::clap:
        return ClapPlugin::load(wanted, host, why);
    case PluginFormat::vst3:
        return Vst3Plugin::load(wanted, host, why);
    case PluginFormat::vst2:
        break;
    }
    return Vst2Plugin::load(wanted.file, host, why);
}

bool lookInto(const CStr& file, PluginHost& host,
              const std::function<void(const PluginFacts&)>& found, CStr& why) {
    const PluginFormat format = PluginFile::formatOf(file);
    if (format == PluginFormat::lv2) return lookIntoBundle(file, found, why);
    std::vector<CStr> names{CStr()};
    if (format == PluginFormat::clap) names = ClapPlugin::inside(file, why);
    if (format == PluginFormat::vst3) names = Vst3Plugin::inside(file, why);
    bool any = false;
    for (const CStr& name : names) {
        const PluginFile one(file, name);
        const auto plugin = loadPlugin(one.text(), host, why);
        if (plugin) found(factsOf(*plugin, one));
        any = any || plugin;
    }
    return any;
}
