// The simulated platform's stand-in for the device's binder object header: what the library uses of
// it.
#pragma once

/// A counted reference to a service in this process; platform/simulated/binder.cc defines it.
struct AIBinder;

extern "C" {

/// Drops one strong reference; the last one frees the binder. Null is ignored.
void AIBinder_decStrong(AIBinder* binder);

}  // extern "C"
