#include "online/Uploader.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "online/OnlineJob.h"
#include "online/UploadInterface.h"

#include <dlfcn.h>

namespace {

constexpr int pauseMs = 5;

int askWatch(void* follower, double done) {
    return (*static_cast<const OnlineWatch*>(follower))(done) ? 1 : 0;
}

/// As the add-on is called: it only asks.
void* asFollower(const OnlineWatch& watch) {
    return const_cast<OnlineWatch*>(&watch);
}

} // namespace

Uploader::Uploader(const CStr& file, const CStr& folder) : path(file), keep(folder) {
}

Uploader::~Uploader() {
    if (service) calls->close(service);
    if (library) dlclose(library);
}

std::unique_ptr<Uploader> Uploader::ofUser() {
    const CStr user = addSep(getUserFolder());
    const CStr file = user + "add-ons/upload/upload.so";
    if (user.empty() || !fileExists(file)) return nullptr;
    return std::make_unique<Uploader>(file, user + "upload");
}

bool Uploader::load() {
    return service || (createDir(keep) && open());
}

bool Uploader::open() {
    using Entry = const SondravaUpload* (*)(int);
    if (!library) library = dlopen(path.asChar(), RTLD_NOW | RTLD_LOCAL);
    const auto entry =
        library ? reinterpret_cast<Entry>(dlsym(library, "sondravaUpload")) : nullptr;
    calls = entry ? entry(sondravaUploadVersion) : nullptr;
    if (!calls || calls->version != sondravaUploadVersion) return false;
    service = calls->open(keep.asChar());
    return service != nullptr;
}

OnlineResult Uploader::await(std::function<OnlineResult(const OnlineWatch& watch)> work) const {
    OnlineJob job(std::move(work));
    for (job.start(); !job.finished(); asSleep(pauseMs))
        if (goOn && !goOn(job.done)) job.cancel();
    if (goOn) goOn(job.done);
    return job.result();
}

CSoundCloudAddOn::Connection Uploader::connect() {
    int state = sondravaRefused;
    if (!load()) return Connection::refused;
    await([&](const OnlineWatch& watch) {
        state = calls->connect(service, askWatch, asFollower(watch));
        return OnlineResult::good;
    });
    return state == sondravaConnected   ? Connection::connected
           : state == sondravaNeedsCode ? Connection::needsCode
                                        : Connection::refused;
}

bool Uploader::sendFile(const CStr& file, const CStr& name) {
    return load() && await([&](const OnlineWatch& watch) {
                         return calls->sendFile(service, file.asChar(), name.asChar(), askWatch,
                                                asFollower(watch)) == 1
                                    ? OnlineResult::good
                                    : OnlineResult::unreachable;
                     }) == OnlineResult::good;
}

void Uploader::disconnect() {
    if (load()) calls->disconnect(service);
}

void Uploader::setCode(const CStr& code) {
    if (load()) calls->setCode(service, code.asChar());
}

void Uploader::setParam(const CStr& key, const CStr& value) {
    if (load()) calls->setParam(service, key.asChar(), value.asChar());
}

CStr Uploader::param(const CStr& key) {
    return load() ? CStr(calls->param(service, key.asChar())) : CStr();
}
