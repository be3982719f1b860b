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

/// The form of a delegate that binds a member function of `T`.
template <class Base, class T, class R, class... Args>
class BoundDelegate : public Base {
public:
    using Member = R (T::*)(Args...);

    BoundDelegate(T* object, Member function) : target(object), member(function) {}
    R operator()(Args... args) override { return (target->*member)(args...); }

private:
    T* target;
    Member member;
};

template <class T>
class _COnChange : public BoundDelegate<COnChange, T, void, CObject*> {
public:
    using BoundDelegate<COnChange, T, void, CObject*>::BoundDelegate;
};
template <class T>
class _COnPaint : public BoundDelegate<COnPaint, T, void, CObject*, CGraphic*, CRect> {
public:
    using BoundDelegate<COnPaint, T, void, CObject*, CGraphic*, CRect>::BoundDelegate;
};
template <class T>
class _COnMouse : public BoundDelegate<COnMouse, T, void, CObject*, int, int, int> {
public:
    using BoundDelegate<COnMouse, T, void, CObject*, int, int, int>::BoundDelegate;
};
template <class T>
class _COnWheel : public BoundDelegate<COnWheel, T, bool, CObject*, int, int, int, int, int> {
public:
    using BoundDelegate<COnWheel, T, bool, CObject*, int, int, int, int, int>::BoundDelegate;
};
template <class T>
class _COnKey : public BoundDelegate<COnKey, T, bool, CObject*, int&, int> {
public:
    using BoundDelegate<COnKey, T, bool, CObject*, int&, int>::BoundDelegate;
};
template <class T>
class _COnGetText : public BoundDelegate<COnGetText, T, void, CObject*, CStr&, int> {
public:
    using BoundDelegate<COnGetText, T, void, CObject*, CStr&, int>::BoundDelegate;
};
template <class T>
class _CEvent : public BoundDelegate<CEvent, T, void, void*> {
public:
    using BoundDelegate<CEvent, T, void, void*>::BoundDelegate;
};
