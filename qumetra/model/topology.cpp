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
  const Place place{parent, kind, id};
  if (const auto found = m_aboveThreads.find(place); found != m_aboveThreads.end()) {
    return found->second;
  }
  const TNode* const added = &m_nodes.emplace_back(TNode{id, kind, parent});
  m_aboveThreads.emplace(place, added);
  return added;
}

void TopTree::clear() {
  m_aboveThreads.clear();
  m_nodes.clear();
}

std::size_t TopTree::count(std::uint32_t kind) const {
  return static_cast<std::size_t>(std::count_if(
      m_nodes.begin(), m_nodes.end(), [kind](const TNode& node) { return node.kind == kind; }));
}

}  // namespace pwr
