#pragma once

#include "gui/KeyPlayer.h"

#include <array>

class CApp;
class CQV;
class Workspace;

/// The computer's keyboard as a piano, off at first: while it is on, two rows of letters are white
/// keys, those above them black ones, and none of them reaches a command. Notes go where those of
/// MIDI devices go. The keys right of the upper row change the octave; Escape and losing the focus
/// end it. Interface thread.
class ComputerKeys : private KeyPlayer {
public:
    explicit ComputerKeys(Workspace& workspace);
    ~ComputerKeys() override;
    ComputerKeys(const ComputerKeys&) = delete;
    ComputerKeys& operator=(const ComputerKeys&) = delete;

    bool on() const;
    void set(bool wanted); ///< off, all that sounds ends

private:
    static constexpr int places = 256;

    bool placePressed(int place) override;
    bool placeReleased(int place) override;
    void focusLost() override { set(false); }
    void tell() const;
    void send(int key, bool pressed) const;

    Workspace& workspace;
    CApp& app;
    int lowest = 48;                        ///< key of the lowest row's left end
    std::array<signed char, places> held{}; ///< the key that a place sounds, -1 none
};
