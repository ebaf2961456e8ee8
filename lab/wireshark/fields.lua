-- SPDX-License-Identifier: Apache-2.0
-- The dissector is one file: the table `names`, made when kvt is built, then fields.lua, records.lua
-- and dissector.lua. Here: what can stand in Wireshark's tree, and be filtered by.

local is_first, kvt = pcall(Proto, "kvt", "kvt and the phone")
if not is_first then return end -- there is a copy of this in another of the folders

-- ---- fields ----

local kinds = { [0] = "note", "call", "QMI message", "DIAG packet", "DIAG stream" }
local NOTE, CALL, MESSAGE, DIAG, STREAM = 0, 1, 2, 3, 4
local directions = { [0] = "neither", "to the phone", "from the phone" }
local TO_PHONE, FROM_PHONE = 1, 2
local FAILED, DECODED, LATE = 1, 2, 4
local types = { [0] = "request", "response", "indication" }
local REQUEST, RESPONSE, INDICATION = 0, 1, 2
local layouts = { [0] = "TLVs", "record" }
local WIRE = 0

local all_fields, field_names = {}, {}

-- A filter's name and what stands in the tree; the same pair is one field.
local function field(make, name, label, ...)
  local key = name
  local known = field_names[key]
  if known and known.make ~= make then
    key = name .. "_" .. label:lower():gsub("%W", "_")
    known = field_names[key]
  end
  if not known then
    known = { make = make, field = make(key, label, ...) }
    field_names[key] = known
    all_fields[#all_fields + 1] = known.field
  end
  return known.field
end

local function plain(text) return (text:lower():gsub("%W+", "_")) end

local service_names = {}
for id, service in pairs(names.services) do service_names[id] = service.name end

local f = {
  kind = field(ProtoField.uint8, "kvt.kind", "Kind", base.DEC, kinds),
  direction = field(ProtoField.uint8, "kvt.direction", "Direction", base.DEC, directions),
  run = field(ProtoField.uint32, "kvt.run", "Run (of a log: process)"),
  thread = field(ProtoField.uint32, "kvt.thread", "Thread"),
  exchange = field(ProtoField.uint32, "kvt.exchange", "Exchange"),
  service = field(ProtoField.uint16, "kvt.service", "Service", base.HEX, service_names),
  message = field(ProtoField.uint32, "kvt.message", "Message", base.HEX),
  message_name = field(ProtoField.string, "kvt.message.name", "Message's name"),
  type = field(ProtoField.uint8, "kvt.type", "Type", base.DEC, types),
  layout = field(ProtoField.uint8, "kvt.layout", "Layout", base.DEC, layouts),
  decoded = field(ProtoField.bool, "kvt.decoded", "As the client framework decoded it"),
  late = field(ProtoField.bool, "kvt.late", "Came too late"),
  failed = field(ProtoField.bool, "kvt.failed", "Failed"),
  summary = field(ProtoField.string, "kvt.summary", "In words"),
  words = field(ProtoField.string, "kvt.words", "Words"),
  call = field(ProtoField.string, "kvt.call", "Call"),
  result = field(ProtoField.int32, "kvt.call.result", "Result"),
  transport = field(ProtoField.int32, "kvt.transport", "No answer", base.DEC, names.transport_results),
  tlv = field(ProtoField.uint8, "kvt.tlv", "TLV", base.HEX),
  bytes = field(ProtoField.bytes, "kvt.bytes", "Bytes"),
  command = field(ProtoField.uint8, "kvt.diag.command", "Command", base.HEX, names.diag_commands),
  packet = field(ProtoField.bytes, "kvt.diag.packet", "Packet"),
  stream = field(ProtoField.bytes, "kvt.diag.stream", "Stream"),
  instruction = field(ProtoField.uint8, "kvt.apdu.instruction", "Instruction", base.HEX, names.apdu_instructions),
  status_word = field(ProtoField.uint16, "kvt.apdu.status_word", "Status word", base.HEX, names.status_words),
  operation = field(ProtoField.uint8, "kvt.nvefs.operation", "Operation", base.DEC, names.nvefs_operations),
  subscription = field(ProtoField.uint8, "kvt.nvefs.subscription", "Subscription"),
  item = field(ProtoField.uint16, "kvt.nvefs.item", "Item"),
  instance = field(ProtoField.uint16, "kvt.nvefs.instance", "Instance"),
  path = field(ProtoField.string, "kvt.nvefs.path", "Path"),
  whole = field(ProtoField.uint32, "kvt.nvefs.whole", "Bytes in all"),
  chunk = field(ProtoField.uint32, "kvt.nvefs.chunk", "Bytes here"),
  offset = field(ProtoField.uint32, "kvt.nvefs.offset", "Offset"),
  nvefs_result = field(ProtoField.int32, "kvt.nvefs.result", "Result"),
  data = field(ProtoField.bytes, "kvt.nvefs.data", "Data"),
  common_kind = field(ProtoField.uint32, "kvt.common.kind", "Record", base.DEC, names.common_kinds),
  common_result = field(ProtoField.int32, "kvt.common.result", "Result"),
  typed = field(ProtoField.uint32, "kvt.common.command", "Command", base.DEC, names.typed_commands),
  payload = field(ProtoField.bytes, "kvt.common.payload", "Payload"),
  debug_version = field(ProtoField.uint8, "kvt.debug.version", "Version"),
  request_in = field(ProtoField.framenum, "kvt.request_in", "Request in", base.NONE, frametype.REQUEST),
  response_in = field(ProtoField.framenum, "kvt.response_in", "Answer in", base.NONE, frametype.RESPONSE),
}

local number_makers = { [1] = ProtoField.uint8, [2] = ProtoField.uint16, [4] = ProtoField.uint32, [8] = ProtoField.int64 }

-- Gives every field of the tables its field of the tree.
local function make_fields(prefix, tlv, rows)
  for _, row in ipairs(rows) do
    local name = prefix .. plain(tlv.name)
    if row.name ~= tlv.name then name = name .. "." .. plain(row.name) end
    if row.most ~= 0 then
      row.field = field(ProtoField.bytes, name, row.name)
    else
      local values = row.values
      if tlv.standard and row.name == "error" then values = names.qmi_errors end
      row.field = field(number_makers[math.max(row.wire, row.memory)], name, row.name, base.DEC, values)
    end
  end
end

for _, service in pairs(names.services) do
  for _, message in pairs(service.messages) do
    for _, tlvs in ipairs({ message.request, message.response, message.indication }) do
      for _, tlv in ipairs(tlvs) do
        local prefix = tlv.standard and "kvt." or "kvt." .. plain(service.name) .. "."
        make_fields(prefix, tlv, tlv.fields)
        if tlv.list then make_fields(prefix, tlv, tlv.list.fields) end
      end
    end
  end
end

local record_makers = {
  u8 = ProtoField.uint8, u16 = ProtoField.uint16, u32 = ProtoField.uint32, u64 = ProtoField.int64, f32 = ProtoField.float,
}
for prefix, records in pairs({ ["kvt.stats."] = names.statistics_items, ["kvt.debug."] = names.debug_blocks }) do
  for _, record in ipairs(records) do
    for _, row in ipairs(record.fields) do
      row.field = field(record_makers[row.kind], prefix .. plain(record.name) .. "." .. row.name, row.name)
    end
  end
end

kvt.fields = all_fields

local expert_failed = ProtoExpert.new("kvt.expert.failed", "It failed", expert.group.RESPONSE_CODE, expert.severity.WARN)
local expert_open = ProtoExpert.new("kvt.expert.unanswered", "No answer to it", expert.group.SEQUENCE, expert.severity.NOTE)
local expert_cut = ProtoExpert.new("kvt.expert.cut", "It is cut", expert.group.MALFORMED, expert.severity.ERROR)
kvt.experts = { expert_failed, expert_open, expert_cut }
