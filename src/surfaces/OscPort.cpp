#include "surfaces/OscPort.h"

#include "base/CStr.h"
#include "base/Numbers.h"

#include <arpa/inet.h>
#include <lo/lo.h>

namespace {

void ignoreError(int, const char*, const char*) {
}

/// `user` is where the taker stands.
int handle(const char* path, const char* types, lo_arg** args, int count, lo_message, void* user) {
    const OscPort::Take* take = *static_cast<const OscPort::Take**>(user);
    std::vector<double> numbers;
    for (int i = 0; i < count; i++) {
        const auto type = static_cast<lo_type>(types[i]);
        if (lo_is_numerical_type(type))
            numbers.push_back(double(lo_hires_val(type, args[i])));
        else if (type == LO_TRUE || type == LO_FALSE)
            numbers.push_back(type == LO_TRUE);
    }
    if (take && (count == 0 || !numbers.empty())) (*take)(path, numbers);
    return 0;
}

} // namespace

OscPort::OscPort() = default;
OscPort::~OscPort() = default;

void OscPort::Close::operator()(void* server) const {
    lo_server_free(server);
}

void OscPort::Free::operator()(void* address) const {
    lo_address_free(static_cast<lo_address>(address));
}

/// What is to come later comes at once: nothing is kept for a sender.
OscPort::Server OscPort::open(const char* port, const Take** take) {
    Server made(lo_server_new_with_proto(port, LO_UDP, ignoreError));
    if (!made) return nullptr;
    lo_server_enable_queue(made.get(), 0, 1);
    lo_server_add_method(made.get(), nullptr, nullptr, handle, take);
    return made;
}

bool OscPort::listen(int port) {
    server.reset();
    if (port > 0) server = open(asStr(port).asChar(), &taking);
    return port <= 0 || server;
}

bool OscPort::sendTo(const CStr& address) {
    target.reset();
    const std::string text = address.trim().asChar();
    if (text.empty()) return true;
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos) return false;
    std::string host = text.substr(0, colon);
    if (host == "localhost") host = "127.0.0.1";
    in_addr number{};
    const int port = asInt(std::strtod(text.c_str() + colon + 1, nullptr));
    if (inet_pton(AF_INET, host.c_str(), &number) != 1 || port < 1 || port > 65535) return false;
    target.reset(lo_address_new(host.c_str(), asStr(port).asChar()));
    return target != nullptr;
}

void OscPort::serve(const Take& take) {
    taking = &take;
    for (int i = 0; server && i < mostPackets; i++)
        if (lo_server_recv_noblock(server.get(), 0) <= 0) break;
    taking = nullptr;
}

void OscPort::send(const std::string& path, const OscValue& value) const {
    auto* to = static_cast<lo_address>(target.get());
    if (!to) return;
    if (const int* number = std::get_if<int>(&value))
        lo_send(to, path.c_str(), "i", *number);
    else if (const float* share = std::get_if<float>(&value))
        lo_send(to, path.c_str(), "f", double(*share));
    else
        lo_send(to, path.c_str(), "s", std::get<std::string>(value).c_str());
}

void OscPort::read(const unsigned char* bytes, size_t size, const Take& take) {
    static const Take* taker = nullptr;
    static const Server reader = open(nullptr, &taker);
    std::vector<unsigned char> copy(bytes, bytes + size);
    taker = &take;
    if (reader && size > 0) lo_server_dispatch_data(reader.get(), copy.data(), size);
    taker = nullptr;
}
