#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

// What tells apart the states of the formats.
constexpr const char *clapStateFormat = "CLAP", *vst3StateFormat = "VST 3";

/// The state of a plug-in whose format has none as one piece: its program, the values of parameters
/// by their names, its files, and what it stores itself, whatever that is.
struct StateText {
    int program = 0;
    std::vector<std::pair<std::string, double>> values;     ///< names without blanks
    std::vector<std::pair<std::string, std::string>> files; ///< paths, by names without blanks
    std::string own;

    std::string write(const char* format) const;
    /// Nothing for bytes that are none of that format.
    static std::optional<StateText> read(const std::string& text, const char* format);
};
