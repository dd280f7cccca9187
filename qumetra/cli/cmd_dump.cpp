// qumetra dump: shows what results say.

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "qumetra/cli/argument_checks.h"
#include "qumetra/cli/command.h"
#include "qumetra/cli/pwr_dump.h"
#include "qumetra/cli/qmbin_dump.h"
#include "qumetra/cli/result_format.h"

namespace qumetra::cli {
namespace {

struct DumpOptions {
  std::vector<std::string> files;
  bool json = false;
};

int dump(const DumpOptions& options) {
  switch (formatOf(options.files)) {
    case ResultFormat::Qmbin:
      return dumpQmbin(options.files, options.json);
    case ResultFormat::Pwr:
      return dumpPwr(options.files, options.json);
  }
  return kWrongInput;
}

}  // namespace

void addDumpCommand(CLI::App& app, Action& action) {
  CLI::App* command =
      app.add_subcommand("dump", "Show what a binary result or an import stream says");
  auto options = std::make_shared<DumpOptions>();
  command
      ->add_option(
          "FILE", options->files,
          "A .pwr file, or a .qmbin file, or the .qmbin files of a continuous run in the order "
          "of their numbers; told apart by the ends of their names")
      ->type_name("")
      ->check(nonEmpty())
      ->required();
  command->add_flag("--json", options->json, "As JSON Lines, one object per record");
  command->footer(
      "Exit status: 0 done; 1 a file is faulty; 2 a file cannot be read.\n"
      "What is wrong is told on standard error; what can be read is shown all the same.");
  command->callback(
      [&action, options] { action = [options](const CommonOptions&) { return dump(*options); }; });
}

}  // namespace qumetra::cli
