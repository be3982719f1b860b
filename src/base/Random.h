#pragma once

#include <cstdint>

// Generators of random numbers: no lock, no allocation. Each thread has one, which starts from a
// seed of its own that is the same in every run.

/// A generator of its owner's, who alone decides who draws.
class Random {
public:
    explicit Random(unsigned number = 0) { seed(number); }
    void seed(unsigned number); ///< starts anew
    int integer();              ///< 0 to 2^31 - 1
    double unit();              ///< 0 up to, but excluding 1: `integer` / 2^31

private:
    uint64_t state;
};

int asRandInt(); ///< 0 to 2^31 - 1
double asRand(); ///< 0 up to, but excluding 1: `asRandInt` / 2^31
/// Starts the generator of the calling thread anew.
void seedRand(unsigned seed);

/// Another number for each number, with all bits mixed: near ones come out far apart.
uint64_t scramble(uint64_t number);
