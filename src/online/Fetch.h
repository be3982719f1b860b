#pragma once

#include <cstdint>
#include <functional>
#include <string>

enum class OnlineResult {
    good,
    cancelled,
    unreachable, ///< no such server, or it refuses, redirects for ever, or has no such file
    stalled,     ///< it stopped sending
    damaged,     ///< shorter or longer than was told, or not what was signed
    notWritten,  ///< the disk is full, or takes nothing there
};

/// Told the part that is done, 0 to 1; false cancels. On the thread of the call, at least once a
/// second.
using OnlineWatch = std::function<bool(double done)>;

struct FetchLimits {
    int64_t bytes;         ///< a longer answer is `damaged`
    int redirects = 5;     ///< that are followed, to the web alone
    int stallSeconds = 20; ///< without a byte
};

/// Gets a file by HTTP or HTTPS into a new file, of which nothing is left when that fails. Blocks:
/// never on the audio or interface thread.
OnlineResult fetchFile(const std::string& url, const std::string& path, const FetchLimits& limits,
                       const OnlineWatch& watch = {});
