#include "base/CStream.h"
#include "gui/CBitmap.h"
#include "gui/CPNG.h"
#include "gui/CRLE.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

// Pictures of any bytes, drawn on a bitmap in memory: a PNG file, which is also turned into runs,
// and runs as they come, after a head of width, height and number of colours.

namespace {

constexpr int side = 64;

void drawRuns(const unsigned char* data, std::size_t size, CBitmap& canvas) {
    struct Head {
        int width, height, colors;
    } head;
    if (size < sizeof head + sizeof(uint32_t)) return;
    std::memcpy(&head, data, sizeof head);
    std::vector<uint32_t> words((size - sizeof head) / sizeof(uint32_t));
    std::memcpy(words.data(), data + sizeof head, words.size() * sizeof(uint32_t));
    const auto colors = std::size_t(head.colors & 0xffff) % (words.size() + 1);
    CRLE rle;
    rle.width = head.width;
    rle.height = head.height;
    rle.palette.assign(words.begin(), words.begin() + long(colors));
    rle.runs.assign(words.begin() + long(colors), words.end());
    rle.runCount = head.colors;
    if (int64_t(rle.width) * rle.height > 1 << 20) return; // only slow
    rle.draw(&canvas);
}

void drawPng(const unsigned char* data, std::size_t size, CBitmap& canvas) {
    CMemoryStream stream;
    stream.write(data, int(size));
    stream.setPos(0);
    CPNG png(&stream);
    png.draw(&canvas);
    png.width += 3;
    png.draw(&canvas);
    if (int64_t(png.width) * png.height > 1 << 20) return;
    CRLE rle;
    png.rle(&rle);
    rle.draw(&canvas);
    if (png.valid && rle.runCount > png.width * png.height) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    CBitmap canvas(side, side);
    drawRuns(data, size, canvas);
    drawPng(data, size, canvas);
    return 0;
}
