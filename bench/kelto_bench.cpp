// The import stream, next to a program that appends the same bytes to one vector per metric and
// writes the vectors one after the other.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "host/environment.h"
#include "host/handles.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/system_metadata.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/name_tables.h"

namespace {

using qumetra::bench::bytesOf;
using qumetra::bench::Scratch;

/// What is collected: the residencies of some states on some processors, under several metrics.
/// One element of the contest is one residency.
struct Shape {
  std::size_t metrics;
  std::size_t processors;
  std::size_t states;

  std::size_t values() const { return processors * states; }
};

constexpr std::uint64_t kStart = 1'000'000;
constexpr std::uint64_t kStep = 1'003;
/// Samples differ in their values and repeat after so many, so that they are in the cache, as they
/// are when a host has just made them.
constexpr std::size_t kSamples = 8;
constexpr std::uint64_t kFirstMetric = 10;
constexpr std::uint64_t kFirstEntity = 100;
constexpr std::uint64_t kFirstState = 200;

std::uint64_t timeOf(std::size_t sample) { return kStart + (sample + 1) * kStep; }
/// Some number for a value.
std::uint64_t valueOf(std::size_t sample, std::size_t value) {
  return ((sample % kSamples) * 977 + value * 31) * 2654435761U;
}

/// The messages of a host.
class Messages {
 public:
  explicit Messages(const Shape& shape) : m_shape(shape) {
    static constexpr std::array kStates = {"C0", "C1", "C3", "C6"};
    for (std::size_t i = 0; i < shape.processors; ++i) {
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(
          kFirstEntity + i, pwr::HandleTexts{"CPU" + std::to_string(i), "", ""}, nullptr));
    }
    for (std::size_t i = 0; i < shape.states; ++i) {
      m_states.push_back(std::make_unique<pwr::DataDescriptor>(
          kFirstState + i, pwr::HandleTexts{kStates.at(i), "", ""}));
    }
    for (std::size_t i = 0; i < shape.metrics * kSamples; ++i) {
      m_samples.push_back(makeSample(i));
    }
    m_cpu.m_cpuWords.cpuFrequencyMHz = 2000;
    m_metadata.m_timestampFrequency = 2000;
    m_metadata.m_firstTimestamp = kStart;
    m_metadata.m_platformMetadata[pwr::SystemMetadata::kCpu] = &m_cpu;
    m_system.m_id = 1;
    m_system.m_metadata = &m_metadata;
  }

  const pwr::SystemMessage& system() const { return m_system; }
  const pwr::Metric& sample(std::size_t number) {
    const std::size_t metric = number % m_shape.metrics;
    const std::size_t round = number / m_shape.metrics;
    pwr::Metric& message = *m_samples[metric * kSamples + round % kSamples];
    // Times must rise. The objects are not const, and `setData` would cost what is measured.
    const_cast<pwr::SampleData&>(message.getData()).timestamp = timeOf(round);
    return message;
  }

 private:
  std::unique_ptr<pwr::Metric> makeSample(std::size_t index) {
    auto message = std::make_unique<pwr::Metric>();
    message->metricId = static_cast<std::uint32_t>(kFirstMetric + index / kSamples);
    message->name = "Residency " + std::to_string(message->metricId);
    message->metricType = pwr::Metric::SAMPLED_RESIDENCY;
    pwr::SampleData data;
    for (std::size_t i = 0; i < m_shape.values(); ++i) {
      const unsigned long value = valueOf(index % kSamples, i);
      m_elements.push_back(std::make_unique<pwr::DataElement>(
          m_entities[i / m_shape.states].get(), m_states[i % m_shape.states].get(), nullptr,
          pwr::Data(value), kStep, nullptr));
      data.elements.push_back(m_elements.back().get());
    }
    message->setData(std::move(data));
    return message;
  }

  Shape m_shape;
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataDescriptor>> m_states;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
  std::vector<std::unique_ptr<pwr::Metric>> m_samples;
  pwr::CPUMetadata m_cpu;
  pwr::SystemMetadata m_metadata;
  pwr::SystemMessage m_system;
};

void writeKelto(Messages& messages, const std::string& base, std::size_t samples) {
  // A process opens one result file; here it has many runs.
  KeltoWriterImpl::m_wasFileOpened = false;
  KeltoWriter writer;
  writer.init(base, false);
  int status = writer.writeMessage(messages.system());
  for (std::size_t i = 0; i < samples; ++i) {
    status |= writer.writeMessage(messages.sample(i));
  }
  if ((status | writer.fini()) != 0) {
    std::abort();
  }
}

// The floor.

/// What a file holds beside samples, taken from one that the writer has made.
struct Frame {
  std::string system;
  std::string metricRecord;
  std::vector<std::uint64_t> colors;
};

Frame frameOf(const std::string& file, const Shape& shape) {
  constexpr std::size_t kMagicSize = 8;
  constexpr std::size_t kSampleHead = 22;
  const std::size_t systemEnd = file.find(file.substr(0, kMagicSize), 1) + kMagicSize;
  std::uint16_t metricSize = 0;
  std::memcpy(&metricSize, file.data() + systemEnd + 12, sizeof metricSize);
  Frame frame{file.substr(0, systemEnd), file.substr(systemEnd, 12 + std::size_t{metricSize}), {}};
  // METRIC, ENTITY; then FIELD, DURATION, COLOR and UINT of each state.
  std::size_t at =
      systemEnd + frame.metricRecord.size() + kSampleHead + std::size_t{(2 + 2) * 12 + 4};
  for (std::size_t i = 0; i < shape.states; ++i, at += std::size_t{4} * 12) {
    frame.colors.emplace_back();
    std::memcpy(&frame.colors.back(), file.data() + at, sizeof(std::uint64_t));
  }
  return frame;
}

class FloorRecord {
 public:
  FloorRecord(std::vector<char>& out, std::uint64_t time, std::size_t attributes) {
    const std::size_t before = out.size();
    out.resize(before + 22 + attributes * 12);
    m_at = out.data() + before;
    put(std::uint32_t{0x02400010});
    put(time);
    put(static_cast<std::uint16_t>(attributes * 12 + 10));
    put(std::uint16_t{71});
    put(std::uint16_t{6});
    put(std::uint16_t{2});
    put(static_cast<std::uint16_t>(attributes));
  }
  void attribute(std::uint32_t id, std::uint64_t value) {
    put(id);
    put(value);
  }

 private:
  template <typename Number>
  void put(Number number) {
    std::memcpy(m_at, &number, sizeof number);
    m_at += sizeof number;
  }

  char* m_at;
};

void writeFloor(const Shape& shape, const Frame& frame, const std::string& path,
                std::size_t samples) {
  std::vector<std::vector<char>> streams(shape.metrics);
  const std::size_t attributes = 1 + shape.processors * (1 + shape.states * 4);
  for (std::size_t i = 0; i < samples; ++i) {
    const std::size_t metric = i % shape.metrics;
    const std::size_t round = i / shape.metrics;
    FloorRecord record(streams[metric], timeOf(round), attributes);
    record.attribute(kMetricAttribute, kFirstMetric + metric);
    for (std::size_t j = 0; j < shape.values(); ++j) {
      const std::size_t state = j % shape.states;
      if (state == 0) {
        record.attribute(kEntityAttribute, kFirstEntity + j / shape.states);
      }
      record.attribute(kFieldAttribute, kFirstState + state);
      record.attribute(kDurationAttribute, kStep);
      record.attribute(kColorAttribute, frame.colors[state]);
      record.attribute(kUIntAttribute, valueOf(round, j));
    }
  }
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char> head(frame.system.begin(), frame.system.end());
  qumetra::bench::writeBlock(file, head);
  for (std::vector<char>& stream : streams) {
    head.assign(frame.metricRecord.begin(), frame.metricRecord.end());
    qumetra::bench::writeBlock(file, head);
    qumetra::bench::writeBlock(file, stream);
  }
  ::close(file);
}

/// A ratio means something only when both sides make the same bytes. The one metric record that the
/// floor repeats makes its file equal for one metric; with several, its length.
bool sidesAgree(const Shape& shape, Messages& messages, std::size_t samples, Frame& frame) {
  const Scratch subject("kelto_check.pwr");
  const Scratch floor("kelto_floor_check");
  writeKelto(messages, subject.path().substr(0, subject.path().size() - 4), samples);
  const std::string made = bytesOf(subject.path());
  frame = frameOf(made, shape);
  writeFloor(shape, frame, floor.path(), samples);
  const std::string expected = bytesOf(floor.path());
  return shape.metrics == 1 ? made == expected : made.size() == expected.size();
}

bool addKeltoContest(const char* name, const Shape& shape, std::size_t elements) {
  // Both live as long as the contests.
  const auto messages = std::make_shared<Messages>(shape);
  Frame frame;
  if (!sidesAgree(shape, *messages, 1'000, frame)) {
    std::fprintf(stderr, "%s: the floor makes other bytes than the writer\n", name);
    return false;
  }
  const auto subject = [=](std::size_t count) {
    const Scratch file("kelto.pwr");
    writeKelto(*messages, file.path().substr(0, file.path().size() - 4), count / shape.values());
  };
  const auto floor = [=](std::size_t count) {
    const Scratch file("kelto_floor");
    writeFloor(shape, frame, file.path(), count / shape.values());
  };
  qumetra::bench::addContest({name, elements, subject, floor});
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  LogSink dropped(nullptr);
  PluginEnvironment environment(dropped, dropped, dropped);
  g_pluginEnvironment = &environment;
  // A large machine under one metric, several metrics, and samples of a single value.
  const bool agreed = addKeltoContest("kelto_one_metric", {1, 64, 4}, 512'000) &&
                      addKeltoContest("kelto_metrics", {8, 16, 4}, 512'000) &&
                      addKeltoContest("kelto_single_values", {4, 1, 1}, 256'000);
  return agreed ? qumetra::bench::runContests(argc, argv) : 1;
}
