#include "plugins/PluginIdentity.h"

#include "base/BlockView.h"
#include "plugins/Plugin.h"
#include "plugins/PluginComp.h"
#include "plugins/scan/PluginFacts.h"

#include <cmath>

namespace {

constexpr size_t mostParams = 4096;

} // namespace

PluginIdentity PluginIdentity::of(PluginComp& comp, Plugin& plugin) {
    PluginIdentity made{plugin.product(), PluginFacts::makerAlone(plugin.vendor()),
                        readParams(comp)};
    if (made.params.size() > mostParams) made.params.resize(mostParams);
    return made;
}

void PluginIdentity::write(CStream* stream) const {
    stream->writeStr(name);
    stream->writeStr(vendor);
    stream->writeInt(int(params.size()));
    for (const ParamReading& one : params) {
        stream->writeStr(one.name);
        stream->writeStr(one.text);
        stream->writeFloat(one.share);
    }
}

PluginIdentity PluginIdentity::read(BlockView& body) {
    constexpr int64_t leastBytes = 3 * sizeof(int);
    PluginIdentity found;
    found.name = body.readStr();
    found.vendor = body.readStr();
    const int count = body.readInt();
    if (count < 0 || count > body.left() / leastBytes) return {};
    for (int i = 0; i < count && body.left() > 0; i++) {
        ParamReading one;
        one.name = body.readStr();
        one.text = body.readStr();
        one.share = body.readFloat();
        if (std::isfinite(one.share)) found.params.push_back(std::move(one));
    }
    return found;
}
