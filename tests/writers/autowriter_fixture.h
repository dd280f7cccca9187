// An automation writer in a directory of its own, with verbs to feed it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/table.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/writers/table_world.h"
#include "writers/autowriter_plugin.h"

namespace qumetra::test {

using Texts = std::vector<std::string>;
using Handles = std::vector<const pwr::DataHandle*>;

inline constexpr const char* kFile = "Automation_Summary.csv";

/// Each test stands in a fresh directory.
class AutoWriterTest : public ::testing::Test {
 public:
  AutoWriterTest() : m_formerDirectory(std::filesystem::current_path()) {
    std::filesystem::current_path(m_dir.path());
  }
  ~AutoWriterTest() override { std::filesystem::current_path(m_formerDirectory); }

 protected:
  /// Gives the writer a title table with one shared column per text.
  int titleTable(const std::string& title, const Texts& columns) {
    m_columns.clear();
    for (const std::string& name : columns) {
      m_columns.push_back(m_world.column(name));
    }
    pwr::TableMessage table = makeTable(pwr::TableMessage::kTitleTable, title);
    addShared(table, m_columns);
    return m_writer.writeMessage(table);
  }

  /// Gives the writer a value table with one shared column per text.
  int row(const std::string& title, const Texts& cells) {
    Handles columns = m_columns;
    while (columns.size() < cells.size()) {
      columns.push_back(m_world.column("beyond"));
    }
    columns.resize(cells.size());
    pwr::TableMessage table = makeTable(pwr::TableMessage::kValueTable, title);
    addShared(table, columns, cells);
    return m_writer.writeMessage(table);
  }

  /// A whole run of another writer that has one more column per title.
  static int run(const std::string& name, const Texts& titles) {
    TableWorld world;
    AutoWriter writer;
    writer.init(name, false);
    for (const std::string& title : titles) {
      const Handles columns = {world.column("Key"), world.column(title)};
      pwr::TableMessage table = makeTable(pwr::TableMessage::kTitleTable, "T");
      addShared(table, columns);
      writer.writeMessage(table);
      pwr::TableMessage values = makeTable(pwr::TableMessage::kValueTable, "T");
      addShared(values, columns, {"k", "v"});
      writer.writeMessage(values);
    }
    return writer.fini();
  }

  /// Ends the run and gives what is in the file.
  std::string summary() {
    EXPECT_EQ(m_writer.fini(), 0);
    return readFile(m_dir.file(kFile));
  }

  TempDir m_dir;
  LogCapture m_log;
  AutoWriter m_writer;
  TableWorld m_world;
  Handles m_columns;

 private:
  std::filesystem::path m_formerDirectory;
};

}  // namespace qumetra::test
