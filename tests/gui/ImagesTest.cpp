#include "TestPng.h"
#include "TestServer.h"

#include "base/CStream.h"
#include "gui/CGraphic.h"
#include "gui/CRLE.h"
#include "gui/Colours.h"
#include "gui/Images.h"
#include "gui/Scale.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int red = 0xff0000, blue = 0x0000ff;

using Pixels = std::vector<uint32_t>;

/// Colours and opacities of every kind.
Pixels mixture(int count) {
    Pixels pixels;
    for (int i = 0; i < count; i++) {
        const uint32_t opacity = i % 4 == 0 ? 255 : uint32_t(i * 37 % 256);
        pixels.push_back(uint32_t(i * 2654435761U & 0xffffff) | opacity << 24);
    }
    return pixels;
}

/// What a pixel over a ground of (40, 100, 200) has to become.
int overGround(uint32_t pixel) {
    const int ground[] = {40, 100, 200}, a = int(pixel >> 24);
    int mixed[3];
    for (int i = 0; i < 3; i++)
        mixed[i] = int(pixel >> (8 * i) & 255) * a / 255 + (255 - a) * ground[i] / 255;
    return mixed[0] << 16 | mixed[1] << 8 | mixed[2];
}
constexpr int ground = 40 << 16 | 100 << 8 | 200;

std::unique_ptr<CBitmap> groundBitmap(int width, int height) {
    auto bitmap = std::make_unique<CBitmap>(width, height);
    bitmap->graphic->fillRect(ground, bitmap->getRect());
    return bitmap;
}

std::unique_ptr<CPNG> decoded(const std::vector<uint8_t>& file) {
    CMemoryStream stream;
    stream.write(file.data(), int(file.size()));
    stream.setPos(0);
    return std::make_unique<CPNG>(&stream);
}

void setImage(CImage2& image, int width, int height, const Pixels& pixels) {
    const std::vector<uint8_t> file = makePng(width, height, pixels);
    image.mode = imagePng;
    image.width = width;
    image.height = height;
    image.data.write(file.data(), int(file.size()));
}

} // namespace

/// Every pixel of a PNG is mixed by the formula, cut to the bitmap, on servers with and without
/// shared memory; a widened picture repeats its last column. At 16 bits nothing is drawn.
TEST(CPNGTest, IsCompositedPixelByPixel) {
    struct Case {
        std::vector<std::string> options;
        bool drawn;
    };
    const Case cases[] = {
        {{}, true}, {{"-extension", "MIT-SHM"}, true}, {{"-screen", "0", "640x480x16"}, false}};
    const int wide = 9, high = 7;
    const Pixels pixels = mixture(wide * high);
    for (const Case& c : cases) {
        const TestServer server(c.options);
        setenv("DISPLAY", server.display.c_str(), 1);
        wantedScale = lowestScale;
        CApp app;
        ASSERT_TRUE(app.open());
        const auto png = decoded(makePng(wide, high, pixels));
        ASSERT_EQ(png->valid, 1);
        const auto bitmap = groundBitmap(11, 5); // wider and lower than the picture
        const Shot before = Shot(*bitmap);
        png->width = 10;
        png->draw(bitmap->graphic.get());
        const Shot now = Shot(*bitmap);
        for (int y = 0; y < 5; y++)
            for (int x = 0; x < 11; x++) {
                const int source = y * wide + std::min(x, wide - 1);
                const bool covered = c.drawn && x < 10;
                EXPECT_EQ(now.at(x, y),
                          covered ? overGround(pixels[size_t(source)]) : before.at(x, y))
                    << x << ", " << y;
            }
    }
}

/// Files that end early, have any bit turned, or claim to be huge do no harm and take no memory.
TEST(CPNGTest, HostileFilesAreRefused) {
    std::vector<uint8_t> file = makePng(20, 20, mixture(400));
    for (size_t length = 0; length < file.size() - 12; length++) // 12: the closing chunk
        EXPECT_EQ(decoded({file.begin(), file.begin() + ptrdiff_t(length)})->valid, 0) << length;
    for (size_t at = 0; at < file.size(); at++) {
        file[at] ^= uint8_t(1 << at % 8);
        const auto png = decoded(file);
        EXPECT_TRUE(!png->valid || (png->width == 20 && png->height == 20)) << at;
        file[at] ^= uint8_t(1 << at % 8);
    }
    for (const auto& [w, h] : {std::pair{9000, 1}, {1, 9000}, {4097, 4096}})
        EXPECT_EQ(decoded(makePng(w, h, Pixels(size_t(w) * size_t(h))))->valid, 0) << w;
    EXPECT_EQ(decoded(makePng(8192, 2, Pixels(8192 * 2)))->valid, 1);
}

TEST_F(GuiTest, RunsKeepAPictureButForItsLastPixel) {
    const int wide = 6, high = 5;
    Pixels pixels = mixture(wide * high);
    for (size_t i = 8; i < 15; i++) pixels[i] = 0xff00ffff;
    const auto png = decoded(makePng(wide, high, pixels));
    CRLE rle;
    png->rle(&rle);
    const auto bitmap = groundBitmap(8, 8);
    rle.draw(bitmap.get());
    const Shot now = Shot(*bitmap);
    for (int i = 0; i < wide * high - 1; i++) {
        uint32_t stored = pixels[size_t(i)];
        if (stored >> 24 < 255) stored = (stored & 0xffffff) | (stored >> 24) / 32 * 32 << 24;
        EXPECT_EQ(now.at(i % wide, i / wide), overGround(stored)) << i;
    }
    EXPECT_EQ(now.at(wide - 1, high - 1), ground);
    rle.version = 15;
    const auto clean = groundBitmap(8, 8);
    rle.draw(clean.get());
    EXPECT_EQ(Shot(*clean).count(ground), 64);
}

/// The form's oddities: nothing for one pixel, opacity in steps of 32, count 0 for 65536 pixels.
TEST(CRLETest, RunsAreWrittenAsTheFormTells) {
    CRLE rle;
    ASSERT_TRUE(rle.setSize(1, 1));
    rle.addColor(1, 2, 3, 255);
    EXPECT_EQ(rle.runCount, 0);
    ASSERT_TRUE(rle.setSize(300, 300));
    for (int i = 0; i < 65536; i++) rle.addColor(10, 20, 30, 100);
    for (int i = 65536; i < 300 * 300 + 50; i++) rle.addColor(10, 20, 31, 255);
    ASSERT_EQ(rle.runCount, 2);
    EXPECT_EQ(rle.dataSize, 4);
    EXPECT_EQ(rle.palette[1], 10U | 20U << 8 | 30U << 16 | 96U << 24);
    EXPECT_EQ(rle.runs[0], 1U << 16);
    EXPECT_EQ(rle.runs[1], 2U << 16 | (300 * 300 - 65536 - 1));
    EXPECT_FALSE(rle.setSize(8193, 1));
    EXPECT_FALSE(rle.setSize(65536, 65536)); // 0 in 32 bits
    rle.addColor(1, 2, 3, 4);
    EXPECT_EQ(rle.runCount, 0);
}

TEST_F(GuiTest, RunsThatPointNowhereDoNoHarm) {
    CRLE rle;
    rle.width = rle.height = 6;
    rle.runs = {0xffff0005U, 0x0000ffffU, 0x00000000U, 0x0001ffffU};
    rle.runCount = 1000;
    rle.palette = {0xff0000ffU};
    const auto bitmap = groundBitmap(4, 4);
    rle.draw(bitmap.get());
    EXPECT_EQ(Shot(*bitmap).count(red), 12); // without the first row, which has no colour
    for (const int size : {-6, 1 << 20}) {
        rle.width = size;
        rle.draw(bitmap.get());
    }
}

/// A picture of themes is composited once over its background, then copied or tiled, cut to the
/// rectangle and the clip, at every scale.
TEST_F(GuiTest, PicturesAreTiledOverTheirBackground) {
    for (const int percent : {100, 150, 200}) {
        reopen(percent);
        CImage2 back, front;
        setImage(back, 2, 2, Pixels(4, 0xff000000U | 200U)); // (200, 0, 0)
        setImage(front, 8, 8, Pixels(64, 0x80000000U));      // half black
        front.backImage = &back;
        back.backImage = &front; // a ring ends
        front.tiled = true;
        const auto bitmap = groundBitmap(40, 30);
        CGraphic* g = bitmap->graphic.get();
        {
            const ClipScope scope(g, asRect(3, 2, 31, 28));
            front.draw(g, asRect(1, 1, 100, 18));
        }
        const int mixed = asColor((255 - 128) * 200 / 255, 0, 0);
        const CRect shown = toDevice(asRect(4, 3, 31, 20));
        Shot now = Shot(*bitmap);
        EXPECT_EQ(now.boundsOf(mixed), shown) << percent;
        EXPECT_EQ(now.count(mixed), shown.width() * shown.height()) << percent;
        EXPECT_EQ(g->setClip(CRect()), CRect());
        front.tiled = false;
        g->fillRect(blue, bitmap->getRect());
        front.draw(g, asRect(5, 5, 9, 100));
        now = Shot(*bitmap);
        EXPECT_EQ(now.boundsOf(mixed), toDevice(asRect(5, 5, 9, 13))) << percent;
        front.cacheImage();
        EXPECT_EQ(front.getCache()->width, 8);
        front.reset();
        EXPECT_EQ(front.bitmap, nullptr);
    }
}

TEST_F(GuiTest, PicturesOfBadFilesAreNotDrawn) {
    char name[] = "/tmp/sondrava-picture-XXXXXX.png";
    close(mkstemps(name, 4));
    const std::vector<uint8_t> file = makePng(5, 4, mixture(20));
    const auto bitmap = groundBitmap(10, 10);
    for (const size_t length : {file.size(), file.size() / 2, size_t(0)}) {
        CFileStream(name, 1).write(file.data(), int(length));
        CImage2 image;
        image.open(name);
        EXPECT_EQ(image.mode, imagePng);
        EXPECT_EQ(image.getWidth(), length == file.size() ? 5 : 0);
        EXPECT_EQ(image.getSize(), int(length));
        image.setWidth(1 << 30); // what a theme file may tell
        image.draw(bitmap->graphic.get(), bitmap->getRect());
        image.cacheImage();
        EXPECT_EQ(image.getCache(), nullptr);
        EXPECT_EQ(Shot(*bitmap).count(ground), 100);
    }
    unlink(name);
    CImageChunk missing;
    missing.open("/nowhere/picture.bmp");
    EXPECT_EQ(missing.mode, imageNone);
    EXPECT_TRUE(missing.id == "picture");
}
