// Everything that has a name: entities, attributes, descriptors, processes, threads.
//
// The host makes these objects, owns them and keeps them for the whole run; writers get them as
// const and may keep pointers. A copy has the id of its original.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/attributes.h"
#include "host/unique_id.h"

namespace pwr {

class Quantity;

/// The texts of a handle. The field name heads columns, the header stands above the field name.
struct HandleTexts {
  std::string name;
  std::string fieldName;
  std::string header;
};

/// The root of everything named. Thread-safe for const calls.
class DataHandle : public UniqueId {
 public:
  /// What kind of object a handle is. The numbers are seen by every reader of the contract.
  static constexpr std::uint32_t kAttributeType = 0;
  static constexpr std::uint32_t kOtherType = 1;
  static constexpr std::uint32_t kDescriptorType = 9;

  DataHandle(std::uint64_t id, HandleTexts texts, std::uint32_t handleType);
  DataHandle(const DataHandle& other);
  DataHandle& operator=(const DataHandle&) = delete;
  virtual ~DataHandle();

  /// A slot that only the host uses: the text by which the host refers to the object in its own
  /// diagnostics.
  virtual std::string getDiagnosticName() const;
  /// The name together with the names of the objects it belongs to. Here: the name.
  virtual std::string getQualifiedName() const;

  std::string getName() const;
  std::string getFieldName() const;
  std::string getHeader() const;
  std::uint32_t getHandleType() const;

  /// Finds a handle of this run, or one made by the library, by its id. Returns 0 on success;
  /// otherwise returns 1 and sets `out` to null.
  static int get(unsigned long id, const DataHandle*& out);

 private:
  std::string m_name;
  std::string m_fieldName;
  std::string m_header;
  /// What `getDiagnosticName` gives.
  std::string m_hostText;
  std::uint32_t m_handleType;
};

/// A thing that values belong to: a package, a core, a device. Entities form trees by their
/// parents.
class EntityHandle : public DataHandle, public AttributeValueManager {
 public:
  /// `parent` is borrowed, may be null and must outlive this object.
  EntityHandle(std::uint64_t id, HandleTexts texts, const EntityHandle* parent,
               std::uint32_t handleType = kOtherType);
  EntityHandle(const EntityHandle& other);
  ~EntityHandle() override;

  /// The names from the root parent down to this one joined with "/", empty names left out.
  std::string getQualifiedName() const override;

  const EntityHandle* getParent() const;

 private:
  const EntityHandle* m_parent;
  /// The host's own; empty here.
  std::vector<std::uint64_t> m_words;
};

/// What an attribute's value says. Other numbers may occur.
enum class AttributeType : std::uint32_t {
  Data = 1,
  Process = 3,
  Thread = 4,
  Info = 5,
};

/// A named property that entities, descriptors and samples can have a value for.
class Attribute : public EntityHandle {
 public:
  /// `quantity` is borrowed and may be null.
  Attribute(std::uint64_t id, HandleTexts texts, const EntityHandle* parent,
            const Quantity* quantity, AttributeType type);
  Attribute(const Attribute& other);
  ~Attribute() override;

  /// Makes a new attribute with a fresh id, also for a name used before. The field name is the
  /// name. The host owns the result; it lives until the process ends.
  static const Attribute* create(std::string name, const Quantity* quantity, AttributeType type);

  AttributeType getAttributeType() const;

  /// May be null. Borrowed.
  const Quantity* m_quantity;

 private:
  AttributeType m_type;
};

/// The two texts a descriptor is made from.
class DataDescriptorBuilder {
 public:
  DataDescriptorBuilder(std::string name, std::string fieldName);
  ~DataDescriptorBuilder();

  const std::string& name() const;
  const std::string& fieldName() const;

 private:
  std::string m_name;
  std::string m_fieldName;
};

/// A state or a kind of event that values are told apart by, such as "C6".
class DataDescriptor : public DataHandle, public AttributeValueManager {
 public:
  DataDescriptor(std::uint64_t id, HandleTexts texts);
  DataDescriptor(const DataDescriptor& other);
  ~DataDescriptor() override;

  /// Makes a descriptor with a fresh id. The host owns the result; it lives until the process ends.
  /// The caller may still add attribute values to it.
  static DataDescriptor* create(const DataDescriptorBuilder& builder);
};

/// A named constant that info attributes point at.
class NameValuePair : public DataHandle {
 public:
  NameValuePair(std::uint64_t id, HandleTexts texts, std::string infoName, std::string valueDesc,
                std::uint64_t value);
  ~NameValuePair() override;

  std::string getInfoName() const;
  std::string getValueDesc() const;
  std::uint64_t getValue() const;

 private:
  std::string m_infoName;
  std::string m_valueDesc;
  std::uint64_t m_value;
};

/// The life of a process or thread in ticks of the collection's clock; 0 where unknown.
struct Lifetime {
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
};

/// A process of the measured machine.
class Process : public DataHandle {
 public:
  Process(std::uint64_t id, HandleTexts texts, std::uint32_t pid, std::uint32_t parentPid,
          std::string path, Lifetime lifetime);
  ~Process() override;

  std::uint32_t getPid() const;
  std::uint32_t getParentPid() const;
  std::string getPath() const;
  std::uint64_t getStartTime() const;
  std::uint64_t getEndTime() const;

  /// Host side: the process has ended, at `ticks`.
  void setEndTime(std::uint64_t ticks);

 private:
  std::uint32_t m_pid;
  std::uint32_t m_parentPid;
  std::string m_path;
  Lifetime m_lifetime;
};

/// A thread of the measured machine.
class Thread : public DataHandle {
 public:
  Thread(std::uint64_t id, HandleTexts texts, std::uint32_t tid, std::uint32_t pid,
         Lifetime lifetime);
  ~Thread() override;

  std::uint32_t getTid() const;
  std::uint32_t getPid() const;
  std::uint64_t getStartTime() const;
  std::uint64_t getEndTime() const;

  /// Host side: the thread has ended, at `ticks`.
  void setEndTime(std::uint64_t ticks);

 private:
  std::uint32_t m_tid;
  std::uint32_t m_pid;
  Lifetime m_lifetime;
};

/// A handle that names a column and knows which attributes the column's values will bring. A reader
/// that holds a `DataHandle` finds the attributes by `dynamic_cast` to `ExpectedAttributeManager`.
class ColumnHandle : public DataHandle, public ExpectedAttributeManager {
 public:
  ColumnHandle(std::uint64_t id, HandleTexts texts, std::uint32_t handleType,
               std::vector<const Attribute*> expectedAttributes);
  ~ColumnHandle() override;
};

}  // namespace pwr
