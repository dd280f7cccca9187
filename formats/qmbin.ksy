meta:
  id: qmbin
  title: Binary result of Qumetra
  file-extension: qmbin
  endian: le
doc: |
  A plain run of records, without head or end. Texts and descriptors are told once and are referred to
  by their numbers; 0 stands for none. In the files of a continuous run the numbers go on from file to
  file. docs/qmbin.md tells the rest.
seq:
  - id: records
    type: record
    repeat: eos
types:
  record:
    seq:
      - id: len_payload
        type: u2
      - id: type
        type: u1
        enum: record_type
      - id: payload
        size: len_payload
        type:
          switch-on: type
          cases:
            'record_type::text': text
            'record_type::system': system
            'record_type::descriptor': descriptor
            'record_type::metric': metric
            'record_type::sample': sample
  text:
    seq:
      - id: index
        type: u2
      - id: len_bytes
        type: u2
      - id: bytes
        size: len_bytes
        doc: Usually UTF-8, but nothing makes it so.
  system:
    seq:
      - id: first_timestamp
        type: u8
        doc: Ticks.
      - id: last_timestamp
        type: u8
      - id: duration_seconds
        type: f4
      - id: high_frequency_mhz
        type: f4
      - id: low_frequency_mhz
        type: f4
      - id: cpu_frequency_mhz
        type: f4
      - id: bus_frequency_mhz
        type: f4
      - id: platform_id
        type: u4
      - id: platform_name
        type: u2
        doc: The number of a text, as are all names here.
      - id: cpu_code_name
        type: u2
      - id: native_model_name
        type: u2
      - id: controller_hubs
        type: u2
      - id: host_name
        type: u2
      - id: num_packages
        type: u2
      - id: num_modules
        type: u2
      - id: num_cores
        type: u2
      - id: num_threads
        type: u2
      - id: os_type
        type: u2
      - id: os_name
        type: u2
      - id: os_name_again
        type: u2
  descriptor:
    seq:
      - id: index
        type: u2
      - id: attribute
        type: u2
        doc: The number of a text, that of the empty one without an attribute.
      - id: name
        type: u2
  metric:
    seq:
      - id: metric_id
        type: u4
      - id: group
        type: u2
      - id: name
        type: u2
      - id: type_name
        type: u2
      - id: quantity
        type: u2
        doc: |
          For a metric without a quantity this, the units and the flag are those of the metric before.
      - id: units
        type: u2
      - id: has_quantity
        type: u2
      - id: num_columns
        type: u2
      - id: num_metadata
        type: u2
      - id: columns
        type: column
        repeat: expr
        repeat-expr: num_columns
      - id: metadata
        type: u2
        repeat: expr
        repeat-expr: num_metadata
  column:
    seq:
      - id: entity
        type: u2
        doc: The number of a text, or 0.
      - id: descriptor
        type: u2
        doc: The number of a descriptor, or 0.
  sample:
    seq:
      - id: timestamp
        type: u8
        doc: Ticks.
      - id: duration_microseconds
        type: f4
      - id: metric_id
        type: u4
      - id: name
        type: u2
        doc: The number of the entity's name, or of the state's for deltas.
      - id: descriptor
        type: u2
      - id: value
        type: f4
enums:
  record_type:
    0: text
    1: system
    2: descriptor
    3: metric
    4: sample
