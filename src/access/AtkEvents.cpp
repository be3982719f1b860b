#include "access/AtkEvents.h"

#include "access/AtkRoles.h"

#include <string>

namespace {

void tellText(AtkObject* object, const std::string& before, const std::string& now) {
    const glong was = g_utf8_strlen(before.c_str(), -1), is = g_utf8_strlen(now.c_str(), -1);
    if (was) g_signal_emit_by_name(object, "text-remove", 0, gint(was), before.c_str());
    if (is) g_signal_emit_by_name(object, "text-insert", 0, gint(is), now.c_str());
}

void tellCaret(AtkObject* object, const Description::Caret& before, const Description::Caret& now) {
    if (before.at != now.at) g_signal_emit_by_name(object, "text-caret-moved", now.at);
    if (before.selectionFrom != now.selectionFrom || before.selectionTo != now.selectionTo)
        g_signal_emit_by_name(object, "text-selection-changed");
}

} // namespace

void tellChange(AtkObject* object, const Description& before, const Description& now) {
    if (before.name != now.name) g_object_notify(G_OBJECT(object), "accessible-name");
    for (const StateName* at = stateNames; at->theirs != ATK_STATE_INVALID; ++at)
        if (before.has(at->ours) != now.has(at->ours))
            atk_object_notify_state_change(object, at->theirs, now.has(at->ours));
    if (ATK_IS_TEXT(object) && before.text != now.text) tellText(object, before.text, now.text);
    if (ATK_IS_TEXT(object) && before.caret != now.caret)
        tellCaret(object, before.caret.value_or(Description::Caret()),
                  now.caret.value_or(Description::Caret()));
    if (ATK_IS_VALUE(object) && now.range && before.range != now.range)
        g_signal_emit_by_name(object, "value-changed", now.range->now, now.text.c_str());
    if (ATK_IS_WINDOW(object) && before.has(stateActive) != now.has(stateActive))
        g_signal_emit_by_name(object, now.has(stateActive) ? "activate" : "deactivate");
}
