#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <functional>

/// The way of a rendered song to the user's account at the service. An add-on to be loaded provides
/// it; where none is, songs stay on the disk. Interface thread.
class CSoundCloudAddOn : public CObject {
public:
    enum class Connection {
        connected,
        needsCode, ///< the user gets a code from the service, which goes to `setCode`
        refused,
    };
    /// Asked while the service is waited for, with the part that is done; false cancels. May be
    /// null.
    std::function<bool(float done)> goOn;

    virtual bool load() { return true; } ///< false: it cannot work; any number of times
    virtual Connection connect() = 0;
    virtual void disconnect() {} ///< the next `connect` is for another account
    virtual void setCode(const CStr& code) = 0;
    virtual bool sendFile(const CStr& file, const CStr& name) = 0;
    /// "sharing": "public" or "private".
    virtual void setParam(const CStr&, const CStr&) {}
    /// "url": where the latest song is. "account": whose it is, empty while not connected. "page":
    /// where to get a code. "error": why the last call failed. Empty when not known.
    virtual CStr param(const CStr& key) = 0;

    /// Connects, and gets the codes that are asked for; `needsCode` once it is given an empty one.
    Connection connectBy(const std::function<CStr()>& askCode) {
        for (;;) {
            const Connection state = connect();
            if (state != Connection::needsCode) return state;
            const CStr code = askCode();
            if (code.empty()) return state;
            setCode(code);
        }
    }
};
