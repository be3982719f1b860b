#include "setup/PortList.h"

#include "engine/CAAM.h"
#include "ui/DeviceSettings.h"

namespace {

constexpr int rowHeight = 20;

} // namespace

PortList::PortList(CWin* owner, const char* name, CAAM* deviceBridge, const PortKind& portKind)
    : CListbox(owner, name, 0, 0, 0, 0), bridge(deviceBridge), kind(portKind) {
    itemHeight = rowHeight;
    for (int i = 0; i < kind.count(bridge); i++)
        add((bridge->*kind.name)(i))->checked = (bridge->*kind.enabled)(i);
    checkable = !items.empty();
    if (!checkable) add("<None found>");
    wire(onDoubleClick, new _COnChange<PortList>(this, &PortList::toggled));
}

void PortList::toggled(CObject*) {
    if (!checkable) return;
    row(index)->checked = !row(index)->checked;
    redraw();
    if (onChecked) (*onChecked)(this);
}

void PortList::apply() {
    int i = 0;
    for (const CListRow* at : items) {
        if ((bridge->*kind.enabled)(i) != at->checked) (bridge->*kind.enable)(i, at->checked);
        i++;
    }
}
