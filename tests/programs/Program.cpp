#include "programs/Program.h"

#include <cmath>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

std::string contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

Program::Program(const std::vector<std::string>& command) {
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    pid = fork();
    if (pid != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(open(outFile.c_str(), O_CREAT | O_WRONLY, 0600), STDOUT_FILENO);
    dup2(open(errFile.c_str(), O_CREAT | O_WRONLY, 0600), STDERR_FILENO);
    execvp(words[0], words.data());
    _exit(127);
}

Program::~Program() {
    if (!running()) return;
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

bool Program::ended() {
    if (status < 0) {
        int told = 0;
        if (waitpid(pid, &told, WNOHANG) == pid)
            status = WIFEXITED(told) ? WEXITSTATUS(told) : 128 + WTERMSIG(told);
    }
    return status >= 0;
}

int Program::wait() {
    for (int patience = 0; patience < 6; patience++)
        if (comes([this] { return ended(); })) break;
    return status;
}

namespace {

uint32_t little(const std::string& bytes, size_t at, size_t count) {
    uint32_t value = 0;
    for (size_t i = count; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

double sampleAt(const std::string& bytes, size_t at, int bits) {
    const uint32_t raw = little(bytes, at, size_t(bits) / 8);
    if (bits < 32) return double(int32_t(raw << (32 - bits))) / 2147483648.0;
    float value = 0.0f;
    std::memcpy(&value, &raw, sizeof value);
    return double(value);
}

} // namespace

Wav::Wav(const std::string& path) {
    read(path);
}

void Wav::read(const std::string& path) {
    const std::string bytes = contentOf(path);
    ASSERT_GE(bytes.size(), 44u) << path;
    ASSERT_EQ(bytes.substr(0, 4) + bytes.substr(8, 4), "RIFFWAVE") << path;
    for (size_t at = 12; at + 8 <= bytes.size(); at += 8 + little(bytes, at + 4, 4)) {
        const std::string id = bytes.substr(at, 4);
        if (id == "fmt ") {
            format = int(little(bytes, at + 8, 2));
            channels = int(little(bytes, at + 10, 2));
            rate = int(little(bytes, at + 12, 4));
            bits = int(little(bytes, at + 22, 2));
        } else if (id == "data") {
            const size_t width = size_t(bits) / 8, size = little(bytes, at + 4, 4);
            ASSERT_LE(at + 8 + size, bytes.size()) << path;
            frames = int64_t(size / width) / channels;
            for (size_t i = 0; i < size / width; i++) {
                const double v = sampleAt(bytes, at + 8 + i * width, bits);
                peak = std::max(peak, std::abs(v));
                if (i % size_t(channels) == 0) left.push_back(v);
            }
        }
    }
}
