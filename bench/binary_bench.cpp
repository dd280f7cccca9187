// The binary result, next to a program that appends the same records of 27 bytes from plain arrays
// to a block of 1 MiB, and writes it whenever it is full.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "host/environment.h"
#include "host/handles.h"
#include "host/logger.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "writers/binarywriter_plugin/binary_writer.h"

namespace {

using qumetra::bench::Scratch;

/// Values per round of samples.
constexpr std::size_t kColumns = 16;
/// Rounds differ and repeat after so many, so that input takes no memory to speak of.
constexpr std::size_t kRounds = 256;
constexpr std::size_t kRecordSize = 27;
constexpr std::size_t kBlockSize = 0x100000;
constexpr float kTicksPerMicrosecond = 4;
constexpr std::uint32_t kFirstMetric = 7;

/// What a contest is about.
struct Case {
  const char* name;
  pwr::Metric::MetricType type;
  /// How many messages a round has, each of a metric of its own.
  std::size_t metrics;
  std::size_t states;
  /// The number of the first state's samples' name; the others' follow at `nameStep`.
  std::uint16_t firstName;
  std::uint16_t nameStep;

  std::size_t metricOf(std::size_t column) const { return column * metrics / kColumns; }
};

/// Each state numbers two texts of its descriptor, the first of which names deltas, and for values
/// that of its entity. Metrics are not told: that has happened earlier in the process.
constexpr Case kCases[] = {
    {"values", pwr::Metric::SAMPLED_VALUE, 1, kColumns, 3, 3},
    {"deltas", pwr::Metric::SAMPLED_DELTA, 1, 4, 1, 2},
    // The most that deltas and messages can cost: no message brings a state twice, and none brings
    // more than one value.
    {"single_deltas", pwr::Metric::SAMPLED_DELTA, 1, kColumns, 1, 2},
    {"single_values", pwr::Metric::SAMPLED_VALUE, kColumns, kColumns, 3, 3},
};

/// What is measured, as plain arrays.
struct Values {
  std::array<std::uint64_t, kRounds> timestamps{};
  std::array<std::array<double, kColumns>, kRounds> reals{};
  std::array<std::array<std::uint64_t, kColumns>, kRounds> durations{};
};

const Values& values() {
  static const Values made = [] {
    Values result;
    std::uint64_t state = 42;
    const auto next = [&state] {
      return state = state * 6364136223846793005U + 1442695040888963407U;
    };
    for (std::size_t i = 0; i < kRounds; ++i) {
      result.timestamps[i] = 1'000'000'000'000 + i * 1'000'003;
      for (std::size_t j = 0; j < kColumns; ++j) {
        result.reals[i][j] = static_cast<double>(next() >> 44U) / 7919;
        result.durations[i][j] = next() >> 44U;
      }
    }
    return result;
  }();
  return made;
}

/// The same as messages of a host. Each entity brings as many columns as there are states, or when
/// there is a state per column, one.
class Messages {
 public:
  explicit Messages(const Case& shape) : m_shape(shape) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      const std::string number = std::to_string(i);
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(
          100 + i, pwr::HandleTexts{"CPU" + number, "", ""}, nullptr));
      m_states.push_back(std::make_unique<pwr::DataDescriptor>(
          200 + i, pwr::HandleTexts{"State" + number, "", ""}));
      m_states.back()->addAttributeValue(&m_attribute, pwr::Data("C" + number));
    }
    for (std::size_t i = 0; i < kRounds; ++i) {
      addRound(i);
    }
  }

  /// The messages of so many elements, and then the same again and again.
  const std::vector<std::unique_ptr<pwr::Metric>>& all() const { return m_messages; }
  std::size_t elementsPerMessage() const { return kColumns / m_shape.metrics; }

 private:
  void addRound(std::size_t round) {
    for (std::size_t i = 0; i < m_shape.metrics; ++i) {
      m_messages.push_back(std::make_unique<pwr::Metric>());
      pwr::Metric& metric = *m_messages.back();
      metric.name = "Package Power";
      metric.metricId = kFirstMetric + static_cast<std::uint32_t>(i);
      metric.metricType = m_shape.type;
      metric.quantity = &m_quantity;
      pwr::SampleData data;
      data.timestamp = values().timestamps[round];
      for (std::size_t j = 0; j < elementsPerMessage(); ++j) {
        data.elements.push_back(makeElement(round, i * elementsPerMessage() + j));
      }
      metric.setData(std::move(data));
    }
  }

  const pwr::DataElement* makeElement(std::size_t round, std::size_t column) {
    const std::size_t states = m_shape.states;
    m_elements.push_back(std::make_unique<pwr::DataElement>(
        m_entities[states < kColumns ? column / states : column].get(),
        m_states[column % states].get(), nullptr, pwr::Data(values().reals[round][column]),
        values().durations[round][column], nullptr));
    return m_elements.back().get();
  }

  Case m_shape;
  pwr::Quantity m_quantity{1, 3, "Power", "mW", "Power (mW)"};
  pwr::Attribute m_attribute{20, {"A", "", ""}, nullptr, nullptr, pwr::AttributeType::Info};
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataDescriptor>> m_states;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
  std::vector<std::unique_ptr<pwr::Metric>> m_messages;
};

/// An environment of its own for each run: its output handles know which files they made.
class HostSide {
 public:
  HostSide() { g_pluginEnvironment = &m_environment; }
  HostSide(const HostSide&) = delete;
  HostSide& operator=(const HostSide&) = delete;
  ~HostSide() { g_pluginEnvironment = nullptr; }

 private:
  LogSink m_sink{nullptr};
  PluginEnvironment m_environment{m_sink, m_sink, m_sink};
};

void writeBinary(const Messages& messages, const std::string& base, std::size_t elements) {
  const HostSide host;
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = kTicksPerMicrosecond;
  pwr::SystemMessage system;
  system.m_metadata = &metadata;
  BinaryWriter writer;
  writer.init(base, false);
  writer.writeMessage(system);
  for (std::size_t i = 0; i < elements / messages.elementsPerMessage(); ++i) {
    writer.writeMessage(*messages.all()[i % messages.all().size()]);
  }
  writer.fini();
}

// The floor.

template <typename Number>
char* put(char* at, Number number) {
  std::memcpy(at, &number, sizeof number);
  return at + sizeof number;
}

void writeBytes(int file, const char* begin, const char* end) {
  const auto size = static_cast<std::size_t>(end - begin);
  if (::write(file, begin, size) != static_cast<ssize_t>(size)) {
    std::perror("binary_bench");
    std::exit(1);
  }
}

void writeFloor(const std::string& path, std::size_t elements, const Case& one) {
  std::array<std::uint16_t, kColumns> states{};
  std::array<std::uint32_t, kColumns> metrics{};
  for (std::size_t j = 0; j < kColumns; ++j) {
    states[j] = static_cast<std::uint16_t>(j % one.states);
    metrics[j] = kFirstMetric + static_cast<std::uint32_t>(one.metricOf(j));
  }
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char> block(kBlockSize);
  char* const full = block.data() + kBlockSize - kRecordSize;
  char* at = block.data();
  for (std::size_t i = 0; i < elements / kColumns; ++i) {
    const std::size_t round = i % kRounds;
    for (std::size_t j = 0; j < kColumns; ++j) {
      if (at > full) {
        writeBytes(file, block.data(), at);
        at = block.data();
      }
      at = put(at, std::uint16_t{kRecordSize - 3});
      at = put(at, std::uint8_t{4});
      at = put(at, values().timestamps[round]);
      const std::uint64_t microseconds = values().durations[round][j] / 4;
      at = put(at, static_cast<float>(microseconds));
      at = put(at, metrics[j]);
      at = put(at, static_cast<std::uint16_t>(one.firstName + one.nameStep * states[j]));
      at = put(at, static_cast<std::uint16_t>(states[j] + 1));
      at = put(at, static_cast<float>(values().reals[round][j]));
    }
  }
  writeBytes(file, block.data(), at);
  ::close(file);
}

std::string bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string baseOf(const Scratch& file) {
  return file.path().substr(0, file.path().size() - std::string(".qmbin").size());
}

/// A ratio means something only when both sides make the same samples. The floor makes nothing
/// else; the few names that the writer puts in front of them are not looked at.
bool sidesAgree(const Case& one, const Messages& messages) {
  constexpr std::size_t kElements = 100'000;
  const Scratch told("binary_told.qmbin");
  writeBinary(messages, baseOf(told), kColumns);
  const Scratch subject("binary_check.qmbin");
  const Scratch floor("binary_check_floor");
  writeBinary(messages, baseOf(subject), kElements);
  writeFloor(floor.path(), kElements, one);
  const std::string samples = bytesOf(floor.path());
  const std::string bytes = bytesOf(subject.path());
  return bytes.size() > samples.size() &&
         bytes.compare(bytes.size() - samples.size(), samples.size(), samples) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  static const std::vector<std::unique_ptr<Messages>> messages = [] {
    std::vector<std::unique_ptr<Messages>> made;
    for (const Case& one : kCases) {
      made.push_back(std::make_unique<Messages>(one));
    }
    return made;
  }();
  for (std::size_t i = 0; i < std::size(kCases); ++i) {
    const Case& one = kCases[i];
    if (!sidesAgree(one, *messages[i])) {
      std::fprintf(stderr, "binary_bench: the floor makes other samples than the writer\n");
      return 1;
    }
    const auto subject = [i](std::size_t elements) {
      const Scratch file("binary.qmbin");
      writeBinary(*messages[i], baseOf(file), elements);
    };
    const auto floor = [&one](std::size_t elements) {
      const Scratch file("binary_floor");
      writeFloor(file.path(), elements, one);
    };
    qumetra::bench::addContest({std::string("binary_") + one.name, 2'048'000, subject, floor});
  }
  return qumetra::bench::runContests(argc, argv);
}
