#pragma once

#include "ui/Commands.h"

#include <map>

/// What a window does itself of the actions that are left to windows: for its `onAction`, `canRun`
/// and `isOn`. Interface thread.
class OwnActions {
public:
    /// `table` outlives it.
    explicit OwnActions(Commands& table) : commands(table) {}

    /// As `Commands::bind`, for this window alone.
    void bind(const char* name, std::function<void()> run, std::function<bool()> ready = {},
              std::function<bool()> on = {});
    /// The same for one that the program carries out as well: this window comes first.
    void preempt(const char* name, std::function<void()> run, std::function<bool()> ready = {});
    /// Carries it out if it is ready; false for one that the window does not have.
    bool run(const CAction* action) const;
    bool has(const CAction* action) const { return find(action) != nullptr; }
    bool isReady(const CAction* action) const;
    bool isOn(const CAction* action) const;

private:
    void enter(const char* name, Deed deed);
    const Deed* find(const CAction* action) const;

    Commands& commands;
    std::map<const CAction*, Deed> deeds;
};
