#pragma once

#include "base/CStr.h"
#include "plugins/lv2/UridMap.h"

#include <lilv/lilv.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// Frees what lilv gives away.
struct LilvFree {
    void operator()(LilvNode* node) const { lilv_node_free(node); }
    void operator()(LilvState* state) const { lilv_state_free(state); }
    void operator()(LilvInstance* instance) const { lilv_instance_free(instance); }
    void operator()(LilvWorld* world) const { lilv_world_free(world); }
};
template <class T>
using Lilv = std::unique_ptr<T, LilvFree>;

/// Its lists are all of one type.
template <void (*Free)(void*)>
struct LilvFreeList {
    void operator()(void* list) const { Free(list); }
};
using LilvNodeList = std::unique_ptr<void, LilvFreeList<lilv_nodes_free>>;
using LilvUiList = std::unique_ptr<void, LilvFreeList<lilv_uis_free>>;
using LilvPointList = std::unique_ptr<void, LilvFreeList<lilv_scale_points_free>>;

/// What the texts of LV2 bundles say. Interface thread, but for `urids`.
class Lv2World {
public:
    UridMap urids;

    /// That of all plug-ins which are loaded into this process, with the bundles of the system, for
    /// their presets.
    static std::shared_ptr<Lv2World> ofProcess();
    explicit Lv2World(bool whole); ///< of the system, or of the bundles that are asked for

    LilvWorld* get() const { return world.get(); }
    Lilv<LilvNode> node(const char* uri) const;
    /// A plug-in of a bundle, or of that name elsewhere where several bundles hold it; the first
    /// one without a URI. Null where there is none.
    const LilvPlugin* find(const CStr& bundle, const CStr& uri);
    std::vector<const LilvPlugin*> inside(const CStr& bundle); ///< all of a bundle
    bool says(const LilvNode* subject, const char* predicate, const char* object) const;
    /// All that a subject is said to have.
    std::vector<std::string> all(const LilvNode* subject, const char* predicate) const;

private:
    std::vector<const LilvPlugin*> known(const LilvNode* bundle) const;

    Lilv<LilvWorld> world;
    std::set<std::string> loaded; ///< bundles that were asked for
};
