// SPDX-License-Identifier: Apache-2.0
/* kvt-lab redact: what is private is found where the platform's records have it, and every spelling
 * of it in the tape is replaced by the same spelling of something made up. Lengths stay, so that
 * the tape replays as before. */
#include "tape/redact.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <unistd.h>

#include "tape/clients.h"
#include "tape/describe.h"
#include "verbs.h"

namespace lab {

namespace fs = std::filesystem;

namespace tape {

namespace {

constexpr size_t vendor_data_at = 9;
constexpr uint64_t imei_item = 550;
constexpr size_t imei_bytes = 8; /* digits in swapped halves, the first half a kind: A */

/* ---- made-up values ---- */

/* A key that stays on this machine: the same value becomes the same one in every tape that is
 * redacted here, and nobody without the key can try values until one fits. */
std::string redaction_key() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    const fs::path folder = state != nullptr && *state != '\0' ? fs::path(state) / "kvt"
                            : home != nullptr ? fs::path(home) / ".local" / "state" / "kvt"
                                              : fs::path();
    const fs::path name = folder / "redact.key";
    constexpr size_t size = 32;
    std::string key, error;
    if (!folder.empty() && read_file(name.string(), key, error) && key.size() == size)
        return key;
    std::random_device random;
    key.clear();
    while (key.size() < size)
        key += static_cast<char>(random());
    std::error_code ignored;
    if (folder.empty() || (fs::create_directories(folder, ignored), false))
        return key;
    const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd >= 0) {
        (void)!::write(fd, key.data(), key.size());
        ::close(fd);
    }
    return key;
}

class MadeUp {
  public:
    MadeUp() : key_(redaction_key()) {}

    /* Digits of the same number; the first `keep` stay. */
    std::string digits(const std::string& value, size_t keep) const {
        std::mt19937_64 random = generator(value);
        std::string made = value;
        for (size_t i = keep; i < made.size(); ++i)
            made[i] = static_cast<char>('0' + random() % 10);
        return made;
    }

    /* The same, and a check by weights in turn leaves the same as before. */
    std::string with_luhn(const std::string& value, size_t keep) const {
        std::string made = digits(value, keep);
        for (char check = '0'; check <= '9'; ++check) {
            made.back() = check;
            if (luhn(made) == luhn(value))
                break;
        }
        return made;
    }

    /* The same, and the number leaves the same when it is divided by 97. */
    std::string with_remainder(const std::string& value, size_t keep) const {
        std::string made = digits(value, keep);
        for (int check = 0; check < 100; ++check) {
            made[made.size() - 2] = static_cast<char>('0' + check / 10);
            made[made.size() - 1] = static_cast<char>('0' + check % 10);
            if (remainder(made) == remainder(value))
                break;
        }
        return made;
    }

    /* A number with as many digits, at most `most`. */
    uint64_t number(uint64_t value, uint64_t most) const {
        uint64_t low = 1;
        while (low * 10 <= value)
            low *= 10;
        const uint64_t from = value < 10 ? 0 : low;
        const uint64_t to = std::min(most, value < 10 ? 9 : low * 10 - 1);
        std::mt19937_64 random = generator("number " + std::to_string(value));
        return from + random() % (to - from + 1);
    }

  private:
    std::mt19937_64 generator(const std::string& value) const {
        const std::string seed = key_ + value;
        std::seed_seq sequence(seed.begin(), seed.end());
        return std::mt19937_64(sequence);
    }

    static int luhn(const std::string& text) {
        int sum = 0;
        bool twice = false;
        for (auto it = text.rbegin(); it != text.rend(); ++it, twice = !twice) {
            const int digit = *it - '0';
            sum += twice ? digit * 2 / 10 + digit * 2 % 10 : digit;
        }
        return sum % 10;
    }

    static int remainder(const std::string& text) {
        int r = 0;
        for (const char c : text)
            r = (r * 10 + (c - '0')) % 97;
        return r;
    }

    std::string key_;
};

/* ---- spellings ---- */

bool all_digits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/* Two digits a byte, the first in the low half; an odd one's byte is filled with F. */
std::string swapped(std::string digits) {
    std::string bytes;
    if (digits.size() % 2 != 0)
        digits += '?'; /* '?' & 15 is 15 */
    for (size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>((digits[i + 1] & 15) << 4 | (digits[i] & 15));
    return bytes;
}

std::string packed(const std::string& digits) {
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>((digits[i] & 15) << 4 | (digits[i + 1] & 15));
    return bytes;
}

/* IMEI as NV item 550 has it, without the length in front. */
std::string imei_coded(const std::string& digits) {
    std::string bytes(1, static_cast<char>((digits[0] & 15) << 4 | 0x0A));
    return bytes + swapped(digits.substr(1));
}

std::string spelled(const std::string& bytes, const char* before, const char* between, bool upper) {
    const char* const set = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        if (!text.empty())
            text += between;
        text += before;
        text += set[static_cast<unsigned char>(c) >> 4];
        text += set[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

class Redactor {
  public:
    /* Finds what is private in the tape. */
    void collect(const Tape& tape) {
        for (const Run& run : tape.runs()) {
            clients_.clear();
            at_command_ = !run.args.empty() && run.args[0] == "8";
            for (const LineRef& ref : run.lines) {
                std::string error;
                if (parser_.parse(tape.line(ref), event_, error))
                    look();
            }
        }
        for (const auto& [from, to] : bytes_)
            for (const bool upper : {false, true}) {
                add(spelled(from, "", "", upper), spelled(to, "", "", upper));
                add(spelled(from, "", " ", upper), spelled(to, "", " ", upper));
                add(spelled(from, "0x", " ", upper), spelled(to, "0x", " ", upper));
            }
    }

    /* The line with every spelling replaced. */
    std::string line(const Tape& tape, const LineRef& ref) {
        std::string text(tape.line(ref));
        std::string error;
        if (!parser_.parse(tape.line(ref), event_, error))
            return text;
        if (event_.kind == Event::head)
            redact_arguments(text);
        if (event_.kind == Event::call)
            clients_.note(event_);
        cells(text);
        replace(text);
        return text;
    }

    size_t found() const { return texts_.size() + cells_.size(); }

  private:
    /* ---- finding ---- */

    void look() {
        switch (event_.kind) {
        case Event::head:
            if (at_command_)
                for (const std::string& word : event_.args)
                    phone_numbers(word, 7);
            break;
        case Event::end:
            if (at_command_)
                phone_numbers(event_.output, 7);
            break;
        case Event::call:
            clients_.note(event_);
            if (event_.name == "qmi_client_send_msg_sync" && event_.result == 0)
                exchange();
            break;
        case Event::back:
            if (event_.name == "packet" || event_.name == "response")
                diag();
            break;
        default:
            break;
        }
    }

    void exchange() {
        const names::Service* const service = clients_.service(event_.input_number("client"));
        std::string request, response;
        event_.bytes(event_.in, "req", request);
        event_.bytes(event_.out, "resp", response);
        const int64_t id = event_.input_number("msg");
        if (service == nullptr)
            return;
        const std::string_view name = service->name;
        if (name == "vendor" && id == names::vendor_record_message &&
            little_endian(request, 0, 4) == names::vendor_kind_nvefs)
            nvefs(part(request, vendor_data_at, request.size()),
                  part(response, vendor_data_at, response.size()));
        else if (name == "uim" && id == QMI_UIM_GET_EID)
            eid(part(response, offsetof(uim_get_eid_resp_v01, eid),
                     std::min<uint64_t>(
                         little_endian(response, offsetof(uim_get_eid_resp_v01, eid_len), 4),
                         QMI_UIM_EID_SIZE)));
        else if (name == "uim" && id == QMI_UIM_SEND_APDU)
            apdu(part(response, offsetof(uim_send_apdu_resp_v01, apdu),
                      std::min<uint64_t>(
                          little_endian(response, offsetof(uim_send_apdu_resp_v01, apdu_len), 4),
                          QMI_UIM_APDU_MAX)));
        else if (name == "vs" && id == QMI_VS_GET_STATS)
            for (const size_t at : cell_places(response))
                cells_.insert(little_endian(response, at, 2));
    }

    void nvefs(std::string_view data, std::string_view reply) {
        using namespace names;
        const uint64_t operation = little_endian(data, nvefs_request::operation, 1);
        const bool item = operation == nv_read || operation == nv_write;
        const std::string_view read =
            part(reply, nvefs_response::data, little_endian(reply, nvefs_response::chunk, 4));
        const size_t length = operation == nv_write ? nvefs_request::whole : nvefs_request::chunk;
        const std::string_view written =
            operation == nv_write || operation == efs_write
                ? part(data, nvefs_request::data, little_endian(data, length, 4))
                : std::string_view();
        for (const std::string_view content : {read, written}) {
            if (item && little_endian(data, nvefs_request::item, 2) == imei_item)
                imei(content);
            phone_numbers(content, 10);
        }
    }

    void diag() {
        std::string packet;
        event_.bytes(event_.in, "data", packet);
        if (packet.size() > 3 && packet[0] == 0x26 && little_endian(packet, 1, 2) == imei_item)
            imei(part(packet, 3, 9));
    }

    void imei(std::string_view content) {
        if (content.size() < 1 + imei_bytes || content[0] != imei_bytes ||
            (content[1] & 15) != 0x0A)
            return;
        std::string digits;
        for (size_t i = 1; i <= imei_bytes; ++i) {
            const auto byte = static_cast<unsigned char>(content[i]);
            if (i > 1)
                digits += static_cast<char>('0' + (byte & 15));
            digits += static_cast<char>('0' + (byte >> 4));
        }
        if (!all_digits(digits))
            return;
        const std::string made = made_up_.with_luhn(digits, 8);
        add_text(digits, made);
        bytes_[imei_coded(digits)] = imei_coded(made);
        bytes_[swapped(digits)] = swapped(made);
    }

    void eid(std::string_view bytes) {
        const std::string digits = spelled(std::string(bytes), "", "", false);
        if (bytes.size() < QMI_UIM_EID_SIZE || !all_digits(digits))
            return;
        const std::string made = made_up_.with_remainder(digits, 8);
        add_text(digits, made);
        bytes_[packed(digits)] = packed(made);
    }

    void iccid(std::string_view bytes) {
        std::string digits;
        for (const char c : bytes) {
            const auto byte = static_cast<unsigned char>(c);
            for (const int half : {byte & 15, byte >> 4})
                if (half <= 9)
                    digits += static_cast<char>('0' + half);
        }
        if (digits.size() < 18 || digits.compare(0, 2, "89") != 0)
            return;
        const std::string made = made_up_.with_luhn(digits, 6);
        add_text(digits, made);
        bytes_[swapped(digits)] = swapped(made);
    }

    void apdu(std::string_view reply) {
        using namespace std::string_view_literals;
        constexpr size_t iccid_bytes = 10;
        for (size_t at = 0; at + 2 < reply.size(); ++at) {
            if (part(reply, at, 2) == "\x5A\x10"sv)
                eid(part(reply, at + 2, QMI_UIM_EID_SIZE));
            if (part(reply, at, 2) == "\x5A\x0A"sv)
                iccid(part(reply, at + 2, iccid_bytes));
        }
        if (reply.size() == iccid_bytes + 2 && reply[0] == '\x98') /* read from the card's file */
            iccid(reply.substr(0, iccid_bytes));
    }

    /* Runs of digits in a text. */
    void phone_numbers(std::string_view text, size_t least) {
        constexpr std::string_view digits = "0123456789";
        for (size_t at = text.find_first_of(digits); at != std::string_view::npos;) {
            size_t end = text.find_first_not_of(digits, at);
            end = end == std::string_view::npos ? text.size() : end;
            if (end - at >= least && end - at <= 20) {
                const std::string number(text.substr(at, end - at));
                const bool card = number.size() >= 18 && number.compare(0, 2, "89") == 0;
                if (texts_.count(number) == 0)
                    add_text(number,
                             card ? made_up_.with_luhn(number, 6) : made_up_.with_luhn(number, 2));
            }
            at = text.find_first_of(digits, end);
        }
    }

    void add_text(const std::string& digits, const std::string& made) {
        texts_[digits] = made;
        bytes_[digits] = made; /* as bytes of a file */
    }

    /* Where the records of 4G carriers in the answer have their cell. */
    static std::vector<size_t> cell_places(const std::string& response) {
        std::vector<size_t> places;
        constexpr size_t record_size = 75, cell_at = 6;
        const uint64_t count = std::min<uint64_t>(
            little_endian(response, offsetof(vs_get_stats_resp_v01, entries_len), 4),
            QMI_VS_MAX_ENTRIES);
        for (uint64_t i = 0; i < count; ++i) {
            const size_t entry =
                offsetof(vs_get_stats_resp_v01, entries) + i * sizeof(vs_stats_entry_v01);
            if (little_endian(response, entry + offsetof(vs_stats_entry_v01, data_len), 4) ==
                record_size)
                places.push_back(entry + offsetof(vs_stats_entry_v01, data) + cell_at);
        }
        return places;
    }

    /* ---- replacing ---- */

    void add(const std::string& from, const std::string& to) {
        if (from.size() >= 7)
            spellings_[from] = to;
    }

    /* Digits stand alone in a text, and not in the middle of a buffer's hex. */
    static bool stands_alone(const std::string& text, size_t at, size_t length) {
        constexpr std::string_view hex = "0123456789abcdef";
        return (at == 0 || hex.find(text[at - 1]) == std::string_view::npos) &&
               (at + length >= text.size() ||
                hex.find(text[at + length]) == std::string_view::npos);
    }

    /* Never touches what was replaced before. */
    void replace(std::string& text) const {
        struct Found {
            size_t at;
            const std::string* from;
            const std::string* to;
        };
        std::vector<Found> places;
        for (const auto& [from, to] : spellings_)
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
                places.push_back({at, &from, &to});
        for (const auto& [from, to] : texts_)
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1))
                if (stands_alone(text, at, from.size()))
                    places.push_back({at, &from, &to});
        std::sort(places.begin(), places.end(), [](const Found& a, const Found& b) {
            return a.at != b.at ? a.at < b.at : a.from->size() > b.from->size();
        });
        size_t behind = 0;
        for (const Found& found : places) {
            if (found.at < behind)
                continue;
            text.replace(found.at, found.to->size(), *found.to);
            behind = found.at + found.to->size();
        }
    }

    /* Numbers on the command line are bytes for the phone. */
    void redact_arguments(std::string& text) const {
        std::vector<std::string> args = event_.args;
        std::string bytes;
        for (const std::string& word : args)
            bytes += static_cast<char>(std::strtol(word.c_str(), nullptr, 0));
        bool changed = false;
        for (const auto& [from, to] : bytes_) {
            const size_t at = bytes.find(from);
            for (size_t i = 0; at != std::string::npos && i < from.size(); ++i) {
                const int byte = static_cast<unsigned char>(to[i]);
                args[at + i] = std::to_string(byte);
                changed = true;
            }
        }
        if (!changed)
            return;
        auto line = nlohmann::ordered_json::parse(text, nullptr, false);
        if (line.is_discarded())
            return;
        for (size_t i = 0; i < args.size(); ++i)
            if (line["args"][i].is_string())
                line["args"][i] = args[i];
        text = line.dump();
    }

    /* Two bytes at a known place, and what is printed of them. */
    void cells(std::string& text) const {
        if (event_.kind == Event::end) {
            constexpr std::string_view mark = "pci: ";
            for (size_t at = text.find(mark); at != std::string::npos;
                 at = text.find(mark, at + 1)) {
                const size_t from = at + mark.size();
                uint64_t cell = 0;
                const auto end =
                    std::from_chars(text.data() + from, text.data() + text.size(), cell).ptr;
                if (cells_.count(cell) != 0)
                    text.replace(from, static_cast<size_t>(end - text.data()) - from,
                                 std::to_string(made_up_.number(cell, most_cell(cell))));
            }
            return;
        }
        if (event_.kind != Event::call || event_.name != "qmi_client_send_msg_sync" ||
            event_.input_number("msg") != QMI_VS_GET_STATS)
            return;
        const names::Service* const service = clients_.service(event_.input_number("client"));
        std::string response;
        if (service == nullptr || std::string_view(service->name) != "vs" ||
            !event_.bytes(event_.out, "resp", response))
            return;
        constexpr std::string_view mark = "\"resp\":\"";
        const size_t hex_at = text.find(mark);
        for (const size_t at : cell_places(response)) {
            const uint64_t cell = little_endian(response, at, 2);
            const uint64_t made = made_up_.number(cell, most_cell(cell));
            const std::string bytes{static_cast<char>(made & 255), static_cast<char>(made >> 8)};
            const size_t place = hex_at + mark.size() + 2 * at;
            if (hex_at != std::string::npos && place + 4 < text.size() &&
                text.find('"', hex_at + mark.size()) > place + 3)
                text.replace(place, 4, spelled(bytes, "", "", false));
        }
    }

    static uint64_t most_cell(uint64_t cell) { return cell > 503 ? UINT16_MAX : 503; }

    MadeUp made_up_;
    LineParser parser_;
    Event event_;
    Clients clients_;
    bool at_command_ = false;
    std::map<std::string, std::string> bytes_; /* runs of bytes, and what stands for them */
    std::map<std::string, std::string> texts_; /* the same of digits */
    std::map<std::string, std::string> spellings_;
    std::set<uint64_t> cells_;
};

/* Redacted lines of the whole tape. A line that belongs to no run is left out: what it holds is not
 * known. */
bool redacted_text(const std::string& in, std::string& out, size_t& found, std::string& error) {
    Tape tape;
    if (!tape.open(in, error))
        return false;
    Redactor redactor;
    redactor.collect(tape);
    for (const Run& run : tape.runs())
        for (const LineRef& ref : run.lines)
            out += redactor.line(tape, ref) + "\n";
    for (const std::string& stray : tape.strays())
        std::fprintf(stderr, "kvt-lab: %s: %s: left out\n", in.c_str(), stray.c_str());
    found = redactor.found();
    return true;
}

} // namespace

bool append_redacted(const std::string& in, const std::string& out, std::string& error) {
    std::string text;
    size_t found = 0;
    if (!redacted_text(in, text, found, error))
        return false;
    const int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0 || ::flock(fd, LOCK_EX) != 0) {
        error = out + ": " + std::strerror(errno);
        if (fd >= 0)
            ::close(fd);
        return false;
    }
    size_t at = 0;
    while (at < text.size()) {
        const ssize_t n = ::write(fd, text.data() + at, text.size() - at);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        at += static_cast<size_t>(n);
    }
    if (at < text.size())
        error = out + ": " + std::strerror(errno);
    ::close(fd);
    return at == text.size();
}

} // namespace tape

int redact(const Common&, const RedactOptions& options) {
    std::string text, error;
    size_t found = 0;
    if (!tape::redacted_text(options.in, text, found, error)) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        return 5;
    }
    /* Aside first: the tape is never half written, and may be the same file. */
    const std::string aside = options.out + ".new";
    std::ofstream file(aside, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    if (!file || std::rename(aside.c_str(), options.out.c_str()) != 0) {
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.out.c_str(), std::strerror(errno));
        std::remove(aside.c_str());
        return 5;
    }
    std::printf("replaced %zu value%s\n", found, found == 1 ? "" : "s");
    return 0;
}

} // namespace lab
