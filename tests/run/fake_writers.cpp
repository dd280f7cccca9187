// A library of writers for tests: it notes calls and fails in every way a writer can.

#include "tests/run/fake_writers.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "host/environment.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "host/table.h"
#include "writers/writer_plugins.h"

namespace {

using qumetra::test::Calls;

Calls& calls() {
  static Calls s_calls;
  return s_calls;
}

/// Notes every call and succeeds.
class NotingWriter : public WriterPlugin {
 public:
  explicit NotingWriter(const std::string& option, bool continuous = false)
      : WriterPlugin("guid-of-" + option), m_option(option) {
    addCapability(
        new pwr::WriterPluginCapability({}, option, "Writes " + option, "." + option, continuous));
  }

  void getVersion(VersionInfo& out) override { out.emplace_back("name", m_option); }
  void handleBroadcastOption(const std::string& option) override { note("option", option); }
  void notifyCommandlineParamsSet_i() override { note("commandLineRead"); }
  bool reset(ResetReason reason, std::uint64_t value,
             const pwr::SystemMetadata& metadata) override {
    note("reset",
         fmt::format("{},{},{}", static_cast<unsigned>(reason), value, metadata.m_hostName));
    return true;
  }
  bool pmtDevReset(std::uint32_t value, std::uint64_t ticks, const pwr::SystemMetadata&) override {
    note("pmtDevReset", fmt::format("{},{}", value, ticks));
    return true;
  }
  int init(const std::string& name, bool continuous) override {
    return note("init", fmt::format("{},{}", name, continuous));
  }
  int fini() override { return note("fini"); }
  int flushContinuousResults(const pwr::SystemMetadata&) override {
    note("flush");
    return 1;
  }
  int writeMessage(const pwr::TableMessage&) override { return note("table"); }
  int writeMessage(const pwr::TextMessage& message) override {
    return note("text", message.m_message);
  }
  int writeMessage(const pwr::SystemMessage&) override { return note("system"); }
  int writeMessage(const pwr::IdMessage&) override { return note("id"); }
  int writeMessage(const pwr::Metric&) override { return note("sample"); }
  int writeMessage(const pwr::MetricContainerInfoMessage&) override { return note("container"); }

 protected:
  int note(const std::string& operation, const std::string& arguments = {}) {
    const std::string brackets = arguments.empty() ? "" : "(" + arguments + ")";
    calls().push_back(m_option + "." + operation + brackets);
    return 0;
  }

 private:
  std::string m_option;
};

class FailingInit : public NotingWriter {
 public:
  FailingInit() : NotingWriter("badinit") {}
  int init(const std::string& name, bool continuous) override {
    NotingWriter::init(name, continuous);
    return 1;
  }
};

class FailingFini : public NotingWriter {
 public:
  FailingFini() : NotingWriter("badfini") {}
  int fini() override {
    NotingWriter::fini();
    return 1;
  }
};

/// Throws an exception at every sample, and refuses resets.
class ThrowingWriter : public NotingWriter {
 public:
  ThrowingWriter() : NotingWriter("throws") {}
  bool reset(ResetReason, std::uint64_t, const pwr::SystemMetadata&) override { return false; }
  int writeMessage(const pwr::Metric&) override { throw std::runtime_error("no room"); }
};

/// Throws a character pointer in fini.
class PointerThrowingWriter : public NotingWriter {
 public:
  PointerThrowingWriter() : NotingWriter("throwsptr") {}
  int writeMessage(const pwr::Metric&) override { throw 7; }
  int fini() override { throw "store failed"; }
};

/// Logs in every way at a text message, and succeeds in nothing.
class LoggingWriter : public NotingWriter {
 public:
  LoggingWriter() : NotingWriter("logs") {}
  int writeMessage(const pwr::TextMessage&) override {
    g_pluginEnvironment->errorLog.log(LogSink::kError, "ERROR: \xff\n");
    g_pluginEnvironment->warningLog << 2 << "WARNING"
                                    << ": half";
    g_pluginEnvironment->warningLog << " line\n";
    g_pluginEnvironment->quietLog << "quiet\n";
    return 1;
  }
};

std::vector<Plugin*> makePlugins() {
  return {new NotingWriter("first"),
          new FailingInit,
          nullptr,
          new FailingFini,
          new ThrowingWriter,
          new PointerThrowingWriter,
          new LoggingWriter,
          new NotingWriter("last", true)};
}

std::string howToFail() {
  const char* wanted = std::getenv(qumetra::test::kCreateVariable);
  return wanted != nullptr ? wanted : "";
}

}  // namespace

extern "C" Calls* fakeCalls() { return &calls(); }

extern "C" PluginList* createPlugins() {
  const std::string failure = howToFail();
  if (failure == "null") {
    return nullptr;
  }
  if (failure == "throw") {
    throw "no constructor";
  }
  if (failure == "none") {
    return new PluginList{0, nullptr};
  }
  const std::vector<Plugin*> plugins = makePlugins();
  auto** array = static_cast<Plugin**>(std::malloc(plugins.size() * sizeof(Plugin*)));
  std::copy(plugins.begin(), plugins.end(), array);
  return new PluginList{static_cast<std::int32_t>(plugins.size()), array};
}

extern "C" void destroyPlugins(PluginList* list) {
  for (std::int32_t i = 0; i < list->count; ++i) {
    delete list->plugins[i];
  }
  std::free(list->plugins);
  delete list;
  calls().emplace_back("destroyed");
}
