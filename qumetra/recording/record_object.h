// Typed access to the members of a record. Every fault names the member and tells what was
// expected.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "qumetra/recording/json_line.h"

namespace qumetra {

/// What is wrong in a record: "MEMBER: what there is; expected what should be".
class RecordFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class RecordList;

/// One value of a line. Cheap to copy; lives as long as the line's values. Each read throws
/// `RecordFault` when the value is of another type or out of range.
class RecordValue {
 public:
  RecordValue(JsonLine& line, std::uint32_t index) : m_line(&line), m_index(index) {}

  bool isNull() const { return node().kind == JsonLine::Kind::Null; }
  bool isString() const { return node().kind == JsonLine::Kind::String; }
  bool isObject() const { return node().kind == JsonLine::Kind::Object; }
  bool isNumber() const { return node().kind == JsonLine::Kind::Number; }

  template <std::integral Integer>
  Integer integer() const;
  /// A number, or one of the texts "nan", "inf" and "-inf".
  double real() const;
  /// A real narrowed to 32 bits, as IEEE 754 rounds it.
  float narrowReal() const;
  bool boolean() const;
  /// Lives as long as the line.
  std::string_view string() const;
  RecordList list() const;
  /// A list of exactly so many elements.
  RecordList list(std::uint32_t size) const;

  /// Throws the fault "MEMBER: `there`; expected `expected`".
  [[noreturn]] void fail(const std::string& there, const std::string& expected) const;
  /// The same, with what the value is ("a number", "a list").
  [[noreturn]] void failType(const std::string& expected) const;

  JsonLine& line() const { return *m_line; }
  std::uint32_t index() const { return m_index; }

 private:
  const JsonLine::Node& node() const { return m_line->node(m_index); }
  [[noreturn]] void failInteger(const std::string& range) const;

  JsonLine* m_line;
  std::uint32_t m_index;
};

/// The elements of a list.
class RecordList {
 public:
  class Iterator {
   public:
    Iterator(JsonLine& line, std::uint32_t index) : m_line(&line), m_index(index) {}
    RecordValue operator*() const { return {*m_line, m_index}; }
    Iterator& operator++() {
      m_index = m_line->node(m_index).end;
      return *this;
    }
    bool operator==(const Iterator& other) const { return m_index == other.m_index; }

   private:
    JsonLine* m_line;
    std::uint32_t m_index;
  };

  RecordList(JsonLine& line, std::uint32_t index) : m_line(&line), m_index(index) {}

  std::uint32_t size() const { return m_line->node(m_index).count; }
  Iterator begin() const { return {*m_line, m_index + 1}; }
  Iterator end() const { return {*m_line, m_line->node(m_index).end}; }
  /// REQUIRES: there are more than `position` elements. Walks there from the first.
  RecordValue operator[](std::uint32_t position) const;

 private:
  JsonLine* m_line;
  std::uint32_t m_index;
};

/// The members of an object. Whoever reads one asks for all members that he knows and then calls
/// `finish`, which refuses all others.
///
///     RecordObject record(value);
///     auto pid = record.integer<std::uint32_t>("pid");
///     auto path = record.string("path");
///     record.finish();
class RecordObject {
 public:
  /// Throws `RecordFault` when the value is no object.
  explicit RecordObject(RecordValue value);

  /// The member, or nothing when it is absent.
  std::optional<RecordValue> find(std::string_view name);
  /// The same, but nothing also when it is null.
  std::optional<RecordValue> findNotNull(std::string_view name);
  /// Throws `RecordFault` when the member is absent.
  RecordValue require(std::string_view name);

  // An absent member is 0, false or the empty string.
  template <std::integral Integer>
  Integer integer(std::string_view name);
  bool boolean(std::string_view name);
  std::string string(std::string_view name);
  /// Calls `each` with every element of a list; an absent member is the empty list.
  template <typename Each>
  void forEach(std::string_view name, Each each);

  /// For objects whose member names are data: calls `each` with every name and value.
  template <typename Each>
  void forAll(Each each);

  std::uint32_t size() const { return m_line->node(m_index).count; }
  /// REQUIRES: there is a member.
  RecordValue first() const { return {*m_line, m_index + 1}; }
  RecordValue value() const { return {*m_line, m_index}; }

  /// Throws `RecordFault` for a member that nobody asked for, or that is there twice.
  void finish() const;

 private:
  [[noreturn]] void refuse(std::uint32_t member) const;

  JsonLine* m_line;
  std::uint32_t m_index;
  /// Where the next look-up starts: members mostly come in the order in which they are asked for.
  std::uint32_t m_next;
};

template <std::integral Integer>
Integer RecordObject::integer(std::string_view name) {
  const auto member = find(name);
  return member ? member->integer<Integer>() : Integer{};
}

template <typename Each>
void RecordObject::forEach(std::string_view name, Each each) {
  const auto member = find(name);
  if (!member) {
    return;
  }
  for (const RecordValue element : member->list()) {
    each(element);
  }
}

template <typename Each>
void RecordObject::forAll(Each each) {
  const std::uint32_t end = m_line->node(m_index).end;
  for (std::uint32_t at = m_index + 1; at != end; at = m_line->node(at).end) {
    m_line->node(at).taken = true;
    each(m_line->node(at).name, RecordValue(*m_line, at));
  }
}

}  // namespace qumetra
