// qumetra dump: shows what results say.

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "qumetra/cli/command.h"
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
  }
  return kWrongInput;
}

}  // namespace

void addDumpCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand("dump", "Show what a binary result says");
  auto options = std::make_shared<DumpOptions>();
  command
      ->add_option("files", options->files,
                   "A .qmbin file, or the files of a continuous run in the order of their numbers")
      ->type_name("FILE")
      ->required();
  command->add_flag("--json", options->json, "As JSON Lines, one object per record");
  command->callback(
      [&action, options] { action = [options](const CommonOptions&) { return dump(*options); }; });
}

}  // namespace qumetra::cli
