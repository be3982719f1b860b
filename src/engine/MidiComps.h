#pragma once

#include "base/Ring.h"
#include "engine/CComp.h"

/// Leads MIDI channels to other channels.
class CMIDIChs : public CComp {
public:
    static constexpr int numChannels = 16;

    explicit CMIDIChs(CQV* root);

    Shared<int> map[numChannels]; ///< channel 0 to 15 for each channel, -1 drops what it has

    void init() override;
    void process(int frames) override;
};

/// An on-screen keyboard as a source of its own.
class CKeyboard : public CComp {
public:
    explicit CKeyboard(CQV* root);

    void init() override;
    void process(int frames) override;
    /// A message for the next block. Lost when 512 wait. Interface thread.
    void addMidiEvent(int data) { keys.push(data); }

private:
    Ring<int, 512> keys;
};
