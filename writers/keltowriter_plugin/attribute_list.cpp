// The list of a sample's attributes, its record, and the times that records may have.
#include <cstddef>

#include "client/src/common/pw_log.h"
#include "host/execute_once.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/packed_record.h"

namespace {

/// Viewers of the first version take this many attributes.
constexpr std::uint32_t kCountOfFirstViewers = 256;
constexpr std::size_t kSampleFixedSize = 22;
constexpr std::size_t kAttributeSize = 12;
/// The size of a sample record, counted from the size field, without its attributes.
constexpr std::uint32_t kSampleRestSize = 10;

}  // namespace

std::uint32_t KeltoWriter::addAttributeToRecord(std::uint32_t id, std::uint64_t value,
                                                QM2AttributeList* list) {
  if (list == nullptr) {
    kelto::failure("Invalid attribute list.\n");
    return 1;
  }
  if (list->count >= QM2AttributeList::kCapacity) {
    kelto::failure("Maximum attribute count '%d' exceeded.\n",
                   static_cast<int>(QM2AttributeList::kCapacity));
    return 1;
  }
  // Only the first call of the process may give the note, so it almost never shows; users have been
  // spared it ever since.
  pwr::executeOnce(s_wasCountNoted, [list] {
    if (list->count >= kCountOfFirstViewers) {
      pwr::logNote(
          "Note: The generated .pwr result file can only be imported in Kelto(TM) 2018 Update 2 or "
          "later.\n");
    }
  });
  list->append(id, value);
  return 0;
}

// offset  size
//      0     4  10 00 40 02
//      4     8  time of the sample
//     12     2  size, from here to the end: 12 times the attributes plus 10
//     14     2  type, 71
//     16     2  sub-type, 6
//     18     2  version
//     20     2  number of attributes
//     22    12  each attribute: its id in 4 bytes, its value in 8
int KeltoWriter::writeQM2Record(std::uint64_t tsc, std::uint64_t metricId, QM2AttributeList* list) {
  if (list == nullptr) {
    return kelto::failure("Invalid attribute list.\n");
  }
  if (list->count > QM2AttributeList::kCapacity) {
    return kelto::failure("Maximum attribute count '%d' exceeded.\n",
                          static_cast<int>(QM2AttributeList::kCapacity));
  }
  kelto::PackedRecord<kSampleFixedSize + QM2AttributeList::kCapacity * kAttributeSize> record;
  record.u32(kelto::kTimedWord);
  record.u64(tsc);
  record.u16(static_cast<std::uint16_t>(list->count * kAttributeSize + kSampleRestSize));
  record.u16(kelto::kSampleRecord);
  record.u16(kelto::kAttributeSample);
  record.u16(formatVersion());
  record.u16(static_cast<std::uint16_t>(list->count));
  record.pairs(list->ids.data(), list->values.data(), list->count);
  if (writeRecord(metricId, record.data(), record.size()) != 0) {
    return 1;
  }
  KeltoWriterImpl::m_hasData = true;
  return 0;
}

int KeltoWriter::checkTscMonotonicity(std::uint64_t tsc, const std::string& key) {
  if (systemInfo == nullptr) {
    return 1;
  }
  return checkTsc(tsc, *previousTsc.try_emplace(key, systemInfo->firstTsc).first);
}

// The texts speak of equal times too, but times equal to the start may repeat.
int KeltoWriter::checkTsc(std::uint64_t tsc,
                          std::map<std::string, std::uint64_t>::value_type& previous) {
  if (tsc < systemInfo->firstTsc) {
    pwr::logFatal(
        "FATAL: KeltoWriterPlugin:    Current sample TSC is <= collection start TSC. Samples are "
        "required to be monotonically increasing in time. '%s' current TSC: %llu <= collection "
        "start TSC: %llu\n",
        previous.first.c_str(), kelto::shown(tsc), kelto::shown(systemInfo->firstTsc));
    return 1;
  }
  if (previous.second != systemInfo->firstTsc && tsc <= previous.second) {
    pwr::logFatal(
        "FATAL: KeltoWriterPlugin:    Current sample TSC is <= previous sample's TSC. Samples are "
        "required to be monotonically increasing in time. '%s' current TSC: %llu <= previous TSC: "
        "%llu\n",
        previous.first.c_str(), kelto::shown(tsc), kelto::shown(previous.second));
    return 1;
  }
  previous.second = tsc;
  return 0;
}

std::uint64_t KeltoWriter::getPreviousTsc(const std::string& key) {
  const std::uint64_t first = systemInfo == nullptr ? 0 : systemInfo->firstTsc;
  return previousTsc.try_emplace(key, first).first->second;
}
