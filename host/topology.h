// The processor's topology: packages, modules, cores and hardware threads as a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pwr {

class Serializer;

/// The names of the node kinds, by kind. Every unit that includes this header has its own copy.
static const std::string s_top_node_types[9] = {"NONE", "Package", "Module", "Core", "Thread",
                                                "SOC",  "Die",     "Tile",   "NULL"};

/// A node of the topology.
struct TNode {
  /// Kinds by number; the name of each stands in `s_top_node_types`.
  enum Kind : std::uint32_t { kPackage = 1, kModule = 2, kCore = 3, kThread = 4 };

  std::uint32_t id = 0;
  std::uint32_t kind = 0;
  /// Null for a package. Belongs to the same tree.
  const TNode* parent = nullptr;
};

/// Where a hardware thread stands. A module is told apart by its package and number, a core by its
/// package, module and number.
struct ThreadLocation {
  std::uint32_t package = 0;
  std::optional<std::uint32_t> module;
  std::uint32_t core = 0;
  std::uint32_t id = 0;
};

/// The topology as a tree that owns its nodes. A copy is deep. Not synchronised; const calls may
/// run together.
class TopTree {
 public:
  TopTree();
  TopTree(const TopTree& other);
  TopTree& operator=(const TopTree&) = delete;
  ~TopTree();

  std::size_t getNumPackages() const;
  std::size_t getNumModules() const;
  std::size_t getNumCores() const;
  std::size_t getNumThreads() const;
  /// Appends all hardware threads in the order in which they were added. The nodes belong to the
  /// tree.
  void getAllThreads(std::vector<const TNode*>& out) const;

  /// Host side: adds a hardware thread, and the nodes above it where they are new.
  void addThread(const ThreadLocation& location);

  // The serialised forms. Writing appends to the serializer. Reading returns 0, or 1 when the bytes
  // fall short or make no tree; the tree is then empty. The deprecated form has no modules.
  void serializeTree(Serializer& serializer) const;
  int deserializeTree(Serializer& serializer);
  int deserializeTreeDeprecated(Serializer& serializer);
  // The guided scheduling part, which the open host leaves empty.
  void serializeHGS(Serializer& serializer) const;
  int deserializeHGS(Serializer& serializer);

 private:
  /// What tells a node above the threads from all others of its tree.
  struct Place {
    const TNode* parent;
    std::uint32_t kind;
    std::uint32_t id;
    bool operator<(const Place& other) const {
      if (parent != other.parent) {
        // Only std::less orders pointers to separate nodes.
        return std::less<>()(parent, other.parent);
      }
      return kind != other.kind ? kind < other.kind : id < other.id;
    }
  };

  const TNode* findOrAdd(std::uint32_t kind, std::uint32_t id, const TNode* parent);
  std::size_t count(std::uint32_t kind) const;
  void clear();

  /// A deque, since nodes point at one another.
  std::deque<TNode> m_nodes;
  /// The nodes above the threads, so that a thread finds its core whatever the number of nodes.
  std::map<Place, const TNode*> m_aboveThreads;
};

/// A change of the topology while a collection ran: a hardware thread that came or went.
struct TopologyChange {
  /// Ticks of the collection's clock.
  std::uint64_t timestamp = 0;
  std::uint32_t threadId = 0;
  bool online = false;

  void serialize(Serializer& serializer) const;
  /// Returns 0, or 1 when the bytes fall short.
  int deserialize(Serializer& serializer);
};

}  // namespace pwr
