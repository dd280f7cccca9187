// qumetra check: tells whether results are whole.

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

int check(const std::vector<std::string>& files) {
  switch (formatOf(files)) {
    case ResultFormat::Qmbin:
      return checkQmbin(files);
    case ResultFormat::Pwr:
      return checkPwr(files);
  }
  return kWrongInput;
}

}  // namespace

void addCheckCommand(CLI::App& app, Action& action) {
  CLI::App* command =
      app.add_subcommand("check", "Tell whether a binary result or an import stream is whole");
  auto files = std::make_shared<std::vector<std::string>>();
  command
      ->add_option(
          "FILE", *files,
          "A .pwr file, or a .qmbin file, or the .qmbin files of a continuous run in the order "
          "of their numbers; told apart by the ends of their names")
      ->type_name("")
      ->check(nonEmpty())
      ->required();
  command->callback(
      [&action, files] { action = [files](const CommonOptions&) { return check(*files); }; });
  command->footer(
      "Of a .pwr file are checked: where records begin and end, their sizes, that the times of "
      "each\n"
      "metric and entity rise, and, as warnings, that all uids are declared. Of a .qmbin file: "
      "the\n"
      "sizes of its records, that what they refer to is told before, and, as a warning, that "
      "there\n"
      "is something in it.\n"
      "\n"
      "Exit status: 0 all is well; 1 a file is faulty; 2 a file cannot be read.\n"
      "What is wrong is told on standard error.");
}

}  // namespace qumetra::cli
