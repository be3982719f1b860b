#include "driver/Module.h"
#include "driver/Servers.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <jack/jack.h>
#include <jack/midiport.h>

namespace {

/// Another program on the server, with a port of each kind.
class Peer {
public:
    jack_client_t* client;
    jack_port_t *audioIn, *audioOut, *midiIn, *midiOut;
    std::vector<float> heard; ///< reserved; what does not fit is not kept
    struct Message {
        uint32_t frame;
        std::vector<unsigned char> bytes;
        bool operator==(const Message&) const = default;
    };
    std::vector<Message> toSend, received;
    std::atomic<bool> sending{false}, listening{false};

    Peer() : client(jack_client_open("peer", JackNoStartServer, nullptr)) {
        const auto port = [&](const char* name, const char* type, unsigned long flags) {
            return jack_port_register(client, name, type, flags, 0);
        };
        audioIn = port("audio_in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
        audioOut = port("audio_out", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
        midiIn = port("midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput);
        midiOut = port("midi_out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
        heard.reserve(1 << 20);
        const auto block = [](jack_nframes_t n, void* peer) {
            static_cast<Peer*>(peer)->process(n);
            return 0;
        };
        jack_set_process_callback(client, block, this);
        jack_activate(client);
    }
    ~Peer() { jack_client_close(client); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    bool join(const char* from, const char* to) const {
        return comes([&] { return jack_connect(client, from, to) == 0; });
    }

private:
    void process(jack_nframes_t n) {
        const auto* in = static_cast<const float*>(jack_port_get_buffer(audioIn, n));
        if (listening && heard.size() + n <= heard.capacity())
            heard.insert(heard.end(), in, in + n);
        auto* out = static_cast<float*>(jack_port_get_buffer(audioOut, n));
        std::fill_n(out, n, 0.25f);
        void* events = jack_port_get_buffer(midiOut, n);
        jack_midi_clear_buffer(events);
        if (sending.exchange(false)) {
            for (const Message& m : toSend)
                jack_midi_event_write(events, m.frame, m.bytes.data(), m.bytes.size());
        }
        events = jack_port_get_buffer(midiIn, n);
        jack_midi_event_t event;
        for (uint32_t i = 0; jack_midi_event_get(&event, events, i) == 0; ++i)
            received.push_back({event.time, {event.buffer, event.buffer + event.size}});
    }
};

class Jack : public testing::Test {
protected:
    JackServer server;
    Module module;
    int jack() const { return module.device("JACK"); }
};

} // namespace

TEST_F(Jack, IsListedFirstAndTakesTheBlockButNotTheRate) {
    EXPECT_EQ(jack(), 0);
    for (const int frames : {64, 256, 1000, 1024}) {
        ASSERT_TRUE(module.open(jack(), frames, 96000));
        EXPECT_EQ(module(aamFrames), frames);
        EXPECT_EQ(module.rate(), 44100.0f);
        ASSERT_TRUE(module.waitBlocks(3));
        EXPECT_EQ(module.frames, frames);
        EXPECT_EQ(module(aamNeedsReopen), 0) << "its own change of the block is no cause";
        EXPECT_EQ(module.name(aamAudioOutName, 1), "playback_2");
        module.close();
    }
}

/// In freewheel mode the server waits for everybody, so not one sample may be missing.
TEST_F(Jack, PlaysEverySampleAndRecordsFromItsPorts) {
    constexpr float step = 0x1p-22f;
    int64_t played = 0;
    std::atomic<float> recorded{0};
    module.program = [&](const Block& b) {
        for (long i = 0; i < b.frames; ++i) {
            b.outs[0][i] = 0.0f;
            b.outs[1][i] = float(++played % (1 << 22)) * step;
        }
        recorded = b.ins[0][b.frames - 1];
        return 0L;
    };
    ASSERT_TRUE(module.open(jack(), 64, 44100));
    Peer peer;
    ASSERT_TRUE(peer.join("Sondrava:out_2", "peer:audio_in"));
    ASSERT_TRUE(peer.join("peer:audio_out", "Sondrava:in_1"));
    jack_set_freewheel(peer.client, 1);
    ASSERT_TRUE(module.waitBlocks(10)); // those under way when the mode changed are over
    peer.listening = true;
    ASSERT_TRUE(module.waitBlocks(5000));
    EXPECT_EQ(recorded, 0.25f);
    peer.listening = false; // what follows is played against the clock
    jack_set_freewheel(peer.client, 0);
    jack_deactivate(peer.client);
    module.close();
    ASSERT_GT(peer.heard.size(), 64u * 4000);
    for (size_t i = 1; i < peer.heard.size(); ++i)
        ASSERT_EQ(peer.heard[i] - peer.heard[i - 1], step) << "at sample " << i;
}

TEST_F(Jack, CarriesShortMessagesWithTheirFrames) {
    using Message = Peer::Message;
    const std::vector<Message> passing = {{0, {0x90, 60, 100}},  {17, {0xC5, 12}},
                                          {17, {0xF8}},          {18, {0xF2, 3, 4}},
                                          {200, {0xE3, 1, 127}}, {255, {0x80, 60, 0}}};
    const std::vector<std::pair<int32_t, int32_t>> expected = {
        {0, 0x643C90}, {17, 0x0CC5}, {17, 0xF8}, {18, 0x0403F2}, {200, 0x7F01E3}, {255, 0x3C80}};
    ASSERT_EQ(module.name(aamMidiInName, 0), "JACK MIDI in");
    ASSERT_EQ(module.name(aamMidiOutName, 0), "JACK MIDI out");
    module(aamMidiInEnable, 0, 1);
    module(aamMidiOutEnable, 0, 1);
    std::vector<std::pair<int32_t, int32_t>> got;
    module.program = [&](const Block& b) {
        for (int i = 0; i < b.numEvents; ++i) got.emplace_back(b.events[i].frame, b.events[i].data);
        return long(b.numEvents); // sent back
    };
    ASSERT_TRUE(module.open(jack(), 256, 44100));
    Peer peer;
    peer.toSend = passing;
    peer.toSend.insert(peer.toSend.begin() + 4, {Message{18, {0xFE}}, {99, {0xF0, 1, 2, 0xF7}}});
    ASSERT_TRUE(peer.join("peer:midi_out", "Sondrava:midi_in_1"));
    ASSERT_TRUE(peer.join("Sondrava:midi_out_1", "peer:midi_in"));
    peer.sending = true;
    ASSERT_TRUE(comes([&] { return !peer.sending; }));
    ASSERT_TRUE(module.waitBlocks(4));
    module.close();
    jack_deactivate(peer.client);

    EXPECT_EQ(got, expected);
    EXPECT_TRUE(peer.received == passing);
}

/// Messages of any length come whole: cut by the port, as the clock may cut them, and out again.
/// One that never ends, and one that is longer than any may be, are lost alone.
TEST_F(Jack, CarriesSystemExclusiveMessages) {
    const auto make = [](size_t length) {
        std::vector<unsigned char> bytes(length);
        for (size_t i = 0; i < length; ++i) bytes[i] = (i * 7 + i / 128) & 127;
        bytes.front() = 0xF0;
        bytes.back() = 0xF7;
        return bytes;
    };
    const std::vector<std::vector<unsigned char>> sent = {make(2), make(11), make(9000),
                                                          make(65536)};
    module(aamMidiInEnable, 0, 1);
    module(aamMidiOutEnable, 0, 1);
    ASSERT_TRUE(module.open(jack(), 256, 44100));
    Peer peer;
    peer.toSend = {
        {0, {0xF0, 1, 2}}, {1, {0x90, 1, 2}}, {2, {0xF0, 9, 8}},       {3, {0xF8}},
        {4, {7, 0xF8, 6}}, {5, {5, 0xF7}},    {6, {0xF0, 3, 4, 0xF7}}, {7, {1, 2, 3, 4, 0xF7}},
        {8, {0xF0, 0xF7}}};
    ASSERT_TRUE(peer.join("peer:midi_out", "Sondrava:midi_in_1"));
    ASSERT_TRUE(peer.join("Sondrava:midi_out_1", "peer:midi_in"));
    peer.sending = true;
    std::vector<unsigned char> room(aamMostMessage);
    std::vector<std::vector<unsigned char>> came;
    const auto take = [&] {
        AamMessage message{9, 9, aamMostMessage, 0, room.data()};
        if (!module(aamMessageTake, &message)) return false;
        EXPECT_TRUE(message.device == 0 && message.bytes == room.data());
        came.emplace_back(room.begin(), room.begin() + message.length);
        return true;
    };
    EXPECT_TRUE(comes([&] {
        take();
        return came.size() == 3;
    }));
    const std::vector<std::vector<unsigned char>> expected = {
        {0xF0, 9, 8, 7, 6, 5, 0xF7}, {0xF0, 3, 4, 0xF7}, {0xF0, 0xF7}};
    EXPECT_EQ(came, expected);
    EXPECT_FALSE(take());
    for (std::vector<unsigned char> bytes : sent) {
        AamMessage message{-1, 5, int32_t(bytes.size()), 0, bytes.data()};
        EXPECT_EQ(module(aamMessageSend, &message), 1) << bytes.size();
        message.device = 1;
        EXPECT_EQ(module(aamMessageSend, &message), 0) << "there is no such output";
        message.length = aamMostMessage + 1;
        EXPECT_EQ(module(aamMessageSend, &message), 0);
    }
    ASSERT_TRUE(module.waitBlocks(20));
    module.close();
    jack_deactivate(peer.client);
    std::vector<unsigned char> all, wanted;
    for (const auto& m : peer.received) all.insert(all.end(), m.bytes.begin(), m.bytes.end());
    for (const auto& bytes : sent) wanted.insert(wanted.end(), bytes.begin(), bytes.end());
    EXPECT_TRUE(all == wanted) << all.size() << " bytes of " << wanted.size();
}

TEST_F(Jack, AsksToBeReopenedWhenTheServerChangesItsBlock) {
    ASSERT_TRUE(module.open(jack(), 256, 44100));
    ASSERT_TRUE(module.waitBlocks(3));
    std::atomic<bool> other{false};
    module(aamStop);
    module.program = [&](const Block& b) {
        if (b.frames != 256) other = true;
        return 0L;
    };
    module(aamStart);
    Peer peer;
    jack_set_buffer_size(peer.client, 512);
    ASSERT_TRUE(comes([&] { return module(aamNeedsReopen) == 1; }));
    EXPECT_EQ(module(aamNeedsReopen), 0);
    EXPECT_FALSE(other) << "no block of a size that was not granted";
    module.close();
    ASSERT_TRUE(module.open(jack(), -1, 44100));
    EXPECT_EQ(module(aamFrames), 512);
}

TEST_F(Jack, OutlivesItsServer) {
    failWhilePlaying(module, jack(), [&] { server.kill(); });
    EXPECT_EQ(jack(), -1) << "gone from the list";
    ASSERT_TRUE(module.open(module.device("Silent clock"), 256, 44100));
    EXPECT_TRUE(module.waitBlocks(3));
}

/// What the user has joined and parted is so again when the device is opened anew, and when the
/// server, and the other program some time later, come back.
TEST_F(Jack, ConnectionsComeBack) {
    module(aamMidiOutEnable, 0, 1);
    ASSERT_TRUE(module.open(jack(), 256, 44100));
    auto peer = std::make_unique<Peer>();
    ASSERT_TRUE(peer->join("Sondrava:out_2", "peer:audio_in"));
    ASSERT_TRUE(peer->join("peer:audio_out", "Sondrava:in_1"));
    ASSERT_TRUE(peer->join("Sondrava:midi_out_1", "peer:midi_in"));
    ASSERT_EQ(jack_disconnect(peer->client, "Sondrava:out_1", "system:playback_1"), 0);
    const auto joined = [&](jack_port_t* port, const char* to) {
        return jack_port_connected_to(port, to) != 0;
    };
    const auto asBefore = [&] {
        module(aamNeedsReopen); // as the program asks all the time
        return joined(peer->audioIn, "Sondrava:out_2") && joined(peer->audioOut, "Sondrava:in_1") &&
               joined(peer->midiIn, "Sondrava:midi_out_1");
    };
    const auto speakers = [&] { // joined to, as bits
        int bits = 0;
        for (const int i : {1, 2}) {
            const std::string name = "system:playback_" + std::to_string(i);
            jack_port_t* port = jack_port_by_name(peer->client, name.c_str());
            const char** from = jack_port_get_all_connections(peer->client, port);
            if (from) bits |= i;
            jack_free(from);
        }
        return bits;
    };
    ASSERT_TRUE(comes(asBefore));
    ASSERT_TRUE(module.waitBlocks(5)); // until the server shows them to everybody
    module.close();
    ASSERT_TRUE(module.open(jack(), 128, 44100));
    EXPECT_TRUE(comes(asBefore));
    EXPECT_EQ(speakers(), 2);

    server.kill();
    ASSERT_TRUE(comes([&] { return module(aamNeedsReopen) == 1; }));
    peer.reset();
    module.close();
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(module.open(0, -1, 44100));
    const JackServer again;
    ASSERT_TRUE(comes([&] { return module.open(0, -1, 44100); }));
    module(aamNeedsReopen);
    peer = std::make_unique<Peer>();
    EXPECT_TRUE(comes(asBefore));
    EXPECT_EQ(speakers(), 2);
    module.close();
}

TEST_F(Jack, HasNoCallbackRunningOnceStopped) {
    stopWhileInside(module, jack());
}

TEST_F(Jack, ReopensAHundredTimes) {
    reopen(module, jack(), 100);
}
