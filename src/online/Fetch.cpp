#include "online/Fetch.h"

#include "base/LibraryCall.h"

#include <cstdio>
#include <curl/curl.h>
#include <dlfcn.h>
#include <memory>
#include <unistd.h>

namespace {

/// What is used of libcurl. It is loaded when something is asked for: with the thirty libraries
/// that it needs it would make each start slower, for most of them in vain.
struct Curl {
    decltype(&curl_global_init) begin = nullptr;
    decltype(&curl_easy_init) open = nullptr;
    decltype(&curl_easy_setopt) set = nullptr;
    decltype(&curl_easy_perform) perform = nullptr;
    decltype(&curl_easy_cleanup) close = nullptr;
    const bool good;

    Curl() : good(find(dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL))) {}

private:
    bool find(void* library) {
        return findCall(library, "curl_global_init", begin) &&
               findCall(library, "curl_easy_init", open) &&
               findCall(library, "curl_easy_setopt", set) &&
               findCall(library, "curl_easy_perform", perform) &&
               findCall(library, "curl_easy_cleanup", close) &&
               begin(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    }
};

const Curl& curl() {
    static const Curl calls;
    return calls;
}

struct Close {
    void operator()(CURL* handle) const { curl().close(handle); }
};
using Handle = std::unique_ptr<CURL, Close>;

/// What has come of one answer.
struct Coming {
    std::FILE* file;
    const FetchLimits& limits;
    const OnlineWatch& watch;
    int64_t bytes = 0;
    bool tooLong = false, unwritten = false, cancelled = false;
};

size_t write(char* bytes, size_t size, size_t count, void* to) {
    auto& coming = *static_cast<Coming*>(to);
    const size_t length = size * count;
    coming.bytes += int64_t(length);
    coming.tooLong = coming.bytes > coming.limits.bytes;
    if (coming.tooLong) return 0;
    coming.unwritten = std::fwrite(bytes, 1, length, coming.file) != length;
    return coming.unwritten ? 0 : length;
}

int progress(void* to, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    auto& coming = *static_cast<Coming*>(to);
    const double most = double(std::max<int64_t>(coming.limits.bytes, 1));
    coming.cancelled = coming.watch && !coming.watch(double(coming.bytes) / most);
    return coming.cancelled ? 1 : 0;
}

OnlineResult resultOf(CURLcode code, const Coming& coming) {
    if (coming.cancelled) return OnlineResult::cancelled;
    if (coming.unwritten) return OnlineResult::notWritten;
    if (coming.tooLong || code == CURLE_PARTIAL_FILE || code == CURLE_FILESIZE_EXCEEDED)
        return OnlineResult::damaged;
    if (code == CURLE_OPERATION_TIMEDOUT) return OnlineResult::stalled;
    return code == CURLE_OK ? OnlineResult::good : OnlineResult::unreachable;
}

OnlineResult fetchInto(CURL* handle, const std::string& url, Coming& coming) {
    constexpr const char* web = "http,https";
    constexpr long connectSeconds = 20;
    const auto set = curl().set;
    set(handle, CURLOPT_URL, url.c_str());
    set(handle, CURLOPT_PROTOCOLS_STR, web);
    set(handle, CURLOPT_REDIR_PROTOCOLS_STR, web);
    set(handle, CURLOPT_FOLLOWLOCATION, 1L);
    set(handle, CURLOPT_MAXREDIRS, long(coming.limits.redirects));
    set(handle, CURLOPT_FAILONERROR, 1L);
    set(handle, CURLOPT_NOSIGNAL, 1L);
    set(handle, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    set(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(handle, CURLOPT_LOW_SPEED_TIME, long(coming.limits.stallSeconds));
    set(handle, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(coming.limits.bytes));
    set(handle, CURLOPT_WRITEFUNCTION, write);
    set(handle, CURLOPT_WRITEDATA, &coming);
    set(handle, CURLOPT_NOPROGRESS, 0L);
    set(handle, CURLOPT_XFERINFOFUNCTION, progress);
    set(handle, CURLOPT_XFERINFODATA, &coming);
    return resultOf(curl().perform(handle), coming);
}

} // namespace

OnlineResult fetchFile(const std::string& url, const std::string& path, const FetchLimits& limits,
                       const OnlineWatch& watch) {
    const Handle handle(curl().good ? curl().open() : nullptr);
    if (!handle) return OnlineResult::unreachable;
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (!file) return OnlineResult::notWritten;
    Coming coming{file, limits, watch};
    OnlineResult result = fetchInto(handle.get(), url, coming);
    if (std::fclose(file) != 0 && result == OnlineResult::good) result = OnlineResult::notWritten;
    if (result != OnlineResult::good) ::unlink(path.c_str());
    return result;
}
