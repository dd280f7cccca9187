#include "qumetra/recording/definition_records.h"

#include <optional>
#include <utility>

#include "qumetra/recording/record_values.h"

namespace qumetra {
namespace {

std::optional<std::string> optionalString(RecordObject& record, std::string_view name) {
  const auto member = record.find(name);
  return member ? std::optional<std::string>(member->string()) : std::nullopt;
}

HandleSpec readHandleSpec(RecordObject& record, std::optional<std::uint64_t> id) {
  HandleSpec spec;
  spec.name = record.string("name");
  spec.fieldName = optionalString(record, "fieldName");
  spec.header = record.string("header");
  spec.id = id;
  return spec;
}

pwr::Lifetime readLifetime(RecordObject& record) {
  return {record.integer<std::uint64_t>("startTime"), record.integer<std::uint64_t>("endTime")};
}

}  // namespace

struct DefinitionRecords::Kind {
  std::string_view name;
  void (DefinitionRecords::*read)(RecordObject&);
};

const DefinitionRecords::Kind DefinitionRecords::kKinds[] = {
    {"quantity", &DefinitionRecords::quantity},
    {"attribute", &DefinitionRecords::attribute},
    {"entity", &DefinitionRecords::entity},
    {"descriptor", &DefinitionRecords::descriptor},
    {"nameValuePair", &DefinitionRecords::nameValuePair},
    {"process", &DefinitionRecords::process},
    {"thread", &DefinitionRecords::thread},
    {"handle", &DefinitionRecords::handle},
    {"metric", &DefinitionRecords::metric},
    {"attributes", &DefinitionRecords::attributes},
    {"ended", &DefinitionRecords::ended},
};

DefinitionRecords::DefinitionRecords(Model& model, Definitions& definitions, MessageSink& sink)
    : m_model(model), m_definitions(definitions), m_sink(sink) {}

bool DefinitionRecords::read(std::string_view kind, RecordObject& record) {
  for (const Kind& known : kKinds) {
    if (known.name == kind) {
      (this->*known.read)(record);
      return true;
    }
  }
  return false;
}

template <typename Make>
void DefinitionRecords::define(RecordObject& record, Make make) {
  const RecordValue ref = record.require("ref");
  m_definitions.checkNew(ref);
  const auto idMember = record.find("id");
  std::optional<std::uint64_t> id;
  if (idMember) {
    id = idMember->integer<std::uint64_t>();
  }
  try {
    m_definitions.add(ref, make(id));
  } catch (const IdError& error) {
    idMember.value_or(ref).fail(error.what(),
                                "an id that is not used yet, outside 0x60000000 to 0x7FFFFFFF");
  }
  record.finish();
}

void DefinitionRecords::quantity(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    QuantitySpec spec;
    spec.code = record.integer<std::uint32_t>("code");
    spec.name = record.string("name");
    spec.units = record.string("units");
    spec.title = optionalString(record, "title");
    spec.id = id;
    const auto rateMember = record.findNotNull("rate");
    if (!rateMember) {
      return &m_model.addQuantity(spec);
    }
    RecordObject rate(*rateMember);
    const pwr::Quantity& rateQuantity = m_definitions.quantity(rate.require("quantity"));
    const double factor = rate.require("factor").real();
    rate.finish();
    pwr::Quantity& quantity = m_model.addQuantity(spec);
    quantity.setRateConversion(&rateQuantity, factor);
    return &quantity;
  });
}

void DefinitionRecords::attribute(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto type = static_cast<pwr::AttributeType>(record.integer<std::uint32_t>("kind"));
    const auto* quantity = m_definitions.quantityOrNull(record.find("quantity"));
    const auto* parent = m_definitions.entityOrNull(record.find("parent"));
    const auto values = readAttributeValues(record, "attributes", m_definitions);
    pwr::Attribute& attribute = m_model.addAttribute(spec, type, quantity, parent);
    attribute.setAttributeValues(values);
    return &attribute;
  });
}

void DefinitionRecords::entity(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto* parent = m_definitions.entityOrNull(record.find("parent"));
    const auto values = readAttributeValues(record, "attributes", m_definitions);
    pwr::EntityHandle& entity = m_model.addEntity(spec, parent);
    entity.setAttributeValues(values);
    return &entity;
  });
}

void DefinitionRecords::descriptor(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto values = readAttributeValues(record, "attributes", m_definitions);
    pwr::DataDescriptor& descriptor = m_model.addDescriptor(spec);
    descriptor.setAttributeValues(values);
    return &descriptor;
  });
}

void DefinitionRecords::nameValuePair(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const std::string infoName = record.string("infoName");
    const std::string valueDesc = record.string("valueDesc");
    return &m_model.addNameValuePair(spec, infoName, valueDesc,
                                     record.integer<std::uint64_t>("value"));
  });
}

void DefinitionRecords::process(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto pid = record.integer<std::uint32_t>("pid");
    const auto parentPid = record.integer<std::uint32_t>("parentPid");
    const std::string path = record.string("path");
    return &m_model.addProcess(spec, pid, parentPid, path, readLifetime(record));
  });
}

void DefinitionRecords::thread(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto tid = record.integer<std::uint32_t>("tid");
    const auto pid = record.integer<std::uint32_t>("pid");
    return &m_model.addThread(spec, tid, pid, readLifetime(record));
  });
}

void DefinitionRecords::handle(RecordObject& record) {
  define(record, [&](std::optional<std::uint64_t> id) {
    const HandleSpec spec = readHandleSpec(record, id);
    const auto type = record.integer<std::uint32_t>("type");
    std::vector<const pwr::Attribute*> expected;
    record.forEach("expectedAttributes",
                   [&](RecordValue ref) { expected.push_back(&m_definitions.attribute(ref)); });
    return &m_model.addColumnHandle(spec, type, std::move(expected));
  });
}

void DefinitionRecords::metric(RecordObject& record) {
  const RecordValue ref = record.require("ref");
  m_definitions.checkNew(ref);
  pwr::Metric& metric = m_model.addMetric();
  describeMetric(record, metric);
  record.finish();
  m_definitions.add(ref, &metric);
}

void DefinitionRecords::describeMetric(RecordObject& record, pwr::Metric& metric) {
  metric.metricId = record.require("metricId").integer<std::uint32_t>();
  metric.name = record.string("name");
  metric.metricType = static_cast<pwr::Metric::MetricType>(record.integer<std::uint64_t>("type"));
  metric.quantity = m_definitions.quantityOrNull(record.find("quantity"));
  record.forEach("entities", [&](RecordValue column) {
    const RecordList pair = column.list(2);
    metric.entities.emplace_back(m_definitions.entityOrNull(pair[0]),
                                 m_definitions.descriptorOrNull(pair[1]));
  });
  metric.states = readDataList(record, "states", m_definitions);
  metric.featureName = record.string("featureName");
  metric.groupName = record.string("groupName");
  record.forEach("entityList", [&](RecordValue entity) {
    metric.entityList.push_back(&m_definitions.entity(entity));
  });
  metric.metadataValues = readDataList(record, "metadataValues", m_definitions);
  metric.valueHandle = m_definitions.handleOrNull(record.find("valueHandle"));
  metric.descriptorTitleHandle = m_definitions.handleOrNull(record.find("descriptorTitleHandle"));
  metric.entityTitleHandle = m_definitions.handleOrNull(record.find("entityTitleHandle"));
  metric.writeEntityAttributes = record.boolean("writeEntityAttributes");
  metric.tableClass = static_cast<pwr::TableClass>(record.integer<std::uint32_t>("tableClass"));
}

void DefinitionRecords::attributes(RecordObject& record) {
  const RecordValue of = record.require("of");
  const Definitions::Object& object = m_definitions.object(of);
  const auto values = readAttributeValues(record, "attributes", m_definitions);
  record.finish();
  const auto replace = [&](auto& holder) {
    holder.setAttributeValues(values);
    m_sink.attributesChanged(holder);
  };
  if (auto* const* attribute = std::get_if<pwr::Attribute*>(&object)) {
    replace(**attribute);
  } else if (auto* const* entity = std::get_if<pwr::EntityHandle*>(&object)) {
    replace(**entity);
  } else if (auto* const* descriptor = std::get_if<pwr::DataDescriptor*>(&object)) {
    replace(**descriptor);
  } else {
    failKind(of, object, "an entity, attribute or descriptor");
  }
}

void DefinitionRecords::ended(RecordObject& record) {
  const RecordValue of = record.require("of");
  const Definitions::Object& object = m_definitions.object(of);
  const auto endTime = record.integer<std::uint64_t>("endTime");
  record.finish();
  const auto end = [&](auto& ended) {
    ended.setEndTime(endTime);
    m_sink.ended(ended);
  };
  if (auto* const* process = std::get_if<pwr::Process*>(&object)) {
    end(**process);
  } else if (auto* const* thread = std::get_if<pwr::Thread*>(&object)) {
    end(**thread);
  } else {
    failKind(of, object, "a process or thread");
  }
}

}  // namespace qumetra
