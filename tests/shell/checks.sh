# The checks that the shell scripts share; each failure counts in $failures.

check() {  # name, expected output, command...
  local name=$1 expected=$2
  shift 2
  local actual
  actual=$("$@" 2>&1)
  if [ "$actual" != "$expected" ]; then
    printf 'FAIL %s\n  expected: %s\n  actual:   %s\n' "$name" "$expected" "$actual"
    failures=$((failures + 1))
  fi
}

check_status() {  # name, expected status, command...
  local name=$1 expected=$2
  shift 2
  "$@" > /dev/null 2>&1
  local status=$?
  if [ "$status" != "$expected" ]; then
    printf 'FAIL %s: exit status %s, expected %s\n' "$name" "$status" "$expected"
    failures=$((failures + 1))
  fi
}
