// What a host asks to be called with when a service's process dies. Internal to the simulated
// platform.
#pragma once

#include <android/binder_ibinder.h>

struct AIBinder_DeathRecipient {
  AIBinder_DeathRecipient_onBinderDied on_binder_died;
};
