// A test on a machine of its own, which asks afterwards what no test should have to ask.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SystemInfo/system_info_handler.h"
#include "platform/simulator/machine.h"
#include "tests/support/recorded_log.h"

namespace VELA::SystemHealth {

class SimulatedTest : public testing::Test {
 protected:
  SimulatedTest() {
    Reset();
    simulator::Enter(&machine_);
  }
  ~SimulatedTest() override { simulator::Enter(nullptr); }

  void TearDown() override {
    EXPECT_EQ(machine_.ledger.lists, 0) << "a platform list was not given back";
    EXPECT_EQ(machine_.ledger.streams, 0) << "a stream was not closed";
    EXPECT_EQ(machine_.ledger.objects, 0) << "a platform object was not destroyed";
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
