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

} // namespace

CStr keyToStr(int key) {
    for (const NamedKey& k : namedKeys)
        if (k.key == key) return k.name;
    if (key <= keyF1 && key >= keyF12) return CStr("F") + asStr(keyF1 - key + 1);
    if (key <= 0 || key > 255) return {};
    return asUtf8(std::string(1, char(upperKey(key)))).c_str();
}

int strToKey(const CStr& text) {
    for (const NamedKey& k : namedKeys)
        if (sameText(text, k.name)) return k.key;
    for (int i = 0; i < functionKeys; i++)
        if (sameText(text, keyToStr(keyF1 - i))) return keyF1 - i;
    // Keys are Latin-1, the text is UTF-8.
    const std::string key = asLatin1(text.asChar());
    if (key.size() != 1 || (key == "?" && text != "?")) return 0;
    return static_cast<unsigned char>(key[0]);
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
