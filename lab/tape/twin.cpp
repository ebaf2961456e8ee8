// SPDX-License-Identifier: Apache-2.0
/* kvt-lab twin: a simulated phone that answers as the recorded one did. docs/phone.md tells the
 * phone's files. What a tape tells first counts: that is how the phone was when the first of its
 * commands ran. */
#include "verbs.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "tape/clients.h"
#include "tape/describe.h"

namespace lab {

using namespace tape;
namespace fs = std::filesystem;

namespace {

constexpr size_t vendor_data_at = 9; /* in the record of a request or response */
constexpr int dci_ok = 1001;
constexpr size_t full_chunk = 4096;
constexpr size_t longest_name = 250;
constexpr size_t most_padding = 1 << 20;

/* What a call took from or gave to the program, as one of the platform's records. */
template <typename Record> Record record_of(const std::string& bytes) {
    Record record{};
    std::memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof record));
    return record;
}

std::string hex(std::string_view bytes) {
    std::string text;
    append_hex(text, bytes);
    return text;
}

class Twin {
  public:
    void run(const Tape& tape, const Run& run) {
        clients_.clear();
        packet_.clear();
        for (const LineRef& ref : run.lines) {
            std::string error;
            if (!parser_.parse(tape.line(ref), event_, error))
                continue;
            if (event_.kind == Event::call)
                call();
            else if (event_.kind == Event::back)
                back();
        }
        end_packet();
    }

    void finish() {
        for (const auto& [name, file] : reading_)
            if (file.bytes.size() < file.whole && !known(name)) {
                untold("only " + std::to_string(file.bytes.size()) + " of " +
                       std::to_string(file.whole) + " bytes of " + name +
                       " were read; the twin's others are zero");
                std::string padded = file.bytes;
                padded.resize(std::min<size_t>(file.whole, most_padding));
                put(name, padded);
            }
        std::string up;
        for (const names::Service& service : names::services)
            if (down_.count(service.name) == 0 || up_.count(service.name) != 0)
                up += std::string(up.empty() ? "" : " ") + service.name;
        put("services", up + "\n");
        if (silent_ && !answered_)
            put("diag/silent", "1\n");
        else if (silent_)
            untold("some DIAG packets had no answer; the twin answers them");
        if (!known("nv/0/550"))
            untold("the IMEI: NV item 550 was not read; the twin has none");
        for (const auto& [subject, key] :
             {std::pair("card states", "sim/1"), std::pair("the EID", "euicc/eid"),
              std::pair("the SAR state", "sar/dsi")})
            if (!known(key))
                untold(std::string(subject) +
                       ": not asked for; the twin has the simulated phone's");
        if (failures_ > 0)
            untold(std::to_string(failures_) +
                   " calls failed on their way; no call fails on the twin");
    }

    /* False, with a message, when the directory can't be written. It appears whole. */
    bool write(const fs::path& directory, std::string& error) const {
        std::error_code failed;
        fs::path target = directory;
        if (!target.has_filename())
            target = target.parent_path();
        const fs::path aside = target.string() + ".new";
        fs::remove_all(aside, failed);
        for (const char* const folder : {"nv/0", "nv/1", "efs/0", "efs/1"})
            fs::create_directories(aside / folder, failed);
        for (const auto& [name, bytes] : files_) {
            fs::create_directories((aside / name).parent_path(), failed);
            std::ofstream file(aside / name, std::ios::binary);
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            file.close();
            if (!file) {
                error = (aside / name).string() + ": " + std::strerror(errno);
                fs::remove_all(aside, failed);
                return false;
            }
        }
        fs::rename(aside, target, failed); /* over an empty one, if it is there */
        if (failed) {
            error = target.string() + ": " + failed.message();
            fs::remove_all(aside, failed);
            return false;
        }
        return true;
    }

    void print() const {
        for (const auto& [name, bytes] : files_)
            std::printf("took %s, %zu bytes\n", name.c_str(), bytes.size());
        for (const std::string& text : untold_)
            std::printf("not told: %s\n", text.c_str());
    }

  private:
    struct Partial {
        size_t whole = 0;
        std::string bytes;
    };

    bool known(const std::string& name) const {
        return files_.count(name) != 0 || missing_.count(name) != 0;
    }
    void put(const std::string& name, std::string bytes) {
        if (!known(name))
            files_[name] = std::move(bytes);
    }
    void put_number(const std::string& name, int64_t value) {
        put(name, std::to_string(value) + "\n");
    }
    void absent(const std::string& name) {
        if (!known(name))
            missing_.insert(name);
    }
    void untold(const std::string& text) {
        for (const std::string& told : untold_)
            if (told == text)
                return;
        untold_.push_back(text);
    }

    /* ---- calls ---- */

    void call() {
        clients_.note(event_);
        const std::string_view name = event_.name;
        if (name == "qmi_client_send_msg_sync")
            exchange();
        else if (name == "qmi_client_get_service_list" || name == "qmi_client_init_instance" ||
                 name == "qmi_client_init")
            service();
        else if (name == "property_get")
            property();
        else if (name == "property_set")
            absent("prop/" + text_of("key")); /* what it was before is not told */
        else if (name == "diag_callback_send_data" || name == "diag_send_dci_async_req")
            begin_packet();
        else if (name == "diag_has_remote_device" && event_.result == 0)
            put_number("diag/remote_mask", output_number("mask"));
        else if (name == "diag_get_dci_support_list_proc" && event_.result == dci_ok)
            put_number("diag/peripherals", output_number("peripherals"));
        else if (name == "diag_register_dci_stream_proc")
            log_listener_ = event_.input_number("log");
        else if (name == "diag_register_callback")
            processors_ = {{event_.input_number("context"), 0}};
        else if (name == "diag_register_remote_callback")
            processors_[event_.input_number("context")] = event_.input_number("proc");
    }

    std::string text_of(std::string_view input) const {
        const Field* const field = event_.input(input);
        return field != nullptr && field->is_text ? std::string(field->text) : std::string();
    }

    int64_t output_number(std::string_view name) const {
        const Field* const field = event_.output_named(name);
        return field != nullptr && !field->is_text ? field->number : 0;
    }

    void service() {
        const names::Service* const service = service_of(event_.input("service"));
        if (service != nullptr)
            (event_.result == 0 ? up_ : down_).insert(service->name);
    }

    void property() {
        const std::string key = text_of("key");
        const Field* const value = event_.output_named("value");
        if (key.empty() || key.find('/') != std::string::npos || value == nullptr)
            return;
        const std::string text(value->text);
        if (text.empty() || text == text_of("default"))
            absent("prop/" + key);
        else
            put("prop/" + key, text + "\n");
    }

    void exchange() {
        const names::Service* const service = clients_.service(event_.input_number("client"));
        std::string request, response;
        event_.bytes(event_.in, "req", request);
        if (event_.result != 0) {
            ++failures_;
            return;
        }
        event_.bytes(event_.out, "resp", response);
        const int64_t id = event_.input_number("msg");
        if (service == nullptr)
            return;
        const std::string_view name = service->name;
        if (name == "vendor" && id == names::vendor_record_message)
            vendor(request, response);
        else if (name == "uim")
            uim(id, request, response);
        else if (name == "sar" && id == QMI_SAR_RF_GET_STATE)
            sar(record_of<sar_rf_get_state_resp_v01>(response));
        else if (name == "vs" && id == QMI_VS_GET_STATS)
            statistics(record_of<vs_get_stats_req_v01>(request),
                       record_of<vs_get_stats_resp_v01>(response));
        else if (name == "vs" && id == QMI_VS_SET_FEATURE)
            return; /* tells nothing */
    }

    /* ---- the vendor's records ---- */

    void vendor(const std::string& request, const std::string& response) {
        const std::string_view data = part(request, vendor_data_at, request.size());
        const std::string_view all = part(response, vendor_data_at, response.size());
        const std::string_view reply = all.substr(0, little_endian(response, 4, 4));
        if (little_endian(response, 0, 4) != 0) {
            ++failures_;
            return;
        }
        const uint64_t kind = little_endian(request, 0, 4);
        if (kind == names::vendor_kind_nvefs)
            nvefs(data, reply);
        else if (kind == names::vendor_kind_common)
            common(data, reply);
        else
            untold("requests of kind " + std::to_string(kind) + " of the vendor service");
    }

    void nvefs(std::string_view data, std::string_view reply) {
        using namespace names;
        const uint64_t operation = little_endian(data, nvefs_request::operation, 1);
        const auto result = static_cast<int32_t>(little_endian(reply, nvefs_response::result, 4));
        const std::string sub = std::to_string(little_endian(data, nvefs_request::subscription, 1));
        const std::string_view path =
            part(data, nvefs_request::path,
                 std::min<size_t>(little_endian(data, nvefs_request::path_length, 1),
                                  nvefs_request::path_most));
        if (operation >= efs_read &&
            (path.find("..") != std::string_view::npos ||
             path.find('\0') != std::string_view::npos || path.empty() || path.back() == '/'))
            return;
        const std::string name =
            operation >= efs_read
                ? "efs/" + sub + "/" + std::string(path.substr(path.find_first_not_of('/')))
                : "nv/" + sub + "/" + std::to_string(little_endian(data, nvefs_request::item, 2));
        const std::string_view content =
            part(reply, nvefs_response::data, little_endian(reply, nvefs_response::chunk, 4));
        switch (operation) {
        case nv_read:
            result == 0 ? put(name, std::string(content)) : absent(name);
            break;
        case nv_write:
            if (result == 0)
                put(name, std::string(part(data, nvefs_request::data,
                                           little_endian(data, nvefs_request::whole, 4))));
            break;
        case efs_read:
            if (result == 0)
                chunk(reading_[name], name, little_endian(data, nvefs_request::offset, 4),
                      little_endian(reply, nvefs_response::whole, 4), content);
            else if (result == -ENOENT)
                absent(name);
            else
                untold("reading " + name + " gave " + std::to_string(result) +
                       ", which no file of the twin does");
            break;
        case efs_write:
            if (result >= 0)
                chunk(
                    writing_[name], name, little_endian(data, nvefs_request::offset, 4),
                    little_endian(data, nvefs_request::whole, 4),
                    part(data, nvefs_request::data, little_endian(data, nvefs_request::chunk, 4)));
            break;
        default:
            if (result != 0)
                absent(name);
            else if (!known(name))
                untold(name + " was deleted; what it held is not known");
            break;
        }
    }

    /* A file that crosses in pieces. */
    void chunk(Partial& file, const std::string& name, uint64_t offset, uint64_t whole,
               std::string_view content) {
        if (offset == 0)
            file = {};
        file.whole = whole;
        if (offset == file.bytes.size())
            file.bytes += content;
        if (file.bytes.size() == whole)
            put(name, file.bytes);
    }

    void common(std::string_view data, std::string_view reply) {
        using namespace names;
        const uint64_t kind = little_endian(data, common_record::kind, 4);
        const std::string_view content = part(reply, common_record::data, reply.size());
        if (kind == record_statistics) {
            put("stats_debug/reply." + std::to_string(++statistics_queries_), std::string(content));
        } else if (kind == record_log_codes) {
            std::string codes;
            for (uint64_t i = 0; i < little_endian(content, 0, 2); ++i)
                codes += (codes.empty() ? "" : " ") + code(little_endian(content, 2 + 2 * i, 2));
            put("stats_debug/log_codes", codes + "\n");
        } else if (kind == record_typed) {
            typed(little_endian(data, common_record::type, 4), data, reply);
        }
    }

    static std::string code(uint64_t value) {
        char text[20];
        std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(value));
        return text;
    }

    void typed(uint64_t type, std::string_view data, std::string_view reply) {
        using namespace names;
        const std::string_view answer = part(reply, common_record::payload, reply.size());
        const auto number = [&](size_t index) { return little_endian(answer, 4 * index, 4); };
        if (type == type_card_type && answer.size() >= 4)
            put_number("sim/type", static_cast<int64_t>(number(0)));
        if (type == type_card_status && answer.size() >= 8)
            for (size_t slot = 0; slot < 2; ++slot)
                detected_[slot + 1] = number(slot) != 0;
        if (type == type_card_detect && answer.size() >= 4)
            detected_[little_endian(data, common_record::payload, 4) + 1] = number(0) != 0;
        for (const auto& [slot, there] : detected_)
            if (slot <= 2)
                put("sim/" + std::to_string(slot), there ? "present\n" : "absent\n");
        if (type == type_switch_slot)
            absent("sim/2.kind"); /* what it was before is not told */
    }

    /* ---- the standard services ---- */

    void uim(int64_t id, const std::string& request, const std::string& response) {
        if (id == QMI_UIM_GET_CARD_STATUS) {
            const auto answer = record_of<uim_get_card_status_resp_v01>(response);
            for (uint32_t i = 0;
                 answer.extended_valid != 0 && i < 2 && i < answer.extended.cards_len; ++i)
                if (const char* const state =
                        names::name_of(names::card_states, answer.extended.cards[i].card_state))
                    put("sim/" + std::to_string(i + 1), std::string(state) + "\n");
        } else if (id == QMI_UIM_GET_EID) {
            const auto answer = record_of<uim_get_eid_resp_v01>(response);
            if (answer.resp.result == 0 && answer.eid_valid != 0)
                eid(part(response, offsetof(uim_get_eid_resp_v01, eid),
                         std::min<uint32_t>(answer.eid_len, QMI_UIM_EID_SIZE)));
            else if (record_of<uim_get_eid_req_v01>(request).slot == 2)
                put("sim/2.kind", "psim\n");
        } else if (id == QMI_UIM_OPEN_LOGICAL_CHANNEL) {
            const auto answer = record_of<uim_logical_channel_resp_v01>(response);
            if (answer.resp.result == 0 && answer.channel_valid != 0 && answer.channel > 1) {
                std::string open; /* those that were open before */
                for (int channel = 1; channel < answer.channel; ++channel)
                    open += std::to_string(channel) + " 0\n";
                put("euicc/channels", open);
            } else {
                absent("euicc/channels");
            }
            if (answer.resp.result == 0)
                put("sim/2.kind", "euicc\n");
        } else if (id == QMI_UIM_SEND_APDU) {
            const auto answer = record_of<uim_send_apdu_resp_v01>(response);
            const std::string_view apdu =
                part(response, offsetof(uim_send_apdu_resp_v01, apdu),
                     std::min<uint32_t>(answer.apdu_len, QMI_UIM_APDU_MAX));
            constexpr std::string_view eid_answer("\xBF\x3E\x12\x5A\x10", 5);
            if (answer.apdu_valid != 0 && apdu.substr(0, eid_answer.size()) == eid_answer)
                eid(apdu.substr(eid_answer.size(), QMI_UIM_EID_SIZE));
        }
    }

    void eid(std::string_view bytes) {
        put("euicc/eid", hex(bytes) + "\n");
        put("sim/2.kind", "euicc\n");
    }

    void sar(const sar_rf_get_state_resp_v01& answer) {
        put("sar/dsi", answer.state_valid != 0 ? std::to_string(answer.state) + "\n" : "none\n");
    }

    void statistics(const vs_get_stats_req_v01& request, const vs_get_stats_resp_v01& answer) {
        std::set<uint32_t> wanted(
            request.ids, request.ids + std::min<uint32_t>(request.ids_len, QMI_VS_MAX_IDS));
        const uint32_t count = answer.entries_valid != 0
                                   ? std::min<uint32_t>(answer.entries_len, QMI_VS_MAX_ENTRIES)
                                   : 0;
        for (uint32_t i = 0; i < count; ++i) {
            const vs_stats_entry_v01& entry = answer.entries[i];
            wanted.erase(entry.id);
            put("stats/" + std::to_string(entry.sub) + "." + std::to_string(entry.id),
                std::string(reinterpret_cast<const char*>(entry.data),
                            std::min<uint32_t>(entry.data_len, QMI_VS_MAX_DATA)));
        }
        for (const uint32_t id : wanted)
            if (names::name_of(names::statistics_items, id) != nullptr)
                untold("statistics item " + std::to_string(id) +
                       " was not answered; the twin has the simulated phone's");
    }

    /* ---- DIAG ---- */

    void begin_packet() {
        end_packet();
        if (event_.result != 0 && event_.result != dci_ok) {
            ++failures_;
            return;
        }
        event_.bytes(event_.in, "data", packet_);
        sent_at_ = event_.at_us + event_.took_us;
        joined_ = event_.name == "diag_send_dci_async_req";
    }

    void back() {
        const bool answer = event_.name == "packet" || event_.name == "response";
        if (!answer && event_.name != "stream")
            return;
        std::string bytes;
        event_.bytes(event_.in, "data", bytes);
        if (!answer) {
            put(event_.input_number("callback") == log_listener_ ? "diag/log_stream"
                                                                 : "diag/event_stream",
                bytes);
            return;
        }
        if (packet_.empty())
            return;
        if (answers_.empty()) {
            put_number("diag/delay_ms", std::max<int64_t>(0, event_.at_us - sent_at_) / 1000);
            const auto processor = processors_.find(event_.input_number("context", 0));
            if (!joined_ && processor != processors_.end())
                put_number("diag/from", processor->second);
            else if (!joined_)
                put("diag/from", "none\n");
        }
        if (joined_ && !answers_.empty() && answers_.back().size() % full_chunk == 0)
            answers_.back() += bytes;
        else
            answers_.push_back(bytes);
    }

    void end_packet() {
        const std::string packet = std::move(packet_);
        const std::vector<std::string> answers = std::move(answers_);
        packet_.clear();
        answers_.clear();
        if (packet.empty())
            return;
        const std::string name = "diag/" + hex(packet);
        if (answers.empty()) {
            silent_ = true;
        } else if (name.size() > longest_name) {
            untold("the answer to a DIAG packet of " + std::to_string(packet.size()) +
                   " bytes: too long for a file's name");
        } else if (!known(name)) {
            for (size_t i = 0; i < answers.size(); ++i)
                put(i == 0 ? name : name + "." + std::to_string(i + 1), answers[i]);
        } else if (files_[name] != answers.front()) {
            untold("the DIAG packet " + hex(packet).substr(0, 60) +
                   " had other answers later; the twin gives the first");
        }
        answered_ |= !answers.empty();
    }

    LineParser parser_;
    Event event_;
    Clients clients_;
    std::map<std::string, std::string> files_;
    std::set<std::string> missing_; /* known not to be there at first, or not to be known */
    std::vector<std::string> untold_;
    std::map<std::string, Partial> reading_, writing_;
    std::map<uint64_t, bool> detected_;
    std::set<std::string> up_, down_;
    std::map<int64_t, int64_t> processors_; /* by context */
    std::string packet_;
    std::vector<std::string> answers_;
    int64_t sent_at_ = 0;
    int64_t log_listener_ = -1;
    bool joined_ = false;
    bool silent_ = false, answered_ = false;
    int statistics_queries_ = 0;
    size_t failures_ = 0;
};

int failed(const std::string& what) {
    std::fprintf(stderr, "kvt-lab: %s\n", what.c_str());
    return 5;
}

} // namespace

int twin(const Common&, const TwinOptions& options) {
    Tape tape;
    std::string error;
    if (!tape.open(options.tape, error))
        return failed(error);
    std::error_code ignored;
    if (fs::exists(options.directory, ignored) && !fs::is_empty(options.directory, ignored))
        return failed(options.directory + " is not empty");
    Twin made;
    for (const Run& run : tape.runs()) {
        made.run(tape, run);
        if (!run.problem.empty())
            std::fprintf(stderr, "kvt-lab: the run of %s is broken: %s\n",
                         command_text(run.args).c_str(), run.problem.c_str());
    }
    for (const std::string& stray : tape.strays())
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.tape.c_str(), stray.c_str());
    made.finish();
    if (!made.write(options.directory, error))
        return failed(error);
    made.print();
    return 0;
}

} // namespace lab
