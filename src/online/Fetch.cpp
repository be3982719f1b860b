#include "online/Fetch.h"

#include <cstdio>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace {

struct Clean {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, Clean>;

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
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, web);
    curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, web);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, long(coming.limits.redirects));
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, long(coming.limits.stallSeconds));
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(coming.limits.bytes));
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, write);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &coming);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, progress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &coming);
    return resultOf(curl_easy_perform(handle), coming);
}

} // namespace

OnlineResult fetchFile(const std::string& url, const std::string& path, const FetchLimits& limits,
                       const OnlineWatch& watch) {
    static std::once_flag begun;
    std::call_once(begun, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    const Handle handle(curl_easy_init());
    if (!handle) return OnlineResult::unreachable;
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (!file) return OnlineResult::notWritten;
    Coming coming{file, limits, watch};
    OnlineResult result = fetchInto(handle.get(), url, coming);
    if (std::fclose(file) != 0 && result == OnlineResult::good) result = OnlineResult::notWritten;
    if (result != OnlineResult::good) ::unlink(path.c_str());
    return result;
}
