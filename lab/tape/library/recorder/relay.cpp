// SPDX-License-Identifier: Apache-2.0
#include "relay.h"

#include <cerrno>
#include <utility>

#include "journal.h"
#include "numbers.h"
#include "service_name.h"
#include "threads.h"
#include "turn.h"

namespace relay {

namespace {

constexpr size_t room = 64;

/* The line of a callback, from its first member to what came with it. */
class Back {
  public:
    Back(const char* kind, size_t slot) : error_(errno), active_(journal::recording()) {
        if (!active_) {
            journal::hold_after_end();
            return;
        }
        turn::take();
        text_.member("at", journal::now_us());
        text_.member("thread", journal::this_thread());
        text_.member_text("back", kind);
        text_.key("in");
        text_.add("{");
        text_.member("callback", static_cast<long long>(slot) + 1);
    }

    bool active() const { return active_; }
    Text& text() { return text_; }

    void bytes(const unsigned char* bytes, int length) {
        if (bytes != nullptr && length >= 0)
            text_.member_bytes("data", bytes, static_cast<size_t>(length));
        else
            text_.member("data_len", length);
    }

    void context(const void* pointer) {
        text_.member("context", numbers::of_pointer(pointer, false));
    }

    /* Written before the program's function runs: it may never return. */
    void begin() {
        if (active_) {
            text_.add("}");
            number_ = journal::event(text_);
            before_ = threads::enter(threads::Place::program);
        }
        errno = error_;
    }

    void end(int result) {
        const int error = errno;
        if (active_) {
            Text line;
            line.member("at", journal::now_us());
            line.member("thread", journal::this_thread());
            line.member("done", static_cast<long long>(number_));
            line.member("result", result);
            journal::event(line);
            threads::enter(before_);
            turn::give();
        }
        errno = error;
    }

  private:
    int error_;
    bool active_;
    Text text_;
    uint64_t number_ = 0;
    threads::Place before_ = threads::Place::platform;
};

/* ---- what each kind writes ---- */

struct Indication {
    using Function = qmi_client_ind_cb;
    static constexpr const char* name = "indication";
    static void put(Back& back, qmi_client_type client, unsigned msg_id, void* buf, unsigned len,
                    void* context) {
        back.text().member("client", numbers::of_handle(client));
        back.text().member("msg", msg_id);
        back.bytes(static_cast<const unsigned char*>(buf), static_cast<int>(len));
        back.context(context);
    }
};

struct Error {
    using Function = qmi_client_error_cb;
    static constexpr const char* name = "error";
    static void put(Back& back, qmi_client_type client, qmi_client_error_type error,
                    void* context) {
        back.text().member("client", numbers::of_handle(client));
        back.text().member("error", error);
        back.context(context);
    }
};

struct Notify {
    using Function = qmi_client_notify_cb;
    static constexpr const char* name = "notify";
    static void put(Back& back, qmi_client_type client, qmi_idl_service_object_type service,
                    qmi_client_notify_event_type event, void* context) {
        back.text().member("client", numbers::of_handle(client));
        put_service(back.text(), "service", service);
        back.text().member("event", event);
        back.context(context);
    }
};

struct Packet {
    using Function = diag_packet_cb;
    static constexpr const char* name = "packet";
    static void put(Back& back, unsigned char* bytes, int length, void* context) {
        back.bytes(bytes, length);
        back.context(context);
    }
};

struct Response {
    using Function = diag_dci_response_cb;
    static constexpr const char* name = "response";
    static void put(Back& back, unsigned char* bytes, int length, void* context) {
        back.bytes(bytes, length);
        back.context(context);
    }
};

struct Stream {
    using Function = diag_dci_stream_cb;
    static constexpr const char* name = "stream";
    static void put(Back& back, unsigned char* bytes, int length) { back.bytes(bytes, length); }
};

/* ---- a row of functions of ours for each kind ---- */

template <typename Kind, typename Function> struct Row;

template <typename Kind, typename Result, typename... Arguments>
struct Row<Kind, Result (*)(Arguments...)> {
    using Function = Result (*)(Arguments...);
    inline static Function theirs[room]; /* atomic; set once */

    template <size_t Slot> static Result ours(Arguments... arguments) {
        const Function callback = __atomic_load_n(&theirs[Slot], __ATOMIC_ACQUIRE);
        Back back(Kind::name, Slot);
        if (back.active())
            Kind::put(back, arguments...);
        back.begin();
        if constexpr (std::is_void_v<Result>) {
            callback(arguments...);
            back.end(0);
        } else {
            const Result result = callback(arguments...);
            back.end(result);
            return result;
        }
    }

    template <size_t... Slot> static Function pick(size_t slot, std::index_sequence<Slot...>) {
        static constexpr Function functions[] = {ours<Slot>...};
        return functions[slot];
    }

    static Function to(Function callback, int& number) {
        for (size_t slot = 0; slot < room; ++slot) {
            Function expected = nullptr;
            if (__atomic_compare_exchange_n(&theirs[slot], &expected, callback, false,
                                            __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE) ||
                expected == callback) {
                number = static_cast<int>(slot) + 1;
                return pick(slot, std::make_index_sequence<room>());
            }
        }
        number = -1;
        return callback;
    }
};

template <typename Kind>
typename Kind::Function in_row(typename Kind::Function callback, int& number) {
    return Row<Kind, typename Kind::Function>::to(callback, number);
}

} // namespace

qmi_client_ind_cb to(qmi_client_ind_cb callback, int& number) {
    return in_row<Indication>(callback, number);
}
qmi_client_error_cb to(qmi_client_error_cb callback, int& number) {
    return in_row<Error>(callback, number);
}
qmi_client_notify_cb to(qmi_client_notify_cb callback, int& number) {
    return in_row<Notify>(callback, number);
}
diag_packet_cb to(diag_packet_cb callback, int& number) { return in_row<Packet>(callback, number); }
diag_dci_response_cb to(diag_dci_response_cb callback, int& number) {
    return in_row<Response>(callback, number);
}
diag_dci_stream_cb to(diag_dci_stream_cb callback, int& number) {
    return in_row<Stream>(callback, number);
}

} // namespace relay
