#pragma once

#include <cstdint>

/// A generator of random numbers per thread; no lock, no allocation. Each thread starts from a seed
/// of its own that is the same in every run.

int asRandInt(); ///< 0 to 2^31 - 1
double asRand(); ///< 0 up to, but excluding 1: `asRandInt` / 2^31
/// Starts the generator of the calling thread anew.
void seedRand(unsigned seed);

/// Another number for each number, with all bits mixed: near ones come out far apart.
uint64_t scramble(uint64_t number);
