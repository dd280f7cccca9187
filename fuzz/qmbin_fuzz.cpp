// Arbitrary bytes as .qmbin files: as one file, and cut in two as a series.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "fuzz/bytes_source.h"
#include "qumetra/readers/qmbin_reader.h"

namespace {

using qumetra::fuzz::BytesSource;

/// Touches every byte that it is given, and counts.
class Toucher : public qumetra::QmbinVisitor {
 public:
  void text(std::uint16_t /*index*/, const std::string& text) override { touch(text); }
  void system(const qumetra::QmbinSystem& system) override {
    touch(system.platformName + system.osName);
  }
  void descriptor(const qumetra::QmbinDescriptor& descriptor) override {
    touch(descriptor.name + descriptor.attribute);
  }
  void metric(const qumetra::QmbinMetric& metric) override {
    touch(metric.name + metric.units);
    for (const qumetra::QmbinMetric::Column& column : metric.columns) {
      touch(column.entity.value_or(""));
    }
  }
  void sample(const qumetra::QmbinSample& sample) override {
    ++samples;
    touch(*sample.name);
    touch(sample.metric == nullptr ? "" : sample.metric->name);
    touch(sample.descriptor == nullptr ? "" : sample.descriptor->name);
  }
  void fault(std::uint64_t offset, const std::string& what) override {
    ++faults;
    lastOffset = offset;
    touch(what);
  }

  std::uint64_t samples = 0;
  std::uint64_t faults = 0;
  std::uint64_t lastOffset = 0;

 private:
  void touch(std::string_view text) {
    for (const char byte : text) {
      m_sum = m_sum + static_cast<unsigned char>(byte);
    }
  }

  volatile std::uint64_t m_sum = 0;
};

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Toucher whole;
  qumetra::QmbinReader reader(whole);
  BytesSource source(bytes);
  const qumetra::QmbinCounts counts = reader.read(source);
  require(counts.samples == whole.samples && counts.faults == whole.faults);
  require(whole.lastOffset <= size);
  Toucher halves;
  qumetra::QmbinReader series(halves);
  BytesSource first(bytes.substr(0, size / 2));
  BytesSource second(bytes.substr(size / 2));
  series.read(first);
  series.read(second);
  return 0;
}
