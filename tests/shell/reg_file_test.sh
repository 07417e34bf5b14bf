#!/usr/bin/env bash
# regedit files through the shell: both encodings import, export -> import ->
# export gives the same bytes, a bad file changes nothing and names its line,
# and a store file that is no registry is refused and left as it is.
set -u
kovo=$1
samples=$(cd "$(dirname "$0")/reg" && pwd)
failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export KOVO_REGISTRY=$work/first/registry.db

. "$(dirname "$0")/checks.sh"

# a UTF-16 file of the 5.00 form; a REGEDIT4 file in CP1251
check import-500 '' "$kovo" --reg-import "$samples/regedit5.reg"
check import-4 '' "$kovo" --reg-import "$samples/regedit4.reg"
check values-500 '1 .T. 4 42 3 4 2 "%PATH%" 7 e"a\x00\xF1\x00\x00" 256 2' "$kovo" -e '
  REGOPENKEYEX(0x80000001, "software\kovo test", , 0x20019, @h);
  REGQUERYVALUEEX(h, "Name", , @t, @d, @s); n := d == e"\xCF\xF0\xE8\xE2\xE5\xF2, \xEC\xE8\xF0";
  REGQUERYVALUEEX(h, "Count", , @ct, @c, @cs); REGQUERYVALUEEX(h, "Blob", , @bt, @b, @bs);
  REGQUERYVALUEEX(h, "Expand", , @et, @e, @es); REGQUERYVALUEEX(h, "Odd", , @ot, @o, @os);
  m := REPLICATE("?", 5); REGQUERYVALUEEX(h, "Multi", , @mt, @m, @ms);
  ? t, n, ct, ASC(c), bt, bs, et, e, es, e"a\x00\xF1\x00\x00", ot, os'
check values-4 '"%PATH%" 1 0' "$kovo" -e '
  REGOPENKEYEX(0x80000001, "Software\Kovo Four", , 0, @h);
  REGQUERYVALUEEX(h, "Expand", , @t, @d, @s); REGQUERYVALUEEX(h, e"\xC8\xCC\xDF", , @u, @e, @z);
  ? d, t - 1, REGOPENKEYEX(0x80000001, "Software\Kovo Test\" + e"\xE4\xEE\xEB\xE3\xE8\xE9", , 0, @g)'

# export, import into an empty store, export again: the same bytes
check export-1 '' "$kovo" --reg-export 'HKEY_CURRENT_USER\Software' "$work/one.reg"
export KOVO_REGISTRY=$work/second/registry.db
check import-exported '' "$kovo" --reg-import "$work/one.reg"
check export-2 '' "$kovo" --reg-export 'hkcu\software\' "$work/two.reg"
if ! cmp -s "$work/one.reg" "$work/two.reg"; then
  echo 'FAIL round trip: the second export differs from the first'
  failures=$((failures + 1))
fi
check export-head 'Windows Registry Editor Version 5.00' \
  sh -c "head -c 74 '$work/one.reg' | tail -c 72 | iconv -f UTF-16LE -t UTF-8"
check export-bom 'fffe' sh -c "head -c 2 '$work/one.reg' | od -An -tx1 | tr -d ' \n'"
check export-wrapped '2' sh -c "iconv -f UTF-16LE -t UTF-8 '$work/one.reg' | grep -c '^  \|\\\\.$'"
check export-missing 'REPORT e"HKEY_CURRENT_USER\\Nothing: cannot be opened (code 2)"' \
  "$kovo" --reg-export 'HKEY_CURRENT_USER\Nothing' "$work/none.reg"

# deletions: a [-KEY] section takes its sub-keys along; "name"=- removes a value
printf 'REGEDIT4\r\n\r\n[-HKEY_CURRENT_USER\\Software\\Kovo Test]\r\n\r\n[HKEY_CURRENT_USER\\Software\\Kovo Four]\r\n"Count"=-\r\n"Never"=-\r\n' > "$work/delete.reg"
check import-deletions '' "$kovo" --reg-import "$work/delete.reg"
check deleted '-1 NIL 0' "$kovo" -e '
  REGOPENKEYEX(0x80000001, "Software\Kovo Four", , 0, @h);
  ? REGOPENKEYEX(0x80000001, "Software\Kovo Test", , 0, @g), REGQUERYVALUEEX(h, "Count", , @t, @d, @s), REGQUERYVALUEEX(h, "Expand", , @t, @d, @s)'

# a bad file changes nothing and names its line
printf 'REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Partial]\r\n"ok"="yes"\r\n"bad"=dword:xyz\r\n' > "$work/bad.reg"
check bad-line "REPORT \"$work/bad.reg: line 5: dword: needs one to eight hex digits; nothing was imported\"" \
  "$kovo" --reg-import "$work/bad.reg"
check_status bad-status 1 "$kovo" --reg-import "$work/bad.reg"
check bad-changed-nothing '-1' "$kovo" -e 'REGOPENKEYEX(0x80000001, "Software\Partial", , 0, @h)'
printf 'Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Partial]\r\n"Name"="\xe6\x97\xa5"\r\n' |
  iconv -f UTF-8 -t UTF-16LE | { printf '\xff\xfe'; cat; } > "$work/wide.reg"
check not-ansi "REPORT \"$work/wide.reg: line 4: a character that the ANSI code page cannot hold; nothing was imported\"" \
  "$kovo" --reg-import "$work/wide.reg"
printf 'REGEDIT4\r\n"early"="value"\r\n' > "$work/early.reg"
check value-before-key "REPORT \"$work/early.reg: line 2: a value before the first key; nothing was imported\"" \
  "$kovo" --reg-import "$work/early.reg"
printf 'Windows Registry Editor Version 5.00\r\n' > "$work/ansi500.reg"
check header "REPORT e\"$work/ansi500.reg: line 1: an ANSI file must begin with \\\"REGEDIT4\\\"; nothing was imported\"" \
  "$kovo" --reg-import "$work/ansi500.reg"
# one transaction: a key deleted early in a file that fails later is still there
printf 'REGEDIT4\r\n\r\n[-HKEY_CURRENT_USER\\Software\\Kovo Four]\r\n[HKCU\\%0300d]\r\n' 0 > "$work/late.reg"
check late-error "REPORT \"$work/late.reg: line 4: the registry refused it with code 87\"" \
  "$kovo" --reg-import "$work/late.reg"
check late-changed-nothing '0' "$kovo" -e 'REGOPENKEYEX(0x80000001, "Software\Kovo Four", , 0, @h)'

# a file that is no registry store is refused, reported and never overwritten
printf 'not a database, but somebody'"'"'s file\n' > "$work/foreign.db"
cp "$work/foreign.db" "$work/foreign.copy"
export KOVO_REGISTRY=$work/foreign.db
check refused "REPORT \"registry store $work/foreign.db refused: damaged or not a registry database (file is not a database); the file is left as it is\"
REPORT \"registry store $work/foreign.db refused: damaged or not a registry database (file is not a database); the file is left as it is\"
1009 NIL -1" "$kovo" -e 'h := NIL; ? REGCREATEKEY(0x80000001, "A", @h), h, REGCLOSEKEY(0x80000001)'
cmp -s "$work/foreign.db" "$work/foreign.copy" || { echo 'FAIL the foreign file was changed'; failures=$((failures + 1)); }
# a registry store whose first page is damaged: the same
export KOVO_REGISTRY=$work/damaged.db
check made '0' "$kovo" -e 'REGCREATEKEY(0x80000001, "A", @h)'
yes | head -c 3072 | dd of="$work/damaged.db" bs=1024 seek=1 conv=notrunc 2> /dev/null
cp "$work/damaged.db" "$work/damaged.copy"
check damaged "REPORT \"registry store $work/damaged.db refused: damaged or not a registry database (database disk image is malformed); the file is left as it is\"
-1" "$kovo" -e 'REGOPENKEYEX(0x80000001, "A", , 0, @h)'
cmp -s "$work/damaged.db" "$work/damaged.copy" || { echo 'FAIL the damaged file was changed'; failures=$((failures + 1)); }

if [ "$failures" -ne 0 ]; then
  echo "$failures failed"
  exit 1
fi
echo "reg files: all passed"
