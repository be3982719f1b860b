#pragma once

#include "surfaces/Osc.h"

#include <memory>

class CStr;

/// Where messages of Open Sound Control come from and go to, by UDP. Interface thread.
class OscPort {
public:
    static constexpr int mostPackets = 500; ///< of one `serve`; the system keeps or drops the rest

    using Take = std::function<void(const std::string& path, const std::vector<double>& numbers)>;

    OscPort();
    ~OscPort();
    OscPort(const OscPort&) = delete;
    OscPort& operator=(const OscPort&) = delete;

    /// Listens at a port, 0 none. False when it is taken.
    bool listen(int port);
    /// Sends to "192.168.1.20:9000" or "localhost:9000", empty for none. False when that is no
    /// address: names are not looked up, since that may take its time.
    bool sendTo(const CStr& address);
    bool sends() const { return target != nullptr; }

    void serve(const Take& take); ///< hands on what has come
    void send(const std::string& path, const OscValue& value) const;
    /// Reads one packet as if it had come; for this `listen` need not be called.
    static void read(const unsigned char* bytes, size_t size, const Take& take);

private:
    struct Close {
        void operator()(void* server) const;
    };
    struct Free {
        void operator()(void* address) const;
    };
    using Server = std::unique_ptr<void, Close>;

    static Server open(const char* port, const Take** take);

    const Take* taking = nullptr; ///< while `serve` runs
    Server server;                ///< null: not listening
    std::unique_ptr<void, Free> target;
};
