#include "writers/textwriter_plugin/report_text.h"

namespace {

constexpr std::uint32_t kBeforeTable = 0;
constexpr std::uint32_t kAfterTable = 1;

void writeParagraph(std::FILE* out, const std::string& text) {
  const std::string paragraph = text + "\n\n";
  std::fwrite(paragraph.data(), 1, paragraph.size(), out);
}

void writeNotes(std::FILE* out, const pwr::TextNotes* notes, std::uint32_t placement) {
  if (notes == nullptr) {
    return;
  }
  const auto found = notes->find(placement);
  if (found == notes->end()) {
    return;
  }
  for (const std::string& text : found->second) {
    writeParagraph(out, text);
  }
}

}  // namespace

void processPreTableTextNotes(std::FILE* out, const NotesEntry& entry) {
  writeNotes(out, entry.second, kBeforeTable);
}

void processPostTableTextNotes(std::FILE* out, const NotesEntry& entry) {
  writeNotes(out, entry.second, kAfterTable);
}

void processPreMetricTextNotes(std::FILE*, const NotesEntry&) {}

void processPostMetricTextNotes(std::FILE*, const NotesEntry&) {}

void processMetricContainerHeader(std::FILE* out, const std::string& name) {
  writeParagraph(out, name);
}
