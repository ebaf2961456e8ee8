# bash completion for kvt: words and what they mean. Made from the catalogue of commands.
_kvt_rows='0||3|RF tests
0||4|NV items and EFS files
0||5|Common commands
0||6|Raw vendor QMI request
0||7|Statistics test
0||8|AT command
0||9|Statistics queries
0||10|MBN
0||11|Smart test
1|3|0|set GPIO values for the antenna test
2|3 0||value: value of a GPIO line, the first line first
1|3|1|show the GPIO values
1|3|2|end the GPIO test
1|3|3|fix the transmit antenna
2|3 3|0|lower antenna
2|3 3|1|upper antenna
3|3 3 *|0|gsm
3|3 3 *|1|wcdma
3|3 3 *|2|cdma
3|3 3 *|3|tds
3|3 3 *|4|lte
4|3 3 * *||v_band_list: bands, one bit each; of lte bit 0 is band 1, so that band 3 ...
1|3|4|show the fixed transmit antenna
1|3|5|end the fixed transmit antenna
1|4|1|read an NV item
2|4 1|0|sub: subscription
2|4 1|1|sub: subscription
3|4 1 *||nv_id: number of the item
1|4|2|write an NV item
2|4 2|0|sub: subscription
2|4 2|1|sub: subscription
3|4 2 *||nv_id: number of the item
4|4 2 * *||nv_data: bytes
1|4|3|delete an NV item
2|4 3|0|sub: subscription
2|4 3|1|sub: subscription
3|4 3 *||nv_id: number of the item
1|4|4|read an EFS file
2|4 4|0|sub: subscription
2|4 4|1|sub: subscription
3|4 4 *||efs_path: path of the file
1|4|5|write an EFS file
2|4 5|0|sub: subscription
2|4 5|1|sub: subscription
3|4 5 *||efs_path: path of the file
4|4 5 * *||efs_data: bytes
1|4|6|delete an EFS file
2|4 6|0|sub: subscription
2|4 6|1|sub: subscription
3|4 6 *||efs_path: path of the file
1|5|0|send a DIAG packet
2|5 0|0|callback
2|5 0|1|dci
3|5 0 *|0|with result
3|5 0 *|1|without result
4|5 0 * *||time_out: milliseconds to wait for the answer, counted in whole 100; not ...
5|5 0 * * *||cmd_cnt: bytes of the packet
1|5|1|show whether cards are in
1|5|2|show the card-detect state of a slot
2|5 2|0|sub: slot, from 0
2|5 2|1|sub: slot, from 0
1|5|3|force the card-detect state of a slot
2|5 3|0|sub: slot, from 0
2|5 3|1|sub: slot, from 0
3|5 3 *|0|general
3|5 3 *|1|sim
4|5 3 * *|0|low
4|5 3 * *|1|high
1|5|4|show the card type
1|5|5|show the SAR state
1|5|6|stop the hot-swap test; start the hot-swap test
2|5 6|0|stop the hot-swap test
2|5 6|1|start the hot-swap test
3|5 6 1||seconds_after_push: seconds that the card stays in
4|5 6 1 *||seconds_after_pull: seconds that it stays out
5|5 6 1 * *||count_push_and_pull: how often
1|5|10|switch slot 2 to the eSIM; switch slot 2 to the second physical SIM; ...
2|5 10|1|switch slot 2 to the eSIM
3|5 10 1|0|off
3|5 10 1|1|on
2|5 10|2|switch slot 2 to the second physical SIM
3|5 10 2|0|off
3|5 10 2|1|on
2|5 10|3|show the EID
3|5 10 3|0|off
3|5 10 3|1|on
2|5 10|4|show the state of both cards
3|5 10 4|0|off
3|5 10 4|1|on
2|5 10|5|reset the eUICCs memory
3|5 10 5|0|off
3|5 10 5|1|on
1|6|0|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
1|6|1|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
1|6|2|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
1|6|3|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
1|6|4|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
1|6|5|qmi_id: kind of the request: 2 is NV items and EFS files, 4 common requests
2|6 *||qmi_data: bytes
1|7|0|parse the built-in sample
2|7 0|0|off
2|7 0|1|on
1|7|1|check the statistics feature; show the statistics debug information
2|7 1|0|check the statistics feature
2|7 1|1|show the statistics debug information
1|8||atcmd_cxt: the AT command, one word without blanks; a shell reads it ...
1|9|0|4G PCC levels
2|9 0|0|sub: subscription
2|9 0|1|sub: subscription
1|9|1|4G SCC1 levels
2|9 1|0|sub: subscription
2|9 1|1|sub: subscription
1|9|2|4G SCC2 levels
2|9 2|0|sub: subscription
2|9 2|1|sub: subscription
1|9|3|4G SCC3 levels
2|9 3|0|sub: subscription
2|9 3|1|sub: subscription
1|9|4|4G SCC4 levels
2|9 4|0|sub: subscription
2|9 4|1|sub: subscription
1|9|5|4G SCC5 levels
2|9 5|0|sub: subscription
2|9 5|1|sub: subscription
1|9|6|4G SCC6 levels
2|9 6|0|sub: subscription
2|9 6|1|sub: subscription
1|9|7|5G PCC rssi
2|9 7|0|sub: subscription
2|9 7|1|sub: subscription
1|9|8|5G PCC snr
2|9 8|0|sub: subscription
2|9 8|1|sub: subscription
1|9|9|5G antenna diversity
2|9 9|0|sub: subscription
2|9 9|1|sub: subscription
1|9|10|5G PCC rsrp
2|9 10|0|sub: subscription
2|9 10|1|sub: subscription
1|9|11|5G SCC1 rsrp
2|9 11|0|sub: subscription
2|9 11|1|sub: subscription
1|9|12|5G SCC2 rsrp
2|9 12|0|sub: subscription
2|9 12|1|sub: subscription
1|9|20|WCDMA rssi
2|9 20|0|sub: subscription
2|9 20|1|sub: subscription
1|9|21|GSM rssi
2|9 21|0|sub: subscription
2|9 21|1|sub: subscription
1|9|30|antenna configuration
2|9 30|0|sub: subscription
2|9 30|1|sub: subscription
1|10||sub: needed, and not looked at
2|10 *|1|sub_mask: subscriptions, one bit each
2|10 *|2|sub_mask: subscriptions, one bit each
2|10 *|3|sub_mask: subscriptions, one bit each
1|11|0|restart the modem
1|11|1|dump the modems memory
1|11|2|sync NV items
1|11|3|switch statistics printing of the application side
2|11 3|0|off
2|11 3|1|on
1|11|4|switch statistics printing of the modem
2|11 4|0|off
2|11 4|1|on
1|11|5|switch QMI printing of the modem
2|11 5|0|off
2|11 5|1|on
1|11|6|switch RF printing of the modem
2|11 6|0|off
2|11 6|1|on
'
_kvt() {
    local IFS=' ' current=${COMP_WORDS[COMP_CWORD]} before count pattern word meaning line
    local -a words=() lines=()
    before=${COMP_WORDS[*]:1:COMP_CWORD-1}
    while IFS='|' read -r count pattern word meaning; do
        # shellcheck disable=SC2053 # the pattern is one
        [[ -n $word && $count == $((COMP_CWORD - 1)) && $before == $pattern && $word == "$current"* ]] ||
            continue
        printf -v line '%-3s -- %s' "$word" "$meaning"
        words+=("$word")
        lines+=("$line")
    done <<<"$_kvt_rows"
    # One word is put in; several are shown with what they mean. Menu completion puts in what is shown.
    if ((${#words[@]} > 1)) && [[ ${COMP_TYPE:-9} != 37 ]]; then
        COMPREPLY=("${lines[@]}")
    else
        COMPREPLY=("${words[@]}")
    fi
}
complete -o nosort -F _kvt kvt 2>/dev/null || complete -F _kvt kvt
