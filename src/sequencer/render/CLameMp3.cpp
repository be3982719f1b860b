#include "sequencer/render/CLameMp3.h"

#include "base/Numbers.h"
#include "base/Process.h"

#include <filesystem>

namespace {

/// Never to be taken for an option.
CStr absolute(const CStr& path) {
    std::error_code error;
    const auto full = std::filesystem::absolute(path.asChar(), error);
    return error ? path : CStr(full.c_str());
}

} // namespace

int CLameMp3::encode(const CStr& wav, const CStr& mp3) {
    return runProcess(modeEncode, wav, mp3);
}

int CLameMp3::decode(const CStr& mp3, const CStr& wav) {
    return runProcess(modeDecode, mp3, wav);
}

int CLameMp3::runProcess(Mode mode, const CStr& first, const CStr& second) {
    CStringList argv;
    argv.append("lame");
    if (mode == modeEncode) {
        argv.append("-b");
        argv.append(asStr(bitrate));
    } else {
        argv.append("--decode");
    }
    argv.append("--silent");
    argv.append(absolute(first));
    argv.append(absolute(second));
    return goOn ? ::runProcess(argv, goOn) : ::runProcess(argv);
}
