#include "FuzzHost.h"

#include "surfaces/OscPort.h"

// Packets of Open Sound Control: any bytes are read as one, and what they say is done to a song and
// told back.

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    CQV* host = fuzzHost();
    Osc osc(host, {[] { return static_cast<CComp*>(nullptr); }, [](const std::string&) {}});
    OscPort::read(data, size, [&](const std::string& path, const std::vector<double>& numbers) {
        osc.receive(path, numbers);
    });
    playBlocks(host, 1);
    osc.idle([](const std::string&, const OscValue&) {});
    host->stop(); // while it records no step is taken back
    takeAllBack(host);
    return 0;
}
