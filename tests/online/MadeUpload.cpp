// An add-on for uploads as others make them: it asks for a code, and puts songs on a web server,
// whose address stands in the file "server" of its folder.
#include "online/UploadInterface.h"

#include <cstdio>
#include <curl/curl.h>
#include <fstream>
#include <iterator>
#include <string>

namespace {

struct Service {
    std::string folder, code, account, sharing = "public", url, error;
};
struct Following {
    SondravaWatch watch;
    void* follower;
};

Service* as(void* service) {
    return static_cast<Service*>(service);
}

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void* open(const char* folder) {
    auto* service = new Service;
    service->folder = folder;
    service->account = content(service->folder + "/account");
    return service;
}

void close(void* service) {
    delete as(service);
}

int connect(void* service, SondravaWatch watch, void* follower) {
    Service* s = as(service);
    if (!watch(follower, 0.0)) return sondravaRefused;
    if (!s->account.empty()) return sondravaConnected;
    if (s->code.empty()) return sondravaNeedsCode;
    const bool right = s->code == "right";
    s->code.clear();
    s->error = right ? "" : "Nobody has that code";
    if (!right) return sondravaRefused;
    s->account = "Clara";
    std::ofstream(s->folder + "/account") << s->account;
    return sondravaConnected;
}

void disconnect(void* service) {
    as(service)->account.clear();
    std::remove((as(service)->folder + "/account").c_str());
}

void setCode(void* service, const char* code) {
    as(service)->code = code;
}

void setParam(void* service, const char* key, const char* value) {
    if (std::string(key) == "sharing") as(service)->sharing = value;
}

const char* param(void* service, const char* key) {
    const std::string word = key;
    const Service* s = as(service);
    return word == "account"   ? s->account.c_str()
           : word == "sharing" ? s->sharing.c_str()
           : word == "url"     ? s->url.c_str()
           : word == "error"   ? s->error.c_str()
                               : "";
}

int progress(void* to, curl_off_t, curl_off_t, curl_off_t total, curl_off_t now) {
    const auto* f = static_cast<Following*>(to);
    return f->watch(f->follower, total > 0 ? double(now) / double(total) : 0.0) ? 0 : 1;
}

int sendFile(void* service, const char* path, const char* name, SondravaWatch watch,
             void* follower) {
    Service* s = as(service);
    Following following{watch, follower};
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return 0;
    std::fseek(file, 0, SEEK_END);
    const long bytes = std::ftell(file);
    std::rewind(file);
    CURL* handle = curl_easy_init();
    s->url = content(s->folder + "/server") + s->sharing + "/" + name;
    curl_slist* headers = curl_slist_append(nullptr, "Expect:");
    curl_easy_setopt(handle, CURLOPT_URL, s->url.c_str());
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle, CURLOPT_READDATA, file);
    curl_easy_setopt(handle, CURLOPT_INFILESIZE_LARGE, curl_off_t(bytes));
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, progress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &following);
    const CURLcode result = curl_easy_perform(handle);
    s->error = result == CURLE_OK ? "" : "The service takes no more songs";
    curl_slist_free_all(headers);
    curl_easy_cleanup(handle);
    std::fclose(file);
    return result == CURLE_OK && watch(follower, 1.0);
}

} // namespace

const SondravaUpload* sondravaUpload(int version) {
    static const SondravaUpload table{sondravaUploadVersion,
                                      open,
                                      close,
                                      connect,
                                      disconnect,
                                      setCode,
                                      sendFile,
                                      setParam,
                                      param};
    return version == sondravaUploadVersion ? &table : nullptr;
}
