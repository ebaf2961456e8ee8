// SPDX-License-Identifier: Apache-2.0
#include "engine.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <thread>
#include <unordered_map>

#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "deliver.h"
#include "objects.h"
#include "order.h"
#include "threads.h"

namespace engine {

using namespace lab::tape;
using std::chrono::microseconds;

namespace {

/* How long a thread waits for others beyond what the recorded run took. */
constexpr microseconds patience{2'000'000};
/* A call that the recorded run never came out of: it would take the program's end. */
constexpr microseconds open_patience{10'000'000};

struct Engine {
    Script script;
    Order order;
    std::unordered_map<std::string, std::deque<uint32_t>> sequences;
    std::map<int, std::deque<uint32_t>> pauses; /* of each thread */
    std::map<int, std::deque<uint32_t>> locks;
    std::map<int64_t, long long> taken;      /* number of each thread's last lock */
    std::vector<uint32_t> printed;           /* events, in their order */
    std::vector<std::vector<uint32_t>> came; /* callbacks that came out of each call */
    size_t print_at = 0;                     /* in printed */
    uint64_t print_used = 0;                 /* bytes of it */
    uint64_t output_at = 0;
    bool printing = false;
    bool print_freely = false;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    struct Handle {
        const void* raw;
        int number;
        const void* os_params;
    };
    std::vector<Handle> handles;
    std::vector<const void*> pointers;
    std::map<std::string, std::vector<AnyFunction>> callbacks;
    std::map<std::string, const void*> services;
    unsigned char* area = nullptr;
    size_t area_size = 0;

    bool active = false;
    int report = 2;
    unsigned differences = 0;
};

/* Never destroyed: threads may still call while the process ends. */
Engine& g_engine = *new Engine;

microseconds at(const ScriptEvent& event) { return microseconds(event.at_us); }

/* For a thread that waits for the event's turn: what is still to come before it takes as long as it
 * took, where it is not ours to shorten. */
microseconds patience_for(const ScriptEvent& event) {
    const auto gone =
        std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - g_engine.start);
    return patience + std::max(microseconds(0), at(event) + microseconds(event.took_us) - gone);
}

void sleep_until(Order::Lock& lock, microseconds since_start) {
    if (g_engine.script.as_recorded == 0)
        return;
    lock.unlock();
    std::this_thread::sleep_until(g_engine.start + since_start);
    lock.lock();
}

/* ---- telling ---- */

void tell(const std::string& line) {
    std::string text = line;
    std::replace(text.begin(), text.end(), '\n', ' ');
    text += '\n';
    (void)!::write(g_engine.report, text.data(), text.size());
}

/* One line for the first difference; further ones are counted. */
void differs(const std::string& line) {
    if (g_engine.differences++ == 0)
        tell("differs: " + line);
}

void order_lost(uint32_t point, bool stuck) {
    for (const ScriptEvent& event : g_engine.script.events)
        if (event.begin == point || event.end == point)
            tell("order: nobody came to what line " + std::to_string(event.line) +
                 " of the tape tells" + (stuck ? ", and all threads waited for it" : ""));
}

/* A part of a value that is too long to show, around the place that matters. */
std::string shown(const std::string& value, size_t place) {
    constexpr size_t before = 16, most = 64;
    if (value.size() <= most)
        return value;
    const size_t from = place > before ? place - before : 0;
    return (from > 0 ? "..." : "") + value.substr(from, most) +
           (from + most < value.size() ? "..." : "");
}

std::vector<std::string> fields_of(const std::string& inputs) {
    std::vector<std::string> fields;
    for (size_t from = 0; from < inputs.size();) {
        const size_t to = inputs.find(input_separator, from);
        fields.push_back(inputs.substr(from, to - from));
        from = to == std::string::npos ? inputs.size() : to + 1;
    }
    return fields;
}

std::string call_text(const std::string& name, const std::string& inputs) {
    std::string text = name + "(";
    for (const std::string& field : fields_of(inputs))
        text += (text.back() == '(' ? "" : ", ") + shown(field, 0);
    return text + ")";
}

std::string difference(const ScriptEvent& event, const std::string& inputs) {
    const std::vector<std::string> then = fields_of(event.inputs), now = fields_of(inputs);
    const auto [a, b] = std::mismatch(then.begin(), then.end(), now.begin(), now.end());
    const std::string left = a != then.end() ? *a : "nothing more";
    const std::string right = b != now.end() ? *b : "nothing more";
    const auto place = static_cast<size_t>(
        std::mismatch(left.begin(), left.end(), right.begin(), right.end()).first - left.begin());
    std::string text = event.name;
    if (has_object(event.name) && !now.empty() && b != now.begin())
        text += " of " + now.front();
    return text + ": the tape (line " + std::to_string(event.line) + ") has " + shown(left, place) +
           ", the program gives " + shown(right, place);
}

/* What the tape has at the place where the program is. */
std::string next_on_tape() {
    for (const ScriptEvent& event : g_engine.script.events)
        if (event.kind == ScriptKind::call && event.begin >= g_engine.order.next())
            return "the tape (line " + std::to_string(event.line) + ") has " +
                   call_text(event.name, event.inputs) + " next";
    return "the tape has no call any more";
}

/* ---- callbacks ---- */

/* The callback has its turn; the lock is given away while the program's function runs. */
void run_callback(Order::Lock& lock, const ScriptEvent& event) {
    sleep_until(lock, at(event));
    Delivery delivery(event);
    const ScriptValue* const number = value_of(event, "callback");
    const auto known = g_engine.callbacks.find(event.name);
    const auto index = static_cast<size_t>(number != nullptr ? number->number : 0);
    delivery.function =
        known != g_engine.callbacks.end() && index >= 1 && index <= known->second.size()
            ? known->second[index - 1]
            : nullptr;
    if (const ScriptValue* const client = value_of(event, "client"))
        for (const Engine::Handle& handle : g_engine.handles)
            if (handle.number == client->number)
                delivery.client = handle.raw;
    if (const ScriptValue* const context = value_of(event, "context"))
        if (context->number >= 1 &&
            static_cast<size_t>(context->number) <= g_engine.pointers.size())
            delivery.context = g_engine.pointers[static_cast<size_t>(context->number) - 1];
    if (const ScriptValue* const service = value_of(event, "service")) {
        const auto it = g_engine.services.find(
            service->is_text != 0 ? service->text : std::to_string(service->number));
        delivery.service = it != g_engine.services.end() ? it->second : nullptr;
    }
    if (delivery.function == nullptr)
        differs("the tape (line " + std::to_string(event.line) + ") has a callback \"" +
                event.name + "\", for which the program has registered nothing");
    if (event.name == "response" && g_engine.area != nullptr)
        std::memcpy(g_engine.area, delivery.bytes.data(),
                    std::min(g_engine.area_size, delivery.bytes.size()));
    g_engine.order.pass(event.begin);
    lock.unlock();
    const threads::Place before = threads::enter(threads::Place::program);
    delivery.run();
    threads::enter(before);
    lock.lock();
    if (event.end != no_point && event.end != event.begin)
        g_engine.order.pass(event.end);
}

/* A thread of the platform's own, with the callbacks that came on it. */
void platform_thread(int number, const std::vector<uint32_t>& events) {
    threads::set_current(number);
    Order::Lock lock(g_engine.order.mutex());
    for (const uint32_t i : events) {
        const ScriptEvent& event = g_engine.script.events[i];
        g_engine.order.wait_long(lock, [&] { return g_engine.order.next() >= event.begin; });
        run_callback(lock, event);
    }
    g_engine.order.wait_long(lock, [] { return false; });
}

/* ---- start and end ---- */

bool load_script(const char* descriptor) {
    const int fd = std::atoi(descriptor);
    struct stat status = {};
    if (::fstat(fd, &status) != 0 || status.st_size <= 0)
        return false;
    const auto size = static_cast<size_t>(status.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (bytes == MAP_FAILED)
        return false;
    ScriptReader reader(std::string_view(static_cast<const char*>(bytes), size));
    pass_script(reader, g_engine.script);
    ::munmap(bytes, size);
    return reader.good();
}

bool load() {
    /* A shell that only starts the program is not it. */
    g_engine.active = ::dlopen("libqmi_cci.so", RTLD_NOLOAD | RTLD_LAZY) != nullptr;
    if (!g_engine.active)
        return false;
    const char* const descriptor = std::getenv("KVT_REPLAY");
    const char* const report = std::getenv("KVT_REPLAY_REPORT");
    if (report != nullptr)
        g_engine.report = std::atoi(report);
    if (descriptor == nullptr || !load_script(descriptor))
        tell("differs: there is no tape to answer from");
    Script& script = g_engine.script;
    g_engine.order.start(script.points, order_lost);
    g_engine.came.resize(script.events.size());
    for (const ScriptService& service : script.services)
        objects::set(service);
    static std::map<uint32_t, std::vector<uint32_t>> platform_threads;
    for (uint32_t i = 0; i < script.events.size(); ++i) {
        const ScriptEvent& event = script.events[i];
        switch (event.kind) {
        case ScriptKind::printed:
            g_engine.printed.push_back(i);
            break;
        case ScriptKind::back:
            if (event.inside < script.events.size())
                g_engine.came[event.inside].push_back(i);
            else
                platform_threads[event.thread].push_back(i);
            break;
        case ScriptKind::pause:
            g_engine.pauses[static_cast<int>(event.thread)].push_back(i);
            break;
        case ScriptKind::lock:
            g_engine.locks[static_cast<int>(event.thread)].push_back(i);
            break;
        default:
            if (event.name == "sleep")
                g_engine.pauses[static_cast<int>(event.thread)].push_back(i);
            else
                g_engine.sequences[sequence_of(event.name, event.inputs)].push_back(i);
            break;
        }
    }
    for (const auto& [number, events] : platform_threads)
        std::thread(platform_thread, static_cast<int>(number), std::cref(events)).detach();
    return true;
}

/* While the library is loaded, before the program runs. */
[[maybe_unused]] const bool g_loaded = load();

/* The program's end has its place in the order too: what other threads did before it is waited
 * for. */
__attribute__((destructor)) void unload() {
    if (!g_engine.active)
        return;
    Order::Lock lock(g_engine.order.mutex());
    /* Its own thread comes to no lock and no pause any more. */
    for (const auto* const queues : {&g_engine.locks, &g_engine.pauses})
        if (const auto own = queues->find(threads::current()); own != queues->end())
            for (const uint32_t i : own->second) {
                g_engine.order.pass(g_engine.script.events[i].begin);
                g_engine.order.pass(g_engine.script.events[i].end);
            }
    if (g_engine.script.points > 0 && g_engine.differences == 0)
        g_engine.order.wait_turn(lock, g_engine.script.points - 1, patience);
    size_t left = 0;
    const ScriptEvent* first = nullptr;
    for (const auto& [name, events] : g_engine.sequences)
        for (const uint32_t i : events) {
            const ScriptEvent& event = g_engine.script.events[i];
            if (event.kind != ScriptKind::call)
                continue;
            ++left;
            if (first == nullptr || event.line < first->line)
                first = &event;
        }
    if (first != nullptr)
        differs("the program ends without " + call_text(first->name, first->inputs) +
                ", which the tape (line " + std::to_string(first->line) + ") has" +
                (left > 1 ? ", and " + std::to_string(left - 1) + " calls more" : ""));
    if (g_engine.differences > 1)
        tell("more: " + std::to_string(g_engine.differences - 1));
}

} // namespace

/* ---- calls ---- */

const ScriptEvent* begin_call(const char* name, const std::string& inputs) {
    Order::Lock lock(g_engine.order.mutex());
    const auto it = g_engine.sequences.find(sequence_of(name, inputs));
    if (it == g_engine.sequences.end() || it->second.empty()) {
        differs("the program calls " + call_text(name, inputs) + "; " + next_on_tape());
        return nullptr;
    }
    const uint32_t index = it->second.front();
    const ScriptEvent& event = g_engine.script.events[index];
    if (event.inputs != inputs) {
        differs(difference(event, inputs));
        g_engine.order.give_up_order(); /* its turn never comes */
        return nullptr;
    }
    it->second.pop_front();
    g_engine.order.wait_turn(lock, event.begin, patience_for(event));
    if (event.kind == ScriptKind::open) {
        g_engine.order.pass(event.begin);
        g_engine.order.wait_for(lock, open_patience, [] { return false; });
        differs(call_text(name, inputs) + " did not come back when the tape (line " +
                std::to_string(event.line) + ") was recorded");
        return nullptr;
    }
    if (event.begin != event.end)
        g_engine.order.pass(event.begin);
    for (const uint32_t i : g_engine.came[index]) {
        const ScriptEvent& callback = g_engine.script.events[i];
        g_engine.order.wait_turn(lock, callback.begin, patience_for(callback));
        run_callback(lock, callback);
    }
    if (g_engine.script.as_recorded != 0) {
        lock.unlock();
        std::this_thread::sleep_for(microseconds(event.took_us));
        lock.lock();
    }
    g_engine.order.wait_turn(lock, event.end, patience_for(event));
    return &event;
}

void end_call(const ScriptEvent& event) {
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.order.pass(event.end);
}

/* ---- pauses ---- */

const ScriptEvent* begin_pause() {
    Order::Lock lock(g_engine.order.mutex());
    const auto it = g_engine.pauses.find(threads::current());
    if (g_engine.order.loose() || it == g_engine.pauses.end() || it->second.empty())
        return nullptr;
    const ScriptEvent& event = g_engine.script.events[it->second.front()];
    it->second.pop_front();
    g_engine.order.wait_turn(lock, event.begin, patience_for(event));
    if (event.begin != event.end)
        g_engine.order.pass(event.begin);
    return &event;
}

void end_pause(const ScriptEvent& event) {
    if (event.end == no_point)
        return;
    Order::Lock lock(g_engine.order.mutex());
    g_engine.order.wait_turn(lock, event.end, patience_for(event));
    g_engine.order.pass(event.end);
}

/* ---- locks ---- */

const ScriptEvent* begin_lock(long long number) {
    if (!g_engine.active)
        return nullptr;
    Order::Lock lock(g_engine.order.mutex());
    const auto it = g_engine.locks.find(threads::current());
    if (g_engine.order.loose() || it == g_engine.locks.end())
        return nullptr;
    std::deque<uint32_t>& events = it->second;
    const auto head = [&]() -> const ScriptEvent& {
        return g_engine.script.events[events.front()];
    };
    for (; !events.empty() && static_cast<long long>(head().length) < number; events.pop_front())
        g_engine.order.pass(head().begin); /* this time it was not needed */
    if (events.empty() || static_cast<long long>(head().length) != number)
        return nullptr;
    const ScriptEvent& event = g_engine.script.events[events.front()];
    events.pop_front();
    g_engine.order.wait_for(lock, patience_for(event), [&] {
        if (g_engine.order.next() < event.begin)
            return false;
        const auto before = g_engine.taken.find(event.behind_thread);
        return event.behind_thread < 0 ||
               (before != g_engine.taken.end() && before->second >= event.behind);
    });
    return &event;
}

void end_lock(const ScriptEvent* event, long long number) {
    if (!g_engine.active)
        return;
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.taken[threads::current()] = number;
    if (event != nullptr)
        g_engine.order.pass(event->begin);
    else
        g_engine.order.wake();
}

bool takes_its_time() { return g_engine.script.as_recorded != 0; }

const ScriptValue* value_of(const ScriptEvent& event, const char* name) {
    for (const ScriptValue& value : event.values)
        if (value.name == name)
            return &value;
    return nullptr;
}

/* ---- numbers ---- */

void add_handle(const void* handle, int number, const void* os_params) {
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.handles.push_back({handle, number, os_params});
}

int handle_number(const void* handle) {
    if (handle == nullptr)
        return 0;
    const Order::Lock lock(g_engine.order.mutex());
    const auto it = std::find_if(g_engine.handles.rbegin(), g_engine.handles.rend(),
                                 [&](const Engine::Handle& row) { return row.raw == handle; });
    return it != g_engine.handles.rend() ? it->number : -1;
}

int signal_number(const void* os_params) {
    if (os_params == nullptr)
        return 0;
    const Order::Lock lock(g_engine.order.mutex());
    const auto it =
        std::find_if(g_engine.handles.rbegin(), g_engine.handles.rend(),
                     [&](const Engine::Handle& row) { return row.os_params == os_params; });
    return it != g_engine.handles.rend() ? it->number : -1;
}

namespace {

template <typename Item> int number_in(std::vector<Item>& items, const Item& item) {
    const auto it = std::find(items.begin(), items.end(), item);
    if (it != items.end())
        return static_cast<int>(it - items.begin()) + 1;
    items.push_back(item);
    return static_cast<int>(items.size());
}

} // namespace

int pointer_number(const void* pointer) {
    if (pointer == nullptr)
        return 0;
    const Order::Lock lock(g_engine.order.mutex());
    return number_in(g_engine.pointers, pointer);
}

int callback_number(const char* kind, AnyFunction callback) {
    const Order::Lock lock(g_engine.order.mutex());
    return number_in(g_engine.callbacks[kind], callback);
}

void know_service(const std::string& name, const void* service) {
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.services[name] = service;
}

std::string service_name(const void* service) { return objects::name_of(service); }

void set_response_area(unsigned char* area, size_t size) {
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.area = area;
    g_engine.area_size = size;
}

/* ---- output ---- */

namespace {

/* Whether a text may be printed now. */
enum class Turn {
    now,
    later, /* other things come before it */
    never, /* the recorded run printed something else here */
};

Turn turn_of(const char* text, size_t length) {
    if (g_engine.printing)
        return Turn::later;
    if (g_engine.print_at == g_engine.printed.size())
        return threads::current() == 0 ? Turn::never : Turn::later;
    const ScriptEvent& event = g_engine.script.events[g_engine.printed[g_engine.print_at]];
    if (g_engine.order.next() < event.begin ||
        (threads::current() != threads::unknown &&
         threads::current() != static_cast<int>(event.thread)))
        return Turn::later;
    const std::string& output = g_engine.script.output;
    const bool same =
        length <= event.length - g_engine.print_used &&
        length <= output.size() - g_engine.output_at &&
        output.compare(static_cast<size_t>(g_engine.output_at), length, text, length) == 0;
    return same ? Turn::now : threads::current() == threads::unknown ? Turn::later : Turn::never;
}

/* The program prints something else than it did: from here on its output keeps no order. */
void print_freely() {
    g_engine.print_freely = true;
    for (size_t i = g_engine.print_at; i < g_engine.printed.size(); ++i)
        g_engine.order.pass(g_engine.script.events[g_engine.printed[i]].begin);
    g_engine.order.wake();
}

} // namespace

namespace {

/* Waits for the text's turn; one of no length has it with any text of its thread. */
void wait_to_print(Order::Lock& lock, const char* text, size_t length) {
    Turn turn = Turn::later;
    const microseconds limit =
        g_engine.print_at < g_engine.printed.size()
            ? patience_for(g_engine.script.events[g_engine.printed[g_engine.print_at]])
            : patience;
    g_engine.order.wait_for(lock, limit, [&] {
        turn = g_engine.print_freely ? Turn::now : turn_of(text, length);
        return turn != Turn::later;
    });
    if (turn != Turn::now)
        print_freely();
}

} // namespace

void before_printing(const char* text, size_t length) {
    if (length == 0 || !g_engine.active)
        return;
    Order::Lock lock(g_engine.order.mutex());
    wait_to_print(lock, text, length);
    g_engine.printing = true;
}

void before_output_lock() {
    if (!g_engine.active)
        return;
    Order::Lock lock(g_engine.order.mutex());
    if (threads::current() != threads::unknown)
        wait_to_print(lock, "", 0);
}

void after_printing(size_t length) {
    if (length == 0 || !g_engine.active)
        return;
    const Order::Lock lock(g_engine.order.mutex());
    g_engine.printing = false;
    if (g_engine.print_freely) {
        g_engine.order.wake();
        return;
    }
    g_engine.print_used += length;
    g_engine.output_at += length;
    const ScriptEvent& event = g_engine.script.events[g_engine.printed[g_engine.print_at]];
    if (g_engine.print_used == event.length) {
        ++g_engine.print_at;
        g_engine.print_used = 0;
        g_engine.order.pass(event.begin);
    }
    g_engine.order.wake();
}

} // namespace engine
