#include "ui/KeyMenu.h"

#include "gui/controls/CPopup.h"
#include "ui/MenuDeed.h"

#include <algorithm>

namespace {

constexpr const char* ownSound = "its own sound";

} // namespace

void fillKeyMenu(CPopup* popup, const std::function<CComp*()>& keyed,
                 const std::function<CStr(const COutputChannel*)>& name) {
    CComp* now = keyed();
    const COutputChannel* source = keyInputOf(now)->source();
    const auto entry = [&](const CStr& text, COutputChannel* strip) {
        CMenuItem* item = addDeed(popup, text, [keyed, strip] {
            CComp* c = keyed();
            if (c && (!strip || std::ranges::count(keySources(c), strip))) setKey(c, strip);
        });
        item->checked = strip == source;
    };
    entry("Its own sound", nullptr);
    popup->addSeparator();
    for (COutputChannel* strip : keySources(now)) entry(name(strip), strip);
}

CStr keyText(CComp* keyed) {
    const COutputChannel* source = keyInputOf(keyed)->source();
    return source ? stripName(source) : CStr(ownSound);
}
