// The library of writers as a host meets it: opened at run time, reached by two names and by
// virtual operations alone.
#include <dlfcn.h>

#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/system_metadata.h"
#include "tests/support/log_capture.h"
#include "writers/writer_plugins.h"

namespace {

using qumetra::test::LogCapture;

/// What a writer must say about itself.
struct ExpectedWriter {
  const char* guid;
  const char* option;
  const char* suffix;
  std::set<std::uint32_t> tableClasses;
  int flags;
  const char* description;
};

/// The writers in the order of their creation.
const std::vector<ExpectedWriter>& expectedWriters() {
  static const std::vector<ExpectedWriter> writers = {
      {"108d88ba-5ee4-11e4-aa15-123b93f75cba",
       "sum",
       ".csv",
       {0},
       0,
       "Write summary reports for all collected metrics to CSV file [default]"},
      {"f245366a-c403-478b-aae5-649269da17c7",
       "kelto",
       ".pwr",
       {3, 4, 5, 6, 7, 8, 9},
       0,
       "Write data trace file (.pwr) in import format for visualization with Corvane Kelto Viewer"},
      {"2e820d9e-2f9e-4cdb-a81d-056273a7a392",
       "qmjson",
       ".qmjson",
       {},
       4,
       "Write data trace file (.qmjson) in JSON format for visualization with Corvane Perivue"},
      {"58166e5e-e927-4154-8614-fdee7f772f54",
       "json",
       ".json",
       {},
       6,
       "Write data trace file (.json) in JSON trace event format for visualization in Perfetto"},
      {"c3b1f91c-4a80-11e9-8261-001e67ca31ce",
       "bin",
       ".qmbin",
       {},
       6,
       "Write data in a proprietary binary format (.qmbin)"},
      {"2e820d9e-2f9e-4cdb-a81d-056273a7a391",
       "raw",
       ".txt",
       {},
       2,
       "Print raw text data to *.txt file"},
      {"b1e44565-005f-46ea-9fbb-34ea6bc01203",
       "int",
       "_trace.csv",
       {},
       0,
       "Write data trace file (*_trace.csv) in CSV format"},
      {"9d2aa443-e197-4628-9ed7-f7772a50828e",
       "phm-csv",
       ".csv",
       {},
       2,
       "Write over-time data to *_phm.csv file."},
      {"894d2fa0-61c8-11e7-9598-0800200c9a66",
       "auto",
       ".csv",
       {},
       0,
       "Write summary data as single line to file Automation_Summary.csv"},
  };
  return writers;
}

/// The opened library. It stays open until the process ends.
class Library {
 public:
  Library() : m_handle(::dlopen(QM_WRITERS_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) {
      throw std::runtime_error(::dlerror());
    }
    create = reinterpret_cast<PluginList* (*)()>(::dlsym(m_handle, "createPlugins"));
    destroy = reinterpret_cast<void (*)(PluginList*)>(::dlsym(m_handle, "destroyPlugins"));
    if (create == nullptr || destroy == nullptr) {
      throw std::runtime_error("the library lacks an entry point");
    }
  }

  PluginList* (*create)() = nullptr;
  void (*destroy)(PluginList*) = nullptr;

 private:
  void* m_handle;
};

class Frame : public ::testing::Test {
 protected:
  /// Calls `check` with each writer.
  template <typename Check>
  void forEachWriter(Check check) {
    for (std::int32_t i = 0; i < m_list->count; ++i) {
      SCOPED_TRACE(expectedWriters().at(static_cast<std::size_t>(i)).option);
      check(*static_cast<WriterPlugin*>(m_list->plugins[i]),
            expectedWriters().at(static_cast<std::size_t>(i)));
    }
  }

  static const pwr::WriterPluginCapability& capabilityOf(const Plugin& plugin) {
    return static_cast<const pwr::WriterPluginCapability&>(*plugin.m_capabilities.at(0));
  }

  LogCapture m_log;
  Library m_library;
  std::unique_ptr<PluginList, void (*)(PluginList*)> m_list{m_library.create(), m_library.destroy};
};

TEST_F(Frame, ListHoldsEveryWriter) {
  ASSERT_NE(m_list, nullptr);
  EXPECT_EQ(m_list->count, static_cast<std::int32_t>(expectedWriters().size()));
}

TEST_F(Frame, WritersStandInTheOrderOfTheirGuids) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter& expected) {
    EXPECT_EQ(writer.m_guid, expected.guid);
  });
}

TEST_F(Frame, FreshWriterHasNoIdAndNoName) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter&) {
    EXPECT_EQ(writer.m_id, -1);
    EXPECT_EQ(writer.m_name, "");
  });
}

TEST_F(Frame, EveryWriterHasOneCapabilityThatPointsBack) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter&) {
    ASSERT_EQ(writer.m_capabilities.size(), 1U);
    EXPECT_EQ(writer.m_capabilities[0]->m_plugin, &writer);
  });
}

TEST_F(Frame, CapabilityTellsOptionSuffixAndDescription) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter& expected) {
    const pwr::WriterPluginCapability& capability = capabilityOf(writer);
    EXPECT_EQ(capability.m_name, expected.option);
    EXPECT_EQ(capability.m_fileSuffix, expected.suffix);
    EXPECT_EQ(capability.m_description, expected.description);
  });
}

TEST_F(Frame, CapabilityTellsTableClassesAndFlags) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter& expected) {
    const pwr::WriterPluginCapability& capability = capabilityOf(writer);
    std::set<std::uint32_t> classes;
    for (const pwr::TableClass tableClass : capability.m_tableClasses) {
      classes.insert(static_cast<std::uint32_t>(tableClass));
    }
    EXPECT_EQ(classes, expected.tableClasses);
    EXPECT_EQ(capability.m_flags, expected.flags);
  });
}

TEST_F(Frame, OptionsAndRequirementsAreLeftToTheHost) {
  forEachWriter([](const WriterPlugin& writer, const ExpectedWriter&) {
    EXPECT_TRUE(capabilityOf(writer).m_options.empty());
    EXPECT_TRUE(capabilityOf(writer).m_requirements.empty());
  });
}

TEST_F(Frame, EveryWriterLetsItselfBeReset) {
  const pwr::SystemMetadata metadata;
  forEachWriter([&](WriterPlugin& writer, const ExpectedWriter&) {
    EXPECT_TRUE(writer.reset(Plugin::ResetReason::NewCollection, 7, metadata));
    EXPECT_TRUE(writer.pmtDevReset(1, 7, metadata));
  });
}

TEST_F(Frame, FlushWithoutAnInitSucceeds) {
  const pwr::SystemMetadata metadata;
  forEachWriter([&](WriterPlugin& writer, const ExpectedWriter&) {
    EXPECT_EQ(writer.flushContinuousResults(metadata), 0);
  });
}

TEST_F(Frame, EveryWriterTakesAnIdMessage) {
  const pwr::IdMessage message;
  forEachWriter([&](WriterPlugin& writer, const ExpectedWriter&) {
    EXPECT_EQ(writer.writeMessage(message), 0);
  });
}

TEST_F(Frame, HostCallsOfNoInterestChangeNothing) {
  forEachWriter([](WriterPlugin& writer, const ExpectedWriter& expected) {
    Plugin::VersionInfo version;
    writer.getVersion(version);
    writer.handleBroadcastOption("option");
    writer.notifyCommandlineParamsSet_i();
    EXPECT_TRUE(version.empty());
    EXPECT_EQ(writer.m_guid, expected.guid);
    EXPECT_EQ(writer.m_capabilities.size(), 1U);
  });
}

TEST_F(Frame, MakingWritersSaysNothing) {
  EXPECT_TRUE(m_log.errors().empty());
  EXPECT_TRUE(m_log.warnings().empty());
  EXPECT_EQ(m_log.streamedErrors() + m_log.streamedWarnings() + m_log.quiet(), "");
}

TEST_F(Frame, TwoListsAreIndependent) {
  PluginList* other = m_library.create();
  ASSERT_NE(other, nullptr);
  EXPECT_NE(other->plugins[0], m_list->plugins[0]);
  m_library.destroy(other);
  EXPECT_EQ(m_list->plugins[0]->m_guid, expectedWriters().front().guid);
}

// What follows ends well or not at all: leaks and wild frees are for the address sanitizer to see.

TEST_F(Frame, DestroyingNoListReturnsAtOnce) { m_library.destroy(nullptr); }

TEST_F(Frame, DestroyingAListWithoutArrayReleasesTheRecordOnly) {
  // A count that would be walked if the array were looked at.
  m_library.destroy(new PluginList{3, nullptr});
}

TEST_F(Frame, DestroyingSkipsANullEntry) {
  PluginList* list = m_library.create();
  ASSERT_NE(list, nullptr);
  delete list->plugins[0];
  list->plugins[0] = nullptr;
  m_library.destroy(list);
}

}  // namespace
