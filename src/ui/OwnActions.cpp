#include "ui/OwnActions.h"

#include <cassert>
#include <utility>

void OwnActions::bind(const char* name, std::function<void()> run, std::function<bool()> ready,
                      std::function<bool()> on) {
    commands.leave(name);
    enter(name, {std::move(run), std::move(ready), std::move(on)});
}

void OwnActions::preempt(const char* name, std::function<void()> run, std::function<bool()> ready) {
    enter(name, {std::move(run), std::move(ready), {}});
}

void OwnActions::enter(const char* name, Deed deed) {
    [[maybe_unused]] const bool fresh =
        deeds.emplace(commands.getAction(name), std::move(deed)).second;
    assert(fresh);
}

const Deed* OwnActions::find(const CAction* action) const {
    const auto found = deeds.find(action);
    return found == deeds.end() ? nullptr : &found->second;
}

bool OwnActions::run(const CAction* action) const {
    const Deed* deed = find(action);
    if (deed && deed->isReady()) deed->run();
    return deed;
}

bool OwnActions::isReady(const CAction* action) const {
    const Deed* deed = find(action);
    return deed && deed->isReady();
}

bool OwnActions::isOn(const CAction* action) const {
    const Deed* deed = find(action);
    return deed && deed->isOn();
}
