-- SPDX-License-Identifier: Apache-2.0
-- What crossed between kvt and the phone, from captures of `kvt-lab pcap`. Every value goes two ways
-- at once: into the tree, and into the line that `kvt-lab show` prints too. The table `names` stands
-- before this.

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

-- ---- the exchanges of a capture ----

local requests, answers, asked = {}, {}, {}
function kvt.init() requests, answers, asked = {}, {}, {} end

-- ---- one packet ----

local MOST_SHOWN = 32

-- A number behind the head, little-endian; what lies behind the end counts as zero.
local function le(bytes, at, width)
  local low, high = 0, 0
  for i = math.min(width, 4), 1, -1 do low = low * 256 + (bytes:byte(at + i) or 0) end
  if width <= 4 then return low end
  for i = width, 5, -1 do high = high * 256 + (bytes:byte(at + i) or 0) end
  return Int64.new(low, high)
end

local function signed(value) return value >= 0x80000000 and value - 0x100000000 or value end
local function hex(bytes) return (bytes:gsub(".", function(c) return ("%02x"):format(c:byte()) end)) end
local function number(value) return type(value) == "number" and ("%d"):format(value) or tostring(value) end
local function part(bytes, at, length) return bytes:sub(at + 1, at + length) end

local function bytes_text(bytes)
  if #bytes <= MOST_SHOWN then return hex(bytes) end
  return ("%s... (%d bytes)"):format(hex(bytes:sub(1, MOST_SHOWN)), #bytes)
end

local function named(values, value)
  local name = values and values[value]
  return name and ("%s (%s)"):format(name, number(value)) or number(value)
end

local Packet = {}
Packet.__index = Packet

function Packet:say(text) self.text = self.text .. text end

function Packet:separate()
  local last = self.text:sub(-1)
  if last ~= "" and last ~= " " then self:say(", ") end
end

-- As much of a range of the bytes as was captured.
function Packet:range(at, length)
  local left = math.max(self.buffer:len() - names.head_size, 0)
  at = math.min(at, left)
  return self.buffer:range(names.head_size + at, math.min(length, left - at))
end

-- Bytes from `at` on, in the tree.
function Packet:add_bytes(tree, proto_field, at, length) return tree:add(proto_field, self:range(at, length)) end
function Packet:add(tree, proto_field, at, width, value) return tree:add(proto_field, self:range(at, width), value) end

-- As much of a part of `data`, which begins at `base_at`, as there is: in the tree, and returned as text.
function Packet:add_part(tree, proto_field, data, base_at, at, length)
  local bytes = part(data, at, length)
  self:add_bytes(tree, proto_field, base_at + at, #bytes)
  return bytes_text(bytes)
end

-- ---- the vendor service's records; `at` is where the data begins ----

function Packet:nvefs_request(tree, data, at)
  local rows = names.nvefs_request
  local function get(name, width) return le(data, rows[name], width) end
  local operation = get("operation", 1)
  self.asked.operation = operation
  self:add(tree, f.operation, at + rows.operation, 1, operation)
  self:add(tree, f.subscription, at + rows.subscription, 1, get("subscription", 1))
  self:say(names.nvefs_operations[operation] or "unknown operation")
  self:say(", subscription " .. number(get("subscription", 1)))
  if operation >= names.efs_read then
    local length = math.min(get("path_length", 1), rows.path_most)
    local path = part(data, rows.path, length)
    self:add(tree, f.path, at + rows.path, #path, path)
    self:say(", " .. path)
  else
    self:add(tree, f.item, at + rows.item, 2, get("item", 2))
    self:say(", item " .. number(get("item", 2)))
  end
  local whole, chunk, offset = get("whole", 4), get("chunk", 4), get("offset", 4)
  if operation == names.nv_write then
    self:add(tree, f.whole, at + rows.whole, 4, whole)
    self:say(": " .. self:add_part(tree, f.data, data, at, rows.data, whole))
  elseif operation == names.efs_read then
    self:add(tree, f.offset, at + rows.offset, 4, offset)
    self:say(", offset " .. number(offset))
  elseif operation == names.efs_write then
    self:add(tree, f.chunk, at + rows.chunk, 4, chunk)
    self:add(tree, f.whole, at + rows.whole, 4, whole)
    self:add(tree, f.offset, at + rows.offset, 4, offset)
    self:add(tree, f.instance, at + rows.item, 2, get("item", 2))
    self:say((", %d of %d bytes, offset %d, instance %d: "):format(chunk, whole, offset, get("item", 2)))
    self:say(self:add_part(tree, f.data, data, at, rows.data, chunk))
  end
end

function Packet:nvefs_response(tree, data, at)
  local rows = names.nvefs_response
  local result, chunk, whole = signed(le(data, rows.result, 4)), le(data, rows.chunk, 4), le(data, rows.whole, 4)
  self:add(tree, f.nvefs_result, at + rows.result, 4, result)
  self:say(names.nvefs_operations[self.asked.operation] or "NV or EFS")
  self:say(": result " .. number(result))
  if chunk > 0 then
    self:add(tree, f.chunk, at + rows.chunk, 4, chunk)
    self:add(tree, f.whole, at + rows.whole, 4, whole)
    self:say((", %d of %d bytes: "):format(chunk, whole) .. self:add_part(tree, f.data, data, at, rows.data, chunk))
  end
  if self.asked.operation == names.efs_write then return result >= 0 end
  return result == 0
end

-- Numbers by name, one behind the other, as far as there are bytes. Returns where they end.
function Packet:record_fields(tree, rows, data, base_at, at, version)
  local first = true
  for _, row in ipairs(rows) do
    if row.since <= version and at + row.width <= #data then
      local bytes = part(data, at, row.width)
      local value, text = le(bytes, 0, row.width)
      if row.kind == "f32" then
        value = Struct.unpack("<f", bytes)
        text = value ~= value and "nan" or ("%.2f"):format(value)
      else
        text = number(value)
      end
      if row.unit ~= "" then text = text .. " " .. row.unit end
      local item = self:add(tree, row.field, base_at + at, row.width, value)
      if row.unit ~= "" then item:append_text(" " .. row.unit) end
      self:say((first and "" or ", ") .. row.name .. "=" .. text)
      first = false
      at = at + row.width
    end
  end
  return at
end

function Packet:debug_information(tree, data, base_at)
  if data == "" then return end
  local version, at = data:byte(1), 1
  self:add(tree, f.debug_version, base_at, 1, version)
  self:say("version=" .. number(version))
  for _, block in ipairs(names.debug_blocks) do
    if at == #data then return end
    self:say(", " .. block.name .. ": ")
    local subtree = tree:add(kvt, self:range(base_at + at, #data - at), block.name)
    at = self:record_fields(subtree, block.fields, data, base_at, at, version)
  end
end

function Packet:common_record(tree, data, at)
  local rows = names.common_record
  local what, result = le(data, rows.kind, 4), 0
  self:add(tree, f.common_kind, at + rows.kind, 4, what)
  self:say(named(names.common_kinds, what))
  if self.type ~= REQUEST then
    result = signed(le(data, rows.result, 4))
    self:add(tree, f.common_result, at + rows.result, 4, result)
    self:say(", result " .. number(result))
  end
  self:say(": ")
  if what == names.record_typed then
    local command, size = le(data, rows.type, 4), le(data, rows.length, 4)
    self:add(tree, f.typed, at + rows.type, 4, command)
    self:say(named(names.typed_commands, command))
    if size > 0 then
      self:say(", " .. self:add_part(tree, f.payload, data, at, rows.payload, size))
    end
  elseif what == names.record_statistics and self.type ~= REQUEST then
    self:debug_information(tree, data:sub(rows.data + 1), at + rows.data)
  else
    local rest = data:sub(rows.data + 1):gsub("%z+$", "")
    self:say(self:add_part(tree, f.payload, data, at, rows.data, #rest))
  end
  return result >= 0
end

-- ---- what lies within the bytes of a field; each returns false for a failure ----

local within = {}

function within.vendor(packet, tree, data, at)
  if packet.asked.vendor_kind == names.nvefs then
    if packet.type ~= REQUEST then return packet:nvefs_response(tree, data, at) end
    packet:nvefs_request(tree, data, at)
    return true
  elseif packet.asked.vendor_kind == names.common then
    return packet:common_record(tree, data, at)
  end
  packet:say(bytes_text(data))
  return true
end

function within.statistics(packet, tree, data, at)
  for _, record in ipairs(names.statistics_items) do
    if record.id == packet.last_number and record.size == #data then
      packet:record_fields(tree, record.fields, data, at, 0, 255)
      return true
    end
  end
  packet:say(bytes_text(data))
  return true
end

function within.command_apdu(packet, tree, data, at)
  if #data >= 2 then
    packet:add(tree, f.instruction, at + 1, 1, data:byte(2))
    packet:say((names.apdu_instructions[data:byte(2)] or "unknown instruction") .. " ")
  end
  packet:say(bytes_text(data))
  return true
end

function within.reply_apdu(packet, tree, data, at)
  packet:say(bytes_text(data))
  if #data < 2 then return true end
  local first, second = data:byte(-2, -1)
  local word = first * 256 + second
  packet:add(tree, f.status_word, at + #data - 2, 2, word)
  packet:say((", status word %04x"):format(word))
  if names.status_words[word] then packet:say(" (" .. names.status_words[word] .. ")") end
  return word == 0x9000 or first == 0x61 or first == 0x91
end

within[""] = function(packet, _, data)
  packet:say(bytes_text(data))
  return true
end

-- ---- QMI messages ----

function Packet:name_field(tlv, row)
  if not self.first then self:separate() end
  self.first = false
  if not tlv.list or #tlv.list.fields > 1 or #tlv.fields > 0 then
    self:say((self.named and row.name or tlv.name) .. "=")
  end
end

function Packet:put_number(tree, tlv, row, at, width, value)
  self:add(tree, row.field, at, width, value)
  if tlv.standard then
    if row.name == "result" then
      self.refused = value ~= 0
      self.good = self.good and not self.refused
      self:say(self.refused and "refused" or "ok")
    elseif self.refused then
      self:say(": " .. named(names.qmi_errors, value))
    end
    return
  end
  if self.service_id == names.vendor_service and tlv.type == 1 then
    if self.type == REQUEST then self.asked.vendor_kind = value % 256
    elseif value ~= 0 then self.good = false end
  end
  self:name_field(tlv, row)
  self:say(named(row.values, value))
  self.last_number = value
end

function Packet:put_bytes(tree, tlv, row, at, data)
  self:name_field(tlv, row)
  local item = self:add_bytes(tree, row.field, at, #data)
  self.good = within[row.role](self, item, data, at) and self.good
end

function Packet:begin_tlv(tree, tlv, at, length)
  self:separate()
  self.first = true
  self.named = not tlv.standard and (tlv.list ~= nil or #tlv.fields > 1)
  if self.named then self:say(tlv.name .. ": ") end
  return self:add(tree, f.tlv, at, length, tlv.type):append_text(" (" .. tlv.name .. ")")
end

function Packet:begin_element(tree, tlv, index, at, length)
  self:separate()
  local name = ("%s %d"):format(tlv.list.name, index)
  self:say(name .. " ")
  self.first = true
  return tree:add(kvt, self:range(at, length), name)
end

-- As the record that the client sees.
function Packet:record_field(tree, tlv, row, base_at)
  local at = base_at + row.at
  if row.most == 0 then
    self:put_number(tree, tlv, row, at, row.memory, le(self.bytes, at, row.memory))
  else
    local length = math.min(le(self.bytes, base_at + row.count_at, 4), row.most)
    self:put_bytes(tree, tlv, row, at, part(self.bytes, at, length))
  end
end

function Packet:record(tree, tlvs)
  for _, tlv in ipairs(tlvs) do
    if not tlv.valid_at or le(self.bytes, tlv.valid_at, 1) ~= 0 then
      local first = tlv.fields[1] or tlv.list
      local subtree = self:begin_tlv(tree, tlv, first.at, math.max(first.memory or 1, 1))
      for _, row in ipairs(tlv.fields) do self:record_field(subtree, tlv, row, 0) end
      local list = tlv.list
      local count = list and math.min(le(self.bytes, list.count_at, 4), list.most) or 0
      for i = 1, count do
        local at = list.at + (i - 1) * list.stride
        local element = self:begin_element(subtree, tlv, i, at, list.stride)
        for _, row in ipairs(list.fields) do self:record_field(element, tlv, row, at) end
      end
    end
  end
end

-- As TLVs. Returns where the field ends.
function Packet:wire_field(tree, tlv, row, value, base_at, at)
  if row.most == 0 then
    self:put_number(tree, tlv, row, base_at + at, row.wire, le(value, at, row.wire))
    return at + row.wire
  end
  local length = row.wire == 0 and #value or le(value, at, row.wire)
  at = at + row.wire
  self:put_bytes(tree, tlv, row, base_at + at, part(value, at, length))
  return at + math.min(length, #value)
end

function Packet:wire_tlv(tree, tlv, value, base_at)
  local subtree = self:begin_tlv(tree, tlv, base_at - 3, #value + 3)
  local at, list = 0, tlv.list
  for _, row in ipairs(tlv.fields) do at = self:wire_field(subtree, tlv, row, value, base_at, at) end
  if not list then return end
  local count = math.min(le(value, at, list.wire), 256)
  at = at + list.wire
  for i = 1, count do
    if at >= #value then return end
    local element = self:begin_element(subtree, tlv, i, base_at + at, #value - at)
    for _, row in ipairs(list.fields) do at = self:wire_field(element, tlv, row, value, base_at, at) end
  end
end

function Packet:wire(tree, tlvs)
  local at = 0
  while #self.bytes - at >= 3 do
    local tlv_type, length = self.bytes:byte(at + 1), le(self.bytes, at + 1, 2)
    local value = part(self.bytes, at + 3, length)
    local row
    for _, candidate in ipairs(tlvs) do
      if candidate.type == tlv_type then row = candidate; break end
    end
    if row then
      self:wire_tlv(tree, row, value, at + 3)
    else
      self:separate()
      self:say(("TLV %d="):format(tlv_type) .. bytes_text(value))
      self:add_bytes(self:add(tree, f.tlv, at, #value + 3, tlv_type), f.bytes, at + 3, #value)
    end
    at = math.min(at + 3 + length, #self.bytes)
  end
  if at < #self.bytes then
    self:say(", cut")
    self.good = false
  end
end

function Packet:message(tree, head)
  local service = names.services[head.service]
  local service_name = service and service.name or "service"
  self.type, self.service_id = head.type, head.service
  self.asked = head.type == RESPONSE and asked[head.exchange] or {}
  if head.type == REQUEST and head.exchange ~= 0 then asked[head.exchange] = self.asked end
  if bit.band(head.flags, DECODED) ~= 0 then self:say("decoded ")
  elseif head.type == INDICATION then self:say("indication ") end
  if head.result ~= 0 then
    tree:add(f.transport, head.result):set_generated()
    self:say(service_name .. " " .. named(names.transport_results, head.result))
    return false
  end
  local message = service and service.messages[head.message]
  if not message then
    self:say(("%s message %s: "):format(service_name, number(head.message)) .. bytes_text(self.bytes))
    self:add_bytes(tree, f.bytes, 0, #self.bytes)
    return true
  end
  tree:add(f.message_name, message.name):set_generated()
  self:say(("%s %s: "):format(service_name, message.name))
  self.good = true
  self[head.layout == WIRE and "wire" or "record"](self, tree, message[types[head.type]] or {})
  self.text = self.text:gsub("[ :]+$", "")
  return self.good
end

-- ---- the other kinds; each returns false for a failure ----

function Packet:note(tree, head)
  local words = self.bytes:gsub("\n *", ", ")
  self:say(words)
  tree:add(f.words, self:range(0, #self.bytes), words)
  if head.kind == CALL then
    tree:add(f.call, self:range(0, #self.bytes), words:match("^[^(]*"))
    tree:add(f.result, head.result):set_generated()
  end
  return true
end

function Packet:diag(tree, head)
  self:say(bit.band(head.flags, LATE) ~= 0 and "diag, came too late: " or "diag ")
  if self.bytes == "" then
    self:say("nothing")
    return true
  end
  local command = self.bytes:byte(1)
  self:add(tree, f.command, 0, 1, command)
  self:add_bytes(tree, f.packet, 0, #self.bytes)
  self:say(named(names.diag_commands, command) .. ": " .. bytes_text(self.bytes))
  return head.direction == TO_PHONE or not names.diag_refusals[command]
end

function Packet:stream(tree)
  self:add_bytes(tree, f.stream, 0, #self.bytes)
  self:say("diag stream " .. bytes_text(self.bytes))
  return true
end

local readers = {
  [NOTE] = Packet.note, [CALL] = Packet.note, [MESSAGE] = Packet.message, [DIAG] = Packet.diag, [STREAM] = Packet.stream,
}

-- ---- links ----

local function link(tree, head, pinfo)
  if head.exchange == 0 then return end
  local mine, theirs, shown = requests, answers, f.response_in
  if head.direction == FROM_PHONE then mine, theirs, shown = answers, requests, f.request_in end
  if not pinfo.visited then mine[head.exchange] = mine[head.exchange] or pinfo.number end
  if theirs[head.exchange] then
    tree:add(shown, theirs[head.exchange]):set_generated()
  elseif pinfo.visited and head.direction == TO_PHONE then
    tree:add_proto_expert_info(expert_open)
  end
end

local head_shown = {
  [NOTE] = { "kind", "direction", "run", "thread" },
  [CALL] = { "kind", "direction", "run", "thread" },
  [MESSAGE] = { "kind", "direction", "run", "thread", "exchange", "service", "type", "layout", "message" },
  [DIAG] = { "kind", "direction", "run", "thread", "exchange" },
  [STREAM] = { "kind", "direction", "run", "thread" },
}
local flags_shown = { { FAILED, f.failed }, { DECODED, f.decoded }, { LATE, f.late } }

function kvt.dissector(buffer, pinfo, root)
  local tree = root:add(kvt, buffer())
  pinfo.cols.protocol:set("kvt")
  local raw = buffer:raw()
  local head = {}
  for name, row in pairs(names.head) do head[name] = le(raw, row.at, row.width) end
  head.result = signed(head.result)
  local reader = readers[head.kind]
  if #raw < names.head_size or head.version ~= names.packet_version or not reader then
    pinfo.cols.info:set("no packet of this version of kvt")
    tree:add_proto_expert_info(expert_cut)
    return
  end
  for _, name in ipairs(head_shown[head.kind]) do
    tree:add(f[name], buffer:range(names.head[name].at, names.head[name].width), head[name])
  end
  for _, flag in ipairs(flags_shown) do
    if bit.band(head.flags, flag[1]) ~= 0 then
      tree:add(flag[2], buffer:range(names.head.flags.at, 1), true)
    end
  end
  if head.direction ~= 0 then
    pinfo.cols.src:set(head.direction == TO_PHONE and "kvt" or "phone")
    pinfo.cols.dst:set(head.direction == TO_PHONE and "phone" or "kvt")
  end
  link(tree, head, pinfo)
  local packet = setmetatable({ buffer = buffer, bytes = raw:sub(names.head_size + 1), text = "", asked = {} }, Packet)
  local good = reader(packet, tree, head) and bit.band(head.flags, FAILED) == 0
  local summary = (good and "" or "FAILED: ") .. packet.text
  tree:add(f.summary, summary):set_generated()
  if not good then tree:add_proto_expert_info(expert_failed, packet.text) end
  if buffer:len() < buffer:reported_len() then tree:add_proto_expert_info(expert_cut) end
  pinfo.cols.info:set(summary)
end

DissectorTable.get("wtap_encap"):add(wtap["USER" .. names.link_type - 147], kvt)
