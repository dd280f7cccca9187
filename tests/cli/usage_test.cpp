#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/tool.h"

namespace qumetra::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// Wrong usage: one line on standard error, nothing on standard output, status 2.
void expectUsageError(const Tool::Arguments& arguments, const std::string& part) {
  Tool tool;
  const ToolResult result = tool.run(arguments);
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err, StartsWith("qumetra: "));
  EXPECT_THAT(result.err, HasSubstr(part));
  EXPECT_EQ(result.err.size() - 1, result.err.find('\n'));
  EXPECT_THAT(tool.files(), IsEmpty());
}

TEST(Usage, HelpWithExamplesGoesToStandardOutput) {
  const ToolResult result = Tool().run({"--help"});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, HasSubstr("Examples:\n  qumetra collect"));
}

TEST(Usage, EveryCommandHasHelp) {
  EXPECT_THAT(Tool().run({"collect", "--help"}).out, HasSubstr("qumetra collect -t 10"));
  EXPECT_THAT(Tool().run({"replay", "--help"}).out, HasSubstr("qumetra replay run.qmrec"));
  EXPECT_THAT(Tool().run({"writers", "--help"}).out, HasSubstr("--json"));
  EXPECT_THAT(Tool().run({"platform", "--help"}).out, HasSubstr("--json"));
  EXPECT_THAT(Tool().run({"dump", "--help"}).out, HasSubstr("A .pwr file, or a .qmbin file"));
  EXPECT_THAT(Tool().run({"check", "--help"}).out, HasSubstr("1 a file is faulty"));
}

TEST(Usage, VersionIsPrintedBeforeAndAfterTheCommand) {
  EXPECT_EQ("qumetra " QM_VERSION "\n", Tool().run({"--version"}).out);
  EXPECT_EQ("qumetra " QM_VERSION "\n", Tool().run({"writers", "--version"}).out);
}

TEST(Usage, NoCommandIsWrong) { expectUsageError({}, "subcommand is required"); }

TEST(Usage, UnknownCommandIsWrong) {
  expectUsageError({"dance"}, "unknown command or option \"dance\"");
}

TEST(Usage, UnknownOptionIsWrong) { expectUsageError({"writers", "--dance"}, "--dance"); }

TEST(Usage, ErrorsNameTheHelpOfTheirCommand) {
  expectUsageError({"writers", "--dance"}, "; see qumetra writers --help");
  expectUsageError({"collect", "-t", "x"}, "; see qumetra collect --help");
  expectUsageError({"dance"}, "; see qumetra --help");
}

TEST(Usage, HelpOfCollectTellsWhenItEnds) {
  const std::string help = Tool().run({"collect", "--help"}).out;
  EXPECT_THAT(help, HasSubstr("the command goes on to its end, and its status counts"));
  EXPECT_THAT(help, HasSubstr("a command that has not ended a second later gets SIGTERM"));
  EXPECT_THAT(help, HasSubstr("without -t, measuring goes on until Ctrl-C"));
}

TEST(Usage, HelpOfCollectTellsWhoseCpuTimeIsMeasured) {
  const std::string help = Tool().run({"collect", "--help"}).out;
  EXPECT_THAT(help, HasSubstr("the command alone, without the processes that it starts"));
}

TEST(Usage, VerbosityIsANumber) {
  expectUsageError({"--verbosity", "much", "writers"}, "--verbosity");
  expectUsageError({"--verbosity", "-1", "writers"}, "--verbosity");
}

TEST(Usage, VerbosityIsAtMostTwo) {
  expectUsageError({"--verbosity", "3", "writers"}, "--verbosity");
}

TEST(Usage, ListsHaveNoEmptyNames) {
  expectUsageError({"collect", "-r", "auto,,raw"}, "-r \"auto,,raw\" has an empty name in it");
  expectUsageError({"collect", "-r", ""}, "-r \"\" has an empty name in it");
  expectUsageError({"replay", "x", "-r", "raw,"}, "-r \"raw,\" has an empty name in it");
  expectUsageError({"collect", "--source", ",cpu_time"},
                   "--source \",cpu_time\" has an empty name");
}

TEST(Usage, FilesAndDirectoriesNeedNames) {
  for (const char* option : {"--record", "--order", "--procfs", "--sysfs"}) {
    expectUsageError({"collect", option, ""}, std::string(option) + ": needs a name");
  }
  for (const char* option : {"--call-log", "--order"}) {
    expectUsageError({"replay", "x", option, ""}, std::string(option) + ": needs a name");
  }
  expectUsageError({"replay", ""}, "RECORDING: needs a name");
  expectUsageError({"dump", ""}, "FILE: needs a name");
  expectUsageError({"check", "x.pwr", ""}, "FILE: needs a name");
}

TEST(Usage, LoudAndQuietExcludeEachOther) {
  expectUsageError({"-v", "-q", "writers"}, "-q");
  expectUsageError({"-v", "--verbosity", "1", "writers"}, "-v");
}

TEST(Usage, WhatIsMissingIsNamedAsInTheHelp) {
  for (const auto& [command, operand] :
       {std::pair{"replay", "RECORDING"}, {"dump", "FILE"}, {"check", "FILE"}}) {
    expectUsageError({command}, std::string("qumetra: ") + operand + " is required;");
    EXPECT_THAT(Tool().run({command, "--help"}).out,
                HasSubstr(std::string("Usage: qumetra ") + command + " [OPTIONS] " + operand));
  }
}

TEST(Usage, CommandStandsBehindTwoHyphensOnly) {
  expectUsageError({"collect", "true"}, "a command stands behind --");
  expectUsageError({"collect", ""}, "unexpected argument \"\"; a command stands behind --");
  expectUsageError({"collect", "ls", "-l"}, "-l; a command stands behind --;");
}

TEST(Usage, CommandIsNotMissingBehindTwoHyphens) {
  expectUsageError({"collect", "-t", "0.1", "--"}, "no command stands behind --");
  expectUsageError({"collect", "--", ""}, "no command stands behind --");
}

TEST(Usage, TimesAreNumbersAboveZero) {
  for (const char* text : {"0", "-1", "nan", "inf", "1e30", "x"}) {
    expectUsageError({"collect", "-t", text}, "--time");
    expectUsageError({"collect", "-i", text}, "--interval");
  }
  expectUsageError({"collect", "--continuous", "-1"}, "--continuous");
}

TEST(Usage, BaseNeedsAName) {
  expectUsageError({"collect", "-o", "results/"}, "has no name for the result files");
  expectUsageError({"replay", "x", "-o", ""}, "has no name for the result files");
  expectUsageError({"collect", "-o", "."}, "has no name for the result files");
  expectUsageError({"collect", "-o", "results/.."}, "has no name for the result files");
}

TEST(Usage, StandardOutputThatIsFullIsAnError) {
  Tool tool("/bin/sh");
  const ToolResult result = tool.run({"-c", std::string(QM_TOOL) + " writers > /dev/full"});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("qumetra: cannot write to standard output: No space left on device\n", result.err);
}

}  // namespace
}  // namespace qumetra::test
