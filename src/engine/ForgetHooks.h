#pragma once

class CObject;
class CQV;

/// Ends everything in the graph that refers to `object` or to something in it: voices, play
/// pointers, markers. Called on the interface thread with the graph held and the workers parked,
/// before `object` is freed; frees nothing itself.
using ForgetHook = void (*)(CQV*, CObject* object);

/// A folder above enters its own once, at start-up; entering it again does nothing.
void enterForgetHook(ForgetHook hook);

/// Has maps, cables and all who entered a hook let go of `object`. Graph held, workers parked.
void forgetObject(CQV* host, CObject* object);
/// The maps alone: those that lead to `object` lose their target. Graph holder.
void forgetMaps(CQV* host, const CObject* object);
