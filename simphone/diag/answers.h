/* What the modem answers to DIAG packets. Everything lies in the phone's folder diag/:
 *
 * HEXPREFIX      the answer, bytes, to every packet that begins with these bytes; the longest
 * prefix wins. An empty file is an answer without bytes. HEXPREFIX.2    a second answer to the same
 * packet; .3, .4... further ones.
 *
 * A packet without a file gets the modem's own answer: 0x00 version, 0x26 NV read (first
 * subscription), 0x7B loopback, 0x7C extended build id; 0x13 "bad command" and the packet for any
 * other.
 *
 * How answers come, as text files with one number each:
 *
 * silent          1: nothing answers (default 0)
 * delay_ms        from the packet to the first answer (default 5)
 * gap_ms          between further answers, and between the chunks of one (default 0)
 * repeat          how many times every answer comes (default 1)
 * callback_chunk  callback mode: bytes handed over at once; 0 is the whole answer (default 0)
 * dci_chunk       DCI: the same (default 4096)
 * from            callback mode: the processor that answers, 0 local, 1... remote; "none" is the
 *                 local one with a null context (default 0)
 * remote_mask     remote processors, bit 0 is processor 1 (default 0)
 * peripherals     DCI support list; bit 1 is the modem processor, MPSS (default 2)
 * log_stream      bytes that a DCI client's log listener gets with each request, before the
 *                 response; nothing without the file
 * event_stream    the same for the event listener
 * loose           1: a callback may still run when the library has been taken down (default 0) */
#pragma once

#include <vector>

#include "phone/bytes.h"

namespace simphone {

/* In the order in which they come. */
std::vector<Bytes> answers_to(ByteView packet);

} // namespace simphone
