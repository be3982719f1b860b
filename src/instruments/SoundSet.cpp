#include "instruments/SoundSet.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/Paths.h"
#include "instruments/CSampler.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int programs = 128;
constexpr int numberDigits = 3;

/// Files that carry no number of the set are left out.
void listFamily(const CStr& folder, const CStr& family, std::vector<SetProgram>& all) {
    CStringList files;
    const CStr inside = addSep(folder) + family;
    if (!readDir(inside, ".qvs", nullptr, &files, true)) return;
    for (int i = 0; i < files.getCount(); i++) {
        const CStr file = files.get(i);
        const int number = std::atoi(file.asChar()) - 1;
        if (number < 0 || number >= programs) continue;
        const CStr name = changeFileExt(file.sub(numberDigits + 1, -1), "");
        all.push_back({number, name, family, addSep(inside) + file});
    }
}

} // namespace

CStr soundSetFolder() {
    return extractFilePath(asAppname()) + "sounds";
}

std::vector<SetProgram> listSoundSet(const CStr& folder) {
    std::vector<SetProgram> all;
    CStringList families;
    if (!readDir(folder, "", &families, nullptr, true)) return all;
    for (int i = 0; i < families.getCount(); i++) listFamily(folder, families.get(i), all);
    std::ranges::stable_sort(all, {}, &SetProgram::number);
    return all;
}

bool readPrograms(CSampler* sampler, const CStr& path) {
    CFileStream file(path, 0);
    if (!file.isOpen()) return false;
    sampler->read(&file, int(file.getSize()));
    return sampler->getProg() != nullptr;
}
