#include "tools/RenderOptions.h"

#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "instruments/FactoryPrograms.h"
#include "sequencer/render/CRender.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// The number that `text` is, within the limits.
bool number(const char* text, double low, double high, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    return end != text && *end == 0 && value >= low && value <= high;
}

constexpr double maxTicks = double(1 << 30);
constexpr double maxTail = 3600.0;
const char* const untilSilent = "auto";

void storeTail(RenderOptions& options, double seconds) {
    options.tailMs = asRound(seconds * 1000.0);
}

/// An option that takes a number: its name, limits, and where the number goes.
struct NumberOption {
    const char* name;
    double low, high;
    bool whole;
    void (*store)(RenderOptions&, double);
};

const NumberOption numberOptions[] = {
    {"--rate", 8000, 192000, true, [](RenderOptions& o, double v) { o.rate = int(v); }},
    {"--block", 1, 16384, true, [](RenderOptions& o, double v) { o.block = int(v); }},
    {"--workers", 0, 63, true, [](RenderOptions& o, double v) { o.workers = int(v); }},
    {"--factory", 0, factoryCount - 1, true,
     [](RenderOptions& o, double v) { o.factory = int(v); }},
    {"--bits", 16, 32, true, [](RenderOptions& o, double v) { o.bits = int(v); }},
    {"--bitrate", 32, 320, true, [](RenderOptions& o, double v) { o.bitrate = int(v); }},
    {"--start", 0, maxTicks, false, [](RenderOptions& o, double v) { o.start = v; }},
    {"--length", 0, maxTicks, false, [](RenderOptions& o, double v) { o.length = v; }},
    {"--tail", 0, maxTail, false, storeTail},
};

const NumberOption* findNumber(const char* name) {
    for (const NumberOption& option : numberOptions)
        if (std::strcmp(option.name, name) == 0) return &option;
    return nullptr;
}

bool readNumber(const NumberOption& option, const char* text, RenderOptions& options) {
    if (option.store == storeTail && std::strcmp(text, untilSilent) == 0) {
        options.tailMs = tailAuto;
        return true;
    }
    double value = 0.0;
    if (!number(text, option.low, option.high, value)) return false;
    if (option.whole && value != std::floor(value)) return false;
    option.store(options, value);
    return true;
}

bool takeName(const char* text, RenderOptions& options) {
    if (options.input.empty() && !options.demo)
        options.input = text;
    else if (options.output.empty())
        options.output = text;
    else
        return false;
    return true;
}

/// A project keeps the places of its files, which have to hold in any other folder too.
void makeFull(CStr& path) {
    if (path.empty() || path[0] == folderSeparator) return;
    std::error_code failed;
    const fs::path full = fs::absolute(fs::path(path.asChar()), failed);
    path = (fs::weakly_canonical(full.parent_path(), failed) / full.filename()).c_str();
}

bool canWrite(const RenderOptions& options) {
    if (options.tracks) return true;
    const CStr ext = extractFileExt(options.output).lowerCase();
    return ext == ".wav" || ext == ".aif" || ext == ".mp3" || ext == ".mid";
}

bool checked(const RenderOptions& options, CStr& error) {
    if (options.bits != 16 && options.bits != 24 && options.bits != 32)
        error = "--bits takes 16, 24 or 32";
    else if (options.output.empty() &&
             (options.save.empty() || options.input.empty() != options.demo))
        error = usage();
    else if (!options.output.empty() && !canWrite(options))
        error = options.output + ": can only write .wav, .aif, .mp3 and .mid";
    return error.empty();
}

} // namespace

const char* usage() {
    return "usage: sondrava-render [--rate N] [--block N] [--workers N] [--bits 16|24|32] "
           "[--factory N] [--start "
           "TICKS] "
           "[--length TICKS] [--tail SECONDS|auto] [--mono] [--bitrate N] [--tracks] [--stats] "
           "[--save "
           "FILE.qv] "
           "INPUT.qv|INPUT.mid|--demo|--waltz [OUTPUT.wav|.aif|.mp3|.mid]";
}

bool parseOptions(int argc, char** argv, RenderOptions& options, CStr& error) {
    for (int i = 1; i < argc; i++) {
        const char* word = argv[i];
        if (const NumberOption* option = findNumber(word)) {
            const char* text = ++i < argc ? argv[i] : "";
            if (!readNumber(*option, text, options)) {
                error = CStr(word) + ": not a fitting number: " + text;
                return false;
            }
        } else if (std::strcmp(word, "--save") == 0) {
            options.save = ++i < argc ? argv[i] : "";
            if (options.save.empty()) error = "--save: name missing";
            if (options.save.empty()) return false;
        } else if (std::strcmp(word, "--mono") == 0) {
            options.chs = 1;
        } else if (std::strcmp(word, "--tracks") == 0) {
            options.tracks = true;
        } else if (std::strcmp(word, "--stats") == 0) {
            options.stats = true;
        } else if (std::strcmp(word, "--demo") == 0) {
            options.demo = true;
        } else if (std::strcmp(word, "--waltz") == 0) {
            options.demo = options.waltz = true;
        } else if (word[0] == '-' || !takeName(word, options)) {
            error = word[0] == '-' ? CStr("unknown option ") + word : CStr(usage());
            return false;
        }
    }
    if (options.demo && options.output.empty()) {
        options.output = options.input;
        options.input = "";
    }
    for (CStr* path : {&options.input, &options.output, &options.save}) makeFull(*path);
    return checked(options, error);
}
