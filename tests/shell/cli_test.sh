#!/usr/bin/env bash
# The shell's command line as users and scripts meet it: output, exit status,
# options, script input, and what the library exports.
set -u
kovo=$1
library=$2
failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

. "$(dirname "$0")/checks.sh"

check valtype '"A"' "$kovo" -e 'VALTYPE({1})'
check isnull 'ERROR sev=2 gen=1 sub=BASE/1111 op="HB_ISNULL" args=(0) flags=S os=0 desc="Argument error"
NIL' "$kovo" -e 'HB_ISNULL(0)'
check csetargerr 'ERROR sev=0 gen=1 sub=CT/1032 op="CSETARGERR" args=(5) flags=D os=0 desc="Argument error"
0' "$kovo" -e 'CSETARGERR(5)'
check byref-extended "$("$kovo" -e 'HB_ISBYREF(@x)')" "$kovo" --extended-frames -e 'HB_ISBYREF(@x)'
check print-statement-last '1 "a"' "$kovo" -e '? 1, "a"'
check lower-case-call '"C"' "$kovo" -e 'valtype("x")'

check padc '"*ab**"' "$kovo" -e 'PADC("ab", 5, "*")'
check trim-error 'ERROR sev=2 gen=1 sub=BASE/1100 op="TRIM" args=(5) flags=S os=0 desc="Argument error"
NIL' "$kovo" -e 'TRIM(5)'
check replicate-overflow "ERROR sev=2 gen=3 sub=BASE/1234 op=\"REPLICATE\" args=(\"$(printf '%65536s' '')\", 65536) flags=S os=0 desc=\"String overflow\"
NIL" "$kovo" -e 'REPLICATE(SPACE(65536), 65536)'

check_status success 0 "$kovo" -e '1'
check_status syntax-error 1 "$kovo" -e '1 +'
check_status unknown-option 2 "$kovo" --no-such-option
check_status missing-script 2 "$kovo" "$work/missing.prg"
check_status internal-error 3 "$kovo" -e '__ERRINHANDLER()'
check_status reg-export-usage 2 "$kovo" --reg-export HKCU
check_status reg-import-missing 1 env KOVO_REGISTRY="$work/registry.db" "$kovo" --reg-import "$work/missing.reg"
check syntax-message '-e:1:4: syntax error: expected an expression, found end of input' "$kovo" -e '1 +'

printf 'x := 2\n? x * 3\n// a comment\n? "done"\n' > "$work/script.prg"
check script '6
"done"' "$kovo" "$work/script.prg"
check stdin-script '6
"done"' sh -c "\"$kovo\" - < \"$work/script.prg\""

check list-has-valtype 'VALTYPE' sh -c "\"$kovo\" --list | grep -x VALTYPE"
check version 'kovo 1.0.0' "$kovo" --version

# Only VM functions (upper-case names) and the named natives leave the library.
unexpected=$(nm -D --defined-only "$library" | awk '{print $3}' |
  grep -v -E '^(__)?[A-Z][A-Z0-9_]*$|^_ZN8VMEngineaSERKS_$|^(var2bin|bin2item|crc32|get_crc_table|kovo_reg_import|kovo_reg_export)$')
check exports '' printf '%s' "$unexpected"

if [ "$failures" -ne 0 ]; then
  echo "$failures command-line checks failed"
  exit 1
fi
echo "command-line checks passed"
