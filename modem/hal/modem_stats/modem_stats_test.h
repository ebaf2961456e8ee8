/* Group 7: the statistics test. */
#pragma once

/* Arms the unpack cursor with a payload in UNPK_MEMORY_SIZE bytes of memory and runs the
 * serving-cell parser over it. The other arguments are not used. */
void orvik_test_modem_stats_parsing_process_do(int, unsigned short, unsigned char,
                                               unsigned char* payload);
