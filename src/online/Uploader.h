#pragma once

#include "online/Fetch.h"
#include "sequencer/render/CSoundCloudAddOn.h"

#include <functional>
#include <memory>

struct SondravaUpload;

/// The add-on for uploads that the user has, which is loaded when it is first needed. What takes
/// long runs on a thread of its own, while `goOn` is asked. Interface thread.
class Uploader : public CSoundCloudAddOn {
public:
    /// The library of the add-on, and the folder for what it keeps; made when it is loaded.
    Uploader(const CStr& library, const CStr& folder);
    ~Uploader() override;
    Uploader(const Uploader&) = delete;
    Uploader& operator=(const Uploader&) = delete;

    /// That of the user; none where there is no add-on.
    static std::unique_ptr<Uploader> ofUser();

    bool load() override;
    Connection connect() override;
    void disconnect() override;
    void setCode(const CStr& code) override;
    bool sendFile(const CStr& file, const CStr& name) override;
    void setParam(const CStr& key, const CStr& value) override;
    CStr param(const CStr& key) override;

private:
    bool open();
    OnlineResult await(std::function<OnlineResult(const OnlineWatch& watch)> work) const;

    const CStr path, keep;
    void* library = nullptr;
    const SondravaUpload* calls = nullptr; ///< the library's
    void* service = nullptr;               ///< null while the library is not loaded
};
