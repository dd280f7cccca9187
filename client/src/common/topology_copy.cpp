// What this library holds of the topology: the copy and the end of a tree. The host has the rest.
#include <unordered_map>

#include "host/topology.h"

namespace pwr {

TopTree::TopTree(const TopTree& other) : m_nodes(other.m_nodes) {
  std::unordered_map<const TNode*, const TNode*> copyOf{{nullptr, nullptr}};
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    copyOf.emplace(&other.m_nodes[i], &m_nodes[i]);
  }
  for (TNode& node : m_nodes) {
    // The copied node still points at its parent in the other tree.
    node.parent = copyOf.at(node.parent);
    if (node.kind != TNode::kThread) {
      m_aboveThreads.emplace(Place{node.parent, node.kind, node.id}, &node);
    }
  }
}

TopTree::~TopTree() = default;

}  // namespace pwr
