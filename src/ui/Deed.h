#pragma once

#include "base/Delegates.h"

#include <functional>
#include <utility>

/// A function as what a menu entry or button calls.
class Deed : public COnChange {
public:
    explicit Deed(std::function<void()> function) : run(std::move(function)) {}
    void operator()(CObject*) override {
        if (run) run();
    }

private:
    std::function<void()> run;
};
