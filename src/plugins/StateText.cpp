#include "plugins/StateText.h"

#include <charconv>
#include <string_view>

namespace {

constexpr std::string_view version = " state 1", programKey = "program ";
constexpr char fileMark = '@'; ///< no name of a parameter begins with it

std::string textOf(double value) {
    char room[64];
    return {room, std::to_chars(room, room + sizeof room, value).ptr};
}

template <class T>
bool numberOf(std::string_view text, T& number) {
    const auto end = text.data() + text.size();
    return !text.empty() && std::from_chars(text.data(), end, number).ptr == end;
}

/// Takes the next line off.
std::string_view lineOf(std::string_view& text) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

} // namespace

std::string StateText::write(const char* format) const {
    std::string text = std::string(format) + std::string(version) + "\n" + std::string(programKey) +
                       std::to_string(program) + "\n";
    for (const auto& [name, value] : values) text += name + " " + textOf(value) + "\n";
    for (const auto& [name, path] : files)
        text.append(1, fileMark).append(name).append(" ").append(path).append("\n");
    return text + "\n" + own;
}

std::optional<StateText> StateText::read(const std::string& text, const char* format) {
    std::string_view rest = text;
    if (lineOf(rest) != std::string(format) + std::string(version)) return std::nullopt;
    StateText state;
    const std::string_view head = lineOf(rest);
    if (!head.starts_with(programKey) || !numberOf(head.substr(programKey.size()), state.program))
        return std::nullopt;
    for (std::string_view line = lineOf(rest); !line.empty(); line = lineOf(rest)) {
        const size_t gap = line.find(' ');
        double value = 0.0;
        if (gap != std::string_view::npos && line.front() == fileMark) {
            state.files.emplace_back(line.substr(1, gap - 1), line.substr(gap + 1));
            continue;
        }
        if (gap == std::string_view::npos || !numberOf(line.substr(gap + 1), value))
            return std::nullopt;
        state.values.emplace_back(line.substr(0, gap), value);
    }
    state.own = rest;
    return state;
}
