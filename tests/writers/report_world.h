// Tables, remarks and messages for the tests of the summary report.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "host/configuration.h"
#include "host/messages.h"
#include "host/table.h"
#include "qumetra/model/model.h"
#include "tests/writers/table_world.h"

namespace qumetra::test {

/// Makes the objects of a report. They live as long as this does; the process-wide order of metrics
/// is empty again in the end.
class ReportWorld {
 public:
  ReportWorld() { setOrder({}); }
  ReportWorld(const ReportWorld&) = delete;
  ReportWorld& operator=(const ReportWorld&) = delete;
  ~ReportWorld() { setOrder({}); }

  static void setOrder(pwr::MetricOrder order) {
    pwr::WriterInterfaceConfigFileParser::instance()->setOrder(std::move(order));
  }

  /// A column whose header is `header`, or empty.
  const pwr::DataHandle* column(const std::string& fieldName, const std::string& header = "") {
    return &m_model.addColumnHandle(spec("name of " + fieldName, fieldName, header),
                                    pwr::DataHandle::kOtherType);
  }

  const pwr::EntityHandle* entity(const std::string& name,
                                  const pwr::EntityHandle* parent = nullptr) {
    return &m_model.addEntity(spec(name, "field name of " + name, ""), parent);
  }

  const pwr::Quantity* quantity(const std::string& units) {
    QuantitySpec wanted;
    wanted.name = "quantity";
    wanted.units = units;
    return &m_model.addQuantity(wanted);
  }

  const pwr::TextNotes* notes(pwr::TextNotes notes) { return &m_model.addNotes(std::move(notes)); }

  /// A table of one column named "c" with the cell `text`.
  pwr::TableMessage table(std::uint32_t metricId, std::uint32_t id, const std::string& title,
                          const std::string& text) {
    pwr::TableMessage table = makeTable(pwr::TableMessage::kValueTable, title);
    table.m_metricId = metricId;
    table.m_id = id;
    addShared(table, {column("c")}, {text});
    return table;
  }

  Model& model() { return m_model; }

 private:
  static HandleSpec spec(const std::string& name, const std::string& fieldName,
                         const std::string& header) {
    HandleSpec spec;
    spec.name = name;
    spec.fieldName = fieldName;
    spec.header = header;
    return spec;
  }

  Model m_model;
};

/// The lines that such a table has in a report.
inline std::string reportOf(const std::string& title, const std::string& text) {
  const std::string pad(text.empty() ? 0 : text.size() - 1, ' ');
  return title + "\nc" + pad + "\n-" + pad + "\n" + text + "\n\n";
}

}  // namespace qumetra::test
