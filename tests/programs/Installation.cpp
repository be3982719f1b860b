#include "programs/Installation.h"

#include "support/Places.h"

#include <cstdlib>
#include <filesystem>

Installation::Installation() {
    for (const char* name : {"sondrava", "libaam.so", "libaccess.so", "libaccess-status.so"})
        std::filesystem::copy_file(builtFile(std::string("bin/") + name), folder.file(name));
    setenv("HOME", folder.file("home").c_str(), 1);
    set("");
}

void Installation::set(const std::string& more) const {
    writeFile(settings(), "[options]\nstartwith=2\n" + more);
}

ScreenServer::ScreenServer(const char* size)
    : server({"Xvfb", "-displayfd", "1", "-screen", "0", size, "-nolisten", "tcp", "-noreset"}) {
    comes([&] { return server.out().find('\n') != std::string::npos || !server.running(); });
    setenv("DISPLAY", (":" + server.out().substr(0, server.out().find('\n'))).c_str(), 1);
}
