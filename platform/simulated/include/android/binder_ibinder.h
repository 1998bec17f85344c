// The simulated platform's stand-in for the device's binder object header.
#pragma once

/// A counted reference to a service in this process; platform/simulated/binder.cc defines it.
struct AIBinder;

extern "C" {

/// Adds a strong reference. Null is ignored.
void AIBinder_incStrong(AIBinder* binder);

/// Drops one strong reference; the last one frees the binder. Null is ignored.
void AIBinder_decStrong(AIBinder* binder);

/// False: services of the simulated platform are in this process.
bool AIBinder_isRemote(const AIBinder* binder);

/// True for every binder that is not null.
bool AIBinder_isAlive(const AIBinder* binder);

}  // extern "C"
