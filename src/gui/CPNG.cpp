#include "gui/CPNG.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/CRLE.h"

#include <png.h>

#include <vector>

namespace {

/// What remains of a stream; empty when that is more than any picture within the limits needs.
std::vector<uint8_t> restOf(CStream* stream) {
    const int64_t bytes = stream->left();
    if (bytes <= 0 || bytes > RgbaPicture::largestBytes) return {};
    std::vector<uint8_t> rest;
    rest.resize(size_t(bytes));
    rest.resize(size_t(stream->read(rest.data(), int(bytes))));
    return rest;
}

/// The library's reader, which frees what it holds.
struct Reader {
    png_image image{};
    Reader() { image.version = PNG_IMAGE_VERSION; }
    ~Reader() { png_image_free(&image); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
};

} // namespace

CPNG::CPNG(const CStr& path) {
    CFileStream file(path, 0);
    decode(&file);
}

CPNG::CPNG(CStream* stream) {
    decode(stream);
}

void CPNG::decode(CStream* stream) {
    const std::vector<uint8_t> file = restOf(stream);
    Reader reader;
    png_image& image = reader.image;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return;
    if (!RgbaPicture::fits(image.width, image.height)) return;
    image.format = PNG_FORMAT_RGBA;
    // Not filled first: of a file that ends early, little memory is ever touched.
    std::unique_ptr<uint8_t[]> pixels(new uint8_t[PNG_IMAGE_SIZE(image)]);
    if (!png_image_finish_read(&image, nullptr, pixels.get(), 0, nullptr)) return;
    width = picture.width = int(image.width);
    height = picture.height = int(image.height);
    picture.pixels = std::move(pixels);
    valid = 1;
}

void CPNG::draw(CBitmap* target) const {
    composite(target, picture, width, height);
}

void CPNG::draw(CGraphic* target) const {
    if (target->canvas) draw(target->canvas);
}

void CPNG::rle(CRLE* target) const {
    if (!valid || !target->setSize(width, height)) return;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const uint8_t* p =
                picture.at(asMin(x, picture.width - 1), asMin(y, picture.height - 1));
            target->addColor(p[0], p[1], p[2], p[3]);
        }
}
