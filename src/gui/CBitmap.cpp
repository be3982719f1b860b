#include "gui/CBitmap.h"

#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Scale.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstring>

namespace {

void detachMemory(void* address) {
    if (address) shmdt(address);
}

/// Memory for an image that both sides see. The segment is marked for removal as soon as both are
/// attached, so that a crash leaves nothing behind.
bool attachMemory(Display* display, XShmSegmentInfo& info, const XImage& image) {
    const size_t bytes = size_t(image.bytes_per_line) * size_t(image.height);
    info.shmid = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (info.shmid < 0) return false;
    void* address = shmat(info.shmid, nullptr, 0);
    info.shmaddr = address == reinterpret_cast<void*>(-1) ? nullptr : static_cast<char*>(address);
    info.readOnly = False;
    xerror = 0;
    const bool attached = info.shmaddr && XShmAttach(display, &info) && syncSucceeded();
    shmctl(info.shmid, IPC_RMID, nullptr);
    if (!attached) detachMemory(info.shmaddr);
    return attached;
}

} // namespace

CBitmap::CBitmap(int w, int h)
    : width(asMinMax(w, 1, toLogical(farthest))), height(asMinMax(h, 1, toLogical(farthest))) {
    if (!liveDisplay())
        graphic = std::make_unique<CGraphic>(0);
    else if (!createShared())
        createPlain();
    graphic->canvas = this;
    graphic->width = width;
    graphic->height = height;
    graphic->clipRight = width;
    graphic->clipBottom = height;
}

CBitmap::~CBitmap() {
    graphic.reset();
    Display* display = liveDisplay();
    if (display && pixmap) XFreePixmap(display, pixmap);
    if (display && shared) {
        XShmSegmentInfo info{};
        info.shmseg = segment;
        XShmDetach(display, &info);
        XSync(display, False);
    }
    detachMemory(address);
}

bool CBitmap::createShared() {
    Display* display = liveDisplay();
    if (xlibColorDepth < 24 || !XShmQueryExtension(display)) return false;
    int major, minor;
    Bool pixmaps = False;
    if (!XShmQueryVersion(display, &major, &minor, &pixmaps) || !pixmaps) return false;
    XShmSegmentInfo info{};
    XImage* image = XShmCreateImage(display, DefaultVisual(display, xConnection().screen),
                                    unsigned(xlibColorDepth), ZPixmap, nullptr, &info,
                                    unsigned(deviceWidth()), unsigned(deviceHeight()));
    if (!image) return false;
    if (attachMemory(display, info, *image)) {
        xerror = 0;
        pixmap = XShmCreatePixmap(display, xConnection().root, info.shmaddr, &info,
                                  unsigned(deviceWidth()), unsigned(deviceHeight()),
                                  unsigned(xlibColorDepth));
        shared = syncSucceeded();
        if (!shared) {
            XShmDetach(display, &info);
            detachMemory(info.shmaddr);
            pixmap = 0;
        }
    }
    if (shared) {
        address = info.shmaddr;
        segment = info.shmseg;
        depth = image->bits_per_pixel;
        graphic = std::make_unique<CGraphic>(pixmap);
        graphic->pixels = static_cast<unsigned char*>(address);
        graphic->stride = image->bytes_per_line;
        graphic->byteOrder = image->byte_order;
        graphic->depth = depth;
    }
    XDestroyImage(image);
    return shared;
}

void CBitmap::createPlain() {
    Display* display = liveDisplay();
    pixmap = XCreatePixmap(display, xConnection().root, unsigned(deviceWidth()),
                           unsigned(deviceHeight()), unsigned(xlibColorDepth));
    graphic = std::make_unique<CGraphic>(pixmap);
}

bool CBitmap::lockPixels() {
    Display* display = liveDisplay();
    if (!display) return lockMemory();
    if (shared) {
        XSync(display, False);
        return depth == 32;
    }
    XImage* image = XGetImage(display, pixmap, 0, 0, unsigned(deviceWidth()),
                              unsigned(deviceHeight()), AllPlanes, ZPixmap);
    if (!image) return false;
    const bool usable = image->bits_per_pixel == 32;
    if (usable) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(image->data);
        copied.assign(bytes, bytes + size_t(image->bytes_per_line) * size_t(deviceHeight()));
        graphic->pixels = copied.data();
        graphic->stride = image->bytes_per_line;
        graphic->byteOrder = image->byte_order;
        graphic->depth = depth = 32;
    }
    XDestroyImage(image);
    return usable;
}

/// Without a display all that there is of the bitmap are its pixels.
bool CBitmap::lockMemory() {
    if (graphic->pixels) return true;
    const size_t row = size_t(deviceWidth()) * sizeof(uint32_t);
    copied.resize(row * size_t(deviceHeight()));
    graphic->pixels = copied.data();
    graphic->stride = int(row);
    graphic->depth = depth = 32;
    return true;
}

void CBitmap::unlockPixels() {
    Display* display = liveDisplay();
    if (shared || copied.empty() || !display) return;
    graphic->pixels = nullptr;
    XImage* image =
        XCreateImage(display, DefaultVisual(display, xConnection().screen),
                     unsigned(xlibColorDepth), ZPixmap, 0, reinterpret_cast<char*>(copied.data()),
                     unsigned(deviceWidth()), unsigned(deviceHeight()), 32, graphic->stride);
    const CRect clip = graphic->setClip(CRect());
    XPutImage(display, pixmap, graphic->gc, image, 0, 0, 0, 0, unsigned(deviceWidth()),
              unsigned(deviceHeight()));
    graphic->setClip(clip);
    image->data = nullptr; // ours, and not the library's to free
    XDestroyImage(image);
    copied.clear();
}

int CBitmap::deviceWidth() const {
    return toDevice(width);
}

int CBitmap::deviceHeight() const {
    return toDevice(height);
}

std::unique_ptr<CBitmap> flipBitmap(CBitmap* source) {
    auto turned = std::make_unique<CBitmap>(source->height, source->width);
    const int last = turned->deviceHeight() - 1;
    if (source->lockPixels() && turned->lockPixels())
        for (int y = 0; y < source->deviceHeight(); y++)
            for (int x = 0; x < source->deviceWidth(); x++)
                turned->graphic->setDevicePixel(y, last - x, source->graphic->getDevicePixel(x, y));
    turned->unlockPixels();
    source->unlockPixels();
    return turned;
}
