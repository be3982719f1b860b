#pragma once

#include "gui/access/AccessTree.h"

#include <atk/atk.h>

#include <string>
#include <unordered_map>

/// The tree on the accessibility bus. One at a time, as the library has one root. Interface thread.
class AtkOutlet final : public AccessOutlet {
public:
    AtkOutlet(AccessTree* tree, const char* program);
    ~AtkOutlet() override;
    AtkOutlet(const AtkOutlet&) = delete;
    AtkOutlet& operator=(const AtkOutlet&) = delete;

    bool open(); ///< false without the bus
    void changed(AccessId id, const Description& before, const Description& now) override;
    void childrenChanged(AccessId id) override;
    void focused(AccessId id) override;
    void windowOpened(AccessId id) override;
    void gone(AccessId id) override;
    void await(std::vector<pollfd>& descriptors, int& ms) override;
    void turn() override;

    AtkObject* objectOf(AccessId id); ///< not a new reference; null if the thing is gone

private:
    AtkObject* known(AccessId id) const;

    AccessTree* tree;
    std::string program;
    bool isOpen = false;
    std::unordered_map<AccessId, AtkObject*> objects; ///< a reference each
    std::unordered_map<AccessId, std::vector<AccessId>> toldInside;
};
