#pragma once

#include "base/Atomic.h"
#include "engine/CUndo.h"
#include "engine/WordChanges.h"

#include <memory>
#include <utility>
#include <vector>

/// All that a plug-in keeps, so that a step of the history can exchange it for other such.
class PluginState : public CUndoContent {
public:
    using Bytes = std::vector<unsigned char>;

    PluginState() = default;
    explicit PluginState(Bytes held) { hold(std::move(held)); }
    ~PluginState() override { delete bytes.load(); }
    PluginState(const PluginState&) = delete;
    PluginState& operator=(const PluginState&) = delete;

    /// Interface thread, while no step is on its way.
    void hold(Bytes held) {
        delete bytes.load();
        bytes = new Bytes(std::move(held));
    }
    const Bytes* held() const { return bytes; } ///< null: none
    void listWords(CUndoContent* other, WordChanges& words) override {
        words.exchange(bytes, static_cast<PluginState*>(other)->bytes);
    }

private:
    Shared<Bytes*> bytes{nullptr}; ///< owned
};
