#include "ui/Shortcuts.h"

#include "base/Numbers.h"
#include "gui/Utf8.h"

#include <initializer_list>

namespace {

struct NamedKey {
    int key;
    const char* name;
};
// Of two names of a key the first one is shown.
constexpr NamedKey namedKeys[] = {
    {keyAsterisk, "*"},        {keyHome, "HOME"},     {keyDelete, "DEL"}, {keyReturn, "ENTER"},
    {keyReturn, "RETURN"},     {' ', "SPACE"},        {keyEnd, "END"},    {keyPageUp, "PAGEUP"},
    {keyPageDown, "PAGEDOWN"}, {keyInsert, "INSERT"},
};
constexpr int functionKeys = 12;
constexpr uint32_t mostKey = 255;

} // namespace

CStr keyToStr(int key) {
    for (const NamedKey& k : namedKeys)
        if (k.key == key) return k.name;
    if (key <= keyF1 && key >= keyF12) return CStr("F") + asStr(keyF1 - key + 1);
    return key > 0 ? CStr(utf8Of(uint32_t(upperKey(key))).c_str()) : CStr();
}

int strToKey(const CStr& text) {
    for (const NamedKey& k : namedKeys)
        if (sameText(text, k.name)) return k.key;
    for (int i = 0; i < functionKeys; i++)
        if (sameText(text, keyToStr(keyF1 - i))) return keyF1 - i;
    const std::string_view name = text.asChar();
    size_t behind = 0;
    const uint32_t key = name.empty() ? 0 : nextCharacter(name, behind);
    // Letters of other scripts are never pressed: their keys stand for the Latin ones.
    return behind == name.size() && key <= mostKey ? int(key) : 0;
}

CStr shortcutToStr(int key, int mods) {
    const CStr name = keyToStr(key);
    if (name.empty()) return name;
    CStr text;
    for (const NamedKey& m : {NamedKey{modControl, "CTRL + "}, NamedKey{modShift, "SHIFT + "},
                              NamedKey{modAlt, "ALT + "}})
        if (mods & m.key) text += m.name;
    return text + name;
}
