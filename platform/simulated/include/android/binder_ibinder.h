// The simulated platform's stand-in for the device's binder object header.
#pragma once

#include <android/binder_status.h>

/// A counted reference to a service; platform/simulated/binder.cc defines it.
struct AIBinder;

/// Is told when the process of a service dies.
struct AIBinder_DeathRecipient;

typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);

extern "C" {

/// Adds a strong reference. Null is ignored.
void AIBinder_incStrong(AIBinder* binder);

/// Drops one strong reference; the last one frees the binder. Null is ignored.
void AIBinder_decStrong(AIBinder* binder);

/// Whether the service is in another process.
bool AIBinder_isRemote(const AIBinder* binder);

/// False for null, and once the process of the service has died.
bool AIBinder_isAlive(const AIBinder* binder);

/// `STATUS_OK` or, of a service whose process has died, `STATUS_DEAD_OBJECT`. Unlike on a device it
/// does not wait for the process.
binder_status_t AIBinder_ping(AIBinder* binder);

/// The recipient's owner deletes it after its links are over. `on_binder_died` is called on the
/// thread that lets the process die.
[[nodiscard]] AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
    AIBinder_DeathRecipient_onBinderDied on_binder_died);
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);

/// The recipient is called with `cookie` once when the service's process dies. A service in the
/// host's own process has no such death: `STATUS_INVALID_OPERATION`. One that has died already:
/// `STATUS_DEAD_OBJECT`.
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie);

/// `STATUS_NAME_NOT_FOUND` when there is no such link.
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie);

}  // extern "C"
