#include "engine/KeyNames.h"

#include "base/Numbers.h"

#include <cstdlib>

namespace {

constexpr int keysOfOctave = 12;

} // namespace

CStr keyName(int key) {
    constexpr const char* names[keysOfOctave] = {"C",  "C#", "D",  "D#", "E",  "F",
                                                 "F#", "G",  "G#", "A",  "A#", "B"};
    return names[(key % keysOfOctave + keysOfOctave) % keysOfOctave];
}

CStr noteToStr(int key) {
    return keyName(key) + asStr(key / keysOfOctave - 1);
}

int keyOf(const CStr& name) {
    constexpr int steps[] = {9, 11, 0, 2, 4, 5, 7}; // from A on
    const char* at = name.asChar();
    const int letter = (*at | 0x20) - 'a';
    if (letter < 0 || letter > 6) return -1;
    int key = steps[letter];
    at++;
    for (; *at == '#' || *at == 'b'; at++) key += *at == '#' ? 1 : -1;
    char* end = nullptr;
    const long octave = std::strtol(at, &end, 10);
    if (end == at || *end || octave < -1 || octave > 9) return -1;
    key += (int(octave) + 1) * keysOfOctave;
    return key >= 0 && key < 128 ? key : -1;
}
