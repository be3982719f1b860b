#pragma once

#include <png.h>

#include <cstdint>
#include <vector>

/// A PNG file of such pixels: R, G, B, opacity from the low byte up.
inline std::vector<uint8_t> makePng(int width, int height, const std::vector<uint32_t>& pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = unsigned(width);
    image.height = unsigned(height);
    image.format = PNG_FORMAT_RGBA;
    png_alloc_size_t bytes = 0;
    png_image_write_get_memory_size(image, bytes, 0, pixels.data(), 0, nullptr);
    std::vector<uint8_t> file(bytes);
    png_image_write_to_memory(&image, file.data(), &bytes, 0, pixels.data(), 0, nullptr);
    return file;
}
