#include "ui/MenuDeed.h"

#include "base/Delegates.h"
#include "gui/controls/CPopup.h"

namespace {

class MenuDeed : public COnChange {
public:
    explicit MenuDeed(std::function<void()> deed) : run(std::move(deed)) {}
    void operator()(CObject*) override { run(); }

private:
    std::function<void()> run;
};

} // namespace

CMenuItem* addDeed(CPopup* popup, const CStr& text, std::function<void()> deed) {
    return popup->add(text, new MenuDeed(std::move(deed)));
}
