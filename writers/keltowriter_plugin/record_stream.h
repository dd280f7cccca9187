// Where finished records wait, and how they become a result file.
//
// `<output name>.pwr` is a stream of records without a header of its own. Every id, that of the
// system message and that of each metric, owns a byte store, and the file is the stores laid end to
// end in ascending id:
//
//     system stream   the header records, then info metadata, process and thread records as they
//                     came up, then the end records of processes and threads
//     metric streams  one metadata record, then the samples in the order of their time
//
// Nothing reaches the file before `KeltoWriterImpl::fini`.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "client/src/common/backing_store.h"

/// The records of one id. One thread at a time.
class KeltoBackingStoreManager {
 public:
  /// `name` is shown to the user when the records stay out of the file. Throws a `const char*` when
  /// there can be no temp file.
  explicit KeltoBackingStoreManager(std::string name);

  /// Appends a record. Without effect when `active` is false. Returns 1, after a warning, when the
  /// store does not take it.
  int pushBuffer_i(const char* data, std::uint32_t size);

  /// Appends all records to `stream`, or nothing when they cannot be read. Returns 1, after a
  /// warning, for a failure; also for a null `stream`, and after a note when `active` is false.
  int flush(std::FILE* stream);

  /// Never null.
  std::unique_ptr<pwr::QMExtensibleBackingStore> store;
  std::string name;
  /// False when the metric is refused: nothing of it goes to the file.
  bool active = true;

 private:
  int copyTo(std::FILE* stream, std::uint64_t size);
};

/// The stores of a run and the result file. One thread at a time.
class KeltoWriterImpl {
 public:
  explicit KeltoWriterImpl(std::string suffix);
  KeltoWriterImpl(const KeltoWriterImpl&) = delete;
  KeltoWriterImpl& operator=(const KeltoWriterImpl&) = delete;
  /// Stores that `fini` has not released stay, with their temp files, until the process ends: they
  /// are all that is left of a run whose end failed.
  ~KeltoWriterImpl();

  /// Null when `id` has no store.
  KeltoBackingStoreManager* findStore(std::uint64_t id);
  /// The store of `id`, made at its first use with `name`. Null when it cannot be made.
  KeltoBackingStoreManager* getBackingStore(const std::string& name, std::uint64_t id);

  /// Lays the stores into the result file and releases them. A result that is not `valid`, or
  /// without a sample, is withdrawn with a note, and that is no failure. Returns 1, after a
  /// warning, when the file cannot be made; the stores left then stay.
  int fini();

  std::string fileSuffix;
  std::string outputPath;
  std::map<std::uint64_t, std::unique_ptr<KeltoBackingStoreManager>> stores;
  /// Null until the first store goes to the file, and after the end.
  std::FILE* outputFile = nullptr;
  /// Once false, the result is abandoned.
  bool valid = true;

  /// A sample has been written by this process, whichever writer it was.
  static bool m_hasData;
  /// The process has tried to open a result file. There is one attempt per process, so a second run
  /// in it makes no file.
  static bool m_wasFileOpened;

 private:
  bool openOutput();
  int closeOutput();
  int withdraw();
};
