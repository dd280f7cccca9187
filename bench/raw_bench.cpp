// Raw text, next to a program that makes the same bytes from plain arrays: it spills each cell with
// its length, through 1 MiB blocks, and pads the cells in a second pass.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/floor_text.h"
#include "bench/support/random_numbers.h"
#include "bench/support/ratio.h"
#include "bench/support/scratch.h"
#include "bench/support/spilled_cells.h"
#include "host/handles.h"
#include "host/metric.h"
#include "host/quantity.h"
#include "writers/textwriter_plugin/raw_writer.h"

namespace {

using qumetra::bench::bytesOf;
using qumetra::bench::countText;
using qumetra::bench::kFloorBlockSize;
using qumetra::bench::RandomNumbers;
using qumetra::bench::realText;
using qumetra::bench::Scratch;
using qumetra::bench::SpilledCells;

/// Values per sample: half reals, half integers, as a collection of this size brings them.
constexpr std::size_t kColumns = 16;
/// Samples differ in their values and repeat after so many, so that input takes no memory to speak
/// of.
constexpr std::size_t kSamples = 256;

/// What is measured, as plain arrays.
struct Values {
  std::array<std::uint64_t, kSamples> timestamps{};
  std::array<std::array<double, kColumns / 2>, kSamples> reals{};
  std::array<std::array<std::uint64_t, kColumns / 2>, kSamples> counts{};
};

const Values& values() {
  static const Values made = [] {
    Values result;
    RandomNumbers random;
    for (std::size_t i = 0; i < kSamples; ++i) {
      result.timestamps[i] = 1'000'000'000'000 + i * 1'000'003;
      for (std::size_t j = 0; j < kColumns / 2; ++j) {
        result.reals[i][j] = static_cast<double>(random.next() >> 44) / 7919;
        result.counts[i][j] = random.next() >> 40;
      }
    }
    return result;
  }();
  return made;
}

/// The same as messages of a host.
class Messages {
 public:
  Messages() {
    for (std::size_t i = 0; i < kColumns; ++i) {
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(
          100 + i, pwr::HandleTexts{"CPU" + std::to_string(i), "", ""}, nullptr));
    }
    for (std::size_t i = 0; i < kSamples; ++i) {
      m_samples.push_back(makeSample(i));
    }
  }

  const pwr::Metric& sample(std::size_t number) const { return *m_samples[number % kSamples]; }

 private:
  std::unique_ptr<pwr::Metric> makeSample(std::size_t number) {
    auto metric = std::make_unique<pwr::Metric>();
    metric->name = "Package Power";
    metric->metricId = 7;
    metric->quantity = &m_quantity;
    pwr::SampleData data;
    data.timestamp = values().timestamps[number];
    for (std::size_t i = 0; i < kColumns; ++i) {
      pwr::Data value = i % 2 == 0
                            ? pwr::Data(values().reals[number][i / 2])
                            : pwr::Data(static_cast<unsigned long>(values().counts[number][i / 2]));
      m_elements.push_back(std::make_unique<pwr::DataElement>(m_entities[i].get(), nullptr, nullptr,
                                                              std::move(value), 0, nullptr));
      data.elements.push_back(m_elements.back().get());
    }
    metric->setData(std::move(data));
    return metric;
  }

  pwr::Quantity m_quantity{1, 3, "Power", "mW", "Power (mW)"};
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::DataElement>> m_elements;
  std::vector<std::unique_ptr<pwr::Metric>> m_samples;
};

const Messages& messages() {
  static const Messages made;
  return made;
}

void writeRaw(const std::string& base, std::size_t elements) {
  RawWriterV2 writer;
  if (writer.init(base, false) != 0) {
    std::abort();
  }
  for (std::size_t i = 0; i < elements / kColumns; ++i) {
    writer.writeMessage(messages().sample(i));
  }
  writer.fini();
}

// The floor.

/// Spilled cells, and what is made of them.
class Floor {
 public:
  explicit Floor(const std::string& path)
      : m_cells(path, kColumns + 1), m_outBlock(kFloorBlockSize + 1) {}

  void row(std::size_t sample) {
    const Values& all = values();
    m_cells.add(0, [&](char* out) { return countText(out, all.timestamps[sample]); });
    for (std::size_t i = 0; i < kColumns / 2; ++i) {
      m_cells.add(1 + 2 * i, [&](char* out) { return realText(out, all.reals[sample][i]); });
      m_cells.add(2 + 2 * i, [&](char* out) { return countText(out, all.counts[sample][i]); });
    }
  }

  /// The second pass.
  void layOut(const std::string& path) {
    m_out = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    titles();
    m_cells.forEach([this](std::size_t column, std::string_view text) { padded(column, text); });
    put("\n");  // The block has a byte to spare for it.
    writeOut();
    ::close(m_out);
  }

 private:
  void titles() {
    put("Package Power\n");
    for (std::size_t i = 0; i <= kColumns; ++i) {
      const std::string title = i == 0 ? "Timestamp" : "CPU" + std::to_string(i - 1) + " (mW)";
      m_cells.widen(i, title.size());
      padded(i, title);
    }
  }

  void padded(std::size_t column, std::string_view text) {
    const std::size_t padding = m_cells.width(column) - text.size();
    if (kFloorBlockSize - m_outUsed < 3 + padding + text.size()) {
      writeOut();
    }
    char* out = m_outBlock.data() + m_outUsed;
    if (column > 0) {
      *out++ = ',';
      *out++ = ' ';
    }
    std::memset(out, ' ', padding);
    std::memcpy(out + padding, text.data(), text.size());
    out += padding + text.size();
    if (column == kColumns) {
      *out++ = '\n';
    }
    m_outUsed = static_cast<std::size_t>(out - m_outBlock.data());
  }

  void put(std::string_view text) {
    std::memcpy(m_outBlock.data() + m_outUsed, text.data(), text.size());
    m_outUsed += text.size();
  }

  void writeOut() {
    if (::write(m_out, m_outBlock.data(), m_outUsed) != static_cast<ssize_t>(m_outUsed)) {
      std::abort();
    }
    m_outUsed = 0;
  }

  SpilledCells m_cells;
  int m_out = -1;
  std::vector<char> m_outBlock;
  std::size_t m_outUsed = 0;
};

void writeFloor(const std::string& path, std::size_t elements) {
  const Scratch spill("raw_spill");
  Floor table(spill.path());
  for (std::size_t i = 0; i < elements / kColumns; ++i) {
    table.row(i % kSamples);
  }
  table.layOut(path);
}

/// A ratio means something only when both sides make the same bytes.
bool sidesAgree() {
  constexpr std::size_t kElements = 200'000;
  const Scratch subject("raw_check.txt");
  const Scratch floor("raw_check_floor");
  writeRaw(subject.path().substr(0, subject.path().size() - 4), kElements);
  writeFloor(floor.path(), kElements);
  const std::string bytes = bytesOf(subject.path());
  return !bytes.empty() && bytes == bytesOf(floor.path());
}

}  // namespace

int main(int argc, char** argv) {
  if (!sidesAgree()) {
    std::fprintf(stderr, "raw_bench: the floor makes other bytes than the writer\n");
    return 1;
  }
  const auto subject = [](std::size_t elements) {
    const Scratch file("raw.txt");
    writeRaw(file.path().substr(0, file.path().size() - 4), elements);
  };
  const auto floor = [](std::size_t elements) {
    const Scratch file("raw_floor");
    writeFloor(file.path(), elements);
  };
  qumetra::bench::addContest({"raw", 2'048'000, subject, floor});
  return qumetra::bench::runContests(argc, argv);
}
