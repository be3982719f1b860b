#include "browser/FileFacts.h"

#include "base/Paths.h"
#include "sequencer/song/Scales.h"

#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr float slowest = 40.0f, fastest = 250.0f;

/// The words of a file's name without its ending.
std::vector<std::string> wordsOf(const CStr& path) {
    std::vector<std::string> words(1);
    const CStr name = changeFileExt(extractFileName(path), "");
    for (const char* c = name.asChar(); *c; c++) {
        if (*c == '#' || std::isalnum(static_cast<unsigned char>(*c)))
            words.back() += *c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    return words;
}

enum class Mode { none, major, minor };

Mode modeOf(const std::string& word) {
    if (word == "maj" || word == "major" || word == "Maj" || word == "Major") return Mode::major;
    const bool minor = word == "min" || word == "minor" || word == "Min" || word == "Minor";
    return minor || word == "m" ? Mode::minor : Mode::none;
}

} // namespace

float tempoOfName(const CStr& path) {
    const std::string name = extractFileName(path).lowerCase().asChar();
    const size_t unit = name.find("bpm");
    size_t end = unit == std::string::npos ? 0 : unit;
    while (end > 0 && (name[end - 1] == ' ' || name[end - 1] == '_' || name[end - 1] == '-')) end--;
    size_t from = end;
    while (from > 0 &&
           (std::isdigit(static_cast<unsigned char>(name[from - 1])) || name[from - 1] == '.'))
        from--;
    const float tempo = std::strtof(name.substr(from, end - from).c_str(), nullptr);
    return tempo >= slowest && tempo <= fastest ? tempo : 0.0f;
}

std::optional<NameKey> keyOfName(const CStr& path) {
    constexpr int letters[] = {9, 11, 0, 2, 4, 5, 7}; // from A on
    const std::vector<std::string> words = wordsOf(path);
    for (size_t i = 0; i < words.size(); i++) {
        const std::string& word = words[i];
        if (word.empty() || word[0] < 'A' || word[0] > 'G') continue;
        const bool sharp = word.size() > 1 && word[1] == '#';
        const bool flat = word.size() > 1 && word[1] == 'b';
        const std::string rest = word.substr(sharp || flat ? 2 : 1);
        const std::string& behind = i + 1 < words.size() ? words[i + 1] : rest;
        const Mode mode = rest.empty() ? modeOf(behind) : modeOf(rest);
        if (rest.empty() ? mode == Mode::none && !sharp && !flat : mode == Mode::none) continue;
        const int root = letters[word[0] - 'A'] + int(sharp) - int(flat) + octaveKeys;
        return NameKey{root % octaveKeys, mode == Mode::minor};
    }
    return {};
}

int semitonesTo(const Scale& scale, const NameKey& key) {
    if (!scale.any()) return 0;
    constexpr int minorThird = 3, half = octaveKeys / 2;
    const bool minor =
        scale.has(scale.root + minorThird) && !scale.has(scale.root + minorThird + 1);
    int root = scale.root;
    if (minor && !key.minor) root += minorThird;
    if (!minor && key.minor) root += octaveKeys - minorThird;
    return (root - key.root + octaveKeys + half) % octaveKeys - half;
}
