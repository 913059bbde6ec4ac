# Sourced by ./test and .ci/run: runs steps, adds up their counts and always ends with `N passed, N failed`.
#
# A step whose last line is `N passed, N failed` adds these numbers; any other step counts as one. A step that fails
# without saying so (it died, or counted no failure) adds a failure.
passed=0
failed=0
steps_log=$(mktemp)

finish_steps() {
  local status=$?
  trap - EXIT
  rm -f "$steps_log"
  if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then failed=1; fi
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
  exit $?
}
trap finish_steps EXIT
trap 'exit 130' INT TERM

# step NAME COMMAND...
step() {
  local name=$1 start=$SECONDS status counts=
  shift
  echo "== $name"
  # tee keeps long steps visible; PIPESTATUS keeps the command's own status.
  "$@" 2>&1 | tee "$steps_log"
  status=${PIPESTATUS[0]}
  counts=$(tail -n 1 "$steps_log" | sed -nE 's/^([0-9]+) passed, ([0-9]+) failed$/\1 \2/p')
  if [ -n "$counts" ]; then
    passed=$((passed + ${counts% *}))
    failed=$((failed + ${counts#* }))
    if [ "$status" -ne 0 ] && [ "${counts#* }" -eq 0 ]; then
      failed=$((failed + 1))
      echo "FAILED $name (status $status)"
    fi
  elif [ "$status" -eq 0 ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED $name (status $status)"
  fi
  echo "== $name: $((SECONDS - start)) s"
  return "$status"
}
