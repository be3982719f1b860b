#include "notes/TransformPresets.h"

#include "base/Paths.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string presetFile() {
    const CStr folder = getUserFolder();
    return folder.empty() ? std::string() : std::string(folder.asChar()) + "/transforms";
}

} // namespace

/// Lines of kind, values and name; what is damaged or out of range is passed over.
void TransformPresets::read() {
    std::ifstream file(presetFile());
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        Preset p{{}, 0, {}};
        words >> p.kind;
        for (int& value : p.values) words >> value;
        std::string name;
        std::getline(words >> std::ws, name);
        const auto shapes = transformShapes();
        if (words.fail() || name.empty() || p.kind < 0 || p.kind >= int(shapes.size())) continue;
        for (size_t i = 0; i < p.values.size(); i++) {
            const TransformValue& v = shapes[size_t(p.kind)].values[i];
            p.values[i] = std::clamp(p.values[i], v.least, v.most);
        }
        p.name = name.c_str();
        presets.push_back(p);
    }
}

bool TransformPresets::write() const {
    std::ofstream file(presetFile());
    for (const Preset& p : presets) {
        file << p.kind;
        for (const int value : p.values) file << ' ' << value;
        file << ' ' << p.name.asChar() << '\n';
    }
    file.close();
    return bool(file);
}

bool TransformPresets::store(const Preset& preset) {
    std::erase_if(presets, [&](const Preset& p) { return p.name == preset.name; });
    presets.push_back(preset);
    return write();
}

bool TransformPresets::remove(const CStr& name) {
    std::erase_if(presets, [&](const Preset& p) { return p.name == name; });
    return write();
}
