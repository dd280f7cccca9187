// qumetra writers: lists the writers of the library.

#include <algorithm>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "qumetra/cli/command.h"
#include "qumetra/cli/console.h"
#include "qumetra/cli/session.h"
#include "qumetra/run/writer_library.h"

namespace qumetra::cli {
namespace {

using JsonWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

/// One line for each writer: option, suffix and description, the first two as wide as the widest.
std::string asText(const WriterLibrary& library) {
  std::size_t optionWidth = 0;
  std::size_t suffixWidth = 0;
  for (const LoadedWriter& writer : library.writers()) {
    optionWidth = std::max(optionWidth, writer.option.size());
    suffixWidth = std::max(suffixWidth, writer.suffix.size());
  }
  std::string text;
  for (const LoadedWriter& writer : library.writers()) {
    text += fmt::format("{:<{}}  {:<{}}  {}\n", writer.option, optionWidth, writer.suffix,
                        suffixWidth, writer.description);
  }
  return text;
}

void addMember(JsonWriter& json, const char* name, const std::string& value) {
  json.Key(name);
  json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void addWriter(JsonWriter& json, const LoadedWriter& writer) {
  json.StartObject();
  addMember(json, "option", writer.option);
  addMember(json, "suffix", writer.suffix);
  addMember(json, "description", writer.description);
  addMember(json, "guid", writer.guid);
  json.Key("flags");
  json.Uint(writer.flags);
  json.Key("continuous");
  json.Bool(writer.continuous());
  json.Key("version");
  json.StartObject();
  for (const auto& [name, value] : writer.version) {
    addMember(json, name.c_str(), value);
  }
  json.EndObject();
  json.EndObject();
}

std::string asJson(const WriterLibrary& library) {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.SetIndent(' ', 2);
  json.StartArray();
  for (const LoadedWriter& writer : library.writers()) {
    addWriter(json, writer);
  }
  json.EndArray();
  return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

int listWriters(bool json, const CommonOptions& common) {
  const auto environment = makeEnvironment(common);
  const auto library = loadWriters(common);
  printResult(json ? asJson(*library) : asText(*library));
  return kDone;
}

}  // namespace

void addWritersCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand(
      "writers", "List the writers of results: option name, suffix, description");
  auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON, with everything that the writers tell");
  command->callback([&action, json] {
    action = [json](const CommonOptions& common) { return listWriters(*json, common); };
  });
}

}  // namespace qumetra::cli
