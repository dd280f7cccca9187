// The frame's classes and the making and destroying of lists, from inside.
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/environment.h"
#include "host/messages.h"
#include "host/metric.h"
#include "host/system_metadata.h"
#include "host/table.h"
#include "tests/support/log_capture.h"
#include "writers/plugin_list.h"
#include "writers/writer_plugins.h"

namespace {

using qumetra::test::LogCapture;

/// A writer that takes nothing.
class BareWriter : public WriterPlugin {
 public:
  BareWriter() : WriterPlugin("guid") {}
  int init(const std::string& /*name*/, bool /*continuous*/) override { return 0; }
  int fini() override { return 0; }
};

/// A capability that counts its destructions.
class CountedCapability : public pwr::PluginCapability {
 public:
  explicit CountedCapability(int& destroyed)
      : PluginCapability("name", "description", false), m_destroyed(destroyed) {}
  ~CountedCapability() override { ++m_destroyed; }

 private:
  int& m_destroyed;
};

TEST(PluginCapability, StartsUnownedAndEmpty) {
  const pwr::PluginCapability capability("name", "description", false);
  EXPECT_EQ(capability.m_name, "name");
  EXPECT_EQ(capability.m_description, "description");
  EXPECT_EQ(capability.m_plugin, nullptr);
  EXPECT_TRUE(capability.m_options.empty());
  EXPECT_TRUE(capability.m_requirements.empty());
  EXPECT_EQ(capability.m_flags, 0);
}

TEST(PluginCapability, ContinuousSetsBitFour) {
  const pwr::PluginCapability capability("name", "description", true);
  EXPECT_EQ(capability.m_flags, 4);
}

TEST(WriterPluginCapability, KeepsClassesAndSuffixAndPassesTheRestOn) {
  const pwr::WriterPluginCapability capability({pwr::TableClass{3}, pwr::TableClass{0}}, "name",
                                               "description", ".suffix", true);
  EXPECT_EQ(capability.m_tableClasses,
            (std::set<pwr::TableClass>{pwr::TableClass{0}, pwr::TableClass{3}}));
  EXPECT_EQ(capability.m_fileSuffix, ".suffix");
  EXPECT_EQ(capability.m_name, "name");
  EXPECT_EQ(capability.m_description, "description");
  EXPECT_EQ(capability.m_flags, 4);
}

TEST(Plugin, StartsWithoutIdNameAndCapabilities) {
  const Plugin plugin("guid");
  EXPECT_EQ(plugin.m_id, -1);
  EXPECT_EQ(plugin.m_guid, "guid");
  EXPECT_EQ(plugin.m_name, "");
  EXPECT_TRUE(plugin.m_capabilities.empty());
}

TEST(Plugin, TakesAnyNumberOfCapabilitiesAndPointsThemBack) {
  int destroyed = 0;
  {
    Plugin plugin("guid");
    plugin.addCapability(new CountedCapability(destroyed));
    plugin.addCapability(new CountedCapability(destroyed));
    ASSERT_EQ(plugin.m_capabilities.size(), 2U);
    EXPECT_EQ(plugin.m_capabilities[0]->m_plugin, &plugin);
    EXPECT_EQ(plugin.m_capabilities[1]->m_plugin, &plugin);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 2);
}

TEST(Plugin, DestructionStopsAtTheFirstNullCapability) {
  int destroyedBefore = 0;
  int destroyedBehind = 0;
  const auto behind = std::make_unique<CountedCapability>(destroyedBehind);
  {
    Plugin plugin("guid");
    plugin.addCapability(new CountedCapability(destroyedBefore));
    plugin.m_capabilities.push_back(nullptr);
    plugin.m_capabilities.push_back(behind.get());
  }
  EXPECT_EQ(destroyedBefore, 1);
  EXPECT_EQ(destroyedBehind, 0);
}

class SecondCapability : public ::testing::Test {
 protected:
  /// Registers two capabilities; the second stays with the test.
  void registerTwo() {
    m_writer.addCapability(new CountedCapability(m_firstDestroyed));
    m_writer.addCapability(m_second.get());
  }

  LogCapture m_log;
  BareWriter m_writer;
  int m_firstDestroyed = 0;
  int m_secondDestroyed = 0;
  std::unique_ptr<CountedCapability> m_second =
      std::make_unique<CountedCapability>(m_secondDestroyed);
};

TEST_F(SecondCapability, IsNotStoredAndStaysTheCallers) {
  registerTwo();
  EXPECT_EQ(m_writer.m_capabilities.size(), 1U);
  EXPECT_NE(m_writer.m_capabilities[0], m_second.get());
  EXPECT_EQ(m_second->m_plugin, nullptr);
  EXPECT_EQ(m_secondDestroyed, 0);
}

TEST_F(SecondCapability, IsRefusedWithTheMisspeltWarningAtLevelTwo) {
  registerTwo();
  ASSERT_EQ(m_log.warnings().size(), 1U);
  EXPECT_EQ(m_log.warnings()[0].first, LogSink::kWarning);
  EXPECT_EQ(
      m_log.warnings()[0].second,
      "WARNING: Illegal attempt to register a second capabliity for a writer plugin...ignored\n");
  EXPECT_TRUE(m_log.errors().empty());
}

TEST_F(SecondCapability, IsWarnedAboutAtEveryAttempt) {
  registerTwo();
  m_writer.addCapability(m_second.get());
  EXPECT_EQ(m_log.warnings().size(), 2U);
}

TEST_F(SecondCapability, IsRefusedSilentlyBelowWarnings) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  // No tag switches this warning on.
  m_log.environment().enabledTags.add("text-writer-plugin");
  registerTwo();
  EXPECT_TRUE(m_log.warnings().empty());
  EXPECT_EQ(m_writer.m_capabilities.size(), 1U);
}

TEST(WriterPlugin, MessagesThatAWriterDoesNotTakeSucceed) {
  BareWriter writer;
  EXPECT_EQ(writer.writeMessage(pwr::TableMessage()), 0);
  EXPECT_EQ(writer.writeMessage(pwr::TextMessage()), 0);
  EXPECT_EQ(writer.writeMessage(pwr::SystemMessage()), 0);
  EXPECT_EQ(writer.writeMessage(pwr::IdMessage()), 0);
  EXPECT_EQ(writer.writeMessage(pwr::Metric()), 0);
  EXPECT_EQ(writer.writeMessage(pwr::MetricContainerInfoMessage()), 0);
  EXPECT_EQ(writer.flushContinuousResults(pwr::SystemMetadata()), 0);
}

/// A plug-in that notes its destruction and may then shorten the list it stands in.
class NotedPlugin : public Plugin {
 public:
  explicit NotedPlugin(std::string guid) : Plugin(std::move(guid)) { s_made.push_back(this); }
  ~NotedPlugin() override {
    s_destroyed.push_back(m_guid);
    if (m_listToCut != nullptr) {
      m_listToCut->count = 1;
    }
  }

  PluginList* m_listToCut = nullptr;

  static inline std::vector<NotedPlugin*> s_made;
  static inline std::vector<std::string> s_destroyed;
};

std::unique_ptr<Plugin> makeFirst() { return std::make_unique<NotedPlugin>("first"); }
std::unique_ptr<Plugin> makeSecond() { return std::make_unique<NotedPlugin>("second"); }
std::unique_ptr<Plugin> makeNothing() { throw std::runtime_error("no writer today"); }

class PluginLists : public ::testing::Test {
 protected:
  PluginLists() {
    NotedPlugin::s_made.clear();
    NotedPlugin::s_destroyed.clear();
  }

  static inline std::size_t s_askedBytes = 0;
  static void* refuse(std::size_t bytes) {
    s_askedBytes = bytes;
    return nullptr;
  }

  const std::vector<PluginMaker> m_makers = {&makeFirst, &makeSecond};
};

TEST_F(PluginLists, HoldThePluginsInTheOrderOfTheirMakers) {
  PluginList* list = makePluginList(m_makers, &std::malloc);
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->count, 2);
  EXPECT_EQ(list->plugins[0]->m_guid, "first");
  EXPECT_EQ(list->plugins[1]->m_guid, "second");
  destroyPlugins(list);
}

TEST_F(PluginLists, DestroyThePluginsInTheirOrder) {
  destroyPlugins(makePluginList(m_makers, &std::malloc));
  EXPECT_EQ(NotedPlugin::s_destroyed, (std::vector<std::string>{"first", "second"}));
}

TEST_F(PluginLists, AreNullWhenThereIsNoMemoryForTheArray) {
  EXPECT_EQ(makePluginList(m_makers, &refuse), nullptr);
  EXPECT_EQ(s_askedBytes, 16U);
  for (const NotedPlugin* plugin : NotedPlugin::s_made) {
    delete plugin;
  }
}

TEST_F(PluginLists, LeaveThePluginsAliveWhenThereIsNoMemoryForTheArray) {
  makePluginList(m_makers, &refuse);
  EXPECT_TRUE(NotedPlugin::s_destroyed.empty());
  ASSERT_EQ(NotedPlugin::s_made.size(), 2U);
  for (const NotedPlugin* plugin : NotedPlugin::s_made) {
    delete plugin;
  }
}

TEST_F(PluginLists, PassAnExceptionOfAConstructorOn) {
  const std::vector<PluginMaker> makers = {&makeFirst, &makeNothing};
  EXPECT_THROW(makePluginList(makers, &std::malloc), std::runtime_error);
}

TEST_F(PluginLists, ReadTheCountAgainAfterEachDestruction) {
  PluginList* list = makePluginList(m_makers, &std::malloc);
  ASSERT_NE(list, nullptr);
  NotedPlugin::s_made[0]->m_listToCut = list;
  const std::unique_ptr<Plugin> spared(list->plugins[1]);
  destroyPlugins(list);
  EXPECT_EQ(NotedPlugin::s_destroyed, std::vector<std::string>{"first"});
}

TEST_F(PluginLists, SkipANullEntryAndDestroyTheRest) {
  PluginList* list = makePluginList(m_makers, &std::malloc);
  ASSERT_NE(list, nullptr);
  const std::unique_ptr<Plugin> taken(list->plugins[0]);
  list->plugins[0] = nullptr;
  destroyPlugins(list);
  EXPECT_EQ(NotedPlugin::s_destroyed, std::vector<std::string>{"second"});
}

}  // namespace
