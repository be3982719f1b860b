#include "plugins/remote/PluginProcesses.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "plugins/PluginFile.h"
#include "plugins/PluginLoad.h"
#include "plugins/remote/RemotePlugin.h"

#include <chrono>

namespace {

constexpr const char *section = "plugins", *groupsKey = "groups";
constexpr int helperSpins = 1000; ///< some 40 microseconds

} // namespace

CStr pluginHelperProgram() {
    return extractFilePath(asAppname()) + "sondrava-plugins";
}

PluginProcesses::PluginProcesses(const CStr& helperProgram, const CStr& trustFile)
    : trust(trustFile), program(helperProgram) {
}

std::unique_ptr<Plugin> PluginProcesses::load(const CStr& path, PluginHost& host, CStr& why) {
    if (trust.trusted(path)) return loadPlugin(path, host, why);
    return RemotePlugin::load(shared_from_this(), path, host, why);
}

PluginGroups PluginProcesses::groups() const {
    return PluginGroups(std::clamp(iniReadInt(section, groupsKey, 0), 0, 2));
}

void PluginProcesses::setGroups(PluginGroups wanted) {
    CIniFile(inifile).writeInteger(section, groupsKey, int(wanted));
}

/// Empty: of nobody else.
std::string PluginProcesses::groupOf(const CStr& path) const {
    switch (groups()) {
    case PluginGroups::format:
        return formatName(PluginFile(path).format());
    case PluginGroups::maker: {
        const CStr maker = makerOf ? makerOf(path) : CStr();
        return maker.empty() ? std::string() : std::string("by ") + maker.asChar();
    }
    case PluginGroups::alone:
        break;
    }
    return {};
}

std::shared_ptr<PluginHelper> PluginProcesses::helperFor(const CStr& path) {
    std::string group = groupOf(path);
    if (group.empty()) group = std::to_string(++lonely);
    std::erase_if(helpers, [](const auto& known) { return known.second.expired(); });
    auto helper = helpers[group].lock();
    if (!helper || helper->gone()) {
        helper = PluginHelper::start(program);
        helpers[group] = helper;
    }
    const bool roomy = int(helpers.size()) < int(std::thread::hardware_concurrency());
    for (const auto& [name, known] : helpers)
        if (const auto one = known.lock()) one->room().spins = roomy ? helperSpins : 0;
    return helper;
}

int64_t PluginProcesses::endOf(unsigned block, double seconds) {
    if (clockBlock.loadAcquire() != block) {
        clockEnd = steadyNs() + int64_t(seconds * double(share) * 1e9);
        clockBlock.storeRelease(block);
    }
    return clockEnd;
}
