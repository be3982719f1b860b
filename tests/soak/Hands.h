#pragma once

#include <random>
#include <utility>

struct _XDisplay;

/// Somebody who knows nothing of the program: random keys, words, clicks, wheel turns and drags on
/// a display, made as a keyboard and a mouse would make them.
class Hands {
public:
    explicit Hands(unsigned seed) : chance(seed) {}
    ~Hands();
    Hands(const Hands&) = delete;
    Hands& operator=(const Hands&) = delete;

    bool open(); ///< the display of the environment
    void act();  ///< one of them, with the pauses of a hurried user

private:
    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(chance); }
    void pointAnywhere();
    void key();
    void word();
    void click();
    void drag();
    void press(unsigned long symbol);
    void hold(unsigned long symbol, bool down);

    _XDisplay* display = nullptr;
    std::mt19937 chance;
};
