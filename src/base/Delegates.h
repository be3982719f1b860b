#pragma once

#include "base/Geometry.h"

class CGraphic;
class CObject;
class CStr;

/// A call into a member function of some object. Made with `new` where things are wired up, and
/// owned by whoever receives it; the target has to outlive it.
template <class R, class... Args>
class Delegate {
public:
    Delegate() = default;
    virtual ~Delegate() = default;
    Delegate(const Delegate&) = delete;
    Delegate& operator=(const Delegate&) = delete;

    virtual R operator()(Args... args) = 0;
};

/// Something changed or was clicked. Also deferred work: the argument then comes as the sender.
class COnChange : public Delegate<void, CObject*> {};
/// Sender, surface, area to paint.
class COnPaint : public Delegate<void, CObject*, CGraphic*, CRect> {};
/// Sender, x, y, buttons and modifiers.
class COnMouse : public Delegate<void, CObject*, int, int, int> {};
/// Sender, x, y, wheel in both directions, modifiers. True when it was used.
class COnWheel : public Delegate<bool, CObject*, int, int, int, int, int> {};
/// Sender, key, which may be changed, modifiers. True when it was used.
class COnKey : public Delegate<bool, CObject*, int&, int> {};
/// Sender, the text to fill, index.
class COnGetText : public Delegate<void, CObject*, CStr&, int> {};
class CEvent : public Delegate<void, void*> {};

/// The form of a delegate that binds a member function of `T`, whose first argument, the sender, is
/// known to be an `S`.
template <class Base, class T, class S, class R, class... Args>
class BoundDelegate : public Base {
public:
    using Member = R (T::*)(S*, Args...);

    BoundDelegate(T* object, Member function) : target(object), member(function) {}
    R operator()(CObject* sender, Args... args) override {
        return (target->*member)(static_cast<S*>(sender), args...);
    }

private:
    T* target;
    Member member;
};

template <class T, class S = CObject>
class _COnChange : public BoundDelegate<COnChange, T, S, void> {
public:
    _COnChange(T* object, void (T::*function)(S*))
        : BoundDelegate<COnChange, T, S, void>(object, function) {}
};
template <class T, class S = CObject>
class _COnPaint : public BoundDelegate<COnPaint, T, S, void, CGraphic*, CRect> {
public:
    _COnPaint(T* object, void (T::*function)(S*, CGraphic*, CRect))
        : BoundDelegate<COnPaint, T, S, void, CGraphic*, CRect>(object, function) {}
};
template <class T, class S = CObject>
class _COnMouse : public BoundDelegate<COnMouse, T, S, void, int, int, int> {
public:
    _COnMouse(T* object, void (T::*function)(S*, int, int, int))
        : BoundDelegate<COnMouse, T, S, void, int, int, int>(object, function) {}
};
template <class T, class S = CObject>
class _COnWheel : public BoundDelegate<COnWheel, T, S, bool, int, int, int, int, int> {
public:
    _COnWheel(T* object, bool (T::*function)(S*, int, int, int, int, int))
        : BoundDelegate<COnWheel, T, S, bool, int, int, int, int, int>(object, function) {}
};
template <class T, class S = CObject>
class _COnKey : public BoundDelegate<COnKey, T, S, bool, int&, int> {
public:
    _COnKey(T* object, bool (T::*function)(S*, int&, int))
        : BoundDelegate<COnKey, T, S, bool, int&, int>(object, function) {}
};
template <class T, class S = CObject>
class _COnGetText : public BoundDelegate<COnGetText, T, S, void, CStr&, int> {
public:
    _COnGetText(T* object, void (T::*function)(S*, CStr&, int))
        : BoundDelegate<COnGetText, T, S, void, CStr&, int>(object, function) {}
};
template <class T>
class _CEvent : public CEvent {
public:
    using Member = void (T::*)(void*);

    _CEvent(T* object, Member function) : target(object), member(function) {}
    void operator()(void* argument) override { (target->*member)(argument); }

private:
    T* target;
    Member member;
};
