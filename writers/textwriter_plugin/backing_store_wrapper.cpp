#include "writers/textwriter_plugin/backing_store_wrapper.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "client/src/common/backing_store.h"
#include "client/src/common/pw_log.h"
#include "writers/textwriter_plugin/backing_store_reader.h"
#include "writers/textwriter_plugin/row_sink.h"

namespace {

constexpr std::string_view kRowEnd = "\n";
constexpr std::size_t kMostTextBytes = std::numeric_limits<std::int32_t>::max();

std::uint32_t recordedLength(std::string_view text) {
  return static_cast<std::uint32_t>(std::min(text.size(), kMostTextBytes));
}

std::size_t recordSize(std::string_view text) {
  return sizeof(std::uint32_t) + recordedLength(text);
}

/// Returns where the record ends.
char* putRecord(char* out, std::string_view text) {
  const std::uint32_t length = recordedLength(text);
  std::memcpy(out, &length, sizeof length);
  std::memcpy(out + sizeof length, text.data(), length);
  return out + sizeof length + length;
}

/// What a "%s" shows of `text`: all in front of its first zero byte.
std::string_view shown(std::string_view text) { return text.substr(0, text.find('\0')); }

}  // namespace

/// Lays the cells of a table out in rows.
class BackingStoreWrapper::RowLayout {
 public:
  RowLayout(RowSink& out, const std::string& delimiter, const std::vector<std::uint64_t>& widths)
      : m_out(out),
        m_widths(widths),
        m_separator(std::string(shown(delimiter)) + ' '),
        m_separatorLength(m_separator.size()) {
    m_separator.append(kCommonBlanks, ' ');
  }

  /// The first cell of a row stands as it is, every other behind the delimiter.
  void cell(std::string_view text) {
    if (m_isFirst) {
      blanks(missingWidth(text));
      m_out.append(text);
    } else {
      laterCell(text);
    }
    m_isFirst = false;
    ++m_column;
  }

  /// Fills the columns that the row did not reach, because they were added after it, and ends it.
  void endRow(std::string_view missing) {
    for (; m_column < m_widths.size(); ++m_column) {
      laterCell(missing);
    }
    m_out.append(kRowEnd);
    m_column = 0;
    m_isFirst = true;
  }

  void titles(const std::vector<std::string>& columns) {
    for (m_column = 0; m_column < columns.size(); ++m_column) {
      if (m_column > 0) {
        m_out.append(separator());
      }
      blanks(missingWidth(columns[m_column]));
      m_out.append(columns[m_column]);
    }
    m_out.append("\n");
    m_column = 0;
  }

 private:
  /// Separator and padding go out in one piece when the padding is no longer than this.
  static constexpr std::size_t kCommonBlanks = 64;

  std::string_view separator() const { return {m_separator.data(), m_separatorLength}; }

  std::size_t missingWidth(std::string_view text) const {
    const std::uint64_t width = m_column < m_widths.size() ? m_widths[m_column] : 0;
    return width > text.size() ? width - text.size() : 0;
  }

  void laterCell(std::string_view text) {
    const std::size_t padding = missingWidth(text);
    const std::size_t common = std::min(padding, kCommonBlanks);
    m_out.append({m_separator.data(), m_separatorLength + common});
    blanks(padding - common);
    m_out.append(shown(text));
  }

  void blanks(std::size_t count) {
    while (count > 0) {
      const std::size_t some = std::min(count, kCommonBlanks);
      m_out.append({m_separator.data() + m_separatorLength, some});
      count -= some;
    }
  }

  RowSink& m_out;
  const std::vector<std::uint64_t>& m_widths;
  /// The delimiter, a blank, and blanks for padding.
  std::string m_separator;
  std::size_t m_separatorLength;
  std::size_t m_column = 0;
  bool m_isFirst = true;
};

BackingStoreWrapper::BackingStoreWrapper(std::string title, std::string missing)
    : m_store(std::make_unique<pwr::QMExtensibleBackingStore>(
          pwr::QMExtensibleBackingStore::kDefaultMaxBufferSize)),
      m_title(std::move(title)),
      m_missing(std::move(missing)) {}

BackingStoreWrapper::~BackingStoreWrapper() = default;

std::uint16_t BackingStoreWrapper::addColumn(std::string title) {
  if (m_columns.size() == kMaxColumns) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: No room for column %s: a table has at most %zu columns\n",
                          title.c_str(), kMaxColumns);
    return kNoColumn;
  }
  const auto index = static_cast<std::uint16_t>(m_columns.size());
  m_widths.push_back(title.size());
  m_columns.push_back(std::move(title));
  m_row.emplace_back();
  return index;
}

int BackingStoreWrapper::pushCell(std::string_view text, std::uint32_t column) {
  if (column >= m_columns.size()) {
    // Users search their logs for this text, so its missing blank stays.
    pwr::logTaggedWarning(
        pwr::c_textWriterConditionalLogTag,
        "WARNING: Trying to set data for a column %u before adding it to the store.Columns "
        "added=%zu\n",
        column, m_columns.size());
    return 1;
  }
  m_widths[column] = std::max<std::uint64_t>(m_widths[column], text.size());
  m_row[column].text.assign(text);
  m_row[column].isSet = true;
  return 0;
}

int BackingStoreWrapper::pushLine(const std::string& /*text*/) { return 0; }

void BackingStoreWrapper::rowComplete() {
  // A row that the store took in part goes first: without its rest no later record could be read.
  if (m_rowRecords.empty() || storeRow()) {
    makeRecords();
    storeRow();
  }
  for (Cell& cell : m_row) {
    cell.isSet = false;
  }
}

void BackingStoreWrapper::makeRecords() {
  std::size_t size = recordSize(kRowEnd);
  for (const Cell& cell : m_row) {
    size += recordSize(textOf(cell));
  }
  m_rowRecords.resize(size);
  char* out = m_rowRecords.data();
  for (const Cell& cell : m_row) {
    out = putRecord(out, textOf(cell));
  }
  putRecord(out, kRowEnd);
}

bool BackingStoreWrapper::storeRow() {
  const std::uint64_t before = m_store->size();
  if (m_store->write(m_rowRecords.data(), m_rowRecords.size()) >= 0) {
    m_rowRecords.clear();
    return true;
  }
  const auto taken = static_cast<std::ptrdiff_t>(m_store->size() - before);
  m_rowRecords.erase(m_rowRecords.begin(), m_rowRecords.begin() + taken);
  return false;
}

int BackingStoreWrapper::flush(std::FILE* out, const std::string& delimiter, bool leadingNewline) {
  if (out == nullptr) {
    pwr::logTaggedWarning(pwr::c_textWriterConditionalLogTag,
                          "WARNING: Please provide a valid output file to write\n");
    return 1;
  }
  RowSink sink(out, false);
  sink.append(leadingNewline ? "\n" : "");
  sink.append(shown(m_title));
  sink.append("\n");
  RowLayout layout(sink, delimiter, m_widths);
  layout.titles(m_columns);
  const bool isWhole = flushRows(sink, layout);
  return sink.finish() && isWhole ? 0 : 1;
}

bool BackingStoreWrapper::flushRows(RowSink& sink, RowLayout& layout) {
  BackingStoreReader reader(*m_store);
  if (reader.failed()) {
    return false;
  }
  for (std::string_view text; reader.next(text);) {
    if (text == kRowEnd) {
      layout.endRow(m_missing);
    } else {
      layout.cell(text);
    }
  }
  sink.append("\n");
  return !reader.failed();
}
