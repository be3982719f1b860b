#include "plugins/lv2/Lv2World.h"

#include "base/Paths.h"

std::shared_ptr<Lv2World> Lv2World::ofProcess() {
    static std::weak_ptr<Lv2World> known;
    std::shared_ptr<Lv2World> world = known.lock();
    if (!world) known = world = std::make_shared<Lv2World>(true);
    return world;
}

Lv2World::Lv2World(bool whole) : world(lilv_world_new()) {
    if (whole) lilv_world_load_all(get());
}

Lilv<LilvNode> Lv2World::node(const char* uri) const {
    return Lilv<LilvNode>(lilv_new_uri(get(), uri));
}

std::vector<const LilvPlugin*> Lv2World::known(const LilvNode* bundle) const {
    std::vector<const LilvPlugin*> found;
    const LilvPlugins* plugins = lilv_world_get_all_plugins(get());
    LILV_FOREACH(plugins, i, plugins) {
        const LilvPlugin* plugin = lilv_plugins_get(plugins, i);
        if (lilv_node_equals(lilv_plugin_get_bundle_uri(plugin), bundle)) found.push_back(plugin);
    }
    return found;
}

std::vector<const LilvPlugin*> Lv2World::inside(const CStr& bundle) {
    const CStr folder = addSep(absolutePath(bundle));
    const Lilv<LilvNode> uri(lilv_new_file_uri(get(), nullptr, folder.asChar()));
    if (!uri) return {};
    auto found = known(uri.get());
    if (!found.empty() || !loaded.insert(lilv_node_as_uri(uri.get())).second) return found;
    lilv_world_load_bundle(get(), uri.get());
    return known(uri.get());
}

const LilvPlugin* Lv2World::find(const CStr& bundle, const CStr& uri) {
    const auto there = inside(bundle);
    if (uri.empty()) return there.empty() ? nullptr : there.front();
    return lilv_plugins_get_by_uri(lilv_world_get_all_plugins(get()), node(uri.asChar()).get());
}

bool Lv2World::says(const LilvNode* subject, const char* predicate, const char* object) const {
    return lilv_world_ask(get(), subject, node(predicate).get(), node(object).get());
}

std::vector<std::string> Lv2World::all(const LilvNode* subject, const char* predicate) const {
    const LilvNodeList nodes(lilv_world_find_nodes(get(), subject, node(predicate).get(), nullptr));
    std::vector<std::string> texts;
    LILV_FOREACH(nodes, i, nodes.get())
    texts.emplace_back(lilv_node_as_string(lilv_nodes_get(nodes.get(), i)));
    return texts;
}
