// qumetra check: tells whether results are whole.

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "qumetra/cli/command.h"
#include "qumetra/cli/qmbin_dump.h"
#include "qumetra/cli/result_format.h"

namespace qumetra::cli {
namespace {

int check(const std::vector<std::string>& files) {
  switch (formatOf(files)) {
    case ResultFormat::Qmbin:
      return checkQmbin(files);
  }
  return kWrongInput;
}

}  // namespace

void addCheckCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand("check", "Tell whether a binary result is whole");
  auto files = std::make_shared<std::vector<std::string>>();
  command
      ->add_option("files", *files,
                   "A .qmbin file, or the files of a continuous run in the order of their numbers")
      ->type_name("FILE")
      ->required();
  command->callback(
      [&action, files] { action = [files](const CommonOptions&) { return check(*files); }; });
  command->footer("Exit status: 0 all is well; 2 something is wrong, told on standard error.");
}

}  // namespace qumetra::cli
