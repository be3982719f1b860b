#pragma once

/// Takes keys by their place on the keyboard, before they mean a letter or a command: the codes of
/// the server, where the left key of the lowest row of letters is 52, of the middle one 38, of the
/// upper one 24 and of the digits 10. A key that is held repeats its press. Interface thread.
class KeyPlayer {
public:
    virtual bool placePressed(int place) = 0;  ///< true when it was taken
    virtual bool placeReleased(int place) = 0; ///< likewise
    virtual void focusLost() = 0;              ///< no window of the program has the keys any more

protected:
    virtual ~KeyPlayer() = default;
};
