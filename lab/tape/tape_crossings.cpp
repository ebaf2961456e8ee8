// SPDX-License-Identifier: Apache-2.0
#include "tape/tape_crossings.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "diag.h"

namespace lab::tape {

namespace {

std::string_view text_of(const Field* field) {
    return field != nullptr && field->is_text ? field->text : std::string_view();
}

MessageType message_type(int64_t number) {
    return number == 0   ? MessageType::request
           : number == 1 ? MessageType::response
                         : MessageType::indication;
}

/* Of two that are not negative; a tape may tell any. */
int64_t sum(int64_t a, int64_t b) { return a > INT64_MAX - b ? INT64_MAX : a + b; }

bool starts_with(std::string_view text, std::string_view with) {
    return text.substr(0, with.size()) == with;
}

} // namespace

void TapeCrossings::read(const Run& run, uint32_t number) {
    clients_.clear();
    diag_ = {};
    crossing_ = {};
    crossing_.run = number;
    for (const LineRef& ref : run.lines) {
        std::string error;
        if (parser_.parse(tape_.line(ref), event_, error)) /* if not, it is the run's problem */
            event(run);
    }
    if (run.problem.empty())
        return;
    begin(CrossingKind::note, Direction::neither);
    crossing_.flags = crossing_bare;
    crossing_.bytes = "BROKEN: " + run.problem;
    emit(false);
}

void TapeCrossings::begin(CrossingKind kind, Direction direction) {
    crossing_.kind = kind;
    crossing_.direction = direction;
    crossing_.flags = 0;
    crossing_.at_us = event_.at_us;
    crossing_.thread = event_.thread;
    crossing_.exchange = 0;
    crossing_.service = nullptr;
    crossing_.message = 0;
    crossing_.type = MessageType::request;
    crossing_.layout = Layout::record;
    crossing_.result = 0;
    crossing_.bytes.clear();
}

void TapeCrossings::emit(bool good) {
    if (!good)
        crossing_.flags |= crossing_failed;
    crossing_.time_us = sum(began_us_, crossing_.at_us);
    crossed(crossing_);
}

void TapeCrossings::event(const Run& run) {
    switch (event_.kind) {
    case Event::head:
        head(run);
        break;
    case Event::call:
        call();
        break;
    case Event::open:
        begin(CrossingKind::note, Direction::to_phone);
        crossing_.bytes.assign(event_.name).append(": did not come back");
        emit(false);
        break;
    case Event::back:
        back();
        break;
    case Event::end:
        begin(CrossingKind::note, Direction::neither);
        crossing_.bytes = "end, ";
        append_number(crossing_.bytes, static_cast<int64_t>(event_.output.size()));
        crossing_.bytes += " bytes printed";
        emit(true);
        break;
    default: /* how the program's threads took turns */
        break;
    }
}

void TapeCrossings::head(const Run& run) {
    begin(CrossingKind::note, Direction::neither);
    crossing_.flags = crossing_bare;
    std::string& out = crossing_.bytes;
    out = "run " + std::to_string(crossing_.run) + ": kvt " + command_text(run.args);
    const auto when = static_cast<time_t>(event_.time);
    began_us_ = event_.time < INT64_MAX / 1000000 ? event_.time * 1000000 : 0;
    struct tm local = {};
    char text[40] = "";
    if (::localtime_r(&when, &local) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    out.append("\n    ").append(text);
    for (const auto& [name, value] :
         {std::pair("machine", event_.machine), std::pair("model", event_.model),
          std::pair("build", event_.build)})
        if (!value.empty())
            out.append(", ").append(name).append(1, ' ').append(value);
    emit(true);
}

void TapeCrossings::call() {
    if (event_.name == "qmi_client_send_msg_sync")
        return send_message();
    if (event_.name == "qmi_client_message_decode")
        return decoded();
    if (event_.name == "diag_callback_send_data" || event_.name == "diag_send_dci_async_req")
        return send_diag();
    clients_.note(event_);
    plain();
}

void TapeCrossings::send_message() {
    begin(CrossingKind::message, Direction::to_phone);
    crossing_.service = clients_.service(event_.input_number("client"));
    crossing_.message = event_.input_number("msg");
    crossing_.exchange = ++exchanges_;
    event_.bytes(event_.in, "req", crossing_.bytes);
    emit(true);
    crossing_.direction = Direction::from_phone;
    crossing_.type = MessageType::response;
    crossing_.at_us = sum(crossing_.at_us, event_.took_us);
    crossing_.result = event_.result;
    crossing_.bytes.clear();
    if (event_.result == 0)
        event_.bytes(event_.out, "resp", crossing_.bytes);
    emit(true);
}

void TapeCrossings::decoded() {
    begin(CrossingKind::message, Direction::neither);
    crossing_.flags = crossing_decoded;
    crossing_.service = clients_.service(event_.input_number("client"));
    crossing_.message = event_.input_number("msg");
    crossing_.type = message_type(event_.input_number("type"));
    event_.bytes(event_.out, "dst", crossing_.bytes);
    emit(event_.result == 0);
}

void TapeCrossings::send_diag() {
    begin(CrossingKind::diag, Direction::to_phone);
    event_.bytes(event_.in, "data", crossing_.bytes);
    crossing_.exchange = ++exchanges_;
    diag_.sent(crossing_.bytes, crossing_.exchange);
    const bool dci = event_.name == "diag_send_dci_async_req";
    emit(event_.result == (dci ? DIAG_DCI_NO_ERROR : 0));
}

void TapeCrossings::put(const Field& field) {
    std::string& out = crossing_.bytes;
    if (out.back() != '(' && out.back() != ' ')
        out += ", ";
    out.append(field.name).append(1, '=');
    if (const names::Service* const service =
            field.name == "service" ? service_of(&field) : nullptr)
        out += service->name;
    else if (field.is_text)
        out.append(field.text.substr(0, 64)).append(field.text.size() > 64 ? "..." : "");
    else
        append_number(out, field.number);
}

/* Any other call: its members as they are. */
void TapeCrossings::plain() {
    if (starts_with(event_.name, "_ZN8"))
        return; /* the platform's lock, which nobody takes */
    begin(CrossingKind::note, Direction::neither);
    std::string& out = crossing_.bytes;
    if (event_.name == "__android_log_print") {
        out.assign("log: ").append(text_of(event_.input("text")));
        return emit(true);
    }
    if (event_.name == "property_get") {
        out.assign("property ").append(text_of(event_.input("key")));
        out.append(" = ").append(text_of(event_.output_named("value")));
        return emit(true);
    }
    crossing_.kind = CrossingKind::call;
    crossing_.result = event_.result;
    out.assign(event_.name).append(1, '(');
    for (const Field& field : event_.in)
        put(field);
    out += ") ";
    if (starts_with(event_.name, "qmi_client_") && event_.result != 0)
        describe_transport(out, event_.result);
    else
        append_number(out, event_.result);
    for (const Field& field : event_.out)
        put(field);
    const bool dci = event_.name.find("_dci_") != std::string_view::npos;
    const bool init = starts_with(event_.name, "Diag_LSM_");
    emit(init ? event_.result != 0 : event_.result == (dci ? DIAG_DCI_NO_ERROR : 0));
}

void TapeCrossings::back() {
    begin(CrossingKind::message, Direction::from_phone);
    event_.bytes(event_.in, "data", crossing_.bytes);
    const names::Service* const service = clients_.service(event_.input_number("client"));
    if (event_.name == "indication") {
        crossing_.service = service;
        crossing_.message = event_.input_number("msg");
        crossing_.type = MessageType::indication;
        crossing_.layout = Layout::wire;
        return emit(true);
    }
    if (event_.name == "packet" || event_.name == "response") {
        crossing_.kind = CrossingKind::diag;
        crossing_.exchange = diag_.answered(crossing_.bytes, event_.name == "response");
        return emit(true);
    }
    if (event_.name == "stream") {
        crossing_.kind = CrossingKind::stream;
        return emit(true);
    }
    crossing_.kind = CrossingKind::note;
    std::string& out = crossing_.bytes;
    out.assign(event_.name).append(1, ' ').append(service != nullptr ? service->name : "service");
    const bool error = event_.name == "error";
    if (error) {
        out += ' ';
        describe_transport(out, event_.input_number("error"));
    } else {
        out += event_.input_number("event") == 0 ? " up" : " down";
    }
    emit(!error);
}

bool told_whole(const Tape& tape, const std::string& file) {
    for (const std::string& stray : tape.strays())
        std::fprintf(stderr, "kvt-lab: %s: %s\n", file.c_str(), stray.c_str());
    return tape.strays().empty() && std::all_of(tape.runs().begin(), tape.runs().end(),
                                                [](const Run& run) { return run.problem.empty(); });
}

} // namespace lab::tape
