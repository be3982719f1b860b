#pragma once

#include "gui/access/Accessible.h"

#include <cstdint>
#include <vector>

struct pollfd;

/// Names a control or a part of one for as long as it is there; 0 is the program.
using AccessId = std::uint64_t;

/// The program as a tree of things with names: the windows, what lies in them, and the parts of
/// that. Interface thread. Functions with an id that has gone tell of nothing and do nothing.
class AccessTree {
public:
    virtual ~AccessTree() = default;
    virtual Description describe(AccessId id) = 0;
    virtual std::vector<AccessId> children(AccessId id) = 0;
    virtual AccessId parent(AccessId id) = 0;
    virtual AccessId focus() = 0; ///< what the keys act on, 0 none
    virtual AccessId at(AccessId id,
                        CPoint p) = 0; ///< what a pixel of the screen shows inside `id`

    // What is asked for here is done when the loop is back, as it may open a dialog.
    virtual bool press(AccessId id) = 0;
    virtual bool setNumber(AccessId id, double to) = 0;
    virtual bool setText(AccessId id, const std::string& to) = 0;
    virtual bool setFocus(AccessId id) = 0;
};

/// Who brings the tree to those who ask for it, and what has changed to them. Interface thread.
class AccessOutlet {
public:
    virtual ~AccessOutlet() = default;
    virtual void changed(AccessId id, const Description& before, const Description& now) = 0;
    virtual void childrenChanged(AccessId id) = 0;
    virtual void focused(AccessId id) = 0;
    virtual void windowOpened(AccessId id) = 0;
    virtual void gone(AccessId id) = 0;
    /// Adds the descriptors that it wants to be woken by, and lowers the milliseconds to wait.
    virtual void await(std::vector<pollfd>& descriptors, int& ms) = 0;
    virtual void turn() = 0; ///< serves what has come; called in every turn of the loop
};

/// What a module brings an outlet by, as `makeAccessOutlet`; null on failure. The tree outlives it.
using MakeAccessOutlet = AccessOutlet* (*)(AccessTree* tree, const char* program);
