#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

/// The way of a rendered song to the user's account at the service. An add-on to be loaded provides
/// it; where none is, songs stay on the disk. Interface thread.
class CSoundCloudAddOn : public CObject {
public:
    enum class Connection {
        connected,
        needsCode, ///< the user gets a code from the service, which goes to `setCode`
        refused,
    };
    virtual Connection connect() = 0;
    virtual void setCode(const CStr& code) = 0;
    virtual bool sendFile(const CStr& file, const CStr& name) = 0;
    virtual CStr param(const CStr& key) = 0; ///< "url": where the latest song is
};
