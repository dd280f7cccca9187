// What tests of whole collections share: a machine of files to collect from, and a replay.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qumetra/collect/collection.h"
#include "qumetra/model/model.h"
#include "qumetra/recording/recording_reader.h"
#include "tests/collect/fake_machine.h"
#include "tests/collect/keeping_sink.h"

namespace qumetra::test {

/// Reads a recording into a sink, with a model of its own.
class Replay {
 public:
  explicit Replay(const std::string& path) {
    RecordingReader reader(path, m_model, sink);
    reader.setWarningHandler([this](const std::string& text) { warnings.push_back(text); });
    reader.readAll();
  }

 private:
  Model m_model;

 public:
  KeepingSink sink;
  std::vector<std::string> warnings;
};

/// A collection from a machine of files: two CPUs with one idle state each.
class CollectionTest : public testing::Test {
 protected:
  CollectionTest() {
    m_machine.addCpu(0, 0, 0);
    m_machine.addCpu(1, 0, 1);
    m_machine.writeSys("devices/system/cpu/online", "0-1\n");
    m_machine.writeProc("stat", cpuLine(0, {}) + cpuLine(1, {}) + "intr 5\nctxt 6\n");
    m_machine.writeProc("self/stat", processStat({.pid = 42, .name = "tool"}));
    m_machine.addIdleState(0, 0, "C1", 1, 1);
    m_machine.addIdleState(1, 0, "C1", 1, 1);
    options.procfs = m_machine.procfs();
    options.sysfs = m_machine.sysfs();
    options.interval = std::chrono::milliseconds(10);
    options.duration = std::chrono::milliseconds(50);
    options.recordPath = directory.file("out.qmrec");
    options.notice = [this](const std::string& line) { notices.push_back(line); };
  }

  /// Opens and runs a collection as the options tell.
  CollectionResult collect(MessageSink* live = nullptr) {
    Model model;
    Collection collection(options, model, stop);
    collection.open();
    return collection.run(live);
  }
  /// The same for what must fail when it is opened.
  std::string failureOfOpen() {
    Model model;
    Collection collection(options, model, stop);
    try {
      collection.open();
    } catch (const CollectionError& error) {
      return error.what();
    }
    ADD_FAILURE() << "opened";
    return "";
  }

  FakeMachine m_machine;
  TempDir directory;
  StopSignal stop;
  CollectionOptions options;
  std::vector<std::string> notices;
};

}  // namespace qumetra::test
