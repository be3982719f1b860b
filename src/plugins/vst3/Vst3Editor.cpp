#include "plugins/vst3/Vst3Editor.h"

#include "engine/LoopCalls.h"
#include "plugins/ForeignCall.h"
#include "plugins/Plugin.h"

#include <algorithm>

using namespace vst3;

bool Vst3Editor::works(Controller& controller) {
    View* made = controller.createView(editorView);
    if (!made) return false;
    const bool good = made->isSupported(x11Type) == ok;
    made->release();
    return good;
}

std::unique_ptr<Vst3Editor> Vst3Editor::open(Controller& controller, PluginHost& host,
                                             unsigned long window) {
    View* made = controller.createView(editorView);
    if (!made) return nullptr;
    std::unique_ptr<Vst3Editor> editor(new Vst3Editor(made, host));
    made->setFrame(&editor->around);
    editor->attached = made->attached(reinterpret_cast<void*>(window), x11Type) == ok;
    return editor->attached ? std::move(editor) : nullptr;
}

Vst3Editor::~Vst3Editor() {
    contained([this] {
        if (attached) view->removed();
        view->setFrame(nullptr);
        view->release();
    });
}

CPoint Vst3Editor::size() const {
    Rect told{};
    if (view->size(&told) != ok) return {};
    return asPoint(told.right - told.left, told.bottom - told.top);
}

Result Vst3Editor::Around::query(const uint8_t* wanted, void** found) {
    if (editor.loop.query(wanted, found) == ok && std::memcmp(wanted, RunLoop::iid.data(), 16) == 0)
        return ok;
    return Vst3Owned::query(wanted, found);
}

Result Vst3Editor::Around::resize(View* view, Rect* to) {
    if (view != editor.view || !to) return badArgument;
    Rect told = *to;
    editor.host.sizeEditor(asPoint(told.right - told.left, told.bottom - told.top));
    return view->sized(&told);
}

Result Vst3Editor::Loop::watch(EventHandler* handler, int file) {
    if (!handler) return badArgument;
    if (!timers.watch(file, LoopCalls::readable)) return no;
    watched.emplace_back(file, handler);
    return ok;
}

Result Vst3Editor::Loop::unwatch(EventHandler* handler) {
    const auto isIts = [handler](const auto& one) { return one.second == handler; };
    for (const auto& one : watched)
        if (isIts(one)) timers.unwatch(one.first);
    return std::erase_if(watched, isIts) > 0 ? ok : no;
}

Result Vst3Editor::Loop::addTimer(TimerHandler* handler, uint64_t ms) {
    if (!handler) return badArgument;
    const unsigned number = timers.add(unsigned(std::min<uint64_t>(ms, 60000)));
    if (number == 0) return no;
    timed.emplace_back(number, handler);
    return ok;
}

Result Vst3Editor::Loop::removeTimer(TimerHandler* handler) {
    const auto isIts = [handler](const auto& one) { return one.second == handler; };
    for (const auto& one : timed)
        if (isIts(one)) timers.remove(one.first);
    return std::erase_if(timed, isIts) > 0 ? ok : no;
}

void Vst3Editor::Loop::due(unsigned number) {
    const auto at = std::ranges::find(timed, number, &std::pair<unsigned, TimerHandler*>::first);
    if (at != timed.end()) guarded([handler = at->second] { handler->due(); });
}

void Vst3Editor::Loop::ready(int file) {
    const auto at = std::ranges::find(watched, file, &std::pair<int, EventHandler*>::first);
    if (at != watched.end()) guarded([&, handler = at->second] { handler->ready(file); });
}
