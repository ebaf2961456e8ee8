-- SPDX-License-Identifier: Apache-2.0
-- The kinds of packets, from QMI messages on, and their links.

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
