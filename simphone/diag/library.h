// SPDX-License-Identifier: Apache-2.0
/* The inside of the DIAG library: who is registered, and the thread that hands packets over when
 * their time has come. */
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "diag.h"

#include "phone/bytes.h"

namespace simphone {

/* Something on its way from the modem. */
struct Delivery {
    enum class Kind { packet, dci_response, dci_log, dci_event };
    Kind kind = Kind::packet;
    Bytes bytes;

    int processor = 0; /* packet: who answers */
    bool no_context = false;

    int client = 0; /* DCI */
    diag_dci_response_cb response = nullptr;
    void* response_context = nullptr;
    unsigned char* area = nullptr; /* the caller's, of area_size bytes; gone once it is released */
    size_t area_size = 0;

    uint64_t session = 0; /* set by deliver */
};

/* Never destroyed: its thread may still run when the process ends. */
class Library {
  public:
    using Clock = std::chrono::steady_clock;
    using Deliveries = std::multimap<Clock::time_point, Delivery>; /* by when they are due */

    static Library& instance();

    /* Packets and callbacks belong to the session between up and down; a packet whose session is
     * over reaches nobody. Bringing up what is up changes nothing. */
    void up();
    void down();
    bool is_up();

    void set_mode(int mode);

    /* False while the library is down. */
    bool register_callback(int processor, diag_packet_cb callback, void* context);

    /* DCI clients outlive the session, but nothing reaches them after it. */
    int add_client(); /* its id, from 1; 0 while the library is down */
    bool has_client(int id);
    bool set_streams(int id, diag_dci_stream_cb log, diag_dci_stream_cb event);
    bool remove_client(int id);

    /* All of them or, when there is no memory or thread for it, none: it throws. */
    void deliver(Deliveries deliveries);

  private:
    struct Callback {
        diag_packet_cb function;
        void* context;
    };
    struct Client {
        uint64_t session;
        diag_dci_stream_cb log = nullptr;
        diag_dci_stream_cb event = nullptr;
    };

    Library() = default;
    void run();
    bool hand_over(Delivery& delivery); /* false when it reached nobody */
    bool hand_over_packet(std::unique_lock<std::mutex>& lock, Delivery& delivery);
    bool hand_over_dci(std::unique_lock<std::mutex>& lock, Delivery& delivery);
    void wait_for_callback(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    bool up_ = false;
    bool started_ = false;
    bool delivering_ = false;
    uint64_t session_ = 0;
    int mode_ = DIAG_USB_MODE;
    std::map<int, Callback> callbacks_; /* by processor */
    std::map<int, Client> clients_;
    int last_client_ = 0;
    Deliveries queue_;
};

} // namespace simphone
