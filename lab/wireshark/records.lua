-- SPDX-License-Identifier: Apache-2.0
-- A packet: its bytes, what is said of them, and what lies within a field's bytes. Every value goes
-- two ways at once: into the tree, and into the line that `kvt-lab show` prints too.

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
