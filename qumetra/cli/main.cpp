// The command line tool: reads the command line and hands over to the command.

#include <exception>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/readers/byte_source.h"
#include "qumetra/recording/recording_reader.h"
#include "qumetra/run/order_file.h"

namespace qumetra::cli {
namespace {

void addCommonOptions(CLI::App& app, CommonOptions& common) {
  CLI::Option* verbosity =
      app.add_option("--verbosity", common.verbosity,
                     "What is told on the way: 0 nothing, 1 errors, 2 warnings")
          ->type_name("N")
          ->check(CLI::Range(0, 2))
          ->capture_default_str();
  app.add_flag_callback(
         "-v", [&common] { common.verbosity = 2; }, "The same as --verbosity 2")
      ->excludes(verbosity);
  app.add_flag_callback(
         "-q", [&common] { common.verbosity = 0; }, "The same as --verbosity 0")
      ->excludes(verbosity)
      ->excludes("-v");
  app.add_option("--log-tag", common.logTags,
                 "Show the conditional warnings of this kind at any verbosity; repeatable")
      ->type_name("TAG")
      ->allow_extra_args(false);
  app.set_version_flag("--version", "qumetra " QUMETRA_VERSION, "Print the version and end");
}

/// Whether words of a command to measure may be what was not expected: the options of one that
/// stands there without "--" are taken for the tool's.
bool mayLackSeparator(const CLI::App& command, const CLI::ParseError& error) {
  const CLI::Option* const words = command.get_option_no_throw("COMMAND");
  return dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && words != nullptr &&
         words->count() > 0;
}

/// Prints help or version, or what is wrong with the command line.
int endParsing(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    std::ostringstream text;
    app.exit(error, text, text);
    printResult(text.str());
    return kDone;
  }
  const std::vector<CLI::App*> commands = app.get_subcommands();
  const std::vector<std::string> unknown = app.remaining();
  std::string problem = !commands.empty() || unknown.empty()
                            ? error.what()
                            : "unknown command or option \"" + unknown.front() + '"';
  if (!commands.empty() && mayLackSeparator(*commands.front(), error)) {
    problem += "; a command stands behind --";
  }
  const std::string command = commands.empty() ? "" : commands.front()->get_name() + ' ';
  printError(problem + "; see qumetra " + command + "--help");
  return kWrongInput;
}

int runTool(int argc, char** argv) {
  CommonOptions common;
  common.commandLine.assign(argv, argv + argc);
  Action action;
  CLI::App app("Measures the power and performance behaviour of this machine, and makes results.",
               "qumetra");
  app.fallthrough();
  app.require_subcommand(1);
  addCommonOptions(app, common);
  addCollectCommand(app, action);
  addReplayCommand(app, action);
  addDumpCommand(app, action);
  addCheckCommand(app, action);
  addWritersCommand(app, action);
  addPlatformCommand(app, action);
  app.footer(
      "Examples:\n"
      "  qumetra collect -t 10                 measure for ten seconds, results in qumetra.*\n"
      "  qumetra collect -r all -- make        measure while a command runs\n"
      "  qumetra replay run.qmrec -r sum,json  make results of a recording\n"
      "  qumetra dump run.qmbin                show what a result says: .qmbin or .pwr\n"
      "  qumetra check run.pwr                 tell whether it is whole\n"
      "  qumetra writers                       which results there are\n"
      "  qumetra platform                      what is known of this machine\n"
      "\n"
      "Exit status: 0 done; 1 a result could not be written in full, or one that is read is "
      "faulty;\n"
      "2 wrong usage, or a file that cannot be used; with a command the command's own.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return endParsing(app, error);
  }
  return action(common);
}

}  // namespace
}  // namespace qumetra::cli

int main(int argc, char** argv) {
  using qumetra::cli::printError;
  try {
    return qumetra::cli::runTool(argc, argv);
  } catch (const qumetra::RecordingError& error) {
    // Begins with the file already, as editors like to find it.
    qumetra::cli::printNote(error.what());
  } catch (const qumetra::OrderFileError& error) {
    qumetra::cli::printNote(error.what());
  } catch (const qumetra::ReadError& error) {
    qumetra::cli::printNote(error.what());
  } catch (const std::exception& error) {
    printError(error.what());
  }
  return qumetra::cli::kWrongInput;
}
