#include "ui/Commands.h"

#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "ui/Shortcuts.h"

#include <cassert>
#include <cstdlib>
#include <utility>

namespace {

constexpr const char* section = "shortcuts";

bool isSign(int key) {
    const bool letterOrDigit = upperKey(key) >= 'A' && upperKey(key) <= 'Z';
    return key > ' ' && !letterOrDigit && !(key >= '0' && key <= '9');
}

/// The number in front of all else; `def` when there is none.
int numberIn(const CStr& text, int def) {
    char* end = nullptr;
    const long value = std::strtol(text.asChar(), &end, 10);
    return end == text.asChar() ? def : saturate(value);
}

} // namespace

Commands::~Commands() {
    deleteAll(actions);
}

void Commands::bind(const char* name, std::function<void()> run, std::function<bool()> ready,
                    std::function<bool()> on) {
    CAction* action = getAction(name);
    assert(action && !action->bound());
    action->deed = {std::move(run), std::move(ready), std::move(on)};
}

void Commands::leave(const char* name) {
    CAction* action = getAction(name);
    assert(action && !action->deed.run);
    action->left = true;
}

bool Commands::run(const CAction* action) const {
    if (!action || !action->deed.run) return false;
    if (action->isReady()) action->deed.run();
    return true;
}

CAction* Commands::getAction(const CStr& name) const {
    for (auto* action : actions)
        if (action->name == name) return action;
    return nullptr;
}

CAction* Commands::find(int key, int mods, int editorType) const {
    if (key == 0) return nullptr;
    const auto first = [&](int counting) -> CAction* {
        for (auto* action : actions) {
            const bool active =
                action->bound() && (action->group < 1 || action->group == editorType);
            const bool same = upperKey(action->key) == upperKey(key);
            if (active && same && (action->mods & counting) == (mods & counting)) return action;
        }
        return nullptr;
    };
    constexpr int all = modShift | modControl | modAlt;
    CAction* exact = first(all);
    if (!exact && key == '_') return find('-', mods, editorType);
    return exact || !isSign(key) ? exact : first(all & ~modShift);
}

void Commands::readShortcuts() {
    CStringList lines;
    CIniFile(inifile).readSection(section, &lines);
    for (int i = 0; i < lines.count(); i++) {
        CAction* action = getAction(strToIdent(lines.get(i)));
        if (!action) continue;
        const CStr value = strToValue(lines.get(i));
        const int comma = value.pos(",");
        if (comma < 0) continue;
        action->mods = numberIn(value.sub(0, comma), action->mods);
        action->key = numberIn(value.sub(comma + 1, -1), action->key);
    }
}

void Commands::setShortcut(CAction* action, int key, int mods) {
    action->key = key;
    action->mods = mods;
    CIniFile(inifile).writeString(section, action->name, asStr(mods) + "," + asStr(key));
}
