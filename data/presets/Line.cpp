#include "data/presets/Line.h"

#include <cctype>
#include <cstdlib>
#include <sstream>
#include <string>

namespace presets {

namespace {

constexpr int plain = 94, accented = 114, soft = 66;

int keyOf(const std::string& name) {
    static constexpr int degrees[] = {9, 11, 0, 2, 4, 5, 7}; // from A on
    size_t at = 1;
    int key = degrees[name[0] - 'A'];
    for (; at < name.size() && (name[at] == '#' || name[at] == 'b'); at++)
        key += name[at] == '#' ? 1 : -1;
    return key + 12 * (std::atoi(name.c_str() + at) + 1);
}

struct Word {
    std::string notes; ///< empty for a rest
    int length = 1, velocity = plain;
};

/// Calls `visit(word, step)` for each word, and gives the length of the line.
template <class Visit>
int eachWord(const char* text, Visit&& visit) {
    int step = 0;
    std::istringstream words(text);
    for (std::string token; words >> token;) {
        if (token == "|") continue;
        Word word;
        if (token.back() == '!' || token.back() == '?') {
            word.velocity = token.back() == '!' ? accented : soft;
            token.pop_back();
        }
        const size_t colon = token.find(':');
        if (colon != std::string::npos) word.length = std::atoi(token.c_str() + colon + 1);
        if (token[0] != '-') word.notes = token.substr(0, colon);
        visit(word, step);
        step += word.length;
    }
    return step;
}

} // namespace

std::vector<LineNote> parseLine(const char* text) {
    std::vector<LineNote> notes;
    eachWord(text, [&](const Word& word, int step) {
        std::istringstream chord(word.notes);
        for (std::string name; std::getline(chord, name, '+');)
            notes.push_back({step, word.length, keyOf(name), word.velocity});
    });
    return notes;
}

int lengthOf(const char* text) {
    return eachWord(text, [](const Word&, int) {});
}

int hitVelocity(char c) {
    return c == 'o' ? soft - 4 : c == 'x' ? plain - 2 : c == 'X' ? accented + 2 : 0;
}

} // namespace presets
