#pragma once

#include "engine/CComp.h"
#include "engine/COutputChannel.h"
#include "engine/CSend.h"
#include "engine/Cables.h"

#include <type_traits>

/// A class as const as another.
template <class T, class As>
using ConstAs = std::conditional_t<std::is_const_v<As>, const T, T>;

/// Objects as what their `category` and `type` say that they are: null for what is something else,
/// and for nothing.
template <class O>
ConstAs<CComp, O>* asComp(O* object) {
    return object && object->category == categoryComp ? static_cast<ConstAs<CComp, O>*>(object)
                                                      : nullptr;
}

template <class T, class O>
ConstAs<T, O>* objectAs(O* object, int category, int type) {
    const bool is = object && object->category == category && object->type == type;
    return is ? static_cast<ConstAs<T, O>*>(object) : nullptr;
}
/// A component as one of class `T`.
template <class T, class O>
auto* compAs(O* object) {
    return objectAs<T>(object, categoryComp, T::ownType);
}
template <class O>
auto* asStrip(O* object) {
    return objectAs<COutputChannel>(object, categoryChannel, channelOutput);
}
template <class O>
auto* asInput(O* object) {
    return objectAs<CInputChannel>(object, categoryChannel, channelInput);
}
template <class O>
auto* asSend(O* object) {
    return objectAs<CSend>(object, 0, typeSend);
}
template <class O>
auto* asMidiCable(O* object) {
    return objectAs<CMIDICable>(object, categoryCable, cableMidi);
}
template <class O>
auto* asAudioCable(O* object) {
    return objectAs<CAudioCable>(object, categoryCable, cableAudio);
}
