#!/usr/bin/env bash
# What kovovmf.dll exports: the VM functions under their plain upper-case
# names (ALLTRIM, not _ALLTRIM@4), the class export of the context and the
# natives, and nothing else.
set -u
objdump=$1
library=$2
names=$("$objdump" -p "$library" | awk '/^\[Ordinal\/Name Pointer\] Table/ {table = 1; next}
  table && /^\t\[/ {print $NF} table && !/^\t\[/ {table = 0}')
failures=0
for wanted in ALLTRIM ATNUM INFINITY var2bin bin2item crc32 get_crc_table; do
  if ! grep -qx "$wanted" <<< "$names"; then
    echo "FAIL: $wanted is not exported"
    failures=$((failures + 1))
  fi
done
unexpected=$(grep -v -E '^(__)?[A-Z][A-Z0-9_]*$|^_ZN8VMEngineaSERKS_$|^(var2bin|bin2item|crc32|get_crc_table|kovo_reg_import|kovo_reg_export)$' <<< "$names")
if [ -n "$unexpected" ]; then
  echo "FAIL: unexpected exports:"
  echo "$unexpected" | head -20
  failures=$((failures + 1))
fi
count=$(wc -l <<< "$names")
if [ "$failures" -ne 0 ]; then exit 1; fi
echo "exports checked: $count names"
