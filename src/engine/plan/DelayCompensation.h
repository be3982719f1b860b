#pragma once

class CComp;
class COutputChannel;

/// Latency, in frames, of the path that ends at channel `ch` of `c`: that of the component, of its
/// running inserts, and the longest before it. A path that is switched off or frozen has none.
///
/// A component that is met again on its own path (cables in a loop), and one more than 256 cables
/// back, counts 0. What a component reports counts from 0 to 2^20. Graph holder.
int sumDelay(CComp* c, COutputChannel* ch);
