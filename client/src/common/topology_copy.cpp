// What this library holds of the topology: the copy and the end of a tree. The host has the rest.
#include <unordered_map>

#include "host/topology.h"

namespace pwr {

TopTree::TopTree(const TopTree& other) : m_nodes(other.m_nodes) {
  // The copied nodes still point at the parents in the other tree.
  std::unordered_map<const TNode*, const TNode*> copyOf;
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    copyOf.emplace(&other.m_nodes[i], &m_nodes[i]);
  }
  for (TNode& node : m_nodes) {
    const auto parent = copyOf.find(node.parent);
    node.parent = parent != copyOf.end() ? parent->second : nullptr;
  }
}

TopTree::~TopTree() = default;

}  // namespace pwr
