#pragma once

#include "online/Catalogue.h"

#include <arpa/inet.h>
#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <sodium.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

/// A server on the loopback that answers as it is told, whatever that is.
class LoopbackServer {
public:
    struct Answer {
        std::string head, body;
        bool stalls = false; ///< it says no more, and does not hang up
    };

    LoopbackServer() {
        sockaddr_in at{};
        at.sin_family = AF_INET;
        at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof at;
        bind(listening, reinterpret_cast<sockaddr*>(&at), length);
        listen(listening, 16);
        getsockname(listening, reinterpret_cast<sockaddr*>(&at), &length);
        address = "http://127.0.0.1:" + std::to_string(ntohs(at.sin_port)) + "/";
        thread = std::thread([this] { serve(); });
    }
    ~LoopbackServer() {
        shutdown(listening, SHUT_RDWR);
        thread.join();
        for (const int left : open) close(left);
        close(listening);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    void set(const std::string& path, const Answer& answer) {
        const std::lock_guard hold(lock);
        answers["/" + path] = answer;
    }
    void set(const std::string& path, const std::string& body) {
        set(path, {"200 OK\r\nContent-Length: " + std::to_string(body.size()), body});
    }
    /// The content of the latest request for a path.
    std::string received(const std::string& path) {
        const std::lock_guard hold(lock);
        return contents["/" + path];
    }
    std::string address;
    std::atomic<int> asked{0};

private:
    static std::string readHead(int peer) {
        std::string head;
        for (char c; head.find("\r\n\r\n") == std::string::npos && read(peer, &c, 1) == 1;)
            head += c;
        return head;
    }
    static std::string readContent(int peer, const std::string& head) {
        const std::string word = "Content-Length: ";
        const size_t at = head.find(word);
        std::string content(at == head.npos ? 0 : std::stoul(head.substr(at + word.size())), 0);
        size_t have = 0;
        for (ssize_t n; have < content.size() &&
                        (n = read(peer, content.data() + have, content.size() - have)) > 0;)
            have += size_t(n);
        content.resize(have);
        return content;
    }
    void serve() {
        for (int peer; (peer = accept(listening, nullptr, nullptr)) >= 0;) {
            const std::string head = readHead(peer);
            const size_t from = head.find(' ') + 1;
            const std::string path = head.substr(from, head.find(' ', from) - from);
            const std::string content = readContent(peer, head);
            const Answer answer = take(path, content);
            const std::string all =
                "HTTP/1.1 " + answer.head + "\r\nConnection: close\r\n\r\n" + answer.body;
            send(peer, all.data(), all.size(), MSG_NOSIGNAL);
            asked++;
            if (answer.stalls)
                open.push_back(peer);
            else
                close(peer);
        }
    }
    Answer take(const std::string& path, const std::string& content) {
        const std::lock_guard hold(lock);
        contents[path] = content;
        const auto found = answers.find(path);
        return found == answers.end() ? Answer{"404 None", ""} : found->second;
    }
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
    std::mutex lock;
    std::map<std::string, Answer> answers;
    std::map<std::string, std::string> contents;
    std::vector<int> open;
    std::thread thread;
};

/// Whose signature a list bears.
struct Signer {
    Signer() {
        EXPECT_GE(sodium_init(), 0);
        crypto_sign_keypair(key.data(), secret.data());
    }
    std::string sign(const std::string& text) const {
        std::string signature(crypto_sign_BYTES, 0);
        crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                             secret.data());
        return signature;
    }
    OnlineKey key{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret{};
};
