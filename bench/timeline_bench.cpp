// The over-time tables, next to a program that makes the same bytes from plain arrays: it spills
// each cell with its length, through a 1 MiB block per table, and pads the cells in a second pass.
//
//   int         16 tables of 4 value columns: an element is a value, half of them reals
//   int_events  16 tables of one value column, where each element brings a row of its own
//   int_views   times and percentages of residencies: an element makes a cell in two tables
//   phm         the values of `int` in one table
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/floor_table.h"
#include "bench/support/floor_text.h"
#include "bench/support/random_numbers.h"
#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "bench/timeline_clock.h"
#include "bench/timeline_memory.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/phmwriter_text_plugin/phm_writer.h"
#include "writers/textwriter_plugin/int_writer.h"

namespace {

using qumetra::bench::bytesOf;
using qumetra::bench::countText;
using qumetra::bench::fixedText;
using qumetra::bench::FloorOutput;
using qumetra::bench::FloorTable;
using qumetra::bench::kStart;
using qumetra::bench::kTicksPerMicrosecond;
using qumetra::bench::RandomNumbers;
using qumetra::bench::realText;
using qumetra::bench::Scratch;
using qumetra::bench::tellClock;

constexpr std::size_t kEntities = 16;
constexpr std::size_t kStates = 4;
constexpr std::size_t kFixedColumns = 3;
/// Samples differ in their values and repeat after so many, so that input takes no memory to speak
/// of.
constexpr std::size_t kSamples = 256;

/// What is measured, as plain arrays.
struct Values {
  std::array<std::uint64_t, kSamples> timestamps{};
  std::array<std::uint64_t, kSamples> durations{};
  std::array<std::array<std::array<double, kStates / 2>, kEntities>, kSamples> reals{};
  std::array<std::array<std::array<std::uint64_t, kStates>, kEntities>, kSamples> counts{};
};

const Values& values() {
  static const auto made = [] {
    auto result = std::make_unique<Values>();
    RandomNumbers random;
    for (std::size_t i = 0; i < kSamples; ++i) {
      result->timestamps[i] = kStart + i * 200'000 + (random.next() >> 52);
      result->durations[i] = 200'000 + (random.next() >> 52);
      for (std::size_t entity = 0; entity < kEntities; ++entity) {
        for (double& real : result->reals[i][entity]) {
          real = static_cast<double>(random.next() >> 44) / 7919;
        }
        for (std::uint64_t& count : result->counts[i][entity]) {
          count = random.next() >> 48;
        }
      }
    }
    return result;
  }();
  return *made;
}

/// The forms of the input.
enum class Form { Values, Events, Residencies };

std::size_t elementsPerSample(Form form) {
  return form == Form::Events ? kEntities : kEntities * kStates;
}

/// Half of an entity's states have reals.
bool isReal(Form form, std::size_t state) { return form == Form::Values && state % 2 == 0; }

std::string entityName(std::size_t entity) { return "CPU" + std::to_string(entity); }
std::string stateName(std::size_t state) { return "C" + std::to_string(state); }

/// The same as messages of a host.
class Messages {
 public:
  explicit Messages(Form form) : m_form(form) {
    for (std::size_t i = 0; i < kEntities; ++i) {
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(
          100 + i, pwr::HandleTexts{entityName(i), "", ""}, nullptr));
    }
    for (std::size_t i = 0; i < kStates; ++i) {
      m_states.push_back(
          std::make_unique<pwr::DataDescriptor>(10 + i, pwr::HandleTexts{stateName(i), "", ""}));
    }
    for (std::size_t i = 0; i < kSamples; ++i) {
      m_samples.push_back(makeSample(i));
    }
  }

  const pwr::Metric& sample(std::size_t number) const { return *m_samples[number % kSamples]; }

 private:
  std::unique_ptr<pwr::Metric> makeSample(std::size_t number) {
    auto metric = std::make_unique<pwr::Metric>();
    metric->name = "Core Activity";
    metric->metricId = 7;
    metric->quantity = &m_quantity;
    metric->metricType =
        m_form == Form::Residencies ? pwr::Metric::SAMPLED_RESIDENCY : pwr::Metric::SAMPLED_VALUE;
    pwr::SampleData data;
    data.timestamp = values().timestamps[number];
    const std::size_t states = elementsPerSample(m_form) / kEntities;
    for (std::size_t entity = 0; entity < kEntities; ++entity) {
      metric->entityList.push_back(m_entities[entity].get());
      for (std::size_t state = 0; state < states; ++state) {
        metric->entities.emplace_back(m_entities[entity].get(), m_states[state].get());
        m_elements.push_back(makeElement(number, entity, state));
        data.elements.push_back(m_elements.back().get());
      }
    }
    metric->setData(std::move(data));
    return metric;
  }

  std::unique_ptr<pwr::DataElement> makeElement(std::size_t number, std::size_t entity,
                                                std::size_t state) const {
    pwr::Data value =
        isReal(m_form, state)
            ? pwr::Data(values().reals[number][entity][state / 2])
            : pwr::Data(static_cast<unsigned long>(values().counts[number][entity][state]));
    return std::make_unique<pwr::DataElement>(m_entities[entity].get(), m_states[state].get(),
                                              nullptr, std::move(value), values().durations[number],
                                              nullptr);
  }

  Form m_form;
  pwr::Quantity m_quantity{1, 3, "Power", "mW", "Power (mW)"};
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataDescriptor>> m_states;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
  std::vector<std::unique_ptr<pwr::Metric>> m_samples;
};

const Messages& messages(Form form) {
  static const Messages s_values(Form::Values);
  static const Messages s_events(Form::Events);
  static const Messages s_residencies(Form::Residencies);
  switch (form) {
    case Form::Events:
      return s_events;
    case Form::Residencies:
      return s_residencies;
    case Form::Values:
      break;
  }
  return s_values;
}

template <typename Writer>
void write(Form form, const std::string& base, std::size_t elements) {
  Writer writer;
  if (writer.init(base, false) != 0) {
    std::abort();
  }
  tellClock(writer);
  const Messages& input = messages(form);
  for (std::size_t i = 0; i < elements / elementsPerSample(form); ++i) {
    writer.writeMessage(input.sample(i));
  }
  writer.fini();
}

// The floor.

/// Starts a row of `table` with its number and the times of the sample.
void startRow(FloorTable& table, std::size_t sample) {
  const Values& all = values();
  table.cell(0, [&](char* out) { return countText(out, table.nextRow()); });
  table.cell(1, [&](char* out) {
    return fixedText(out,
                     static_cast<double>(all.timestamps[sample] - kStart) / kTicksPerMicrosecond);
  });
  table.cell(2, [&](char* out) {
    return fixedText(out,
                     static_cast<double>(all.durations[sample]) / (kTicksPerMicrosecond * 1000));
  });
}

using FloorTables = std::vector<std::unique_ptr<FloorTable>>;

std::vector<std::string> columnNames(std::size_t states, const std::string& suffix) {
  std::vector<std::string> columns = {"Sample #", "Continuous Time (usec)", "Duration (ms)"};
  for (std::size_t i = 0; i < states; ++i) {
    columns.push_back(stateName(i) + suffix);
  }
  return columns;
}

void valueCell(FloorTable& table, std::size_t column, Form form, std::size_t sample,
               std::size_t entity, std::size_t state) {
  const Values& all = values();
  if (isReal(form, state)) {
    table.cell(column,
               [&](char* out) { return realText(out, all.reals[sample][entity][state / 2]); });
    return;
  }
  table.cell(column, [&](char* out) { return countText(out, all.counts[sample][entity][state]); });
}

void layOutAll(FloorTables& tables, const std::string& path) {
  FloorOutput out(path);
  for (auto& table : tables) {
    table->layOut(out);
  }
}

void writeIntFloor(Form form, const std::string& path, std::size_t elements) {
  const std::size_t states = elementsPerSample(form) / kEntities;
  FloorTables tables;
  for (std::size_t i = 0; i < kEntities; ++i) {
    tables.push_back(std::make_unique<FloorTable>(path + std::to_string(i),
                                                  "\nCore Activity - " + entityName(i) + "\n",
                                                  columnNames(states, " (mW)")));
  }
  for (std::size_t i = 0; i < elements / elementsPerSample(form); ++i) {
    const std::size_t sample = i % kSamples;
    for (std::size_t entity = 0; entity < kEntities; ++entity) {
      FloorTable& table = *tables[entity];
      startRow(table, sample);
      for (std::size_t state = 0; state < states; ++state) {
        valueCell(table, kFixedColumns + state, form, sample, entity, state);
      }
    }
  }
  layOutAll(tables, path);
}

void writeViewsFloor(const std::string& path, std::size_t elements) {
  const Values& all = values();
  FloorTables tables;
  for (std::size_t i = 0; i < kEntities; ++i) {
    const std::string title = "Core Activity - " + entityName(i);
    tables.push_back(std::make_unique<FloorTable>(path + "t" + std::to_string(i),
                                                  "\n" + title + " : Residency Time\n",
                                                  columnNames(kStates, " (usec)")));
    tables.push_back(std::make_unique<FloorTable>(path + "p" + std::to_string(i),
                                                  title + " : Residency Percentage\n",
                                                  columnNames(kStates, " (%)")));
  }
  for (std::size_t i = 0; i < elements / elementsPerSample(Form::Residencies); ++i) {
    const std::size_t sample = i % kSamples;
    for (std::size_t entity = 0; entity < kEntities; ++entity) {
      FloorTable& times = *tables[2 * entity];
      FloorTable& shares = *tables[2 * entity + 1];
      startRow(times, sample);
      startRow(shares, sample);
      for (std::size_t state = 0; state < kStates; ++state) {
        const auto ticks = static_cast<double>(all.counts[sample][entity][state]);
        times.cell(kFixedColumns + state,
                   [&](char* out) { return fixedText(out, ticks / kTicksPerMicrosecond); });
        shares.cell(kFixedColumns + state, [&](char* out) {
          return fixedText(out, ticks / static_cast<double>(all.durations[sample]) * 100.0);
        });
      }
    }
  }
  layOutAll(tables, path);
}

void writePhmFloor(const std::string& path, std::size_t elements) {
  std::vector<std::string> columns = columnNames(0, "");
  for (std::size_t i = 0; i < kEntities * kStates; ++i) {
    columns.push_back(entityName(i / kStates) + " " + stateName(i % kStates));
  }
  FloorTables tables;
  tables.push_back(std::make_unique<FloorTable>(path + "s", "\nCore Activity\nUnits: (mW)\n",
                                                std::move(columns)));
  for (std::size_t i = 0; i < elements / elementsPerSample(Form::Values); ++i) {
    startRow(*tables[0], i % kSamples);
    for (std::size_t column = 0; column < kEntities * kStates; ++column) {
      valueCell(*tables[0], kFixedColumns + column, Form::Values, i % kSamples, column / kStates,
                column % kStates);
    }
  }
  layOutAll(tables, path);
}

// The contests.

using WriteFile = std::function<void(const std::string& path, std::size_t elements)>;

struct Pair {
  std::string name;
  /// What the writer puts behind its output name.
  std::string suffix;
  WriteFile subject;
  WriteFile floor;
};

const std::vector<Pair>& pairs() {
  static const auto writerOf = [](auto write, Form form) -> WriteFile {
    return [=](const std::string& base, std::size_t elements) { write(form, base, elements); };
  };
  static const auto floorOf = [](Form form) -> WriteFile {
    return [=](const std::string& path, std::size_t n) { writeIntFloor(form, path, n); };
  };
  static const std::vector<Pair> s_pairs = {
      {"int", "_trace.csv", writerOf(write<IntWriterV2>, Form::Values), floorOf(Form::Values)},
      {"int_events", "_trace.csv", writerOf(write<IntWriterV2>, Form::Events),
       floorOf(Form::Events)},
      {"int_views", "_trace.csv", writerOf(write<IntWriterV2>, Form::Residencies), writeViewsFloor},
      {"phm", "_phm.csv", writerOf(write<PhmTextWriter>, Form::Values), writePhmFloor},
  };
  return s_pairs;
}

/// The result files of a writer; the metadata file of the PHM form is one too.
class Results {
 public:
  explicit Results(const Pair& pair)
      : m_file(pair.name + pair.suffix),
        m_metadata(pair.name + "_meta_phm.csv"),
        m_suffixLength(pair.suffix.size()) {}

  std::string base() const {
    return m_file.path().substr(0, m_file.path().size() - m_suffixLength);
  }
  const std::string& path() const { return m_file.path(); }

 private:
  Scratch m_file;
  Scratch m_metadata;
  std::size_t m_suffixLength;
};

/// A ratio means something only when both sides make the same bytes.
bool sidesAgree(const Pair& pair) {
  constexpr std::size_t kElements = 200'000;
  const Results subject(pair);
  const Scratch floor(pair.name + "_floor");
  pair.subject(subject.base(), kElements);
  pair.floor(floor.path(), kElements);
  const std::string bytes = bytesOf(subject.path());
  return !bytes.empty() && bytes == bytesOf(floor.path());
}

void addContestOf(const Pair& pair) {
  const auto subject = [&pair](std::size_t elements) {
    const Results results(pair);
    pair.subject(results.base(), elements);
  };
  const auto floor = [&pair](std::size_t elements) {
    const Scratch file(pair.name + "_floor");
    pair.floor(file.path(), elements);
  };
  qumetra::bench::addContest({pair.name, 2'048'000, subject, floor});
}

}  // namespace

int main(int argc, char** argv) {
  for (const Pair& pair : pairs()) {
    addContestOf(pair);
  }
  const bool isOneSide = std::any_of(argv + 1, argv + argc, [](std::string_view argument) {
    return argument.starts_with("--side=");
  });
  if (!isOneSide) {
    qumetra::bench::addMemoryReport();
    for (const Pair& pair : pairs()) {
      if (!sidesAgree(pair)) {
        std::fprintf(stderr, "timeline_bench: %s: the floor makes other bytes than the writer\n",
                     pair.name.c_str());
        return 1;
      }
    }
  }
  return qumetra::bench::runContests(argc, argv);
}
