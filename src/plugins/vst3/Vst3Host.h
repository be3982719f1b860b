#pragma once

#include "plugins/vst3/Vst3Abi.h"

#include <cstring>
#include <vector>

/// The three functions of every object, for one that lives as long as its owner lets it, whoever
/// still holds it. `Base` is the interface that it answers to.
template <class Base>
class Vst3Owned : public Base {
public:
    vst3::Result query(const uint8_t* wanted, void** found) override {
        *found = nullptr;
        const auto is = [wanted](const vst3::Uid& id) {
            return std::memcmp(wanted, id.data(), id.size()) == 0;
        };
        if (is(vst3::Unknown::iid) || is(Base::iid)) *found = static_cast<Base*>(this);
        return *found ? vst3::ok : vst3::noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }

protected:
    ~Vst3Owned() = default;
};

/// What a VST 3 plug-in is told of its host, and the messages that its halves send each other.
class Vst3Application final : public Vst3Owned<vst3::HostApplication> {
public:
    vst3::Result name(int16_t* text) override;
    vst3::Result create(uint8_t* classId, uint8_t* interfaceId, void** made) override;
};

/// A stream of bytes in memory.
class Vst3Stream final : public Vst3Owned<vst3::Stream> {
public:
    std::vector<char> bytes;

    vst3::Result read(void* to, int32_t count, int32_t* done) override;
    vst3::Result write(void* from, int32_t count, int32_t* done) override;
    vst3::Result seek(int64_t offset, int32_t from, int64_t* reached) override;
    vst3::Result tell(int64_t* at) override;
    void rewind() { place = 0; }

private:
    static constexpr int64_t longest = 1 << 30;
    int64_t place = 0;
};
