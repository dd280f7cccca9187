// The summary report, next to a program that makes the same bytes from plain arrays: it spills each
// cell with its length, through 1 MiB blocks, and pads the cells in a second pass.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
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
#include "host/configuration.h"
#include "host/handles.h"
#include "host/quantity.h"
#include "host/table.h"
#include "writers/textwriter_plugin/summary_writer.h"

namespace {

using qumetra::bench::bytesOf;
using qumetra::bench::countText;
using qumetra::bench::fixedText;
using qumetra::bench::kFloorBlockSize;
using qumetra::bench::kLongestText;
using qumetra::bench::RandomNumbers;
using qumetra::bench::Scratch;
using qumetra::bench::SpilledCells;

/// A row has a count and, for each field and entity, a real with two decimals.
constexpr std::size_t kFields = 5;
constexpr std::size_t kEntities = 3;
constexpr std::size_t kColumns = 1 + kFields * kEntities;
/// Rows repeat after so many, so that input takes no memory to speak of.
constexpr std::size_t kRows = 256;

/// What was measured, as plain arrays.
struct Values {
  std::array<std::uint64_t, kRows> counts{};
  std::array<std::array<double, kColumns - 1>, kRows> reals{};
};

const Values& values() {
  static const Values made = [] {
    Values result;
    RandomNumbers random;
    for (std::size_t i = 0; i < kRows; ++i) {
      result.counts[i] = random.next() >> 40;
      for (double& real : result.reals[i]) {
        real = static_cast<double>(random.next() >> 44) / 7919;
      }
    }
    return result;
  }();
  return made;
}

/// The same as a host's tables, which hold their cells as text.
class Tables {
 public:
  Tables() {
    for (std::size_t i = 0; i < kFields; ++i) {
      m_fields.push_back(std::make_unique<pwr::DataHandle>(
          10 + i, pwr::HandleTexts{"F", "C" + std::to_string(i), ""}, 1));
    }
    for (std::size_t i = 0; i < kEntities; ++i) {
      m_entities.push_back(std::make_unique<pwr::EntityHandle>(
          100 + i, pwr::HandleTexts{"CPU" + std::to_string(i), "", ""}, nullptr));
    }
    for (std::size_t i = 0; i < kRows; ++i) {
      m_rows.push_back(makeRow(i));
    }
  }

  const pwr::TableMessage& row(std::size_t number) const { return *m_rows[number % kRows]; }

 private:
  std::unique_ptr<pwr::TableMessage> makeRow(std::size_t number) {
    auto table = std::make_unique<pwr::TableMessage>();
    table->m_metricId = 7;
    table->m_id = 1;
    table->setTitle("Residency");
    table->setQuantity(&m_quantity);
    table->setTableMessageType(pwr::TableMessage::kValueTable);
    table->addSharedHandle(&m_shared);
    table->setCell(nullptr, &m_shared, present(std::to_string(values().counts[number])));
    for (const auto& entity : m_entities) {
      table->addEntity(entity.get());
    }
    for (std::size_t i = 0; i < kFields; ++i) {
      table->addFieldHandle(m_fields[i].get());
      for (std::size_t j = 0; j < kEntities; ++j) {
        char text[kLongestText];
        const std::size_t size = fixedText(text, values().reals[number][i * kEntities + j]);
        table->setCell(m_entities[j].get(), m_fields[i].get(), present({text, size}));
      }
    }
    return table;
  }

  static pwr::TableMessage::Cell present(std::string text) {
    return {pwr::TableMessage::Cell::State::Present, std::move(text)};
  }

  pwr::Quantity m_quantity{1, 3, "Residency", "%", "Residency (%)"};
  pwr::DataHandle m_shared{2, pwr::HandleTexts{"S", "Count", ""}, 1};
  std::vector<std::unique_ptr<pwr::DataHandle>> m_fields;
  std::vector<std::unique_ptr<pwr::EntityHandle>> m_entities;
  std::vector<std::unique_ptr<pwr::TableMessage>> m_rows;
};

const Tables& tables() {
  static const Tables made;
  return made;
}

void writeSummary(const std::string& base, std::size_t cells) {
  SummaryWriter writer;
  if (writer.init(base, false) != 0) {
    std::abort();
  }
  for (std::size_t i = 0; i < cells / kColumns; ++i) {
    writer.writeMessage(tables().row(i));
  }
  writer.fini();
}

/// The floor: spilled cells, and what is made of them.
class Floor {
 public:
  explicit Floor(const std::string& path) : m_cells(path, kColumns), m_block(kFloorBlockSize) {}

  void row(std::size_t number) {
    const Values& all = values();
    m_cells.add(0, [&](char* out) { return countText(out, all.counts[number]); });
    for (std::size_t i = 1; i < kColumns; ++i) {
      m_cells.add(i, [&](char* out) { return fixedText(out, all.reals[number][i - 1]); });
    }
  }

  /// The second pass.
  void layOut(const std::string& path) {
    m_out = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    titles();
    m_cells.forEach([this](std::size_t column, std::string_view text) { putCell(text, column); });
    put("\n", 0);
    writeOut();
    ::close(m_out);
  }

 private:
  void titles() {
    put("Residency (units = %)\n", 0);
    std::vector<std::string> names = {"Count"};
    for (std::size_t i = 0; i < kColumns - 1; ++i) {
      names.push_back("CPU" + std::to_string(i % kEntities) + " C" + std::to_string(i / kEntities));
    }
    for (std::size_t i = 0; i < kColumns; ++i) {
      m_cells.widen(i, names[i].size());
    }
    for (std::size_t i = 0; i < kColumns; ++i) {
      putCell(names[i], i);
    }
    for (std::size_t i = 0; i < kColumns; ++i) {
      putCell(std::string(names[i].size(), '-'), i);
    }
  }

  void putCell(std::string_view text, std::size_t column) {
    put(text, m_cells.width(column));
    put(column + 1 < kColumns ? ", " : "\n", 0);
  }

  void put(std::string_view text, std::size_t width) {
    const std::size_t size = std::max(width, text.size());
    if (kFloorBlockSize - m_used < size) {
      writeOut();
    }
    std::memcpy(m_block.data() + m_used, text.data(), text.size());
    std::memset(m_block.data() + m_used + text.size(), ' ', size - text.size());
    m_used += size;
  }

  void writeOut() {
    if (::write(m_out, m_block.data(), m_used) != static_cast<ssize_t>(m_used)) {
      std::abort();
    }
    m_used = 0;
  }

  SpilledCells m_cells;
  int m_out = -1;
  std::vector<char> m_block;
  std::size_t m_used = 0;
};

void writeFloor(const std::string& path, std::size_t cells) {
  const Scratch spill("sum_floor_spill");
  Floor table(spill.path());
  for (std::size_t i = 0; i < cells / kColumns; ++i) {
    table.row(i % kRows);
  }
  table.layOut(path);
}

std::string baseOf(const Scratch& report) {
  return report.path().substr(0, report.path().size() - std::strlen(".csv"));
}

/// A ratio means something only when both sides make the same bytes.
bool sidesAgree() {
  constexpr std::size_t kCells = 200'000;
  const Scratch subject("sum_check.csv");
  const Scratch floor("sum_check_floor");
  writeSummary(baseOf(subject), kCells);
  writeFloor(floor.path(), kCells);
  const std::string bytes = bytesOf(subject.path());
  return !bytes.empty() && bytes == bytesOf(floor.path());
}

}  // namespace

int main(int argc, char** argv) {
  pwr::WriterInterfaceConfigFileParser::instance()->setOrder({{"feature"}, {}, {}});
  if (!sidesAgree()) {
    std::fprintf(stderr, "summary_bench: the floor makes other bytes than the writer\n");
    return 1;
  }
  const auto subject = [](std::size_t cells) {
    const Scratch report("sum.csv");
    writeSummary(baseOf(report), cells);
  };
  const auto floor = [](std::size_t cells) {
    const Scratch report("sum_floor");
    writeFloor(report.path(), cells);
  };
  // Four times as many are ten million.
  qumetra::bench::addContest({"sum", 2'500'000, subject, floor});
  return qumetra::bench::runContests(argc, argv);
}
