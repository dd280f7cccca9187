// Defines objects in a recording before their first use, and refers to them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "host/attributes.h"
#include "host/data.h"
#include "host/handles.h"
#include "host/quantity.h"
#include "qumetra/recording/block_file.h"
#include "qumetra/recording/json_text.h"

namespace qumetra {

/// Gives every object a reference, and writes its definition the first time it is asked for one,
/// after the definitions of what it refers to. Objects are told apart by their addresses, so they
/// must live as long as this; a copy of an object, which has its id, is the same object.
///
/// Ids are written as they are, with one exception: an id that a recording cannot hold, because it
/// was drawn at run time or because another object has it, is replaced by a high one.
///
/// References come as JSON, quotes included, and stay valid. Not synchronised.
class DefinitionWriter {
 public:
  /// `file` is borrowed.
  explicit DefinitionWriter(BlockFile& file) : m_file(file) {}
  DefinitionWriter(const DefinitionWriter&) = delete;
  DefinitionWriter& operator=(const DefinitionWriter&) = delete;

  std::string_view quantity(const pwr::Quantity& object);
  std::string_view handle(const pwr::DataHandle& object);
  /// The reference, or null in JSON.
  std::string_view quantityOrNull(const pwr::Quantity* object);
  std::string_view handleOrNull(const pwr::DataHandle* object);
  /// The reference, or the empty text.
  std::string_view handleOrNothing(const pwr::DataHandle* object);

  /// Writes the attribute values as they are now, if the object is defined already.
  void attributesChanged(const pwr::DataHandle& object);
  /// Writes the end time of a process or thread, if it is defined already.
  void ended(const pwr::DataHandle& object);

  void appendData(JsonText& json, const pwr::Data& value);
  /// The key of an additional information: the object that has the id, or the id itself.
  void appendKey(JsonText& json, std::uint64_t id);

 private:
  enum class Kind { Attribute, Entity, Descriptor, NameValuePair, Process, Thread, Column, Count };
  struct Entry {
    Kind kind = Kind::Column;
    /// Empty until the definition is written.
    std::string ref;
    /// False while the things that the definition refers to are being defined.
    bool isWritten = false;
  };

  static Kind kindOf(const pwr::DataHandle& object);
  static const char* kindName(Kind kind);

  void define(const pwr::DataHandle& object, Entry& entry);
  void defineBare(const pwr::DataHandle& object, Entry& entry);
  void defineFixedParts(const pwr::DataHandle& object);
  void defineAttributes(const pwr::AttributeValueManager& values);
  void write(const pwr::DataHandle& object, Entry& entry, const pwr::AttributeValueManager* values);
  void writeQuantity(const pwr::Quantity& object, std::string_view ref, std::string_view rate,
                     double factor);
  void writeAttributes(std::string_view ref, const pwr::AttributeValueManager& values);
  void appendTexts(JsonText& json, const pwr::DataHandle& object);
  void appendMembers(JsonText& json, const pwr::DataHandle& object, Kind kind);
  void appendAttributes(JsonText& json, const pwr::AttributeValueManager& values);
  void appendExpected(JsonText& json, const pwr::DataHandle& object);
  std::uint64_t takeId(std::uint64_t wanted);

  BlockFile& m_file;
  std::unordered_map<const pwr::DataHandle*, Entry> m_handles;
  /// Quoted references; empty for one that is being defined.
  std::unordered_map<const pwr::Quantity*, std::string> m_quantities;
  /// The first object of each id, by the id that it has itself.
  std::unordered_map<std::uint64_t, const pwr::DataHandle*> m_firstOfId;
  std::unordered_set<std::uint64_t> m_takenIds;
  std::uint64_t m_quantityCount = 0;
  std::uint64_t m_replacements = 0;
  std::uint64_t m_counts[static_cast<int>(Kind::Count)] = {};
};

}  // namespace qumetra
