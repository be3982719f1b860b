#include "shell/CommandLine.h"

#include "base/Paths.h"

CommandLine readCommandLine(const std::vector<CStr>& words) {
    CommandLine line;
    bool options = true;
    for (const CStr& word : words) {
        if (!options || word.empty() || word[0] != '-')
            line.files.push_back(absolutePath(word));
        else if (word == "--")
            options = false;
        else if (word == "--version")
            line.answer = "Sondrava " SONDRAVA_VERSION "\n";
        else if (word == "--help")
            line.answer =
                "Usage: sondrava [FILE...]\n"
                "Opens a project, or an empty one with the MIDI, audio and other files.\n";
        else
            line.mistake = CStr("sondrava: unknown option ") + word + "\n";
    }
    return line;
}
