#include "ui/PlayFollow.h"

namespace {

constexpr int pageMargin = 16; ///< pixels before the position on a new page

} // namespace

PlayFollow::PlayFollow(CQV* host) : follows(host, "autoscroll", 1), glides(host, "glide", 0) {
}

int64_t PlayFollow::shift(bool playing, int64_t x, int width) {
    const bool seen = x >= 0 && x < width;
    if (!playing || (seen && !glides.on())) strayed = false;
    if (!playing || !follows.on() || strayed) return 0;
    if (glides.on()) return x - width / 2;
    return seen ? 0 : x - pageMargin;
}
