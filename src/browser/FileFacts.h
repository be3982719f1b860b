#pragma once

#include <optional>

class CStr;
struct Scale;

// What the name of a file tells of its music.

/// Its tempo, such as "loop 120 bpm.wav"; 0 without one.
float tempoOfName(const CStr& path);

struct NameKey {
    int root = 0; ///< 0 for C to 11
    bool minor = false;
    bool operator==(const NameKey&) const = default;
};
/// Its key, as in "pad Am.wav", "F#min", "Bb_major" or "C maj"; a letter alone is none.
std::optional<NameKey> keyOfName(const CStr& path);
/// By how many semitones what is in this key comes into a scale, -6 to 5: major to major, minor to
/// minor, else to the relative key. 0 without a scale.
int semitonesTo(const Scale& scale, const NameKey& key);
