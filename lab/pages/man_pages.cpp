// SPDX-License-Identifier: Apache-2.0
/* kvt(1) and kvt-lab(1). */
#include "pages.h"
#include "phrases.h"

namespace lab {

namespace {

/* Text of a man page: backslashes and what begins a request are escaped, `NAME` is bold. */
std::string roff(std::string_view text) {
    std::string result;
    bool bold = false;
    for (const char c : text) {
        if (result.empty() && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '`')
            result += (bold = !bold) ? "\\fB" : "\\fR";
        else if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result + (bold ? "\\fR" : "");
}

std::string text_line(std::string_view text) { return roff(text) + "\n"; }

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

std::string item(const std::string& head, const std::string& text) {
    return ".TP\n" + head + "\n" + text;
}

std::string head_of(const Command& row) {
    std::string text = bold("kvt " + std::string(row.words));
    for (const Argument& argument : row.arguments) {
        const std::string name = italic(argument.name) + (argument.most > 1 ? " ..." : "");
        text += argument.optional ? " [" + name + "]" : " " + name;
    }
    return text;
}

std::string value_text(const Value& value) {
    return std::string(value.name) +
           (value.unit.empty() ? "" : " (" + std::string(value.unit) + ")");
}

std::string command_text(const Command& row) {
    std::string text =
        item(head_of(row), text_line("`" + std::string(row.title) + ".` " + std::string(row.does)));
    if (!row.danger.empty())
        text += ".br\n" + bold("Danger:") + " " + text_line(row.danger);
    for (const Argument& argument : row.arguments)
        text += ".br\n" + italic(argument.name) + ": " + text_line(argument_text(argument));
    if (!row.values.empty()) {
        std::string values;
        for (const Value& value : row.values)
            values += (values.empty() ? "" : ", ") + value_text(value);
        text += ".br\nTells: " + text_line(values);
    }
    text += ".br\nEffect: " + text_line(effect_phrase(row));
    if (row.effect != Effect::none)
        text += ".br\nUndo: " + text_line(undo_phrase(row)) +
                ".br\nVerify: " + text_line(verify_phrase(row));
    return text + ".br\nTime: " + text_line(time_phrase(row));
}

constexpr const char* kvt_head = R"man(.TH KVT 1 "" "kvt" "User Commands"
.SH NAME
kvt \- modem test tool for Android phones
.SH SYNOPSIS
.B kvt
.I GROUP
.RI [ SUB ]
.RI [ ARGUMENTS ...]
.SH DESCRIPTION
Each run performs one modem command and prints its outcome. Without a group, or with one
that is none, the whole help is printed. Numbers are decimal unless said otherwise.
.PP
Some commands change what the phone keeps for good. Read CAVEATS before the first one on a real phone.
.PP
This build runs against a simulated phone, a directory of plain files.
.SH COMMANDS
Groups 1 and 2 have a section of help only; they print "Not support".
)man";

constexpr const char* kvt_tail = R"man(.SH EXIT STATUS
Always 0. Success or failure is told only by the text on standard output;
.BR kvt\-lab (1)
reads it and tells by its exit status.
.SH ENVIRONMENT
.TP
.B KVT_PHONE
Directory of the simulated phone. Without it,
.I kvt/phone
under
.B XDG_STATE_HOME
(\fI~/.local/state\fR). It is made at first use; delete it for a fresh phone.
.SH FILES
.TP
.I /dev/smd8
The modem's AT channel, to which group 8 writes.
.TP
.I /nv/item_files/modem/orvik/rf_ant_port_config
In the modem: what 3 0 has set.
.TP
.I /nv/item_files/modem/antenna/ant_tx_config
In the modem: what 3 3 has set.
.TP
.I /nv/item_files/modem/uim/uimdrv/esim_eid
In the modem, second subscription: the EID that 5 10 1 keeps, 16 bytes. One that is there is not
compared and not replaced.
.TP
.I /ravex/ravex_print_mask
.TQ
.I /nv/item_files/modem/orvik/qmi_print_flag
.TQ
.I /nv/item_files/modem/orvik/rf_print_mask
In the modem: there while a print switch of 11 4, 11 5 or 11 6 is on.
.TP
.I /nv/item_files/modem/orvik/ssr_update_count
In the modem: how often 11 1 has changed the restart level.
.PP
Properties of the phone: persist.vendor.radio.adb_log_ov (1 or missing: log lines go to the system log
too), persist.vendor.ssr.restart_level and persist.vendor.ssr.restart_level_bak (11 1),
persist.radio.ssr_wait_s (seconds that 11 1 waits, 3 when missing), persist.vendor.radio.print_stats
(11 3), persist.ravex.mem_trace (allocations are traced when it is true).
.SH DIAGNOSTICS
Lines that begin with "RIL[" are log lines.
.TP
.B note: ...
The command line was refused, or a command failed with the code that is shown.
.TP
.B orvik_extend_qmi_handle_req_cb result:N
Whether an answer came from the modem's vendor service (0), not what it said: commands that failed
print result:0 too.
.TP
.B send msg sync failed:N
The exchange failed with the transport's code N; \-3 is a time\-out.
.TP
.B N QMI service framework error
The vendor service refused the request.
.TP
.B rsp.result = N
What the modem made of it; 0 is success. Of NV items 5 means not set, of EFS files \-2 missing.
.TP
.B error_code(N)
0 to \-3: the exchange. \-101 to \-103: the same of NV items and EFS files. \-104 to \-109: an
argument. 268431370: wrong number of arguments. Others are the modem's.
.PP
Lines that read as breakage and are not:
.TP
.B The at channel is not opened
Always printed by group 8: the answer to an AT command is not read.
.TP
.B pdc init failed
Always printed by group 10, which does nothing.
.TP
.B qmi response fail
In 11 1 and 5 10 1, of a file that is not there yet.
.TP
.B orvik_efs_delete failed
In 11 4 0, 11 5 0 and 11 6 0, of a switch that is off already.
.SH CAVEATS
3 0, 3 3, 6, 8, 10, 11 0, 11 1, 11 2 and 5 10 2 don't show what the modem answered; no failure in what
they print is not success.
.PP
NV items and EFS files hold a phone's identity and calibration. What is overwritten or deleted there is
gone, also after a reset to factory settings: read and save it first.
.PP
11 1 leaves the phone's restart level at ALL_DISABLE. 5 10 1 and 5 10 2 that are ended midway may leave
slot 2 without power; run the command again.
.PP
Data bytes of group 4 are decimal only: 0x10 is written as 0. An NV write of more than 365 bytes sends
zeros for the rest.
.PP
The word of group 8 is read by a shell between double quotes: give $, ", \e and ` a backslash.
.PP
What items, files and values mean on a real modem is told here only as far as it is known.
.SH EXAMPLES
.nf
kvt 4 1 0 550
kvt 4 5 0 /nv/item_files/modem/demo 1 2 255
kvt 5 0 0 0 1000 0x7c
kvt 9 10 0
.fi
.SH SEE ALSO
.BR kvt\-lab (1)
)man";

constexpr const char* lab_head = R"man(.TH KVT-LAB 1 "" "kvt" "User Commands"
.SH NAME
kvt\-lab \- what kvt's commands mean, whether they worked, and more around kvt
.SH SYNOPSIS
.B kvt\-lab
.RB [ \-\-kvt
.IR PATH ]
.RB [ \-\-on
.IR PHONE ]
.I VERB
.RI [ OPTIONS ]
.RI [ ARGUMENTS ...]
.SH DESCRIPTION
kvt always ends with status 0 and tells its outcome in words.
.B kvt\-lab
runs it as a process, reads what it prints and judges it by a catalogue of its commands. It says ok only
when the output proves it; when the output can't tell, it says so.
.PP
A command by which something can be lost is not run without
.BR \-\-yes .
.PP
With
.B \-\-on
kvt runs on the phone of that serial number, or on the one on
.BR usb ,
by way of adb. It is for check, plan, watch, run, record, doctor, deploy and pull.
.SH VERBS
)man";

constexpr const char* lab_tail = R"man(.SH PLANS
A plan is a TOML file: a
.BR title ,
which may be left out, and a table
.B [[step]]
for each step, in order. Anything that is not known, or of a wrong type, is told with its line, and nothing is run.
A step passes when its verdict is ok and every value is within its limits. What is set is undone at the end, last
first, also after a failure, a time\-out, SIGINT, SIGTERM and SIGHUP; a step whose way back can't be found is not run.
.TP
.B name
what the report calls it
.TP
.B command
kvt's command line, or a list of its words
.TP
.B expect
limits of values by name: { rsrp_rx0 = { min = \-105, max = \-40 }, slot1 = { is = "PRESENT" } }
.TP
.B tries
how often it is tried until it passes, a second apart: only commands that change nothing
.TP
.B undo
true: what was there before is put back at the end
.TP
.B keep_going
true: later steps run although this one failed
.TP
.B yes
true: it is run although something can be lost
.TP
.B verify
false: what was set is not read back
.TP
.B not_told_passes
true: it passes also where nothing can tell
.TP
.B timeout_s
seconds until kvt is ended
.PP
The result is TAP version 14; run by
.BR prove (1),
version 13.
.SH EXIT STATUS
Of check:
.TP
.B 0
ok
.TP
.B 1
failed
.TP
.B 2
the command line was wrong, or a dangerous command came without \-\-yes; nothing was sent
.TP
.B 3
not told: no failure is shown, and nothing proves success
.TP
.B 4
kvt did not end in time, and was ended
.TP
.B 5
kvt could not be run
.PP
Of plan: 0 when every step and every undoing passed, 1 when not, 2 when the plan is wrong and nothing was run, 5 when
kvt is not found, 128 and the signal's number when one ended it.
.PP
Of replay 1 when a run was not the same; of show and pcap 1 when the tape is damaged; of phone check 1 when the phone
has something that it does not understand. Of all other verbs 0 is success. 2 is a wrong command line, or what can't be
done as it says; 5 a file, a program or a phone that can't be used.
.SH ENVIRONMENT
.TP
.B KVT_PROGRAM
Path of kvt. Without it kvt is looked for beside kvt\-lab, then on
.BR PATH .
.TP
.B KVT_ON
Phone to run on, as \-\-on.
.TP
.BR KVT_ON_FOLDER ", " KVT_ON_LIBRARIES
Folder of the programs on a phone (/data/local/tmp/kvt), and their LD_LIBRARY_PATH (/vendor/lib64).
.SH EXAMPLES
.nf
kvt\-lab describe 4 1
kvt\-lab check 4 1 0 550
kvt\-lab check \-\-verify 3 3 1 4 0x4
kvt\-lab check \-\-json 9 10 0 | jq .values.rsrp_rx0.value
kvt\-lab deploy \-\-on usb && kvt\-lab \-\-on usb check 4 1 0 550
.fi
.SH SEE ALSO
.BR kvt (1)
)man";

} // namespace

std::string argument_text(const Argument& argument) {
    std::string text(argument.meaning);
    if (const std::string range = range_phrase(argument); !range.empty())
        text += ": " + range;
    if (!argument.outside.empty())
        text += "; outside: " + std::string(argument.outside);
    return text;
}

std::string kvt_man_page() {
    std::string text = kvt_head;
    for (const Group& group : groups()) {
        text += ".SS \"" + std::to_string(group.number) + ": " + roff(group.title) + "\"\n" +
                text_line(group.about);
        for (const Command& row : catalogue())
            if (words_of(row.words)[0] == std::to_string(group.number))
                text += command_text(row);
    }
    return text + kvt_tail;
}

std::string lab_man_page(const std::vector<VerbText>& verbs) {
    std::string text = lab_head;
    for (const VerbText& verb : verbs) {
        text += item(bold("kvt-lab " + verb.name) + (verb.usage.empty() ? "" : " ") +
                         italic(verb.usage),
                     text_line(verb.meaning));
        for (const VerbText::Option& option : verb.options)
            text += ".RS\n" + item(bold(option.name), text_line(option.meaning)) + ".RE\n";
    }
    return text + lab_tail;
}

} // namespace lab
