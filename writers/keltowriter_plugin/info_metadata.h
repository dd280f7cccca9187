// The kinds of nodes, and how the uid of a new node is drawn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelto {

/// A node without a parent.
inline constexpr long kNoParent = -1;
/// The kind of the nodes that info attributes and texts have. A string, since the look-up of a
/// kind, which each such attribute needs, takes one.
inline const std::string kNameIdKind = "nameid_attribute";
/// The longest text of a metadata record, with its terminator.
inline constexpr std::size_t kLongestMetadataText = 400;
/// The bytes of a metadata record before its text.
inline constexpr std::size_t kMetadataFixedSize = 44;
/// The size of a metadata record, counted from the size field, without the characters of its text.
inline constexpr std::size_t kMetadataRestSize = 33;

/// A fresh uid: the id of an attribute made for it under `name`. Hosts count on one attribute per
/// uid.
std::uint64_t drawUid(const char* name);

}  // namespace kelto
