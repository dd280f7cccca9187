#include "host/table.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/quantity.h"
#include "qumetra/model/model.h"

namespace {

using pwr::TableMessage;
using Cell = TableMessage::Cell;
using State = TableMessage::Cell::State;
using qumetra::Model;

class TableMessageTest : public testing::Test {
 protected:
  /// Reads a cell into `text` and `present`, which hold what no cell does.
  int read(const pwr::EntityHandle* entity, const pwr::DataHandle* handle) {
    text = "former";
    present = true;
    return table.getFieldAsString(entity, handle, text, present);
  }

  Model model;
  TableMessage table;
  const pwr::ColumnHandle& shared = model.addColumnHandle({"shared"}, 2);
  const pwr::ColumnHandle& field = model.addColumnHandle({"field"}, 2);
  const pwr::EntityHandle& high = model.addEntity({.name = "high", .id = 20});
  const pwr::EntityHandle& low = model.addEntity({.name = "low", .id = 10});
  std::string text;
  bool present = false;
};

TEST_F(TableMessageTest, NewTableIsAnEmptyTitleTable) {
  EXPECT_EQ(table.getTableMessageType(), 0);
  EXPECT_EQ(table.getTitle(), "");
  EXPECT_EQ(table.getQuantity(), nullptr);
  EXPECT_EQ(table.getTextNotes(), nullptr);
  EXPECT_EQ(table.getFieldCount(), 0U);
  EXPECT_EQ(table.mustBeSkipped(), 0);
  EXPECT_FALSE(table.hasFieldHeaders());
  EXPECT_EQ(table.sharedHandlesBegin(), table.sharedHandlesEnd());
  EXPECT_EQ(table.fieldHandlesBegin(), table.fieldHandlesEnd());
  EXPECT_EQ(table.entitiesBegin(), table.entitiesEnd());
}

TEST_F(TableMessageTest, GivesWhatWasSet) {
  const pwr::TextNotes notes{{1, {"after"}}};
  table.setTitle("title");
  table.setQuantity(pwr::Quantity::time());
  table.setTextNotes(&notes);
  table.setTableMessageType(TableMessage::kValueTable);
  table.setSkipped(true);
  table.setHasFieldHeaders(true);
  EXPECT_EQ(table.getTitle(), "title");
  EXPECT_EQ(table.getQuantity(), pwr::Quantity::time());
  EXPECT_EQ(table.getTextNotes(), &notes);
  EXPECT_EQ(table.getTableMessageType(), 1);
  EXPECT_NE(table.mustBeSkipped(), 0);
  EXPECT_TRUE(table.hasFieldHeaders());
}

TEST_F(TableMessageTest, HandlesStandInTheOrderInWhichTheyWereAdded) {
  table.addSharedHandle(&shared);
  table.addSharedHandle(nullptr);
  table.addFieldHandle(nullptr);
  table.addFieldHandle(&field);
  using Handles = std::vector<const pwr::DataHandle*>;
  EXPECT_EQ(Handles(table.sharedHandlesBegin(), table.sharedHandlesEnd()),
            (Handles{&shared, nullptr}));
  EXPECT_EQ(Handles(table.fieldHandlesBegin(), table.fieldHandlesEnd()),
            (Handles{nullptr, &field}));
}

TEST_F(TableMessageTest, EntitiesStandInTheOrderOfTheirIds) {
  table.addEntity(&high);
  table.addEntity(&low);
  std::vector<const pwr::EntityHandle*> entities;
  for (auto entry = table.entitiesBegin(); entry != table.entitiesEnd(); ++entry) {
    entities.push_back(entry->second);
  }
  EXPECT_EQ(entities, (std::vector<const pwr::EntityHandle*>{&low, &high}));
}

TEST_F(TableMessageTest, EntityWhoseIdIsThereAlreadyIsLeftOut) {
  const pwr::EntityHandle copy(high);
  table.addEntity(&high);
  table.addEntity(&copy);
  EXPECT_EQ(table.getEntityCount(), 1U);
  EXPECT_EQ(table.entitiesBegin()->second, &high);
}

TEST_F(TableMessageTest, HandleCountIsTheNumberOfFieldHandles) {
  table.addSharedHandle(&shared);
  table.addFieldHandle(&field);
  table.addFieldHandle(&field);
  EXPECT_EQ(table.getHandleCount(), 2U);
  EXPECT_EQ(table.getSharedHandleCount(), 1U);
}

TEST_F(TableMessageTest, FieldCountIsTheNumberOfColumns) {
  table.addSharedHandle(&shared);
  table.addFieldHandle(&field);
  table.addFieldHandle(&shared);
  EXPECT_EQ(table.getFieldCount(), 3U);
  table.addEntity(&high);
  EXPECT_EQ(table.getFieldCount(), 3U);
  table.addEntity(&low);
  EXPECT_EQ(table.getFieldCount(), 5U);
}

TEST_F(TableMessageTest, PresentCellGivesItsText) {
  table.setCell(&low, &field, {State::Present, "7"});
  present = false;
  EXPECT_EQ(table.getFieldAsString(&low, &field, text, present), 0);
  EXPECT_EQ(text, "7");
  EXPECT_TRUE(present);
}

TEST_F(TableMessageTest, PresentCellMayBeEmpty) {
  table.setCell(&low, &field, {State::Present, ""});
  EXPECT_EQ(read(&low, &field), 0);
  EXPECT_EQ(text, "");
  EXPECT_TRUE(present);
}

TEST_F(TableMessageTest, AbsentCellIsReadButNotPresent) {
  table.setCell(&low, &field, {State::Absent, ""});
  EXPECT_EQ(read(&low, &field), 0);
  EXPECT_FALSE(present);
}

TEST_F(TableMessageTest, FailedCellLeavesItsTextBehind) {
  table.setCell(&low, &field, {State::Failed, "broken"});
  EXPECT_EQ(read(&low, &field), 1);
  EXPECT_EQ(text, "broken");
}

TEST_F(TableMessageTest, UnwrittenCellLeavesTheCallersTextAlone) {
  table.setCell(&low, &field, {State::Unwritten, "never seen"});
  EXPECT_EQ(read(&low, &field), 1);
  EXPECT_EQ(text, "former");
}

TEST_F(TableMessageTest, CellThatIsNowhereGivenLeavesTheCallersTextAlone) {
  EXPECT_EQ(read(&low, &field), 1);
  EXPECT_EQ(text, "former");
}

TEST_F(TableMessageTest, CellsAreToldApartByEntityAndHandle) {
  table.setCell(nullptr, &shared, {State::Present, "shared"});
  table.setCell(&low, &field, {State::Present, "low"});
  table.setCell(&high, &field, {State::Present, "high"});
  EXPECT_EQ(read(&low, &field), 0);
  EXPECT_EQ(text, "low");
  EXPECT_EQ(read(&high, &field), 0);
  EXPECT_EQ(text, "high");
  EXPECT_EQ(table.getFieldAsString(&shared, text, present), 0);
  EXPECT_EQ(text, "shared");
  EXPECT_EQ(table.getFieldAsString(&field, text, present), 1);
}

TEST_F(TableMessageTest, CellOfANullHandleCanBeRead) {
  table.setCell(nullptr, nullptr, {State::Present, "nobody's"});
  EXPECT_EQ(table.getFieldAsString(nullptr, text, present), 0);
  EXPECT_EQ(text, "nobody's");
}

TEST_F(TableMessageTest, CellSetAgainIsReplaced) {
  table.setCell(&low, &field, {State::Present, "first"});
  table.setCell(&low, &field, {State::Absent, ""});
  EXPECT_EQ(read(&low, &field), 0);
  EXPECT_FALSE(present);
}

TEST(QuantityToUnits, UnitsStandBetweenPrefixAndSuffix) {
  std::string text = "former";
  EXPECT_TRUE(TableMessage::quantityToUnits(pwr::Quantity::time(), text, " (", ")"));
  EXPECT_EQ(text, " (s)");
}

TEST(QuantityToUnits, QuantityWithoutUnitsLeavesTheTextAlone) {
  const pwr::Quantity count(1, 2, "Count", "", "Count");
  std::string text = "former";
  EXPECT_FALSE(TableMessage::quantityToUnits(&count, text, "(", ")"));
  EXPECT_EQ(text, "former");
}

TEST(QuantityToUnits, WithoutAQuantityTheTextIsLeftAlone) {
  std::string text = "former";
  EXPECT_FALSE(TableMessage::quantityToUnits(nullptr, text, "(", ")"));
  EXPECT_EQ(text, "former");
}

}  // namespace
