// SPDX-License-Identifier: Apache-2.0
#include "journal.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include "program.h"
#include "symbols.h"
#include "threads.h"
#include "turn.h"

namespace journal {

namespace {

/* The descriptor is kept clear of the low numbers, which the program would otherwise get. */
constexpr int lowest_descriptor = 100;

/* Bytes that may wait for the next write. */
constexpr size_t most_waiting = 1 << 16;

enum State { idle, running, broken, ended };

struct Journal {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    int state = idle; /* atomic */
    int fd = -1;
    bool limited = false; /* the size of files */
    char path[512] = "";
    char run[40] = "";
    timespec start = {};
    uint64_t next = 0;
    Text waiting; /* lines that have a number and are not written yet */
    Text output;  /* all that was printed */
    Text properties;
    size_t printed_bytes = 0; /* by printed_thread, since the last event */
    int printed_thread = 0;
    int threads = 0; /* of the platform */
    int ending_thread = -1;
    InFlight* in_flight = nullptr;
};

/* Made by load, before the program runs, and never destroyed: threads may still call while the
 * process ends. Until then all of it is zero: nobody records. */
alignas(Journal) unsigned char g_storage[sizeof(Journal)];
Journal& g_journal = reinterpret_cast<Journal&>(g_storage);

class Guard {
  public:
    Guard() { pthread_mutex_lock(&g_journal.mutex); }
    ~Guard() { pthread_mutex_unlock(&g_journal.mutex); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};

int state() { return __atomic_load_n(&g_journal.state, __ATOMIC_ACQUIRE); }
void set_state(int value) { __atomic_store_n(&g_journal.state, value, __ATOMIC_RELEASE); }

void say(const char* what) {
    char text[700];
    const int length = std::snprintf(
        text, sizeof text, "libkvt_record: %s: %s: nothing is recorded\n", g_journal.path, what);
    if (length > 0)
        (void)!::write(2, text,
                       static_cast<size_t>(length) < sizeof text ? static_cast<size_t>(length)
                                                                 : sizeof text - 1);
}

void give_up(const char* what) {
    say(what);
    set_state(broken);
}

/* Where files may not grow for ever, what goes too far is an error to the recorder, and no signal
 * to the program. */
class WithoutSignal {
  public:
    WithoutSignal() : needed_(g_journal.limited) {
        if (!needed_)
            return;
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &blocked, &before_);
    }
    ~WithoutSignal() {
        if (!needed_)
            return;
        sigset_t pending, drained;
        sigemptyset(&drained);
        sigaddset(&drained, SIGXFSZ);
        const timespec now = {};
        if (sigpending(&pending) == 0 && sigismember(&pending, SIGXFSZ) == 1)
            sigtimedwait(&drained, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutSignal(const WithoutSignal&) = delete;
    WithoutSignal& operator=(const WithoutSignal&) = delete;

  private:
    bool needed_;
    sigset_t before_;
};

/* All of it or nothing more of this run: a line that is cut is the last one. */
void write_waiting() {
    const WithoutSignal without;
    Text& lines = g_journal.waiting;
    if (!lines.whole() || !g_journal.output.whole())
        return give_up("out of memory");
    while (::flock(g_journal.fd, LOCK_EX) != 0)
        if (errno != EINTR)
            return give_up(std::strerror(errno));
    const char* p = lines.data();
    size_t left = lines.size();
    while (left > 0) {
        const ssize_t n = ::write(g_journal.fd, p, left);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            give_up(std::strerror(errno));
            break;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    ::flock(g_journal.fd, LOCK_UN);
    lines.clear();
}

/* The members that every line begins with. Returns the line's number. */
uint64_t open_line() {
    Text& lines = g_journal.waiting;
    lines.add("{\"run\":\"", 8);
    lines.add(g_journal.run);
    lines.add("\",\"n\":", 6);
    lines.add_number(static_cast<long long>(g_journal.next));
    return g_journal.next++;
}

void close_line() { g_journal.waiting.add("}\n", 2); }

void close_printed() {
    if (g_journal.printed_bytes == 0)
        return;
    open_line();
    Text& lines = g_journal.waiting;
    lines.member("at", now_us());
    lines.member("thread", g_journal.printed_thread);
    lines.member("printed", static_cast<long long>(g_journal.printed_bytes));
    close_line();
    g_journal.printed_bytes = 0;
}

uint64_t add_line(const Text& members) {
    close_printed();
    const uint64_t number = open_line();
    g_journal.waiting.add(",", 1);
    g_journal.waiting.add(members.data(), members.size());
    close_line();
    return number;
}

/* ---- the run's first and last line ---- */

/* A line that was cut by a sudden end stays cut: what comes now begins a line of its own. */
void end_cut_line() {
    const off_t size = ::lseek(g_journal.fd, 0, SEEK_END);
    char last = '\n';
    if (size > 0 && ::pread(g_journal.fd, &last, 1, size - 1) == 1 && last != '\n')
        g_journal.waiting.add("\n", 1);
}

void start(int argc, char** argv, const char* tape) {
    std::snprintf(g_journal.path, sizeof g_journal.path, "%s", tape);
    ::clock_gettime(CLOCK_MONOTONIC, &g_journal.start);
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::snprintf(g_journal.run, sizeof g_journal.run, "%llx-%x",
                  static_cast<unsigned long long>(now.tv_sec) * 1000000 +
                      static_cast<unsigned long long>(now.tv_nsec) / 1000,
                  static_cast<unsigned>(::getpid()));
    rlimit limit = {};
    g_journal.limited = ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    const int fd = ::open(tape, O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd < 0)
        return give_up(std::strerror(errno));
    g_journal.fd = ::fcntl(fd, F_DUPFD_CLOEXEC, lowest_descriptor);
    if (g_journal.fd < 0)
        g_journal.fd = fd;
    else
        ::close(fd);
    end_cut_line();
    turn::take();
    set_state(running);
    Text head;
    program::describe(head, argc, argv);
    add_line(head);
    write_waiting();
}

__attribute__((constructor)) void load(int argc, char** argv, char** envp) {
    /* A shell that only starts the program is not it: what is set stays set for what it starts. */
    if (platform_symbol("qmi_client_send_msg_sync") == nullptr)
        return;
    new (&g_storage) Journal;
    const char* const tape = std::getenv("KVT_TAPE");
    if (tape != nullptr && *tape != '\0')
        start(argc, argv, tape);
    else
        give_up("KVT_TAPE names no tape");
    /* After the tape is open, since the name lies in the environment. */
    program::keep_from_children(envp);
}

__attribute__((destructor)) void unload() {
    if (state() != running)
        return;
    turn::take(); /* for good: what others would still do is not seen */
    const Guard guard;
    close_printed();
    for (const InFlight* call = g_journal.in_flight; call != nullptr; call = call->behind) {
        Text line;
        line.member("at", call->began_us);
        line.member("thread", call->thread);
        line.member_text("open", call->name);
        line.member("from", static_cast<long long>(call->from));
        line.key("in");
        line.add("{");
        line.add(call->inputs->data(), call->inputs->size());
        line.add("}");
        add_line(line);
    }
    Text line;
    line.member("at", now_us());
    line.member_text("end", g_journal.output.data(), g_journal.output.size());
    line.key("properties");
    line.add("[");
    line.add(g_journal.properties.data(), g_journal.properties.size());
    line.add("]");
    add_line(line);
    write_waiting();
    g_journal.ending_thread = this_thread();
    set_state(ended);
}

} // namespace

bool recording() { return state() == running; }

long long now_us() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return (now.tv_sec - g_journal.start.tv_sec) * 1000000LL +
           (now.tv_nsec - g_journal.start.tv_nsec) / 1000;
}

int this_thread() {
    if (threads::current() == threads::unknown)
        threads::set_current(threads::first_of_platform +
                             __atomic_fetch_add(&g_journal.threads, 1, __ATOMIC_RELAXED));
    return threads::current();
}

void begin(InFlight& call) {
    const Guard guard;
    close_printed();
    call.from = g_journal.next;
    call.behind = g_journal.in_flight;
    if (call.behind != nullptr)
        call.behind->before = &call;
    g_journal.in_flight = &call;
}

void end(InFlight& call, const Text& members) {
    const Guard guard;
    (call.before != nullptr ? call.before->behind : g_journal.in_flight) = call.behind;
    if (call.behind != nullptr)
        call.behind->before = call.before;
    if (!recording() || !members.whole())
        return;
    close_printed();
    const uint64_t number = open_line();
    if (call.from != number)
        g_journal.waiting.member("from", static_cast<long long>(call.from));
    g_journal.waiting.add(",", 1);
    g_journal.waiting.add(members.data(), members.size());
    close_line();
    write_waiting();
}

namespace {

/* What matters only for the order of others is written with the next line, so that the program is
 * not held up where its threads meet. */
void note(const Text& members) {
    const Guard guard;
    if (!recording())
        return;
    add_line(members);
    if (g_journal.waiting.size() > most_waiting)
        write_waiting();
}

} // namespace

void waited(Wait kind, long long began_us, int result, int error) {
    Text line;
    line.member("at", began_us);
    line.member("took", now_us() - began_us);
    line.member("thread", this_thread());
    line.member_text("waited", name_of(kind));
    if (threads::past(kind) > 0)
        line.member("past", threads::past(kind));
    line.member("result", result);
    if (error != 0)
        line.member("errno", error);
    note(line);
}

void clock_read(const timespec& time) {
    if (!recording())
        return;
    const timespec& start = g_journal.start;
    Text line;
    line.member("thread", this_thread());
    line.member("clock",
                (time.tv_sec - start.tv_sec) * 1'000'000'000LL + time.tv_nsec - start.tv_nsec);
    note(line);
}

uint64_t event(const Text& members) {
    const Guard guard;
    if (!recording() || !members.whole())
        return 0;
    const uint64_t number = add_line(members);
    write_waiting();
    return number;
}

void printed(const char* text, size_t length) {
    const Guard guard;
    if (!recording() || length == 0)
        return;
    const int thread = this_thread();
    if (thread != g_journal.printed_thread)
        close_printed();
    g_journal.printed_thread = thread;
    g_journal.printed_bytes += length;
    g_journal.output.add(text, length);
}

void hold_after_end() {
    if (state() == ended && this_thread() != g_journal.ending_thread)
        ::usleep(100000);
}

void property(const char* key, const char* value) {
    const Guard guard;
    Text row;
    row.add("{");
    row.member_text("key", key);
    row.member_text("value", value);
    row.add("}");
    if (g_journal.properties.size() > 0)
        g_journal.properties.add(",");
    g_journal.properties.add(row.data(), row.size());
}

} // namespace journal
