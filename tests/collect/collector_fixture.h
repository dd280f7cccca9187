// What tests of collectors share: a machine of files, and a collector driven by hand.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qumetra/collect/collector.h"
#include "qumetra/collect/topology_scan.h"
#include "qumetra/model/model.h"
#include "tests/collect/fake_machine.h"
#include "tests/collect/keeping_sink.h"

namespace qumetra::test {

/// The first reading is taken at tick 1000; the test then says when.
class CollectorFixture : public testing::Test {
 protected:
  static constexpr std::uint64_t kStart = 1000;

  void open(Collector& collector) {
    entities = std::make_unique<MachineEntities>(model, machine.sysfs(),
                                                 scanTopology(machine.procfs(), machine.sysfs()));
    context = std::make_unique<CollectorContext>(
        CollectorContext{.model = model,
                         .entities = *entities,
                         .procfs = machine.procfs(),
                         .sysfs = machine.sysfs(),
                         .intervalTicks = 100'000'000,
                         .notice = [this](const std::string& line) { notices.push_back(line); }});
    collector.open(*context);
  }
  void openAndStart(Collector& collector) {
    open(collector);
    collector.start(kStart);
    collector.announce(sink);
  }
  void sample(Collector& collector, std::uint64_t now) {
    collector.sample(now);
    collector.deliver(now, false, sink);
    collector.deliver(now, true, sink);
  }

  FakeMachine machine;
  Model model;
  std::unique_ptr<MachineEntities> entities;
  std::unique_ptr<CollectorContext> context;
  std::vector<std::string> notices;
  KeepingSink sink;
};

}  // namespace qumetra::test
