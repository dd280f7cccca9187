#include "writers/phmwriter_text_plugin/group_files.h"

#include <string_view>
#include <utility>

#include "client/src/common/pw_log.h"
#include "client/src/common/text_parsing.h"

namespace {

constexpr std::string_view kDroppedPrefix = "pmt-";

}  // namespace

std::FILE* GroupFiles::open(const std::string& group) {
  const auto found = m_files.find(group);
  if (found != m_files.end()) {
    return found->second.stream.get();
  }
  File file;
  file.path = pathOf(group);
  file.stream = createResultFile(file.path);
  if (file.stream == nullptr) {
    pwr::logPlainWarning("WARNING: Could not create %s\n", file.path.c_str());
    return nullptr;
  }
  writeLine(file.stream, m_header);
  return m_files.emplace(group, std::move(file)).first->second.stream.get();
}

bool GroupFiles::close() {
  bool areWhole = true;
  for (auto& [group, file] : m_files) {
    areWhole = closeResultFile(file.stream, file.path) && areWhole;
  }
  m_files.clear();
  return areWhole;
}

std::string GroupFiles::pathOf(const std::string& group) const {
  if (group.empty()) {
    return m_base + m_suffix;
  }
  std::string name = pwr::getLowerCaseString(group);
  if (name.starts_with(kDroppedPrefix)) {
    name.erase(0, kDroppedPrefix.size());
  }
  return m_base + "_" + name + m_suffix;
}
