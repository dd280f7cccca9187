// The memory of many over-time tables.
#pragma once

namespace qumetra::bench {

/// Reports as `int_1000_tables` what 1,000 tables of 10,000 rows hold resident in MiB when the last
/// sample is in, and what the same bytes hold in byte stores alone.
void addMemoryReport();

}  // namespace qumetra::bench
