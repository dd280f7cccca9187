#include "client/src/common/path_glob.h"

#include <glob.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "client/src/common/line_reader.h"
#include "client/src/common/pw_files.h"

namespace pwr {
namespace {

constexpr const char* kWildcards = "*[]^";
constexpr const char* kBlanks = " \t\r\n";

/// What `::glob` made, released at the end.
class Matches {
 public:
  Matches() = default;
  Matches(const Matches&) = delete;
  Matches& operator=(const Matches&) = delete;
  ~Matches() { ::globfree(&m_glob); }

  /// False when memory did not suffice, which `errno` tells then.
  bool find(const std::string& word) {
    if (::glob(word.c_str(), GLOB_NOSORT, nullptr, &m_glob) != GLOB_NOSPACE) {
      return true;
    }
    errno = ENOMEM;
    return false;
  }
  std::vector<std::string> paths() const {
    return {m_glob.gl_pathv, m_glob.gl_pathv + m_glob.gl_pathc};
  }

 private:
  glob_t m_glob{};
};

/// Cuts a pattern into words at blanks outside of double quotes. What was quoted comes out with a
/// backslash before each character, so that it is literal in the match.
class WordCutter {
 public:
  std::vector<std::string> cut(const std::string& pattern) {
    for (const char character : pattern) {
      take(character);
    }
    if (m_escaped) {
      takeLiterally('\\');
    }
    finishWord();
    return std::move(m_words);
  }

 private:
  void take(char character) {
    if (m_escaped) {
      takeEscaped(character);
    } else if (character == '\\') {
      m_escaped = true;
    } else if (character == '"') {
      m_quoted = !m_quoted;
    } else if (m_quoted) {
      takeLiterally(character);
    } else if (std::strchr(kBlanks, character) != nullptr) {
      finishWord();
    } else {
      m_word += character;
    }
  }

  void takeEscaped(char character) {
    m_escaped = false;
    // Between quotes a backslash stands for itself but before these.
    if (m_quoted && std::strchr("\"\\$`", character) == nullptr) {
      takeLiterally('\\');
    }
    takeLiterally(character);
  }

  void takeLiterally(char character) { m_word += {'\\', character}; }

  void finishWord() {
    if (!m_word.empty()) {
      m_words.push_back(std::move(m_word));
    }
    m_word.clear();
  }

  std::vector<std::string> m_words;
  std::string m_word;
  bool m_quoted = false;
  bool m_escaped = false;
};

/// What `ls` is asked to list: paths that are there, and how many it was asked for.
struct Operands {
  std::vector<std::string> files;
  std::vector<std::string> directories;
  std::size_t count = 0;
};

std::optional<Operands> expand(const std::vector<std::string>& words) {
  Operands operands;
  for (const std::string& word : words) {
    Matches matches;
    if (!matches.find(word)) {
      return std::nullopt;
    }
    const std::vector<std::string> paths = matches.paths();
    // A word without a match stays one operand: `ls` counts it, though it is not there.
    operands.count += std::max<std::size_t>(paths.size(), 1);
    for (const std::string& path : paths) {
      (qm_dirExists(path) ? operands.directories : operands.files).push_back(path);
    }
  }
  std::sort(operands.files.begin(), operands.files.end());
  std::sort(operands.directories.begin(), operands.directories.end());
  return operands;
}

/// Nothing for a directory that cannot be read.
std::optional<std::vector<std::string>> visibleEntries(const std::string& directory) {
  std::error_code error;
  std::filesystem::directory_iterator entry(directory, error);
  if (error) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  while (!error && entry != std::filesystem::directory_iterator()) {
    std::string name = entry->path().filename().string();
    if (name.front() != '.') {
      names.push_back(std::move(name));
    }
    entry.increment(error);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> listing(const Operands& operands) {
  std::vector<std::string> lines = operands.files;
  for (const std::string& directory : operands.directories) {
    const auto names = visibleEntries(directory);
    if (!names) {
      continue;
    }
    if (!lines.empty()) {
      lines.emplace_back();
    }
    if (operands.count > 1) {
      lines.push_back(directory + ":");
    }
    lines.insert(lines.end(), names->begin(), names->end());
  }
  return lines;
}

}  // namespace

bool doGlob(const std::string& pattern, std::deque<std::string>& results) {
  const LineReader reader;
  if (pattern.find_first_of(kWildcards) == std::string::npos) {
    std::string path = pattern;
    reader.strip(path, '"');
    results.push_back(std::move(path));
    return true;
  }
  const std::optional<Operands> operands = expand(WordCutter().cut(pattern));
  if (!operands) {
    // The words by which callers know the failure, though no process is started.
    std::perror("popen error");
    return false;
  }
  for (std::string& line : listing(*operands)) {
    reader.trim(line);
    results.push_back(std::move(line));
  }
  return true;
}

}  // namespace pwr
