// The engine of the text reports with all that it needs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/writers/report_world.h"
#include "tests/writers/spill_test_support.h"
#include "writers/textwriter_plugin/text_writer_impl.h"

namespace qumetra::test {

/// An engine, and what steps of it store.
class TextWriterImplTest : public ::testing::Test {
 protected:
  TextWriterImplTest() {
    m_impl.m_metricOrder = &m_order;
    m_impl.m_featureMetrics = &m_features;
  }

  std::string base() const { return m_dir.file("result"); }
  std::string path() const { return base() + ".csv"; }

  /// Lets `step` store rows of `table`, and returns them as they would stand in the report.
  template <typename Step>
  std::string rowsOf(const pwr::TableMessage& table, Step step, std::uint32_t startColumn = 0) {
    TempFileManager manager(TextWriterImpl::countColumns(table, startColumn));
    step(manager);
    const std::string report = flushed(manager, "|").second;
    return report.substr(1, report.size() - 2);
  }

  std::string headersOf(const pwr::TableMessage& table, std::uint32_t startColumn = 0) {
    return rowsOf(
        table,
        [&](TempFileManager& manager) {
          EXPECT_EQ(m_impl.handleFieldHeaders(table, manager, startColumn), 0);
        },
        startColumn);
  }

  std::string namesOf(const pwr::TableMessage& table) {
    return rowsOf(table, [&](TempFileManager& manager) {
      EXPECT_EQ(m_impl.handleFieldMetadata(table, manager, 0), 0);
    });
  }

  std::string dataOf(const pwr::TableMessage& table, int expectedResult = 0) {
    return rowsOf(table, [&](TempFileManager& manager) {
      EXPECT_EQ(m_impl.handleData(table, nullptr, manager, 0), expectedResult);
    });
  }

  /// One shared column, two fields and two entities; every text tells its place.
  pwr::TableMessage grid() {
    pwr::TableMessage table = makeTable(pwr::TableMessage::kValueTable, "Grid");
    const auto* shared = m_world.column("S", "HS");
    m_fields = {m_world.column("F1", "H1"), m_world.column("F2", "H2")};
    m_entities = {m_world.entity("a"), m_world.entity("b")};
    table.setHasFieldHeaders(true);
    table.addSharedHandle(shared);
    table.setCell(nullptr, shared, present("s"));
    for (const auto* entity : m_entities) {
      table.addEntity(entity);
    }
    for (const auto* field : m_fields) {
      table.addFieldHandle(field);
      for (const auto* entity : m_entities) {
        table.setCell(entity, field, present(entity->getName() + field->getFieldName()));
      }
    }
    return table;
  }

  LogCapture m_log;
  SpillDir m_dir;
  ReportWorld m_world;
  std::vector<const pwr::DataHandle*> m_fields;
  std::vector<const pwr::EntityHandle*> m_entities;
  TextWriterImpl::MetricOrder m_order;
  TextWriterImpl::FeatureMetrics m_features;
  TextWriterImpl m_impl{", ", ".csv"};
};

}  // namespace qumetra::test
