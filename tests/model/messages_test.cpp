#include "host/messages.h"

#include <gtest/gtest.h>

#include "host/metric.h"
#include "host/table.h"
#include "qumetra/model/model.h"

namespace {

TEST(WriterMessage, EveryMessageTellsItsType) {
  EXPECT_EQ(pwr::TableMessage().getMessageType(), 1);
  EXPECT_EQ(pwr::TextMessage().getMessageType(), 2);
  EXPECT_EQ(pwr::SystemMessage().getMessageType(), 3);
  EXPECT_EQ(pwr::IdMessage().getMessageType(), 4);
  EXPECT_EQ(pwr::HeaderTextMessage().getMessageType(), 5);
  EXPECT_EQ(pwr::Metric().getMessageType(), 6);
  EXPECT_EQ(pwr::MetricContainerInfoMessage().getMessageType(), 7);
}

TEST(TextMessage, CarriesTheTextThatWasSet) {
  pwr::TextMessage message;
  EXPECT_EQ(message.m_message, "");
  message.setMessage("some text");
  EXPECT_EQ(message.m_message, "some text");
}

TEST(Metric, GivesTheSampleThatWasSetLast) {
  qumetra::Model model;
  const auto& entity = model.addEntity({"e"});
  const pwr::DataElement element(&entity, nullptr, nullptr, pwr::Data(1.5), 10, nullptr);
  pwr::Metric metric;
  metric.setData({1, {&element, &element}});
  metric.setData({2, {&element}});
  EXPECT_EQ(metric.getData().timestamp, 2U);
  ASSERT_EQ(metric.getData().elements.size(), 1U);
  EXPECT_EQ(metric.getData().elements[0], &element);
}

TEST(DataElement, GivesWhatItWasMadeFrom) {
  qumetra::Model model;
  const auto& entity = model.addEntity({"e"});
  const auto& state = model.addDescriptor({"C6"});
  const auto& importState = model.addDescriptor({"deep"});
  const pwr::DynamicAttributeValueManager info;
  const pwr::DataElement element(&entity, &state, &importState, pwr::Data(1.5), 10, &info);
  EXPECT_EQ(element.getEntity(), &entity);
  EXPECT_EQ(element.getDescriptor(), &state);
  EXPECT_EQ(element.getKeltoDescriptor(), &importState);
  double value = 0;
  EXPECT_EQ(element.getValue()->toReal(value), 0);
  EXPECT_EQ(value, 1.5);
  EXPECT_EQ(element.getDuration(), 10U);
  EXPECT_EQ(element.getAdditionalInfo(), &info);
}

}  // namespace
