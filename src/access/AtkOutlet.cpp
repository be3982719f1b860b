#include "access/AtkOutlet.h"

#include "access/AtkEvents.h"
#include "access/AtkNode.h"

#include <atk-bridge.h>
#include <poll.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

constexpr int mostTurns = 64; ///< of the library in one of the loop
constexpr int mostDescriptors = 16;

AtkOutlet* openOutlet = nullptr; // the library asks for the root without saying for whom

AtkObject* getRoot() {
    return openOutlet ? openOutlet->objectOf(0) : nullptr;
}

const gchar* getToolkit() {
    return "Sondrava";
}

const gchar* getToolkitVersion() {
    return "1";
}

guint addKeyListener(AtkKeySnoopFunc, gpointer) {
    return 0; // keys are told by the X server
}

void removeKeyListener(guint) {
}

void nameToolkit() {
    auto* util = static_cast<AtkUtilClass*>(g_type_class_ref(ATK_TYPE_UTIL));
    util->get_root = getRoot;
    util->get_toolkit_name = getToolkit;
    util->get_toolkit_version = getToolkitVersion;
    util->add_key_event_listener = addKeyListener;
    util->remove_key_event_listener = removeKeyListener;
}

} // namespace

AtkObject* atkObjectOf(AccessId id) {
    return openOutlet ? openOutlet->objectOf(id) : nullptr;
}

AtkOutlet::AtkOutlet(AccessTree* shown, const char* name) : tree(shown), program(name) {
}

AtkOutlet::~AtkOutlet() {
    if (isOpen) atk_bridge_adaptor_cleanup();
    openOutlet = nullptr;
    for (const auto& [id, object] : objects) {
        AtkNode::forget(object);
        g_object_unref(object);
    }
}

bool AtkOutlet::open() {
    if (openOutlet) return false;
    openOutlet = this;
    nameToolkit();
    g_set_prgname(program.c_str());
    isOpen = atk_bridge_adaptor_init(nullptr, nullptr) == 0;
    if (!isOpen) openOutlet = nullptr;
    return isOpen;
}

AtkObject* AtkOutlet::objectOf(AccessId id) {
    if (AtkObject* object = known(id)) return object;
    const Description now = tree->describe(id);
    if (now.role == Role::none) return nullptr;
    return objects[id] = AtkNode::make(tree, id, AtkNode::facesOf(now));
}

AtkObject* AtkOutlet::known(AccessId id) const {
    const auto at = objects.find(id);
    return at == objects.end() ? nullptr : at->second;
}

void AtkOutlet::changed(AccessId id, const Description& before, const Description& now) {
    if (AtkObject* object = known(id)) tellChange(object, before, now);
}

void AtkOutlet::childrenChanged(AccessId id) {
    AtkObject* object = known(id);
    if (!object) return;
    std::vector<AccessId> now = tree->children(id);
    const std::vector<AccessId> before = std::exchange(toldInside[id], now);
    for (size_t i = 0; i < now.size(); ++i)
        if (std::find(before.begin(), before.end(), now[i]) == before.end())
            g_signal_emit_by_name(object, "children-changed::add", guint(i), objectOf(now[i]));
    for (size_t i = 0; i < before.size(); ++i)
        if (std::find(now.begin(), now.end(), before[i]) == now.end())
            g_signal_emit_by_name(object, "children-changed::remove", guint(i), known(before[i]));
}

void AtkOutlet::focused(AccessId id) {
    if (AtkObject* object = objectOf(id))
        atk_object_notify_state_change(object, ATK_STATE_FOCUSED, TRUE);
}

void AtkOutlet::windowOpened(AccessId id) {
    AtkObject* object = objectOf(id);
    if (!object || !ATK_IS_WINDOW(object)) return;
    g_signal_emit_by_name(object, "create");
    if (tree->describe(id).has(stateActive)) g_signal_emit_by_name(object, "activate");
}

void AtkOutlet::gone(AccessId id) {
    toldInside.erase(id);
    const auto at = objects.find(id);
    if (at == objects.end()) return;
    if (ATK_IS_WINDOW(at->second)) g_signal_emit_by_name(at->second, "destroy");
    AtkNode::forget(at->second);
    g_object_unref(at->second);
    objects.erase(at);
}

void AtkOutlet::await(std::vector<pollfd>& descriptors, int& ms) {
    GMainContext* context = g_main_context_default();
    if (!g_main_context_acquire(context)) return;
    GPollFD wanted[mostDescriptors];
    gint priority = 0, patience = -1;
    g_main_context_prepare(context, &priority);
    const gint count =
        std::min(g_main_context_query(context, priority, &patience, wanted, mostDescriptors),
                 mostDescriptors);
    g_main_context_release(context);
    for (gint i = 0; i < count; ++i)
        descriptors.push_back({wanted[i].fd, short(wanted[i].events), 0});
    if (patience >= 0) ms = std::min(ms, patience);
}

void AtkOutlet::turn() {
    for (int i = 0; i < mostTurns && g_main_context_iteration(nullptr, FALSE); ++i) {
    }
}

extern "C" [[gnu::visibility("default")]] AccessOutlet* makeAccessOutlet(AccessTree* tree,
                                                                         const char* program) {
    auto outlet = std::make_unique<AtkOutlet>(tree, program);
    return outlet->open() ? outlet.release() : nullptr;
}
