// SPDX-License-Identifier: Apache-2.0
/* The eSIM command: switches slot 2 between the eUICC and a physical SIM, reads and keeps the EID,
 * shows the card states, resets the eUICC's memory. */
#pragma once

#include <cstdint>

/* kvt 5 10 esim_on debug_on. esim_on: 1 to the eSIM, 2 to the physical SIM; not in the help: 3 EID,
 * 4 card states, 5 memory reset. debug_on 0 clears the stdout-print flag. Returns -1 for too few
 * arguments, else 0: the outcome is printed. */
int32_t orvik_cmn_esim_test(int argc, char** argv);

/* Keeps the 16 bytes of an EID in the modem's EID file, unless that holds something. */
void save_eid_to_efs(const uint8_t* eid16);

/* True when the check digits of an EID are right: its 32 digits, as a number, modulo 97 are 1. A
 * hexadecimal letter counts as the value of its character less that of '0'. */
bool is_eid_valid(const char* eid_text);

/* Prints the names of the states of slots 1 and 2, without a newline. */
void map_sim_state(const uint8_t* states2);
