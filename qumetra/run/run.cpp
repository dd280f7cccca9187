#include "qumetra/run/run.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "qumetra/run/call_log.h"
#include "qumetra/run/guarded_call.h"
#include "qumetra/run/output_check.h"
#include "qumetra/run/writer_library.h"
#include "writers/writer_plugins.h"

namespace qumetra {
namespace {

constexpr const char* kAllWriters = "all";

/// A writer of the run.
struct Driven {
  const LoadedWriter* writer;
  bool initFailed = false;
  /// One line is enough for a writer that throws at every sample.
  bool throwNoted = false;
};

/// The writers of those names, in the order of the library, each once.
std::vector<Driven> choose(const WriterLibrary& library, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (name != kAllWriters && library.find(name) == nullptr) {
      throw RunError(fmt::format("unknown writer \"{}\"; known are {}, and all for every one", name,
                                 library.knownNames()));
    }
  }
  const auto wanted = [&](const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  std::vector<Driven> chosen;
  for (const LoadedWriter& writer : library.writers()) {
    if (wanted(kAllWriters) || wanted(writer.option)) {
      chosen.push_back({.writer = &writer});
    }
  }
  return chosen;
}

}  // namespace

struct Run::State {
  State(WriterLibrary& library, RunOptions runOptions, CallLog* log)
      : options(std::move(runOptions)), writers(choose(library, options.writers)), callLog(log) {}

  void start();
  /// Makes one call of one writer and returns its status.
  template <typename Call>
  int callOne(Driven& driven, const char* name, Call&& call);
  /// Makes a call of every writer that gets messages, in order. Their statuses end here.
  template <typename Call>
  void deliver(const char* name, Call&& call);
  /// Resets the writers: a collection begins.
  void beginCollection(const pwr::SystemMetadata& metadata);
  void noteThrown(Driven& driven, const char* name, const std::string& thrown);
  /// The status of the run is a failure from now on.
  void fail(const Driven& driven, const char* name);
  void note(const Driven& driven, const char* name, const std::string& what);
  /// Makes a call that no message stands for. `call` returns false when the writer refuses.
  template <typename Call>
  void resetOne(Driven& driven, const char* name, Call&& call);

  RunOptions options;
  std::vector<Driven> writers;
  CallLog* callLog;
  bool started = false;
  bool finished = false;
  bool collectionBegun = false;
  int status = 0;
  std::uint64_t samples = 0;
  std::vector<std::string> problems;
};

template <typename Call>
int Run::State::callOne(Driven& driven, const char* name, Call&& call) {
  int result = 1;
  if (const auto thrown = thrownBy([&] { result = call(*driven.writer->plugin); })) {
    noteThrown(driven, name, *thrown);
  }
  if (callLog != nullptr) {
    callLog->call(driven.writer->option, name, result);
  }
  return result;
}

void Run::State::start() {
  if (std::exchange(started, true)) {
    return;
  }
  for (Driven& driven : writers) {
    const int result = callOne(driven, "init", [&](WriterPlugin& writer) {
      return writer.init(options.base, options.continuous);
    });
    driven.initFailed = result != 0;
    if (driven.initFailed) {
      fail(driven, "init");
    }
  }
}

template <typename Call>
void Run::State::deliver(const char* name, Call&& call) {
  start();
  for (Driven& driven : writers) {
    if (!driven.initFailed) {
      callOne(driven, name, call);
    }
  }
}

void Run::State::noteThrown(Driven& driven, const char* name, const std::string& thrown) {
  if (!std::exchange(driven.throwNoted, true)) {
    note(driven, name, "threw: " + thrown);
  }
}

void Run::State::fail(const Driven& driven, const char* name) {
  status = 1;
  note(driven, name, "failed");
}

void Run::State::note(const Driven& driven, const char* name, const std::string& what) {
  problems.push_back(fmt::format("writer {}: {} {}", driven.writer->option, name, what));
}

template <typename Call>
void Run::State::resetOne(Driven& driven, const char* name, Call&& call) {
  bool accepted = true;
  if (const auto thrown = thrownBy([&] { accepted = call(*driven.writer->plugin); })) {
    noteThrown(driven, name, *thrown);
  }
  if (!accepted) {
    note(driven, name, "was refused");
  }
}

void Run::State::beginCollection(const pwr::SystemMetadata& metadata) {
  start();
  if (std::exchange(collectionBegun, true)) {
    return;
  }
  for (Driven& driven : writers) {
    if (!driven.initFailed) {
      resetOne(driven, "reset", [&](WriterPlugin& writer) {
        return writer.reset(Plugin::ResetReason::NewCollection, metadata.m_firstTimestamp,
                            metadata);
      });
    }
  }
}

Run::Run(WriterLibrary& library, RunOptions options, CallLog* callLog)
    : m_state(std::make_unique<State>(library, std::move(options), callLog)) {}

Run::~Run() {
  // Writers cannot let anything pass here, but keeping note of a failure can.
  static_cast<void>(thrownBy([this] { finish(); }));
}

int Run::start() {
  m_state->start();
  return m_state->status;
}

void Run::system(const pwr::SystemMessage& message) {
  if (message.m_metadata != nullptr) {
    m_state->beginCollection(*message.m_metadata);
  }
  m_state->deliver("system", [&](WriterPlugin& writer) { return writer.writeMessage(message); });
}

void Run::text(const pwr::TextMessage& message) {
  const bool isHeader = message.getMessageType() == pwr::WriterMessage::kHeaderText;
  m_state->deliver(isHeader ? "headerText" : "text",
                   [&](WriterPlugin& writer) { return writer.writeMessage(message); });
}

void Run::id(const pwr::IdMessage& message) {
  m_state->deliver("idMessage", [&](WriterPlugin& writer) { return writer.writeMessage(message); });
}

void Run::sample(const pwr::Metric& metric) {
  ++m_state->samples;
  m_state->deliver("sample", [&](WriterPlugin& writer) { return writer.writeMessage(metric); });
}

void Run::table(const pwr::TableMessage& table) {
  m_state->deliver("table", [&](WriterPlugin& writer) { return writer.writeMessage(table); });
}

void Run::container(const pwr::MetricContainerInfoMessage& message) {
  m_state->deliver("container", [&](WriterPlugin& writer) { return writer.writeMessage(message); });
}

void Run::flush(const pwr::SystemMetadata& metadata) {
  if (!m_state->options.continuous) {
    return;
  }
  m_state->deliver("flush",
                   [&](WriterPlugin& writer) { return writer.flushContinuousResults(metadata); });
}

void Run::telemetryDeviceReset(std::uint32_t device, std::uint64_t ticks,
                               const pwr::SystemMetadata& metadata) {
  m_state->start();
  for (Driven& driven : m_state->writers) {
    if (!driven.initFailed) {
      m_state->resetOne(driven, "pmtDevReset", [&](WriterPlugin& writer) {
        return writer.pmtDevReset(device, ticks, metadata);
      });
    }
  }
}

int Run::finish() {
  if (!m_state->started || std::exchange(m_state->finished, true)) {
    return m_state->status;
  }
  for (Driven& driven : m_state->writers) {
    const int result =
        m_state->callOne(driven, "fini", [](WriterPlugin& writer) { return writer.fini(); });
    if (result != 0) {
      m_state->fail(driven, "fini");
    }
  }
  return m_state->status;
}

std::vector<std::string> Run::writerNames() const {
  std::vector<std::string> names;
  for (const Driven& driven : m_state->writers) {
    names.push_back(driven.writer->option);
  }
  return names;
}

std::vector<OutputFile> Run::resultFiles() const {
  std::vector<OutputFile> files;
  for (const Driven& driven : m_state->writers) {
    for (OutputFile& file : qumetra::resultFiles(*driven.writer, m_state->options.base)) {
      files.push_back(std::move(file));
    }
  }
  return files;
}

const std::vector<std::string>& Run::problems() const { return m_state->problems; }

std::uint64_t Run::samplesDelivered() const { return m_state->samples; }

}  // namespace qumetra
