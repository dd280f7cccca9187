#include "client/src/common/line_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <utility>

#include "client/src/common/pw_log.h"

namespace pwr {
namespace {

constexpr int kAllOnes = -1;
constexpr std::size_t kPieceBytes = 1024;
constexpr const char* kTrimmed = " \r\t\n";

void warnOfNullFile(int sourceLine) {
  // Not __FILE__, which would tell where the library was built.
  logPlainWarning("WARNING: NULL fp in %s:%d!\n", "client/src/common/line_reader.cpp", sourceLine);
}

/// Reads up to `Bytes` less one characters, not past a line end. False at the end and on an error.
template <std::size_t Bytes>
bool readPiece(FILE* file, std::array<char, Bytes>& piece) {
  return std::fgets(piece.data(), static_cast<int>(Bytes), file) != nullptr;
}

bool endsLine(const std::string& text) { return !text.empty() && text.back() == '\n'; }

template <typename Lines>
int linesOfPath(const std::string& path, Lines& lines, bool report) {
  std::ifstream in(path);
  if (!in.is_open()) {
    if (report) {
      errorStream() << "could NOT open file " << path << "!\n";
    }
    return kAllOnes;
  }
  for (std::string line; std::getline(in, line);) {
    if (!line.empty()) {
      lines.push_back(line);
    }
  }
  return in.bad() ? kAllOnes : 0;
}

template <typename Lines>
int linesOfFile(const LineReader& reader, FILE* file, Lines& lines) {
  if (file == nullptr) {
    warnOfNullFile(__LINE__);
    return kAllOnes;
  }
  std::array<char, kPieceBytes> piece;
  std::string line;
  const auto finishLine = [&] {
    reader.trim(line);
    lines.push_back(std::exchange(line, {}));
  };
  while (readPiece(file, piece)) {
    line += piece.data();
    if (endsLine(line)) {
      finishLine();
    }
  }
  if (!line.empty()) {
    finishLine();
  }
  return std::ferror(file) != 0 ? kAllOnes : 0;
}

}  // namespace

LineReader::LineReader() = default;
LineReader::~LineReader() = default;

int LineReader::get_all_lines(const std::string& path, std::vector<std::string>& lines,
                              bool report) const {
  return linesOfPath(path, lines, report);
}

int LineReader::get_all_lines(const std::string& path, std::deque<std::string>& lines,
                              bool report) const {
  return linesOfPath(path, lines, report);
}

int LineReader::get_all_lines(FILE* file, std::vector<std::string>& lines) const {
  return linesOfFile(*this, file, lines);
}

int LineReader::get_all_lines(FILE* file, std::deque<std::string>& lines) const {
  return linesOfFile(*this, file, lines);
}

int LineReader::getline(FILE* file, std::string& line, bool trimLine) const {
  if (file == nullptr) {
    warnOfNullFile(__LINE__);
    return kAllOnes;
  }
  std::array<char, kPieceBytes + 1> piece;
  if (!readPiece(file, piece)) {
    return kAllOnes;
  }
  if (std::strlen(piece.data()) >= kPieceBytes) {
    logPlainWarning("WARNING: line too long?!\n");
    return kAllOnes;
  }
  line = piece.data();
  if (trimLine) {
    trim(line);
  }
  return static_cast<int>(line.size());
}

void LineReader::trim(std::string& line) const {
  line.erase(line.find_last_not_of(kTrimmed) + 1);
  line.erase(0, line.find_first_not_of(kTrimmed));
}

std::string LineReader::trim(const std::string& line) const {
  std::string trimmed = line;
  trim(trimmed);
  return trimmed;
}

void LineReader::strip(std::string& line, char character) const {
  line.erase(std::remove(line.begin(), line.end(), character), line.end());
}

}  // namespace pwr
