// SPDX-License-Identifier: Apache-2.0
/* kvt-lab show: what crossed, one line each, from a tape or from a simulated phone's log. */
#include "verbs.h"

#include <cstdio>
#include <ctime>

#include "tape/clients.h"
#include "tape/describe.h"
#include "tape/format.h"
#include "tape/log_page.h"

namespace lab {

using namespace tape;

namespace {

constexpr size_t written_at_once = 1 << 16;

/* Standard output in large pieces. */
class Page {
  public:
    ~Page() { flush(); }
    std::string& text() { return text_; }
    void line() {
        text_ += '\n';
        if (text_.size() >= written_at_once)
            flush();
    }
    bool flush() {
        const bool good = std::fwrite(text_.data(), 1, text_.size(), stdout) == text_.size();
        text_.clear();
        return good;
    }

  private:
    std::string text_;
};

/* ---- a tape ---- */

class TapePage {
  public:
    TapePage(const Tape& tape, Page& page) : tape_(tape), page_(page), out_(page.text()) {}

    void run(const Run& run, size_t number) {
        clients_.clear();
        for (const LineRef& ref : run.lines) {
            std::string error;
            if (!parser_.parse(tape_.line(ref), event_, error))
                continue; /* told with the run's problem */
            show(number, run);
        }
        if (!run.problem.empty()) {
            out_ += "BROKEN: " + run.problem;
            page_.line();
        }
        page_.line();
    }

  private:
    void show(size_t number, const Run& run) {
        switch (event_.kind) {
        case Event::head:
            head(number, run);
            break;
        case Event::call:
            call();
            break;
        case Event::open:
            begin('>');
            out_.append(event_.name).append(": FAILED: did not come back");
            page_.line();
            break;
        case Event::back:
            back();
            break;
        case Event::end:
            begin(' ');
            out_ += "end, ";
            append_number(out_, static_cast<int64_t>(event_.output.size()));
            out_ += " bytes printed";
            page_.line();
            break;
        case Event::printed:
        case Event::waited:
        case Event::clock:
        case Event::done:
            break;
        }
    }

    void head(size_t number, const Run& run) {
        out_ += "run " + std::to_string(number) + ": kvt " + command_text(run.args);
        page_.line();
        const auto when = static_cast<time_t>(event_.time);
        struct tm local = {};
        char text[40] = "";
        if (::localtime_r(&when, &local) != nullptr)
            std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
        out_.append("    ").append(text);
        for (const auto& [name, value] :
             {std::pair("machine", event_.machine), std::pair("model", event_.model),
              std::pair("build", event_.build)})
            if (!value.empty())
                out_.append(", ").append(name).append(1, ' ').append(value);
        page_.line();
    }

    void begin(char direction) {
        char text[64];
        const int length = std::snprintf(text, sizeof text, "%5lld.%06lld t%lld %c ",
                                         static_cast<long long>(event_.at_us / 1000000),
                                         static_cast<long long>(event_.at_us % 1000000),
                                         static_cast<long long>(event_.thread), direction);
        out_.append(text, static_cast<size_t>(length));
    }

    /* A line that is made first, so that a failure is told at its front. */
    void finish(char direction, const std::string& text, bool good) {
        begin(direction);
        if (!good)
            out_ += "FAILED: ";
        out_ += text;
        page_.line();
    }

    const names::Service* client_service(int64_t handle) const { return clients_.service(handle); }

    void call() {
        if (event_.name == "qmi_client_send_msg_sync")
            return exchange();
        if (event_.name == "qmi_client_message_decode")
            return decoded();
        if (event_.name == "diag_callback_send_data" || event_.name == "diag_send_dci_async_req") {
            line_ = "diag ";
            std::string packet;
            event_.bytes(event_.in, "data", packet);
            describe_diag(line_, packet);
            const bool dci = event_.name == "diag_send_dci_async_req";
            return finish('>', line_, event_.result == (dci ? 1001 : 0));
        }
        clients_.note(event_);
        plain();
    }

    void exchange() {
        const names::Service* const service = client_service(event_.input_number("client"));
        const int64_t id = event_.input_number("msg");
        Exchange exchange;
        std::string bytes;
        line_.clear();
        event_.bytes(event_.in, "req", bytes);
        describe_message(line_, service, id, MessageType::request, Layout::memory, bytes, exchange);
        finish('>', line_, true);
        line_.clear();
        event_.at_us += event_.took_us;
        if (event_.result != 0) {
            line_ += service != nullptr ? service->name : "service";
            line_ += ' ';
            describe_transport(line_, event_.result);
            return finish('<', line_, false);
        }
        bytes.clear();
        event_.bytes(event_.out, "resp", bytes);
        const bool good = describe_message(line_, service, id, MessageType::response,
                                           Layout::memory, bytes, exchange);
        finish('<', line_, good);
    }

    void decoded() {
        line_ = "decoded ";
        Exchange exchange;
        std::string bytes;
        event_.bytes(event_.out, "dst", bytes);
        const int64_t type = event_.input_number("type");
        describe_message(line_, client_service(event_.input_number("client")),
                         event_.input_number("msg"),
                         type == 0   ? MessageType::request
                         : type == 1 ? MessageType::response
                                     : MessageType::indication,
                         Layout::memory, bytes, exchange);
        finish(' ', line_, event_.result == 0);
    }

    void value(const Field& field) {
        if (line_.back() != '(' && line_.back() != ' ')
            line_ += ", ";
        line_.append(field.name).append(1, '=');
        if (const names::Service* const service =
                field.name == "service" ? service_of(&field) : nullptr)
            line_ += service->name;
        else if (field.is_text)
            line_.append(field.text.substr(0, 64)).append(field.text.size() > 64 ? "..." : "");
        else
            append_number(line_, field.number);
    }

    static std::string_view text_of(const Field* field) {
        return field != nullptr && field->is_text ? field->text : std::string_view();
    }

    /* Any other call: its members as they are. */
    void plain() {
        if (event_.name.substr(0, 4) == "_ZN8")
            return; /* the platform's lock, which nobody takes */
        if (event_.name == "__android_log_print") {
            line_.assign("log: ").append(text_of(event_.input("text")));
            return finish(' ', line_, true);
        }
        if (event_.name == "property_get") {
            line_.assign("property ").append(text_of(event_.input("key")));
            line_.append(" = ").append(text_of(event_.output_named("value")));
            return finish(' ', line_, true);
        }
        line_.assign(event_.name).append(1, '(');
        for (const Field& field : event_.in)
            value(field);
        line_ += ") ";
        if (event_.name.substr(0, 11) == "qmi_client_" && event_.result != 0)
            describe_transport(line_, event_.result);
        else
            append_number(line_, event_.result);
        for (const Field& field : event_.out)
            value(field);
        const bool dci = event_.name.find("_dci_") != std::string_view::npos;
        const bool init = event_.name.substr(0, 9) == "Diag_LSM_";
        finish(' ', line_, init ? event_.result != 0 : event_.result == (dci ? 1001 : 0));
    }

    void back() {
        line_.clear();
        std::string bytes;
        event_.bytes(event_.in, "data", bytes);
        bool good = true;
        if (event_.name == "indication") {
            Exchange exchange;
            line_ = "indication ";
            good = describe_message(line_, client_service(event_.input_number("client")),
                                    event_.input_number("msg"), MessageType::indication,
                                    Layout::wire, bytes, exchange);
        } else if (event_.name == "packet" || event_.name == "response") {
            line_ = "diag ";
            good = describe_diag(line_, bytes);
        } else if (event_.name == "stream") {
            line_ = "diag stream ";
            describe_bytes(line_, bytes);
        } else {
            const names::Service* const service = client_service(event_.input_number("client"));
            line_.append(event_.name).append(1, ' ');
            line_ += service != nullptr ? service->name : "service";
            if (event_.name == "error") {
                line_ += ' ';
                describe_transport(line_, event_.input_number("error"));
                good = false;
            } else {
                line_ += event_.input_number("event") == 0 ? " up" : " down";
            }
        }
        finish('<', line_, good);
    }

    const Tape& tape_;
    Page& page_;
    std::string& out_;
    LineParser parser_;
    Event event_;
    std::string line_;
    Clients clients_;
};

/* ---- a phone's log ---- */

int show_log(const std::string& text) {
    Page page;
    LogPage log;
    size_t number = 0;
    int status = 0;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        end = end == std::string::npos ? text.size() : end;
        ++number;
        if (log.show(std::string_view(text).substr(at, end - at), page.text())) {
            page.line();
        } else {
            std::fprintf(stderr, "kvt-lab: line %zu: not a line of a phone's log\n", number);
            status = 1;
        }
        at = end + 1;
    }
    return status;
}

} // namespace

int show(const Common&, const ShowOptions& options) {
    std::string text, error;
    if (!read_file(options.file, text, error)) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        return 5;
    }
    if (is_log(text))
        return show_log(text);
    Tape tape;
    if (!tape.read(std::move(text), error)) {
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.file.c_str(), error.c_str());
        return 5;
    }
    Page page;
    TapePage shown(tape, page);
    size_t number = 0;
    bool whole = tape.strays().empty();
    for (const Run& run : tape.runs()) {
        shown.run(run, ++number);
        whole = whole && run.problem.empty();
    }
    if (!page.flush())
        return 5;
    for (const std::string& stray : tape.strays())
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.file.c_str(), stray.c_str());
    return whole ? 0 : 1;
}

} // namespace lab
