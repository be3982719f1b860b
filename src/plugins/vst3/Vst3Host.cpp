#include "plugins/vst3/Vst3Host.h"

#include <algorithm>
#include <map>
#include <string>
#include <variant>

using namespace vst3;

namespace {

/// The values of a message by their keys.
class Attributes final : public Vst3Owned<AttributeList> {
public:
    Result setInt(const char* key, int64_t value) override { return put(key, value); }
    Result getInt(const char* key, int64_t* value) override { return get(key, *value); }
    Result setFloat(const char* key, double value) override { return put(key, value); }
    Result getFloat(const char* key, double* value) override { return get(key, *value); }
    Result setString(const char* key, const int16_t* text) override {
        std::basic_string<int16_t> made;
        while (*text) made.push_back(*text++);
        return put(key, std::move(made));
    }
    Result getString(const char* key, int16_t* text, uint32_t bytes) override {
        std::basic_string<int16_t> found;
        const size_t room = bytes / sizeof(int16_t);
        if (room == 0 || get(key, found) != ok) return no;
        const size_t count = std::min(found.size(), room - 1);
        std::copy_n(found.begin(), count, text);
        text[count] = 0;
        return ok;
    }
    Result setBinary(const char* key, const void* data, uint32_t bytes) override {
        return put(key, std::string(static_cast<const char*>(data), bytes));
    }
    Result getBinary(const char* key, const void** data, uint32_t* bytes) override {
        const auto at = values.find(key);
        const auto* found = at == values.end() ? nullptr : std::get_if<std::string>(&at->second);
        if (!found) return no;
        *data = found->data();
        *bytes = uint32_t(found->size());
        return ok;
    }

private:
    template <class T>
    Result put(const char* key, T value) {
        values[key] = std::move(value);
        return ok;
    }
    template <class T>
    Result get(const char* key, T& value) {
        const auto at = values.find(key);
        const T* found = at == values.end() ? nullptr : std::get_if<T>(&at->second);
        if (!found) return no;
        value = *found;
        return ok;
    }

    std::map<std::string, std::variant<int64_t, double, std::basic_string<int16_t>, std::string>>
        values;
};

/// Lives as long as somebody holds it.
class SentMessage final : public Vst3Owned<Message> {
public:
    uint32_t addRef() override { return ++holders; }
    uint32_t release() override {
        const uint32_t left = --holders;
        if (left == 0) delete this;
        return left;
    }
    const char* name() override { return text.c_str(); }
    void setName(const char* to) override { text = to ? to : ""; }
    AttributeList* attributes() override { return &values; }

private:
    uint32_t holders = 1;
    std::string text;
    Attributes values;
};

bool isId(const uint8_t* id, const Uid& of) {
    return std::memcmp(id, of.data(), of.size()) == 0;
}

} // namespace

Result Vst3Application::name(int16_t* text) {
    constexpr const char* own = "Sondrava";
    for (const char* c = own; *c; c++) *text++ = *c;
    *text = 0;
    return ok;
}

Result Vst3Application::create(uint8_t* classId, uint8_t* interfaceId, void** made) {
    *made = nullptr;
    if (isId(classId, Message::iid) && isId(interfaceId, Message::iid))
        *made = static_cast<Message*>(new SentMessage);
    return *made ? ok : no;
}

Result Vst3Stream::read(void* to, int32_t count, int32_t* done) {
    const int64_t left = std::clamp<int64_t>(int64_t(bytes.size()) - place, 0, std::max(count, 0));
    std::copy_n(bytes.begin() + place, left, static_cast<char*>(to));
    place += left;
    if (done) *done = int32_t(left);
    return ok;
}

Result Vst3Stream::write(void* from, int32_t count, int32_t* done) {
    if (done) *done = 0;
    if (count < 0 || place + count > longest) return no;
    if (place + count > int64_t(bytes.size())) bytes.resize(size_t(place + count));
    std::copy_n(static_cast<const char*>(from), count, bytes.begin() + place);
    place += count;
    if (done) *done = count;
    return ok;
}

Result Vst3Stream::seek(int64_t offset, int32_t from, int64_t* reached) {
    const int64_t start = from == fromHere ? place : from == fromEnd ? int64_t(bytes.size()) : 0;
    place = std::clamp<int64_t>(start + std::clamp(offset, -longest, longest), 0,
                                int64_t(bytes.size()));
    if (reached) *reached = place;
    return ok;
}

Result Vst3Stream::tell(int64_t* at) {
    *at = place;
    return ok;
}
