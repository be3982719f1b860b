#include "tools/soundtable/SoundPicture.h"

#include <algorithm>
#include <fstream>

namespace soundtable {

namespace {

constexpr int columns = 8, cell = 4, gap = 16, textHeight = 16;
constexpr int sliceWidth = 3 * cell;
constexpr int wide = sliceCount * sliceWidth, high = bandCount * cell / 2;
constexpr float darkest = 0.0f, lightest = -50.0f; ///< dB
constexpr float faintest = 0.04f;

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    return out;
}

void drawShape(std::ostream& out, const Shape& shape, int x, int y) {
    for (int slice = 0; slice < sliceCount; slice++)
        for (int band = 0; band < bandCount; band++) {
            const float db = shape[size_t(slice * bandCount + band)];
            const float dark = std::clamp((db - lightest) / (darkest - lightest), 0.0f, 1.0f);
            if (dark < faintest) continue;
            out << "<rect x='" << x + slice * sliceWidth << "' y='"
                << y + high - (band + 1) * cell / 2 << "' width='" << sliceWidth << "' height='"
                << cell / 2 << "' fill-opacity='" << dark << "'/>\n";
        }
}

} // namespace

bool writePicture(const char* path, const std::vector<Figures>& bank) {
    std::ofstream out(path);
    out.precision(2);
    const int rows = (int(bank.size()) + columns - 1) / columns;
    out << "<svg xmlns='http://www.w3.org/2000/svg' width='" << gap + columns * (wide + gap)
        << "' height='" << gap + rows * (high + textHeight + gap)
        << "'>\n<rect width='100%' height='100%' fill='#f7f8fa'/>\n"
        << "<g font-family='sans-serif' font-size='11' fill='#0b4a8f'>\n";
    for (size_t i = 0; i < bank.size(); i++) {
        const int x = gap + int(i) % columns * (wide + gap);
        const int y = gap + int(i) / columns * (high + textHeight + gap);
        out << "<rect x='" << x << "' y='" << y << "' width='" << wide << "' height='" << high
            << "' fill='#ffffff' stroke='#c3c8d0'/>\n";
        drawShape(out, bank[i].shapes.back(), x, y);
        out << "<text x='" << x << "' y='" << y + high + 12 << "' fill='#1c1f23'>"
            << escaped(bank[i].name) << "</text>\n";
    }
    out << "</g></svg>\n";
    return bool(out.flush());
}

} // namespace soundtable
