#include "plugins/remote/MessageSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

/// Room for one descriptor beside a message.
union FileRoom {
    cmsghdr head;
    char bytes[CMSG_SPACE(sizeof(int))];
};

} // namespace

MessageSocket::MessageSocket(int file) : socket(file) {
    fcntl(socket, F_SETFL, O_NONBLOCK);
    fcntl(socket, F_SETFD, FD_CLOEXEC);
}

MessageSocket::~MessageSocket() {
    for (const Waiting& w : out)
        if (w.file >= 0) close(w.file);
    for (const int file : files) close(file);
    close(socket);
}

void MessageSocket::send(HelperMessage message) {
    if (ended) return;
    message.head.size = unsigned(message.bytes.size());
    message.head.withFile = message.file >= 0;
    Waiting made;
    made.bytes.assign(reinterpret_cast<const char*>(&message.head), sizeof message.head);
    made.bytes += message.bytes;
    if (message.file >= 0) made.file = fcntl(message.file, F_DUPFD_CLOEXEC, 0);
    out.push_back(std::move(made));
    flush();
}

void MessageSocket::flush() {
    while (!out.empty() && !ended && sendSome(out.front())) {
        if (out.front().file >= 0) close(out.front().file);
        out.pop_front();
    }
}

/// True when all of it has gone out.
bool MessageSocket::sendSome(Waiting& message) {
    iovec part{message.bytes.data() + message.sent, message.bytes.size() - message.sent};
    msghdr packet{};
    packet.msg_iov = &part;
    packet.msg_iovlen = 1;
    FileRoom room{};
    if (message.sent == 0 && message.file >= 0) {
        packet.msg_control = room.bytes;
        packet.msg_controllen = sizeof room.bytes;
        cmsghdr* head = CMSG_FIRSTHDR(&packet);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(head), &message.file, sizeof(int));
    }
    const ssize_t gone = sendmsg(socket, &packet, MSG_NOSIGNAL);
    if (gone < 0) {
        ended = errno != EAGAIN && errno != EINTR;
        return false;
    }
    message.sent += size_t(gone);
    return message.sent == message.bytes.size();
}

void MessageSocket::take() {
    char bytes[65536];
    while (!ended) {
        iovec part{bytes, sizeof bytes};
        FileRoom room{};
        msghdr packet{};
        packet.msg_iov = &part;
        packet.msg_iovlen = 1;
        packet.msg_control = room.bytes;
        packet.msg_controllen = sizeof room.bytes;
        const ssize_t come = recvmsg(socket, &packet, MSG_CMSG_CLOEXEC);
        if (come < 0) {
            ended = errno != EAGAIN && errno != EINTR;
            return;
        }
        for (cmsghdr* head = CMSG_FIRSTHDR(&packet); head; head = CMSG_NXTHDR(&packet, head)) {
            if (head->cmsg_type != SCM_RIGHTS) continue;
            int file;
            std::memcpy(&file, CMSG_DATA(head), sizeof file);
            files.push_back(file);
        }
        ended = come == 0;
        in.append(bytes, size_t(std::max<ssize_t>(come, 0)));
    }
}

std::optional<HelperMessage> MessageSocket::receive() {
    flush();
    take();
    HelperMessage message;
    const size_t headSize = sizeof message.head;
    if (in.size() < headSize) return std::nullopt;
    std::memcpy(&message.head, in.data(), headSize);
    if (message.head.size > longest) {
        ended = true;
        in.clear();
        return std::nullopt;
    }
    if (in.size() < headSize + message.head.size) return std::nullopt;
    message.bytes = in.substr(headSize, message.head.size);
    in.erase(0, headSize + message.head.size);
    if (message.head.withFile && !files.empty()) {
        message.file = files.front();
        files.pop_front();
    }
    return message;
}

void MessageSocket::wait(int ms, std::vector<pollfd> others) {
    flush();
    others.push_back({socket, short(out.empty() ? POLLIN : POLLIN | POLLOUT), 0});
    poll(others.data(), others.size(), ms);
    flush();
}
