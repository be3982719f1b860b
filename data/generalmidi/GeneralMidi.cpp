#include "data/generalmidi/GeneralMidi.h"

#include "base/CStream.h"
#include "base/Paths.h"
#include "instruments/CSampler.h"
#include "tools/soundtable/SoundProbe.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string_view>

namespace gm {

namespace {

constexpr double chordLufs = -17.0, lowNoteLufs = -20.0;

factory::Program rowOf(const Family& family, const Program& program, float level) {
    return {.name = program.name,
            .family = family.name,
            .words = program.words,
            .patches = program.patches,
            .level = level,
            .reverbMs = 1800,
            .echo = {0.4f, 3, 4, 1, 2}};
}

} // namespace

std::vector<Family> allFamilies() {
    std::vector<Family> all;
    for (const auto& some : {keys(), strings(), winds(), synths(), percussion()})
        all.insert(all.end(), some.begin(), some.end());
    for (Family& family : all)
        for (Program& program : family.programs)
            program.patches =
                evened(program.name, followed(setApart(program.name, program.patches)));
    return all;
}

/// In hundredths, so that the last digit of a measurement changes no file.
float evenLevel(CQV* host, const Family& family, const Program& program) {
    const bool low = std::string_view(family.name) == "Bass";
    const auto make = [&](CQV* root, CSampler* owner) {
        return factory::buildProgram(root, owner, rowOf(family, program, 0.7f));
    };
    const soundtable::ProbeNote note = {low ? 36 : soundtable::chordKey, 100};
    const double lufs = loudnessOf(soundtable::playNote(host, make, note));
    const double wanted = 0.7 * std::pow(10.0, ((low ? lowNoteLufs : chordLufs) - lufs) / 40.0);
    const int key = low ? note.key : 60;
    float loudest = 0.0f;
    for (const Patch& p : program.patches)
        if (p.lowKey <= key && key <= p.hiKey) loudest = std::max(loudest, p.volume);
    return std::min(std::round(float(wanted) * 100.0f) / 100.0f, 1.0f / loudest);
}

CSynthProg* buildGmProgram(CQV* host, CSampler* sampler, const Family& family,
                           const Program& program, float level) {
    return factory::buildProgram(host, sampler, rowOf(family, program, level));
}

bool writeSoundSet(CQV* host, const CStr& folder) {
    int number = 0;
    for (const Family& family : allFamilies()) {
        const CStr inside = addSep(folder) + family.name;
        if (!createDir(inside)) return false;
        for (const Program& program : family.programs) {
            char name[80];
            std::snprintf(name, sizeof name, "%03d %s.qvs", ++number, program.name);
            CSampler sampler(host);
            const std::unique_ptr<CSynthProg> made(
                buildGmProgram(host, &sampler, family, program, evenLevel(host, family, program)));
            CMemoryStream out;
            sampler.writeToStream(&out, made.get());
            CFileStream file(addSep(inside) + name, 1);
            if (!file.isOpen() || file.write(out.data, int(out.getPos())) != int(out.getPos()) ||
                !file.flush())
                return false;
        }
    }
    return true;
}

} // namespace gm
