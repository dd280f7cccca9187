// What all writers of text reports have in common.
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/system_metadata.h"
#include "tests/writers/spill_test_support.h"
#include "writers/textwriter_plugin/summary_writer.h"
#include "writers/textwriter_plugin/text_writer_impl.h"

namespace {

namespace fs = std::filesystem;
using qumetra::test::SpillDir;

/// Shows what a text writer keeps.
class OpenTextWriter : public TextWriter {
 public:
  explicit OpenTextWriter(bool hasEngine) : TextWriter("guid") {
    if (hasEngine) {
      m_impl = std::make_unique<TextWriterImpl>("; ", ".txt");
    }
  }
  TextWriterImpl& impl() { return *m_impl; }
};

TEST(TextWriter, TimestampFrequencyIsKept) {
  OpenTextWriter writer(true);
  EXPECT_EQ(writer.impl().m_timestampFrequency, 1.0F);
  pwr::SystemMetadata metadata;
  metadata.m_timestampFrequency = 2.5F;
  pwr::SystemMessage message;
  EXPECT_EQ(writer.writeMessage(message), 0);
  EXPECT_EQ(writer.impl().m_timestampFrequency, 1.0F);
  message.m_metadata = &metadata;
  EXPECT_EQ(writer.writeMessage(message), 0);
  EXPECT_EQ(writer.impl().m_timestampFrequency, 2.5F);
}

TEST(TextWriter, EnvironmentSwitchIsReadWhenTheWriterIsMade) {
  ::setenv("PW_DO_TIMELINE_TSC", "y", 1);
  EXPECT_TRUE(OpenTextWriter(true).impl().m_doTimelineTsc);
  ::setenv("PW_DO_TIMELINE_TSC", "yes", 1);
  EXPECT_FALSE(OpenTextWriter(true).impl().m_doTimelineTsc);
  ::unsetenv("PW_DO_TIMELINE_TSC");
  EXPECT_FALSE(OpenTextWriter(true).impl().m_doTimelineTsc);
}

TEST(TextWriter, TextGoesToTheTableOfItsId) {
  const SpillDir dir;
  OpenTextWriter writer(true);
  EXPECT_EQ(writer.init(dir.file("result"), false), 0);
  pwr::TextMessage message;
  message.m_id = 42;
  message.setMessage("text");
  EXPECT_EQ(writer.writeMessage(message), 0);
  ASSERT_EQ(writer.impl().m_tables.size(), 1U);
  EXPECT_EQ(writer.impl().m_tables.begin()->first, 42U);
  EXPECT_EQ(writer.impl().m_tables.begin()->second->m_columnWidths, std::vector<std::int32_t>({4}));
  EXPECT_TRUE(fs::exists(dir.file("result.txt")));
}

TEST(TextWriter, WithoutAnEngineEveryOperationFails) {
  OpenTextWriter writer(false);
  EXPECT_EQ(writer.init("name", false), 1);
  EXPECT_EQ(writer.writeMessage(pwr::TextMessage()), 1);
  EXPECT_EQ(writer.writeMessage(pwr::SystemMessage()), 1);
  EXPECT_EQ(writer.fini(), 1);
}

}  // namespace
