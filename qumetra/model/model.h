// Makes and owns the objects of a run: tests, recordings and collectors build their worlds with it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/handles.h"
#include "host/metric.h"
#include "host/platform_metadata.h"
#include "host/quantity.h"
#include "host/system_metadata.h"
#include "host/text_notes.h"

namespace qumetra {

/// An id that is used already, or that is reserved for objects made at run time.
class IdError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

/// The texts and the id that a named object is made from.
struct HandleSpec {
  std::string name = {};
  /// Default: the name.
  std::optional<std::string> fieldName = std::nullopt;
  std::string header = {};
  /// Default: the next number from `Model::kFirstDefaultId` up.
  std::optional<std::uint64_t> id = std::nullopt;
};

/// What a quantity is made from.
struct QuantitySpec {
  std::uint32_t code = 0;
  std::string name = {};
  std::string units = {};
  /// Default: the name, and behind it the units in brackets when there are any.
  std::optional<std::string> title = std::nullopt;
  std::optional<std::uint64_t> id = std::nullopt;
};

/// Owns every object of one run until it is destroyed. What an `add` operation returns stays where
/// it is; `DataHandle::get` finds the handles among them as long as the model lives. An id that is
/// taken or reserved is an `IdError`, and nothing is added. At most one model lives at a time where
/// ids are looked up. Not synchronised.
class Model {
 public:
  static constexpr std::uint64_t kFirstDefaultId = 0x40000000;
  /// Ids from here to `kLastReservedId` are drawn by objects that are made at run time.
  static constexpr std::uint64_t kFirstReservedId = 0x60000000;
  static constexpr std::uint64_t kLastReservedId = 0x7FFFFFFF;
  static constexpr bool isReserved(std::uint64_t id) {
    return id >= kFirstReservedId && id <= kLastReservedId;
  }

  Model();
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;
  ~Model();

  pwr::Quantity& addQuantity(const QuantitySpec& spec);
  pwr::EntityHandle& addEntity(const HandleSpec& spec, const pwr::EntityHandle* parent = nullptr);
  pwr::Attribute& addAttribute(const HandleSpec& spec, pwr::AttributeType type,
                               const pwr::Quantity* quantity = nullptr,
                               const pwr::EntityHandle* parent = nullptr);
  pwr::DataDescriptor& addDescriptor(const HandleSpec& spec);
  pwr::NameValuePair& addNameValuePair(const HandleSpec& spec, const std::string& infoName,
                                       const std::string& valueDesc, std::uint64_t value);
  pwr::Process& addProcess(const HandleSpec& spec, std::uint32_t pid, std::uint32_t parentPid,
                           const std::string& path, pwr::Lifetime lifetime);
  pwr::Thread& addThread(const HandleSpec& spec, std::uint32_t tid, std::uint32_t pid,
                         pwr::Lifetime lifetime);
  pwr::ColumnHandle& addColumnHandle(const HandleSpec& spec, std::uint32_t handleType,
                                     std::vector<const pwr::Attribute*> expectedAttributes = {});

  /// A metric to describe and then to deliver sample by sample.
  pwr::Metric& addMetric();
  const pwr::TextNotes& addNotes(pwr::TextNotes notes);
  pwr::SystemMetadata& addSystemMetadata();
  pwr::PlatformMetadata& addPlatformMetadata();
  pwr::CPUMetadata& addCpuMetadata();
  pwr::PCHMetadata& addPchMetadata();

 private:
  template <typename Handle, typename... Arguments>
  Handle& addHandle(const HandleSpec& spec, Arguments&&... arguments);

  struct Contents;
  std::unique_ptr<Contents> m_contents;
};

}  // namespace qumetra
