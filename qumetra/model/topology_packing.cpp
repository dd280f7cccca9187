// The topology's packed forms.
#include "client/src/common/packed_numbers.h"
#include "client/src/common/serializer.h"
#include "host/topology.h"

// The packed forms, in native byte order with nothing between the fields.
//
// Tree: count of threads (32 bits), then each thread: package (32), whether it has a module (8),
// module (32, 0 without), core (32), id (32).
// Deprecated tree: count of threads (32), then each thread: package (32), core (32), id (32).
// Topology change: timestamp (64), thread id (32), online (8).
namespace pwr {
namespace {

/// Reads one thread's place; false when the bytes fall short.
using ReadLocation = bool (*)(Serializer&, ThreadLocation&);

bool readLocation(Serializer& serializer, ThreadLocation& location) {
  std::uint8_t hasModule = 0;
  std::uint32_t module = 0;
  if (!readNumber(serializer, location.package) || !readNumber(serializer, hasModule) ||
      !readNumber(serializer, module) || !readNumber(serializer, location.core) ||
      !readNumber(serializer, location.id)) {
    return false;
  }
  if (hasModule != 0) {
    location.module = module;
  }
  return true;
}

bool readDeprecatedLocation(Serializer& serializer, ThreadLocation& location) {
  return readNumber(serializer, location.package) && readNumber(serializer, location.core) &&
         readNumber(serializer, location.id);
}

ThreadLocation locationOf(const TNode& thread) {
  ThreadLocation location;
  location.id = thread.id;
  location.core = thread.parent->id;
  const TNode* above = thread.parent->parent;
  if (above->kind == TNode::kModule) {
    location.module = above->id;
    above = above->parent;
  }
  location.package = above->id;
  return location;
}

/// Reads as many threads as the bytes announce. Returns false when they fall short.
bool readThreads(Serializer& serializer, std::vector<ThreadLocation>& threads,
                 ReadLocation readOne) {
  std::uint32_t count = 0;
  if (!readNumber(serializer, count)) {
    return false;
  }
  // Nothing is reserved: the count may be anything, the bytes are what they are.
  for (std::uint32_t index = 0; index < count; ++index) {
    ThreadLocation location;
    if (!readOne(serializer, location)) {
      return false;
    }
    threads.push_back(location);
  }
  return true;
}

/// Fills the empty `tree`. Returns 0, or 1 when the bytes fall short; the tree is then still empty.
int readTree(TopTree& tree, Serializer& serializer, ReadLocation readOne) {
  std::vector<ThreadLocation> threads;
  if (!readThreads(serializer, threads, readOne)) {
    return 1;
  }
  for (const ThreadLocation& location : threads) {
    tree.addThread(location);
  }
  return 0;
}

}  // namespace

void TopTree::serializeTree(Serializer& serializer) const {
  std::vector<const TNode*> threads;
  getAllThreads(threads);
  writeNumber(serializer, static_cast<std::uint32_t>(threads.size()));
  for (const TNode* const thread : threads) {
    const ThreadLocation location = locationOf(*thread);
    writeNumber(serializer, location.package);
    writeNumber(serializer, static_cast<std::uint8_t>(location.module ? 1 : 0));
    writeNumber(serializer, location.module.value_or(0));
    writeNumber(serializer, location.core);
    writeNumber(serializer, location.id);
  }
}

int TopTree::deserializeTree(Serializer& serializer) {
  clear();
  return readTree(*this, serializer, readLocation);
}

int TopTree::deserializeTreeDeprecated(Serializer& serializer) {
  clear();
  return readTree(*this, serializer, readDeprecatedLocation);
}

// Scheduling guidance is unknown here: its part of the packed form has no bytes.
void TopTree::serializeHGS(Serializer& /*serializer*/) const {}
int TopTree::deserializeHGS(Serializer& /*serializer*/) { return 0; }

void TopologyChange::serialize(Serializer& serializer) const {
  writeNumber(serializer, timestamp);
  writeNumber(serializer, threadId);
  writeNumber(serializer, static_cast<std::uint8_t>(online ? 1 : 0));
}

int TopologyChange::deserialize(Serializer& serializer) {
  TopologyChange read;
  std::uint8_t onlineByte = 0;
  if (!readNumber(serializer, read.timestamp) || !readNumber(serializer, read.threadId) ||
      !readNumber(serializer, onlineByte)) {
    return 1;
  }
  read.online = onlineByte != 0;
  *this = read;
  return 0;
}

}  // namespace pwr
