// A test on a machine of its own, which asks afterwards what no test should have to ask.
#pragma once

#include <gtest/gtest.h>

#include "SystemInfo/system_info_handler.h"
#include "tests/support/ask.h"

namespace VELA::SystemHealth {

class SimulatedTest : public testing::Test {
 protected:
  SimulatedTest() {
    Reset();
    simulator::Enter(&machine_);
  }
  ~SimulatedTest() override { simulator::Enter(nullptr); }

  void TearDown() override {
    EXPECT_TRUE(OwesNothing(machine_)) << "a platform resource was not given back";
  }

  simulator::Machine& Simulated() { return machine_; }

  // Back to a healthy machine and an empty log.
  void Reset() {
    machine_ = {};
    RecordedLog().clear();
  }

  const std::vector<std::string>& Log() const { return RecordedLog(); }

 private:
  simulator::Machine machine_;
};

}  // namespace VELA::SystemHealth
