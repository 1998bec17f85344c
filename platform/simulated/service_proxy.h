// What a host has of a stats service in a process of its own. Internal to the simulated platform.
#pragma once

#include <aidl/android/frameworks/stats/BnStats.h>

#include <atomic>
#include <memory>
#include <utility>

#include "platform/simulated/service_process.h"

namespace sensorvela::simulated {

class ServiceProxy final : public aidl::android::frameworks::stats::BnStats {
 public:
  explicit ServiceProxy(std::shared_ptr<ServiceProcess> process) : process_(std::move(process)) {}

  ServiceProcess& process() const { return *process_; }
  bool isRemote() override { return true; }
  ndk::ScopedAStatus reportVendorAtom(
      const aidl::android::frameworks::stats::VendorAtom& atom) override {
    return ndk::ScopedAStatus::fromStatus(process_->Report(atom));
  }

  // The first time that somebody makes an interface of the reference, the process says which
  // interface it has. That stays known for as long as the reference lives.
  bool knows_interface() const { return knows_interface_; }
  void KnowInterface() { knows_interface_ = true; }

 private:
  const std::shared_ptr<ServiceProcess> process_;
  std::atomic<bool> knows_interface_ = false;
};

/// Makes the interface of a reference, which may wait for the process and ends a lookup of the
/// calling thread. False if the process is dead and the reference new. service_manager.cc defines
/// it.
bool FindInterface(ServiceProxy& proxy);

}  // namespace sensorvela::simulated
