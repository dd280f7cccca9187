meta:
  id: pwr
  title: Import stream of Qumetra
  file-extension: pwr
  endian: le
doc: |
  A run of records without a common head: the first word of each tells its frame. First comes the
  system stream, from one magic record to the other: the machine, names, processes and threads. Behind
  it stand the metrics, each with its description and its samples. Names have numbers (uids), and what
  refers to them stands behind them. docs/pwr.md tells the rest.

  Fields called constant_N, N being their place in the record, always have the value that is told.
seq:
  - id: records
    type: record
    repeat: eos
types:
  record:
    seq:
      - id: first_word
        type: u4
        enum: frame
        valid:
          in-enum: true
        doc: Behind another word nothing can be found again.
      - id: body
        type:
          switch-on: first_word
          cases:
            'frame::magic': magic
            'frame::head_marker': head_marker
            'frame::header': header_frame
            'frame::timed': timed_frame
            'frame::wakelock': wakelock_frame
            'frame::process': process
            'frame::thread': thread

  # Frames
  header_frame:
    seq:
      - id: size
        type: u2
        doc: Bytes from this field to the end of the record.
      - id: type
        type: u2
        enum: record_type
      - id: payload
        size: size - 4
        type:
          switch-on: type
          cases:
            'record_type::hardware': hardware
            'record_type::collection': collection
            'record_type::system': system
            'record_type::power_threshold': power_threshold
  timed_frame:
    seq:
      - id: tsc
        type: u8
        doc: Ticks; 0 for names and metrics.
      - id: size
        type: u2
        doc: Bytes from this field to the end of the record.
      - id: type
        type: u2
        enum: record_type
      - id: payload
        size: size - 4
        type:
          switch-on: type
          cases:
            'record_type::package': package
            'record_type::sample': sample
            'record_type::metadata': metadata
  wakelock_frame:
    seq:
      - id: tid
        type: u4
        doc: 0 when the thread is not known.
      - id: pid
        type: u4
        doc: 0 when the process is not known.
      - id: tsc
        type: u8
        doc: Ticks.
      - id: size
        type: u2
        doc: Bytes from this field to the end of the record.
      - id: type
        type: u2
        enum: record_type
      - id: payload
        size: size - 4
        type:
          switch-on: type
          cases:
            'record_type::kernel_wakelock': kernel_wakelock
            'record_type::user_wakelock': user_wakelock

  # The head of the file
  magic:
    doc: Begins and ends the system stream.
    seq:
      - id: constant_4
        type: u4
        doc: 0xaddedefa
  collection:
    seq:
      - id: constant_8
        type: u4
        doc: 1
      - id: version_major
        type: u2
        doc: The version of the tool.
      - id: version_minor
        type: u2
      - id: version_patch
        type: u4
      - id: constant_20
        type: u8
        doc: 0x80000000000
      - id: len_name
        type: u1
      - id: name
        size: len_name
        doc: '"power"'
  system:
    seq:
      - id: constant_8
        type: u2
        doc: 1
      - id: constant_10
        type: u2
        doc: 0
      - id: os_kind
        type: u2
        enum: os_kind
      - id: os_version
        type: u2
        repeat: expr
        repeat-expr: 4
      - id: len_host_name
        type: u2
        doc: This and the lengths below count the zero at the end of the text.
      - id: host_name
        size: len_host_name
        terminator: 0
        doc: Usually UTF-8, but nothing makes it so; this holds for all texts here.
      - id: len_platform_name
        type: u2
      - id: platform_name
        size: len_platform_name
        terminator: 0
      - id: len_os_name
        type: u2
      - id: os_name
        size: len_os_name
        terminator: 0
      - id: len_last_text
        type: u2
      - id: last_text
        size: len_last_text
        terminator: 0
        doc: Always empty.
  hardware:
    seq:
      - id: constant_8
        type: u4
        doc: 1
      - id: tsc_frequency_hz
        type: u8
        doc: Ticks per second of all times in this file.
      - id: tsc_frequency_hz_again
        type: u8
      - id: highest_address
        type: u8
        doc: 0x80000000 on a 32-bit system, otherwise all ones.
      - id: address_width
        type: u1
        doc: 32 or 64.
      - id: family
        type: u1
      - id: model
        type: u1
      - id: stepping
        type: u1
      - id: num_threads
        type: u4
      - id: threads
        type: hardware_thread
        repeat: expr
        repeat-expr: num_threads
  hardware_thread:
    seq:
      - id: constant_0
        type: u1
        doc: 0
      - id: package
        type: u1
        doc: The low byte of the package's number, as the next for the core's.
      - id: core
        type: u1
      - id: thread
        type: u1
        doc: Counts the threads of a core from 0.
  head_marker:
    seq:
      - id: constant_4
        type: u4
        doc: 0x2000020
      - id: constant_8
        type: u1
        doc: 2
      - id: first_tsc
        type: u8
        doc: The start of the collection, in ticks; no sample is earlier, a wakelock's lock may be.
      - id: timer_resolution_div_100
        type: u8
        doc: The clock's resolution divided by 100.
  power_threshold:
    seq:
      - id: constant_8
        type: u4
        doc: 1
      - id: constant_12
        type: u2
        doc: 12
      - id: constant_14
        size: 48
        doc: Zeros.
      - id: cpu_frequency_mhz
        type: u4

  # Names and metrics
  metadata:
    seq:
      - id: sub_type
        type: u2
        enum: metadata_type
      - id: version
        type: u2
        doc: 2, or 1 of a writer in legacy mode.
      - id: content
        type:
          switch-on: sub_type
          cases:
            'metadata_type::info': info
            'metadata_type::metric': metric
  info:
    doc: |
      A node in a tree of names. Its kind is an info type, which is declared by a node of info type 0
      whose value is the number of the kind and whose long name is the kind's name.
    seq:
      - id: info_type
        type: u4
      - id: value
        type: u4
        doc: |
          Of an "info_type" its number, of a "metric_type" a metric_type, of groups the id of the metric
          that made them, of a "quantity" its code, of an "entity" or "field" the id, of a "color" the
          uid, of a "nameid_attribute" a value of its own or 0.
      - id: parent_uid
        type: u4
        doc: |
          0xffffffff for none. Of a "timeline_group" its tab, of an "entity" its parent, of a "quantity"
          its form per second.
      - id: uid
        type: u4
        doc: The low 32 bits of an id.
      - id: len_long_name
        type: u2
      - id: len_short_name
        type: u2
      - id: len_kind_name
        type: u2
      - id: len_description
        type: u2
      - id: long_name
        size: len_long_name
        doc: |
          Of a "quantity": name, units and factor of the form per second with "|" between them; of a
          "color": two colours with "|" between them, each "#rrggbb" or three decimals with commas.
      - id: short_name
        size: len_short_name
      - id: kind_name
        size: len_kind_name
      - id: description
        size: len_description
      - id: end_of_text
        contents: [0]
  metric:
    doc: Opens the stream of a metric; wakelock metrics have none.
    seq:
      - id: metric_type
        type: u4
        enum: metric_type
      - id: metric_id
        type: u4
      - id: quantity_uid
        type: u4
        doc: 0xffffffff for none.
      - id: tab_group_uid
        type: u4
      - id: timeline_group_uid
        type: u4
      - id: len_name
        type: u2
      - id: len_second_name
        type: u2
      - id: name
        size: len_name
      - id: second_name
        size: len_second_name
        doc: The same again.
      - id: end_of_text
        contents: [0]

  # Samples
  sample:
    doc: |
      The metric; then for each entity: the entity, what is told of it, and for each of its states
      field, duration, colour, what is told of it, and the value.
    seq:
      - id: sub_type
        type: u2
        doc: 6
      - id: version
        type: u2
        doc: 2, or 1 of a writer in legacy mode.
      - id: num_attributes
        type: u2
        doc: At most 2048.
      - id: attributes
        type:
          switch-on: version
          cases:
            1: legacy_attribute
            _: attribute
        repeat: expr
        repeat-expr: num_attributes
  attribute:
    seq:
      - id: id
        type: u4
        enum: attribute_id
      - id: value
        type:
          switch-on: id
          cases:
            'attribute_id::int': s8
            'attribute_id::int_lower_bound': s8
            'attribute_id::int_upper_bound': s8
            'attribute_id::real': f8
            'attribute_id::real_lower_bound': f8
            'attribute_id::real_upper_bound': f8
            _: u8
  legacy_attribute:
    doc: Reals are cut to unsigned integers.
    seq:
      - id: id
        type: u4
        enum: attribute_id
      - id: value
        type:
          switch-on: id
          cases:
            'attribute_id::int': s8
            'attribute_id::int_lower_bound': s8
            'attribute_id::int_upper_bound': s8
            _: u8

  # Processes and threads
  process:
    doc: The first of a process tells its start, the second its end.
    seq:
      - id: event
        type: u4
        doc: 0x1000, at the end as well.
      - id: constant_8
        type: u4
        doc: 0
      - id: pid
        type: u4
      - id: constant_16
        type: u4
        doc: 0
      - id: tsc
        type: u8
        doc: Ticks.
      - id: size
        type: u2
        doc: Bytes from this field to the end of the record.
      - id: type
        type: u2
        enum: record_type
        doc: 0, process
      - id: path
        size: size - 4
        terminator: 0
        doc: At most 29 bytes and a zero.
  thread:
    seq:
      - id: event
        type: u4
        enum: thread_event
      - id: constant_8
        type: u4
        doc: 0
      - id: pid
        type: u4
      - id: tid
        type: u4
      - id: tsc
        type: u8
        doc: Ticks.

  # Wakelocks
  kernel_wakelock:
    seq:
      - id: action
        type: u1
        enum: wakelock_action
      - id: timeout
        type: u8
        doc: Ticks; of a lock with a timeout and of its unlock, the time of the unlock, otherwise 0.
      - id: len_name
        type: u2
        doc: Counts the zero at the end.
      - id: name
        size: len_name
        terminator: 0
        doc: At most 79 bytes and a zero; so in the two records below.
  user_wakelock:
    seq:
      - id: action
        type: u1
        enum: wakelock_action
      - id: flag
        type: u1
        enum: wakelock_flag
      - id: uid
        type: u4
        doc: The user id of a package, or 0; it is no uid of a name.
      - id: constant_30
        type: u4
        doc: 0
      - id: len_name
        type: u2
        doc: Counts the zero at the end.
      - id: name
        size: len_name
        terminator: 0
  package:
    doc: Stands before the first wakelock of the package.
    seq:
      - id: uid
        type: u4
      - id: len_name
        type: u2
        doc: Counts the zero at the end.
      - id: name
        size: len_name
        terminator: 0
enums:
  frame:
    0x02400000: header
    0x02400010: timed
    0x02400018: wakelock
    0x0240001d: process
    0x0200001d: thread
    0x08000000: magic
    0x22000020: head_marker
  record_type:
    0: process
    18: hardware
    44: collection
    45: system
    63: power_threshold
    64: kernel_wakelock
    67: user_wakelock
    68: package
    71: sample
    72: metadata
  metadata_type:
    7: info
    8: metric
  metric_type:
    4: sampled_finite_set_counter
    5: sampled_value
    6: sampled_finite_set_value
    7: traced_finite_set_counter
    8: sampled_counter
    9: traced_event
    10: other
  attribute_id:
    0: metric
    1: entity
    2: field
    3: process
    4: thread
    5: call_stack_frame
    6: quantity
    7: color
    8: info
    9: int
    10: uint
    11: real
    12: int_lower_bound
    13: int_upper_bound
    14: uint_lower_bound
    15: uint_upper_bound
    16: real_lower_bound
    17: real_upper_bound
    18: duration
  os_kind:
    2: windows
    3: x86
    4: ia64
    5: x86_64
    6: other
  thread_event:
    0x1000: start
    0x2000: end
  wakelock_action:
    0: lock
    1: unlock
    2: lock_with_timeout
    3: initial_lock
    4: unlock_all
  wakelock_flag:
    0: partial
    1: full
    2: screen_dim
    3: screen_bright
    4: proximity_screen_off
