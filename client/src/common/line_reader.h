// Files read line by line.
#pragma once

#include <cstdio>
#include <deque>
#include <string>
#include <vector>

namespace pwr {

/// Reads lines of text and trims them. Stateless; calls may run together on different files.
class LineReader {
 public:
  LineReader();
  ~LineReader();

  /// Appends all lines of the file at `path` that are not empty, untrimmed. Returns 0, or all ones
  /// when the file does not open, which is an error in the log when `report` is true, or cannot be
  /// read.
  int get_all_lines(const std::string& path, std::vector<std::string>& lines, bool report) const;
  int get_all_lines(const std::string& path, std::deque<std::string>& lines, bool report) const;
  /// Appends the rest of an open file, each line trimmed, also the empty ones. Returns 0, or all
  /// ones for a null `file`, which is a plain warning, and after a read error.
  int get_all_lines(FILE* file, std::vector<std::string>& lines) const;
  int get_all_lines(FILE* file, std::deque<std::string>& lines) const;

  /// Reads one line with its line end, trimmed when `trim` is true, and returns its length. All
  /// ones at the end of the file, after a read error, and with a plain warning for a null `file`
  /// and for a line of 1024 characters or more, its line end included; `line` is then left alone.
  /// Of a line too long only the first 1024 characters are taken: the next call gives its rest.
  int getline(FILE* file, std::string& line, bool trim) const;

  /// Removes blanks, tabs, carriage returns and newlines from both ends.
  void trim(std::string& line) const;
  std::string trim(const std::string& line) const;
  /// Removes every occurrence of `character`.
  void strip(std::string& line, char character) const;
};

}  // namespace pwr
