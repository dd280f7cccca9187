// The topology's nodes. Copies and their ends are made by the common code.
#include "host/topology.h"

#include <algorithm>

namespace pwr {

TopTree::TopTree() = default;

std::size_t TopTree::getNumPackages() const { return count(TNode::kPackage); }
std::size_t TopTree::getNumModules() const { return count(TNode::kModule); }
std::size_t TopTree::getNumCores() const { return count(TNode::kCore); }
std::size_t TopTree::getNumThreads() const { return count(TNode::kThread); }

void TopTree::getAllThreads(std::vector<const TNode*>& out) const {
  for (const TNode& node : m_nodes) {
    if (node.kind == TNode::kThread) {
      out.push_back(&node);
    }
  }
}

void TopTree::addThread(const ThreadLocation& location) {
  const TNode* above = findOrAdd(TNode::kPackage, location.package, nullptr);
  if (location.module) {
    above = findOrAdd(TNode::kModule, *location.module, above);
  }
  const TNode* const core = findOrAdd(TNode::kCore, location.core, above);
  m_nodes.push_back({location.id, TNode::kThread, core});
}

const TNode* TopTree::findOrAdd(std::uint32_t kind, std::uint32_t id, const TNode* parent) {
  // From the back, since threads come grouped by what they belong to.
  const auto found = std::find_if(m_nodes.rbegin(), m_nodes.rend(), [&](const TNode& node) {
    return node.kind == kind && node.id == id && node.parent == parent;
  });
  return found != m_nodes.rend() ? &*found : &m_nodes.emplace_back(TNode{id, kind, parent});
}

std::size_t TopTree::count(std::uint32_t kind) const {
  return static_cast<std::size_t>(std::count_if(
      m_nodes.begin(), m_nodes.end(), [kind](const TNode& node) { return node.kind == kind; }));
}

}  // namespace pwr
