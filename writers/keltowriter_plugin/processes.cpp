// Process and thread records: a start record at the first mention, an end record at the end.
#include "writers/keltowriter_plugin/processes.h"

#include <cstddef>
#include <cstring>

#include "client/src/common/deliberate_stop.h"
#include "client/src/common/number_text.h"
#include "host/handles.h"
#include "writers/keltowriter_plugin/kelto_log.h"
#include "writers/keltowriter_plugin/kelto_writer.h"
#include "writers/keltowriter_plugin/packed_record.h"

std::map<std::string, std::pair<const pwr::Process*, KeltoProcess>> m_processes;
std::map<std::string, std::pair<const pwr::Thread*, KeltoThread>> m_threads;
std::map<std::uint32_t, std::set<std::string>> processKeysByPid;

namespace {

constexpr std::uint32_t kStartEvent = 0x1000;
/// Of threads only: a process's end record has the event of a start.
constexpr std::uint32_t kThreadEndEvent = 0x2000;
/// With the terminator.
constexpr std::size_t kPathField = 30;
constexpr std::size_t kProcessRecordSize = 32 + kPathField;
constexpr std::size_t kThreadRecordSize = 28;
/// Bytes of the size and type fields, which the size counts too.
constexpr std::uint16_t kSizeAndType = 4;

/// The path up to its first zero byte.
std::string terminatedPath(const std::string& path) { return path.substr(0, path.find('\0')); }

std::string processKey(const pwr::Process& process, const std::string& path) {
  std::string key = "process_" + path + "_";
  pwr::appendUInt(key, process.getPid());
  key += '_';
  pwr::appendUInt(key, process.getStartTime());
  return key;
}

std::string threadKey(const pwr::Thread& thread) {
  std::string key = "thread_";
  pwr::appendUInt(key, thread.getTid());
  key += '_';
  pwr::appendUInt(key, thread.getPid());
  key += '_';
  pwr::appendUInt(key, thread.getStartTime());
  return key;
}

/// When the thread's process ended, if that is known to have been during the thread's life; else
/// `lastTsc`. Of several processes that had the pid the first by its key counts. REQUIRES: end
/// records of processes are written before those of threads.
std::uint64_t inheritedEnd(const pwr::Thread& thread, std::uint64_t lastTsc) {
  const auto keys = processKeysByPid.find(thread.getPid());
  if (keys == processKeysByPid.end()) {
    return lastTsc;
  }
  for (const std::string& key : keys->second) {
    const auto& [process, record] = m_processes.at(key);
    if (process->getStartTime() < thread.getStartTime() && record.time > thread.getStartTime()) {
      return record.time;
    }
  }
  return lastTsc;
}

}  // namespace

int KeltoWriter::handleProcessInfo(const pwr::Process* process, bool isStart) {
  const std::string path = process->getPath();
  const std::string key = processKey(*process, path);
  const bool isKnown = m_processes.contains(key);
  if (isKnown && isStart) {
    return 0;
  }
  KeltoProcess record{kStartEvent, process->getPid(), process->getStartTime(),
                      terminatedPath(path)};
  if (isKnown) {
    record.time = process->getEndTime() != 0 ? process->getEndTime() : lastTsc();
  }
  if (record.path.size() + 1 > kPathField) {
    // Hosts have promised paths that fit; a cut one would name another process.
    pwr::stopDeliberately("writers/keltowriter_plugin/processes",
                          "the path fits into its field of the process record");
  }
  if (writeProcessSample(record) != 0) {
    return kelto::failure("Unable to write process record.\n");
  }
  processKeysByPid[record.pid].insert(key);
  m_processes[key] = {process, std::move(record)};
  return 0;
}

int KeltoWriter::handleThreadInfo(const pwr::Thread* thread, bool isStart) {
  const std::string key = threadKey(*thread);
  const bool isKnown = m_threads.contains(key);
  if (isKnown && isStart) {
    return 0;
  }
  KeltoThread record{kStartEvent, thread->getPid(), thread->getTid(), thread->getStartTime()};
  if (isKnown) {
    record.event = kThreadEndEvent;
    record.time =
        thread->getEndTime() != 0 ? thread->getEndTime() : inheritedEnd(*thread, lastTsc());
  }
  if (writeThreadSample(record) != 0) {
    return kelto::failure("Unable to write process record.\n");
  }
  m_threads[key] = {thread, record};
  return 0;
}

// offset  size
//      0     4  1D 00 40 02
//      4     4  event
//      8     4  0
//     12     4  pid
//     16     4  0
//     20     8  time
//     28     2  size, from here to the end
//     30     2  type, 0
//     32     n  path with terminator, 30 bytes at most
int KeltoWriter::writeProcessSample(const KeltoProcess& process) {
  kelto::PackedRecord<kProcessRecordSize> record;
  record.u32(kelto::kProcessWord);
  record.u32(process.event);
  record.u32(0);
  record.u32(process.pid);
  record.u32(0);
  record.u64(process.time);
  record.u16(static_cast<std::uint16_t>(process.path.size() + 1 + kSizeAndType));
  record.u16(kelto::kProcessRecord);
  record.terminatedText(process.path);
  return writeRecord(systemStreamId, record.data(), record.size());
}

// offset  size
//      0     4  1D 00 00 02
//      4     4  event
//      8     4  0
//     12     4  pid
//     16     4  tid
//     20     8  time
int KeltoWriter::writeThreadSample(const KeltoThread& thread) {
  kelto::PackedRecord<kThreadRecordSize> record;
  record.u32(kelto::kThreadWord);
  record.u32(thread.event);
  record.u32(0);
  record.u32(thread.pid);
  record.u32(thread.tid);
  record.u64(thread.time);
  return writeRecord(systemStreamId, record.data(), record.size());
}
