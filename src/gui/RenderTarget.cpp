#include "gui/RenderTarget.h"

#include "base/LibraryCall.h"
#include "gui/CBitmap.h"
#include "gui/Colours.h"
#include "gui/ServerRects.h"
#include "gui/XConnection.h"

#include <X11/extensions/Xrender.h>
#include <dlfcn.h>

#include <vector>

namespace {

/// The calls of the library, which stays loaded once it was found.
struct RenderCalls {
    decltype(&XRenderQueryExtension) query = nullptr;
    decltype(&XRenderFindVisualFormat) visualFormat = nullptr;
    decltype(&XRenderFindStandardFormat) standardFormat = nullptr;
    decltype(&XRenderCreatePicture) createPicture = nullptr;
    decltype(&XRenderFreePicture) freePicture = nullptr;
    decltype(&XRenderCreateSolidFill) solidFill = nullptr;
    decltype(&XRenderSetPictureClipRectangles) setClip = nullptr;
    decltype(&XRenderSetPictureTransform) setTransform = nullptr;
    decltype(&XRenderSetPictureFilter) setFilter = nullptr;
    decltype(&XRenderFillRectangle) fillRectangle = nullptr;
    decltype(&XRenderComposite) composite = nullptr;
    decltype(&XRenderCompositeDoublePoly) polygon = nullptr;
    decltype(&XRenderCompositeTriStrip) strip = nullptr;
    bool complete = false;

    RenderCalls() {
        void* library = dlopen("libXrender.so.1", RTLD_NOW | RTLD_LOCAL);
        complete = findCall(library, "XRenderQueryExtension", query) &&
                   findCall(library, "XRenderFindVisualFormat", visualFormat) &&
                   findCall(library, "XRenderFindStandardFormat", standardFormat) &&
                   findCall(library, "XRenderCreatePicture", createPicture) &&
                   findCall(library, "XRenderFreePicture", freePicture) &&
                   findCall(library, "XRenderCreateSolidFill", solidFill) &&
                   findCall(library, "XRenderSetPictureClipRectangles", setClip) &&
                   findCall(library, "XRenderSetPictureTransform", setTransform) &&
                   findCall(library, "XRenderSetPictureFilter", setFilter) &&
                   findCall(library, "XRenderFillRectangle", fillRectangle) &&
                   findCall(library, "XRenderComposite", composite) &&
                   findCall(library, "XRenderCompositeDoublePoly", polygon) &&
                   findCall(library, "XRenderCompositeTriStrip", strip);
    }
};

const RenderCalls& render() {
    static const RenderCalls calls;
    return calls;
}

XRenderPictFormat* screenFormat() {
    Display* display = liveDisplay();
    return render().visualFormat(display, DefaultVisual(display, xConnection().screen));
}

class ServerTarget : public RenderTarget {
public:
    ServerTarget(unsigned long drawable, XRenderPictFormat* screenPixels)
        : format(screenPixels), mask(render().standardFormat(liveDisplay(), PictStandardA8)),
          picture(render().createPicture(liveDisplay(), drawable, format, 0, nullptr)) {}
    ~ServerTarget() override {
        if (!liveDisplay()) return;
        render().freePicture(liveDisplay(), picture);
        if (source) render().freePicture(liveDisplay(), source);
    }
    void setClip(const CRect& clip) override;
    void setColor(int color, double alpha) override;
    void fill(const CRect& rect) override;
    void fillPolygon(std::span<const Point> corners) override;
    void fillStrip(std::span<const Point> points) override;
    void drawScaled(const CBitmap& bitmap, const CRect& from, const CRect& to) override;

private:
    XRenderPictFormat *format, *mask;
    Picture picture, source = None;
    XRenderColor ink{}; ///< of the source, each channel times alpha
    int colorNow = 0;
    double alphaNow = 0;
    CRect clipNow;
};

void ServerTarget::setClip(const CRect& clip) {
    if (clip == clipNow) return;
    clipNow = clip;
    const XRectangle box = serverRect(clip);
    render().setClip(liveDisplay(), picture, 0, 0, &box, 1);
}

void ServerTarget::setColor(int color, double alpha) {
    constexpr double to16Bits = 257;
    if (source && color == colorNow && alpha == alphaNow) return;
    colorNow = color;
    alphaNow = alpha;
    int r = 0, g = 0, b = 0;
    asRGB(color, &r, &g, &b);
    const auto channel = [&](int c) { return static_cast<unsigned short>(c * to16Bits * alpha); };
    ink = {channel(r), channel(g), channel(b), channel(255)};
    if (source) render().freePicture(liveDisplay(), source);
    source = render().solidFill(liveDisplay(), &ink);
}

void ServerTarget::fill(const CRect& rect) {
    const XRectangle box = serverRect(rect);
    render().fillRectangle(liveDisplay(), PictOpOver, picture, &ink, box.x, box.y, box.width,
                           box.height);
}

void ServerTarget::fillPolygon(std::span<const Point> corners) {
    std::vector<XPointDouble> points;
    for (const Point& p : corners) points.push_back({p.x, p.y});
    render().polygon(liveDisplay(), PictOpOver, source, picture, mask, 0, 0, 0, 0, points.data(),
                     int(points.size()), EvenOddRule);
}

void ServerTarget::fillStrip(std::span<const Point> points) {
    std::vector<XPointFixed> fixed;
    for (const Point& p : points) fixed.push_back({XDoubleToFixed(p.x), XDoubleToFixed(p.y)});
    render().strip(liveDisplay(), PictOpOver, source, picture, mask, 0, 0, fixed.data(),
                   int(fixed.size()));
}

void ServerTarget::drawScaled(const CBitmap& bitmap, const CRect& from, const CRect& to) {
    Display* display = liveDisplay();
    XRenderPictureAttributes attributes{};
    attributes.repeat = RepeatPad; // or edges would fade
    const Picture image =
        render().createPicture(display, bitmap.pixmap, format, CPRepeat, &attributes);
    const double across = double(from.width()) / to.width();
    const double down = double(from.height()) / to.height();
    XTransform transform{{{XDoubleToFixed(across), 0, XDoubleToFixed(from.left)},
                          {0, XDoubleToFixed(down), XDoubleToFixed(from.top)},
                          {0, 0, XDoubleToFixed(1)}}};
    render().setTransform(display, image, &transform);
    render().setFilter(display, image, FilterBilinear, nullptr, 0);
    render().composite(display, PictOpSrc, image, None, picture, 0, 0, 0, 0, to.left, to.top,
                       unsigned(to.width()), unsigned(to.height()));
    render().freePicture(display, image);
}

} // namespace

std::unique_ptr<RenderTarget> openRenderTarget(unsigned long drawable) {
    Display* display = liveDisplay();
    int event = 0, error = 0;
    if (!display || !render().complete || !render().query(display, &event, &error)) return nullptr;
    XRenderPictFormat* format = screenFormat();
    return format ? std::make_unique<ServerTarget>(drawable, format) : nullptr;
}
